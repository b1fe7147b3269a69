#include "image/builtin_palette.h"

#include <algorithm>
#include <iterator>

namespace vellum {
namespace {

/// `red` x `green` x `blue` evenly spaced levels, red varying slowest. Returns the number of colors.
std::size_t put_cube(Palette& palette, std::size_t at, unsigned red, unsigned green, unsigned blue) {
  const auto level = [](unsigned i, unsigned levels) {
    return static_cast<std::uint8_t>(i * 255 / (levels - 1));
  };
  for (unsigned r = 0; r < red; ++r)
    for (unsigned g = 0; g < green; ++g)
      for (unsigned b = 0; b < blue; ++b) {
        palette[at++] = level(r, red);
        palette[at++] = level(g, green);
        palette[at++] = level(b, blue);
      }
  return at;
}

std::size_t put_greys(Palette& palette, std::size_t at, unsigned levels) {
  for (unsigned i = 0; i < levels; ++i)
    for (int channel = 0; channel < 3; ++channel)
      palette[at++] = static_cast<std::uint8_t>(i * 255 / (levels - 1));
  return at;
}

template <unsigned red, unsigned green, unsigned blue>
void cube(Palette& palette) {
  put_cube(palette, 0, red, green, blue);
}

template <unsigned levels>
void greys(Palette& palette) {
  put_greys(palette, 0, levels);
}

/// The sixteen colors of the first color displays: dark and light, all on the corners of the cube but the two
/// greys.
void sixteen(Palette& palette) {
  static constexpr std::uint8_t colors[] = {
      0,   0,   0,   128, 0, 0, 0, 128, 0, 128, 128, 0, 0, 0, 128, 128, 0, 128, 0, 128, 128, 192, 192, 192,
      128, 128, 128, 255, 0, 0, 0, 255, 0, 255, 255, 0, 0, 0, 255, 255, 0, 255, 0, 255, 255, 255, 255, 255};
  std::ranges::copy(colors, palette.begin());
}

/// 32 greys, then the cube of 216; what is left stays black.
void greys_and_cube(Palette& palette) { put_cube(palette, put_greys(palette, 0, 32), 6, 6, 6); }

/// Unlike the other ramps these are rounded to the nearest level.
void eight_greys(Palette& palette) {
  for (std::uint32_t i = 0; i < 8; ++i)
    std::fill_n(&palette[3 * i], 3, static_cast<std::uint8_t>((2 * 255 * i + 7) / 14));
}

struct PaletteRow {
  std::uint32_t colors;
  std::uint32_t bits;
  void (*fill)(Palette&);
};

constexpr PaletteRow kPalettes[] = {
    {2, 1, greys<2>},        {16, 4, sixteen},
    {32, 5, cube<4, 4, 2>},  {64, 6, cube<4, 4, 4>},
    {128, 7, cube<4, 8, 4>}, {216, 8, cube<6, 6, 6>},
    {256, 8, cube<8, 8, 4>}, {256, 8, greys_and_cube},
    {256, 8, greys<256>},    {16'777'216, 24, cube<8, 8, 4>},
    {16, 4, greys<16>},      {16, 3, eight_greys},
    {4, 2, greys<4>},
};

}  // namespace

std::uint32_t BuiltInPalette(Palette* palette, std::uint32_t* bits, int id) {
  if (palette) palette->fill(0);
  if (id < 0 || id >= static_cast<int>(std::size(kPalettes))) return 0;
  const PaletteRow& row = kPalettes[id];
  if (palette) row.fill(*palette);
  if (bits) *bits = row.bits;
  return row.colors;
}

}  // namespace vellum
