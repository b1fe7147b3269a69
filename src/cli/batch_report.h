// What batch runs tell, as JSON: an object a line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batch/batch_row.h"

namespace vellum::cli {

/// {"path": ..., "target": ..., "result": "Ok", "reason": ..., "seconds": ..., "bytes_in": ..., "bytes_out":
/// ...}
std::string report_line(const BatchRow& row);

/// The rows of a report. Nothing, after the reason was told, for a file that can't be read or is none.
std::optional<std::vector<BatchRow>> read_report(const std::string& path);

}  // namespace vellum::cli
