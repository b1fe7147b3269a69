// Contents of inserted chunks as the command line gives them.
#pragma once

#include <string>

#include "base/host.h"
#include "core/model/document.h"

namespace vellum::cli {

/// Inserts a chunk behind the caret. `value` by tag: an image file for IDAT, PNGI and WEBI; "Keyword=text"
/// for tEXt, zTXt and iTXt; "Name=@FILE" for iCCP; a gamma ("2.2") for gAMA; a count for LOOP; ticks for
/// FRAM; "X,Y" for DEFI; "hex:0A1B" or "@FILE" for the bytes of any chunk. Empty: the default content. False,
/// with the message given to the host, when it was refused.
bool insert_value(DocumentWindow& window, ChunkTag tag, const std::string& value, Host& host);

}  // namespace vellum::cli
