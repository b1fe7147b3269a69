#include "batch/batch_target.h"

#include "base/string_table.h"
#include "base/text.h"
#include "core/model/kind_table.h"

namespace fs = std::filesystem;

namespace vellum {
namespace {

constexpr std::size_t kMostNameBytes = 255;  // of one name in a folder of any common file system
constexpr unsigned kMostTries = 99999;

/// `stem`, cut where the whole would be too long, and the extension.
std::string held_name(const std::string& stem, const std::string& more, const std::string& extension) {
  const std::size_t behind = std::min(more.size() + extension.size(), kMostNameBytes);
  return cut_utf8(stem, kMostNameBytes - behind) + more + extension;
}

}  // namespace

fs::path BatchTargets::named(const BatchFile& file) const {
  const std::string stem = naming_.prefix + file.source.stem().string();
  std::string extension = naming_.extension.empty() ? file.source.extension().string() : naming_.extension;
  if (naming_.makes != DocumentKind::None && !has_extension_of(file.source, naming_.makes))
    extension = kind_row(naming_.makes).extensions.front();
  return naming_.destination / file.below / held_name(stem, {}, extension);
}

bool BatchTargets::taken(const fs::path& path) const {
  std::error_code error;
  return taken_.contains(path.native()) || fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

fs::path BatchTargets::unique(const fs::path& path) const {
  for (unsigned i = 2; i <= kMostTries; ++i) {
    const fs::path tried = path.parent_path() / held_name(path.stem().string(), format_text(" (%u)", i),
                                                          path.extension().string());
    if (!taken(tried)) return tried;
  }
  return {};
}

void BatchTargets::keep_both(BatchTarget& target) {
  if (const fs::path free = unique(target.path); !free.empty()) {
    target.path = free;
    return;
  }
  target.reason = string_text(StringId::NoUniqueName);
  target.contested = asks_;
  if (asks_)
    naming_.overwrite = Overwrite::Ask;
  else
    target.settled = BatchResult::BadWrite;
}

BatchTarget BatchTargets::settle(const BatchFile& file) {
  BatchTarget target{named(file), {}, {}};
  if (taken(target.path)) {
    if (naming_.overwrite == Overwrite::Skip) target.settled = BatchResult::Skipped;
    if (naming_.overwrite == Overwrite::Fail) {
      target.settled = BatchResult::BadWrite;
      target.reason = "exists";
    }
    target.contested = naming_.overwrite == Overwrite::Ask;
    if (naming_.overwrite == Overwrite::KeepBoth) keep_both(target);
  }
  if (!target.settled && !target.contested) take(target.path);
  return target;
}

}  // namespace vellum
