#include "image/picture_changes.h"

#include "base/byte_order.h"
#include "image/picture_rows.h"

namespace vellum {

std::optional<std::size_t> leave_out_same(Picture& part, const Picture& before, std::uint32_t left,
                                          std::uint32_t top) {
  Picture only = part;
  const EditRows rows(only);
  if (!rows) return std::nullopt;
  std::size_t same = 0;
  for (std::uint32_t y = 0; y < part.height(); ++y) {
    const std::uint8_t* old = before.row(y + top) + 4 * std::size_t{left};
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
