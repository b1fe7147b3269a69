#include "core/model/document_mark.h"

namespace vellum {

DocumentMark::DocumentMark(const DocumentWindow& window)
    : kind_(window.document.kind),
      fileName_(window.document.fileName),
      defaultImage_(window.document.defaultImage) {
  records_.reserve(window.list.size());
  for (std::size_t i = 0; i < window.list.size(); ++i) records_.emplace_back(window.list.entry(i).record);
}

bool DocumentMark::matches(const DocumentWindow& window) const {
  const Document& document = window.document;
  const bool same_image =
      defaultImage_ ? defaultImage_.shares_with(document.defaultImage) : !document.defaultImage;
  if (kind_ != document.kind || fileName_ != document.fileName || !same_image ||
      records_.size() != window.list.size())
    return false;
  for (std::size_t i = 0; i < records_.size(); ++i) {
    // By owner: a new record may lie where one that is gone lay.
    const auto& record = window.list.entry(i).record;
    if (records_[i].owner_before(record) || record.owner_before(records_[i])) return false;
  }
  return true;
}

}  // namespace vellum
