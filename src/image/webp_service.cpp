// Stills, and what the headers say.
#include "image/webp_service.h"

#include <webp/decode.h>

#include <cstdlib>
#include <string_view>

#include "image/codecs.h"
#include "image/webp_library.h"

namespace vellum {
namespace {

/// Quality of lossless stills: how hard the encoder tries (the library's own choice for its simple
/// functions).
constexpr int kLosslessEffort = 70;

bool is_riff_webp(std::span<const std::uint8_t> file) {
  const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
  return bytes.size() > 12 && bytes.starts_with("RIFF") && bytes.substr(8).starts_with("WEBP");
}

Picture decode_still(std::span<const std::uint8_t> file, std::uint32_t bits) {
  const auto info = WEBPGetInfoEx(file);
  if (!info || info->isAnimation) return {};
  Picture picture = create_rows(info->width, info->height, nullptr, bits);
  if (!picture) return picture;
  const WebpPlace place = place_in(picture, 0, 0, info->width, info->height);
  return decode_webp_into(file, place, WebpThreads::Two) ? picture : Picture();
}

/// Null rows where `pixels` does not hold what the sizes promise.
WebpPixels pixels_of(std::span<const std::uint8_t> pixels, std::uint32_t width, std::uint32_t height,
                     std::ptrdiff_t stride, std::size_t bytes) {
  const auto step = static_cast<std::uint64_t>(std::abs(stride));
  const std::uint64_t row = std::uint64_t{width} * bytes;
  if (height == 0 || row > step || (height > 1 && step > pixels.size()) ||
      step * (height - 1) + row > pixels.size())
    return {};
  const std::uint8_t* top = stride < 0 ? pixels.data() + step * (height - 1) : pixels.data();
  return {top, stride, width, height, bytes};
}

std::vector<std::uint8_t> encode_still(const WebpPixels& pixels, bool lossless, int quality) {
  if (!pixels.top) return {};
  return encode_webp_pixels(pixels, {lossless, lossless ? kLosslessEffort : quality, WebpThreads::Two});
}

}  // namespace

std::optional<WebpInfo> WEBPGetInfoEx(std::span<const std::uint8_t> file) {
  WebPBitstreamFeatures features;
  if (!is_riff_webp(file) || WebPGetFeatures(file.data(), file.size(), &features) != VP8_STATUS_OK ||
      features.width <= 0 || features.height <= 0)
    return std::nullopt;
  return WebpInfo{static_cast<std::uint32_t>(features.width), static_cast<std::uint32_t>(features.height),
                  features.has_alpha != 0, features.has_animation != 0};
}

Picture WEBPDecodeBGRA(std::span<const std::uint8_t> file) { return decode_still(file, 32); }
Picture WEBPDecodeBGR(std::span<const std::uint8_t> file) { return decode_still(file, 24); }

std::vector<std::uint8_t> WEBPEncodeBGRA(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                         std::uint32_t height, std::ptrdiff_t stride, int quality) {
  return encode_still(pixels_of(pixels, width, height, stride, 4), false, quality);
}
std::vector<std::uint8_t> WEBPEncodeBGR(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                        std::uint32_t height, std::ptrdiff_t stride, int quality) {
  return encode_still(pixels_of(pixels, width, height, stride, 3), false, quality);
}
std::vector<std::uint8_t> WEBPEncodeLosslessBGRA(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                                 std::uint32_t height, std::ptrdiff_t stride) {
  return encode_still(pixels_of(pixels, width, height, stride, 4), true, 0);
}
std::vector<std::uint8_t> WEBPEncodeLosslessBGR(std::span<const std::uint8_t> pixels, std::uint32_t width,
                                                std::uint32_t height, std::ptrdiff_t stride) {
  return encode_still(pixels_of(pixels, width, height, stride, 3), true, 0);
}

std::vector<std::uint8_t> encode_webp_still(const Picture& picture, bool lossless, int quality,
                                            bool smallest) {
  if (!has_rows(picture)) return {};
  if (picture.bits() < 24) {
    const Picture shown = true_colour_shown(picture);
    return shown ? encode_webp_still(shown, lossless, quality, smallest) : std::vector<std::uint8_t>();
  }
  const std::uint32_t width = picture.width(), height = picture.height();
  const auto stride = static_cast<std::ptrdiff_t>(picture.stride());
  const auto rows = picture.handle().bytes().last(picture.stride() * height);
  if (lossless && smallest)
    return encode_webp_pixels(pixels_of(rows, width, height, -stride, picture.bits() / 8),
                              {.lossless = true, .quality = 100, .threads = WebpThreads::Two, .method = 6});
  if (picture.bits() == 32)
    return lossless ? WEBPEncodeLosslessBGRA(rows, width, height, -stride)
                    : WEBPEncodeBGRA(rows, width, height, -stride, quality);
  return lossless ? WEBPEncodeLosslessBGR(rows, width, height, -stride)
                  : WEBPEncodeBGR(rows, width, height, -stride, quality);
}

}  // namespace vellum
