#include "generators/generator.h"

#include <algorithm>
#include <new>

#include "core/build/convert_records.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/resample.h"

namespace vellum {
namespace {

bool tell(Host& host, StringId id, const GeneratorInputs& inputs) {
  std::string reason = host.take_fault();
  for (const HeldPicture& picture : inputs.pictures)
    if (std::string lost = held_picture_fault(picture); !lost.empty()) {
      id = StringId::ErrorReadingFile;
      reason = std::move(lost);
      break;
    }
  if (!host.stopped()) host.show(id, {}, std::move(reason));
  return false;
}

bool has_inputs(const Generator& generator, const GeneratorInputs& inputs) {
  const std::size_t least = generator.input == GeneratorInput::None ? 0 : 1;
  return inputs.pictures.size() >= least && std::ranges::all_of(inputs.pictures, [](const HeldPicture& held) {
           return static_cast<bool>(held.picture());
         });
}

/// What is wrong with the values first, those of single pictures behind the common ones.
std::optional<FieldFault> fault_in(const Generator& generator, const FieldValues& values,
                                   const GeneratorInputs& inputs) {
  if (auto fault = check_values(generator.parameters, values, {})) return fault;
  for (const FieldValues& own : inputs.own)
    for (const char* name : generator.ownFields)
      if (const FieldValue* value = own.find(name))
        if (auto fault = check_field(*find_field(generator.parameters.fields, name), *value)) return fault;
  return std::nullopt;
}

/// Each pixel as the mean of 4 x 4 that lie evenly in its part of a much larger picture of 24 or 32 bits: at
/// this size nobody sees the others, and a photograph costs a tenth of its decoding.
Picture sampled(const Picture& picture, std::uint32_t width, std::uint32_t height) {
  constexpr std::uint32_t kSamples = 4;
  const std::size_t bytes = picture.bits() / 8;
  Picture result = PictureCreate(width, height, nullptr, picture.bits());
  const EditRows rows(result);
  if (!rows) return {};
  const auto place = [](std::uint64_t sample, std::uint32_t from, std::uint32_t to) {
    return static_cast<std::uint32_t>((2 * sample + 1) * from / (2 * kSamples * to));
  };
  std::vector<std::size_t> columns(std::size_t{width} * kSamples);
  for (std::size_t i = 0; i < columns.size(); ++i) columns[i] = bytes * place(i, picture.width(), width);
  for_each_row(height, std::size_t{width} * 256, [&](std::uint32_t y) {
    const std::uint8_t* in[kSamples];
    for (std::uint32_t i = 0; i < kSamples; ++i)
      in[i] = picture.row(place(std::uint64_t{y} * kSamples + i, picture.height(), height));
    std::uint8_t* out = rows[y];
    for (std::uint32_t x = 0; x < width; ++x, out += bytes) {
      std::uint32_t sums[3] = {}, weights = 0;
      for (const std::uint8_t* row : in)
        for (std::uint32_t i = 0; i < kSamples; ++i) {
          const std::uint8_t* pixel = row + columns[std::size_t{x} * kSamples + i];
          const std::uint32_t weight = bytes == 4 ? pixel[3] : 1;
          for (int c = 0; c < 3; ++c) sums[c] += pixel[c] * weight;
          weights += weight;
        }
      for (int c = 0; c < 3 && weights != 0; ++c)
        out[c] = static_cast<std::uint8_t>((sums[c] + weights / 2) / weights);
      if (bytes == 4) out[3] = static_cast<std::uint8_t>((weights + 8) / (kSamples * kSamples));
    }
  });
  return result;
}

}  // namespace

const Generator* find_generator(std::string_view name) {
  for (const Generator* row : generator_table())
    if (row->parameters.name == name) return row;
  return nullptr;
}

const Generator* find_generator(int command) {
  for (const Generator* row : generator_table())
    if (row->parameters.command == command) return row;
  return nullptr;
}

Picture reduced_to_fit(const Picture& picture, std::uint32_t side) {
  const std::uint32_t longer = std::max(picture.width(), picture.height());
  if (longer <= side) return picture;
  const auto scaled = [&](std::uint32_t length, std::uint32_t to) {
    return std::max(1u, static_cast<std::uint32_t>((std::uint64_t{length} * to + longer / 2) / longer));
  };
  const Picture deep = picture.bits() >= 24 ? picture : PictureToTrueColor(picture);
  const Picture coarse = longer > 4 * side ? sampled(deep, scaled(deep.width(), side + side / 2),
                                                     scaled(deep.height(), side + side / 2))
                                           : deep;
  return PictureResample(coarse, scaled(picture.width(), side), scaled(picture.height(), side),
                         ResampleFilter::Automatic);
}

std::optional<FrameStream> generated_frames(const Generator& generator, const FieldValues& values,
                                            const GeneratorInputs& inputs, Host& host) try {
  if (const auto fault = fault_in(generator, values, inputs)) {
    if (host.message) host.message({fault->id, {}, fault->text, {}, nullptr});
    return std::nullopt;
  }
  if (!has_inputs(generator, inputs)) {
    tell(host, StringId::ErrorReadingFile, inputs);
    return std::nullopt;
  }
  auto stream = generator.make(values, inputs, host);
  if (!stream) {
    tell(host, generator.failure, inputs);
    return std::nullopt;
  }
  stream->plays = generator.loop && values.number(generator.loop) == 0 ? 1 : 0;
  return stream;
} catch (const std::bad_alloc&) {
  tell(host, StringId::MemoryError, inputs);
  return std::nullopt;
}

bool generate(const Generator& generator, const FieldValues& values, const GeneratorInputs& inputs,
              DocumentKind kind, DocumentWindow& window, Host& host) try {
  GeneratorInputs taken = inputs;
  taken.kind = kind;
  const auto stream = generated_frames(generator, values, taken, host);
  if (!stream) return false;
  const bool png = kind == DocumentKind::PING || kind == DocumentKind::APNG;
  if (png && generator.still && generator.still(values)) {
    if (host.stopped()) return false;
    return make_still(window, {}, stream->frame(0).picture) || tell(host, generator.failure, inputs);
  }
  return build_from_stream(window, *stream, kind, host) || tell(host, generator.failure, inputs);
} catch (const std::bad_alloc&) {
  return tell(host, StringId::MemoryError, inputs);
}

}  // namespace vellum
