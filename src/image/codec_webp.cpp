// WebP, the first frame of an animation.
#include "base/translation.h"
#include "image/codecs.h"
#include "image/webp_library.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

/// The first frame of an animation, and its canvas.
struct FirstFrame {
  std::span<const std::uint8_t> stream;
  std::uint32_t x = 0, y = 0, width = 0, height = 0;
  std::uint32_t canvasWidth = 0, canvasHeight = 0;
  bool alpha = false;

  bool covers_canvas() const { return width == canvasWidth && height == canvasHeight; }
  /// What the frame leaves free of the canvas is transparent.
  std::uint32_t bits() const { return alpha || !covers_canvas() ? 32 : 24; }
};

std::optional<FirstFrame> find_first_frame(FileBytes file) {
  const WebpDemuxer demuxer = open_webp(file);
  WebPIterator found{};
  if (!demuxer || !WebPDemuxGetFrame(demuxer.get(), 1, &found)) return std::nullopt;
  const auto value = [&](WebPFormatFeature feature) { return WebPDemuxGetI(demuxer.get(), feature); };
  const FirstFrame frame{{found.fragment.bytes, found.fragment.size},
                         static_cast<std::uint32_t>(found.x_offset),
                         static_cast<std::uint32_t>(found.y_offset),
                         static_cast<std::uint32_t>(found.width),
                         static_cast<std::uint32_t>(found.height),
                         value(WEBP_FF_CANVAS_WIDTH),
                         value(WEBP_FF_CANVAS_HEIGHT),
                         found.has_alpha || (value(WEBP_FF_FORMAT_FLAGS) & ALPHA_FLAG) != 0};
  WebPDemuxReleaseIterator(&found);
  const bool inside = std::uint64_t{frame.x} + frame.width <= frame.canvasWidth &&
                      std::uint64_t{frame.y} + frame.height <= frame.canvasHeight;
  return inside ? std::optional(frame) : std::nullopt;
}

GraphicReading decode_first_frame(FileBytes file, Part part) {
  const auto frame = find_first_frame(file);
  if (!frame) return {{}, GraphicFault::Damaged, translated("it holds no whole frame")};
  GraphicReading reading =
      reading_of_size(frame->canvasWidth, frame->canvasHeight, nullptr, frame->bits(), part, file.size());
  if (!reading.picture || part == Part::Header) return reading;
  const WebpPlace place = place_in(reading.picture, frame->x, frame->y, frame->width, frame->height);
  if (!decode_webp_into(frame->stream, place, WebpThreads::Two)) reading.picture = {};
  return reading;
}

}  // namespace

bool is_webp(FileBytes file) {
  const auto holds = [&](std::size_t at, std::string_view text) {
    return std::ranges::equal(file.subspan(at, text.size()), text);
  };
  return file.size() >= 16 && holds(0, "RIFF") && holds(8, "WEBP");
}

GraphicReading decode_webp(FileBytes file, Part part, const GraphicSwitches&) {
  const auto info = WEBPGetInfoEx(file);
  if (!info) return {{}, GraphicFault::Damaged, translated("the header is damaged")};
  if (info->isAnimation) return decode_first_frame(file, part);
  if (part == Part::Header)
    return {PictureCreateHeaderOnly(info->width, info->height, nullptr, info->hasAlpha ? 32 : 24), {}, {}};
  GraphicReading reading =
      reading_of_size(info->width, info->height, nullptr, info->hasAlpha ? 32 : 24, part, file.size());
  if (!reading.picture) return reading;
  const WebpPlace place = place_in(reading.picture, 0, 0, info->width, info->height);
  if (decode_webp_into(file, place, WebpThreads::Two)) return reading;
  return cut_reading(std::move(reading), decode_webp_part(file, place), info->height);
}

bool WEBPWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches& switches,
                          const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) {
    const auto bytes = encode_webp_still(picture, switches.lossless, switches.quality.value_or(75));
    return !bytes.empty() && file.write(bytes);
  });
}

}  // namespace vellum
