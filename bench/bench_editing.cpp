// Edits of long lists, undo levels and matching to a palette.
#include <benchmark/benchmark.h>

#include "core/edit/copy_chunks.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/move_chunks.h"
#include "core/edit/paste_chunks.h"
#include "core/edit/undo.h"
#include "core/settings.h"
#include "image/builtin_palette.h"
#include "image/to_colors.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::size_t kLong = 100'000;

/// Undoes outside of the measured time.
void undo(benchmark::State& state, DocumentWindow& window) {
  state.PauseTiming();
  undo_pop(window);
  state.ResumeTiming();
}

void push_undo_of_a_thousand_frames(benchmark::State& state) {
  DocumentWindow window = animation(1);
  const ChunkRecord frame = window.list.record(2);
  ChunkRecord large = frame;
  large.data = PictureCreate(1280, 720, nullptr, 24).handle();
  for (std::size_t i = 0; i < 1000; ++i) chunk_list_insert(window.list, window.document, 2, large);
  Host host;
  for (auto _ : state) benchmark::DoNotOptimize(undo_push(window, host));
}
BENCHMARK(push_undo_of_a_thousand_frames)->Unit(benchmark::kMicrosecond);

void insert_into_long_list(benchmark::State& state) {
  DocumentWindow window = long_list(kLong);
  Host host;
  for (auto _ : state) {
    window.document.caret = kLong / 2;
    insert_chunk(window, tag::tEXt, {}, host);
    undo(state, window);
  }
}
BENCHMARK(insert_into_long_list)->Unit(benchmark::kMillisecond);

void delete_every_second_of_long_list(benchmark::State& state) {
  DocumentWindow window = long_list(kLong);
  for (std::size_t i = 0; i < window.list.size(); i += 2) window.list.select(i, true);
  Host host;
  for (auto _ : state) {
    delete_selected(window, host);
    undo(state, window);
  }
}
BENCHMARK(delete_every_second_of_long_list)->Unit(benchmark::kMillisecond);

void move_a_row_of_long_list(benchmark::State& state) {
  DocumentWindow window = long_list(kLong);
  window.document.caret = kLong / 2;
  Host host;
  for (auto _ : state) {
    move_rows(window, true, host);
    undo(state, window);
  }
}
BENCHMARK(move_a_row_of_long_list)->Unit(benchmark::kMillisecond);

/// Linear in what is pasted: four times the rows take four times as long.
void paste_into_long_list(benchmark::State& state) {
  DocumentWindow window = long_list(kLong);
  Host host;
  for (std::int64_t i = 1; i <= state.range(0); ++i) window.list.select(static_cast<std::size_t>(i), true);
  const auto copied = copy_selected(window, host);
  window.document.caret = kLong / 2;
  for (auto _ : state) {
    paste_block(window, copied->block, host);
    undo(state, window);
  }
}
BENCHMARK(paste_into_long_list)->Arg(10'000)->Arg(40'000)->Unit(benchmark::kMillisecond);

void match_to_palette(benchmark::State& state) {
  const Picture picture = photograph(1280, 720, 24);
  Palette palette;
  const std::uint32_t colors = BuiltInPalette(&palette, nullptr, 5);
  settings::FastRemap = static_cast<int>(state.range(1));
  for (auto _ : state) benchmark::DoNotOptimize(to_colors(picture, {palette, colors}, state.range(0) != 0));
  settings::FastRemap = 0;
  state.SetBytesProcessed(state.iterations() * 1280 * 720 * 3);
}
BENCHMARK(match_to_palette)
    ->ArgNames({"dither", "fast"})
    ->ArgsProduct({{0, 1}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vellum::bench
