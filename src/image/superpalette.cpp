#include "image/superpalette.h"

#include <algorithm>
#include <new>

#include "image/palette_from_pictures.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

constexpr std::uint32_t kLeastToImprove = 17;
constexpr std::uint8_t kNearlyBlack = 17, kNearlyWhite = 240;

/// In 24 or 32 bits. Two colors go through their table, which PictureToTrueColor would pass over.
Picture shown_colors(const Picture& picture) {
  if (!picture || picture.bits() > 8) return picture;
  return PictureToTrueColor(picture.bits() == 1 ? PictureToTrueColorAlpha(picture) : picture);
}

}  // namespace

void Superpalette::add(const Picture& picture) {
  const Picture shown = shown_colors(picture);
  if (picture && !shown) throw std::bad_alloc();
  if (!shown) return;
  octree_.add(shown, {0xFFFFFF, true});
  any_ = true;
}

PaletteColors Superpalette::colors(std::uint32_t most) const {
  PaletteColors result;
  result.count = octree_.palette(std::clamp(most, 2u, 256u), result.palette);
  if (any_) result.count = std::max(result.count, 1u);
  sort_by_luminance(result);
  return result;
}

PaletteColors superpalette(std::size_t count, const std::function<Picture(std::size_t)>& picture,
                           std::uint32_t most, Host& host) try {
  const Progress progress(host, kQuantizing);
  Superpalette gathered;
  for (std::size_t i = 0; i < count; ++i) {
    const Picture next = host.stopped() ? Picture() : picture(i);
    if (!next) return {};
    gathered.add(next);
    progress.step(i + 1, count);
  }
  return gathered.colors(most);
} catch (const std::bad_alloc&) {
  return {};
}

void improve_ends(PaletteColors& colors) {
  if (colors.count < kLeastToImprove) return;
  std::uint8_t* first = colors.palette.data();
  std::uint8_t* last = first + 3 * (colors.count - 1);
  if (std::all_of(first, first + 3, [](std::uint8_t c) { return c < kNearlyBlack; }))
    std::fill_n(first, 3, 0);
  if (std::all_of(last, last + 3, [](std::uint8_t c) { return c >= kNearlyWhite; }))
    std::fill_n(last, 3, 255);
}

}  // namespace vellum
