// The command zelctl, run as people run it: arguments and input in; output, exit code and files out.
// A build without the command has nothing to run.
#ifdef ZELVANE_ZELCTL

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/settings.h"

namespace {

namespace fs = std::filesystem;
using test::ReadFile;
using Words = std::vector<std::string>;

struct Answer {
  int code;
  std::string out;
  std::string err;
};

// A copy of the demonstration's installation, and the command run on it; "@" in a word stands for the root's path.
class Zelctl : public testing::Test {
 protected:
  Zelctl() {
    for (char const* name : {"upscli.cfg", "upssrv.cfg"}) here_.Write(std::string("root/") + name, Fixture(name));
    here_.Write("home/.zelvane", Fixture("home/.zelvane"));
  }

  static std::string Fixture(std::string const& name) { return ReadFile(ZELVANE_FIXTURES "/demo-root/" + name); }
  std::string Cli() const { return here_.Read("root/upscli.cfg"); }

  Answer Run(Words words, std::string const& input = "", std::string const& device = "") const {
    words.insert(words.begin(), ZELVANE_ZELCTL);
    std::vector<char*> argv;
    for (std::string& word : words) {
      for (std::size_t at = word.find('@'); at != std::string::npos; at = word.find('@', at + here_.Root().size()))
        word.replace(at, 1, here_.Root());
      argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::string const outPath = device.empty() ? box_.Path("out") : device;
    box_.Write("in", input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, box_.Path("in").c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, box_.Path("err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = 0;
    int const failure = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = -1;
    if (failure != 0 || waitpid(child, &status, 0) != child) ADD_FAILURE() << argv[0] << " did not run";
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -status, device.empty() ? ReadFile(outPath) : "",
            box_.Read("err")};
  }

  // Every file below the scratch folder with its bytes: what a command that failed must not have changed.
  std::string Everything() const {
    std::string all;
    for (std::string const& name : here_.List())
      all += name + "\n" + (name.back() == '/' ? "" : here_.Read(name)) + "\n";
    return all;
  }

  test::Installation here_;
  test::Scratch box_;
};

std::string Joined(Words const& words) {
  std::string text;
  for (std::string const& word : words) text += word + " | ";
  return text;
}

std::string Replaced(std::string text, std::vector<std::pair<std::string, std::string>> const& changes) {
  for (auto const& [from, to] : changes) {
    std::size_t const at = text.find(from);
    if (at == std::string::npos || text.find(from, at + 1) != std::string::npos) ADD_FAILURE() << "not once: " << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
  }
  return text;
}

std::string const kX20(20, 'x');
std::string const kX256(256, 'x');

TEST_F(Zelctl, RefusesWhatTheFilesCannotHoldAndWritesNothing) {
  struct {
    Words assignments;
    char const* message;
  } const cases[] = {
      {{"mailSubjct=x"}, "no field \"mailSubjct\"; did you mean mailSubject?"},
      {{"POPUP=on"}, "no field \"POPUP\"; did you mean popup?"},
      {{"=x"}, "no field \"\""},
      {{"popup"}, "\"popup\": FIELD=VALUE is wanted"},
      {{}, "nothing to set"},
      {{"popup=on", "popup=off"}, "popup: given twice"},
      {{"popup=yes"}, "popup: on or off"},
      {{"mailSubject=a[1"}, "mailSubject: '[' or ']'"},
      {{"mailSubject=a]"}, "mailSubject: '[' or ']'"},
      {{"mailMessage=one\ntwo"}, "mailMessage: a line feed"},
      {{"mailMessage= x"}, "mailMessage: blanks at either end"},
      {{"mailMessage=x\t"}, "mailMessage: blanks at either end"},
      {{"mailMessage=x\r"}, "mailMessage: blanks at either end"},
      {{"serverName=a;b"}, "serverName: ';'"},
      {{"serverAddress=1;2"}, "serverAddress: ';'"},
      {{"serverName=" + kX20 + "x"}, "serverName: at most 20 characters, not 21"},
      {{"mailPassword=" + kX20 + "x"}, "mailPassword: at most 20 characters, not 21"},
      {{"cmdLine=" + kX256}, "cmdLine: at most 255 characters, not 256"},
      {{"timeLimit=2147483648"}, "timeLimit: a number from 0 to 2147483647"},
      {{"timeLimit=99999999999999999999"}, "timeLimit: a number from 0 to 2147483647"},
      {{"timeLimit=-1"}, "timeLimit: a number"},
      {{"timeLimit="}, "timeLimit: a number"},
      {{"timeLimit=5s"}, "timeLimit: a number"},
      {{"serverPort=65536"}, "serverPort: a number from 0 to 65535"},
      {{"--utf8", "mailFrom=\xE2\x82\xAC"}, "mailFrom: not UTF-8, or a character"},
      {{"--utf8", "mailFrom=\xE3"}, "mailFrom: not UTF-8, or a character"},
      {{"--utf8", "mailFrom=\xC3"}, "mailFrom: not UTF-8, or a character"},
      {{"popup=on", "mailSubject=["}, "mailSubject: '[' or ']'"},
      {{"--no-such-option"}, "--no-such-option"},
  };
  std::string const before = Everything();
  for (auto const& c : cases) {
    Words words = {"shutdown", "set", "--dir", "@"};
    words.insert(words.end(), c.assignments.begin(), c.assignments.end());
    Answer const answer = Run(words);
    EXPECT_EQ(answer.code, 2) << Joined(words);
    EXPECT_NE(answer.err.find(c.message), std::string::npos) << Joined(words) << answer.err;
    EXPECT_EQ(answer.out, "") << Joined(words);
    ASSERT_EQ(Everything(), before) << Joined(words);
  }
}

TEST_F(Zelctl, TakesWhatJustFits) {
  struct {
    char const* field;
    std::string value;
    std::string json;
  } const cases[] = {
      {"serverName", kX20, "\"" + kX20 + "\""},
      {"cmdLine", kX256.substr(1), "\"" + kX256.substr(1) + "\""},
      {"cmdLine", "", "\"\""},
      {"cmdLine", "a=b; \"c\" \\", "\"a=b; \\\"c\\\" \\\\\""},
      {"mailPassword", " [a;b]\n ", "\" [a;b]\\n \""},
      {"mailPassword", kX20, "\"" + kX20 + "\""},
      {"timeLimit", "2147483647", "2147483647"},
      {"timeLimit", "0", "0"},
      {"serverPort", "65535", "65535"},
      {"popup", "1", "true"},
      {"systemShutdown", "0", "false"},
      {"mailFrom", "\xE3", "\"\xC3\xA3\""},
      {"langId", "7", "7"},
  };
  for (auto const& c : cases) {
    Answer const set = Run({"shutdown", "set", "--dir", "@", c.field + ("=" + c.value)});
    EXPECT_EQ(set.code, 0) << c.field << set.err;
    EXPECT_EQ(set.out + set.err, "") << c.field;
    Answer const shown = Run({"shutdown", "show", "--dir", "@", "--json", "--show-password", c.field});
    EXPECT_EQ(shown.out, "{\n  \"" + std::string(c.field) + "\": " + c.json + "\n}\n");
  }
}

TEST_F(Zelctl, SettingTouchesItsOwnLinesOnly) {
  Answer const set = Run({"shutdown", "set", "--dir", "@", "--utf8", "--json", "popup=on", "popupInterval=30",
                          "langId=1", "mailPassword=-", "shutMessage=J\xC3\xA1!"},
                         "nova senha\r\nsecond line");
  EXPECT_EQ(set.code, 0) << set.err;
  EXPECT_EQ(set.out,
            "{\n  \"popup\": {\n    \"before\": false,\n    \"now\": true\n  },\n"
            "  \"shutMessage\": {\n"
            "    \"before\": \"Aten\xC3\xA7\xC3\xA3o: %c ser\xC3\xA1 desligado em %r s. (%m)\",\n"
            "    \"now\": \"J\xC3\xA1!\"\n  },\n"
            "  \"popupInterval\": {\n    \"before\": 0,\n    \"now\": 30\n  },\n"
            "  \"mailPassword\": {\n    \"before\": null,\n    \"now\": null\n  },\n"
            "  \"langId\": {\n    \"before\": 0,\n    \"now\": 1\n  }\n}\n");
  std::string const expected =
      Replaced(Fixture("upscli.cfg"),
               {{"   Popup=0            \n", "Popup = 1\n"},
                {"SHUTMESSAGE = Aten\xE7\xE3o: %c ser\xE1 desligado em %r s. (%m)\n", "SHUTMESSAGE = J\xE1!\n"},
                {"INTERVAL = 0\n", "INTERVAL = 30\n"},
                {"PASSWORD = c2VncmVkbwA=\n", "PASSWORD = bm92YSBzZW5oYQA=\n"}});
  EXPECT_EQ(Cli(), expected);
  EXPECT_EQ(here_.Read("home/.zelvane"), Replaced(Fixture("home/.zelvane"), {{"LangId = 0\n", "LangId = 1\n"}}));
  EXPECT_EQ(here_.List(),
            (Words{"home/", "home/.zelvane", "root/", "root/upscli.cfg", "root/upssrv.cfg", "zelvane.conf"}));

  Answer const file = Run({"shutdown", "set", "--dir", "@", "--password-file", here_.Write("secret", "segredo\n")});
  EXPECT_EQ(file.code, 0) << file.err;
  EXPECT_EQ(Cli(), Replaced(expected, {{"bm92YSBzZW5oYQA=", "c2VncmVkbwA="}}));
}

TEST_F(Zelctl, ShowsTablesJsonAndBothEncodings) {
  std::string const head = "FIELD         VALUE                   MEANING\n";
  std::string const row = "mailPassword  (not shown)             mails: that user's password\n";
  std::string const to = "mailTo        plant\xE3o@exemplo.com.br  mails: receivers\n";
  Words const show = {"shutdown", "show", "--dir", "@", "mailTo", "mailPassword"};
  EXPECT_EQ(Run(show).out, head + to + row);
  auto const with = [&show](Words options) {
    options.insert(options.begin(), show.begin(), show.end());
    return options;
  };
  EXPECT_EQ(Run(with({"--utf8"})).out, head + Replaced(to, {{"\xE3", "\xC3\xA3"}}) + row);
  EXPECT_EQ(Run(with({"--show-password"})).out, head + to + Replaced(row, {{"(not shown)", "segredo    "}}));
  EXPECT_EQ(Run(with({"--json"})).out,
            "{\n  \"mailTo\": \"plant\xC3\xA3o@exemplo.com.br\",\n  \"mailPassword\": null\n}\n");
  EXPECT_EQ(Run(with({"nofield"})).code, 2);

  // A file must not drive the terminal that it is shown on.
  here_.Write("root/upscli.cfg",
              "[MAILSEND]\nFROM = a\x1B\x9B"
              "0m\x7F\n");
  EXPECT_EQ(Run({"shutdown", "show", "--dir", "@", "mailFrom"}).out,
            "FIELD     VALUE            MEANING\nmailFrom  a\\x1B\\x9B0m\\x7F  mails: sender\n");
}

TEST_F(Zelctl, DefaultsAreThoseOfAMissingFile) {
  Answer const defaults = Run({"shutdown", "defaults", "--json"});
  EXPECT_EQ(defaults.code, 0);
  EXPECT_NE(defaults.out.find("\"timeLimit\": 60,\n  \"shutMessage\": \"O computador %c (%i) sera' desligado em %r "
                              "segundo(s)! Motivo: %m.\""),
            std::string::npos)
      << defaults.out;
  fs::remove(here_.Path("root/upscli.cfg"));
  Answer const shown = Run({"shutdown", "show", "--dir", "@", "--json"});
  EXPECT_EQ(shown.out, defaults.out);
  EXPECT_EQ(shown.err,
            "zelctl: note: " + here_.Root("upscli.cfg") + " does not exist: its settings have their defaults\n");
  EXPECT_FALSE(here_.Exists("root/upscli.cfg"));
}

TEST_F(Zelctl, FilesThatDoNotFitFailWithoutAWrite) {
  Words const set = {"shutdown", "set", "--dir", "@", "popup=on"};
  struct {
    char const* file;
    char const* message;
  } const cases[] = {
      {"[SHUTSRV]\nZELSRV = a;b\n", "upscli.cfg: ZELSRV in [SHUTSRV] is not NAME;ADDRESS;PORT"},
      {"[SHUTSRV]\nPOPUP = 1\nx\nRUNCOMMAND = 1\n", "upscli.cfg:3: syntax error: lines below this one are not read"},
      {"[CLOSEANDSAVEAPP]\nTIMELIMIT = -1\n", "timeLimit: the file holds a value that cannot be saved again"},
  };
  for (auto const& c : cases) {
    here_.Write("root/upscli.cfg", c.file);
    std::string const before = Everything();
    Answer const answer = Run(set);
    EXPECT_EQ(answer.code, 1) << c.file;
    EXPECT_NE(answer.err.find(c.message), std::string::npos) << answer.err;
    EXPECT_EQ(Everything(), before);
  }
  Answer const missing = Run({"shutdown", "show", "--dir", "@none"});
  EXPECT_EQ(missing.code, 1);
  EXPECT_EQ(missing.err, "zelctl: " + here_.Root("none") + ": no such folder\n");
  fs::remove(here_.Path("root/upscli.cfg"));
  fs::create_directory(here_.Path("root/upscli.cfg"));
  for (char const* command : {"show", "set"})
    EXPECT_EQ(Run({"shutdown", command, "--dir", "@", "popup"}).code, command[1] == 'h' ? 1 : 2);
  EXPECT_EQ(Run(set).code, 1);
}

TEST_F(Zelctl, CfgReadsAsTheEngineDoes) {
  here_.Write("a.cfg", "top=1\r\n[b]\n Key = v 1 ; n\n[A]\n[B]\nkey=2\nPassword = c2Vj\n\xE7=\xE3\n");
  std::string const a = here_.Path("a.cfg");
  struct {
    Words words;
    int code;
    std::string out;
  } const cases[] = {
      {{"list", a},
       0,
       "SECTION  KEY       VALUE\n[ ]      TOP       1\n[A]\n[B]      KEY       v 1 ; n\n[B]      PASSWORD  (not "
       "shown)\n"
       "[B]      \xC7         \xE3\n"},
      {{"list", a, "b", "--json", "--show-password"},
       0,
       "{\n  \"b\": {\n    \"KEY\": \"v 1 ; n\",\n    \"PASSWORD\": \"c2Vj\",\n    \"\xC3\x87\": \"\xC3\xA3\"\n  "
       "}\n}\n"},
      {{"list", a, ""}, 0, "SECTION  KEY  VALUE\n[ ]      TOP  1\n"},
      {{"list", a, "none"}, 1, ""},
      {{"list", a + "x"}, 1, ""},
      {{"list"}, 2, ""},
      {{"get", a, "", "Top"}, 0, "1\n"},
      {{"get", a, "b", "KEY"}, 0, "v 1 ; n\n"},
      {{"get", a, "B", "\xE7"}, 0, "\xE3\n"},
      {{"get", a, "B", "\xC3\xA7", "--utf8"}, 0, "\xC3\xA3\n"},
      {{"get", a, "b", "password"}, 2, ""},
      {{"get", a, "b", "password", "--show-password"}, 0, "c2Vj\n"},
      {{"get", a, "b", "key", "--json"},
       0,
       "{\n  \"section\": \"b\",\n  \"key\": \"key\",\n  \"value\": \"v 1 ; n\"\n}\n"},
      {{"get", a, "b", "none"}, 1, ""},
      {{"get", a, "list", "get"}, 1, ""},  // names of commands are names like any other
      {{"get", a, "b"}, 2, ""},
  };
  std::string const before = Everything();
  for (auto const& c : cases) {
    Words words = c.words;
    words.insert(words.begin(), "cfg");
    Answer const answer = Run(words);
    EXPECT_EQ(answer.code, c.code) << Joined(words) << answer.err;
    EXPECT_EQ(answer.out, c.out) << Joined(words);
    EXPECT_EQ(answer.err.empty(), c.code == 0) << Joined(words) << answer.err;
  }
  EXPECT_EQ(Everything(), before);
}

TEST_F(Zelctl, CfgWritesOneLine) {
  std::string const old = "; c\r\n[b]\n  Key=1\n\n[A]\nkey=2\nkey=3\n";
  struct {
    Words words;  // behind FILE
    int code;
    std::string file;
  } const cases[] = {
      {{"set", "B", "KEY", "x = y"}, 0, "; c\r\n[b]\nKey = x = y\n\n[A]\nkey=2\nkey=3\n"},
      {{"set", "B", "New", ""}, 0, "; c\r\n[b]\n  Key=1\nNEW = \n\n[A]\nkey=2\nkey=3\n"},
      {{"set", "B", "New", "v", "--reg"}, 0, "; c\r\n[b]\n  Key=1\nNew = v\n\n[A]\nkey=2\nkey=3\n"},
      {{"set", "New", "k", "\xE3"}, 0, old + "\n[NEW]\nK = \xE3"},
      {{"set", "New", "k", "\xC3\xA3", "--utf8", "--reg"}, 0, old + "\n[New]\nk = \xE3"},
      {{"set", "B", "Key", "--", "-x"}, 0, "; c\r\n[b]\nKey = -x\n\n[A]\nkey=2\nkey=3\n"},
      {{"set", "B", "Key", "-x"}, 2, old},
      {{"set", "B", "Key", "[x]"}, 2, old},
      {{"set", "B", "Key", "a\nb"}, 2, old},
      {{"set", "B", "Key", " a"}, 2, old},
      {{"set", "B", "a=b", "v"}, 2, old},
      {{"set", "B", ";a", "v"}, 2, old},
      {{"set", "B", "'a", "v"}, 2, old},
      {{"set", "B", "#", "v"}, 2, old},
      {{"set", "B", "", "v"}, 2, old},
      {{"set", "B", "a]", "v"}, 2, old},
      {{"set", "B]", "a", "v"}, 2, old},
      {{"set", "B ", "a", "v"}, 2, old},
      {{"set", "B", "a"}, 2, old},
      {{"unset", "b", "key"}, 0, "; c\r\n[b]\n\n[A]\nkey=2\nkey=3\n"},
      {{"unset", "b"}, 0, "; c\r\n\n[A]\nkey=2\nkey=3\n"},
      {{"unset", "a", "key"}, 1, "; c\r\n[b]\n  Key=1\n\n[A]\nkey=3\n"},  // done, but the repetition counts now
      {{"unset", "b", "none"}, 1, old},
      {{"unset", "none"}, 1, old},
  };
  for (auto const& c : cases) {
    std::string const path = here_.Write("a.cfg", old);
    Words words = c.words;
    words.insert(words.begin(), "cfg");
    words.insert(words.begin() + 2, path);
    Answer const answer = Run(words);
    EXPECT_EQ(answer.code, c.code) << Joined(words) << answer.err;
    EXPECT_EQ(answer.out, "") << Joined(words);
    EXPECT_EQ(here_.Read("a.cfg"), c.file) << Joined(words);
  }
  EXPECT_EQ(Run({"cfg", "set", here_.Path("none.cfg"), "a", "b", "c"}).code, 1);
  EXPECT_FALSE(here_.Exists("none.cfg"));
  EXPECT_EQ(Run({"cfg", "set", here_.Path("a.cfg"), "a", "password", "c", "--json"}).out,
            "{\n  \"section\": \"a\",\n  \"key\": \"password\",\n  \"value\": null\n}\n");
}

TEST_F(Zelctl, CfgWritesBelowASyntaxErrorOnlyWhenForced) {
  std::string const old = "[A]\nk=1\nbad[\nlost=2\n";
  for (Words command : {Words{"set", "A", "k", "2"}, Words{"unset", "A", "k"}}) {
    std::string const path = here_.Write("a.cfg", old);
    fs::remove(here_.Path("a.cfg.lost"));
    command.insert(command.begin(), "cfg");
    command.insert(command.begin() + 2, path);
    Answer const refused = Run(command);
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.err.find("zelctl: " + path + ":3: syntax error"), 0U) << refused.err;
    EXPECT_EQ(here_.Read("a.cfg"), old);
    EXPECT_FALSE(here_.Exists("a.cfg.lost"));
    command.emplace_back("--force");
    EXPECT_EQ(Run(command).code, 0);
    EXPECT_EQ(here_.Read("a.cfg"), command[1] == "set" ? "[A]\nk = 2\nbad[" : "[A]\nbad[");
    EXPECT_EQ(here_.Read("a.cfg.lost"), old);
  }
}

TEST_F(Zelctl, LintNamesEveryLineThatIsNotRead) {
  std::string const path = here_.Write("a.cfg",
                                       "Top=0\n[Net]\nHost=a\nhost=b\n[x]\nHost=c\n[ NET ]\nHOST=d\nPort=1\n"
                                       "Password=a[\n\nPASSWORD = plain\n; c\xE3\n");
  auto const at = [&path](int line, std::string const& text) {
    return path + ":" + std::to_string(line) + ": " + text + "\n";
  };
  Answer const answer = Run({"cfg", "lint", path, "--utf8"});
  EXPECT_EQ(answer.code, 1);
  EXPECT_EQ(answer.out, at(4, "never read: HOST of [NET] stands in line 3 already") +
                            at(7, "repeated section: [NET] was opened in line 2, and the keys below are added there") +
                            at(8, "never read: HOST of [NET] stands in line 3 already") +
                            at(10, "syntax error: '[' or ']' in a key or value: Password= (not shown)") +
                            at(11, "not read, dropped by the next save: (blank)") +
                            at(12, "not read, dropped by the next save: PASSWORD = (not shown)") +
                            at(13, "not read, dropped by the next save: ; c\xC3\xA3"));
  EXPECT_NE(Run({"cfg", "lint", path, "--show-password"}).out.find("PASSWORD = plain\n"), std::string::npos);

  struct {
    char const* file;
    int code;
    char const* message;  // behind FILE:1:, "" for no output
  } const cases[] = {
      {"", 0, ""},
      {"[A]\nk=1\n; [x\nABC\n", 0, ""},
      {"=5", 1, "syntax error: no key before '=': =5"},
      {"x\n", 1, "syntax error: one character alone: x"},
      {" [] \n", 1, "syntax error: a header without a name: []"},
      {"[a] b", 1, "syntax error: a header whose first ']' is not the end of the line: [a] b"},
  };
  for (auto const& c : cases) {
    here_.Write("a.cfg", c.file);
    Answer const lint = Run({"cfg", "lint", path});
    EXPECT_EQ(lint.code, c.code) << c.file;
    EXPECT_EQ(lint.out, *c.message == '\0' ? "" : at(1, c.message)) << c.file;
  }
  EXPECT_EQ(
      Run({"cfg", "lint", path, "--json"}).out,
      "[\n  {\n    \"file\": \"" + path +
          "\",\n    \"line\": 1,\n    \"kind\": \"syntax-error\",\n"
          "    \"message\": \"syntax error: a header whose first ']' is not the end of the line: [a] b\"\n  }\n]\n");
  Answer const missing = Run({"cfg", "lint", here_.Path("none.cfg")});
  EXPECT_EQ(missing.code, 1);
  EXPECT_EQ(missing.err, "zelctl: " + here_.Path("none.cfg") + ": no such file\n");
}

TEST_F(Zelctl, Base64OfTextFilesAndPipes) {
  std::string const bytes("a\0\xFF\r\n", 5);
  struct {
    Words words;
    std::string input;
    int code;
    std::string out;
  } const cases[] = {
      {{"encode", "abc"}, "", 0, "YWJjAA==\n"},
      {{"encode", ""}, "", 0, "AA==\n"},
      {{"encode", "decode"}, "", 0, "ZGVjb2RlAA==\n"},
      {{"encode", "\xC3\xA3", "--utf8"}, "", 0, "4wA=\n"},
      {{"encode", "abc", "--json"}, "", 0, "{\n  \"result\": \"YWJjAA==\"\n}\n"},
      {{"encode"}, bytes, 0, "YQD/DQo=\n"},
      {{"encode"}, "", 1, ""},
      {{"decode", "YWJjAA=="}, "", 0, "abc\n"},
      {{"decode", "YWJj"}, "", 0, "abc\n"},
      {{"decode", "4wA=", "--utf8"}, "", 0, "\xC3\xA3\n"},
      {{"decode", "4wA=", "--json"}, "", 0, "{\n  \"result\": \"\xC3\xA3\"\n}\n"},
      {{"decode", "***"}, "", 1, ""},
      {{"decode"}, " YQ*D/\r\nDQo=\n", 0, bytes},
      {{"decode"}, "***", 1, ""},
      {{"encode", "x", "--file", "@upssrv.cfg", "@x"}, "", 2, ""},
      {{"encode", "--file", "@none", "@x"}, "", 1, ""},
      {{"encode", "--file", "@upssrv.cfg"}, "", 2, ""},
      {{"encode", "--file", "@upssrv.cfg", "@x"}, "", 0, ""},
      {{"decode", "--file", "@x", "@y", "--json"},
       "",
       0,
       "{\n  \"file\": \"" + here_.Root("y") + "\",\n  \"bytes\": " + std::to_string(Fixture("upssrv.cfg").size()) +
           "\n}\n"},
  };
  for (auto const& c : cases) {
    Words words = c.words;
    words.insert(words.begin(), "b64");
    Answer const answer = Run(words, c.input);
    EXPECT_EQ(answer.code, c.code) << Joined(words) << answer.err;
    EXPECT_EQ(answer.out, c.out) << Joined(words);
  }
  EXPECT_EQ(here_.Read("root/y"), Fixture("upssrv.cfg"));
}

TEST_F(Zelctl, HelpUsageAndLostOutput) {
  std::vector<std::pair<std::string, Words>> const families = {{"shutdown", {"show", "set", "defaults"}},
                                                               {"cfg", {"list", "get", "set", "unset", "lint"}},
                                                               {"b64", {"encode", "decode"}}};
  std::string const help = Run({"--help"}).out;
  for (auto const& [family, commands] : families) {
    EXPECT_NE(help.find("  " + family + " "), std::string::npos) << help;
    EXPECT_EQ(Run({family}).code, 2) << family;
    std::string const familyHelp = Run({family, "--help"}).out;
    for (std::string const& command : commands) {
      EXPECT_NE(familyHelp.find("  " + command + " "), std::string::npos) << familyHelp;
      Answer const answer = Run({family, command, "--help"});
      EXPECT_EQ(answer.code, 0) << family << command;
      EXPECT_NE(answer.out.find("--json"), std::string::npos) << answer.out;
      EXPECT_NE(answer.out.find("--utf8"), std::string::npos) << answer.out;
    }
  }
  EXPECT_EQ(Run({}).code, 2);
  EXPECT_NE(Run({"shutdown", "set", "--help"}).out.find("serverName          up to 20 characters, no ';'"),
            std::string::npos);
  EXPECT_EQ(Run({"nothing"}).code, 2);
  EXPECT_EQ(Run({"--version"}).code, 0);
  Answer const full = Run({"shutdown", "defaults"}, "", "/dev/full");
  EXPECT_EQ(full.code, 1);
  EXPECT_EQ(full.err, "zelctl: the answer cannot be written\n");
}

TEST_F(Zelctl, TellsThatBytesLookLikeUtf8) {
  EXPECT_NE(Run({"shutdown", "set", "--dir", "@", "mailFrom=\xC3\xA3"}).err.find("mailFrom looks like UTF-8"),
            std::string::npos);
  EXPECT_EQ(Run({"shutdown", "set", "--dir", "@", "mailFrom=\xE3"}).err, "");
}

}  // namespace

#endif
