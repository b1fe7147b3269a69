#include "image/picture_changes.h"

#include <algorithm>
#include <cstring>

#include "base/byte_order.h"
#include "image/picture_rows.h"

namespace vellum {

void add_changes(PictureRect& rect, std::uint32_t y, const std::uint8_t* before, const std::uint8_t* after,
                 std::uint32_t width, std::uint32_t bits) {
  const std::size_t bytes = (std::size_t{width} * bits + 7) / 8;
  if (std::memcmp(before, after, bytes) == 0) return;
  const auto first = static_cast<std::size_t>(std::mismatch(before, before + bytes, after).first - before);
  std::size_t last = bytes - 1;
  while (before[last] == after[last]) --last;
  const auto left = static_cast<std::int32_t>(first * 8 / bits), row = static_cast<std::int32_t>(y);
  const auto right = static_cast<std::int32_t>(std::min<std::size_t>((last * 8 + 7) / bits + 1, width));
  rect = {std::min(rect.left, left), std::min(rect.top, row), std::max(rect.right, right),
          std::max(rect.bottom, row + 1)};
}

std::optional<std::size_t> leave_out_same(Picture& part, const Picture& before, std::int32_t left,
                                          std::int32_t top) {
  Picture only = part;
  const EditRows rows(only);
  if (!rows) return std::nullopt;
  std::size_t same = 0;
  for (std::uint32_t y = 0; y < part.height(); ++y) {
    const std::uint8_t* old = before.row(y + static_cast<std::uint32_t>(top)) + 4 * std::ptrdiff_t{left};
    for (std::size_t x = 0; x < part.width(); ++x) {
      std::uint8_t* pixel = rows[y] + 4 * x;
      if (read_le32(old + 4 * x) == read_le32(pixel)) {
        write_le32(pixel, 0);
        ++same;
      } else if (pixel[3] != 255) {
        return std::nullopt;
      }
    }
  }
  part = only;
  return same;
}

}  // namespace vellum
