// WebP, the first frame of an animation.
#include "image/codecs.h"
#include "image/webp_library.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

bool lies_inside(const WebPIterator& frame, std::uint32_t canvas_width, std::uint32_t canvas_height) {
  return frame.x_offset >= 0 && frame.y_offset >= 0 && frame.width > 0 && frame.height > 0 &&
         std::int64_t{frame.x_offset} + frame.width <= canvas_width &&
         std::int64_t{frame.y_offset} + frame.height <= canvas_height;
}

/// The first frame on its canvas; what it leaves free is transparent.
Picture decode_first_frame(FileBytes file, Part part) {
  const WebpDemuxer demuxer = open_webp(file);
  WebPIterator frame{};
  if (!demuxer || !WebPDemuxGetFrame(demuxer.get(), 1, &frame)) return {};
  const std::uint32_t width = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH);
  const std::uint32_t height = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT);
  const auto own_width = static_cast<std::uint32_t>(frame.width),
             own_height = static_cast<std::uint32_t>(frame.height);
  const bool covers = own_width == width && own_height == height;
  const bool alpha =
      frame.has_alpha || !covers || (WebPDemuxGetI(demuxer.get(), WEBP_FF_FORMAT_FLAGS) & ALPHA_FLAG);
  const std::uint32_t bits = alpha ? 32 : 24;
  const std::span stream(frame.fragment.bytes, frame.fragment.size);
  const bool inside = lies_inside(frame, width, height);
  const auto x = static_cast<std::uint32_t>(frame.x_offset), y = static_cast<std::uint32_t>(frame.y_offset);
  WebPDemuxReleaseIterator(&frame);
  if (!inside) return {};
  if (part == Part::Header) return PictureCreateHeaderOnly(width, height, nullptr, bits);
  Picture picture =
      covers ? create_rows(width, height, nullptr, bits) : PictureCreate(width, height, nullptr, bits);
  return picture && decode_webp_into(stream, place_in(picture, x, y, own_width, own_height), WebpThreads::Two)
             ? picture
             : Picture();
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
