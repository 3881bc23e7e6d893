// Where in the files the settings of a service stand.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_ORIGIN_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_ORIGIN_H

#include <map>
#include <string>
#include <utility>

#include "zelvane/api/upssrvconfig.h"

// The lines of the keys of one file, as the engine reads them: of a key that is repeated the first.
class KeyLines {
 public:
  // A file that is missing or cannot be read has no keys.
  explicit KeyLines(std::string const& path);

  // 0 when there is no such key. Names in any case.
  long Of(std::string const& section, std::string const& key) const;

 private:
  std::map<std::pair<std::string, std::string>, long> lines_;
};

// "line 12" of the main file, "upstype.cfg:3" of another one, or "default". `field` is a name of the fields' table.
class UpsOrigins {
 public:
  // The service's folder and the root, each with its "/".
  UpsOrigins(std::string const& folder, std::string const& root, UpsSrvConfig const& settings);
  std::string Of(std::string const& field) const;

 private:
  UpsSrvConfig const& settings_;
  std::string model_;
  KeyLines main_;
  KeyLines types_;
  KeyLines usb_;
  KeyLines modelFile_;
};

class ShutdownOrigins {
 public:
  explicit ShutdownOrigins(std::string const& root);
  std::string Of(std::string const& field) const;

 private:
  KeyLines main_;
  KeyLines user_;
};

#endif
