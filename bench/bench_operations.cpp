// Operations on 120 frames of 640 x 480 with 32 bits, before anything is packed.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstring>
#include <filesystem>

#include "image/graphic_file.h"
#include "operations/operation.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::size_t kFrames = 120;

struct Task {
  const char* name;
  const char* operation;
  std::vector<std::pair<const char*, std::int64_t>> values;
};

const std::vector<Task>& tasks() {
  static const std::vector<Task> all = {
      {"adjust", "adjust", {{"lightness", 20}}},
      {"saturation", "adjust", {{"saturation", 30}}},
      {"levels", "adjust", {{"shadows", 10}, {"highlights", 240}}},
      {"hue", "adjust", {{"hue", 40}}},
      {"balance", "balance", {{"brightness", 20}}},
      {"caption", "caption", {}},
      {"copy", "copy", {{"image", 120}}},
      {"flip", "flip", {{"mode", 0}}},
      {"turn_by_90", "flip", {{"mode", 2}}},
      {"rotate_by_angle", "flip", {{"mode", 5}, {"angle", 30}}},
      {"shear", "flip", {{"mode", 6}}},
      {"frame", "frame", {}},
      {"merge", "merge", {}},
      {"overlay", "overlay", {}},
      {"underlay", "underlay", {}},
      {"reverse", "reverse", {}},
      {"shadow", "shadow", {}},
      {"social", "social", {}},
      {"text", "text", {}},
      {"scrolling_text", "text", {{"motion", 1}, {"outline", 1}, {"shadow", 1}}},
      {"tile", "tile", {{"width", 1280}, {"height", 480}}},
      {"trim", "trim", {}},
      {"watermark", "watermark", {}},
      {"position_marks", "watermark", {{"positionOnly", 1}}}};
  return all;
}

/// Milliseconds of the processors that a run takes in the program and in the system, which clears fresh pages
/// for it: what that costs depends on the machine.
class ProcessorTime {
 public:
  ProcessorTime() { getrusage(RUSAGE_SELF, &begin_); }
  void count(benchmark::State& state) const {
    rusage now;
    getrusage(RUSAGE_SELF, &now);
    const auto runs = static_cast<double>(state.iterations());
    state.counters["user"] = milliseconds(begin_.ru_utime, now.ru_utime) / runs;
    state.counters["system"] = milliseconds(begin_.ru_stime, now.ru_stime) / runs;
  }

 private:
  static double milliseconds(const timeval& from, const timeval& to) {
    return 1e3 * static_cast<double>(to.tv_sec - from.tv_sec) +
           1e-3 * static_cast<double>(to.tv_usec - from.tv_usec);
  }
  rusage begin_;
};

/// A file of one frame of 320 x 240.
std::string other_file() {
  static const std::string path = [] {
    const auto name = std::filesystem::temp_directory_path() / "vellum_bench_other.png";
    GraphicFileWrite(name.string(), photograph(320, 240, 32));
    return name.string();
  }();
  return path;
}

void run_task(benchmark::State& state, const Task& task) {
  const Operation& operation = *find_operation(task.operation);
  const DocumentWindow source = animation(kFrames);
  FieldValues values = initial_values(fields_for(operation.parameters, source));
  for (const Field& field : operation.parameters.fields)
    if (field.name == std::string_view("text") && field.type == FieldType::Text)
      values.set("text", std::string("Feeding time"));
  if (find_field(operation.parameters.fields, "with")) values.set("with", other_file());
  for (const auto& [name, value] : task.values) values.set(name, value);
  Host host;
  const ProcessorTime begin;
  for (auto _ : state) {
    DocumentWindow window = source;
    if (!run_operation(operation, window, values, all_frames(kFrames), host)) state.SkipWithError("refused");
    benchmark::DoNotOptimize(window);
  }
  begin.count(state);
}

/// What all are measured against: a plain copy of the same pixels.
void plain_copy(benchmark::State& state) {
  const std::size_t bytes = std::size_t{kFrames} * 640 * 480 * 4;
  const std::vector<std::uint8_t> from(bytes, 1);
  const ProcessorTime begin;
  for (auto _ : state) {
    std::vector<std::uint8_t> to(bytes);
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::DoNotOptimize(to);
  }
  begin.count(state);
}
BENCHMARK(plain_copy)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();

const bool kRegistered = [] {
  for (const Task& task : tasks())
    benchmark::RegisterBenchmark(("operation/" + std::string(task.name)).c_str(), run_task, task)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->MeasureProcessCPUTime();
  return true;
}();

}  // namespace
}  // namespace vellum::bench
