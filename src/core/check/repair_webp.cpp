// A WebP made right: the images that decode, the chunks beside them, and a new container around them.
#include <algorithm>

#include "base/byte_order.h"
#include "base/file.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/check/repairing.h"
#include "core/check/webp_parts.h"
#include "image/webp_partial.h"
#include "image/webp_service.h"

namespace vellum {
namespace {

using namespace webp;

/// Chunks as far as they go; the last one may be cut.
std::vector<FoundChunk> riff_chunks(std::span<const std::uint8_t> bytes, std::uint64_t offset) {
  std::vector<FoundChunk> chunks;
  std::size_t at = 0;
  while (bytes.size() - at > kChunkHead) {
    const std::size_t told = read_le32(&bytes[at + 4]), there = bytes.size() - at - kChunkHead;
    chunks.push_back(
        {read_be32(&bytes[at]), bytes.subspan(at + kChunkHead, std::min(told, there)), offset + at});
    if (told >= there) break;
    at = std::min(bytes.size(), at + kChunkHead + told + told % 2);
  }
  return chunks;
}

struct WebpRepair {
  RepairedFile& result;
  WebpBudget budget;
  WebpContents contents{};
  bool canvasTold = false;
  std::vector<std::vector<std::uint8_t>> stills{};  ///< of the frames

  /// A still file that shows what these parts hold; empty where that is nothing.
  std::vector<std::uint8_t> good_still(std::span<const FoundChunk> parts, const std::string& what,
                                       std::uint32_t& width, std::uint32_t& height) {
    std::vector<WebpChunk> images;
    for (const FoundChunk& part : parts)
      if (is_part(part.tag)) images.push_back({part.tag, part.data});
    // What the image is made of ends with its colors; a lossless one has its own alpha.
    const auto colors = std::ranges::find_if(images, [](const WebpChunk& c) { return c.tag != kAlpha; });
    if (colors == images.end()) return {};
    images.erase(colors + 1, images.end());
    if (images.back().tag == kLossless || images.size() > 2) images.erase(images.begin(), images.end() - 1);
    const auto still = webp_still(images);
    const auto info = WEBPGetInfoEx(webp_still({&images.back(), 1}));
    if (!info) return {};
    width = info->width;
    height = info->height;
    if (!budget.allows(width, height)) {
      result.given_up.push_back(what + translated(": it is too large for a file of this size."));
      return {};
    }
    if (WEBPDecodeBGRA(still)) return still;
    std::uint32_t rows = 0;
    const Picture there = decode_webp_rows(still, rows);
    if (!there || rows == 0) return {};
    result.given_up.push_back(what + ": " + std::to_string(height - rows) + translated(" of ") +
                              std::to_string(height) + translated(" rows are missing."));
    return encode_webp_still(there, true, 100);
  }

  void take_frame(const FoundChunk& chunk) {
    const std::string what = translated("Frame ") + std::to_string(contents.frames.size() + 1);
    WebpFramePart frame;
    std::vector<std::uint8_t> still;
    if (chunk.data.size() > kFrameHead)
      still = good_still(riff_chunks(chunk.data.subspan(kFrameHead), chunk.offset + kChunkHead + kFrameHead),
                         what, frame.width, frame.height);
    if (still.empty()) {
      result.given_up.push_back(chunk_name(chunk) + translated(": the frame can't be shown."));
      return;
    }
    frame.x = 2 * read_le24(&chunk.data[0]);
    frame.y = 2 * read_le24(&chunk.data[3]);
    frame.duration = read_le24(&chunk.data[12]);
    frame.dispose = (chunk.data[15] & 1) != 0;
    frame.blend = (chunk.data[15] & 2) == 0;
    // Where no header tells the canvas the frames make it, as large as one may be (WebP container, "VP8X").
    const std::uint64_t width = std::max(contents.width, frame.x + frame.width),
                        height = std::max(contents.height, frame.y + frame.height);
    constexpr std::uint64_t kLongestSide = 1u << 24, kMostPixels = 0xFFFFFFFF;
    const bool grows = width > contents.width || height > contents.height;
    if (grows &&
        (canvasTold || width > kLongestSide || height > kLongestSide || width * height > kMostPixels)) {
      result.given_up.push_back(chunk_name(chunk) + translated(": the frame reaches beyond the canvas."));
      return;
    }
    add(frame, std::move(still));
  }

  void add(WebpFramePart frame, std::vector<std::uint8_t> still) {
    contents.width = std::max(contents.width, frame.x + frame.width);
    contents.height = std::max(contents.height, frame.y + frame.height);
    stills.push_back(std::move(still));
    contents.frames.push_back(frame);
  }

  void take_still(std::span<const FoundChunk> chunks) {
    WebpFramePart frame;
    auto still = good_still(chunks, translated("The image"), frame.width, frame.height);
    contents.width = contents.height = 0;  // those of the image, whatever the header tells
    if (!still.empty()) add(frame, std::move(still));
  }

  void take(const FoundChunk& chunk) {
    if (chunk.tag == kExtended && chunk.data.size() >= 10 && contents.width == 0) {
      contents.width = read_le24(&chunk.data[4]) + 1;
      contents.height = read_le24(&chunk.data[7]) + 1;
      canvasTold = true;
    } else if (chunk.tag == kAnimation && chunk.data.size() >= 6) {
      contents.background = read_le32(chunk.data.data());
      contents.loops = read_le16(&chunk.data[4]);
    } else if (chunk.tag == kFrame) {
      contents.animated = true;
      take_frame(chunk);
    } else if (!is_webp_image_chunk(chunk.tag) && is_new(chunk)) {
      contents.extras.push_back({chunk.tag, chunk.data, contents.frames.size()});
    }
  }
  bool is_new(const FoundChunk& chunk) {
    const bool second =
        stands_once(chunk.tag, DocumentKind::WEBP) &&
        std::ranges::find(contents.extras, chunk.tag, &WebpExtra::tag) != contents.extras.end();
    if (second) result.given_up.push_back(chunk_name(chunk) + translated(": there is one already."));
    return !second;
  }
};

}  // namespace

void repair_webp(std::span<const std::uint8_t> file, RepairedFile& result) {
  result.kind = DocumentKind::WEBP;
  if (file.size() <= kFormHead) {
    result.given_up.emplace_back(translated("There is no image."));
    return;
  }
  WebpRepair repair{result, {file.size()}};
  const auto chunks = riff_chunks(file.subspan(kFormHead), kFormHead);
  for (const FoundChunk& chunk : chunks) repair.take(chunk);
  if (!repair.contents.animated) repair.take_still(chunks);
  if (repair.contents.frames.empty()) return;
  for (std::size_t i = 0; i < repair.stills.size(); ++i) repair.contents.frames[i].still = repair.stills[i];
  if (!write_webp_file(repair.contents, memory_sink(result.bytes))) result.bytes.clear();
}

}  // namespace vellum
