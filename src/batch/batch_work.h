// What a batch run does to each file.
#pragma once

#include <filesystem>

#include "operations/operation.h"

namespace vellum {

/// Called side by side from several threads.
struct BatchWork {
  std::span<const DocumentKind> kinds;  ///< of the documents that it takes
  /// Changes the document. False with the reason told to the host, or after a stop.
  std::function<bool(DocumentWindow& window, Host& host)> apply;
  /// What becomes of a picture; null as above. Empty where it isn't for pictures.
  std::function<Picture(const Picture& picture, Host& host)> applyToPicture;
  /// Writes what came of the file `source`; empty: as documents are saved.
  std::function<bool(DocumentWindow& window, const std::filesystem::path& source,
                     const std::filesystem::path& target, Host& host)>
      save = {};
};

/// The values for a document.
using ValuesFor = std::function<std::optional<FieldValues>(const DocumentWindow&)>;

/// An operation over all frames. Without `promote` a document of indexed frames is refused where the
/// operation makes them true color.
BatchWork operation_work(const Operation& operation, const ValuesFor& values, bool promote);

}  // namespace vellum
