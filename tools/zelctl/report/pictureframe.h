// Common parts of stand-alone pictures: title, description, colours for light and dark, and a footer.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_PICTUREFRAME_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_PICTUREFRAME_H

#include <string>

constexpr int kPictureWidth = 940;
constexpr std::size_t kMostPictureRows = 400;

// Throws WrongUsage that suggests a coarser step.
void RequirePictureRows(std::size_t rows);

struct PictureTexts {
  std::string title;
  std::string summary;  // the numbers in words, also for screen readers
  std::string file;     // the name of the log, before the footer
  std::string foot;
};

// `content` is markup with a height of `height` units.
std::string FramedPicture(PictureTexts const& texts, int height, std::string const& content);

// A text; class "m" for notes, "h" for headings.
std::string TextAt(double x, int y, std::string const& text, char const* type = "", bool endsThere = false);
std::string BarAt(double x, int y, double width);

#endif
