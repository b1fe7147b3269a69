// Checking and repairing a document that is open: as its file stands where nothing was changed since, else as
// it would be saved.
#pragma once

#include <optional>

#include "base/host.h"
#include "core/check/check_file.h"
#include "core/check/repair_file.h"
#include "core/model/document.h"

namespace vellum {

struct DocumentCheck {
  FileCheck found;
  bool ofFile = false;               ///< of the file as it stands on the disk
  std::vector<std::size_t> entries;  ///< for each finding its entry in the list; kNoEntry where there is none
};

/// Empty, with a fault kept by the host, when the document can't be written (or its file not be read).
std::optional<DocumentCheck> check_document(const DocumentWindow& window, Host& host);

/// Mends what is mended without a choice, as one undo level. What was done is told in `result`. False, with
/// the document as it was, where nothing is to be mended (no fault is kept then) or that fails.
bool repair_document(DocumentWindow& window, Host& host, RepairedFile& result);

}  // namespace vellum
