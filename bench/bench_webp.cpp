// A WebP animation beside the library's own animation decoder and encoder. The frames of the first file are
// whole photographs that move, those of the second a still picture in which a small part changes.
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <webp/demux.h>
#include <webp/encode.h>
#include <webp/mux.h>

#include <filesystem>

#include "base/file.h"
#include "core/chunks/new_chunk.h"
#include "core/files/read_webp.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::uint32_t kWidth = 1280, kHeight = 720, kFrames = 60;
constexpr std::int64_t kBytes = std::int64_t{kWidth} * kHeight * kFrames * 4;

std::filesystem::path scratch() {
  return std::filesystem::temp_directory_path() / ("vellum-bench-out-" + std::to_string(getpid()) + ".webp");
}

enum Motion { kWholePictures, kSmallChanges };

Picture frame_of(const Picture& ground, std::uint32_t number, Motion motion) {
  const auto step = static_cast<std::int32_t>(number);
  if (motion == kWholePictures)
    return PictureCrop(ground, {step * 4, step * 2, step * 4 + int{kWidth}, step * 2 + int{kHeight}});
  Picture frame = PictureCrop(ground, {0, 0, kWidth, kHeight});
  PictureFillRect(frame, 100 + step * 8, 200 + step, 90, 60, 0xFF3050C0);
  return frame;
}

DocumentWindow webp_document(Motion motion, std::uint32_t frames) {
  DocumentWindow window;
  window.document.kind = DocumentKind::WEBP;
  ChunkRecord record;
  new_chunk(window, record, tag::WEBH);
  chunk_list_append(window.list, window.document, record);
  const Picture ground = PictureToTrueColorAlpha(photograph(kWidth + 4 * kFrames, kHeight + 2 * kFrames, 24));
  for (std::uint32_t i = 0; i < frames; ++i) {
    NewChunkArgument argument;
    argument.picture = frame_of(ground, i, motion).handle();
    new_chunk(window, record, tag::WEBI, argument);
    chunk_list_append(window.list, window.document, record);
  }
  chunk_list_close_change(window.list, window.document);
  return window;
}

std::vector<std::uint8_t> saved(DocumentWindow window, int lossless) {
  Host host;
  settings::WEBPLossless = lossless;
  save_document(window, scratch(), host);
  settings::WEBPLossless = 0;
  std::string reason;
  auto bytes = read_file(scratch(), reason, 1u << 30);
  std::filesystem::remove(scratch());
  const std::span<const std::uint8_t> whole = *bytes;
  return {whole.begin(), whole.end()};
}

const std::vector<std::uint8_t>& webp_file(std::int64_t which) {
  static const std::vector<std::uint8_t> files[] = {saved(webp_document(kWholePictures, kFrames), 0),
                                                    saved(webp_document(kSmallChanges, kFrames), 0),
                                                    saved(webp_document(kSmallChanges, kFrames), 1)};
  return files[which];
}

void read_webp_library(benchmark::State& state) {
  const auto& file = webp_file(state.range(0));
  const WebPData data{file.data(), file.size()};
  for (auto _ : state) {
    WebPAnimDecoder* decoder = WebPAnimDecoderNew(&data, nullptr);
    std::uint8_t* pixels = nullptr;
    int end = 0;
    while (WebPAnimDecoderGetNext(decoder, &pixels, &end)) benchmark::DoNotOptimize(pixels);
    WebPAnimDecoderDelete(decoder);
  }
  state.SetBytesProcessed(state.iterations() * kBytes);
}
BENCHMARK(read_webp_library)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

void read_webp_animation(benchmark::State& state) {
  const auto& file = webp_file(state.range(0));
  for (auto _ : state) {
    Host host;
    DocumentWindow window;
    if (!read_webp(window, file, host)) state.SkipWithError("not read");
    benchmark::DoNotOptimize(window.list.size());
  }
  state.SetBytesProcessed(state.iterations() * kBytes);
}
BENCHMARK(read_webp_animation)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

constexpr std::uint32_t kWritten = 16;  // frames; the encoder is slow

void add_frame(WebPAnimEncoder* encoder, const Picture& picture, int time, const WebPConfig& config) {
  WebPPicture frame;
  WebPPictureInit(&frame);
  frame.use_argb = 1;
  frame.width = int{kWidth};
  frame.height = int{kHeight};
  WebPPictureImportBGRA(&frame, picture.row(0), -static_cast<int>(picture.stride()));
  WebPAnimEncoderAdd(encoder, &frame, time, &config);
  WebPPictureFree(&frame);
}

/// Motion, lossless. Whole photographs without loss take the library half a minute.
void cases_of_writing(benchmark::internal::Benchmark* cases) {
  cases->Args({kWholePictures, 0})->Args({kSmallChanges, 0})->Args({kSmallChanges, 1});
}

void write_webp_library(benchmark::State& state) {
  const DocumentWindow window = webp_document(Motion(state.range(0)), kWritten);
  std::size_t size = 0;
  for (auto _ : state) {
    WebPAnimEncoderOptions options;
    WebPAnimEncoderOptionsInit(&options);
    WebPConfig config;
    WebPConfigInit(&config);
    config.lossless = config.exact = static_cast<int>(state.range(1));
    config.quality = config.lossless ? 100 : 75;
    WebPAnimEncoder* encoder = WebPAnimEncoderNew(int{kWidth}, int{kHeight}, &options);
    for (std::uint32_t i = 0; i < kWritten; ++i)
      add_frame(encoder, picture_of(window.list.record(i + 1)), static_cast<int>(i * 10), config);
    WebPAnimEncoderAdd(encoder, nullptr, kWritten * 10, nullptr);
    WebPData file{};
    WebPAnimEncoderAssemble(encoder, &file);
    size = file.size;
    WebPDataClear(&file);
    WebPAnimEncoderDelete(encoder);
  }
  state.counters["file"] = static_cast<double>(size);
}
BENCHMARK(write_webp_library)->Apply(cases_of_writing)->Unit(benchmark::kMillisecond)->UseRealTime();

void write_webp_animation(benchmark::State& state) {
  DocumentWindow window = webp_document(Motion(state.range(0)), kWritten);
  Host host;
  settings::WEBPLossless = static_cast<int>(state.range(1));
  for (auto _ : state)
    if (!save_document(window, scratch(), host)) state.SkipWithError("not written");
  settings::WEBPLossless = 0;
  state.counters["file"] = static_cast<double>(std::filesystem::file_size(scratch()));
  std::filesystem::remove(scratch());
}
BENCHMARK(write_webp_animation)->Apply(cases_of_writing)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vellum::bench
