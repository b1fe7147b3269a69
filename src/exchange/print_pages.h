// Printed pages as data: where frames and lines of text stand on each. Two painters draw them, one of PDF
// files and one of printers and previews.
#pragma once

#include <string>
#include <vector>

#include "core/build/frame_stream.h"
#include "operations/parameters.h"

namespace vellum {

/// Sides in points, of which an inch has 72.
struct PrintPaper {
  double width = 595, height = 842;
};

struct PrintedFrame {
  std::size_t frame = 0;
  double x = 0, y = 0, width = 0, height = 0;
};

enum class PrintSide { Left, Center, Right };

/// One line, cut with an ellipsis where it is longer than `width`; `y` is its top.
struct PrintedText {
  std::string text;
  double x = 0, y = 0, width = 0, points = 8;
  PrintSide side = PrintSide::Left;
};

struct PrintedPage {
  std::vector<PrintedFrame> frames;
  std::vector<PrintedText> texts;
};

inline constexpr std::size_t kMostPrintedPages = 10'000;

/// The paper that the values name.
PrintPaper print_paper(const FieldValues& values);
/// The pages; none where they would be more than `kMostPrintedPages`.
std::vector<PrintedPage> print_pages(const FieldValues& values, const DocumentWindow& window,
                                     const PrintPaper& paper);
/// A frame as it is printed: 24 bits, on the background or on checkers.
Picture printed_picture(const Picture& canvas, const FieldValues& values, const DocumentWindow& window);

}  // namespace vellum
