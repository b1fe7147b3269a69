// A generator as a row: values, and pictures where it takes some, that become an animation.
#pragma once

#include "core/build/frame_stream.h"
#include "image/held_picture.h"
#include "operations/parameters.h"

namespace vellum {

/// What a generator works on beside its values.
enum class GeneratorInput {
  None,
  Picture,   ///< one
  Pictures,  ///< one or more, in their order
};

struct GeneratorInputs {
  std::vector<HeldPicture> pictures;
  /// The values that a picture has in place of the common ones, in the order of the pictures; those behind
  /// the last have none.
  std::vector<FieldValues> own = {};
  /// Of the files that the pictures came from, in their order; those behind the last have none.
  std::vector<std::string> names = {};
  DocumentKind kind = DocumentKind::MING;  ///< of the document
  bool sketch = false;                     ///< for a preview: what all frames together tell may be guessed
};

/// One row.
struct Generator {
  Parameters parameters;
  GeneratorInput input = GeneratorInput::None;
  const char* document;                ///< "Spin": what its documents are called, with a number behind it
  const char* loop = nullptr;          ///< the field that says whether it plays for ever; without it it does
  std::string* fileSetting = nullptr;  ///< keeps the name of the picture
  const char* listFile = nullptr;      ///< in the configuration folder: keeps the names of the pictures
  std::span<const char* const> ownFields = {};  ///< fields that each picture may have values of its own for
  /// The side of the square that a picture is drawn in: whoever reads larger files may make them smaller at
  /// once (see `reduced_to_fit`); null: pictures are needed as they are.
  std::uint32_t (*useful)(const FieldValues& values) = nullptr;
  /// Whether the values give one picture, which is a still PNG where no other kind is wanted; null: never.
  bool (*still)(const FieldValues& values) = nullptr;
  StringId failure = StringId::ErrorAccessingChunk;  ///< the message where frames can't be made
  /// The frames that the values give; they are computed when they are asked for, and may be by several
  /// threads. The inputs, as many as the row takes, and the values need not outlive the call. Nothing with
  /// the reason kept in the host.
  std::optional<FrameStream> (*make)(const FieldValues& values, const GeneratorInputs& inputs,
                                     Host& host) = nullptr;
};

/// All generators, in the order of the menu.
std::span<const Generator* const> generator_table();
/// Null where there is none.
const Generator* find_generator(std::string_view name);
const Generator* find_generator(int command);

/// A picture that fits into a square of this side, quickly made of a larger one; of 32 bits where it has
/// alpha.
Picture reduced_to_fit(const Picture& picture, std::uint32_t side);

/// The frames, checked; nothing after a message.
std::optional<FrameStream> generated_frames(const Generator& generator, const FieldValues& values,
                                            const GeneratorInputs& inputs, Host& host);
/// Makes an empty window an animation of this kind; of a still a still PNG in place of an animated one. False
/// after a message, or a stop; nothing is then left of it.
bool generate(const Generator& generator, const FieldValues& values, const GeneratorInputs& inputs,
              DocumentKind kind, DocumentWindow& window, Host& host);

}  // namespace vellum
