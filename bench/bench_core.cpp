// Lists, copies and layouts: what costs no pixels must cost next to nothing.
#include <benchmark/benchmark.h>

#include "core/model/chunk_layout.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::size_t kLong = 100'000;

void copy_record(benchmark::State& state) {
  const DocumentWindow window = animation(1);
  for (auto _ : state) {
    ChunkRecord copy;
    chunk_duplicate(copy, window.list.record(2));
    benchmark::DoNotOptimize(copy.data.data());
  }
}
BENCHMARK(copy_record);

void duplicate_animation(benchmark::State& state) {
  const DocumentWindow window = animation(120);
  for (auto _ : state) benchmark::DoNotOptimize(duplicate_document(window, "Duplicate_").list.size());
}
BENCHMARK(duplicate_animation)->Unit(benchmark::kMicrosecond);

void copy_long_list(benchmark::State& state) {
  const DocumentWindow window = long_list(kLong);
  for (auto _ : state) {
    const ChunkList copy = window.list;
    benchmark::DoNotOptimize(copy.size());
  }
}
BENCHMARK(copy_long_list)->Unit(benchmark::kMillisecond);

void make_long_list(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(long_list(kLong).list.size());
}
BENCHMARK(make_long_list)->Unit(benchmark::kMillisecond);

void close_change_of_long_list(benchmark::State& state) {
  DocumentWindow window = long_list(kLong);
  for (auto _ : state) chunk_list_close_change(window.list, window.document);
}
BENCHMARK(close_change_of_long_list)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vellum::bench
