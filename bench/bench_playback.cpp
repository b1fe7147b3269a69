// Playing: composing frames, painting them, and going far into a long list.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPainter>
#include <chrono>
#include <cstring>

#include "base/settings.h"
#include "core/files/open_document.h"
#include "image/picture_operations.h"
#include "image/png_file.h"
#include "playback/player.h"
#include "shell/viewer/viewer_canvas.h"
#include "stored_file.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::uint32_t kWide = 1280, kHigh = 720;

/// An animated PNG of 1280 x 720, 32 bits, each frame over the one before. `different` pictures take turns.
DocumentWindow large_frames(std::size_t frames, std::size_t different) {
  DocumentWindow window;
  window.document.kind = DocumentKind::APNG;
  ChunkRecord header;
  header.tag = tag::IHDR;
  header.width = kWide;
  header.height = kHigh;
  header.bitDepth = 8;
  header.colorType = 6;
  chunk_list_append(window.list, window.document, header);
  std::vector<ChunkHandle> pictures;
  for (std::size_t i = 0; i < different; ++i) pictures.push_back(photograph(kWide, kHigh, 32).handle());
  for (std::size_t i = 0; i < frames; ++i) {
    ChunkRecord record;
    record.tag = tag::IDAT;
    record.data = pictures[i % different];
    record.frameControl = {0, kWide, kHigh, 0, 0, 1, 60, 0, 1};
    chunk_list_append(window.list, window.document, record);
  }
  return window;
}

/// The peer: the same pixels blended one by one, as the rule says it.
void straight_blend(benchmark::State& state) {
  const Picture source = photograph(kWide, kHigh, 32);
  Picture ground = photograph(kWide, kHigh, 24);
  for (auto _ : state)
    for (std::uint32_t y = 0; y < kHigh; ++y) {
      const std::uint8_t* from = source.row(y);
      std::uint8_t* to = ground.edit_row(y);
      for (std::uint32_t x = 0; x < kWide; ++x, from += 4, to += 3)
        for (int c = 0; c < 3; ++c) to[c] = blend_channel(from[c], to[c], from[3]);
    }
}
BENCHMARK(straight_blend)->Unit(benchmark::kMillisecond)->UseRealTime();

void compose_large_frame(benchmark::State& state) {
  const DocumentWindow window = large_frames(4, 4);
  const ViewValues values = view_values(window.list, window.document);
  CanvasState canvas;
  std::size_t i = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(compose_frame(canvas, values, window.list.record(1 + i++ % 4)));
}
BENCHMARK(compose_large_frame)->Unit(benchmark::kMillisecond)->UseRealTime();

void decode_large_frame(benchmark::State& state) {
  const auto file = encode_png_picture(photograph(kWide, kHigh, 32), 6);
  for (auto _ : state) benchmark::DoNotOptimize(read_png_picture(file));
}
BENCHMARK(decode_large_frame)->Unit(benchmark::kMillisecond)->UseRealTime();

/// What one beat of a viewer costs on a frame that is kept: converted and painted.
void show_cached_frame(benchmark::State& state) {
  ViewerCanvas canvas;
  canvas.resize(kWide, kHigh);
  canvas.show();
  QApplication::processEvents();
  const Picture frames[] = {photograph(kWide, kHigh, 24), photograph(kWide, kHigh, 24)};
  std::size_t i = 0;
  for (auto _ : state) canvas.show_frame(frames[i++ % 2], false);
}
BENCHMARK(show_cached_frame)->Unit(benchmark::kMillisecond)->UseRealTime();

/// A first round: composed, converted and painted. 60 frames a second leave 16.6 ms.
void play_large_frames(benchmark::State& state) {
  const DocumentWindow window = large_frames(60, 4);
  ViewerCanvas canvas;
  canvas.resize(kWide, kHigh);
  canvas.show();
  QApplication::processEvents();
  for (auto _ : state) {
    Player player(window.list, window.document, [] { return 0; });
    player.play();
    for (int i = 0; i < 60; ++i)
      player.tick([&](const ShownFrame& frame) { canvas.show_frame(frame.picture, false); });
  }
  state.counters["a_frame"] = benchmark::Counter(static_cast<double>(state.iterations()) * 60,
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(play_large_frames)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Frames that are unpacked, composed, converted and painted in turn; `worst_ms` is the longest of them.
void play_20000_stored_frames(benchmark::State& state) {
  settings::PictureMemoryMegabytes = 256;
  DocumentWindow window;
  Host host;
  if (!open_document(window, stored_file(20'000, 1280, 720), host)) state.SkipWithError("not opened");
  ViewerCanvas canvas;
  canvas.resize(1280, 720);
  canvas.show();
  QApplication::processEvents();
  Compositor compositor(window.list, window.document);
  double worst = 0;
  for (auto _ : state) {
    const auto begin = std::chrono::steady_clock::now();
    if (const auto frame = compositor.next()) canvas.show_frame(frame->picture, false);
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
    worst = std::max(worst, taken.count());
  }
  state.counters["worst_ms"] = worst;
  settings::PictureMemoryMegabytes = 0;
}
BENCHMARK(play_20000_stored_frames)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Linear: four times the frames take four times as long to come to.
void seek_in_long_list(benchmark::State& state) {
  const auto frames = static_cast<std::size_t>(state.range(0));
  DocumentWindow window = large_frames(1, 1);
  ChunkRecord record;
  chunk_list_get(window.list, 1, record);
  record.data = PictureCreateAlpha(16, 16).handle();
  for (std::size_t i = 1; i < frames; ++i) chunk_list_append(window.list, window.document, record);
  ChunkRecord header;
  chunk_list_get(window.list, 0, header);
  header.width = header.height = 16;
  chunk_list_put(window.list, 0, header);
  for (auto _ : state) {
    Compositor compositor(window.list, window.document);
    for (std::size_t i = 0; i < frames; ++i) compositor.next();
    for (std::size_t i = 0; i < frames; ++i) compositor.step_back(), compositor.next();
  }
}
BENCHMARK(seek_in_long_list)->Arg(5000)->Arg(20'000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vellum::bench
