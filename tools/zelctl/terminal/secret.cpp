#include "terminal/secret.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <iostream>

#include "terminal/terminal.h"

#ifdef ZELVANE_READPASSPHRASE
#include <bsd/readpassphrase.h>
#endif

namespace {

// Prompts on the terminal without echo and restores it in every case. Null on failure.
char const* Ask(char const* prompt, char* text, std::size_t size) {
#ifdef ZELVANE_READPASSPHRASE
  return readpassphrase(prompt, text, size, RPP_REQUIRE_TTY);
#else
  static_cast<void>(prompt), static_cast<void>(text), static_cast<void>(size);
  errno = ENOTSUP;
  return nullptr;
#endif
}

// Reads until the buffer is full, the file ends or a line feed is read. Uses no stream, whose buffer could not be
// wiped.
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
  errno = 0;
  bool const read = ReadLine(path.c_str(), text_, sizeof text_, size_);
  int const error = errno;
  auto* const end = static_cast<char*>(memchr(text_, '\n', size_));
  bool const fits = end != nullptr || size_ < sizeof text_;
  if (end != nullptr) size_ = static_cast<std::size_t>(end - text_);
  if (size_ > 0 && text_[size_ - 1] == '\r') size_--;
  if (!read || !fits) {
    explicit_bzero(text_, sizeof text_);
    if (!read && error != 0) throw Failed(path + ": cannot read: " + strerror(error));
    throw Failed(path + ": no " + kind + " found" + (fits ? "" : ": the first line is too long"));
  }
  text_[size_] = '\0';
}

FileSecret::~FileSecret() { explicit_bzero(text_, sizeof text_); }

std::string ReadSecretFromInput() {
  if (isatty(STDIN_FILENO) != 0) {
    char text[4096];
    char const* const typed = Ask("Password: ", text, sizeof text);
    std::string secret = typed == nullptr ? "" : typed;
    explicit_bzero(text, sizeof text);
    if (typed == nullptr) throw Failed(std::string("cannot ask for the password: ") + strerror(errno));
    // Also the end of input, with which a user means to stop.
    if (secret.empty()) throw Failed("no password was typed; FIELD= sets an empty one");
    return secret;
  }
  std::string line;
  if (!std::getline(std::cin, line)) throw Failed("standard input: no password found");
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

std::string ReadSecretFromFile(std::string const& path) {
  FileSecret const secret(path, "password");
  return {secret.Text(), secret.Size()};
}
