#include "operations/film_strip.h"

#include <algorithm>

#include "base/limits.h"
#include "base/translation.h"
#include "core/model/compose.h"
#include "image/picture_operations.h"
#include "image/resample.h"
#include "operations/frames.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr std::int64_t kMostColumns = 1'000'000, kMostCell = 4096;

constexpr Field cell_field(const char* name, const char* label, int& setting) {
  return {.name = name, .label = label, .most = kMostCell, .special = "As the canvas", .setting = &setting};
}
constexpr Field kFields[] = {
    {.name = "columns", .label = "Frames in a row", .most = kMostColumns, .special = "All"},
    cell_field("cellWidth", "Cell width", settings::CellWide),
    cell_field("cellHeight", "Cell height", settings::CellDeep)};

constexpr const char* kCell[] = {"cellWidth", "cellHeight"};
constexpr CompoundOption kCellOption{
    .name = "cell", .form = "WxH", .help = "Size of a cell", .fields = kCell, .parting = 'x'};

/// A picture alone has no canvas that says how large a cell is.
const char* settle_cut(FieldValues& values, const DocumentWindow&, const GivenFields&) {
  return values.number("cellWidth") > 0 && values.number("cellHeight") > 0 ? nullptr
                                                                           : translated("give --cell WxH");
}

struct StripLayout {
  std::uint32_t columns, rows, width, height;  ///< cells, and pixels of a cell
};

StripLayout layout_of(const FilmStrip& strip, Extent canvas, std::size_t frames) {
  const auto count = static_cast<std::uint32_t>(frames);
  StripLayout layout{};
  layout.columns = strip.columns == 0 ? count : std::min(strip.columns, count);
  layout.rows = (count + layout.columns - 1) / layout.columns;
  layout.width = strip.cellWidth == 0 ? canvas.width : strip.cellWidth;
  layout.height = strip.cellHeight == 0 ? canvas.height : strip.cellHeight;
  return layout;
}

/// The picture, or a smaller one with its proportions where it is larger than a cell.
Picture fitted(const Picture& picture, const StripLayout& cell) {
  if (picture.width() <= cell.width && picture.height() <= cell.height) return picture;
  const std::uint64_t across = std::uint64_t{cell.width} * picture.height();
  const std::uint64_t down = std::uint64_t{cell.height} * picture.width();
  const auto share = [](std::uint64_t part, std::uint32_t of) {
    return static_cast<std::uint32_t>(std::max<std::uint64_t>(part / of, 1));
  };
  const std::uint32_t width = across < down ? cell.width : share(down, picture.height());
  const std::uint32_t height = across < down ? share(across, picture.width()) : cell.height;
  return PictureResample(picture, width, height, ResampleFilter::Automatic);
}

bool put_cell(Picture& strip, const StripLayout& layout, std::size_t number, const Picture& canvas) {
  const Picture cell = fitted(canvas, layout);
  if (!cell) return false;
  const auto column = static_cast<std::uint32_t>(number % layout.columns);
  const auto row = static_cast<std::uint32_t>(number / layout.columns);
  PictureBlit(strip, static_cast<std::int32_t>(column * layout.width + (layout.width - cell.width()) / 2),
              static_cast<std::int32_t>(row * layout.height + (layout.height - cell.height()) / 2), cell, 0,
              0, static_cast<std::int32_t>(cell.width()), static_cast<std::int32_t>(cell.height()));
  return true;
}

Picture empty_strip(const StripLayout& layout, Colour background) {
  const std::uint64_t width = std::uint64_t{layout.columns} * layout.width;
  const std::uint64_t height = std::uint64_t{layout.rows} * layout.height;
  if (width > kMaximumDimension || height > kMaximumDimension) return {};
  return PictureCreateFilled(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                             background);
}

}  // namespace

constinit const Parameters kSaveStrip{.name = "strip",
                                      .title = "Save strip",
                                      .help = "All frames of an animation as cells of one picture",
                                      .page = "imagestrip",
                                      .fields = kFields,
                                      .options = {&kCellOption, 1}};
constinit const Parameters kCutStrip{.name = "unstrip",
                                     .title = "Insert from strip",
                                     .help = "An animation from the cells of a picture",
                                     .page = "imagestrip",
                                     .fields = std::span(kFields).subspan(1),
                                     .options = {&kCellOption, 1},
                                     .settle = settle_cut};

FilmStrip film_strip_of(const FieldValues& values) {
  const auto held = [&](const char* name) { return static_cast<std::uint32_t>(values.number(name)); };
  return {held("columns"), held("cellWidth"), held("cellHeight")};
}

Picture film_strip(const DocumentWindow& window, const FilmStrip& strip, Host& host) {
  const auto entries = frame_entries(window);
  if (entries.empty()) {
    host.show(StringId::NoImagesHere);
    return {};
  }
  const ViewValues values = view_values(window.list, window.document);
  const StripLayout layout = layout_of(strip, values.canvas, entries.size());
  Picture result = empty_strip(layout, values.background);
  const Progress progress(host, string_text(StringId::BuildingCaption));
  CanvasState state;
  bool complete = static_cast<bool>(result);
  for (std::size_t i = 0; complete && i < entries.size(); ++i) {
    if (host.stopped()) return {};
    const Picture canvas = compose_frame(state, values, window.list.record(entries[i]));
    complete = canvas && put_cell(result, layout, i, canvas);
    progress.step(i + 1, entries.size());
  }
  if (complete) return result;
  host.show(StringId::AllocationError);
  return {};
}

CutStrip cut_strip(const Picture& picture, std::uint32_t width, std::uint32_t height) {
  CutStrip cut;
  if (!picture || width == 0 || height == 0) return cut;
  const std::uint32_t columns = picture.width() / width, rows = picture.height() / height;
  const auto begun = [](std::uint32_t length, std::uint32_t cell) {
    return std::uint64_t{length / cell} + (length % cell != 0);
  };
  cut.incomplete =
      begun(picture.width(), width) * begun(picture.height(), height) - std::uint64_t{columns} * rows;
  for (std::uint32_t row = 0; row < rows; ++row)
    for (std::uint32_t column = 0; column < columns; ++column) {
      const auto left = static_cast<std::int32_t>(column * width);
      const auto top = static_cast<std::int32_t>(row * height);
      cut.cells.push_back(PictureCrop(picture, {left, top, left + static_cast<std::int32_t>(width),
                                                top + static_cast<std::int32_t>(height)}));
      if (!cut.cells.back()) return {};
    }
  return cut;
}

}  // namespace vellum
