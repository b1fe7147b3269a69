#include "operations/recoloring.h"

#include <algorithm>

#include "image/picture_rows.h"
#include "operations/change_pictures.h"
#include "operations/convert_colors.h"
#include "operations/operation.h"
#include "operations/reconstruct.h"

namespace vellum {

unsigned needs_of_recoloring(const DocumentWindow& window, const FrameList& frames) {
  return window.document.kind == DocumentKind::APNG && !names_all(frames, window) ? unsigned{kTrueColor} : 0;
}

Picture with_changed_colors(const Picture& picture, const std::function<void(std::uint8_t* color)>& change) {
  Palette palette = palette_of(picture);
  for (std::uint32_t i = 0; i < picture.colours(); ++i) {
    std::uint8_t* entry = palette.data() + 3 * i;  // red, green, blue
    std::swap(entry[0], entry[2]);
    change(entry);
    std::swap(entry[0], entry[2]);
  }
  Picture result = picture;
  PictureSetPalette(result, palette);
  return result;
}

bool free_color_key(DocumentWindow& draft, Host& host) {
  const auto entries = frame_entries(draft);
  const bool deep = std::ranges::any_of(
      entries, [&](std::size_t entry) { return picture_of(draft.list.record(entry)).bits() == 24; });
  return !deep || !has_transparency(draft) || convert_colors(draft, {.colorType = 6}, host);
}

}  // namespace vellum
