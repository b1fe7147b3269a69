// Pictures as they are stored: what saving and opening cost when nobody changed a pixel. Peaks are those of
// the command-line tool.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/record_picture.h"
#include "stored_file.h"

namespace vellum::bench {
namespace {

namespace fs = std::filesystem;

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
  open_in_the_tool(state, stored_file(20'000, 1280, 720), 20'000.0 * 1280 * 720 * 3);
}
BENCHMARK(open_20000_frames)->Arg(0)->Arg(256)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void hold_120_frames_open(benchmark::State& state) {
  open_in_the_tool(state, stored_file(120, 640, 480), 120.0 * 640 * 480 * 3);
}
BENCHMARK(hold_120_frames_open)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

bool opened(DocumentWindow& window, const fs::path& path) {
  Host host;
  return open_document(window, path, host);
}

void save_500_frames_behind_an_edited_text(benchmark::State& state) {
  const fs::path path = stored_file(500, 640, 480);
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
  const fs::path path = stored_file(500, 640, 480);
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
