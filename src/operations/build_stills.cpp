#include "operations/build_stills.h"

#include <algorithm>
#include <utility>

#include "base/memory_budget.h"
#include "base/parallel.h"
#include "core/edit/picture_fitting.h"
#include "core/files/first_picture.h"
#include "core/files/open_document.h"
#include "core/files/still_file.h"
#include "core/model/kind_table.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/remap.h"
#include "operations/changed_parts.h"
#include "operations/convert_colors.h"
#include "operations/extract_frames.h"
#include "operations/frames.h"
#include "operations/manage_frames.h"

namespace vellum {
namespace {

constexpr Field kFields[] = {
    {.name = "delay", .label = "Delay of each frame in ms", .most = kMostDelayMs, .initial = 100},
    {.name = "plays", .label = "Plays, 0 for ever", .most = 65535},
    {.name = "colors", .label = "Colors of one palette, 2 at least; 0 as they are", .most = 256},
    {.name = "dither", .label = "Dither", .type = FieldType::Flag, .most = 1},
    {.name = "whole",
     .label = "Animated PNG: whole frames, not what changes alone",
     .type = FieldType::Flag,
     .most = 1},
};
constexpr const char* kPlaysField[] = {"plays"};
constexpr CompoundOption kOptions[] = {
    {.name = "loop", .form = "N", .help = "The same as --plays", .fields = kPlaysField}};

std::optional<FieldFault> check_colors(const FieldValues& values, const DocumentWindow&) {
  if (values.number("colors") != 1) return std::nullopt;
  return check_field({.name = "colors", .label = "Colors", .least = 2, .most = 256}, std::int64_t{1});
}

Extent largest(std::span<const HeldPicture> pictures) {
  Extent canvas;
  for (const HeldPicture& held : pictures) {
    const Picture picture = held.picture();
    canvas = {std::max(canvas.width, picture.width()), std::max(canvas.height, picture.height())};
  }
  return canvas;
}

bool fills(const Picture& picture, Extent canvas) {
  return picture.width() == canvas.width && picture.height() == canvas.height;
}

/// The entry of a picture's own table that is nearest to a color.
std::uint32_t index_of(const Picture& picture, Colour color) {
  Palette palette;
  const std::uint32_t count = PictureGetPalette(picture, palette);
  return NearestPaletteIndex(red_of(color), green_of(color), blue_of(color), palette, count);
}

Picture on_ground(const Picture& picture, Extent canvas, Colour ground) {
  const Colour filling = picture.bits() <= 8    ? index_of(picture, ground)
                         : picture.bits() == 24 ? ground & 0xFFFFFF
                                                : ground | 0xFF000000;
  return PictureExtendCanvas(picture, canvas.width, canvas.height, 0, 0, filling);
}

bool fills_canvas(DocumentKind kind, std::size_t number) {
  return kind == DocumentKind::WEBP || (kind == DocumentKind::APNG && number == 0);
}

/// Whether all have the size and the depth of the first one.
bool are_alike(std::span<const HeldPicture> pictures) {
  const Picture first = pictures[0].picture();
  return std::ranges::all_of(pictures, [&](const HeldPicture& held) {
    const Picture picture = held.picture();
    return picture.bits() == first.bits() && fills(picture, {first.width(), first.height()});
  });
}

/// Frames that are made some at a time, side by side, when the first of them is asked for.
class FramesAhead {
 public:
  using Make = std::function<StreamedFrame(std::size_t frame)>;
  FramesAhead(std::span<const HeldPicture> pictures, Make make)
      : pictures_(pictures), make_(std::move(make)) {}

  StreamedFrame frame(std::size_t i) {
    if (i < first_ || i >= first_ + frames_.size()) {
      first_ = i;
      frames_.clear();
      frames_.resize(std::min(pictures_.size() - i, 4 * parallel_width()));
      parallel_for(frames_.size(), [&](std::size_t k) { frames_[k] = make_(i + k); });
      // The last one is looked at once more, for the frame behind it.
      for (std::size_t k = 0; k + 1 < frames_.size(); ++k)
        if (!rows_.take(pictures_[i + k].block.size())) let_go(pictures_[i + k].block);
    }
    return std::exchange(frames_[i - first_], {});
  }

 private:
  std::span<const HeldPicture> pictures_;
  std::size_t first_ = 0;
  Make make_;
  GatheredRows rows_;
  std::vector<StreamedFrame> frames_;
};

/// Where all have one size and depth, an animated PNG has what changes from one to the next.
FramesAhead::Make frames_of(std::span<const HeldPicture> pictures, Extent canvas, const StillsBuild& build) {
  const bool alike = are_alike(pictures);
  const std::uint32_t bits = pictures[0].picture().bits();
  if (alike && bits > 8 && build.kind == DocumentKind::APNG && !build.whole)
    return [pictures](std::size_t i) {
      StreamedFrame frame;
      if (i == 0) frame.picture = pictures[0].picture();
      if (i > 0)
        static_cast<FrameLayer&>(frame) = changed_part(pictures[i - 1].picture(), pictures[i].picture());
      return frame;
    };
  return [pictures, still = StillCanvas{canvas, build.kind, !alike || bits == 32}](std::size_t i) {
    return placed_still(pictures[i].picture(), {}, i, still);
  };
}

}  // namespace

constinit const Parameters kBuild{
    .name = "build",
    .title = "Build",
    .help = "An animation of pictures",
    .page = "commandline",
    .fields = kFields,
    .options = kOptions,
    .check = check_colors,
};

GraphicReading read_still(const std::filesystem::path& file, std::uint32_t enough) {
  const GraphicReading header = read_graphic_file(file.string(), Part::Header);
  const bool is_document =
      header.module ? header.module->extension == "png" : has_extension_of(file, DocumentKind::MING);
  if (!is_document) {
    if (enough != 0 && header.module && header.module->extension == "jpg") return first_picture(file, enough);
    StillFile still = read_still_file(file);
    if (still.reading.picture && !still.transparency.empty())
      still.reading.picture = PictureWithTransparency(still.reading.picture, still.transparency);
    return still.reading;
  }
  // As a document it has its transparency; what can't be opened as one may still be shown in part.
  DocumentWindow window;
  Host nobody;
  if (open_document(window, file, nobody))
    if (const auto entries = frame_entries(window); !entries.empty())
      return {own_picture(window, entries.front()), {}, {}};
  return first_picture(file);
}

Picture first_shown(const DocumentWindow* window, const std::filesystem::path& file, std::uint32_t side) {
  if (window && !frame_entries(*window).empty()) return canvas_frames(*window).frame(0).picture;
  return read_still(file, 2 * side).picture;
}

StreamedFrame placed_still(const Picture& picture, std::vector<std::uint8_t> transparency, std::size_t number,
                           const StillCanvas& canvas) {
  StreamedFrame frame;
  frame.picture = picture;
  frame.transparency = std::move(transparency);
  const bool whole = fills(picture, canvas.size);
  if (!whole && fills_canvas(canvas.kind, number)) {
    if (canvas.ground) frame.picture = on_ground(picture, canvas.size, *canvas.ground);
    if (!canvas.ground)
      frame.picture =
          PictureExtendCanvas(PictureWithTransparency(picture, std::exchange(frame.transparency, {})),
                              canvas.size.width, canvas.size.height, 0, 0, 0);
  }
  // The colors that the table of a 1-bit picture has.
  if (canvas.kind == DocumentKind::WEBP && frame.transparency.empty() && frame.picture.bits() <= 8)
    frame.picture = opaque_true_color(frame.picture);
  frame.dispose = canvas.clear && canvas.kind != DocumentKind::WEBP ? 1 : 0;
  frame.clears = canvas.clear;
  return frame;
}

bool build_from_stills(DocumentWindow& window, std::span<const HeldPicture> pictures,
                       const StillsBuild& build, Host& host) {
  if (pictures.empty() ||
      !std::ranges::all_of(pictures, [](const HeldPicture& held) { return has_rows(held.picture()); }))
    return false;
  const Extent canvas = largest(pictures);
  FramesAhead ahead(pictures, frames_of(pictures, canvas, build));
  const FrameStream stream{canvas, pictures.size(), build.plays, [&](std::size_t i) {
                             StreamedFrame frame = ahead.frame(i);
                             frame.delay = build.delay;
                             return frame;
                           }};
  return build_from_stream(window, stream, build.kind, host);
}

bool build_from_stills(DocumentWindow& window, std::span<const HeldPicture> pictures,
                       const FieldValues& values, DocumentKind kind, Host& host) {
  const StillsBuild build{.kind = kind,
                          .delay = static_cast<std::uint32_t>(values.number("delay")),
                          .plays = static_cast<std::uint32_t>(values.number("plays")),
                          .whole = values.number("whole") != 0};
  const auto colors = static_cast<std::uint32_t>(values.number("colors"));
  if (!build_from_stills(window, pictures, build, host)) return false;
  return colors == 0 ||
         convert_colors(window, {.colorType = 3, .most = colors, .dither = values.number("dither") != 0},
                        host);
}

}  // namespace vellum
