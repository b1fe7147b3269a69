#include "exchange/exporter.h"

#include "base/text.h"
#include "operations/frames.h"

namespace vellum {
namespace {

void tell_of_failure(ExportRun& run) {
  std::string reason = run.host.take_fault();
  if (!run.told && !run.host.stopped()) run.host.show(StringId::ErrorWritingFile, {}, std::move(reason));
}

bool write_into(const Exporter& exporter, ExportRun& run, const FieldValues& values, const Sink& sink) try {
  if (exporter.write(run, values, sink) && !run.host.stopped() && sink.finish()) return true;
  const std::string reason = sink.reason();
  if (!reason.empty()) run.host.fail({FaultKind::Limit, 0, -1, -1, reason});
  return false;
} catch (const std::bad_alloc&) {
  return run.refuse(StringId::MemoryError);
}

}  // namespace

const Exporter* find_exporter(std::string_view name) {
  for (const Exporter* row : exporter_table())
    if (row->parameters.name == name) return row;
  return nullptr;
}

const Exporter* find_exporter(int command) {
  for (const Exporter* row : exporter_table())
    if (row->parameters.command == command) return row;
  return nullptr;
}

std::optional<std::size_t> format_of_name(const Exporter& exporter, const std::filesystem::path& path) {
  const std::string extension = path.extension().string();
  for (std::size_t i = 0; i < exporter.formats.size(); ++i)
    if (equal_ignoring_case(extension, exporter.formats[i].extension)) return i;
  if (exporter.formats.empty() && equal_ignoring_case(extension, exporter.extension)) return 0;
  return std::nullopt;
}

std::optional<ExportRun> prepare_export(const Exporter& exporter, const DocumentWindow& window, Host& host) {
  if (frame_entries(window).empty()) {
    host.show(StringId::NoImagesHere);
    return std::nullopt;
  }
  if (!takes_kind(exporter.parameters, window.document.kind)) {
    host.show(StringId::WrongKindOfDocument);
    return std::nullopt;
  }
  ExportRun run{window, DocumentWindow{window.document, window.list, {}}, host};
  try {
    const QuietList quiet(run.draft.list);
    if (exporter.prepare && !exporter.prepare(run)) {
      if (host.has_fault) tell_of_failure(run);
      return std::nullopt;
    }
  } catch (const std::bad_alloc&) {
    host.show(StringId::MemoryError);
    return std::nullopt;
  }
  return run;
}

bool write_export(const Exporter& exporter, ExportRun& run, const FieldValues& values,
                  const std::filesystem::path& path) {
  if (const auto fault = check_values(exporter.parameters, values, run.source)) {
    if (run.host.message) run.host.message({fault->id, {}, fault->text, {}, nullptr});
    return false;
  }
  run.path = path;
  SafeFile file(path);
  if (!file.ok())
    run.host.fail({FaultKind::Misuse, 0, -1, -1, file.reason()});
  else if (write_into(exporter, run, values, file_sink(file)) &&
           (!exporter.beside || exporter.beside(run, values))) {
    for (const std::string& note : file.notes()) run.host.add_note(note);
    return true;
  }
  tell_of_failure(run);
  return false;
}

bool export_document(const Exporter& exporter, const DocumentWindow& window, const FieldValues& values,
                     const std::filesystem::path& path, Host& host) {
  auto run = prepare_export(exporter, window, host);
  return run && write_export(exporter, *run, values, path);
}

}  // namespace vellum
