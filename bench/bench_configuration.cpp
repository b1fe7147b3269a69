// The configuration: both programs load it before they do anything else.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

#include "configuration/config_file.h"
#include "configuration/setting_values.h"

namespace vellum::bench {
namespace {

void load_configuration(benchmark::State& state) {
  const auto path = std::filesystem::temp_directory_path() / "vellum-bench.ini";
  std::ofstream(path) << config_text(0);
  for (auto _ : state) benchmark::DoNotOptimize(config_load(path));
  std::filesystem::remove(path);
}
BENCHMARK(load_configuration)->Unit(benchmark::kMicrosecond);

void make_configuration_text(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(config_text(0).size());
}
BENCHMARK(make_configuration_text)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vellum::bench
