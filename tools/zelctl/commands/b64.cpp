// zelctl b64: Base64 as the configuration files hold it, and of files and pipes.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>

#include "commands/families.h"
#include "terminal/latin1.h"
#include "terminal/terminal.h"
#include "zelvane/crypto/base64.h"

namespace {

struct Arguments {
  std::string text;
  std::vector<std::string> files;
};

std::string Result(ClassBase64& codec) {
  std::string bytes(codec.SaveToBuf(nullptr, 0), '\0');
  codec.SaveToBuf(bytes.data(), bytes.size());
  return bytes;
}

void ConvertFile(ClassBase64& codec, std::vector<std::string> const& files, Terminal const& terminal) {
  if (!codec.LoadFromFile(files[0])) throw Failed(files[0] + ": cannot be read, is empty or is no regular file");
  if (!codec.SaveToFile(files[1])) throw Failed(files[1] + ": cannot be written");
  if (terminal.json) terminal.PrintJson({{"file", files[1]}, {"bytes", codec.SaveToBuf(nullptr, 0)}});
}

void ConvertInput(ClassBase64& codec, bool encode, Terminal const& terminal) {
  std::string const input(std::istreambuf_iterator<char>(std::cin), {});
  if (!codec.LoadFromBuf(input.data(), input.size())) throw Failed("standard input is empty");
  std::string const result = Result(codec);
  if (!encode && result.empty()) throw Failed("standard input holds no Base64");
  if (terminal.json) {
    terminal.PrintJson({{"result", ToUtf8(result)}});
  } else {
    std::cout << result << (encode ? "\n" : "");
  }
}

void ConvertText(ClassBase64& codec, bool encode, std::string const& argument, Terminal const& terminal) {
  std::string const text = terminal.FromArgument("TEXT", argument);
  if (!codec.LoadFromStr(text)) throw Failed("TEXT: cannot be converted");
  std::string result = Result(codec);
  if (!encode) {
    if (result.empty()) throw Failed("TEXT: no Base64");
    result.erase(std::min(result.find('\0'), result.size()));
  }
  if (terminal.json) {
    terminal.PrintJson({{"result", ToUtf8(result)}});
  } else {
    terminal.PrintText(result);
  }
}

template <class Codec>
void AddDirection(CLI::App* family, Terminal& terminal, bool encode, char const* description, char const* footer) {
  auto const arguments = std::make_shared<Arguments>();
  CLI::App* const command = AddCommand(family, terminal, encode ? "encode" : "decode", description);
  auto* const text =
      command->add_option("TEXT", arguments->text, "Text to convert (after \"--\" if it begins with \"-\")");
  auto* const files = command->add_option("-f,--file", arguments->files, "Convert the bytes of file IN into file OUT");
  text->type_name("")->excludes(files);
  files->type_name("IN OUT")->expected(2);
  command->footer(footer);
  command->callback([arguments, text, files, encode, &terminal] {
    Codec codec;
    if (*files) return ConvertFile(codec, arguments->files, terminal);
    if (*text) return ConvertText(codec, encode, arguments->text, terminal);
    ConvertInput(codec, encode, terminal);
  });
}

}  // namespace

void AddB64(CLI::App& app, Terminal& terminal) {
  CLI::App* const family = app.add_subcommand("b64", "Base64 as the settings hold passwords");
  family->require_subcommand(1);
  AddDirection<EncodeBase64>(
      family, terminal, true, "Encode TEXT, a file, or standard input",
      "TEXT is encoded with the NUL behind it, as the programs store passwords (other users of this machine can see\n"
      "it while the command runs). A file and standard input are encoded byte for byte.\n"
      "Lines of the result have 72 characters and end in CR LF, but for the last.\n\n"
      "  zelctl b64 encode secret              c2VjcmV0AA==\n"
      "  printf secret | zelctl b64 encode     c2VjcmV0\n"
      "  zelctl b64 encode --file logo.png logo.b64");
  AddDirection<DecodeBase64>(
      family, terminal, false, "Decode TEXT, a file, or standard input",
      "Whatever is no Base64 character is skipped. TEXT gives the text up to its first NUL; a file and standard\n"
      "input give all bytes.\n\n"
      "  zelctl b64 decode c2VjcmV0AA==        secret\n"
      "  zelctl b64 decode < logo.b64 > logo.png");
}
