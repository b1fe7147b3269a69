// The rows of all exports and imports. Each stands in the file of its name.
#pragma once

#include "exchange/exporter.h"
#include "exchange/importer.h"

namespace vellum {

extern const Exporter kExportAni, kExportCur, kExportGif, kExportIlg, kExportMovie, kExportPdf, kExportSwf;
extern const Importer kImportAni, kImportCur, kImportGif, kImportMovie;

}  // namespace vellum
