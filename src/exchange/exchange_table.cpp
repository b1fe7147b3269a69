#include "exchange/exchange_rows.h"

namespace vellum {
namespace {

constexpr const Exporter* kExporters[] = {&kExportGif};
constexpr const Importer* kImporters[] = {&kImportGif};

}  // namespace

std::span<const Exporter* const> exporter_table() { return kExporters; }
std::span<const Importer* const> importer_table() { return kImporters; }

}  // namespace vellum
