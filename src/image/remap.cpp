#include "image/remap.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <vector>

#include "image/palette_match.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/settings.h"

namespace vellum {
namespace {

constexpr std::uint32_t kGreyOfWhite = 129;  // the least grey that a 1-bit result shows as white

/// A matching or dithering under way.
struct Matching {
  const Picture& source;
  std::uint32_t depth;
  PaletteMatch match;
  std::uint32_t white, black;

  Matching(const Picture& picture, const Palette& palette, std::uint32_t count, std::uint32_t bits)
      : source(picture),
        depth(picture_bits(bits)),
        match(palette, count, settings::FastRemap != 0),
        white(match.white()),
        black(match.black()) {}

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
std::array<std::uint8_t, 256> index_table(Matching& matching) {
  std::array<std::uint8_t, 256> table{};
  const Picture& source = matching.source;
  if (source.bits() == 1) {
    table[0] = static_cast<std::uint8_t>(matching.black);
    table[1] = static_cast<std::uint8_t>(matching.white);
    return table;
  }
  for (std::uint32_t i = 0; i < source.colours(); ++i) {
    const std::uint8_t* entry = source.table() + 4 * i;
    table[i] = static_cast<std::uint8_t>(
        matching.depth == 1 ? matching.by_grey(entry[2], entry[1], entry[0])
                            : NearestPaletteIndex(entry[2], entry[1], entry[0], matching.match.palette(),
                                                  matching.match.count()));
  }
  return table;
}

void remap_colors(Matching& matching, const std::uint8_t* row, std::span<std::uint8_t> out) {
  const std::size_t bytes = matching.source.bits() / 8;
  for (std::size_t x = 0; x < out.size(); ++x, row += bytes)
    out[x] = static_cast<std::uint8_t>(matching.depth == 1 ? matching.by_grey(row[2], row[1], row[0])
                                                           : matching.match.index(row[2], row[1], row[0]));
}

Picture remap_rows(Matching& matching, const RowLoop& loop) {
  const Picture& source = matching.source;
  Picture result = create_rows(source.width(), source.height(), &matching.match.palette(), matching.depth);
  if (!result) return result;
  const EditRows rows(result);
  const bool indexed = source.bits() <= 8;
  const auto table = indexed ? index_table(matching) : std::array<std::uint8_t, 256>{};
  std::vector<std::uint8_t> line(source.width());
  for (std::uint32_t y = 0; y < source.height(); ++y) {
    if (!loop.begin(y)) return {};
    if (indexed) {
      for (std::size_t x = 0; x < line.size(); ++x)
        line[x] = table[get_index(source.row(y), x, source.bits())];
    } else {
      remap_colors(matching, source.row(y), line);
    }
    pack_indices(rows[y], 0, line.data(), line.size(), matching.depth);
  }
  return result;
}

// ------------------------------------------------------------------------------------------------ dithering

std::uint8_t clamped(int value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

/// Errors of one row: 3 channels a pixel, with room for a pixel on either side.
class ErrorRow {
 public:
  explicit ErrorRow(std::size_t width) : values_(3 * (width + 2)) {}
  std::int16_t* at(std::size_t x) { return &values_[3 * (x + 1)]; }
  void clear() { std::ranges::fill(values_, std::int16_t{0}); }

 private:
  std::vector<std::int16_t> values_;
};

void add_error(std::int16_t* to, const int (&error)[3], int part) {
  for (int c = 0; c < 3; ++c) to[c] = static_cast<std::int16_t>(to[c] + error[c] * part / 16);
}

void dither_colors(Matching& matching, const std::uint8_t* row, ErrorRow& here, ErrorRow& above,
                   std::span<std::uint8_t> out) {
  const Palette& palette = matching.match.palette();
  for (std::size_t x = 0; x < out.size(); ++x, row += 3) {
    const std::int16_t* carried = here.at(x);
    const int color[3] = {clamped(row[2] + carried[0]), clamped(row[1] + carried[1]),
                          clamped(row[0] + carried[2])};
    const std::uint32_t index =
        matching.match.index(static_cast<std::uint32_t>(color[0]), static_cast<std::uint32_t>(color[1]),
                             static_cast<std::uint32_t>(color[2]));
    out[x] = static_cast<std::uint8_t>(index);
    int error[3];
    for (std::size_t c = 0; c < 3; ++c) error[c] = color[c] - palette[3 * index + c];
    add_error(here.at(x + 1), error, 7);
    if (x >= 2) add_error(above.at(x - 1), error, 3);
    add_error(above.at(x + 1), error, 1);
    add_error(above.at(x), error, 5);
  }
}

Picture dither_in_colors(Matching& matching, const RowLoop& loop) {
  const Picture source = PictureToTrueColor(matching.source);
  if (!source) return {};
  Picture result = create_rows(source.width(), source.height(), &matching.match.palette(), matching.depth);
  if (!result) return result;
  const EditRows rows(result);
  ErrorRow here(source.width()), above(source.width());
  std::vector<std::uint8_t> line(source.width());
  for (std::uint32_t stored = 0; stored < source.height(); ++stored) {
    if (!loop.begin(stored)) return {};
    above.clear();
    dither_colors(matching, source.stored_row(stored), here, above, line);
    pack_indices(rows[source.height() - 1 - stored], 0, line.data(), line.size(), matching.depth);
    std::swap(here, above);
  }
  return result;
}

/// The greys of a picture, bottom row first, with their darkest and lightest.
struct Greys {
  std::vector<std::uint8_t> values;
  int darkest = 255, lightest = 0;
};

bool take_greys(const Picture& picture, Greys& greys) {
  const Picture grey = PictureToGrey(PictureToTrueColor(picture));
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

Picture dither_in_black_and_white(const Matching& matching, const RowLoop& loop) {
  Greys greys;
  const Picture& source = matching.source;
  Picture result = create_rows(source.width(), source.height(), &matching.match.palette(), 1);
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
  Matching matching(picture, palette, wanted.colors, wanted.depth);
  return remap_rows(matching, RowLoop(picture.height(), flags, host, StringId::Remapping));
}

Picture DitherPicture(const Picture& picture, const Palette& palette, std::uint32_t bits, std::uint32_t flags,
                      Host* host) {
  if (!has_rows(picture) || picture.bits() == 1) return {};
  const Wanted wanted = wanted_of(bits, flags);
  if (wanted.colors > 256) return PictureToTrueColor(picture);
  Matching matching(picture, palette, wanted.colors, wanted.depth);
  const RowLoop loop(picture.height(), flags, host, StringId::Dithering);
  return matching.depth == 1 ? dither_in_black_and_white(matching, loop) : dither_in_colors(matching, loop);
}

}  // namespace vellum
