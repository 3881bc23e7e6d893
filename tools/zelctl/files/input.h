// Files of any size, read from start to end.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_INPUT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_INPUT_H

#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <cstddef>
#include <memory>
#include <string>

#include "terminal/terminal.h"

// A system call on a file failed.
struct FileFailed : Failed {
  explicit FileFailed(std::string const& name, int error = errno)
      : Failed(name + ": " + strerror(error)), reason(error) {}
  int reason;
};

// An open file. All operations throw FileFailed.
class Input {
 public:
  // `name` is for messages.
  Input(std::string const& path, std::string name) : name_(std::move(name)), file_(fopen(path.c_str(), "rbe"), fclose) {
    if (file_ == nullptr) throw FileFailed(name_);
  }
  // Standard input; it stays open.
  explicit Input(std::string name) : name_(std::move(name)), file_(stdin, [](FILE*) { return 0; }) { clearerr(stdin); }

  int Descriptor() const { return fileno(file_.get()); }

  // Fills the buffer. Fewer bytes than `size` means the end of the file.
  std::size_t Fill(char* buffer, std::size_t size) {
    std::size_t const got = fread(buffer, 1, size, file_.get());
    RequireNoError();
    return got;
  }

  // The next line without its line feed. False at the end of the file.
  bool Line(std::string& line) {
    line.clear();
    int c = 0;
    while ((c = getc(file_.get())) != EOF && c != '\n') line += static_cast<char>(c);
    RequireNoError();
    return c != EOF || !line.empty();
  }

 private:
  void RequireNoError() const {
    if (ferror(file_.get()) != 0) throw FileFailed(name_);
  }

  std::string name_;
  std::unique_ptr<FILE, int (*)(FILE*)> file_;
};

#endif
