// Writers of PNG and animated PNG files.
#pragma once

#include <filesystem>

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

enum class WriteResult {
  Done,
  Failed,   ///< the reason is kept in the host; the caller reports
  Refused,  ///< the user has been told why already
};

/// Writes the list of a PING document. `compression`: 0 to 9. The header record follows where it had to
/// change to hold its picture; times are refreshed. What stood at `path` before survives any failure.
WriteResult write_png(DocumentWindow& window, const std::filesystem::path& path, int compression, Host& host);
/// The same for an APNG document.
WriteResult write_apng(DocumentWindow& window, const std::filesystem::path& path, int compression,
                       Host& host);

}  // namespace vellum
