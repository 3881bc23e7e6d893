// A program's own classes and functions with names that the library also has. The library must not call them.
#include <cstdlib>
#include <string>

#define OWN_CLASS(Name)                 \
  class Name {                          \
   public:                              \
    Name();                             \
    virtual ~Name();                    \
    virtual void First();               \
    virtual void Second();              \
    virtual void Third();               \
  };                                    \
  Name::Name() { std::abort(); }        \
  Name::~Name() { std::abort(); }       \
  void Name::First() { std::abort(); }  \
  void Name::Second() { std::abort(); } \
  void Name::Third() { std::abort(); }

OWN_CLASS(CfgClass)
OWN_CLASS(RegCfgClass)
OWN_CLASS(LogClass)
OWN_CLASS(ProgList)
OWN_CLASS(LangClass)
OWN_CLASS(ProcClass)
OWN_CLASS(ProcManager)
OWN_CLASS(SvcManager)
OWN_CLASS(ClassBase64)
OWN_CLASS(EncodeBase64)
OWN_CLASS(DecodeBase64)

std::string Trim(std::string const&);
std::string Trim(std::string const&) { std::abort(); }
bool DirExists(char const*);
bool DirExists(char const*) { std::abort(); }
