#include "image/quantize.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

#include "image/cut_colors.h"
#include "image/lanes.h"
#include "image/picture_rows.h"
#include "image/refine_palette.h"
#include "image/to_colors.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMostColours = 256;

/// The deepest tree that a target of 256 asks for: its leaves are the five high bits of each channel. So
/// cells of those, with what a node needs of them, make the same tree as walking it with each pixel.
constexpr unsigned kMostDepth = 5, kLeastDepth = 2;
constexpr unsigned kLowBits = 8 - kMostDepth;
constexpr std::size_t kCells = std::size_t{1} << (3 * kMostDepth);

/// What is summed of the pixels of a cell: their number, the squares of their low bits, and the low bits of
/// red, green and blue.
using CellSums = std::array<std::uint32_t, 5>;

/// Pixels that can be summed before one of these could run over.
constexpr std::size_t kMostPixels = std::size_t{1} << 24;

/// The sums of a few pixels in one word, the fields in the same order; the number lies lowest.
using FewPixels = std::uint64_t;
constexpr std::array<unsigned, 5> kFieldBits = {8, 16, 11, 11, 11};
constexpr FewPixels kMostOfAWord = (1u << kFieldBits[0]) - 1;
constexpr std::uint64_t kLowMask = (1u << kLowBits) - 1;
static_assert(kMostOfAWord * 3 * kLowMask * kLowMask < 1u << kFieldBits[1]);
static_assert(kMostOfAWord * kLowMask < 1u << kFieldBits[2]);

constexpr FewPixels joined_fields(const std::array<std::uint64_t, 5>& fields) {
  FewPixels word = 0;
  for (std::size_t i = fields.size(); i-- > 0;) word = word << kFieldBits[i] | fields[i];
  return word;
}

constexpr std::size_t joined(std::size_t r, std::size_t g, std::size_t b, unsigned bits) {
  return r << (2 * bits) | g << bits | b;
}

/// What one pixel adds, by the low bits of its channels.
constexpr auto kPixelTable = [] {
  std::array<FewPixels, std::size_t{1} << (3 * kLowBits)> table{};
  for (std::uint64_t r = 0; r <= kLowMask; ++r)
    for (std::uint64_t g = 0; g <= kLowMask; ++g)
      for (std::uint64_t b = 0; b <= kLowMask; ++b)
        table[joined(r, g, b, kLowBits)] = joined_fields({1, r * r + g * g + b * b, r, g, b});
  return table;
}();

/// The sums of all cells, a few pixels of each in a word: these words stay in the cache.
class CellCounts {
 public:
  VELLUM_INLINE void add(unsigned r, unsigned g, unsigned b) {
    add(joined(r >> kLowBits, g >> kLowBits, b >> kLowBits, kMostDepth),
        joined(r & kLowMask, g & kLowMask, b & kLowMask, kLowBits));
  }
  /// A pixel by its cell and its low bits.
  VELLUM_INLINE void add(std::size_t cell, std::size_t low) {
    const FewPixels word = few_[cell] + kPixelTable[low];
    few_[cell] = word;
    if ((word & kMostOfAWord) == kMostOfAWord) [[unlikely]]
      move_word(cell);
  }
  const CellSums& sums(std::size_t cell) {
    move_word(cell);
    return all_[cell];
  }

 private:
  void move_word(std::size_t cell) {
    FewPixels word = std::exchange(few_[cell], 0);
    for (std::size_t i = 0; i < kFieldBits.size(); ++i) {
      all_[cell][i] += static_cast<std::uint32_t>(word & ((1u << kFieldBits[i]) - 1));
      word >>= kFieldBits[i];
    }
  }

  std::vector<FewPixels> few_ = std::vector<FewPixels>(kCells);
  std::vector<CellSums> all_ = std::vector<CellSums>(kCells);
};

/// The sums of some bands of a picture.
struct BandCounts {
  CellCounts cells;
  std::size_t pixels = 0;
};

#pragma GCC diagnostic ignored "-Wpsabi"  // vectors are passed to functions that are inlined

/// Pixels that are taken apart at a time, and the bytes that are read of them.
constexpr std::size_t kEight = 8, kEightBytes = 28;

/// The cells of eight pixels above 16 bits that hold their low bits.
VELLUM_INLINE void places_of_eight(const std::uint8_t* pixels, std::uint32_t* places) {
  const Bytes16 none{};
  Bytes16 half[2];
  for (std::size_t i = 0; i < 2; ++i) {
    std::memcpy(&half[i], pixels + 12 * i, sizeof half[i]);
    half[i] = __builtin_shufflevector(half[i], none, 0, 1, 2, 16, 3, 4, 5, 16, 6, 7, 8, 16, 9, 10, 11, 16);
  }
  using Bytes32 = std::uint8_t __attribute__((vector_size(32)));
  const Bytes32 joint =
      __builtin_shufflevector(half[0], half[1], 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17,
                              18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31);
  const Lanes8 all = reinterpret_cast<Lanes8>(joint);
  const Lanes8 cell = (all >> 3 & 31) | (all >> 6 & 31 << 5) | (all >> 9 & 31 << 10);
  const Lanes8 low = (all & 7) | (all >> 5 & 7 << 3) | (all >> 10 & 7 << 6);
  const Lanes8 both = cell << 16 | low;
  std::memcpy(places, &both, sizeof both);
}
static_assert(kMostDepth == 5 && kLowBits == 3);

/// Parts of a row whose pixels are counted in turn: neighbours fall into the same cell mostly, and each would
/// wait for the one before it.
constexpr std::size_t kParts = 4;

/// The first `done` pixels of each part are counted already.
void count_parts(CellCounts& cells, const std::uint8_t* row, std::size_t width, std::size_t done) {
  const std::size_t part = width / kParts;
  const auto add = [&](std::size_t x) { cells.add(row[3 * x + 2], row[3 * x + 1], row[3 * x]); };
  for (std::size_t x = done; x < part; ++x)
    for (std::size_t i = 0; i < kParts; ++i) add(i * part + x);
  for (std::size_t x = kParts * part; x < width; ++x) add(x);
}

/// How many pixels of each part of the row are counted.
VELLUM_AVX2 std::size_t count_eights(CellCounts& cells, const std::uint8_t* row, std::size_t width) {
  const std::size_t part = width / kParts;
  std::size_t x = 0;
  for (; 3 * (part - x) >= kEightBytes; x += kEight) {
    std::uint32_t places[kParts][kEight];
    for (std::size_t i = 0; i < kParts; ++i) places_of_eight(row + 3 * (i * part + x), places[i]);
    for (std::size_t k = 0; k < kEight; ++k)
      for (std::size_t i = 0; i < kParts; ++i) cells.add(places[i][k] >> 16, places[i][k] & 0xFFFF);
  }
  return x;
}

void count_row(CellCounts& cells, std::span<const std::uint8_t> pixels) {
  const std::size_t width = pixels.size() / 3;
  const std::size_t done = has_avx2() ? count_eights(cells, pixels.data(), width) : 0;
  count_parts(cells, pixels.data(), width, done);
}

/// Count, sums and sum of squares of the pixels below a node.
struct Totals {
  std::uint64_t count = 0, squares = 0;
  std::array<std::uint64_t, 3> sums{};

  Totals& operator+=(const Totals& other) {
    count += other.count;
    squares += other.squares;
    for (std::size_t c = 0; c < 3; ++c) sums[c] += other.sums[c];
    return *this;
  }
};

Totals totals_of(const CellSums& cell, std::size_t index) {
  Totals totals{cell[0], cell[1], {}};
  for (std::size_t c = 0; c < 3; ++c) {
    const std::uint64_t base = (index >> ((2 - c) * kMostDepth) & ((1u << kMostDepth) - 1)) << kLowBits;
    totals.sums[c] = totals.count * base + cell[c + 2];
    totals.squares += totals.count * base * base + 2 * base * cell[c + 2];
  }
  return totals;
}

/// Twice the middle of a cube: it lies halfway between two levels.
using Middle = std::array<std::int64_t, 3>;

/// Four times the squared distances of the pixels to the middle: a whole number.
std::int64_t error_of(const Totals& totals, const Middle& middle) {
  auto error = static_cast<std::int64_t>(4 * totals.squares);
  for (std::size_t c = 0; c < 3; ++c)
    error += static_cast<std::int64_t>(totals.count) * middle[c] * middle[c] -
             4 * middle[c] * static_cast<std::int64_t>(totals.sums[c]);
  return error;
}

constexpr std::int64_t kErrorUnit = 4;

/// Child `i` of a node: red, green, blue in the bits 2, 1, 0.
struct Node {
  std::array<std::int32_t, 8> children{-1, -1, -1, -1, -1, -1, -1, -1};
  std::uint64_t count = 0;  ///< of the pixels that this node itself stands for
  std::array<std::uint64_t, 3> sums{};
  std::int64_t error = 0;
};

constexpr std::int64_t kNever = INT64_MAX;

/// What the rounds of a reduction do with a node; which round it is tells the threshold alone.
struct Fate {
  std::int64_t error;   ///< a round with this threshold removes it
  std::int64_t dies;    ///< with this one it goes up with a node around it, or by itself
  std::int64_t counts;  ///< from this one on it stands for pixels
  bool counted = false, gone = false;
};

/// The rounds of a reduction without the tree. A round removes the nodes with errors up to its threshold,
/// each behind those below it, with all that these have left; counts those that stand for pixels, also such
/// that are about to go up with a node around them; and takes the least error of these as the next threshold.
/// The thresholds grow, so each node comes, counts and goes once.
class Rounds {
 public:
  explicit Rounds(std::int64_t largest_threshold) : largest_(largest_threshold) {}
  void add(const Fate& fate) { fates_.push_back(fate); }

  /// The threshold of the first round that counts no more than `target`.
  std::int64_t last_threshold(std::size_t target) {
    Order by_error = order(&Fate::error), by_death = order(&Fate::dies), by_count = order(&Fate::counts);
    std::size_t colours = 0;
    for (std::int64_t before = -1, threshold = 0;;) {
      // What another node takes along in this round is still counted in it.
      for (; by_death.reaches(before); ++by_death.at) colours -= leave(by_death.next());
      for (; by_error.reaches(threshold); ++by_error.at) colours -= leave(by_error.next());
      for (; by_count.reaches(threshold); ++by_count.at) colours += enter(by_count.next());
      if (colours <= target) return threshold;
      before = std::exchange(threshold, least_error(by_error));
      if (threshold == before) return threshold;
    }
  }

 private:
  /// All nodes, sorted by one value.
  struct Order {
    std::vector<Fate*> fates;
    std::int64_t Fate::*value;
    std::size_t at = 0;

    Fate& next() const { return *fates[at]; }
    bool reaches(std::int64_t threshold) const { return at < fates.size() && next().*value <= threshold; }
  };

  Order order(std::int64_t Fate::*value) {
    Order order{{}, value};
    for (Fate& fate : fates_) order.fates.push_back(&fate);
    std::ranges::sort(order.fates, {}, [value](const Fate* fate) { return fate->*value; });
    return order;
  }
  static std::size_t leave(Fate& fate) { return !std::exchange(fate.gone, true) && fate.counted; }
  static std::size_t enter(Fate& fate) { return fate.counted = !fate.gone; }

  /// What is passed over stands for no pixels yet, and the next round removes it.
  std::int64_t least_error(Order& by_error) const {
    while (by_error.at < by_error.fates.size() && (!by_error.next().counted || by_error.next().gone))
      leave(by_error.fates[by_error.at++][0]);
    return by_error.at < by_error.fates.size() ? std::min(by_error.next().error, largest_) : largest_;
  }

  std::vector<Fate> fates_;
  std::int64_t largest_;
};

class Tree {
 public:
  Tree(const std::vector<Totals>& cells, unsigned depth) : depth_(depth) {
    nodes_.emplace_back();
    std::vector<Totals> leaves(std::size_t{1} << (3 * depth));
    for (std::size_t i = 0; i < cells.size(); ++i) leaves[leaf_of(i)] += cells[i];
    for (std::size_t i = 0; i < leaves.size(); ++i)
      if (leaves[i].count != 0) add_leaf(leaves[i], i);
  }

  void reduce(std::uint32_t target) {
    if (colours_ <= target) return;
    Rounds rounds(nodes_[0].error - kErrorUnit);
    note_fates(0, kNever, rounds);
    prune_below(0, rounds.last_threshold(target));
  }

  std::uint32_t assign(Palette& palette) const {
    palette.fill(0);
    std::uint32_t count = 0;
    assign(0, palette, count);
    return count;
  }

 private:
  std::size_t leaf_of(std::size_t cell) const {
    const auto channel = [&](unsigned shift) {
      return (cell >> shift & ((1u << kMostDepth) - 1)) >> (kMostDepth - depth_);
    };
    return joined(channel(2 * kMostDepth), channel(kMostDepth), channel(0), depth_);
  }

  /// Errors of the whole way down go to the nodes on it, and all of them to the root.
  void add_leaf(const Totals& totals, std::size_t leaf) {
    std::int32_t at = 0;
    Middle middle{255, 255, 255};
    for (unsigned level = 1; level <= depth_; ++level) {
      const std::int64_t step = 256 >> level;  // twice the half step, as the middle is doubled
      std::size_t child = 0;
      for (std::size_t c = 0; c < 3; ++c) {
        const std::size_t bit = leaf >> ((2 - c) * depth_ + depth_ - level) & 1;
        child = child << 1 | bit;
        middle[c] += bit ? step : -step;
      }
      at = child_of(at, child);
      const std::int64_t error = error_of(totals, middle);
      nodes_[static_cast<std::size_t>(at)].error += error;
      nodes_[0].error += error;
    }
    Node& node = nodes_[static_cast<std::size_t>(at)];
    node.count = totals.count;
    node.sums = totals.sums;
    ++colours_;
  }

  std::int32_t child_of(std::int32_t parent, std::size_t child) {
    const std::int32_t known = nodes_[static_cast<std::size_t>(parent)].children[child];
    if (known >= 0) return known;
    const auto made = static_cast<std::int32_t>(nodes_.size());
    nodes_.emplace_back();
    return nodes_[static_cast<std::size_t>(parent)].children[child] = made;
  }

  /// `dies`: the threshold that removes a node around this one.
  void note_fates(std::size_t at, std::int64_t dies, Rounds& rounds) const {
    const Node& node = nodes_[at];
    std::int64_t counts = node.count != 0 ? 0 : kNever;
    for (const std::int32_t child : node.children) {
      if (child < 0) continue;
      const std::int64_t error = nodes_[static_cast<std::size_t>(child)].error;
      counts = std::min(counts, error);
      note_fates(static_cast<std::size_t>(child), std::min(dies, error), rounds);
    }
    rounds.add({node.error, dies, counts});
  }

  /// Every node whose error is no larger goes.
  void prune_below(std::size_t at, std::int64_t threshold) {
    for (std::size_t child = 0; child < 8; ++child) {
      const std::int32_t index = nodes_[at].children[child];
      if (index < 0) continue;
      prune_below(static_cast<std::size_t>(index), threshold);
      if (nodes_[static_cast<std::size_t>(index)].error <= threshold) prune(at, child);
    }
  }

  /// A child goes up into its parent, with all that is still below it: a small cube can have a larger error
  /// than the cube around it.
  void prune(std::size_t parent, std::size_t child) {
    const auto index = static_cast<std::size_t>(std::exchange(nodes_[parent].children[child], -1));
    for (std::size_t below = 0; below < 8; ++below)
      if (nodes_[index].children[below] >= 0) prune(index, below);
    nodes_[parent].count += nodes_[index].count;
    for (std::size_t c = 0; c < 3; ++c) nodes_[parent].sums[c] += nodes_[index].sums[c];
  }

  void assign(std::size_t at, Palette& palette, std::uint32_t& count) const {
    const Node& node = nodes_[at];
    for (const std::int32_t child : node.children)
      if (child >= 0) assign(static_cast<std::size_t>(child), palette, count);
    if (node.count == 0 || count == kMostColours) return;
    for (std::size_t c = 0; c < 3; ++c)
      palette[3 * count + c] = static_cast<std::uint8_t>((node.count / 2 + node.sums[c]) / node.count);
    ++count;
  }

  unsigned depth_;
  std::vector<Node> nodes_;  ///< the root first
  std::uint32_t colours_ = 0;
};

std::uint32_t held_target(std::uint32_t target) {
  return target == 0 || target > kMostColours ? kMostColours : target;
}

/// How often the target can be divided by 4 before nothing is left.
unsigned depth_of(std::uint32_t target) {
  const auto depth = (static_cast<unsigned>(std::bit_width(target)) + 1) / 2;
  return std::clamp(depth, kLeastDepth, kMostDepth);
}

/// The pixels of stored rows as three bytes each: what a picture of another depth has there, and zeros behind
/// its end; or those that are visible.
class ThreeByteRows {
 public:
  ThreeByteRows(const Picture& picture, const CountedColors& counted)
      : picture_(picture),
        bytes_(3 * std::size_t{picture.width()}),
        least_(counted.least),
        visible_(counted.visible && picture.bits() == 32) {}

  std::span<const std::uint8_t> row(std::uint32_t y, std::vector<std::uint8_t>& spare) const {
    const std::uint8_t* row = picture_.stored_row(y);
    if (visible_) return visible_pixels(row, spare);
    if (picture_.stride() >= bytes_) return {row, bytes_};
    const std::size_t left = picture_.stride() * (picture_.height() - y);
    spare.assign(bytes_, 0);
    std::memcpy(spare.data(), row, std::min(left, bytes_));
    return spare;
  }

 private:
  std::span<const std::uint8_t> visible_pixels(const std::uint8_t* row,
                                               std::vector<std::uint8_t>& spare) const {
    spare.resize(bytes_ + 1);  // four bytes are written at a time
    std::uint8_t* out = spare.data();
    for (const std::uint8_t* end = row + 4 * std::size_t{picture_.width()}; row < end; row += 4) {
      std::memcpy(out, row, 4);
      out += row[3] >= least_ ? 3 : 0;
    }
    return {spare.data(), out};
  }

  const Picture& picture_;
  std::size_t bytes_;
  std::uint32_t least_;
  bool visible_;
};
static_assert(CountedColors{}.least == kLeastOpaque);

std::uint32_t best_palette(const std::vector<Totals>& cells, std::uint32_t target, Palette& palette) {
  std::vector<ColorSum> colors;
  for (const Totals& totals : cells)
    if (totals.count != 0) colors.push_back({totals.count, totals.sums});
  const std::uint32_t count = cut_colors(colors, target, palette);
  refine_palette(colors, palette, count);
  return count;
}

constexpr std::uint32_t kNoColor = 0xFFFFFFFF;

}  // namespace

struct ColorOctree::Cells {
  std::vector<Totals> totals = std::vector<Totals>(kCells);
  std::mutex mutex;

  void take(CellCounts& counts, bool high_bits_alone) {
    const std::scoped_lock lock(mutex);
    for (std::size_t i = 0; i < kCells; ++i) {
      CellSums sums = counts.sums(i);
      if (high_bits_alone) sums = {sums[0], 0, 0, 0, 0};
      if (sums[0] != 0) totals[i] += totals_of(sums, i);
    }
  }
};

ColorOctree::ColorOctree() : cells_(std::make_unique<Cells>()) {}
ColorOctree::~ColorOctree() = default;
ColorOctree::ColorOctree(ColorOctree&&) noexcept = default;
ColorOctree& ColorOctree::operator=(ColorOctree&&) noexcept = default;

void ColorOctree::add(Colour color, std::uint64_t count) {
  const std::uint64_t r = red_of(color), g = green_of(color), b = blue_of(color);
  const Totals totals{count, count * (r * r + g * g + b * b), {count * r, count * g, count * b}};
  cells_->totals[joined(r >> kLowBits, g >> kLowBits, b >> kLowBits, kMostDepth)] += totals;
}

void ColorOctree::add(const Picture& picture, const CountedColors& counted) {
  if (!has_rows(picture)) return;
  const ThreeByteRows rows(picture, counted);
  const std::uint64_t pixels = std::uint64_t{picture.width()} * picture.height();
  const std::uint32_t most_rows = std::max<std::uint32_t>(1, kMostPixels / picture.width());
  // A few large bands: each brings sums of its own.
  const std::uint64_t bands = std::clamp<std::uint64_t>(pixels >> 20, 1, 2 * parallel_width());
  const auto band_rows =
      std::min<std::uint32_t>(most_rows, static_cast<std::uint32_t>((picture.height() + bands - 1) / bands));
  // To make and to add up the sums takes as long as many rows, so a worker goes on with those of another
  // band.
  std::mutex mutex;
  std::vector<std::unique_ptr<BandCounts>> idle;
  parallel_for((picture.height() + band_rows - 1) / band_rows, [&](std::size_t band) {
    const auto first = static_cast<std::uint32_t>(band * band_rows);
    const std::uint32_t end = std::min(first + band_rows, picture.height());
    const std::size_t more = std::size_t{end - first} * picture.width();
    std::unique_ptr<BandCounts> counts;
    {
      const std::scoped_lock lock(mutex);
      const auto fits = std::ranges::find_if(
          idle, [more](const auto& other) { return other->pixels + more <= kMostPixels; });
      if (fits != idle.end()) {
        counts = std::move(*fits);
        idle.erase(fits);
      }
    }
    if (!counts) counts = std::make_unique<BandCounts>();
    counts->pixels += more;
    std::vector<std::uint8_t> spare;
    for (std::uint32_t y = first; y < end; ++y) count_row(counts->cells, rows.row(y, spare));
    const std::scoped_lock lock(mutex);
    idle.push_back(std::move(counts));
  });
  for (const auto& counts : idle) cells_->take(counts->cells, counted.mask != 0xFFFFFF);
}

void ColorOctree::add_all(std::span<const Picture> pictures, const CountedColors& counted) {
  const std::size_t lanes = std::min(parallel_width(), pictures.size());
  parallel_for(lanes, [&](std::size_t lane) {
    CellCounts counts;
    std::size_t pixels = 0;
    std::vector<std::uint8_t> spare;
    for (std::size_t i = lane; i < pictures.size(); i += lanes) {
      if (!has_rows(pictures[i])) continue;
      const ThreeByteRows rows(pictures[i], counted);
      for (std::uint32_t y = 0; y < pictures[i].height(); ++y) {
        if ((pixels += pictures[i].width()) > kMostPixels) {
          cells_->take(counts, counted.mask != 0xFFFFFF);
          counts = {};
          pixels = pictures[i].width();
        }
        count_row(counts, rows.row(y, spare));
      }
    }
    cells_->take(counts, counted.mask != 0xFFFFFF);
  });
}

std::uint32_t ColorOctree::palette(std::uint32_t target, Palette& out, bool best) const {
  target = held_target(target);
  if (best) return best_palette(cells_->totals, target, out);
  Tree tree(cells_->totals, depth_of(target));
  tree.reduce(target);
  return tree.assign(out);
}

FewColors::FewColors(std::uint32_t most, const CountedColors& counted)
    : most_(most), counted_(counted), known_(1024, kNoColor) {}

bool FewColors::add(const Picture& picture) {
  if (!has_rows(picture)) return true;
  const ThreeByteRows rows(picture, counted_);
  std::vector<std::uint8_t> spare;
  std::uint32_t before = kNoColor;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const auto row = rows.row(y, spare);
    for (std::size_t at = 0; at < row.size(); at += 3) {
      const std::uint32_t colour = make_colour(row[at + 2], row[at + 1], row[at]) & counted_.mask;
      if (std::exchange(before, colour) != colour && !note(colour)) return false;
    }
  }
  return true;
}

bool FewColors::note(std::uint32_t colour) {
  std::size_t at = colour * 0x9E3779B1u >> 22;
  while (known_[at] != colour && known_[at] != kNoColor) at = (at + 1) % known_.size();
  if (known_[at] == colour) return true;
  if (count_ == most_) return false;
  known_[at] = colour;
  for (unsigned shift = 0; shift < 24; shift += 8)
    palette_[3 * count_ + shift / 8] = static_cast<std::uint8_t>(colour >> shift);
  ++count_;
  return true;
}

std::optional<std::uint32_t> few_colours(const Picture& picture, std::uint32_t most, Palette& palette,
                                         const CountedColors& counted) {
  FewColors colors(most, counted);
  const bool few = colors.add(picture);
  palette = colors.palette();
  return few ? std::optional(colors.count()) : std::nullopt;
}

std::uint32_t QuantizePicture(const Picture& picture, std::uint32_t target, Palette& palette) try {
  palette.fill(0);
  if (!has_rows(picture)) return 0;
  if (const auto count = few_colours(picture, held_target(target), palette)) return *count;
  ColorOctree octree;
  octree.add(picture);
  return octree.palette(target, palette);
} catch (const std::bad_alloc&) {
  return 0;
}

}  // namespace vellum
