// Everything that is wrong with a file, in one pass and without opening it as a document: unlike a reader,
// which forgives or refuses, this tells.
#pragma once

#include <span>

#include "core/check/finding.h"

namespace vellum {

struct FileCheck {
  DocumentKind kind = DocumentKind::None;  ///< None: none of the formats that are checked
  std::vector<Finding> findings;           ///< in the order of the file
  std::uint64_t left_out = 0;              ///< findings of a rule that had come a hundred times already
  std::vector<ChunkTag> chunks{};          ///< of the whole file, in its order: what `Finding::chunk` counts
  std::size_t count(Severity severity) const;
  /// "2 errors, 1 warning"; empty without findings.
  std::string counts_text() const;
};

/// Looks at a PNG, animated PNG, MNG or WebP. Memory: the findings, two rows of an image, and what a WebP
/// frame decodes to.
FileCheck check_file(std::span<const std::uint8_t> file);

}  // namespace vellum
