// Frames of generators before anything is packed, beside a copy of the same bytes.
#include <benchmark/benchmark.h>

#include "generators/generator.h"
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

}  // namespace
}  // namespace vellum::bench
