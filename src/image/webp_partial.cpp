#include "image/webp_partial.h"

#include <webp/decode.h>

#include <cstring>
#include <memory>

#include "base/byte_order.h"
#include "base/limits.h"

namespace vellum {
namespace {

constexpr std::uint32_t kRiff = 0x52494646, kWebp = 0x57454250, kExtended = 0x56503858;

void put_chunk(std::vector<std::uint8_t>& out, std::uint32_t tag, std::span<const std::uint8_t> data) {
  std::uint8_t head[8];
  write_be32(head, tag);
  write_le32(head + 4, static_cast<std::uint32_t>(data.size()));
  out.insert(out.end(), head, head + 8);
  out.insert(out.end(), data.begin(), data.end());
  if (data.size() % 2 != 0) out.push_back(0);
}

struct FreeDecoder {
  void operator()(WebPIDecoder* decoder) const { WebPIDelete(decoder); }
};

}  // namespace

std::vector<std::uint8_t> webp_still(std::span<const WebpChunk> image) {
  std::vector<std::uint8_t> out(12);
  write_be32(out.data(), kRiff);
  write_be32(&out[8], kWebp);
  if (image.size() > 1) {
    int width = 0, height = 0;
    const std::span<const std::uint8_t> colors = image.back().data;
    if (!WebPGetInfo(colors.data(), colors.size(), &width, &height)) return {};
    std::uint8_t header[10] = {0x10};
    write_le32(header + 4, static_cast<std::uint32_t>(width - 1) | static_cast<std::uint32_t>(height - 1)
                                                                       << 24);
    write_le16(header + 8, static_cast<std::uint32_t>(height - 1) >> 8);
    put_chunk(out, kExtended, header);
  }
  for (const WebpChunk& chunk : image) put_chunk(out, chunk.tag, chunk.data);
  write_le32(&out[4], static_cast<std::uint32_t>(out.size() - 8));
  return out;
}

Picture decode_webp_rows(std::span<const std::uint8_t> still, std::uint32_t& rows) {
  rows = 0;
  int width = 0, height = 0;
  if (!WebPGetInfo(still.data(), still.size(), &width, &height)) return {};
  const auto w = static_cast<std::uint32_t>(width), h = static_cast<std::uint32_t>(height);
  if (std::uint64_t{w} * h * 4 > kMaximumPictureBytes) return {};
  const std::unique_ptr<WebPIDecoder, FreeDecoder> decoder(WebPINewRGB(MODE_BGRA, nullptr, 0, 0));
  if (!decoder) return {};
  WebPIAppend(decoder.get(), still.data(), still.size());
  int last = 0, stride = 0;
  const std::uint8_t* pixels = WebPIDecGetRGB(decoder.get(), &last, nullptr, nullptr, &stride);
  Picture picture = PictureCreate(w, h, nullptr, 32);
  if (!picture) return {};
  if (!pixels) return picture;
  rows = static_cast<std::uint32_t>(std::clamp(last, 0, height));
  for (std::uint32_t y = 0; y < rows; ++y)
    std::memcpy(picture.edit_row(y), pixels + std::size_t{y} * static_cast<std::size_t>(stride),
                std::size_t{w} * 4);
  return picture;
}

}  // namespace vellum
