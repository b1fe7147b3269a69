#include "image/png_smallest.h"

#include <algorithm>

#include "base/parallel.h"
#include "image/deflate.h"
#include "image/deflate_slowly.h"
#include "image/png_encode.h"

namespace vellum {
namespace {

constexpr int kSmallest = kThoroughDeflate, kNearlySmallest = 8, kQuick = 2;
/// Filters that are packed at the highest level: all of a small image, of a large one those that came first.
constexpr std::size_t kSmallImage = std::size_t{64} << 10, kOfLarge = 2;

constexpr PngFiltering kWays[] = {PngFiltering::None, PngFiltering::Least, PngFiltering::Sub,
                                  PngFiltering::Up,   PngFiltering::Paeth, PngFiltering::Average};

using Key = std::optional<std::array<std::uint16_t, 3>>;
using Bytes = std::vector<std::uint8_t>;

struct Trial {
  Bytes rows, stream;
};

void pack(Trial& trial, int level) { trial.stream = deflate_bytes(trial.rows, level); }

bool smaller(const Bytes& a, const Bytes& b) { return !a.empty() && (b.empty() || a.size() < b.size()); }

/// The filter by which some bands of a larger image pack best: all but Average, which is for photographs.
Bytes encode_quickly(const PngHeader& header, const Picture& picture, const Key& key) {
  constexpr std::size_t kCount = std::size(kWays) - 1;
  const bool small = png_filtered_bytes(header) <= kSmallImage;
  Bytes trials[kCount];
  parallel_for(kCount, [&](std::size_t i) {
    trials[i] = deflate_bytes(small ? png_filtered(header, picture, kWays[i], key)
                                    : png_filtered_bands(header, picture, kWays[i], key),
                              kQuick);
  });
  const auto best = std::ranges::min_element(trials, smaller) - std::begin(trials);
  return deflate_bytes(png_filtered(header, picture, kWays[best], key), kNearlySmallest);
}

}  // namespace

Bytes png_encode_smallest(const PngHeader& header, const Picture& picture, Key key, const PngEffort& effort) {
  if (effort.quick) return encode_quickly(header, picture, key);
  const auto less = [](const Trial& a, const Trial& b) { return smaller(a.stream, b.stream); };
  std::vector<Trial> trials(std::size(kWays));
  const bool small = png_filtered_bytes(header) <= kSmallImage;
  parallel_for(trials.size(), [&](std::size_t i) {
    trials[i].rows = png_filtered(header, picture, kWays[i], key);
    if (!trials[i].rows.empty()) pack(trials[i], small ? kSmallest : kQuick);
  });
  if (!small) {
    std::ranges::stable_sort(trials, less);
    trials.resize(kOfLarge);
    parallel_for(trials.size(), [&](std::size_t i) { pack(trials[i], kSmallest); });
  }
  Trial& best = *std::ranges::min_element(trials, less);
  if (effort.iterations == 0 || best.stream.empty()) return std::move(best.stream);
  auto slow = deflate_slowly(best.rows, effort.iterations);
  return !slow.empty() && slow.size() < best.stream.size() ? std::move(slow) : std::move(best.stream);
}

}  // namespace vellum
