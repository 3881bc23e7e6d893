// Checks several calls in one statement: EXPECT_EACH((Open(nullptr), Close(nullptr)), 0), or with as many values as
// there are calls; EXPECT_ALL and EXPECT_NONE for true and false. The calls are made in order. A failure shows the text
// of each call whose result differs.
#ifndef ZELVANE_TESTS_SUPPORT_EACH_H
#define ZELVANE_TESTS_SUPPORT_EACH_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#define ZELVANE_UNPACK(...) __VA_ARGS__
#define ZELVANE_DIFFERENCES(calls, ...)                                                                          \
  for (std::string differences =                                                                                 \
           test::Differences(#calls, std::tuple{ZELVANE_UNPACK calls}, std::tuple{ZELVANE_UNPACK(__VA_ARGS__)}); \
       !differences.empty(); differences.clear())
#define EXPECT_EACH(...) ZELVANE_DIFFERENCES(__VA_ARGS__) ADD_FAILURE() << differences
#define ASSERT_EACH(...) ZELVANE_DIFFERENCES(__VA_ARGS__) FAIL() << differences
#define EXPECT_ALL(...) EXPECT_EACH((__VA_ARGS__), true)
#define ASSERT_ALL(...) ASSERT_EACH((__VA_ARGS__), true)
#define EXPECT_NONE(...) EXPECT_EACH((__VA_ARGS__), false)

namespace test {

template <class Type>
constexpr bool kIsText = std::is_convertible_v<Type, char const*> && !std::is_null_pointer_v<Type>;

template <class Actual, class Expected>
bool Same(Actual const& actual, Expected const& expected) {
  if constexpr (std::is_integral_v<Actual> && std::is_integral_v<Expected>)
    return static_cast<long long>(actual) == static_cast<long long>(expected);
  else if constexpr (std::is_same_v<Expected, bool>)
    return static_cast<bool>(actual) == expected;
  else if constexpr (kIsText<Actual> && kIsText<Expected>)
    return std::string_view(actual) == expected;
  else
    return actual == expected;
}

// Removes the first of the comma-separated expressions from the list and returns it.
inline std::string TakeFirst(std::string_view& list) {
  std::size_t depth = 0, end = 0;
  char quote = 0;
  for (; end < list.size() && (quote != 0 || depth > 0 || list[end] != ','); end++) {
    char const c = list[end];
    if (c == '\\') end++;
    if (c == '"' || c == '\'') quote = quote == 0 ? c : quote == c ? 0 : quote;
    if (quote == 0 && (c == '(' || c == '[' || c == '{')) depth++;
    if (quote == 0 && (c == ')' || c == ']' || c == '}')) depth--;
  }
  std::string const first(list.substr(0, end));
  list.remove_prefix(std::min(list.size(), end + 2));
  return first;
}

// One line for every call whose result differs. `calls` is the text of the calls, in parentheses.
template <class... Actual, class... Expected>
std::string Differences(std::string_view calls, std::tuple<Actual...> const& actual,
                        std::tuple<Expected...> const& expected) {
  constexpr bool kOneForAll = sizeof...(Expected) == 1;
  static_assert(kOneForAll || sizeof...(Expected) == sizeof...(Actual));
  calls = calls.substr(1, calls.size() - 2);
  std::string wrong;
  auto const compare = [&](auto const& one, auto const& other) {
    std::string const call = TakeFirst(calls);
    if (Same(one, other)) return;
    wrong += call + " is " + testing::PrintToString(one) + ", not " + testing::PrintToString(other) + "\n";
  };
  std::apply(
      [&](auto const&... one) {
        if constexpr (kOneForAll)
          (compare(one, std::get<0>(expected)), ...);
        else
          std::apply([&](auto const&... other) { (compare(one, other), ...); }, expected);
      },
      actual);
  return wrong;
}

}  // namespace test

#endif
