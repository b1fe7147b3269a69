#include "image/to_colors.h"

#include <algorithm>
#include <optional>

#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/png_form.h"
#include "image/remap.h"

namespace vellum {
namespace {

/// The entries that colors are matched to, and the one for pixels that are transparent.
struct OpaqueEntries {
  Palette palette{};
  std::vector<std::uint8_t> index;  ///< of each in the whole palette
  std::optional<std::uint8_t> transparent;

  explicit OpaqueEntries(const GivenColors& all) {
    for (std::uint32_t i = 0; i < std::min(all.count, 256u); ++i) {
      const unsigned opacity = i < all.alpha.size() ? all.alpha[i] : 255;
      if (opacity == 0 && !transparent) transparent = static_cast<std::uint8_t>(i);
      if (opacity != 255) continue;
      std::copy_n(&all.palette[3 * i], 3, &palette[3 * index.size()]);
      index.push_back(static_cast<std::uint8_t>(i));
    }
    if (!index.empty() && index.size() < all.count) return;
    palette = all.palette;
    index.clear();
    for (std::uint32_t i = 0; i < std::max(all.count, 1u); ++i) index.push_back(static_cast<std::uint8_t>(i));
  }
  std::uint32_t count() const { return static_cast<std::uint32_t>(index.size()); }
};

/// The indexes of a picture at another depth, or under another table.
Picture copied(const Picture& picture, const Palette& palette, std::uint32_t bits) {
  if (picture.bits() == bits) {
    Picture same = picture;
    PictureSetPalette(same, palette);
    return same;
  }
  Picture result = create_rows(picture.width(), picture.height(), &palette, bits);
  const EditRows rows(result);
  for (std::uint32_t y = 0; rows && y < picture.height(); ++y)
    for_each_index_run(picture.row(y), picture.width(), picture.bits(),
                       [&](std::size_t x, const std::uint8_t* indexes, std::size_t count) {
                         pack_indices(rows[y], x, indexes, count, bits);
                       });
  return result;
}

/// Indexes into the opaque entries as those of the whole palette. `source` has what is transparent.
Picture in_whole_palette(const Picture& matched, const Picture& source, const OpaqueEntries& entries,
                         const Palette& palette, std::uint32_t bits) {
  Picture result = create_rows(matched.width(), matched.height(), &palette, bits);
  const EditRows rows(result);
  if (!rows) return {};
  const bool holes = entries.transparent && source.bits() == 32;
  for_each_row(matched.height(), matched.stride(), [&](std::uint32_t y) {
    std::vector<std::uint8_t> line(matched.width());
    unpack_indices(line.data(), matched.row(y), 0, line.size(), matched.bits());
    for (std::uint8_t& index : line) index = entries.index[index];
    const std::uint8_t* alpha = source.row(y) + 3;
    for (std::size_t x = 0; holes && x < line.size(); ++x)
      if (alpha[4 * x] < kLeastOpaque) line[x] = *entries.transparent;
    pack_indices(rows[y], 0, line.data(), line.size(), bits);
  });
  return result;
}

}  // namespace

bool has_colors(const Picture& picture, const Palette& palette, std::uint32_t colors) {
  if (picture.bits() > 8 || largest_index(picture) >= colors) return false;
  Palette own;
  const std::uint32_t common = std::min(PictureGetPalette(picture, own), colors);
  return std::equal(own.begin(), own.begin() + 3 * common, palette.begin());
}

Picture to_colors(const Picture& picture, const GivenColors& colors, bool dither, Host* host) {
  if (!has_rows(picture)) return {};
  const std::uint32_t bits = picture_bits(depth_of_colors(std::clamp(colors.count, 1u, 256u)));
  if (has_colors(picture, colors.palette, colors.count)) return copied(picture, colors.palette, bits);
  const OpaqueEntries entries(colors);
  const std::uint32_t flags =
      kRemapColors | kRemapProgress | kRemapCancel | (entries.transparent ? kRemapHoles : 0u);
  const bool spread = dither && picture.bits() != 1;
  const Picture matched = spread ? DitherPicture(picture, entries.palette, entries.count(), flags, host)
                                 : RemapPicture(picture, entries.palette, entries.count(), flags, host);
  if (!matched || (entries.count() == colors.count && !entries.transparent)) return matched;
  return in_whole_palette(matched, picture, entries, colors.palette, bits);
}

}  // namespace vellum
