#include <cstdio>
#include <nlohmann/json.hpp>

#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/translation.h"
#include "cli/command.h"
#include "core/check/check_file.h"
#include "core/model/kind_table.h"

namespace vellum::cli {
namespace {

using Json = nlohmann::ordered_json;

struct CheckOptions {
  std::vector<std::string> files;
  bool json = false, quiet = false;
};

/// "chunk 3, IDAT, at 57"; empty for the file as a whole.
std::string place_text(const Finding& finding) {
  if (finding.chunk == 0 && finding.tag == 0 && finding.offset == 0) return {};
  std::string place = translated("at ") + std::to_string(finding.offset);
  if (finding.tag != 0) place = tag_letters(finding.tag) + ", " + place;
  if (finding.chunk != 0) place = translated("chunk ") + std::to_string(finding.chunk) + ", " + place;
  return place;
}

Json finding_json(const Finding& finding) {
  const Rule& row = rule(finding.rule);
  Json json;
  json["rule"] = rule_name(finding.rule);
  json["severity"] = severity_name(row.severity);
  json["text"] = finding_text(finding);
  if (finding.tag != 0) json["tag"] = tag_letters(finding.tag);
  if (finding.chunk != 0) json["chunk"] = finding.chunk;
  json["offset"] = finding.offset;
  json["asked"] = row.asked;
  json["remedy"] = row.remedy;
  json["repaired"] = row.repaired();
  return json;
}

Json check_json(const std::string& file, const FileCheck& check) {
  Json json;
  json["file"] = file;
  json["kind"] = check.kind == DocumentKind::None ? "" : kind_row(check.kind).name;
  json["errors"] = check.count(Severity::Error);
  json["warnings"] = check.count(Severity::Warning);
  json["notes"] = check.count(Severity::Note);
  json["leftOut"] = check.left_out;
  json["findings"] = Json::array();
  for (const Finding& finding : check.findings) json["findings"].push_back(finding_json(finding));
  return json;
}

void print_check(const std::string& file, const FileCheck& check, bool quiet) {
  if (quiet && check.count(Severity::Error) + check.count(Severity::Warning) == 0) return;
  const std::string counts = check.counts_text();
  std::printf("%s: %s\n", file.c_str(), counts.empty() ? translated("nothing is wrong") : counts.c_str());
  for (const Finding& finding : check.findings) {
    const Rule& row = rule(finding.rule);
    if (quiet && row.severity == Severity::Note) continue;
    const std::string place = place_text(finding);
    std::printf("  %-8s%s%s%s\n", std::string(translated(severity_name(row.severity))).c_str(), place.c_str(),
                place.empty() ? "" : ": ", finding_text(finding).c_str());
    if (*row.asked) std::printf(translated("          asked: %s\n"), translated(row.asked));
    if (*row.remedy) std::printf(translated("          to do: %s\n"), translated(row.remedy));
  }
  if (check.left_out > 0)
    std::printf(translated("  and %s more of the same\n"), grouped(check.left_out).c_str());
}

int run_check(const CheckOptions& options, Host& host) {
  bool good = true;
  Json all = Json::array();
  for (const std::string& path : options.files) {
    std::string reason;
    const auto file = read_file(path, reason, kMaximumFileBytes);
    if (!file) {
      host.show(StringId::ErrorReadingFile, {}, path + ": " + reason);
      good = false;
      continue;
    }
    const FileCheck check = check_file(*file);
    good &= check.count(Severity::Error) == 0;
    if (options.json)
      all.push_back(check_json(path, check));
    else
      print_check(path, check, options.quiet);
  }
  if (options.json) std::puts(all.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  return std::fflush(stdout) == 0 && good ? kDone : kFailed;
}

}  // namespace

Run prepare_check(CLI::App& app) {
  const auto options = std::make_shared<CheckOptions>();
  app.add_option("FILE", options->files, "PNG, animated PNG, MNG and WebP files")->required();
  app.add_flag("--json", options->json, "All findings, as JSON");
  app.add_flag("--quiet", options->quiet, "Only errors and warnings, and only files that have some");
  return [options](Host& host) { return run_check(*options, host); };
}

}  // namespace vellum::cli
