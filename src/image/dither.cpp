// Each pixel needs the error of the one in front of it, so a row can't be faster than that chain. But a row
// can follow the one below it at a distance of two pixels: several rows are under way at the same time, and
// the processor works on their chains side by side. Groups of such rows follow each other in the same way, on
// all cores. The result is that of one row after the other.
#include "image/dither.h"

#include <algorithm>
#include <array>
#include <variant>
#include <vector>

#include "image/palette_match.h"
#include "image/picture_rows.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

#pragma GCC diagnostic ignored "-Wpsabi"  // vectors are passed to functions that are inlined

constexpr std::size_t kRows = 4;      ///< under way at the same time
constexpr std::size_t kDistance = 2;  ///< pixels that a row is behind the one below it

/// `part` sixteenths, each channel truncated toward 0.
VELLUM_INLINE Lanes4 sixteenths(const Lanes4& error, std::int32_t part) {
  const Lanes4 product = error * part;
  return (product + (product >> 31 & 15)) >> 4;
}

/// A row under way. Lanes are blue, green, red.
struct Row {
  const std::uint8_t* pixels = nullptr;
  const Lanes4* carried = nullptr;  ///< errors from the row below
  Lanes4* above = nullptr;          ///< errors for the next row
  std::uint8_t* out = nullptr;
  Lanes4 right{};                   ///< error for the next pixel
  Lanes4 aboveHere{}, aboveNext{};  ///< for what lies above the pixel in front, and above the next one
};

/// A palette as lanes, and the alpha below which a pixel is passed over.
struct Target {
  std::array<Lanes4, 256> colors;
  std::uint32_t leastOpaque;

  Target(const Palette& palette, std::uint32_t least_opaque) : leastOpaque(least_opaque) {
    for (std::size_t i = 0; i < colors.size(); ++i)
      colors[i] = Lanes4{palette[3 * i + 2], palette[3 * i + 1], palette[3 * i], 0};
  }
};

/// `kBytes` of a pixel: a fourth is alpha.
template <std::size_t kBytes, class Entries>
VELLUM_INLINE void dither_pixel(Row& row, std::size_t x, const Target& target, Entries& entries) {
  const std::uint8_t* pixel = row.pixels + kBytes * x;
  Lanes4 color = Lanes4{pixel[0], pixel[1], pixel[2], 0} + row.carried[x] + row.right;
  color = least(greatest(color, Lanes4{}), Lanes4{} + 255);
  const std::uint32_t index =
      entries.index(static_cast<std::uint32_t>(color[2]), static_cast<std::uint32_t>(color[1]),
                    static_cast<std::uint32_t>(color[0]));
  row.out[x] = static_cast<std::uint8_t>(index);
  Lanes4 error = color - target.colors[index];
  if (kBytes == 4 && pixel[3] < target.leastOpaque) error = Lanes4{};
  row.right = sixteenths(error, 7);
  // The second pixel of a row gives nothing to the first one above.
  const Lanes4 behind = x >= 2 ? sixteenths(error, 3) : Lanes4{};
  if (x > 0) row.above[x - 1] = row.aboveHere + behind;
  row.aboveHere = row.aboveNext + sixteenths(error, 5);
  row.aboveNext = sixteenths(error, 1);
}

/// Steps from `begin` to `end`, one pixel of each row; a row begins kDistance steps behind the one below it.
template <std::size_t kBytes, class Entries>
VELLUM_INLINE void dither_rows(std::span<Row> rows, std::size_t width, std::size_t begin, std::size_t end,
                               const Target& target, Entries& entries) {
  for (std::size_t step = begin; step < end; ++step)
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const std::size_t x = step - kDistance * i;  // wraps for a row that hasn't begun
      if (x >= width) continue;
      dither_pixel<kBytes>(rows[i], x, target, entries);
      if (x + 1 == width) rows[i].above[x] = rows[i].aboveHere;
    }
}

template <std::size_t kBytes>
VELLUM_AVX2 void dither_rows_avx2(std::span<Row> rows, std::size_t width, std::size_t begin, std::size_t end,
                                  const Target& target, NearestEntries& entries) {
  if (rows.size() == kRows)  // a count that is known unrolls
    dither_rows<kBytes>(rows.first<kRows>(), width, begin, end, target, entries);
  else
    dither_rows<kBytes>(rows, width, begin, end, target, entries);
}

template <std::size_t kBytes>
void dither_some(std::span<Row> rows, std::size_t width, std::size_t begin, std::size_t end,
                 const Target& target, NearestEntries& entries) {
  if (has_avx2()) return dither_rows_avx2<kBytes>(rows, width, begin, end, target, entries);
  dither_rows<kBytes>(rows, width, begin, end, target, entries);
}

template <std::size_t kBytes>
void dither_some(std::span<Row> rows, std::size_t width, std::size_t begin, std::size_t end,
                 const Target& target, CornerEntries& entries) {
  dither_rows<kBytes>(rows, width, begin, end, target, entries);
}

template <class Entries>
void dither_steps(const Picture& source, std::span<Row> rows, std::size_t begin, std::size_t end,
                  const Target& target, Entries& entries) {
  if (source.bits() == 32)
    dither_some<4>(rows, source.width(), begin, end, target, entries);
  else
    dither_some<3>(rows, source.width(), begin, end, target, entries);
}

using Errors = std::vector<Lanes4>;

/// A group of rows under way, with what its core needs for itself.
template <class Entries>
struct Group {
  Entries entries;
  std::array<Errors, kRows - 1> errors;  ///< from a row to the next one above
  std::array<std::vector<std::uint8_t>, kRows> lines;
  std::array<Row, kRows> rows{};
  std::size_t count = 0;

  Group(const Entries& all, std::size_t width) : entries(all) {
    errors.fill(Errors(width));
    lines.fill(std::vector<std::uint8_t>(width));
  }
  /// Takes the rows from `first` on, counted from the bottom.
  void begin(const Picture& source, std::uint32_t first, const Errors& below, Errors& above) {
    count = std::min<std::size_t>(kRows, source.height() - first);
    for (std::size_t i = 0; i < count; ++i) {
      rows[i] = {.pixels = source.stored_row(first + static_cast<std::uint32_t>(i)),
                 .carried = i == 0 ? below.data() : errors[i - 1].data(),
                 .above = i + 1 == count ? above.data() : errors[i].data(),
                 .out = lines[i].data()};
    }
  }
  void end(std::uint32_t first, const EditRows& out, std::uint32_t height, std::uint32_t bits) const {
    for (std::size_t i = 0; i < count; ++i)
      pack_indices(out[height - 1 - first - i], 0, lines[i].data(), lines[i].size(), bits);
  }
};

/// Steps that a group does before the next one hears of it. More than a group is wide, kDistance * kRows.
constexpr std::size_t kSteps = 128;
/// Groups between two questions whether to go on.
constexpr std::uint32_t kGroups = 32;

template <class Entries>
bool dither_whole(const Picture& source, Picture& result, const Palette& palette, const Entries& entries,
                  const std::function<bool(std::uint32_t)>& go_on) {
  const EditRows out(result);
  const std::size_t width = source.width(), steps = width + kDistance * (kRows - 1);
  const Target target(palette, kLeastOpaque);
  std::vector<Group<Entries>> groups(parallel_width(), Group<Entries>(entries, width));
  // What groups give to the next ones; as many are under way as there are cores.
  std::vector<Errors> between(groups.size() + 1, Errors(width));
  for (std::uint32_t first = 0; first < source.height(); first += kGroups * kRows) {
    if (!go_on(first)) return false;
    const std::size_t count = std::min<std::size_t>(kGroups, (source.height() - first + kRows - 1) / kRows);
    parallel_wavefront(count, (steps + kSteps - 1) / kSteps,
                       [&](std::size_t core, std::size_t item, std::size_t part) {
                         Group<Entries>& group = groups[core];
                         const auto row = first + static_cast<std::uint32_t>(item * kRows);
                         const std::size_t number = row / kRows, end = std::min(steps, (part + 1) * kSteps);
                         if (part == 0)
                           group.begin(source, row, between[number % between.size()],
                                       between[(number + 1) % between.size()]);
                         const auto under_way = std::span(group.rows).first(group.count);
                         dither_steps(source, under_way, part * kSteps, end, target, group.entries);
                         if (end == steps) group.end(row, out, source.height(), result.bits());
                       });
  }
  return true;
}

/// Rows of a picture in groups, one after the other.
template <class Entries>
void dither_alone(const Picture& source, std::span<std::uint8_t> out, const Target& target, Entries& entries,
                  std::array<Errors, kRows + 1>& errors) {
  const std::size_t width = source.width(), steps = width + kDistance * (kRows - 1);
  for (Errors& row : errors) row.resize(width);
  std::ranges::fill(errors[0], Lanes4{});
  for (std::uint32_t first = 0; first < source.height(); first += kRows) {
    std::array<Row, kRows> rows;
    const std::size_t count = std::min<std::size_t>(kRows, source.height() - first);
    for (std::size_t i = 0; i < count; ++i)
      rows[i] = {.pixels = source.stored_row(first + static_cast<std::uint32_t>(i)),
                 .carried = errors[i].data(),
                 .above = errors[i + 1].data(),
                 .out = out.data() + width * (source.height() - 1 - first - i)};
    dither_steps(source, std::span(rows).first(count), 0, steps, target, entries);
    errors[0].swap(errors[count]);
  }
}

}  // namespace

Picture dither_to_palette(const Picture& source, const Palette& palette, std::uint32_t count,
                          std::uint32_t depth, bool fast, const std::function<bool(std::uint32_t)>& go_on) {
  Picture result = source ? create_rows(source.width(), source.height(), &palette, depth) : Picture();
  if (!result) return {};
  const bool whole = fast ? dither_whole(source, result, palette, CornerEntries(palette, count), go_on)
                          : dither_whole(source, result, palette, NearestEntries(palette, count), go_on);
  return whole ? result : Picture();
}

struct Ditherer::Work {
  Target target;
  std::variant<NearestEntries, CornerEntries> entries;
  std::array<Errors, kRows + 1> errors = {};
};

Ditherer::Ditherer(const Palette& palette, std::uint32_t count, bool fast, std::uint32_t least_opaque)
    : work_(new Work{{palette, least_opaque}, NearestEntries(palette, count)}) {
  if (fast) work_->entries = CornerEntries(palette, count);
}
Ditherer::Ditherer(Ditherer&&) noexcept = default;
Ditherer::~Ditherer() = default;

void Ditherer::dither(const Picture& picture, std::span<std::uint8_t> out) {
  std::visit([&](auto& entries) { dither_alone(picture, out, work_->target, entries, work_->errors); },
             work_->entries);
}

}  // namespace vellum
