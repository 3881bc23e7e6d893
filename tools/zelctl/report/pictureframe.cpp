#include "report/pictureframe.h"

#include "report/markup.h"
#include "terminal/terminal.h"

namespace {

constexpr int kHead = 76;
constexpr int kFoot = 44;

constexpr char kStyle[] =
    "text{font:13px system-ui,sans-serif;fill:#1b1f24;font-variant-numeric:tabular-nums}.h{font-size:20px;"
    "font-weight:600}.m{fill:#57606a}.grid{stroke:#d0d7de}.o,.bar{fill:#b45309}.o{stroke:#b45309;stroke-width:1.5}"
    ".open{fill:#fff;stroke-dasharray:3 2}.bg{fill:#fff}\n"
    "@media (prefers-color-scheme:dark){text{fill:#e6edf3}.m{fill:#9aa7b4}.grid{stroke:#30363d}.o,.bar{fill:#f0a03c}"
    ".o{stroke:#f0a03c}.open{fill:#0f1419}.bg{fill:#0f1419}}";

std::string MarkupAt(double x, int y, std::string const& markup, char const* type, bool endsThere = false) {
  return Element("text",
                 {{"x", Coordinate(x)},
                  {"y", std::to_string(y)},
                  {endsThere ? "text-anchor" : "", "end"},
                  {*type != '\0' ? "class" : "", type}},
                 markup);
}

}  // namespace

void RequirePictureRows(std::size_t rows) {
  if (rows > kMostPictureRows)
    throw WrongUsage("--svg: " + std::to_string(rows) + " rows do not fit a picture (at most " +
                     std::to_string(kMostPictureRows) + "); --by month or --by year draws fewer");
}

std::string FramedPicture(PictureTexts const& texts, int height, std::string const& content) {
  int const whole = height + kHead + kFoot;
  std::string const width = std::to_string(kPictureWidth);
  std::string const body = "\n" + Element("title", {{"id", "t"}}, Escaped(texts.title)) +
                           Element("desc", {{"id", "d"}}, Escaped(texts.summary)) + "\n" +
                           Element("style", {}, kStyle) + "\n" +
                           Shape("rect", {{"width", width}, {"height", std::to_string(whole)}, {"class", "bg"}}) +
                           "\n" + TextAt(16, 34, texts.title, "h") + TextAt(16, 58, texts.summary) + "\n" +
                           Element("g", {{"transform", "translate(0 " + std::to_string(kHead) + ")"}}, content) + "\n" +
                           MarkupAt(16, whole - 16, EscapedName(texts.file) + Escaped(texts.foot), "m") + "\n";
  return Element("svg",
                 {{"xmlns", "http://www.w3.org/2000/svg"},
                  {"width", width},
                  {"height", std::to_string(whole)},
                  {"viewBox", "0 0 " + width + " " + std::to_string(whole)},
                  {"role", "img"},
                  {"aria-labelledby", "t d"}},
                 body) +
         "\n";
}

std::string TextAt(double x, int y, std::string const& text, char const* type, bool endsThere) {
  return MarkupAt(x, y, Escaped(text), type, endsThere);
}

std::string BarAt(double x, int y, double width) {
  return Shape("rect", {{"x", Coordinate(x)},
                        {"y", std::to_string(y)},
                        {"width", Coordinate(width < 1 ? 1 : width)},
                        {"height", "12"},
                        {"class", "bar"}});
}
