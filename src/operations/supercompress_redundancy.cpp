// Redundancy compression: pixels of an MNG's images that are seen already get one color, which is
// transparent.
#include <algorithm>
#include <array>
#include <optional>

#include "base/byte_order.h"
#include "core/model/chunk_description.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "operations/pixel_grid.h"
#include "operations/supercompress_passes.h"

namespace vellum {
namespace {

constexpr Colour kColor = 0xFFFFFF;

/// The lowest value that no pixel has; nothing where there is none, and of pictures that are none of these.
std::optional<Colour> unused_value(const PixelGrid& values, std::uint32_t bits) {
  if (bits > 24) return std::nullopt;
  std::vector<char> used(std::size_t{1} << bits);
  for (const Colour value : values.pixels) used[value & kColor] = 1;
  std::size_t value = 0;
  while (value < used.size() && used[value]) ++value;
  // The last color of all is none that is tried.
  if (value >= std::min<std::size_t>(used.size(), kColor)) return std::nullopt;
  return static_cast<Colour>(value);
}

/// The tRNS by which one value is transparent.
std::vector<std::uint8_t> transparency_of(Colour key, std::uint32_t bits, std::uint8_t color_type) {
  if (bits == 24) {
    std::vector<std::uint8_t> samples(6);
    for (std::size_t i = 0; i < 3; ++i) write_be16(&samples[2 * i], key >> (8 * i) & 255);
    return samples;
  }
  if (color_type == 0) return {0, static_cast<std::uint8_t>(key)};
  std::vector<std::uint8_t> alphas(key + std::size_t{1}, 255);
  alphas.back() = 0;
  return alphas;
}

class Redundancy {
 public:
  explicit Redundancy(bool colors) : colors_(colors) {}

  /// The first image: what is seen.
  void begin(const ChunkRecord& record) {
    canvas_ = grid_of(picture_of(record), colors_);
    origin_ = GetFrameOffset(record, DocumentKind::MING);
    cleared_ = clears_canvas(record);
  }

  /// False when memory is exhausted.
  bool take(ChunkRecord& record, bool& changed) {
    const Picture picture = picture_of(record);
    const PixelGrid shown = grid_of(picture, colors_);
    const PixelGrid values = colors_ && picture.bits() <= 8 ? grid_of(picture, false) : shown;
    const bool alone = (record.flags & CRF_TRNS) || clears_canvas(record) || cleared_;
    cleared_ = clears_canvas(record);
    const auto key = alone ? std::nullopt : unused_value(values, picture.bits());
    changed = key && hide(record, picture, shown, *key);
    if (key && !changed) return false;
    draw(record, picture, shown);
    return true;
  }

 private:
  template <class Use>
  void for_each_shared(const ChunkRecord& record, const PixelGrid& frame, const Use& use) const {
    const FrameOffset at = GetFrameOffset(record, DocumentKind::MING);
    for (std::uint32_t y = 0; y < frame.height; ++y)
      for (std::uint32_t x = 0; x < frame.width; ++x) {
        const std::int64_t cx = std::int64_t{x} + at.x - origin_.x, cy = std::int64_t{y} + at.y - origin_.y;
        if (canvas_.holds(cx, cy)) use(x, y, static_cast<std::uint32_t>(cx), static_cast<std::uint32_t>(cy));
      }
  }

  bool hide(ChunkRecord& record, const Picture& picture, const PixelGrid& shown, Colour key) {
    Picture hidden = whole_of(picture);
    const EditRows rows(hidden);
    if (!rows) return false;
    for_each_shared(record, shown, [&](std::uint32_t x, std::uint32_t y, std::uint32_t cx, std::uint32_t cy) {
      if ((shown.row(y)[x] & kColor) != (canvas_.row(cy)[cx] & kColor)) return;
      if (picture.bits() == 24)
        for (std::size_t c = 0; c < 3; ++c)
          rows[y][3 * std::size_t{x} + 2 - c] = static_cast<std::uint8_t>(key >> (8 * c));
      else
        put_index(rows[y], x, picture.bits(), key);
    });
    const std::uint32_t palette_bytes = record.image->paletteBytes;
    const std::uint8_t color_type = record.colorType;
    record_take_pixels(record, DocumentKind::MING, hidden);
    if (picture.bits() <= 8 && color_type == 3)
      record.image.edit().paletteBytes = std::max(palette_bytes, 3 * (key + 1));
    put_image_transparency(record, transparency_of(key, picture.bits(), color_type));
    return true;
  }

  /// What is seen afterwards: pixels that are not clear.
  void draw(const ChunkRecord& record, const Picture& picture, const PixelGrid& shown) {
    const auto table = image_transparency(record);
    const Picture alpha = table.empty() ? picture : PictureWithTransparency(picture_of(record), table);
    if (!alpha) return;
    for_each_shared(record, shown, [&](std::uint32_t x, std::uint32_t y, std::uint32_t cx, std::uint32_t cy) {
      if (alpha.bits() == 32 && alpha.row(y)[4 * std::size_t{x} + 3] == 0) return;
      canvas_.row(cy)[cx] = shown.row(y)[x];
    });
  }

  bool colors_;
  PixelGrid canvas_;
  FrameOffset origin_;
  bool cleared_ = false;  ///< the last image cleared the canvas
};

}  // namespace

bool redundancy_pass(Supercompression& work) {
  const Progress progress(work.host, string_text(StringId::CheckingRedundancy));
  work.say(StringId::RedundancyBegins);
  ChunkList& list = work.draft.list;
  std::vector<Picture> pictures;
  for (const std::size_t entry : frame_entries(work.draft))
    pictures.push_back(picture_of(list.record(entry)));
  if (!std::ranges::all_of(pictures, has_rows)) return work.abort(StringId::ErrorAccessingChunk);
  Redundancy redundancy(!values_mean_the_same(pictures));
  bool begun = false;
  ChunkRecord record;
  for (std::size_t i = 1; i < list.size(); ++i) {
    progress.step(i, list.size());
    if (work.host.stopped()) return false;
    if (list.record(i).tag != tag::PNGI) continue;
    chunk_list_get(list, i, record);
    if (!std::exchange(begun, true)) {
      redundancy.begin(record);
      continue;
    }
    bool changed = false;
    if (!redundancy.take(record, changed)) return work.abort(StringId::MemoryError);
    if (!changed) continue;
    record.description = chunk_description(record);
    chunk_list_put(list, i, record);
  }
  work.say(StringId::RedundancyCompleted);
  return true;
}

}  // namespace vellum
