// What could grow with the square of a length, at two lengths: the second time is to be four times the first.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "configuration/history.h"
#include "core/files/read_png.h"
#include "image/chunk_stream.h"
#include "image/deflate.h"
#include "image/webp_container.h"
#include "image/webp_service.h"

namespace vellum::bench {
namespace {

namespace fs = std::filesystem;

fs::path scratch() {
  return fs::temp_directory_path() / ("vellum-bench-lengths-" + std::to_string(getpid()));
}

void read_empty_image_chunks(benchmark::State& state) {
  constexpr std::array<std::uint8_t, 13> header = {0, 0, 0, 1, 0, 0, 0, 1, 8, 0, 0, 0, 0};
  constexpr std::array<std::uint8_t, 2> row = {0, 0};
  std::vector<std::uint8_t> file(kPngSignature.begin(), kPngSignature.end());
  append_chunk(file, tag::IHDR, header);
  for (std::int64_t i = 0; i < state.range(0); ++i) append_chunk(file, tag::IDAT, {});
  append_chunk(file, tag::IDAT, deflate_bytes(row, 1));
  append_chunk(file, tag::IEND, {});
  for (auto _ : state) {
    DocumentWindow window;
    Host host;
    if (!read_png(window, file, host)) state.SkipWithError("not read");
  }
}
BENCHMARK(read_empty_image_chunks)->Arg(50'000)->Arg(200'000)->Unit(benchmark::kMillisecond);

/// All lines are equal, so that the list never fills.
void load_history_lines(benchmark::State& state) {
  {
    std::ofstream file(scratch());
    for (std::int64_t i = 0; i < state.range(0); ++i) file << "/a/b/c/d.png,1\n";
  }
  for (auto _ : state) benchmark::DoNotOptimize(load_file_history(scratch()));
  fs::remove(scratch());
}
BENCHMARK(load_history_lines)->Arg(10'000)->Arg(40'000)->Unit(benchmark::kMillisecond);

void put_frames_of_a_webp_together(benchmark::State& state) {
  const auto still = encode_webp_still(PictureCreateFilled(1, 1, 0), true, 0);
  WebpContents contents{.width = 1, .height = 1, .animated = true, .frames = {}, .extras = {}};
  contents.frames.assign(static_cast<std::size_t>(state.range(0)), {.still = still, .width = 1, .height = 1});
  for (auto _ : state) {
    std::uint64_t bytes = 0;
    if (!write_webp_file(contents, counting_sink(bytes))) state.SkipWithError("not written");
  }
}
BENCHMARK(put_frames_of_a_webp_together)->Arg(25'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vellum::bench
