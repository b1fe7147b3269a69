#include "batch/batch_row.h"

#include <algorithm>

#include "base/string_table.h"
#include "base/text.h"

namespace vellum {
namespace {

struct WordRow {
  BatchResult result;
  std::string_view word;
  bool error;
};

constexpr WordRow kWords[] = {
    {BatchResult::Ok, "Ok", false},
    {BatchResult::BadRead, "Bad read", true},
    {BatchResult::BadWrite, "Bad write", true},
    {BatchResult::BlockAccessError, "Block access error", true},
    {BatchResult::ObjectError, "Object error", true},
    {BatchResult::Skipped, "Skipped", false},
    {BatchResult::Cancelled, "Cancelled", false},
    {BatchResult::Aborted, "Aborted", true},
};

const WordRow& row_of(BatchResult result) { return *std::ranges::find(kWords, result, &WordRow::result); }

}  // namespace

std::string_view batch_word(BatchResult result) { return row_of(result).word; }

std::optional<BatchResult> batch_result_of(std::string_view word) {
  const auto row = std::ranges::find(kWords, word, &WordRow::word);
  return row == std::end(kWords) ? std::nullopt : std::optional(row->result);
}

bool is_batch_error(BatchResult result) { return row_of(result).error; }

std::string batch_line(const BatchRow& row) {
  return row.source.string() + '\t' + std::string(batch_word(row.result));
}

std::string batch_error_line(std::size_t errors) {
  if (errors == 1) return std::string(string_text(StringId::BatchOneError));
  return format_text(string_text(StringId::BatchErrors).data(), static_cast<int>(errors));
}

std::size_t batch_errors(std::span<const BatchRow> rows) {
  return static_cast<std::size_t>(
      std::ranges::count_if(rows, [](const BatchRow& row) { return is_batch_error(row.result); }));
}

}  // namespace vellum
