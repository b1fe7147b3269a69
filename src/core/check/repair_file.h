// What can be saved of a damaged file: the bytes of a valid one, and what had to be given up for it.
#pragma once

#include <span>

#include "core/check/finding.h"

namespace vellum {

struct RepairedFile {
  DocumentKind kind = DocumentKind::None;
  std::vector<std::uint8_t> bytes;    ///< empty: there is nothing that could be shown
  std::vector<Finding> mended;        ///< what was wrong in `file` and is not in `bytes`
  std::vector<std::string> given_up;  ///< each as a sentence; nothing where all was saved
};

/// Works on chunks and not on a document: what is right keeps its bytes. Counts, order, check values,
/// sequence numbers, sizes and end chunks are written anew; of images the rows that are there are kept, the
/// others become zeros (black, transparent or the first color). What shows the same where it is right is
/// never changed, and a file without a fault comes back as it is. Memory: the file twice, and the rows of one
/// image.
RepairedFile repair_file(std::span<const std::uint8_t> file);

}  // namespace vellum
