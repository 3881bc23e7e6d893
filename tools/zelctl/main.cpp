// zelctl: the library's functions on the command line.
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <new>
#include <streambuf>
#include <string>

#include "commands/commandline.h"
#include "commands/families.h"
#include "terminal/terminal.h"

namespace {

constexpr Command (*kCommands[])() = {ShutdownCommands, CfgCommands,    B64Commands,   UpsCommands,  TypeCommands,
                                      ServerCommands,   ClientCommands, InfoCommand,   PortsCommand, DigestCommand,
                                      CipherCommands,   ProcCommands,   SvcCommands,   LogCommands,  ScheduleCommands,
                                      LangCommands,     BrowseCommands, StatusCommand, ReportCommand};

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// Standard output that remembers why a write failed: the stream itself only remembers that one did.
class Answer final : public std::streambuf {
 public:
  Answer() : to_(std::cout.rdbuf(this)) {}
  Answer(Answer const&) = delete;
  Answer& operator=(Answer const&) = delete;
  ~Answer() override { std::cout.rdbuf(to_); }

  // Output that was not written (a redirection to a full disk) is an error.
  void RequireWritten() const {
    if (!std::cout.flush())
      throw Failed("cannot write the output" + (reason_ == 0 ? "" : std::string(": ") + strerror(reason_)));
  }

 protected:
  int_type overflow(int_type c) override {
    errno = 0;
    int_type const put = to_->sputc(traits_type::to_char_type(c));
    Remember(put != traits_type::eof());
    return put;
  }

  std::streamsize xsputn(char const* text, std::streamsize size) override {
    errno = 0;
    std::streamsize const put = to_->sputn(text, size);
    Remember(put == size);
    return put;
  }

  int sync() override {
    errno = 0;
    int const result = to_->pubsync();
    Remember(result == 0);
    return result;
  }

 private:
  void Remember(bool done) {
    if (!done && reason_ == 0) reason_ = errno;
  }

  std::streambuf* to_;
  int reason_ = 0;
};

// Keeps the first opened file from taking the place of a stream that the caller closed.
void HoldStreams() {
  int fd = 0;
  while ((fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0 && fd <= STDERR_FILENO) continue;
  close(fd);
}

int Run(int argc, char** argv) {
  Command root = {"zelctl", "Read and change the settings, logs and lists of the Zelvane UPS programs", nullptr};
  root.notes = "See `zelctl GROUP COMMAND --help`. Exit codes: 0 success, 1 failure, 2 usage error.";
  for (Command (*const make)() : kCommands) root.commands.push_back(make());
  root.commands.push_back(HelpCommand(root));
  Terminal terminal;
  Answer const answer;
  RunCommandLine(root, terminal, argc, argv);
  answer.RequireWritten();
  return terminal.status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    HoldStreams();
    // A limit on file sizes is then a failure with a reason; the signal's own action would leave temporary files. An
    // ignored signal would stay ignored in the programs that the command starts.
    signal(SIGXFSZ, [](int) {});
    return Run(argc, argv);
  } catch (WrongUsage const& error) {
    Complain(error.what());
    return kWrongUsage;
  } catch (std::bad_alloc const&) {
    Complain("out of memory");
    return kFailed;
  } catch (std::exception const& error) {
    Complain(error.what());
    return kFailed;
  }
}
