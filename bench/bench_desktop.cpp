// Painting the rows of a chunk list with thumbnails: what one screen costs while a list is scrolled.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <QApplication>
#include <QImage>
#include <QScrollBar>

#include "base/settings.h"
#include "core/files/open_document.h"
#include "core/model/chunk_layout.h"
#include "core/model/tags.h"
#include "shell/list/chunk_list_view.h"
#include "stored_file.h"

namespace vellum {
namespace {

constexpr std::uint32_t kWidth = 640, kHeight = 480;
constexpr std::size_t kFrames = 1000, kEntries = 100'000;
constexpr QSize kWideScreen(1366, 700);
constexpr int kScreenWidth = 420, kScreenHeight = 900, kScrollStep = 48;

Picture noisy_picture(std::uint32_t seed) {
  Picture picture = PictureCreate(kWidth, kHeight, nullptr, 24);
  for (std::uint32_t y = 0; y < kHeight; ++y)
    for (std::uint32_t x = 0; x < kWidth; ++x)
      PicturePutPixel(picture, x, y, make_colour(x + seed, y * 3, x * y + seed, 255));
  return picture;
}

ChunkRecord image(const Picture& picture) {
  ChunkRecord record;
  record.tag = tag::IDAT;
  record.data = picture.handle();
  record.frameControl.frameWidth = kWidth;
  record.frameControl.frameHeight = kHeight;
  return record;
}

/// A thousand frames, a few pictures: what a record holds is shared, what is drawn is not.
DocumentWindow long_animation() {
  std::vector<Picture> pictures;
  for (std::uint32_t i = 0; i < 8; ++i) pictures.push_back(noisy_picture(i));
  DocumentWindow window;
  window.document.kind = DocumentKind::APNG;
  window.document.thumbScale = 5;
  ChunkRecord header;
  header.tag = tag::IHDR;
  header.width = kWidth, header.height = kHeight, header.bitDepth = 8, header.colorType = 2;
  chunk_list_append(window.list, window.document, header);
  for (std::size_t i = 0; i < kFrames; ++i)
    chunk_list_append(window.list, window.document, image(pictures[i % pictures.size()]));
  chunk_list_close_change(window.list, window.document);
  return window;
}

/// One screen after the other, down the list; `seen` begins with thumbnails that were made before.
void scroll(benchmark::State& state, DocumentWindow window, bool seen) {
  ThumbnailCache cache(qsizetype{1} << 30);
  ChunkListView view(window, cache);
  view.resize(kScreenWidth, kScreenHeight);
  view.show();
  QImage screen(view.size(), QImage::Format_RGB32);
  QScrollBar* bar = view.verticalScrollBar();
  const auto draw = [&] {
    bar->setValue(bar->value() >= bar->maximum() ? 0 : bar->value() + kScrollStep);
    view.viewport()->render(&screen);
  };
  if (seen) do
      draw();
    while (bar->value() != 0);
  for (auto _ : state) draw();
  state.counters["frames/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

/// Frames without pictures of their own, texts and colors: what facts are told of.
DocumentWindow long_list() {
  DocumentWindow window = long_animation();
  const Picture picture = noisy_picture(1);
  for (std::size_t i = window.list.size(); i < kEntries; ++i) {
    ChunkRecord record = image(picture);
    record.frameControl.xOffset = static_cast<std::uint32_t>(i % 100);
    if (i % 3 == 1) {
      record = {};
      record.tag = tag::tEXt;
      const std::string text =
          "Title" + std::string(1, '\0') + "A text of some length, number " + std::to_string(i);
      put_payload(record, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    } else if (i % 3 == 2) {
      record = {};
      record.tag = tag::cHRM;
      put_payload(record, std::vector<std::uint8_t>(32, 1));
    }
    chunk_list_append(window.list, window.document, record);
  }
  window.document.thumbScale = 0;
  chunk_list_close_change(window.list, window.document);
  return window;
}

/// A screen of rows of text and facts after the other, down 100,000 entries.
void scroll_facts(benchmark::State& state) {
  DocumentWindow window = long_list();
  ThumbnailCache cache(qsizetype{1} << 30);
  ChunkListView view(window, cache);
  view.resize(kWideScreen);
  view.show();
  QImage screen(view.size(), QImage::Format_RGB32);
  QScrollBar* bar = view.verticalScrollBar();
  for (auto _ : state) {
    bar->setValue(bar->value() >= bar->maximum() ? 0 : bar->value() + view.viewport()->height());
    view.viewport()->render(&screen);
  }
  state.counters["rows/screen"] = view.viewport()->height() / 24.0;
  state.counters["frames/s"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

/// Looking for a text in all of them.
void find_in_rows(benchmark::State& state) {
  DocumentWindow window = long_list();
  RowSearch search(window);
  for (auto _ : state) {
    search.look_for({});
    search.look_for(QStringLiteral("number 777"));
  }
  state.counters["rows"] = static_cast<double>(window.list.size());
}

void scroll_new_rows(benchmark::State& state) { scroll(state, long_animation(), false); }
void scroll_seen_rows(benchmark::State& state) { scroll(state, long_animation(), true); }

/// Rows that nobody has seen yet of a file whose frames are unpacked when they are looked at.
void scroll_20000_stored_frames(benchmark::State& state) {
  settings::PictureMemoryMegabytes = 256;
  DocumentWindow window;
  Host host;
  if (!open_document(window, bench::stored_file(20'000, 1280, 720), host)) state.SkipWithError("not opened");
  window.document.thumbScale = 5;
  chunk_list_close_change(window.list, window.document);
  scroll(state, std::move(window), false);
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_MB"] = static_cast<double>(usage.ru_maxrss) / 1024;
  settings::PictureMemoryMegabytes = 0;
}

BENCHMARK(scroll_new_rows)->Unit(benchmark::kMillisecond);
BENCHMARK(scroll_seen_rows)->Unit(benchmark::kMillisecond);
BENCHMARK(scroll_20000_stored_frames)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(scroll_facts)->Unit(benchmark::kMillisecond);
BENCHMARK(find_in_rows)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vellum

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
