// Chunks as fields: what can be set in a chunk of known content, how it is checked, and how it gets back into
// the document. Forms and the command line stand on this.
#pragma once

#include "base/fields.h"
#include "base/host.h"
#include "core/model/document.h"
#include "image/png_header.h"

namespace vellum {

/// The fields of an entry, with the ranges that its document allows. Empty for an entry without any: images
/// of a still PNG, ends, chunks of unknown content, and those whose payload is not laid out as it should be.
std::vector<Field> chunk_fields(const DocumentWindow& window, std::size_t index);

/// The values of all its fields, those outside their range brought into it.
FieldValues read_chunk_fields(const DocumentWindow& window, std::size_t index);

/// The payload of an entry that has no fields and whose bytes can be set: "hex:..."; nothing for others.
std::optional<std::string> chunk_data_text(const DocumentWindow& window, std::size_t index);

/// The first thing that is wrong with the values: a range, or fields that don't go together. A fault that is
/// a question goes away with `repair_chunk_fields`.
std::optional<FieldFault> check_chunk_fields(const DocumentWindow& window, std::size_t index,
                                             const FieldValues& values);
/// Replaces characters that the chunk can't hold by "?".
void repair_chunk_fields(FieldValues& values);

enum class Applied {
  Same,     ///< no content differs from what the entry holds: nothing was touched
  Changed,  ///< the entry has the values; `dirty` is set; the calls that close a change are the caller's
  Failed,   ///< a part of it went wrong (memory, a conversion); the entry is what it was
};

/// Puts checked values into the entry, and into the others that must follow. Bytes that no field shows are
/// kept.
Applied apply_chunk_fields(DocumentWindow& window, std::size_t index, const FieldValues& values, Host& host);

/// A field set by name, as on a command line: parsed, checked and applied, with the fields that switch it.
/// "data" sets the payload of a chunk without fields: "hex:..." or "@" and the name of a file. False, with
/// the reason (English, one sentence or part of one), when that can't be; the document is then what it was.
bool set_chunk_field(DocumentWindow& window, std::size_t index, std::string_view name, std::string_view text,
                     Host& host, std::string& reason);

/// "N.FIELD=VALUE" taken apart; N counts entries from 1, `index` from 0.
struct FieldAssignment {
  std::size_t index = 0;
  std::string field, value;
};
std::optional<FieldAssignment> parse_field_assignment(std::string_view text);

/// Converts all images of a document, with its PLTE, tRNS and bKGD, to another color type or depth. False
/// when it can't. The programs put operations/convert_colors in; while it is null, color type and depth of a
/// document with images are fixed.
using ConvertImages = bool (*)(DocumentWindow& window, const PngHeader& wanted, Host& host);
inline ConvertImages convertImages = nullptr;
/// Whether these values of an IHDR convert images, which the user is asked about first.
bool converts_images(const DocumentWindow& window, std::size_t index, const FieldValues& values);

/// The color types of a PNG header.
std::span<const FieldChoice> color_types();
/// The bit depths that go with a color type in this document.
std::span<const FieldChoice> bit_depths(DocumentKind kind, std::int64_t colorType);

/// The keywords that the PNG standard names, and "Collection".
std::span<const FieldChoice> known_keywords();

/// The gamma that a gAMA tells, to two decimals and within 0.01 to 100, and the number stored for one (PNG
/// standard: a file gamma, the reciprocal, in hundred-thousandths).
double gamma_of_stored(std::int64_t stored);
std::int64_t stored_gamma(double gamma);

/// A frame's delay as people say it: "25" or "24000/1001" frames a second, or "40 ms". Empty for other texts
/// and for delays that two 16-bit numbers can't tell.
struct FrameDelay {
  std::uint16_t num = 0, den = 0;  ///< seconds as a fraction
};
std::optional<FrameDelay> parse_frame_delay(std::string_view text);
std::string frame_delay_text(FrameDelay delay);

}  // namespace vellum
