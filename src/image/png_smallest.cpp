#include "image/png_smallest.h"

#include <algorithm>

#include "base/parallel.h"
#include "image/deflate.h"
#include "image/deflate_slowly.h"
#include "image/png_encode.h"

namespace vellum {
namespace {

constexpr int kSmallest = 9, kNearlySmallest = 8, kQuick = 2;
/// Filters that are packed at the highest level: all of a small image, of a large one those that came first.
constexpr std::size_t kSmallImage = std::size_t{64} << 10, kOfLarge = 2;

struct Trial {
  std::vector<std::uint8_t> rows, stream;
};

void pack(Trial& trial, int level) { trial.stream = deflate_bytes(trial.rows, level); }

bool smaller(const Trial& a, const Trial& b) {
  return !a.stream.empty() && (b.stream.empty() || a.stream.size() < b.stream.size());
}

}  // namespace

std::vector<std::uint8_t> png_encode_smallest(const PngHeader& header, const Picture& picture,
                                              std::optional<std::array<std::uint16_t, 3>> key,
                                              const PngEffort& effort) {
  constexpr PngFiltering kWays[] = {PngFiltering::None, PngFiltering::Least, PngFiltering::Sub,
                                    PngFiltering::Up,   PngFiltering::Paeth, PngFiltering::Average};
  std::vector<Trial> trials(std::size(kWays) - (effort.quick ? 1 : 0));
  const bool small = !effort.quick && png_filtered_bytes(header) <= kSmallImage;
  const int highest = effort.quick ? kNearlySmallest : kSmallest;
  parallel_for(trials.size(), [&](std::size_t i) {
    trials[i].rows = png_filtered(header, picture, kWays[i], key);
    if (!trials[i].rows.empty()) pack(trials[i], small ? highest : kQuick);
  });
  if (!small) {
    std::ranges::stable_sort(trials, smaller);
    trials.resize(effort.quick ? 1 : kOfLarge);
    parallel_for(trials.size(), [&](std::size_t i) { pack(trials[i], highest); });
  }
  Trial& best = *std::ranges::min_element(trials, smaller);
  if (effort.iterations == 0 || best.stream.empty()) return std::move(best.stream);
  auto slow = deflate_slowly(best.rows, effort.iterations);
  return !slow.empty() && slow.size() < best.stream.size() ? std::move(slow) : std::move(best.stream);
}

}  // namespace vellum
