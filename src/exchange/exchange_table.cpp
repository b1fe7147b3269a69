#include "exchange/exchange_rows.h"

namespace vellum {
namespace {

constexpr const Exporter* kExporters[] = {&kExportAni, &kExportGif, &kExportCur};
constexpr const Importer* kImporters[] = {&kImportAni, &kImportGif, &kImportCur};

}  // namespace

std::span<const Exporter* const> exporter_table() { return kExporters; }
std::span<const Importer* const> importer_table() { return kImporters; }

}  // namespace vellum
