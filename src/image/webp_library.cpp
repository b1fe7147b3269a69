#include "image/webp_library.h"

#include <webp/decode.h>
#include <webp/encode.h>

#include <algorithm>
#include <new>

#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Called by the library, which knows no exceptions.
int append_bytes(const std::uint8_t* bytes, std::size_t count, const WebPPicture* picture) {
  auto& file = *static_cast<std::vector<std::uint8_t>*>(picture->custom_ptr);
  try {
    file.insert(file.end(), bytes, bytes + count);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

bool configure(const WebpEncoding& encoding, WebPConfig& config) {
  if (!WebPConfigInit(&config)) return false;
  config.quality = static_cast<float>(std::clamp(encoding.quality, 0, 100));
  config.lossless = encoding.lossless;
  config.method = std::clamp(encoding.method, 0, 6);
  config.exact = encoding.lossless && encoding.exact;
  config.thread_level = encoding.threads == WebpThreads::Two;
  return WebPValidateConfig(&config);
}

/// Decoding of a stream into a place; false when its header is damaged or it is not of the place's size.
bool configure(std::span<const std::uint8_t> stream, const WebpPlace& place, WebpThreads threads,
               WebPDecoderConfig& config) {
  if (!place.bottom || !WebPInitDecoderConfig(&config) ||
      WebPGetFeatures(stream.data(), stream.size(), &config.input) != VP8_STATUS_OK ||
      config.input.width != static_cast<int>(place.width) ||
      config.input.height != static_cast<int>(place.height))
    return false;
  config.options.flip = 1;  // rows of pictures lie bottom up
  config.options.use_threads = threads == WebpThreads::Two;
  config.output.colorspace = place.bytes == 4 ? MODE_BGRA : MODE_BGR;
  config.output.is_external_memory = 1;
  config.output.u.RGBA.rgba = place.bottom;
  config.output.u.RGBA.stride = static_cast<int>(place.stride);
  config.output.u.RGBA.size = place.stride * (place.height - 1) + place.bytes * place.width;
  return true;
}

bool is_encodable(std::uint32_t extent) { return extent > 0 && extent <= WEBP_MAX_DIMENSION; }

}  // namespace

WebpDemuxer open_webp(std::span<const std::uint8_t> file) {
  const WebPData data{file.data(), file.size()};
  return WebpDemuxer(WebPDemux(&data));
}

WebpPlace place_in(Picture& picture, std::uint32_t x, std::uint32_t y, std::uint32_t width,
                   std::uint32_t height) {
  const EditRows rows(picture);
  if (!rows) return {};
  const std::size_t size = picture.bits() / 8;
  return {rows[y + height - 1] + size * x, rows.stride, width, height, size};
}

bool decode_webp_into(std::span<const std::uint8_t> stream, const WebpPlace& place, WebpThreads threads) {
  WebPDecoderConfig config;
  return configure(stream, place, threads, config) &&
         WebPDecode(stream.data(), stream.size(), &config) == VP8_STATUS_OK;
}

std::uint32_t decode_webp_part(std::span<const std::uint8_t> stream, const WebpPlace& place) {
  WebPDecoderConfig config;
  if (!configure(stream, place, WebpThreads::One, config)) return 0;
  WebPIDecoder* decoder = WebPIDecode(nullptr, 0, &config);
  if (!decoder) return 0;
  int rows = 0;
  WebPIUpdate(decoder, stream.data(), stream.size());
  if (!WebPIDecGetRGB(decoder, &rows, nullptr, nullptr, nullptr)) rows = 0;
  WebPIDelete(decoder);
  return static_cast<std::uint32_t>(std::max(rows, 0));
}

std::vector<std::uint8_t> encode_webp_pixels(const WebpPixels& pixels, const WebpEncoding& encoding) {
  WebPConfig config;
  WebPPicture frame;
  if (!is_encodable(pixels.width) || !is_encodable(pixels.height) || !configure(encoding, config) ||
      !WebPPictureInit(&frame))
    return {};
  std::vector<std::uint8_t> file;
  frame.use_argb = encoding.lossless;
  frame.width = static_cast<int>(pixels.width);
  frame.height = static_cast<int>(pixels.height);
  frame.writer = append_bytes;
  frame.custom_ptr = &file;
  const auto import = pixels.bytes == 4 ? WebPPictureImportBGRA : WebPPictureImportBGR;
  const bool encoded =
      import(&frame, pixels.top, static_cast<int>(pixels.stride)) && WebPEncode(&config, &frame);
  WebPPictureFree(&frame);
  if (!encoded) file.clear();
  return file;
}

}  // namespace vellum
