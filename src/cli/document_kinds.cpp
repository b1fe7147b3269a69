#include "cli/document_kinds.h"
#include "cli/words.h"

#include <cstdio>
#include <filesystem>

#include "base/translation.h"
#include "core/model/kind_table.h"
#include "image/graphic_file.h"
#include "operations/parameters.h"

namespace vellum::cli {

const std::map<std::string, DocumentKind>& animation_kinds() {
  static const std::map<std::string, DocumentKind> animations = [] {
    auto kinds = kKinds;
    std::erase_if(kinds, [](const auto& item) { return !is_animation(item.second); });
    return kinds;
  }();
  return animations;
}

void add_kind_option(CLI::App& app, DocumentKind& kind) {
  app.add_option("--kind", kind, "The kind of file; without it the name decides")
      ->transform(one_of(animation_kinds(), "apng|mng|webp"));
}

DocumentKind kind_of_result(DocumentKind given, const std::string& out) {
  if (given != DocumentKind::None) return given;
  for (const DocumentKind kind : kAnimatedKinds)
    if (has_extension_of(out, kind)) return kind;
  return DocumentKind::APNG;
}

bool name_fits_document(const std::string& path) {
  const std::size_t row = GraphicFileType(path);
  if (row == kNoGraphicFile) return true;
  const std::string_view extension = graphic_file_modules()[row].extension;
  if (extension == "png" || extension == "webp") return true;
  std::fprintf(stderr,
               translated("vellum: a document is a PNG, MNG or WebP file and has no name that ends in .%s\n"),
               std::string(extension).c_str());
  return false;
}

bool name_fits_kind(const std::string& path, DocumentKind kind) {
  if (!name_fits_document(path)) return false;
  if (has_extension_of(path, DocumentKind::WEBP) == (kind == DocumentKind::WEBP)) return true;
  std::fprintf(stderr, translated("vellum: a WebP file, and no other, has a name that ends in .webp\n"));
  return false;
}

}  // namespace vellum::cli
