// Commands of `vellum` that are rows of exports and imports.
#pragma once

#include "cli/command.h"
#include "exchange/exporter.h"
#include "exchange/importer.h"

namespace vellum::cli {

Run prepare_export_command(CLI::App& app, const Exporter& exporter);
/// Without a kind on the command line the extension of OUT decides.
Run prepare_import_command(CLI::App& app, const Importer& importer);

/// Opens IN as a document that becomes one of this kind (None: OUT's name decides): files that are imported
/// become it at once. False after a message.
bool open_input(DocumentWindow& window, const std::string& in, const std::string& out, DocumentKind kind,
                Host& host);

}  // namespace vellum::cli
