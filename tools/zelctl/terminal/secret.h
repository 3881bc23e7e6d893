// Secrets that do not come on the command line, where other users of the machine can see them.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_SECRET_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_SECRET_H

#include <cstddef>
#include <string>

// The first line of a file, wiped from memory with the object.
class FileSecret {
 public:
  // `kind` says in messages what should be there. Throws Failed when there is nothing, or more than a line's worth.
  FileSecret(std::string const& path, char const* kind);
  ~FileSecret();
  FileSecret(FileSecret const&) = delete;
  FileSecret& operator=(FileSecret const&) = delete;

  char const* Text() const { return text_; }
  // Without the NUL after it. The text may have NULs of its own.
  std::size_t Size() const { return size_; }

 private:
  char text_[4096];
  std::size_t size_ = 0;
};

// The first line of standard input, without echo when that is a terminal. Throws Failed when there is none.
std::string ReadSecretFromInput();
// The first line of a file.
std::string ReadSecretFromFile(std::string const& path);

#endif
