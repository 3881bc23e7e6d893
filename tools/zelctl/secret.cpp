#include "secret.h"

#include <termios.h>
#include <unistd.h>

#include <fstream>
#include <iostream>

#include "terminal.h"

namespace {

std::string FirstLine(std::istream& in, std::string const& name) {
  std::string line;
  if (!std::getline(in, line)) throw Failed(name + ": no password there");
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

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

}  // namespace

std::string ReadSecretFromInput() {
  NoEcho const silence;
  return FirstLine(std::cin, "standard input");
}

std::string ReadSecretFromFile(std::string const& path) {
  std::ifstream file(path, std::ios::binary);
  return FirstLine(file, path);
}
