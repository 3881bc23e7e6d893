#include "zelvane/config/cfgline_internal.h"

#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal {
namespace {

bool IsNothing(std::string_view text) { return text.empty() || text[0] == ';' || text[0] == '#' || text[0] == '\''; }

}  // namespace

LineKind KindOf(std::string_view text) {
  if (IsNothing(text)) return LineKind::kNothing;
  std::size_t const opening = text.find('[');
  std::size_t const closing = text.find(']');
  if (opening != std::string_view::npos || closing != std::string_view::npos)
    return opening == 0 && closing == text.size() - 1 && text.size() > 2 ? LineKind::kHeader : LineKind::kBad;
  return text.size() < 2 || text[0] == '=' ? LineKind::kBad : LineKind::kKey;
}

bool IsKey(std::string_view text) { return !IsNothing(text) && text[0] != '['; }

std::string_view HeaderName(std::string_view text) { return TrimView(text.substr(1, text.size() - 2)); }

KeyText KeyOf(std::string_view text) {
  std::size_t const equals = text.find('=');
  if (equals == std::string_view::npos) return {text, text};
  return {TrimView(text.substr(0, equals)), TrimView(text.substr(equals + 1))};
}

}  // namespace zelvane::internal
