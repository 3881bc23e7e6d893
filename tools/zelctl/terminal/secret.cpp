#include "terminal/secret.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include <iostream>

#include "terminal/terminal.h"

namespace {

// Switches a terminal's echo off while it lives; does nothing when input is no terminal.
class NoEcho {
 public:
  NoEcho() : isTerminal_(tcgetattr(STDIN_FILENO, &old_) == 0) {
    if (!isTerminal_) return;
    termios silent = old_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    std::cerr << "Password: " << std::flush;
  }
  ~NoEcho() {
    if (!isTerminal_) return;
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &old_);
    std::cerr << '\n';
  }
  NoEcho(NoEcho const&) = delete;
  NoEcho& operator=(NoEcho const&) = delete;

 private:
  termios old_ = {};
  bool isTerminal_;
};

// Reads until the buffer is full, the file ends or a line feed is there. No stream: its buffer would not be wiped.
bool ReadLine(char const* path, char* text, std::size_t most, std::size_t& size) {
  int const fd = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) return false;
  ssize_t got = 1;
  while (size < most && got > 0 && memchr(text, '\n', size) == nullptr) {
    do got = read(fd, text + size, most - size);
    while (got < 0 && errno == EINTR);
    if (got > 0) size += static_cast<std::size_t>(got);
  }
  close(fd);
  return got >= 0 && size > 0;
}

}  // namespace

FileSecret::FileSecret(std::string const& path, char const* kind) {
  bool const read = ReadLine(path.c_str(), text_, sizeof text_, size_);
  auto* const end = static_cast<char*>(memchr(text_, '\n', size_));
  bool const fits = end != nullptr || size_ < sizeof text_;
  if (end != nullptr) size_ = static_cast<std::size_t>(end - text_);
  if (size_ > 0 && text_[size_ - 1] == '\r') size_--;
  if (!read || !fits) {
    explicit_bzero(text_, sizeof text_);
    throw Failed(path + ": no " + kind + " there" + (fits ? "" : ": the first line is too long for one"));
  }
  text_[size_] = '\0';
}

FileSecret::~FileSecret() { explicit_bzero(text_, sizeof text_); }

std::string ReadSecretFromInput() {
  NoEcho const silence;
  std::string line;
  if (!std::getline(std::cin, line)) throw Failed("standard input: no password there");
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

std::string ReadSecretFromFile(std::string const& path) {
  FileSecret const secret(path, "password");
  return {secret.Text(), secret.Size()};
}
