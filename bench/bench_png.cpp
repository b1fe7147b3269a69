// Reading and writing beside libpng and beside a copy of the same bytes. Bytes per second are those of the
// pictures.
#include <benchmark/benchmark.h>
#include <png.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "core/files/read_png.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::int64_t kStillBytes = 4000 * 3000 * 3;
constexpr std::int64_t kAnimationBytes = std::int64_t{120} * 640 * 480 * 4;

std::filesystem::path scratch() {
  return std::filesystem::temp_directory_path() / ("vellum-bench-out-" + std::to_string(getpid()) + ".png");
}

void copy_bytes(benchmark::State& state) {
  const std::vector<std::uint8_t> from(kStillBytes, 1);
  std::vector<std::uint8_t> to(kStillBytes);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::DoNotOptimize(to.data());
  }
  state.SetBytesProcessed(state.iterations() * kStillBytes);
}
BENCHMARK(copy_bytes)->Unit(benchmark::kMillisecond);

struct Source {
  std::span<const std::uint8_t> rest;
};

void supply(png_structp png, png_bytep data, png_size_t length) {
  auto* source = static_cast<Source*>(png_get_io_ptr(png));
  if (source->rest.size() < length) png_error(png, "end");
  std::memcpy(data, source->rest.data(), length);
  source->rest = source->rest.subspan(length);
}

void read_still_libpng(benchmark::State& state) {
  const auto file = large_still();
  std::vector<std::uint8_t> row(4000 * 3);
  for (auto _ : state) {
    std::vector<std::uint8_t> pixels(kStillBytes);
    Source source{file};
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_read_fn(png, &source, supply);
    png_read_info(png, info);
    png_set_bgr(png);
    for (std::size_t y = 0; y < 3000; ++y) png_read_row(png, &pixels[y * 12000], nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    benchmark::DoNotOptimize(pixels.data());
  }
  state.SetBytesProcessed(state.iterations() * kStillBytes);
}
BENCHMARK(read_still_libpng)->Unit(benchmark::kMillisecond);

void read_document(benchmark::State& state, std::span<const std::uint8_t> file, std::int64_t bytes) {
  for (auto _ : state) {
    Host host;
    DocumentWindow window;
    if (!read_png(window, file, host)) state.SkipWithError("not read");
    benchmark::DoNotOptimize(window.list.size());
  }
  state.SetBytesProcessed(state.iterations() * bytes);
}

void read_still(benchmark::State& state) { read_document(state, large_still(), kStillBytes); }
BENCHMARK(read_still)->Unit(benchmark::kMillisecond)->UseRealTime();

void read_animation(benchmark::State& state) { read_document(state, animation_file(), kAnimationBytes); }
BENCHMARK(read_animation)->Unit(benchmark::kMillisecond)->UseRealTime();

void write_document(benchmark::State& state, std::span<const std::uint8_t> file, std::int64_t bytes) {
  Host host;
  DocumentWindow window;
  read_png(window, file, host);
  settings::PngCompression = static_cast<int>(state.range(0));
  for (auto _ : state)
    if (!save_document(window, scratch(), host)) state.SkipWithError("not written");
  settings::PngCompression = 9;
  state.counters["file"] = static_cast<double>(std::filesystem::file_size(scratch()));
  std::filesystem::remove(scratch());
  state.SetBytesProcessed(state.iterations() * bytes);
}

void write_still(benchmark::State& state) { write_document(state, large_still(), kStillBytes); }
BENCHMARK(write_still)->Arg(0)->Arg(1)->Arg(6)->Arg(9)->Unit(benchmark::kMillisecond)->UseRealTime();

void write_animation(benchmark::State& state) { write_document(state, animation_file(), kAnimationBytes); }
BENCHMARK(write_animation)->Arg(1)->Arg(6)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vellum::bench
