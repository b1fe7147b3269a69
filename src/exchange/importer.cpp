#include "exchange/importer.h"

#include <algorithm>

#include "base/file.h"
#include "base/limits.h"
#include "base/translation.h"
#include "core/build/build_animation.h"
#include "core/files/open_document.h"
#include "core/model/document_notes.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "operations/convert_kind.h"

namespace vellum {
namespace {

bool tell_of_failure(const ImportRun& run) {
  const bool silent = run.told || run.host.stopped();
  const bool too_large = run.host.has_fault && run.host.fault.kind == FaultKind::Limit;
  std::string reason = run.host.take_fault();
  if (silent) return false;
  if (too_large)
    run.host.show(StringId::ErrorReadingFile, {}, std::move(reason));
  else
    run.host.show(StringId::FileCorrupted, StringId::ErrorReadingFile, std::move(reason));
  return false;
}

bool read_safely(const Importer& importer, DocumentWindow& window, ImportRun& run) try {
  return importer.read(window, run);
} catch (const std::bad_alloc&) {
  return run.host.fail({FaultKind::Limit, 0, -1, -1, translated("memory is exhausted")});
}

/// Asks what kind of document an animation becomes. False: the user cancelled.
bool settle_kind(const Importer& importer, std::span<const std::uint8_t> bytes, FieldValues& values,
                 Host& host) {
  if (!host.choose || !importer.isAnimation || !importer.isAnimation(bytes)) return true;
  Choice choice{.title = StringId::PictureTitle,
                .text = StringId::AnimationQuestion,
                .answers = {StringId::AsAnimatedPng, StringId::AsMng, StringId::AsWebp},
                .chosen = static_cast<std::size_t>(values.number(kKindField))};
  if (!host.choose(choice)) return false;
  values.set(kKindField, static_cast<std::int64_t>(choice.chosen));
  return true;
}

/// What `open_document` asks of a file that is no document.
std::optional<bool> open_import(DocumentWindow& window, const std::filesystem::path& path,
                                std::span<const std::uint8_t> bytes, Host& host) {
  const Importer* importer = importer_of(bytes);
  // One picture is offered as the image of a document, as those of other formats are.
  if (!importer || (importer->isAnimation && !importer->isAnimation(bytes))) return std::nullopt;
  FieldValues values = setting_values(fields_for(importer->parameters, {}));
  return settle_kind(*importer, bytes, values, host) &&
         import_bytes(*importer, window, path, bytes, values, host);
}

}  // namespace

const Importer* find_importer(std::string_view name) {
  for (const Importer* row : importer_table())
    if (row->parameters.name == name) return row;
  return nullptr;
}

const Importer* find_importer(int command) {
  for (const Importer* row : importer_table())
    if (row->parameters.command == command) return row;
  return nullptr;
}

const Importer* importer_of(std::span<const std::uint8_t> bytes) {
  for (const Importer* row : importer_table())
    if (row->recognizes(bytes)) return row;
  return nullptr;
}

bool import_bytes(const Importer& importer, DocumentWindow& window, const std::filesystem::path& path,
                  std::span<const std::uint8_t> bytes, const FieldValues& values, Host& host) {
  DocumentWindow made;
  made.document.fileName = path;
  made.document.thumbScale = std::clamp(settings::DefaultViewMode, 0, 7);
  {
    const KeptNotes kept(made.document, host);
    ImportRun run{bytes, values, host, false, path};
    if (!read_safely(importer, made, run)) return tell_of_failure(run);
  }
  made.document.fileName = path;
  made.document.fileName.replace_extension(kind_row(made.document.kind).extensions.front());
  made.document.HasFileName = false;
  made.document.dirty = true;
  window.document = made.document;
  window.list = made.list;
  return true;
}

bool import_file(const Importer& importer, DocumentWindow& window, const std::filesystem::path& path,
                 const FieldValues& values, Host& host) {
  std::string reason;
  if (importer.fromFile) {
    if (const auto fault = check_values(importer.parameters, values, {})) {
      if (host.message) host.message({fault->id, {}, fault->text, {}, nullptr});
      return false;
    }
    if (read_start(path, reason, 1)) return import_bytes(importer, window, path, {}, values, host);
    host.show(StringId::ErrorReadingFile, {}, path.string() + ": " + reason);
    return false;
  }
  const auto bytes = read_file(path, reason, kMaximumFileBytes);
  if (bytes) return import_bytes(importer, window, path, *bytes, values, host);
  host.show(StringId::ErrorReadingFile, {}, path.string() + ": " + reason);
  return false;
}

void take_imports() { importForeign = open_import; }

}  // namespace vellum
