// Sizes and colors of large pictures, beside a read of the same bytes.
#include <benchmark/benchmark.h>

#include <numeric>

#include "image/quantize.h"
#include "image/resample.h"
#include "image/settings.h"
#include "image/to_colors.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::uint32_t kWidth = 4000, kHeight = 3000;
constexpr std::int64_t kBytes = std::int64_t{kWidth} * kHeight * 3;

const Picture& large_picture() {
  static const Picture picture = photograph(kWidth, kHeight, 24);
  return picture;
}

void read_pixels(benchmark::State& state) {
  const auto bytes = large_picture().handle().bytes();
  for (auto _ : state)
    benchmark::DoNotOptimize(std::accumulate(bytes.begin(), bytes.end(), std::uint32_t{0}));
  state.SetBytesProcessed(state.iterations() * kBytes);
}
BENCHMARK(read_pixels)->Unit(benchmark::kMillisecond);

void count_colors(benchmark::State& state) {
  for (auto _ : state) {
    ColorOctree octree;
    octree.add(large_picture());
    benchmark::DoNotOptimize(octree);
  }
  state.SetBytesProcessed(state.iterations() * kBytes);
}
BENCHMARK(count_colors)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Arguments: dithered, matched by cells.
void to_256_colors(benchmark::State& state) {
  GivenColors colors{{}, 256};
  QuantizePicture(large_picture(), 256, colors.palette);
  settings::FastRemap = static_cast<int>(state.range(1));
  for (auto _ : state) benchmark::DoNotOptimize(to_colors(large_picture(), colors, state.range(0) != 0));
  settings::FastRemap = 0;
  state.SetBytesProcessed(state.iterations() * kBytes);
}
BENCHMARK(to_256_colors)->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond)->UseRealTime();

/// Arguments: filter, per cent.
void resample(benchmark::State& state) {
  const auto filter = resample_filter_of(static_cast<int>(state.range(0)));
  const auto percent = static_cast<double>(state.range(1));
  for (auto _ : state)
    benchmark::DoNotOptimize(PictureScalePercent(large_picture(), percent, percent, filter));
  state.SetBytesProcessed(state.iterations() * kBytes);
}
BENCHMARK(resample)
    ->ArgsProduct({{static_cast<int>(ResampleFilter::Mitchell), static_cast<int>(ResampleFilter::Lanczos)},
                   {50, 150}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace vellum::bench
