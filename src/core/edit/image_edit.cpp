#include "core/edit/image_edit.h"

#include <utility>

#include "base/byte_order.h"
#include "core/edit/deep_samples.h"
#include "core/edit/picture_fitting.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

/// Calls change(pixel) for each four bytes of a 32-bit picture, as a number with alpha in its high byte.
template <class Change>
Picture changed_pixels(Picture picture, Change change) {
  const EditRows rows(picture);
  if (!rows) return {};
  for_each_row(picture.height(), rows.stride, [&](std::uint32_t y) {
    std::uint8_t* row = rows[y];
    for (std::size_t x = 0; x < picture.width(); ++x, row += 4) write_le32(row, change(read_le32(row)));
  });
  return picture;
}

Picture with_alpha(const Picture& picture) {
  return picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture);
}

}  // namespace

Replaced replace_image(DocumentWindow& window, std::size_t& index, const Picture& picture, Host& host,
                       std::optional<PaletteChoice> choice) {
  if (!has_rows(picture)) return Replaced::Failed;
  const ChunkList before = window.list;
  const std::int32_t caret = std::exchange(window.document.caret, static_cast<std::int32_t>(index));
  PictureFitting fitting(window, host, choice);
  const Picture fitted = fitting.fit(picture, index);
  index = static_cast<std::size_t>(window.document.caret);
  window.document.caret = caret;
  ChunkRecord record;
  if (fitting.cancelled()) return Replaced::Cancelled;
  if (!fitted || !chunk_list_get(window.list, index, record)) return Replaced::Failed;
  record_take_picture(record, window.document.kind, fitted);
  if (!chunk_list_put(window.list, index, record)) return Replaced::Failed;
  note_deep_images(before, window.list, window.document, host);
  return Replaced::Done;
}

Picture with_color_transparent(const Picture& picture, Colour color) {
  const std::uint32_t key = swap_red_and_blue(color) & 0xFFFFFF;
  return changed_pixels(with_alpha(picture), [key](std::uint32_t pixel) {
    return (pixel & 0xFFFFFF) == key ? pixel & 0xFFFFFF : pixel;
  });
}

Picture with_alpha_level(const Picture& picture, std::uint8_t level) {
  const std::uint32_t alpha = std::uint32_t{level} << 24;
  return changed_pixels(with_alpha(picture),
                        [alpha](std::uint32_t pixel) { return (pixel & 0xFFFFFF) | alpha; });
}

Picture padded_to(const Picture& picture, Extent size, Colour ground) {
  return PictureExtendCanvas(picture, size.width, size.height, 0, 0, picture.bits() == 32 ? 0 : ground);
}

}  // namespace vellum
