#include "operations/recoloring.h"

#include <algorithm>
#include <cstring>

#include "image/picture_rows.h"
#include "operations/change_pictures.h"
#include "operations/convert_colors.h"
#include "operations/operation.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

constexpr auto kUnchanged = [] {
  Curve curve{};
  for (std::size_t v = 0; v < curve.size(); ++v) curve[v] = static_cast<std::uint8_t>(v);
  return curve;
}();

template <std::size_t kBytes>
void follow_curves(std::uint8_t* out, const std::uint8_t* in, std::size_t width,
                   const std::array<const Curve*, 4>& curves) {
  const Curve &blue = *curves[0], &green = *curves[1], &red = *curves[2], &alpha = *curves[3];
  for (const std::uint8_t* end = in + kBytes * width; in != end; in += kBytes, out += kBytes) {
    const std::uint8_t pixel[] = {blue[in[0]], green[in[1]], red[in[2]], kBytes == 4 ? alpha[in[3]] : in[2]};
    std::memcpy(out, pixel, kBytes);
  }
}

}  // namespace

Picture with_curves(const Picture& picture, const std::array<const Curve*, 4>& curves) {
  std::array<const Curve*, 4> all = curves;
  for (const Curve*& curve : all)
    if (!curve) curve = &kUnchanged;
  Picture result = create_rows(picture.width(), picture.height(), nullptr, picture.bits());
  const EditRows rows(result);
  const auto follow = picture.bits() == 32 ? follow_curves<4> : follow_curves<3>;
  for (std::uint32_t y = 0; rows && y < picture.height(); ++y)
    follow(rows[y], picture.row(y), picture.width(), all);
  return result;
}

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
