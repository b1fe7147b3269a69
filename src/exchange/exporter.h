// An export as a row: documents that become files of another format.
#pragma once

#include <filesystem>

#include "base/file.h"
#include "base/host.h"
#include "operations/parameters.h"

namespace vellum {

/// An export on its way. The draft is the document, or what was made of it for this format.
struct ExportRun {
  const DocumentWindow& source;
  DocumentWindow draft;
  Host& host;
  bool told = false;                ///< why it failed was told
  std::filesystem::path path = {};  ///< of the file; empty where there is none

  /// Tells why it can't be done; false.
  bool refuse(StringId reason) {
    host.show(reason);
    told = true;
    return false;
  }
};

/// One of several forms that an export writes, by the name of the file.
struct ExportFormat {
  const char* filter;
  std::string_view extension;  ///< with its dot
};

struct Exporter {
  Parameters parameters;
  const char* filter;          ///< "GIF files"
  std::string_view extension;  ///< with its dot
  /// All that it writes where that are several, the one above first.
  std::span<const ExportFormat> formats = {};
  const char* formatField = nullptr;  ///< the field whose value is the number of the format
  /// Makes the draft fit, and asks what must be asked, before anyone chooses a name. False with the reason
  /// kept in the host or told, or when the user said no.
  bool (*prepare)(ExportRun& run) = nullptr;
  /// Writes the draft. False with the reason kept in the host or told.
  bool (*write)(ExportRun& run, const FieldValues& values, const Sink& sink) = nullptr;
  /// Writes what stands beside the file, which is there now. False as above.
  bool (*beside)(ExportRun& run, const FieldValues& values) = nullptr;
};

/// The number of the format that a file of this name has; nothing for the name of none.
std::optional<std::size_t> format_of_name(const Exporter& exporter, const std::filesystem::path& path);

/// All exports, in the order of the menu.
std::span<const Exporter* const> exporter_table();
const Exporter* find_exporter(std::string_view name);
const Exporter* find_exporter(int command);

/// The first step of an export. Nothing after a message, when the user said no or stopped it.
std::optional<ExportRun> prepare_export(const Exporter& exporter, const DocumentWindow& window, Host& host);
/// The second: writes the file as a whole, or leaves what stood there. False after a message, or a stop.
bool write_export(const Exporter& exporter, ExportRun& run, const FieldValues& values,
                  const std::filesystem::path& path);
/// Both.
bool export_document(const Exporter& exporter, const DocumentWindow& window, const FieldValues& values,
                     const std::filesystem::path& path, Host& host);

}  // namespace vellum
