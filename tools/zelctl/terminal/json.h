// JSON values: cells of tables are numbers, texts and the like; complete answers are lists and objects. Only json.cpp
// depends on the library that prints them.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_JSON_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_JSON_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

// The name of a file, or other text that is already in the terminal's encoding. Other texts are Latin-1.
struct FileName {
  std::string bytes;
};

class Json {
 public:
  struct Member;
  using List = std::vector<Json>;
  using Object = std::vector<Member>;

  // Implicit conversions let a source show an answer as it is printed: {{"file", name}, {"bytes", 12}}.
  // NOLINTBEGIN(google-explicit-constructor)
  Json(std::nullptr_t = nullptr) {}
  Json(bool flag) : value_(flag) {}
  template <class Number, class = std::enable_if_t<std::is_integral_v<Number> && !std::is_same_v<Number, bool>>>
  Json(Number number) : value_(static_cast<std::int64_t>(number)) {}
  Json(char const* text) : value_(std::string(text)) {}
  Json(std::string text) : value_(std::move(text)) {}
  Json(FileName name) : value_(std::move(name)) {}
  Json(List list) : value_(std::move(list)) {}
  Json(Object members);
  Json(std::initializer_list<Member> members);
  // NOLINTEND(google-explicit-constructor)

  template <class Element>
  static Json ListOf(std::vector<Element> const& elements) {
    return List(elements.begin(), elements.end());
  }

  // The value if it has this type, otherwise null.
  template <class Type>
  Type const* As() const {
    return std::get_if<Type>(&value_);
  }
  bool IsNull() const { return value_.index() == 0; }

 private:
  std::variant<std::monostate, bool, std::int64_t, std::string, FileName, List, Object> value_;
};

struct Json::Member {
  std::string name;
  Json value;
};

inline Json::Json(Object members) : value_(std::move(members)) {}
inline Json::Json(std::initializer_list<Member> members) : value_(Object(members)) {}

// JSON text without control characters that affect a terminal. An indent of -1 prints one line.
std::string JsonText(Json const& json, int indent);

#endif
