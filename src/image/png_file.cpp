#include "image/png_file.h"

#include <algorithm>

#include "base/translation.h"
#include "image/chunk_stream.h"
#include "image/png_decode.h"
#include "image/png_encode.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

constexpr std::uint32_t kIHDR = 0x49484452, kPLTE = 0x504C5445, kIDAT = 0x49444154, kIEND = 0x49454E44;

/// What a picture is made from.
struct PngParts {
  PngHeader header;
  Palette palette{};
  std::vector<std::span<const std::uint8_t>> data;
};

/// Palette and image data of the gathered chunks; false where the palette is damaged or missing.
bool take_chunks(std::span<const StreamChunk> chunks, PngParts& parts) {
  bool has_palette = false;
  for (const StreamChunk& chunk : chunks) {
    if (chunk.tag == kIDAT) parts.data.push_back(chunk.data);
    if (chunk.tag != kPLTE || !parts.data.empty()) continue;
    if (chunk.data.size() > 768 || chunk.data.size() % 3 != 0) return false;
    has_palette = true;
    if (parts.header.colorType == 3) std::ranges::copy(chunk.data, parts.palette.begin());
  }
  return parts.header.colorType != 3 || has_palette;
}

/// Header, palette and image data of a file; nothing when one of them is damaged or the end chunk is missing.
std::optional<PngParts> parts_of(std::span<const std::uint8_t> file) {
  if (file.size() < kPngSignature.size() ||
      !std::ranges::equal(file.first(kPngSignature.size()), kPngSignature))
    return std::nullopt;
  const GatheredChunks gathered = gather_chunks(file, kPngSignature.size(), kIEND);
  if (gathered.chunks.empty() || gathered.chunks[0].tag != kIHDR || gathered.chunks[0].data.size() != 13)
    return std::nullopt;
  PngParts parts;
  parts.header = parse_png_header(gathered.chunks[0].data.first<13>());
  if (png_header_fault(parts.header)) return std::nullopt;
  if (parts.header.colorType == 0) parts.palette = png_grey_palette(parts.header.bitDepth);
  if (!take_chunks(gathered.chunks, parts) || !gathered.complete) return std::nullopt;
  return parts;
}

bool is_grey_ramp(const Palette& palette, std::uint8_t depth) { return palette == png_grey_palette(depth); }

}  // namespace

PngDecoded read_png_picture(std::span<const std::uint8_t> file, std::shared_ptr<const FileContent> owner) {
  auto parts = parts_of(file);
  if (!parts) return {{}, translated("a chunk is damaged or missing")};
  PngDecoded decoded = png_decode(parts->header, parts->data, parts->palette, PngShortData::Zeros);
  if (owner)
    decoded.picture =
        Picture(kept_with_stream(decoded, parts->header, std::move(parts->data), std::move(owner)));
  return decoded;
}

Picture read_png_information(std::span<const std::uint8_t> file) {
  const auto parts = parts_of(file);
  if (!parts) return {};
  return PictureCreateHeaderOnly(parts->header.width, parts->header.height, &parts->palette,
                                 png_picture_bits(parts->header));
}

std::vector<std::uint8_t> encode_png_picture(const Picture& picture, int level) {
  PngHeader header{picture.width(), picture.height(), 8, 6, 0, 0, 0};
  Palette palette{};
  const std::uint32_t colors = PictureGetPalette(picture, palette);
  if (picture.bits() <= 8) {
    header.bitDepth = static_cast<std::uint8_t>(picture.bits());
    header.colorType = is_grey_ramp(palette, header.bitDepth) ? 0 : 3;
  } else if (picture.bits() == 24) {
    header.colorType = 2;
  }
  const auto stream = png_encode(header, picture, level);
  if (stream.empty()) return {};
  std::vector<std::uint8_t> file(kPngSignature.begin(), kPngSignature.end());
  append_chunk(file, kIHDR, png_header_payload(header));
  if (header.colorType == 3) append_chunk(file, kPLTE, std::span(palette).first(3 * std::size_t{colors}));
  append_chunk(file, kIDAT, stream);
  append_chunk(file, kIEND, {});
  return file;
}

}  // namespace vellum
