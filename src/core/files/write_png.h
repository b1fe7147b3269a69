// Writers of PNG and animated PNG files.
#pragma once

#include "base/file.h"
#include "base/host.h"
#include "core/files/save_options.h"
#include "core/model/document.h"

namespace vellum {

enum class WriteResult {
  Done,
  Failed,   ///< the reason is kept in the host; the caller reports
  Refused,  ///< the user has been told why already
};

/// Writes the list of a PING document. The header record follows where it had to change to hold its picture;
/// times are refreshed. The list is as it was where the sink fails.
WriteResult write_png(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host);
/// The same for an APNG document.
WriteResult write_apng(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host);

}  // namespace vellum
