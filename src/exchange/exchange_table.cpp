#include "exchange/exchange_rows.h"

namespace vellum {
namespace {

constexpr const Exporter* kExporters[] = {&kExportAni, &kExportGif, &kExportCur, &kExportMovie,
                                          &kExportSwf, &kExportIlg, &kExportPdf};
constexpr const Importer* kImporters[] = {&kImportAni, &kImportGif, &kImportCur, &kImportMovie};

}  // namespace

std::span<const Exporter* const> exporter_table() { return kExporters; }
std::span<const Importer* const> importer_table() { return kImporters; }

}  // namespace vellum
