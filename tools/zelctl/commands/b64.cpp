// zelctl b64: Base64 as in the configuration files, for values, files and pipes.
#include <errno.h>
#include <sys/stat.h>

#include <iostream>
#include <iterator>
#include <memory>
#include <optional>

#include "commands/families.h"
#include "files/edit.h"
#include "files/format.h"
#include "files/output.h"
#include "terminal/latin1.h"
#include "terminal/terminal.h"
#include "zelvane/crypto/base64.h"

namespace {

struct Arguments {
  std::optional<std::string> text;
  std::vector<std::string> files;
  Replacing replacing;
  bool dryRun = false;
};

std::string Result(ClassBase64& codec) {
  std::string bytes(codec.SaveToBuf(nullptr, 0), '\0');
  codec.SaveToBuf(bytes.data(), bytes.size());
  return bytes;
}

void ConvertFile(ClassBase64& codec, bool encode, Arguments const& arguments, Terminal const& terminal) {
  std::string const& from = arguments.files[0];
  std::string const& to = arguments.files[1];
  struct stat source = {};
  if (stat(from.c_str(), &source) != 0) throw Failed(CannotRead(from, errno));
  if (!S_ISREG(source.st_mode)) throw Failed(from + ": not a regular file");
  if (source.st_size == 0) throw Failed(from + ": empty");
  errno = 0;
  if (!codec.LoadFromFile(from)) throw Failed(CannotRead(from, errno));
  std::string const result = Result(codec);
  if (!encode && result.empty()) throw Failed(from + ": no Base64 found");
  if (arguments.dryRun) {
    RequireWritable(to, source, arguments.replacing);
    return TellOutput(to, result.size(), true, terminal);
  }
  Output out(to, source, arguments.replacing);
  out.Write(result.data(), result.size());
  out.Keep();
  if (terminal.json || out.IsFile()) TellOutput(to, result.size(), false, terminal);
}

void ConvertInput(ClassBase64& codec, bool encode, Terminal const& terminal) {
  std::string const input(std::istreambuf_iterator<char>(std::cin), {});
  if (!codec.LoadFromBuf(input.data(), input.size())) throw Failed("standard input is empty");
  std::string const result = Result(codec);
  if (!encode && result.empty()) throw Failed("standard input: no Base64 found");
  if (terminal.json) {
    terminal.PrintJson({{"result", ToUtf8(result)}});
  } else {
    // Decoded bytes can be anything.
    IsOnTerminal() && !encode ? terminal.PrintText(result) : void(std::cout << result << (encode ? "\n" : ""));
  }
}

void ConvertText(ClassBase64& codec, bool encode, std::string const& argument, Terminal const& terminal) {
  std::string const text = terminal.FromArgument("TEXT", argument);
  if (!codec.LoadFromStr(text)) throw Failed("TEXT: cannot convert");
  std::string result = Result(codec);
  if (!encode) {
    if (result.empty()) throw Failed("TEXT: no Base64 found");
    result.erase(std::min(result.find('\0'), result.size()));
  }
  if (terminal.json) {
    terminal.PrintJson({{"result", ToUtf8(result)}});
  } else {
    terminal.PrintValue(result);
  }
}

template <class Codec>
Command Direction(bool encode, char const* name, char const* help, char const* notes) {
  auto const arguments = std::make_shared<Arguments>();
  auto const convert = [encode](Arguments const& given, Terminal const& terminal) {
    Codec codec;
    if (!given.files.empty()) return ConvertFile(codec, encode, given, terminal);
    if (given.text) return ConvertText(codec, encode, *given.text, terminal);
    ConvertInput(codec, encode, terminal);
  };
  return {name,
          help,
          On(arguments, convert),
          {Argument("TEXT", &arguments->text, "Text to convert; put \"--\" before a text that starts with \"-\"")
               .Excludes("--file"),
           Value("-f,--file", &arguments->files, "IN OUT", "Convert file IN to file OUT").Values(2, 2),
           Overwrite(arguments->replacing), DryOutput(arguments->dryRun).Needs("--file")},
          notes};
}

}  // namespace

Command B64Commands() {
  return Family(
      "b64", "Encode and decode Base64, as used for passwords", "",
      {"zelctl b64 encode secret              c2VjcmV0AA==", "printf secret | zelctl b64 encode     c2VjcmV0",
       "zelctl b64 encode --file logo.png logo.b64", "zelctl b64 decode c2VjcmV0AA==        secret",
       "zelctl b64 decode < logo.b64 > logo.png"},
      {Direction<EncodeBase64>(true, "encode", "Encode TEXT, a file, or standard input",
                               "TEXT is encoded with its terminating NUL, like stored passwords. Other users can see "
                               "it while the command runs. A file and standard input are encoded byte for byte. Output "
                               "lines have 72 characters and end with CR LF, except the last one."),
       Direction<DecodeBase64>(false, "decode", "Decode TEXT, a file, or standard input",
                               "Characters that are not Base64 are skipped. A decoded TEXT is printed up to its first "
                               "NUL, a file or standard input prints all bytes.")});
}
