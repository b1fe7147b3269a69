// The rows of all exports and imports. Each stands in the file of its name.
#pragma once

#include "exchange/exporter.h"
#include "exchange/importer.h"

namespace vellum {

extern const Exporter kExportAni, kExportCur, kExportGif;
extern const Importer kImportAni, kImportCur, kImportGif;

}  // namespace vellum
