// WebP, the first frame of an animation.
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

Picture decode_first_frame(FileBytes file, Part part) {
  const auto frame = find_first_frame(file);
  if (!frame) return {};
  const auto make = part == Part::Header     ? PictureCreateHeaderOnly
                    : frame->covers_canvas() ? create_rows
                                             : PictureCreate;
  Picture picture = make(frame->canvasWidth, frame->canvasHeight, nullptr, frame->bits());
  if (!picture || part == Part::Header) return picture;
  const WebpPlace place = place_in(picture, frame->x, frame->y, frame->width, frame->height);
  return decode_webp_into(frame->stream, place, WebpThreads::Two) ? picture : Picture();
}

}  // namespace

Picture decode_webp(FileBytes file, Part part) {
  const auto info = WEBPGetInfoEx(file);
  if (!info) return {};
  if (info->isAnimation) return decode_first_frame(file, part);
  if (part == Part::Header)
    return PictureCreateHeaderOnly(info->width, info->height, nullptr, info->hasAlpha ? 32 : 24);
  return info->hasAlpha ? WEBPDecodeBGRA(file) : WEBPDecodeBGR(file);
}

Picture WEBPGetFileInformation(const std::filesystem::path& path, const GraphicSwitches&) {
  return read_through(path, [](FileBytes file) { return decode_webp(file, Part::Header); });
}

Picture WEBPReadGraphicFile(const std::filesystem::path& path, const GraphicSwitches&) {
  return read_through(path, [](FileBytes file) { return decode_webp(file, Part::Whole); });
}

bool WEBPWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches& switches,
                          const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) {
    const auto bytes = encode_webp_still(picture, switches.lossless, switches.quality.value_or(75));
    return !bytes.empty() && file.write(bytes);
  });
}

}  // namespace vellum
