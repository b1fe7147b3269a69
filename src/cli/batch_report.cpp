#include "cli/batch_report.h"

#include <fstream>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "cli/frame_options.h"

namespace vellum::cli {
namespace {

using Json = nlohmann::ordered_json;

std::optional<BatchRow> row_of(const std::string& line) {
  const Json json = Json::parse(line, nullptr, false);
  if (!json.is_object()) return std::nullopt;
  const auto text = [&json](const char* key) {
    const auto found = json.find(key);
    return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
  };
  const auto number = [&json](const char* key) {
    const auto found = json.find(key);
    return found != json.end() && found->is_number() ? found->get<double>() : 0.0;
  };
  const auto result = batch_result_of(text("result"));
  if (!result) return std::nullopt;
  return BatchRow{.source = text("path"),
                  .target = text("target"),
                  .result = *result,
                  .reason = text("reason"),
                  .seconds = number("seconds"),
                  .bytesIn = static_cast<std::uint64_t>(std::max(number("bytes_in"), 0.0)),
                  .bytesOut = static_cast<std::uint64_t>(std::max(number("bytes_out"), 0.0))};
}

}  // namespace

std::string report_line(const BatchRow& row) {
  Json json;
  json["path"] = row.source.string();
  json["target"] = row.target.string();
  json["result"] = batch_word(row.result);
  json["reason"] = row.reason;
  json["seconds"] = row.seconds;
  json["bytes_in"] = row.bytesIn;
  json["bytes_out"] = row.bytesOut;
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<std::vector<BatchRow>> read_report(const std::string& path) {
  std::ifstream file(path);
  std::vector<BatchRow> rows;
  std::string line;
  while (std::getline(file, line)) {
    if (line.empty()) continue;
    const auto row = row_of(line);
    // The last line of a run that was killed may be cut.
    if (!row && file.eof()) break;
    if (!row) {
      wrong_usage(path + translated(" is no report of a batch run"));
      return std::nullopt;
    }
    rows.push_back(*row);
  }
  if (file.bad() || !file.eof()) {
    wrong_usage(path + translated(" can't be read"));
    return std::nullopt;
  }
  return rows;
}

}  // namespace vellum::cli
