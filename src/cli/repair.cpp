#include <cstdio>

#include "base/file.h"
#include "base/limits.h"
#include "base/translation.h"
#include "cli/command.h"
#include "core/check/repair_file.h"

namespace vellum::cli {
namespace {

struct RepairOptions {
  std::string in, out;
};

bool write_file(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
  SafeFile file(path);
  return file.write(bytes) && file.commit();
}

void tell(const RepairedFile& repaired) {
  for (const Finding& finding : repaired.mended) {
    const std::string name = finding.tag == 0 ? "the file" : tag_letters(finding.tag);
    std::printf(translated("mended: %s at %llu: %s\n"), name.c_str(),
                static_cast<unsigned long long>(finding.offset), finding_text(finding).c_str());
  }
  for (const std::string& lost : repaired.given_up) std::printf(translated("given up: %s\n"), lost.c_str());
  if (repaired.mended.empty() && repaired.given_up.empty()) std::puts(translated("nothing had to be mended"));
}

int run_repair(const RepairOptions& options, Host& host) {
  std::string reason;
  const auto file = read_file(options.in, reason, kMaximumFileBytes);
  if (!file) {
    host.show(StringId::ErrorReadingFile, {}, options.in + ": " + reason);
    return kFailed;
  }
  const RepairedFile repaired = repair_file(*file);
  if (repaired.bytes.empty()) {
    tell(repaired);
    host.show(StringId::FileCorrupted, StringId::ErrorReadingFile, options.in);
    return kFailed;
  }
  if (!write_file(options.out, repaired.bytes)) {
    host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, options.out);
    return kFailed;
  }
  tell(repaired);
  return std::fflush(stdout) == 0 ? kDone : kFailed;
}

}  // namespace

Run prepare_repair(CLI::App& app) {
  const auto options = std::make_shared<RepairOptions>();
  app.add_option("IN", options->in, "A damaged PNG, animated PNG, MNG or WebP")->required();
  app.add_option("OUT", options->out, "The file to write; what stands there is replaced once all is written")
      ->required();
  return [options](Host& host) { return run_repair(*options, host); };
}

}  // namespace vellum::cli
