#include "generators/generator.h"

#include <algorithm>
#include <new>

#include "core/build/convert_records.h"
#include "image/picture_operations.h"
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
  // Means of whole pixels first, which is quick and loses nothing that the eye would find at this size.
  const Picture coarse = longer > 4 * side
                             ? PictureResample(deep, scaled(deep.width(), 2 * side),
                                               scaled(deep.height(), 2 * side), ResampleFilter::Box)
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
