// Animations of picture files: the wizard beside a plain build of the same files.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include "base/parallel.h"
#include "generators/wizard.h"
#include "image/graphic_file.h"
#include "image/settings.h"
#include "operations/build_stills.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::size_t kFiles = 120;

/// PNG files of 640 x 480 in a folder that goes with the object.
class PictureFiles {
 public:
  PictureFiles()
      : folder_(std::filesystem::temp_directory_path() / ("vellum-bench-" + std::to_string(getpid()))) {
    std::filesystem::create_directory(folder_);
    Picture picture = photograph(640, 480, 24);
    const int level = std::exchange(settings::PngCompression, 1);
    for (std::size_t i = 0; i < kFiles; ++i) {
      PicturePutPixel(picture, static_cast<std::int64_t>(i), 7, 0xFFFFFF);
      files.push_back(folder_ / (std::to_string(i) + ".png"));
      GraphicFileWrite(files.back().string(), picture);
    }
    settings::PngCompression = level;
  }
  ~PictureFiles() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  std::vector<std::filesystem::path> files;

 private:
  std::filesystem::path folder_;
};

void build_of_files(benchmark::State& state) {
  const PictureFiles set;
  for (auto _ : state) {
    std::vector<Picture> pictures(kFiles);
    parallel_for(kFiles, [&](std::size_t i) { pictures[i] = read_still(set.files[i]).picture; });
    DocumentWindow window;
    Host host;
    build_from_stills(window, hold_pictures(pictures), {.whole = true}, host);
    benchmark::DoNotOptimize(window.list.size());
  }
}
BENCHMARK(build_of_files)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

/// By the number of the palette choice.
void wizard_of_files(benchmark::State& state) {
  const PictureFiles set;
  FieldValues values = initial_values(kWizard.fields);
  values.set("palette", state.range(0));
  for (auto _ : state) {
    DocumentWindow window;
    Host host;
    build_wizard(set.files, values, DocumentKind::MING, window, host);
    benchmark::DoNotOptimize(window.list.size());
  }
}
BENCHMARK(wizard_of_files)
    ->Arg(kWizardAsIs)
    ->Arg(kWizardTrueColor)
    ->Arg(kWizardMatch)
    ->Arg(kWizardDither)
    ->Arg(kWizardDrawn)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

}  // namespace
}  // namespace vellum::bench
