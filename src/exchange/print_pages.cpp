#include "exchange/print_pages.h"

#include <algorithm>
#include <cmath>
#include <ctime>

#include "base/text.h"
#include "core/model/frame_values.h"
#include "image/picture_operations.h"
#include "operations/frames.h"

namespace vellum {
namespace {

constexpr double kInch = 72, kMargin = 36, kLine = 1.35;
constexpr PrintPaper kPapers[] = {{595.28, 841.89}, {612, 792}, {841.89, 1190.55}, {419.53, 595.28}};

std::string today() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  localtime_r(&now, &parts);
  return format_text("%04d-%02d-%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
}

/// What all pages share, in points.
struct Sheet {
  PrintPaper paper;
  double left = kMargin, top = kMargin, width = 0, bottom = 0;  ///< room for frames
  double large = 14, small = 8, gutter = 0, scale = 1;          ///< `scale`: points of a pixel
  bool annotate = true, contact = true;
  std::uint32_t columns = 0;

  double note() const { return annotate ? small * kLine + 2 : 0; }
};

Sheet sheet_of(const FieldValues& values, const PrintPaper& paper) {
  Sheet sheet;
  sheet.paper = paper;
  sheet.scale = kInch / static_cast<double>(std::max<std::int64_t>(values.number("dpi"), 1));
  sheet.gutter = static_cast<double>(values.number("gutter")) * sheet.scale;
  sheet.large = static_cast<double>(values.number("largeSize"));
  sheet.small = static_cast<double>(values.number("smallSize"));
  sheet.annotate = values.number("annotate") != 0;
  sheet.contact = values.number("layout") == 0;
  sheet.columns = static_cast<std::uint32_t>(values.number("columns"));
  sheet.width = paper.width - 2 * kMargin;
  sheet.bottom = paper.height - kMargin - (values.number("footer") != 0 ? sheet.small * kLine + 4 : 0);
  return sheet;
}

/// The frames on pages, row by row.
class Placing {
 public:
  Placing(const Sheet& sheet, Extent canvas, std::string heading)
      : sheet_(sheet), canvas_(canvas), heading_(std::move(heading)) {
    columns_ = sheet.contact ? sheet.columns : 1;
    const double natural = canvas.width * sheet.scale;
    if (columns_ == 0)
      columns_ = static_cast<std::uint32_t>(
          std::clamp((sheet.width + sheet.gutter) / std::max(natural + sheet.gutter, 1.0), 1.0, 20.0));
    cell_ = std::max((sheet.width - (columns_ - 1) * sheet.gutter) / columns_, 1.0);
    begin();
  }

  bool add(std::size_t frame, const std::string& note) {
    const double room = std::max(sheet_.bottom - top_ - sheet_.note(), 1.0);
    const double natural = canvas_.width * sheet_.scale, high = canvas_.height * sheet_.scale;
    const double factor = std::min({1.0, cell_ / natural, room / high});
    const double width = natural * factor, height = high * factor;
    if (column_ == 0 && y_ > top_ &&
        (!sheet_.contact || y_ + height + sheet_.note() > sheet_.bottom + 0.01)) {
      if (pages.size() == kMostPrintedPages) return false;
      begin();
      return add(frame, note);
    }
    const double x = sheet_.left + column_ * (cell_ + sheet_.gutter);
    pages.back().frames.push_back({frame, x + (cell_ - width) / 2, y_, width, height});
    if (sheet_.annotate)
      pages.back().texts.push_back({note, x, y_ + height + 2, cell_, sheet_.small, PrintSide::Center});
    if (++column_ == columns_ || !sheet_.contact) {
      column_ = 0;
      y_ += height + sheet_.note() + std::max(sheet_.gutter, 2.0);
    }
    return true;
  }

  std::vector<PrintedPage> pages;

 private:
  void begin() {
    pages.emplace_back();
    y_ = top_ = sheet_.top;
    column_ = 0;
    if (pages.size() > 1) return;
    pages.back().texts.push_back({heading_, sheet_.left, y_, sheet_.width, sheet_.large, PrintSide::Left});
    y_ = top_ = sheet_.top + sheet_.large * kLine + 6;
  }

  Sheet sheet_;
  Extent canvas_;
  std::string heading_;
  std::uint32_t columns_ = 1, column_ = 0;
  double cell_ = 0, y_ = 0, top_ = 0;
};

void add_footers(std::vector<PrintedPage>& pages, const Sheet& sheet, const std::string& name) {
  const double y = sheet.bottom + 4, third = sheet.width / 3;
  const std::string date = today();
  for (std::size_t i = 0; i < pages.size(); ++i) {
    auto& texts = pages[i].texts;
    texts.push_back({name, sheet.left, y, third, sheet.small, PrintSide::Left});
    texts.push_back({std::to_string(i + 1) + " / " + std::to_string(pages.size()), sheet.left + third, y,
                     third, sheet.small, PrintSide::Center});
    texts.push_back({date, sheet.left + 2 * third, y, third, sheet.small, PrintSide::Right});
  }
}

}  // namespace

PrintPaper print_paper(const FieldValues& values) {
  const auto number = static_cast<std::size_t>(std::clamp<std::int64_t>(values.number("paper"), 0, 3));
  PrintPaper paper = kPapers[number];
  if (values.number("landscape") != 0) std::swap(paper.width, paper.height);
  return paper;
}

std::vector<PrintedPage> print_pages(const FieldValues& values, const DocumentWindow& window,
                                     const PrintPaper& paper) {
  const auto entries = frame_entries(window);
  FrameList frames = all_frames(entries.size());
  if (const std::string& list = values.text("frames"); !list.empty())
    frames = parse_frame_list(list, entries.size()).value_or(frames);
  const Sheet sheet = sheet_of(values, paper);
  const std::string name = std::filesystem::path(document_title(window.document)).filename().string();
  const std::uint32_t ticks = ticks_per_second(window.list);
  Placing placing(sheet, document_size(window.list, window.document), name);
  for (const std::size_t frame : frames) {
    const ChunkRecord& record = window.list.record(entries[frame]);
    const std::string note = std::to_string(frame + 1) + ": " + std::to_string(record.width) + " x " +
                             std::to_string(record.height) + ", " +
                             grouped(frame_delay_ms(record, window.document.kind, ticks)) + " ms";
    if (!placing.add(frame, note)) return {};
  }
  if (values.number("footer") != 0) add_footers(placing.pages, sheet, name);
  return std::move(placing.pages);
}

Picture printed_picture(const Picture& canvas, const FieldValues& values, const DocumentWindow& window) {
  if (canvas.bits() < 24) return PictureToTrueColor(canvas);
  if (canvas.bits() == 24) return canvas;
  if (values.number("checkered") == 0)
    return PictureFlatten(canvas, document_background(window.list, window.document) & 0xFFFFFF);
  constexpr std::uint32_t kSquare = 8;
  Picture ground = PictureCreateFilled(canvas.width(), canvas.height(), 0xFFFFFF);
  if (!ground || !ground.edit_block()) return {};
  for (std::uint32_t y = 0; y < canvas.height(); y += kSquare)
    for (std::uint32_t x = y / kSquare % 2 * kSquare; x < canvas.width(); x += 2 * kSquare)
      PictureFillRect(ground, static_cast<std::int32_t>(x), static_cast<std::int32_t>(y), kSquare, kSquare,
                      0xC8C8C8);
  PictureComposite(ground, 0, 0, canvas, static_cast<std::int32_t>(canvas.width()),
                   static_cast<std::int32_t>(canvas.height()));
  return ground;
}

}  // namespace vellum
