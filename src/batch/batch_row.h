// What a batch run tells of one file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vellum {

enum class BatchResult {
  Ok,
  BadRead,           ///< the file can't be read, or is no animation
  BadWrite,          ///< the target can't be written, or may not
  BlockAccessError,  ///< memory is exhausted
  ObjectError,       ///< the operation can't be done on this file
  Skipped,           ///< something stands at the target
  Cancelled,         ///< stopped while the operation was at work
  Aborted,           ///< stopped before this file
};

/// "Ok", "Bad read", ...
std::string_view batch_word(BatchResult result);
/// Nothing for another word.
std::optional<BatchResult> batch_result_of(std::string_view word);
/// Whether a run with this result has an error.
bool is_batch_error(BatchResult result);

struct BatchRow {
  std::filesystem::path source, target;
  BatchResult result = BatchResult::Ok;
  std::string reason;  ///< of an error; English, may be empty
  double seconds = 0;  ///< from reading to written
  std::uint64_t bytesIn = 0, bytesOut = 0;
};

/// "PATH<tab>Ok".
std::string batch_line(const BatchRow& row);
/// The last line of a run, which counts the errors.
std::string batch_error_line(std::size_t errors);
std::size_t batch_errors(std::span<const BatchRow> rows);

}  // namespace vellum
