// zelctl cipher: files encrypted in the format of the product's earlier generation.
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>

#include "commands/families.h"
#include "files/edit.h"
#include "files/input.h"
#include "files/output.h"
#include "terminal/progress.h"
#include "terminal/secret.h"
#include "terminal/terminal.h"
#include "zelvane/crypto/cipher.h"

namespace {

using Code = bool (CipherClass::*)(void const* in, void* out, long length);

template <class Cipher>
std::unique_ptr<CipherClass> Make() {
  return std::make_unique<Cipher>();
}

std::map<std::string, std::unique_ptr<CipherClass> (*)()> const kAlgorithms = {
    {"safer-sk64", Make<Cipher_Safer_SK64>},
    {"safer-sk128", Make<Cipher_Safer>},
    {"safer-k64", Make<Cipher_Safer_K64>},
};

std::map<std::string, CipherMode> const kModes = {{"chained", CIPHER_CHAINED}, {"code-book", CIPHER_CODE_BOOK}};

struct Arguments {
  std::string phraseFile;
  std::string in;
  std::string out;
  std::string algorithm = "safer-sk64";
  std::string mode = "chained";
  Replacing replacing = {false, ".dat"};
  bool dryRun = false;
};

std::unique_ptr<CipherClass> KeyedCipher(Arguments const& arguments) {
  FileSecret const phrase(arguments.phraseFile, "pass phrase");
  if (phrase.Size() == 0) throw Failed(arguments.phraseFile + ": no pass phrase found");
  if (strlen(phrase.Text()) != phrase.Size()) throw Failed(arguments.phraseFile + ": pass phrase contains a NUL byte");
  Hash_RipeMD256 hash;
  std::unique_ptr<CipherClass> cipher = kAlgorithms.at(arguments.algorithm)();
  cipher->SetMode(kModes.at(arguments.mode));
  cipher->SetHash(&hash);
  if (!cipher->InitKey(phrase.Text(), nullptr)) throw Failed("cannot set the key (out of memory)");
  cipher->SetHash(nullptr);
  return cipher;
}

std::uint64_t LengthOf(Input& in) {
  std::uint64_t length = 0;
  char piece[65536];
  while (std::size_t const got = in.Fill(piece, sizeof piece)) length += got;
  return length;
}

void CodeFile(Arguments const& arguments, Code code, Terminal const& terminal) {
  std::unique_ptr<CipherClass> const cipher = KeyedCipher(arguments);
  Input in(arguments.in, arguments.in);
  struct stat source = {};
  if (fstat(in.Descriptor(), &source) != 0) throw FileFailed(arguments.in);
  bool const isFile = S_ISREG(source.st_mode);
  // Without its phrase OUT could never be read again.
  std::error_code none;
  if (std::filesystem::equivalent(arguments.out, arguments.phraseFile, none))
    throw WrongUsage("OUT and --phrase-file must be different files");
  if (arguments.dryRun) {
    RequireWritable(arguments.out, source, arguments.replacing);
    return TellOutput(arguments.out, LengthOf(in), true, terminal);
  }
  Output out(arguments.out, source, arguments.replacing);
  std::uint64_t done = 0;
  {
    Progress progress(isFile ? static_cast<std::uint64_t>(source.st_size) : 0);
    // A multiple of the block size, so that only the last part can have a partial block.
    char piece[65536];
    for (std::size_t got = 0; (got = in.Fill(piece, sizeof piece)) > 0; progress.Advance(got)) {
      if (!(*cipher.*code)(piece, piece, static_cast<long>(got))) throw Failed("cannot encrypt");
      out.Write(piece, got);
    }
    done = progress.Done();
  }
  out.Keep();
  if (done % 8 != 0 && arguments.mode == "code-book")
    terminal.Note(arguments.out + ": the last " + std::to_string(done % 8) +
                  " bytes cannot be recovered: code-book mode works in blocks of 8 bytes");
  if (terminal.json || out.IsFile()) TellOutput(arguments.out, done, false, terminal);
}

template <class Map>
std::vector<std::string> Names(Map const& map) {
  std::vector<std::string> names;
  names.reserve(map.size());
  for (auto const& [name, unused] : map) names.push_back(name);
  return names;
}

Command Direction(char const* name, char const* help, Code code) {
  auto const arguments = std::make_shared<Arguments>();
  auto const choice = [](char const* option, std::string& target, char const* meaning, auto const& names) {
    return Value(option, &target, "NAME", meaning).ShowingDefault().OneOf(Names(names));
  };
  return {
      name,
      help,
      [arguments, code](Terminal const& terminal) { CodeFile(*arguments, code, terminal); },
      {Argument("IN", &arguments->in, "Input file").Required(),
       Argument("OUT", &arguments->out, "Output file").Required(),
       Value("--phrase-file", &arguments->phraseFile, "FILE", "The pass phrase is the first line of FILE").Required(),
       Overwrite(arguments->replacing), DryOutput(arguments->dryRun),
       choice("--algorithm", arguments->algorithm, "Cipher", kAlgorithms),
       choice("--mode", arguments->mode, "Block chaining", kModes)}};
}

}  // namespace

Command CipherCommands() {
  return Family("cipher", "Encrypt or decrypt files of the product's earlier generation",
                "For old files only: a 64-bit key protects nothing today. The key is the RIPEMD-256 of the pass phrase "
                "without the line end; use Latin-1, as the old programs did. A wrong phrase is not detected: the "
                "output is noise. OUT is as long as IN and is replaced only when complete.",
                {"zelctl cipher encode --phrase-file phrase.txt plain.dat old.dat",
                 "zelctl cipher decode --phrase-file phrase.txt old.dat plain.dat"},
                {Direction("encode", "Encrypt a file", &CipherClass::EncodeBuffer),
                 Direction("decode", "Decrypt a file", &CipherClass::DecodeBuffer)});
}
