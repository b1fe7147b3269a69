#include "playback/interlace_passes.h"

#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Known after each pass: one pixel in a block of so many, the upper left one.
constexpr struct {
  std::uint32_t width, height;
} kBlocks[kInterlacePasses] = {{8, 8}, {4, 8}, {4, 4}, {2, 4}, {2, 2}, {1, 2}, {1, 1}};

}  // namespace

bool is_interlaced(const ChunkList& list) {
  const std::size_t header = chunk_find_first(list, tag::IHDR);
  return header != kNoEntry && list.record(header).interlace != 0;
}

Picture picture_after_pass(const Picture& picture, unsigned pass) {
  if (!has_rows(picture) || pass == 0 || pass >= kInterlacePasses) return picture;
  const auto [wide, high] = kBlocks[pass - 1];
  Picture result = whole_of(picture);
  const EditRows rows(result);
  if (!rows) return picture;
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); x += wide)
      for (std::uint32_t i = 0; i < std::min(wide, picture.width() - x); ++i)
        copy_pixels(rows[y], x + i, picture.row(y - y % high), x, 1, picture.bits());
  return result;
}

}  // namespace vellum
