// Pictures as they are stored: what saving and opening cost when nobody changed a pixel. Peaks are those of
// the command-line tool.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "base/byte_order.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/record_picture.h"
#include "image/chunk_stream.h"
#include "image/png_encode.h"
#include "workload.h"

namespace vellum::bench {
namespace {

namespace fs = std::filesystem;

struct Scratch {
  fs::path path = fs::temp_directory_path() / ("vellum_bench_stored." + std::to_string(getpid()));
  Scratch() { fs::create_directories(path); }
  ~Scratch() { fs::remove_all(path); }
};

const fs::path& scratch() {
  static const Scratch folder;
  return folder.path;
}

/// An animated PNG of `count` frames of 24 bits with a text, made of some streams that take turns.
fs::path animation_file(std::uint32_t count, std::uint32_t width, std::uint32_t height) {
  const fs::path path = scratch() / (std::to_string(count) + ".png");
  if (fs::exists(path)) return path;
  PngHeader header;
  header.width = width;
  header.height = height;
  std::vector<std::vector<std::uint8_t>> streams;
  for (std::uint32_t i = 0; i < 4; ++i) {
    Picture picture = PictureCreateFilled(width, height, make_colour(40 * i, 90, 200));
    for (std::uint32_t k = 0; k < 3000; ++k)
      PicturePutPixel(picture, k * 131 % width, k * (i + 7) % height, k * 0x030507);
    streams.push_back(png_encode(header, picture, 6));
  }
  SafeFile file(path);
  const Sink sink = file_sink(file);
  sink.write(kPngSignature);
  write_chunk(sink, tag::IHDR, png_header_payload(header));
  std::uint8_t control[26] = {};
  write_be32(control, count);
  write_chunk(sink, tag::acTL, std::span(control, 8));
  constexpr std::string_view kText{"Comment\0text", 12};
  write_chunk(sink, tag::tEXt, std::span(reinterpret_cast<const std::uint8_t*>(kText.data()), kText.size()));
  std::uint32_t sequence = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::ranges::fill(control, std::uint8_t{0});
    write_be32(control, sequence++);
    write_be32(control + 4, width);
    write_be32(control + 8, height);
    control[21] = control[23] = 100;
    write_chunk(sink, tag::fcTL, control);
    std::vector<std::uint8_t> data(i == 0 ? 0 : 4);
    if (i != 0) write_be32(data.data(), sequence++);
    data.insert(data.end(), streams[i % 4].begin(), streams[i % 4].end());
    write_chunk(sink, i == 0 ? tag::IDAT : tag::fdAT, data);
  }
  write_chunk(sink, tag::IEND, {});
  sink.finish();
  return path;
}

/// Peak memory of the tool beside this program that opens and lists the file, in megabytes; 0 where it fails.
double peak_of_opening(const fs::path& path, const std::string& setting) {
  const std::string tool = (fs::read_symlink("/proc/self/exe").parent_path() / "vellum").string();
  const pid_t child = fork();
  if (child == 0) {
    if (!std::freopen("/dev/null", "w", stdout)) _exit(1);
    execl(tool.c_str(), "vellum", "--quiet", "--set", setting.c_str(), "list", path.c_str(), nullptr);
    _exit(1);
  }
  int status = 1;
  struct rusage usage {};
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) return 0;
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

void open_in_the_tool(benchmark::State& state, const fs::path& path, double unpacked) {
  const std::string budget = "PictureMemoryMegabytes=" + std::to_string(state.range(0));
  double peak = 0;
  for (auto _ : state)
    if ((peak = peak_of_opening(path, budget)) == 0) state.SkipWithError("not opened");
  state.counters["peak_MB"] = peak;
  state.counters["file_MB"] = static_cast<double>(fs::file_size(path)) / 1e6;
  state.counters["unpacked_MB"] = unpacked / 1e6;
}

void open_20000_frames(benchmark::State& state) {
  open_in_the_tool(state, animation_file(20'000, 1280, 720), 20'000.0 * 1280 * 720 * 3);
}
BENCHMARK(open_20000_frames)->Arg(0)->Arg(256)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void hold_120_frames_open(benchmark::State& state) {
  open_in_the_tool(state, animation_file(120, 640, 480), 120.0 * 640 * 480 * 3);
}
BENCHMARK(hold_120_frames_open)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

bool opened(DocumentWindow& window, const fs::path& path) {
  Host host;
  return open_document(window, path, host);
}

void save_500_frames_behind_an_edited_text(benchmark::State& state) {
  const fs::path path = animation_file(500, 640, 480);
  DocumentWindow window;
  if (!opened(window, path)) state.SkipWithError("not opened");
  const std::size_t text = chunk_find_first(window.list, tag::tEXt);
  ChunkRecord record = window.list.record(text);
  record.data.edit()[record.size - 1] ^= 1;
  chunk_list_put(window.list, text, record);
  Host host;
  for (auto _ : state)
    if (!save_document(window, scratch() / "saved.png", host)) state.SkipWithError("not saved");
}
BENCHMARK(save_500_frames_behind_an_edited_text)->Unit(benchmark::kMillisecond)->UseRealTime();

/// What the disk alone takes: the same bytes by the same writer.
void copy_500_frames(benchmark::State& state) {
  const fs::path path = animation_file(500, 640, 480);
  for (auto _ : state) {
    std::string reason;
    const auto content = read_file(path, reason, std::uint64_t{1} << 32);
    SafeFile file(scratch() / "copied.png");
    if (!content || !file.write(*content) || !file.commit()) state.SkipWithError("not copied");
  }
}
BENCHMARK(copy_500_frames)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vellum::bench
