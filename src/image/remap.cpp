#include "image/remap.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <vector>

#include "image/dither.h"
#include "image/palette_match.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/quantize.h"
#include "image/settings.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

constexpr std::uint32_t kGreyOfWhite = 129;  // the least grey that a 1-bit result shows as white

constexpr Palette kBlackAndWhite = {0, 0, 0, 255, 255, 255}, kWhiteAndBlack = {255, 255, 255};

bool is_two_colors(const Palette& palette, const Palette& wanted) {
  return std::equal(palette.begin(), palette.begin() + 6, wanted.begin());
}

/// A matching or dithering under way.
struct Matching {
  const Picture& source;
  const Palette& palette;
  std::uint32_t count, depth;
  bool fast, grey_cut;
  std::uint32_t white = 0, black = 0;

  Matching(const Picture& picture, const Palette& colors, std::uint32_t used, std::uint32_t bits)
      : source(picture),
        palette(colors),
        count(std::min(used, 256u)),
        depth(picture_bits(bits)),
        fast(settings::FastRemap != 0),
        grey_cut(count == 2 &&
                 (is_two_colors(colors, kBlackAndWhite) || is_two_colors(colors, kWhiteAndBlack))) {
    const auto find = [&](std::uint32_t level) {
      return fast ? CornerEntries(palette, count).index(level, level, level)
                  : NearestPaletteIndex(level, level, level, palette, count);
    };
    white = find(255);
    black = find(0);
  }

  std::uint32_t by_grey(std::uint32_t red, std::uint32_t green, std::uint32_t blue) const {
    return grey_of(red, green, blue) < kGreyOfWhite ? black : white;
  }
};

/// Progress and the stop question of a loop over rows, as far as the flags want them.
class RowLoop {
 public:
  RowLoop(std::uint32_t rows, std::uint32_t flags, Host* host, StringId caption)
      : rows_(rows), host_(host), cancel_(host && (flags & kRemapCancel)) {
    if (host && (flags & kRemapProgress)) progress_.emplace(*host, string_text(caption));
  }
  /// False when the user stopped it.
  bool begin(std::uint32_t row) const {
    constexpr std::uint32_t kRowsBetween = 32;
    if (row % kRowsBetween != 0) return true;
    if (progress_) progress_->step(row, rows_);
    return !cancel_ || !host_->stopped();
  }

 private:
  std::uint32_t rows_;
  Host* host_;
  bool cancel_;
  std::optional<Progress> progress_;
};

/// What each index of an indexed source becomes.
std::array<std::uint8_t, 256> index_table(const Matching& matching) {
  std::array<std::uint8_t, 256> table{};
  const Picture& source = matching.source;
  if (source.bits() == 1 && is_two_colors(palette_of(source), kBlackAndWhite)) {
    table[0] = static_cast<std::uint8_t>(matching.black);
    table[1] = static_cast<std::uint8_t>(matching.white);
    return table;
  }
  for (std::uint32_t i = 0; i < source.colours(); ++i) {
    const std::uint8_t* entry = source.table() + 4 * i;
    table[i] =
        static_cast<std::uint8_t>(matching.grey_cut ? matching.by_grey(entry[2], entry[1], entry[0])
                                                    : NearestPaletteIndex(entry[2], entry[1], entry[0],
                                                                          matching.palette, matching.count));
  }
  return table;
}

/// What one band of rows needs for itself.
template <class Entries>
struct RowMatcher {
  Entries entries;
  std::vector<std::uint8_t> line;
};

/// `match(matcher, y)` fills the line of a matcher with the indexes of row y. Between groups of rows the user
/// is heard.
template <class Entries, class Match>
Picture remap_bands(const Matching& matching, const RowLoop& loop, const Entries& entries,
                    const Match& match) {
  constexpr std::uint32_t kRowsBetween = 32;
  const Picture& source = matching.source;
  Picture result = create_rows(source.width(), source.height(), &matching.palette, matching.depth);
  if (!result) return result;
  const EditRows rows(result);
  std::vector<RowMatcher<Entries>> matchers(band_count(source),
                                            {entries, std::vector<std::uint8_t>(source.width())});
  const auto group = static_cast<std::uint32_t>(kRowsBetween * matchers.size());
  for (std::uint32_t top = 0; top < source.height(); top += group) {
    if (!loop.begin(top)) return {};
    parallel_for(matchers.size(), [&](std::size_t band) {
      const std::uint32_t first = top + static_cast<std::uint32_t>(band) * kRowsBetween;
      for (std::uint32_t y = first; y < std::min(first + kRowsBetween, source.height()); ++y) {
        match(matchers[band], y);
        const auto& line = matchers[band].line;
        pack_indices(rows[y], 0, line.data(), line.size(), matching.depth);
      }
    });
  }
  return result;
}

template <class Entries>
Picture remap_colors(const Matching& matching, const RowLoop& loop) {
  const std::size_t bytes = matching.source.bits() / 8;
  return remap_bands(matching, loop, Entries(matching.palette, matching.count),
                     [&](auto& matcher, std::uint32_t y) {
                       match_row(matcher.entries, matching.source.row(y), bytes, matcher.line);
                     });
}

struct NoEntries {};

Picture remap_rows(const Matching& matching, const RowLoop& loop) {
  const Picture& source = matching.source;
  if (source.bits() <= 8) {
    const auto table = index_table(matching);
    return remap_bands(matching, loop, NoEntries{}, [&](auto& matcher, std::uint32_t y) {
      for (std::size_t x = 0; x < matcher.line.size(); ++x)
        matcher.line[x] = table[get_index(source.row(y), x, source.bits())];
    });
  }
  if (matching.grey_cut)
    return remap_bands(matching, loop, NoEntries{}, [&](auto& matcher, std::uint32_t y) {
      const std::uint8_t* pixel = source.row(y);
      for (std::uint8_t& index : matcher.line) {
        index = static_cast<std::uint8_t>(matching.by_grey(pixel[2], pixel[1], pixel[0]));
        pixel += source.bits() / 8;
      }
    });
  return matching.fast ? remap_colors<CornerEntries>(matching, loop)
                       : remap_colors<NearestEntries>(matching, loop);
}

// ------------------------------------------------------------------------------------------------ dithering

std::uint8_t clamped(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

/// The greys of a picture, bottom row first, with their darkest and lightest.
struct Greys {
  std::vector<std::uint8_t> values;
  int darkest = 255, lightest = 0;
};

bool take_greys(const Picture& picture, Greys& greys) {
  const Picture grey = PictureToGrey(picture);
  if (!grey) return false;
  greys.values.reserve(std::size_t{grey.width()} * grey.height());
  for (std::uint32_t y = 0; y < grey.height(); ++y)
    greys.values.insert(greys.values.end(), grey.stored_row(y), grey.stored_row(y) + grey.width());
  const auto [low, high] = std::ranges::minmax(greys.values);
  greys.darkest = low;
  greys.lightest = high;
  return true;
}

/// A grey as it is compared with the threshold: lightened a little, neither 0 nor 255.
int mapped_grey(int value) { return std::clamp(value * 32 / 27, 1, 254); }

/// Stored row `y` of a picture of black and white; the errors go into the greys themselves.
void dither_black_and_white(const Matching& matching, Greys& greys, std::size_t y,
                            std::span<std::uint8_t> out) {
  const std::size_t width = out.size();
  const bool last = (y + 1) * width == greys.values.size();
  std::uint8_t* here = &greys.values[y * width];
  const auto add = [](std::uint8_t& to, int value) { to = clamped(to + value); };
  for (std::size_t x = 0; x < width; ++x) {
    const int value = mapped_grey(here[x]);
    const bool white = value >= (greys.darkest + greys.lightest) / 2;
    out[x] = static_cast<std::uint8_t>(white ? matching.white : matching.black);
    const int part = (value - (white ? greys.lightest : greys.darkest)) / 16;
    if (x + 1 < width) add(here[x + 1], 7 * part);
    if (last) continue;
    std::uint8_t* above = here + width;
    if (x >= 2) add(above[x - 1], 3 * part);
    add(above[x], 5 * part);
    if (x + 1 < width) add(above[x + 1], part);
  }
}

/// 24 bits; what is transparent is black.
Picture without_holes(const Picture& picture) {
  Picture result = PictureToTrueColor(picture);
  const EditRows rows(result);
  for (std::uint32_t y = 0; rows && picture.bits() == 32 && y < picture.height(); ++y) {
    const std::uint8_t* alpha = picture.row(y) + 3;
    for (std::size_t x = 0; x < picture.width(); ++x)
      if (alpha[4 * x] < kLeastOpaque) std::fill_n(rows[y] + 3 * x, 3, std::uint8_t{0});
  }
  return result;
}

bool is_black_and_white(const Picture& picture) {
  Palette found;
  const auto count = few_colours(picture, 2, found);
  for (std::uint32_t i = 0; count && i < *count; ++i)
    if (const std::uint8_t* color = &found[3 * i];
        (color[0] != 0 && color[0] != 255) || color[1] != color[0] || color[2] != color[0])
      return false;
  return count.has_value();
}

/// `source` has 24 bits. What is black and white already stays so.
Picture dither_in_black_and_white(const Matching& matching, const RowLoop& loop) {
  Greys greys;
  const Picture& source = matching.source;
  if (is_black_and_white(source)) return remap_rows(matching, loop);
  Picture result = create_rows(source.width(), source.height(), &matching.palette, 1);
  if (!result || !take_greys(source, greys)) return {};
  const EditRows rows(result);
  std::vector<std::uint8_t> line(source.width());
  for (std::uint32_t stored = 0; stored < source.height(); ++stored) {
    if (!loop.begin(stored)) return {};
    dither_black_and_white(matching, greys, stored, line);
    pack_indices(rows[source.height() - 1 - stored], 0, line.data(), line.size(), 1);
  }
  return result;
}

/// Depth and number of colors that `bits` stands for.
struct Wanted {
  std::uint32_t depth, colors;  ///< more than 256 colors: true color
};

Wanted wanted_of(std::uint32_t bits, std::uint32_t flags) {
  if (flags & kRemapColors) return {depth_of_colors(bits), bits};
  return {bits, bits == 0 || bits > 8 ? 257 : 1u << bits};
}

}  // namespace

std::uint32_t NearestPaletteIndex(std::uint32_t red, std::uint32_t green, std::uint32_t blue,
                                  const Palette& palette, std::uint32_t count) {
  std::uint32_t nearest = 0;
  int best = 1'000'000;  // above 9 * 255 * 255, the farthest two colors can be
  for (std::uint32_t i = 0; i < std::min(count, 256u) && best != 0; ++i) {
    const int r = static_cast<int>(red) - palette[3 * i], g = static_cast<int>(green) - palette[3 * i + 1],
              b = static_cast<int>(blue) - palette[3 * i + 2];
    const int distance = 3 * r * r + 4 * g * g + 2 * b * b;
    if (distance >= best) continue;
    best = distance;
    nearest = i;
  }
  return nearest;
}

std::uint32_t depth_of_colors(std::uint32_t colors) {
  if (colors > 256) return 24;
  return colors < 3 ? 1 : static_cast<std::uint32_t>(std::bit_width(colors - 1));
}

Picture RemapPicture(const Picture& picture, const Palette& palette, std::uint32_t bits, std::uint32_t flags,
                     Host* host) {
  if (!has_rows(picture)) return {};
  const Wanted wanted = wanted_of(bits, flags);
  if (wanted.colors > 256) return PictureToTrueColor(picture);
  const Matching matching(picture, palette, wanted.colors, wanted.depth);
  return remap_rows(matching, RowLoop(picture.height(), flags, host, StringId::Remapping));
}

Picture DitherPicture(const Picture& picture, const Palette& palette, std::uint32_t bits, std::uint32_t flags,
                      Host* host) {
  if (!has_rows(picture) || picture.bits() == 1) return {};
  const Wanted wanted = wanted_of(bits, flags);
  if (wanted.colors > 256) return PictureToTrueColor(picture);
  const Matching matching(picture, palette, wanted.colors, wanted.depth);
  const RowLoop loop(picture.height(), flags, host, StringId::Dithering);
  const bool holes = (flags & kRemapHoles) && picture.bits() == 32;
  if (matching.grey_cut) {
    const Picture flat = holes ? without_holes(picture) : PictureToTrueColor(picture);
    if (!flat) return {};
    return dither_in_black_and_white(Matching(flat, palette, wanted.colors, wanted.depth), loop);
  }
  const auto go_on = [&](std::uint32_t row) { return loop.begin(row); };
  return dither_to_palette(holes ? picture : PictureToTrueColor(picture), matching.palette, matching.count,
                           matching.depth, matching.fast, go_on);
}

}  // namespace vellum
