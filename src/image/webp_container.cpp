#include "image/webp_container.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/byte_order.h"

namespace vellum {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t letters(const char (&text)[5]) {
  return std::uint32_t{static_cast<unsigned char>(text[0])} << 24 |
         std::uint32_t{static_cast<unsigned char>(text[1])} << 16 |
         std::uint32_t{static_cast<unsigned char>(text[2])} << 8 | static_cast<unsigned char>(text[3]);
}

constexpr std::uint32_t kExtended = letters("VP8X"), kAnimation = letters("ANIM"), kFrame = letters("ANMF"),
                        kAlpha = letters("ALPH"), kLossy = letters("VP8 "), kLossless = letters("VP8L");
constexpr std::size_t kFormHead = 12;  // "RIFF", size, "WEBP"
constexpr std::size_t kChunkHead = 8;
constexpr std::size_t kFrameHead = 16;  // of an ANMF, in front of its own chunks

/// Where a chunk beside the images has to stand, and the flag that announces it (WebP container, "Extended
/// File Format").
struct MetadataRow {
  std::uint32_t tag;
  std::uint8_t flag;
  bool front;
};
constexpr MetadataRow kMetadata[] = {
    {letters("ICCP"), 0x20, true}, {letters("EXIF"), 0x08, false}, {letters("XMP "), 0x04, false}};
constexpr std::uint8_t kAlphaFlag = 0x10, kAnimationFlag = 0x02;

const MetadataRow* metadata_row(std::uint32_t tag) {
  const auto row = std::ranges::find(kMetadata, tag, &MetadataRow::tag);
  return row == std::end(kMetadata) ? nullptr : row;
}

std::vector<WebpChunk> riff_chunks(std::span<const std::uint8_t> bytes) {
  std::vector<WebpChunk> chunks;
  while (bytes.size() >= kChunkHead) {
    const std::size_t size = read_le32(&bytes[4]);
    if (size > bytes.size() - kChunkHead) break;
    chunks.push_back({read_be32(bytes.data()), bytes.subspan(kChunkHead, size)});
    bytes = bytes.subspan(std::min(bytes.size(), kChunkHead + size + size % 2));
  }
  return chunks;
}

void append_le(Bytes& out, std::uint64_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

void append(Bytes& out, std::span<const std::uint8_t> bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

void append_head(Bytes& out, std::uint32_t tag, std::size_t size) {
  std::array<std::uint8_t, 4> name{};
  write_be32(name.data(), tag);
  append(out, name);
  append_le(out, size, 4);
}

void append_chunk(Bytes& out, const WebpChunk& chunk) {
  append_head(out, chunk.tag, chunk.data.size());
  append(out, chunk.data);
  if (chunk.data.size() % 2 != 0) out.push_back(0);
}

/// The chunks of a file of one image that hold its pixels.
std::vector<WebpChunk> pixel_chunks(std::span<const std::uint8_t> still) {
  std::vector<WebpChunk> chunks = webp_chunks(still);
  std::erase_if(chunks, [](const WebpChunk& chunk) {
    return chunk.tag != kAlpha && chunk.tag != kLossy && chunk.tag != kLossless;
  });
  return chunks;
}

/// A chunk of its own, or a bit behind the two sizes of a lossless stream.
bool has_alpha(const std::vector<WebpChunk>& chunks) {
  constexpr std::size_t kBits = 4;
  return std::ranges::any_of(chunks, [](const WebpChunk& chunk) {
    return chunk.tag == kAlpha ||
           (chunk.tag == kLossless && chunk.data.size() > kBits && (chunk.data[kBits] & 0x10) != 0);
  });
}

std::size_t bytes_of(const std::vector<WebpChunk>& chunks) {
  std::size_t bytes = 0;
  for (const WebpChunk& chunk : chunks) bytes += kChunkHead + chunk.data.size() + chunk.data.size() % 2;
  return bytes;
}

void append_frame(Bytes& out, const WebpFramePart& frame, const std::vector<WebpChunk>& pixels) {
  append_head(out, kFrame, kFrameHead + bytes_of(pixels));
  for (const std::uint32_t value :
       {frame.x / 2, frame.y / 2, frame.width - 1, frame.height - 1, frame.duration})
    append_le(out, value, 3);
  out.push_back(static_cast<std::uint8_t>((frame.blend ? 0 : 2) | (frame.dispose ? 1 : 0)));
  for (const WebpChunk& chunk : pixels) append_chunk(out, chunk);
}

/// Puts the chunks of a file together.
class Assembly {
 public:
  explicit Assembly(const WebpContents& contents) : contents_(contents), extras_(contents.extras) {
    for (WebpExtra& extra : extras_)
      if (const MetadataRow* row = metadata_row(extra.tag)) {
        flags_ |= row->flag;
        extra.behind = row->front ? 0 : std::max(extra.behind, contents.frames.size());
      }
    // A profile comes before all else, camera data and XMP behind the images; the others keep their order.
    std::ranges::stable_sort(
        extras_, {}, [](const WebpExtra& extra) { return std::pair(extra.behind, !is_front(extra)); });
  }

  Bytes make() {
    out_.assign(kFormHead + kChunkHead + 10, 0);  // form and VP8X, known at the end
    while (next_ < extras_.size() && is_front(extras_[next_])) append_extra();
    if (contents_.animated) append_animation();
    append_others(0);
    for (std::size_t i = 0; i < contents_.frames.size(); ++i) {
      if (!append_image(contents_.frames[i])) return {};
      append_others(i + 1);
    }
    if (out_.size() - 8 > 0xFFFFFFFE) return {};
    finish();
    return std::move(out_);
  }

 private:
  static bool is_front(const WebpExtra& extra) {
    const MetadataRow* row = metadata_row(extra.tag);
    return row && row->front;
  }

  void append_extra() {
    append_chunk(out_, {extras_[next_].tag, extras_[next_].data});
    ++next_;
  }

  void append_animation() {
    flags_ |= kAnimationFlag;
    append_head(out_, kAnimation, 6);
    append_le(out_, swap_red_and_blue(contents_.background), 4);
    append_le(out_, contents_.loops, 2);
  }

  void append_others(std::size_t frames) {
    const bool last = frames == contents_.frames.size();
    while (next_ < extras_.size() && (last || extras_[next_].behind <= frames)) append_extra();
  }

  bool append_image(const WebpFramePart& frame) {
    const auto pixels = pixel_chunks(frame.still);
    if (has_alpha(pixels)) flags_ |= kAlphaFlag;
    if (contents_.animated)
      append_frame(out_, frame, pixels);
    else
      for (const WebpChunk& chunk : pixels) append_chunk(out_, chunk);
    return !pixels.empty();
  }

  void finish() {
    Bytes head;
    append(head, std::span(reinterpret_cast<const std::uint8_t*>("RIFF"), 4));
    append_le(head, out_.size() - 8, 4);
    append(head, std::span(reinterpret_cast<const std::uint8_t*>("WEBP"), 4));
    append_head(head, kExtended, 10);
    append_le(head, flags_, 4);
    append_le(head, contents_.width - 1, 3);
    append_le(head, contents_.height - 1, 3);
    std::ranges::copy(head, out_.begin());
  }

  const WebpContents& contents_;
  std::vector<WebpExtra> extras_;  ///< in the order of the file
  Bytes out_;
  std::uint8_t flags_ = 0;
  std::size_t next_ = 0;  ///< of the extras
};

}  // namespace

std::vector<WebpChunk> webp_chunks(std::span<const std::uint8_t> file) {
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  if (file.size() < kFormHead || !text.starts_with("RIFF") || text.substr(8, 4) != "WEBP") return {};
  const std::uint64_t end = std::min<std::uint64_t>(file.size(), std::uint64_t{read_le32(&file[4])} + 8);
  if (end < kFormHead) return {};
  return riff_chunks(file.subspan(kFormHead, static_cast<std::size_t>(end) - kFormHead));
}

bool is_webp_image_chunk(std::uint32_t tag) {
  static constexpr std::uint32_t tags[] = {kExtended, kAnimation, kFrame, kAlpha, kLossy, kLossless};
  return std::ranges::find(tags, tag) != std::end(tags);
}

bool is_webp_frame(std::uint32_t tag) { return tag == kFrame || tag == kLossy || tag == kLossless; }

std::vector<WebpChunk> webp_frame_chunks(const WebpChunk& chunk) {
  const bool frame = chunk.tag == kFrame && chunk.data.size() > kFrameHead;
  return frame ? riff_chunks(chunk.data.subspan(kFrameHead)) : std::vector<WebpChunk>();
}

std::vector<std::uint8_t> webp_file(const WebpContents& contents) {
  if (contents.frames.empty() || contents.width == 0 || contents.height == 0) return {};
  if (!contents.animated && contents.extras.empty()) {
    const auto still = contents.frames.front().still;
    return {still.begin(), still.end()};
  }
  return Assembly(contents).make();
}

}  // namespace vellum
