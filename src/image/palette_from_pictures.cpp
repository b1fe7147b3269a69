#include "image/palette_from_pictures.h"

#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/reduce_to_palette.h"

namespace vellum {
namespace {

constexpr std::uint64_t kMostSamples = 4'000'000;  // pixels that are looked at; of more, every n-th

/// A color and how many pixels it stands for.
struct Weighted {
  double red, green, blue, count;
};

/// All pictures as one row of 24-bit pixels, thinned out evenly when they are many.
Picture samples_of(std::span<const Picture> pictures) {
  std::uint64_t pixels = 0;
  for (const Picture& picture : pictures) pixels += std::uint64_t{picture.width()} * picture.height();
  const std::uint64_t step = pixels / kMostSamples + 1;
  constexpr std::uint32_t kWidth = 4096;
  const std::uint64_t count = (pixels + step - 1) / step;
  if (count == 0) return {};
  const auto width = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, kWidth));
  // What a last row lacks repeats its first pixels, so no color is made up.
  Picture samples = create_rows(width, static_cast<std::uint32_t>((count + width - 1) / width), nullptr, 24);
  if (!samples) return samples;
  const EditRows rows(samples);
  std::uint64_t seen = 0, taken = 0;
  const auto put = [&](const std::uint8_t* pixel) {
    std::copy_n(pixel, 3, rows[taken / width] + 3 * (taken % width));
  };
  for (const Picture& picture : pictures) {
    const Picture colors = PictureToTrueColorAlpha(picture);
    if (!colors) return {};
    for (std::uint32_t y = 0; y < colors.height(); ++y)
      for (std::size_t x = 0; x < colors.width(); ++x, ++seen)
        if (seen % step == 0) put(colors.row(y) + 4 * x), ++taken;
  }
  for (const std::uint64_t end = std::uint64_t{width} * samples.height(); taken < end; ++taken)
    std::copy_n(rows[0], 3, rows[taken / width] + 3 * (taken % width));
  return samples;
}

std::vector<Weighted> weighted_colors(const Picture& indexed) {
  std::array<std::uint64_t, 256> counts{};
  for (std::uint32_t y = 0; y < indexed.height(); ++y)
    for_each_index_run(indexed.row(y), indexed.width(), indexed.bits(),
                       [&](std::size_t, const std::uint8_t* indices, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) ++counts[indices[i]];
                       });
  const Palette palette = palette_of(indexed);
  std::vector<Weighted> colors;
  for (std::size_t i = 0; i < 256; ++i)
    if (counts[i] > 0)
      colors.push_back({double(palette[3 * i]), double(palette[3 * i + 1]), double(palette[3 * i + 2]),
                        static_cast<double>(counts[i])});
  return colors;
}

/// What merging two colors costs: the squared error that their pixels get by it (Ward).
double cost(const Weighted& a, const Weighted& b) {
  const double red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
  return a.count * b.count / (a.count + b.count) * (3 * red * red + 4 * green * green + 2 * blue * blue);
}

void merge_cheapest(std::vector<Weighted>& colors) {
  std::size_t first = 0, second = 1;
  double least = cost(colors[0], colors[1]);
  for (std::size_t i = 0; i < colors.size(); ++i)
    for (std::size_t j = i + 1; j < colors.size(); ++j)
      if (const double c = cost(colors[i], colors[j]); c < least) least = c, first = i, second = j;
  Weighted& kept = colors[first];
  const Weighted gone = colors[second];
  const double total = kept.count + gone.count;
  const auto mean = [&](double a, double b) { return (a * kept.count + b * gone.count) / total; };
  kept = {mean(kept.red, gone.red), mean(kept.green, gone.green), mean(kept.blue, gone.blue), total};
  colors.erase(colors.begin() + static_cast<std::ptrdiff_t>(second));
}

}  // namespace

PaletteColors palette_from_pictures(std::span<const Picture> pictures, std::uint32_t most) {
  const Picture samples = samples_of(pictures);
  const Picture indexed = samples ? reduce_to_palette(samples) : samples;
  PaletteColors result;
  if (!indexed) return result;
  auto colors = weighted_colors(indexed);
  while (colors.size() > std::clamp(most, 2u, 256u)) merge_cheapest(colors);
  result.count = static_cast<std::uint32_t>(colors.size());
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const double channels[] = {colors[i].red, colors[i].green, colors[i].blue};
    for (std::size_t c = 0; c < 3; ++c)
      result.palette[3 * i + c] = static_cast<std::uint8_t>(channels[c] + 0.5);
  }
  return result;
}

PaletteColors palette_of_picture(const Picture& picture) {
  if (!picture || picture.bits() > 8) return palette_from_pictures({&picture, picture ? 1u : 0u}, 256);
  PaletteColors colors;
  colors.count = PictureGetPalette(picture, colors.palette);
  return colors;
}

}  // namespace vellum
