// Writer of MNG files (MNG 1.0).
#pragma once

#include "core/files/write_png.h"

namespace vellum {

/// Writes the list of a MING document: the header, the identity comment, every entry in its order, each image
/// with the FRAM and the DEFI that it carries.
WriteResult write_mng(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host);

}  // namespace vellum
