// Reads secrets from files or standard input. On the command line, other users of the machine could see them.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_SECRET_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_SECRET_H

#include <cstddef>
#include <string>

// The first line of a file. The destructor wipes it from memory.
class FileSecret {
 public:
  // `kind` names the secret in messages. Throws Failed if the file cannot be read, is empty, or has a too long first
  // line.
  FileSecret(std::string const& path, char const* kind);
  ~FileSecret();
  FileSecret(FileSecret const&) = delete;
  FileSecret& operator=(FileSecret const&) = delete;

  char const* Text() const { return text_; }
  // Without the trailing NUL. The text can contain NUL bytes.
  std::size_t Size() const { return size_; }

 private:
  char text_[4096];
  std::size_t size_ = 0;
};

// The first line of standard input, without echo on a terminal. Throws Failed if there is none, and if an
// empty one is typed.
std::string ReadSecretFromInput();
// The first line of a file.
std::string ReadSecretFromFile(std::string const& path);

#endif
