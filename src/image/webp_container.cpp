#include "image/webp_container.h"

#include <algorithm>
#include <array>
#include <cstring>

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

bool holds_pixels(std::uint32_t tag) { return tag == kAlpha || tag == kLossy || tag == kLossless; }

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

bool is_riff(std::span<const std::uint8_t> bytes) {
  return bytes.size() >= 4 && std::memcmp(bytes.data(), "RIFF", 4) == 0;
}

/// The chunks of one image that hold its pixels.
std::vector<WebpChunk> pixel_chunks(std::span<const std::uint8_t> image) {
  std::vector<WebpChunk> chunks = is_riff(image) ? webp_chunks(image) : riff_chunks(image);
  std::erase_if(chunks, [](const WebpChunk& chunk) { return !holds_pixels(chunk.tag); });
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

std::uint64_t bytes_of(std::span<const WebpChunk> chunks) {
  std::uint64_t bytes = 0;
  for (const WebpChunk& chunk : chunks) bytes += kChunkHead + chunk.data.size() + chunk.data.size() % 2;
  return bytes;
}

/// The head of a frame's chunk, and the fields behind it.
Bytes frame_head(const WebpFramePart& frame, std::uint64_t pixels) {
  Bytes out;
  append_head(out, kFrame, static_cast<std::size_t>(kFrameHead + pixels));
  for (const std::uint32_t value :
       {frame.x / 2, frame.y / 2, frame.width - 1, frame.height - 1, frame.duration})
    append_le(out, value, 3);
  out.push_back(static_cast<std::uint8_t>((frame.blend ? 0 : 2) | (frame.dispose ? 1 : 0)));
  return out;
}

}  // namespace

/// Puts the chunks of a file together.
class WebpAssembly {
 public:
  WebpAssembly(const WebpContents& contents, std::size_t frames, const Sink& sink)
      : contents_(contents), count_(frames), sink_(sink), extras_(contents.extras) {
    for (WebpExtra& extra : extras_)
      if (const MetadataRow* row = metadata_row(extra.tag)) {
        flags_ |= row->flag;
        extra.behind = row->front ? 0 : std::max(extra.behind, count_);
      }
    // A profile comes before all else, camera data and XMP behind the images; the others keep their order.
    std::ranges::stable_sort(
        extras_, {}, [](const WebpExtra& extra) { return std::pair(extra.behind, !is_front(extra)); });
  }

  /// All at once: what the head tells is measured first.
  bool write() {
    measure_head();
    for (const WebpFramePart& frame : contents_.frames) measure(frame);
    put_head();
    for (const WebpFramePart& frame : contents_.frames) put_frame(frame);
    return good_;
  }

  /// Frame by frame: what the head tells is put in at the end.
  bool begin() {
    measure_head();
    return put_head();
  }
  bool add(const WebpFramePart& frame) { return measure(frame) && put_frame(frame); }
  bool end() {
    Bytes head = form_head();
    append(head, extended_head());
    return good_ && sink_.rewrite && sink_.rewrite(0, head);
  }

 private:
  static bool is_front(const WebpExtra& extra) {
    const MetadataRow* row = metadata_row(extra.tag);
    return row && row->front;
  }

  /// How long the file gets behind the size in its head, and its flags.
  void measure_head() {
    bytes_ = 4;
    if (contents_.animated) {
      flags_ |= kAnimationFlag;
      bytes_ += kChunkHead + 6;
    }
    for (const WebpExtra& extra : extras_) bytes_ += bytes_of({{{extra.tag, extra.data}}});
  }

  /// False where the frame has no pixels, or the file gets too long.
  bool measure(const WebpFramePart& frame) {
    const auto pixels = pixel_chunks(frame.still);
    if (has_alpha(pixels)) flags_ |= kAlphaFlag;
    extendedPixels_ = extendedPixels_ || pixels.size() > 1;
    bytes_ += bytes_of(pixels) + (contents_.animated ? kChunkHead + kFrameHead : 0);
    good_ = good_ && !pixels.empty() && whole_bytes() <= 0xFFFFFFFE;
    return good_;
  }

  std::uint64_t whole_bytes() const { return bytes_ + (is_extended() ? kChunkHead + 10 : 0); }

  bool put_head() {
    put(form_head());
    if (is_extended()) put(extended_head());
    while (next_ < extras_.size() && is_front(extras_[next_])) put_extra();
    if (contents_.animated) put(animation_head());
    put_others(0);
    return good_;
  }

  bool put_frame(const WebpFramePart& frame) {
    put_image(frame);
    put_others(++written_);
    return good_;
  }

  void put(std::span<const std::uint8_t> bytes) { good_ = good_ && sink_.write(bytes); }

  void put_chunk(const WebpChunk& chunk) {
    static constexpr std::uint8_t kPadding[] = {0};
    Bytes head;
    append_head(head, chunk.tag, chunk.data.size());
    put(head);
    put(chunk.data);
    if (chunk.data.size() % 2 != 0) put(kPadding);
  }

  void put_extra() {
    put_chunk({extras_[next_].tag, extras_[next_].data});
    ++next_;
  }

  void put_others(std::size_t frames) {
    const bool last = frames == count_;
    while (next_ < extras_.size() && (last || extras_[next_].behind <= frames)) put_extra();
  }

  void put_image(const WebpFramePart& frame) {
    const auto pixels = pixel_chunks(frame.still);
    if (contents_.animated) put(frame_head(frame, bytes_of(pixels)));
    for (const WebpChunk& chunk : pixels) put_chunk(chunk);
  }

  Bytes animation_head() const {
    Bytes out;
    append_head(out, kAnimation, 6);
    append_le(out, swap_red_and_blue(contents_.background), 4);
    append_le(out, contents_.loops, 2);
    return out;
  }

  /// A still without anything beside its pixels needs no head of its own where these are one chunk.
  bool is_extended() const { return contents_.animated || !extras_.empty() || extendedPixels_; }

  Bytes form_head() const {
    Bytes head;
    append(head, std::span(reinterpret_cast<const std::uint8_t*>("RIFF"), 4));
    append_le(head, whole_bytes(), 4);
    append(head, std::span(reinterpret_cast<const std::uint8_t*>("WEBP"), 4));
    return head;
  }

  Bytes extended_head() const {
    Bytes head;
    append_head(head, kExtended, 10);
    append_le(head, flags_, 4);
    append_le(head, contents_.width - 1, 3);
    append_le(head, contents_.height - 1, 3);
    return head;
  }

  const WebpContents contents_;
  const std::size_t count_;  ///< of the frames
  const Sink& sink_;
  std::vector<WebpExtra> extras_;  ///< in the order of the file
  std::size_t written_ = 0;        ///< of the frames
  std::uint64_t bytes_ = 0;
  std::uint8_t flags_ = 0;
  bool good_ = true, extendedPixels_ = false;
  std::size_t next_ = 0;  ///< of the extras
};

namespace {

/// The chunks of a form of type WEBP, as they lie behind its head; nothing of other bytes.
std::span<const std::uint8_t> form_content(std::span<const std::uint8_t> file) {
  if (file.size() < kFormHead || !is_riff(file) || std::memcmp(&file[8], "WEBP", 4) != 0) return {};
  const std::uint64_t end = std::min<std::uint64_t>(file.size(), std::uint64_t{read_le32(&file[4])} + 8);
  if (end < kFormHead) return {};
  return file.subspan(kFormHead, static_cast<std::size_t>(end) - kFormHead);
}

}  // namespace

std::vector<WebpChunk> webp_chunks(std::span<const std::uint8_t> file) {
  return riff_chunks(form_content(file));
}

std::span<const std::uint8_t> webp_pixel_part(std::span<const std::uint8_t> chunks) {
  const auto all = riff_chunks(chunks);
  const auto first = std::ranges::find_if(all, holds_pixels, &WebpChunk::tag);
  const auto last = first != all.end() && first->tag == kAlpha ? std::next(first) : first;
  if (first == all.end() || last == all.end() || last->tag == kAlpha) return {};
  const auto begin = static_cast<std::size_t>(first->data.data() - chunks.data()) - kChunkHead;
  const auto end = static_cast<std::size_t>(last->data.data() - chunks.data()) + last->data.size();
  return chunks.subspan(begin, std::min(chunks.size(), end + last->data.size() % 2) - begin);
}

std::span<const std::uint8_t> webp_still_pixels(std::span<const std::uint8_t> file) {
  return webp_pixel_part(form_content(file));
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

bool write_webp_file(const WebpContents& contents, const Sink& sink) {
  if (contents.frames.empty() || contents.width == 0 || contents.height == 0) return false;
  const auto still = contents.frames.front().still;
  if (!contents.animated && contents.extras.empty() && is_riff(still)) return sink.write(still);
  return WebpAssembly(contents, contents.frames.size(), sink).write();
}

WebpAnimationFile::WebpAnimationFile(const WebpContents& contents, std::size_t frames, const Sink& sink)
    : assembly_(std::make_unique<WebpAssembly>(contents, frames, sink)) {
  assembly_->begin();
}
WebpAnimationFile::~WebpAnimationFile() = default;
bool WebpAnimationFile::add(const WebpFramePart& frame) { return assembly_->add(frame); }
bool WebpAnimationFile::end() { return assembly_->end(); }

}  // namespace vellum
