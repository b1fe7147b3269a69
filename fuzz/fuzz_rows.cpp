// Any bytes at all as a document and as the values of an operation: kind, row, frames, then a byte for each
// of the first fields, then the file. What is done gives a document that is saved and reads back with the
// same frames and canvas; what is refused says why, once, and changes nothing.
#include "fuzz_rows.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "fuzz_readers.h"
#include "image/settings.h"
#include "operations/operation.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

constexpr std::uint64_t kMostPixels = 4'000;  ///< larger canvases only make the fuzzer slow
constexpr std::int64_t kMostNumber = 100;     ///< of a side or a count, for the same reason

/// The value that a byte stands for, mostly within the field's range.
FieldValue value_of(const Field& field, std::uint8_t byte) {
  const auto share = static_cast<std::int64_t>(byte);
  switch (field.type) {
    case FieldType::Text:
      return std::string(byte % 8, static_cast<char>(' ' + byte % 95));
    case FieldType::Real:
      return field.leastReal + (field.mostReal - field.leastReal) * byte / 254.0;
    case FieldType::Flag:
      return share & 1;
    case FieldType::Color:
      return share * 0x010307;
    case FieldType::Choice:
      return field.choices.empty() ? share : field.choices[byte % field.choices.size()].value;
    default:
      return field.least + share % (std::min(field.most - field.least, kMostNumber) + 2);
  }
}

FieldValues values_of(const Operation& operation, const DocumentWindow& window, Input bytes) {
  const std::vector<Field> fields = fields_for(operation.parameters, window);
  FieldValues values = initial_values(fields);
  for (std::size_t i = 0; i < fields.size() && i < bytes.size(); ++i)
    if (bytes[i] != kInitialValue) values.set(fields[i].name, value_of(fields[i], bytes[i]));
  return values;
}

/// All frames, or one of them.
FrameList frames_of(const DocumentWindow& window, std::uint8_t byte) {
  const std::size_t count = frame_entries(window).size();
  if (count == 0 || byte == kAllFrames) return all_frames(count);
  return {byte % count};
}

bool grows_too_large(const Operation& operation, const FieldValues& values, const DocumentWindow& window) {
  if (!operation.growth || check_values(operation.parameters, values, window)) return false;
  const Extent canvas = document_size(window.list, window.document);
  return operation.growth(values, window) * std::max(canvas.width, canvas.height) > 1'000;
}

bool same_list(const ChunkList& a, const ChunkList& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a.entry(i).record != b.entry(i).record) return false;
  return true;
}

std::string path_for(const DocumentWindow& window) {
  static const std::string stem = scratch_file("");
  return stem + std::string(kind_row(window.document.kind).extensions.front());
}

/// Whether the document can be saved as it was read; the window stays as it is.
bool can_be_saved(DocumentWindow window) {
  Host host;
  return save_document(window, path_for(window), host);
}

void expect_same_frames(DocumentWindow& window) {
  const std::string path = path_for(window);
  Host host;
  const Extent wanted = document_size(window.list, window.document);
  check(save_document(window, path, host));
  DocumentWindow again;
  check(open_document(again, path, host));
  check(frame_entries(again).size() == frame_entries(window).size());
  const Extent canvas = document_size(again.list, again.document);
  check(canvas.width == wanted.width && canvas.height == wanted.height);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kRowsHead) return -1;
  const Reader& reader = kReaders[data[0] % std::size(kReaders)];
  const auto rows = operation_table();
  const Operation& operation = *rows[data[1] % rows.size()];
  if (operation.result == OperationResult::Files) return -1;               // the bytes would name the folder
  if (operation.parameters.name == std::string_view("social")) return -1;  // megapixels, whatever comes in
  const Input file(data + kRowsHead, size - kRowsHead);
  Host host;
  DocumentWindow window;
  if (!read_small_document(reader, file, kMostPixels, window, host)) return 0;
  if (!takes_kind(operation.parameters, window.document.kind)) return -1;
  const FieldValues values = values_of(operation, window, {data + 3, kRowsHead - 3});
  if (grows_too_large(operation, values, window)) return -1;
  std::size_t told = 0;
  host.message = [&](const Message&) { ++told; };
  const ChunkList before = window.list;
  const bool savable = can_be_saved(window);
  if (!run_operation(operation, window, values, frames_of(window, data[2]), host)) {
    check(told == 1 && same_list(window.list, before));
    return 0;
  }
  check(told == 0);
  if (savable) expect_same_frames(window);
  return 0;
}
