#include "cli/document_kinds.h"

#include <cstdio>
#include <filesystem>

namespace vellum::cli {

const std::map<std::string, DocumentKind>& animation_kinds() {
  static const std::map<std::string, DocumentKind> animations = [] {
    auto kinds = kKinds;
    std::erase_if(kinds, [](const auto& item) { return !is_animation(item.second); });
    return kinds;
  }();
  return animations;
}

bool name_fits_kind(const std::string& path, DocumentKind kind) {
  const std::string extension = std::filesystem::path(path).extension().string();
  if (equal_ignoring_case(extension, ".webp") == (kind == DocumentKind::WEBP)) return true;
  std::fprintf(stderr, "vellum: a WebP file, and no other, has a name that ends in .webp\n");
  return false;
}

}  // namespace vellum::cli
