#include "exchange/gif_reader.h"

#include <gif_lib.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/byte_order.h"
#include "base/translation.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr std::size_t kScreenEnd = 13;  // signature and logical screen descriptor
constexpr std::size_t kMostFrames = 100'000;
constexpr std::size_t kMostCommentBytes = std::size_t{1} << 20;

/// Walks the blocks (GIF89a, 17 to 26).
class Walk {
 public:
  explicit Walk(GifFile& file) : file_(file), bytes_(file.bytes) {}

  void run() {
    at_ = file_.headEnd;
    while (at_ < bytes_.size() && file_.damage.empty()) {
      const std::uint8_t kind = bytes_[at_];
      if (kind == 0x3B) return;
      if (kind == 0x21)
        extension();
      else if (kind == 0x2C)
        image();
      else if (kind == 0 && at_ + 1 < bytes_.size())
        ++at_;  // some writers end a block twice
      else
        damaged(translated("a block of an unknown kind"));
    }
    if (file_.damage.empty()) damaged(translated("the end is missing"));
  }

 private:
  bool has(std::size_t count) const { return bytes_.size() - at_ >= count; }
  void damaged(const char* what) {
    file_.damage = std::string(what) + translated(", offset ") + std::to_string(std::min(at_, bytes_.size()));
  }

  /// The sub-blocks from `at_` on, joined up to `most` bytes; false where they break off.
  bool blocks(std::string* joined, std::size_t most) {
    while (has(1)) {
      const std::size_t size = bytes_[at_++];
      if (size == 0) return true;
      if (!has(size)) break;
      if (joined && joined->size() + size <= most)
        joined->append(reinterpret_cast<const char*>(&bytes_[at_]), size);
      at_ += size;
    }
    at_ = bytes_.size();
    return false;
  }

  void extension() {
    if (!has(2)) return damaged(translated("an extension breaks off"));
    const std::uint8_t label = bytes_[at_ + 1];
    at_ += 2;
    std::string content;
    const bool wanted = label == 0xF9 || label == 0xFE || label == 0xFF;
    const bool whole = blocks(wanted ? &content : nullptr, label == 0xFE ? kMostCommentBytes : 256);
    if (!whole) return damaged(translated("an extension breaks off"));
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(content[i]); };
    if (label == 0xF9 && content.size() >= 4) {
      next_.disposal = byte(0) >> 2 & 7;
      next_.delay = byte(1) | std::uint32_t{byte(2)} << 8;
      next_.transparent = byte(0) & 1 ? std::optional(byte(3)) : std::nullopt;
    } else if (label == 0xFE && !content.empty()) {
      file_.comments.push_back(content);
    } else if (label == 0xFF && content.size() >= 14 && byte(11) == 1 &&
               (content.starts_with("NETSCAPE2.0") || content.starts_with("ANIMEXTS1.0"))) {
      file_.plays = byte(12) | std::uint32_t{byte(13)} << 8;
    }
  }

  void image() {
    if (!has(10)) return damaged(translated("an image breaks off"));
    GifFrame frame = next_;
    next_ = {};
    frame.at = at_;
    const std::uint8_t* p = &bytes_[at_ + 1];
    frame.left = read_le16(p), frame.top = read_le16(p + 2);
    frame.width = read_le16(p + 4), frame.height = read_le16(p + 6);
    const std::uint8_t packed = p[8];
    at_ += 10;
    if (packed & 0x80) {
      frame.table = {at_, std::size_t{2} << (packed & 7)};
      if (!has(3 * frame.table.colors + 1)) return damaged(translated("an image breaks off"));
      at_ += 3 * frame.table.colors;
    }
    if (!has(1)) return damaged(translated("an image breaks off"));
    ++at_;  // the least code size
    const bool whole = blocks(nullptr, 0);
    frame.end = at_;
    if (frame.width != 0 && frame.height != 0) file_.frames.push_back(frame);
    if (!whole) damaged(translated("an image breaks off"));
    if (file_.frames.size() >= kMostFrames) damaged(translated("more images than are read"));
  }

  GifFile& file_;
  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  GifFrame next_;  ///< what a control extension says of the image behind it
};

struct ReaderDeleter {
  void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

/// The head of the file, and one image right behind it.
struct OneImage {
  std::span<const std::uint8_t> head, image;
};

int take_bytes(GifFileType* gif, GifByteType* out, int count) {
  auto& rest = *static_cast<OneImage*>(gif->UserData);
  int taken = 0;
  for (auto* part : {&rest.head, &rest.image}) {
    const std::size_t size = std::min(part->size(), static_cast<std::size_t>(count - taken));
    if (size > 0) std::memcpy(out + taken, part->data(), size);
    *part = part->subspan(size);
    taken += static_cast<int>(size);
  }
  return taken;
}

/// The row that is stored as the nth (GIF89a, appendix E).
class RowOrder {
 public:
  RowOrder(std::uint32_t height, bool interlaced) : height_(height), interlaced_(interlaced) {}
  std::uint32_t next() {
    const std::uint32_t row = row_;
    row_ += interlaced_ ? kStep[pass_] : 1;
    while (interlaced_ && row_ >= height_ && pass_ < 3) row_ = kFirst[++pass_];
    return row;
  }

 private:
  static constexpr std::uint32_t kFirst[] = {0, 4, 2, 1}, kStep[] = {8, 8, 4, 2};
  std::uint32_t height_, row_ = 0, pass_ = 0;
  bool interlaced_;
};

}  // namespace

std::optional<GifFile> read_gif(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kScreenEnd || std::memcmp(bytes.data(), "GIF8", 4) != 0) return std::nullopt;
  GifFile file;
  file.bytes = bytes;
  file.width = read_le16(&bytes[6]), file.height = read_le16(&bytes[8]);
  const std::size_t colors = bytes[10] & 0x80 ? std::size_t{2} << (bytes[10] & 7) : 0;
  file.headEnd = kScreenEnd + 3 * colors;
  if (bytes.size() < file.headEnd) return std::nullopt;
  Walk(file).run();
  // Some writers leave the screen empty: it is then what the images need.
  const bool empty = file.width == 0 || file.height == 0;
  for (const GifFrame& frame : file.frames)
    if (empty) {
      file.width = std::max(file.width, frame.left + frame.width);
      file.height = std::max(file.height, frame.top + frame.height);
    }
  return file;
}

std::uint32_t gif_colors(const GifFile& file, const GifFrame& frame, Palette& palette) {
  const GifTable global{kScreenEnd, (file.headEnd - kScreenEnd) / 3};
  const GifTable table = frame.table.colors != 0 ? frame.table : global;
  if (table.colors == 0) {
    palette = grey_ramp();
    std::fill_n(palette.begin() + 3, 3, std::uint8_t{255});
    return 256;
  }
  palette.fill(0);
  std::copy_n(&file.bytes[table.at], 3 * table.colors, palette.begin());
  return static_cast<std::uint32_t>(table.colors);
}

GifPixels gif_pixels(const GifFile& file, const GifFrame& frame) {
  GifPixels pixels;
  OneImage rest{file.bytes.first(file.headEnd), file.bytes.subspan(frame.at, frame.end - frame.at)};
  const std::unique_ptr<GifFileType, ReaderDeleter> gif(DGifOpen(&rest, take_bytes, nullptr));
  GifRecordType record{};
  if (!gif || DGifGetRecordType(gif.get(), &record) != GIF_OK || record != IMAGE_DESC_RECORD_TYPE ||
      DGifGetImageDesc(gif.get()) != GIF_OK)
    return pixels;
  pixels.there.resize(frame.height);
  RowOrder order(frame.height, gif->Image.Interlace);
  std::vector<GifPixelType> line(frame.width);
  for (; pixels.rows < frame.height; ++pixels.rows) {
    if (DGifGetLine(gif.get(), line.data(), static_cast<int>(frame.width)) != GIF_OK) break;
    // Only rows that are there take memory of their own accord.
    if (pixels.indexes.empty()) pixels.indexes.resize(std::size_t{frame.width} * frame.height);
    const std::uint32_t y = order.next();
    pixels.there[y] = true;
    std::ranges::copy(line, pixels.indexes.begin() + static_cast<std::ptrdiff_t>(y) * frame.width);
  }
  return pixels;
}

}  // namespace vellum
