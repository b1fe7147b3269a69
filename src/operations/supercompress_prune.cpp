// Pruning: frames are cut to what differs from the frames in front of them.
#include <algorithm>
#include <cstring>

#include "core/model/chunk_description.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/remap.h"
#include "operations/pixel_grid.h"
#include "operations/source_canvases.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

/// A frame beside the canvas: pixel (i, j) of it lies on (i + dx, j + dy) of the canvas.
struct Beside {
  const PixelGrid& frame;
  const PixelGrid& canvas;
  std::int64_t x, y, dx, dy;

  /// What lies beyond the right and lower edges of the canvas is not compared.
  bool same(std::uint32_t i, std::uint32_t j) const {
    const std::int64_t cx = i + dx, cy = j + dy;
    if (cx >= canvas.width || cy >= canvas.height) return true;
    return cx >= 0 && cy >= 0 &&
           frame.row(j)[i] == canvas.row(static_cast<std::uint32_t>(cy))[static_cast<std::size_t>(cx)];
  }
  bool same_row(std::uint32_t j) const {
    const std::int64_t cy = j + dy;
    if (dx < 0 || cy < 0) {
      for (std::uint32_t i = 0; i < frame.width; ++i)
        if (!same(i, j)) return false;
      return true;
    }
    if (cy >= canvas.height || dx >= canvas.width) return true;
    const auto count = std::min<std::size_t>(frame.width, canvas.width - static_cast<std::size_t>(dx));
    return std::memcmp(frame.row(j), canvas.row(static_cast<std::uint32_t>(cy)) + dx,
                       count * sizeof(Colour)) == 0;
  }
  /// Rows below `end` of the column.
  bool same_column(std::uint32_t i, std::int64_t end) const {
    for (std::uint32_t j = 0; j < frame.height && j < end; ++j)
      if (!same(i, j)) return false;
    return true;
  }
};

/// Keeps two edges apart that have met.
void widen(std::int32_t& first, std::int32_t& end, std::int32_t extent) {
  if (first != end) return;
  if (end + 2 < extent)
    end += 2;
  else if (first >= 2)
    first -= 2;
}

/// The part of the frame that is kept; empty where the frame stays as it is.
PictureRect changed_part(const Beside& beside) {
  const auto width = static_cast<std::int32_t>(beside.frame.width),
             height = static_cast<std::int32_t>(beside.frame.height);
  const auto row = [&](std::int32_t j) { return beside.same_row(static_cast<std::uint32_t>(j)); };
  const auto column = [&](std::int32_t i, std::int64_t end) {
    return beside.same_column(static_cast<std::uint32_t>(i), end);
  };
  PictureRect rect{0, 0, width, height};
  while (rect.top < height - 1 && rect.top + beside.dy < beside.canvas.height && row(rect.top)) ++rect.top;
  // The offset takes part in where this scan ends.
  while (rect.left < width - 1 && beside.x + rect.left < width && column(rect.left, height - beside.y))
    ++rect.left;
  while (rect.bottom > rect.top && row(rect.bottom - 1)) --rect.bottom;
  while (rect.right > rect.left && column(rect.right - 1, height)) --rect.right;
  widen(rect.left, rect.right, width);
  widen(rect.top, rect.bottom, height);
  return rect;
}

std::uint64_t area(const PictureRect& rect) {
  return static_cast<std::uint64_t>(rect.right - rect.left) *
         static_cast<std::uint64_t>(rect.bottom - rect.top);
}

class Pruning {
 public:
  Pruning(Supercompression& work, const std::vector<Picture>& pictures)
      : work_(work), colors_(!values_mean_the_same(pictures)), bits_(colors_ ? 32 : pictures.front().bits()) {
    background_ = document_background(work.draft.list, work.draft.document);
    color_ = background_ | (bits_ == 32 ? 0xFF000000u : 0);
    const Palette palette = palette_of(pictures.front());
    if (bits_ <= 8)
      color_ = NearestPaletteIndex(red_of(background_), green_of(background_), blue_of(background_), palette,
                                   pictures.front().colours());
  }

  void begin(const ChunkRecord& record) {
    const Picture picture = picture_of(record);
    canvas_ = grid_of(picture, colors_);
    origin_ = GetFrameOffset(record, kind());
    lastAt_ = origin_;
    last_ = {canvas_.width, canvas_.height, {}};
    source_ = result_ = std::uint64_t{canvas_.width} * canvas_.height;
  }

  /// Whether the record holds less now.
  bool take(ChunkRecord& record) {
    frame_ = grid_of(picture_of(record), colors_, std::move(frame_));
    const PixelGrid& frame = frame_;
    const FrameOffset at = GetFrameOffset(record, kind());
    const std::uint64_t whole = std::uint64_t{frame.width} * frame.height;
    source_ += whole;
    const PictureRect rect = changed_part(
        {frame, canvas_, at.x, at.y, std::int64_t{at.x} - origin_.x, std::int64_t{at.y} - origin_.y});
    if (area(rect) == 0) {
      result_ += whole;
      return false;
    }
    dispose_of_last();
    lastDispose_ = dispose_of(record);
    result_ += area(rect);
    draw(record, frame, rect, at);
    keep_region(frame, rect, at);
    if (area(rect) == whole) return false;
    crop(record, rect, at);
    return true;
  }

  std::string percent() const { return std::to_string(100 - result_ * 100 / source_); }

 private:
  DocumentKind kind() const { return work_.draft.document.kind; }

  std::uint32_t dispose_of(const ChunkRecord& record) const {
    if (kind() == DocumentKind::MING) return clears_canvas(record) ? 1 : 0;
    return kind() == DocumentKind::WEBP ? record.webpImage.dispose : record.frameControl.dispose;
  }

  void dispose_of_last() {
    if (lastDispose_ != 1 && lastDispose_ != 2) return;
    for (std::uint32_t y = 0; y < last_.height; ++y)
      for (std::uint32_t x = 0; x < last_.width; ++x) {
        const std::int64_t cx = std::int64_t{x} + lastAt_.x - origin_.x,
                           cy = std::int64_t{y} + lastAt_.y - origin_.y;
        if (canvas_.holds(cx, cy))
          canvas_.row(static_cast<std::uint32_t>(cy))[static_cast<std::size_t>(cx)] =
              lastDispose_ == 1 ? color_ : last_.row(y)[x];
      }
  }

  /// Channels of 32 bits are blended with the frame's own pixel or with the background.
  Colour blended(Colour pixel, bool over) const {
    const Colour alpha = alpha_of(pixel), under = over ? pixel : background_;
    Colour result = alpha << 24;
    for (unsigned shift = 0; shift < 24; shift += 8)
      result |= ((under >> shift & 255) * (255 - alpha) / 255 + (pixel >> shift & 255) * alpha / 255)
                << shift;
    return result;
  }

  void draw(const ChunkRecord& record, const PixelGrid& frame, const PictureRect& rect, FrameOffset at) {
    const bool over = kind() == DocumentKind::APNG && record.frameControl.blend == 1;
    const bool deep = bits_ == 32 && picture_of(record).bits() == 32;
    for (std::int32_t y = rect.top; y < rect.bottom; ++y)
      for (std::int32_t x = rect.left; x < rect.right; ++x) {
        const std::int64_t cx = std::int64_t{x} + at.x, cy = std::int64_t{y} + at.y;
        if (!canvas_.holds(cx, cy)) continue;
        const Colour pixel = frame.row(static_cast<std::uint32_t>(y))[x];
        canvas_.row(static_cast<std::uint32_t>(cy))[static_cast<std::size_t>(cx)] =
            deep ? blended(pixel, over) : pixel;
      }
  }

  void keep_region(const PixelGrid& frame, const PictureRect& rect, FrameOffset at) {
    last_.width = static_cast<std::uint32_t>(rect.right - rect.left);
    last_.height = static_cast<std::uint32_t>(rect.bottom - rect.top);
    last_.pixels.clear();
    lastAt_ = {at.x + rect.left, at.y + rect.top};
    for (std::uint32_t y = 0; y < last_.height; ++y) {
      const Colour* row = frame.row(static_cast<std::uint32_t>(rect.top) + y) + rect.left;
      last_.pixels.insert(last_.pixels.end(), row, row + last_.width);
    }
  }

  void crop(ChunkRecord& record, const PictureRect& rect, FrameOffset at) {
    const Picture part = PictureCrop(picture_of(record), rect);
    if (!part) throw std::bad_alloc();
    record_take_pixels(record, kind(), part);
    SetFrameOffset(record, kind(), {at.x + rect.left, at.y + rect.top});
  }

  Supercompression& work_;
  bool colors_;         ///< frames are compared by their colors
  std::uint32_t bits_;  ///< of the canvas
  Colour background_ = 0, color_ = 0;
  PixelGrid canvas_, frame_;
  PixelGrid last_;  ///< the part that the last frame drew
  FrameOffset origin_, lastAt_;
  std::uint32_t lastDispose_ = 0;
  std::uint64_t source_ = 0, result_ = 0;
};

}  // namespace

bool prune_pass(Supercompression& work) try {
  const Progress progress(work.host, string_text(StringId::Pruning));
  work.say(StringId::PruneBegins);
  ChunkList& list = work.draft.list;
  const auto entries = frame_entries(work.draft);
  std::vector<Picture> pictures;
  for (const std::size_t entry : entries) pictures.push_back(picture_of(list.record(entry)));
  if (pictures.empty() || !std::ranges::all_of(pictures, has_rows))
    return work.abort(StringId::ErrorAccessingChunk);
  Pruning pruning(work, pictures);
  pruning.begin(list.record(entries.front()));
  ChunkRecord record;
  std::vector<Picture> ahead;
  for (std::size_t i = 1; i < entries.size(); ++i) {
    if (i % kDecodedAhead == 1) ahead = decoded_pictures(work.draft, entries, i);
    progress.step(entries[i], list.size());
    if (work.host.stopped()) return false;
    chunk_list_get(list, entries[i], record);
    if (!pruning.take(record)) continue;
    record.description = chunk_description(record);
    chunk_list_put(list, entries[i], record);
  }
  work.say(StringId::PruningReduced, {pruning.percent()});
  work.say(StringId::PruneCompleted);
  return true;
} catch (const std::bad_alloc&) {
  return work.abort(StringId::MemoryError);
}

}  // namespace vellum
