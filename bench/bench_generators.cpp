// Frames of generators before anything is packed, beside a copy of the same bytes.
#include <benchmark/benchmark.h>

#include "generators/generator.h"
#include "image/graphic_file.h"
#include "workload.h"

namespace vellum::bench {
namespace {

constexpr std::uint32_t kWidth = 1280, kHeight = 720;
constexpr std::int64_t kFrameBytes = std::int64_t{kWidth} * kHeight * 3;

/// Arguments: number of the effect. Rates are frames a second, made as builds and previews ask for them.
void transition(benchmark::State& state) {
  const Generator& generator = *find_generator("transition");
  FieldValues values = initial_values(generator.parameters.fields);
  values.set("effect", std::int64_t{state.range(0)});
  values.set("seed", std::int64_t{1});
  GeneratorInputs inputs{{photograph(kWidth, kHeight, 24), photograph(kHeight, kWidth / 2, 24)}};
  inputs.sketch = true;  // no document has to hold all of them
  Host host;
  const auto stream = generated_frames(generator, values, inputs, host);
  std::size_t frame = 0;
  StreamedFrame last;  // held, as a document holds it
  for (auto _ : state) {
    last = stream->frame(frame);
    frame = (frame + 1) % stream->count;
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(state.iterations() * kFrameBytes);
}
BENCHMARK(transition)
    ->ArgName("effect")
    ->DenseRange(0, 22)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void copy_frame(benchmark::State& state) {
  const Picture picture = photograph(kWidth, kHeight, 24);
  for (auto _ : state) benchmark::DoNotOptimize(PictureDuplicate(picture));
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(state.iterations() * kFrameBytes);
}
BENCHMARK(copy_frame)->Unit(benchmark::kMillisecond)->UseRealTime();

/// A picture of a megapixel once around in 24 steps.
void spin(benchmark::State& state) {
  const Generator& generator = *find_generator("spin");
  const GeneratorInputs inputs{{photograph(1000, 1000, 24)}};
  Host host;
  const auto stream = generated_frames(generator, initial_values(generator.parameters.fields), inputs, host);
  for (auto _ : state)
    for (std::size_t frame = 0; frame < stream->count; ++frame)
      benchmark::DoNotOptimize(stream->frame(frame));
}
BENCHMARK(spin)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

FieldValues with(const Generator& generator,
                 std::initializer_list<std::pair<const char*, FieldValue>> given) {
  FieldValues values = initial_values(generator.parameters.fields);
  for (const auto& [field, value] : given) values.set(field, value);
  return values;
}

/// Frames of a banner of about 468 x 60. Arguments: number of the type. Rates are frames a second.
void banner(benchmark::State& state) {
  const Generator& generator = *find_generator("banner");
  const FieldValues values = with(generator, {{"type", std::int64_t{state.range(0)}},
                                              {"text", std::string("Your text here, large")},
                                              {"pointsize", std::int64_t{34}}});
  Host host;
  const auto stream = generated_frames(generator, values, {}, host);
  std::size_t frame = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(stream->frame(frame));
    frame = (frame + 1) % stream->count;
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["width"] = stream->canvas.width;
  state.counters["height"] = stream->canvas.height;
}
BENCHMARK(banner)->ArgName("type")->DenseRange(0, 7)->Unit(benchmark::kMillisecond)->UseRealTime();

/// What a dialog does for a key that was pressed: the stream of its defaults, and its first frame. Arguments:
/// number of the generator in its table.
void preview(benchmark::State& state) {
  const Generator& generator = *generator_table()[static_cast<std::size_t>(state.range(0))];
  GeneratorInputs inputs;
  inputs.sketch = true;
  if (generator.input != GeneratorInput::None) inputs.pictures = {photograph(200, 150, 24)};
  Host host;
  for (auto _ : state) {
    const auto stream = generated_frames(generator, with(generator, {}), inputs, host);
    benchmark::DoNotOptimize(stream->frame(0));
  }
  state.SetLabel(generator.parameters.name);
}
BENCHMARK(preview)->ArgName("row")->DenseRange(0, 7)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Photographs of 12 megapixels out of a file, and as a stack with all its frames.
constexpr int kPhotographs = 8;

std::filesystem::path photograph_file() {
  const auto file = std::filesystem::temp_directory_path() / "vellum-bench-photograph.jpg";
  GraphicFileWrite(file.string(), photograph(4000, 3000, 24));
  return file;
}

void decode_photographs(benchmark::State& state) {
  const auto file = photograph_file();
  Host host;
  for (auto _ : state)
    for (int i = 0; i < kPhotographs; ++i) benchmark::DoNotOptimize(read_picture_file(file, host));
  std::filesystem::remove(file);
}
BENCHMARK(decode_photographs)->Unit(benchmark::kMillisecond)->UseRealTime();

void photo_stack(benchmark::State& state) {
  const auto file = photograph_file();
  const Generator& generator = *find_generator("photostack");
  const FieldValues values = with(generator, {{"seed", std::int64_t{1}}});
  Host host;
  for (auto _ : state) {
    GeneratorInputs inputs;
    for (int i = 0; i < kPhotographs; ++i)
      inputs.pictures.push_back(reduced_to_fit(read_picture_file(file, host), generator.useful(values)));
    const auto stream = generated_frames(generator, values, inputs, host);
    for (std::size_t frame = 0; frame < stream->count; ++frame)
      benchmark::DoNotOptimize(stream->frame(frame));
  }
  std::filesystem::remove(file);
}
BENCHMARK(photo_stack)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vellum::bench
