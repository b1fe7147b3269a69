// What a document was at some moment, to see later whether it still is.
#pragma once

#include <memory>
#include <vector>

#include "core/model/document.h"

namespace vellum {

/// Remembers which records a document had, without keeping their pictures in memory.
class DocumentMark {
 public:
  DocumentMark() = default;
  explicit DocumentMark(const DocumentWindow& window);
  /// Whether the document has the same entries, default image, kind and name as then.
  bool matches(const DocumentWindow& window) const;

 private:
  DocumentKind kind_ = DocumentKind::None;
  std::filesystem::path fileName_;
  ChunkHandle defaultImage_;
  std::vector<std::weak_ptr<const ChunkRecord>> records_;
};

}  // namespace vellum
