#include "shell/services/saving.h"

#include <algorithm>

#include "base/text.h"
#include "core/files/save_document.h"
#include "core/model/kind_table.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

bool needs_name(const Document& document) {
  return !document.HasFileName ||
         equal_ignoring_case(document.fileName.filename().string(), string_text(StringId::UntitledPng));
}

Answer ask_about_file(Host& host, StringId id, const Document& document, bool cancel) {
  if (!host.ask) return Answer::Yes;
  return host.ask({id, {}, with_value(string_text(id), document_title(document)), {}, nullptr}, cancel);
}

}  // namespace

bool is_document_extension(std::string_view extension) {
  return has_document_extension(fs::path("x") += extension);
}

fs::path with_kind_extension(const fs::path& name, DocumentKind kind) {
  const std::string_view wanted = kind_row(kind).extensions.front();
  if (equal_ignoring_case(name.extension().string(), wanted)) return name;
  fs::path result = has_document_extension(name) ? fs::path(name).replace_extension() : name;
  return result += wanted;
}

bool save(DocumentWindow& window, Services& services) {
  const Document& document = window.document;
  // Told before a name is asked for, which would be in vain.
  if (frames_exceed_first(window)) {
    services.host.show(StringId::FrameTooLarge, StringId::ErrorWritingFile);
    return false;
  }
  if (needs_name(document)) return save_as(window, services);
  if (changed_on_disk(document).value_or(kFileGone) != kFileGone &&
      ask_about_file(services.host, StringId::FileChangedQuestion, document, false) != Answer::Yes)
    return false;
  return save_document(window, document.fileName, services.host);
}

bool save_as(DocumentWindow& window, Services& services) {
  Document& document = window.document;
  const auto chosen =
      services.choose_save({document.kind, with_kind_extension(document_title(document), document.kind)});
  if (!chosen) return false;
  const fs::path old_name = std::exchange(document.fileName, with_kind_extension(*chosen, document.kind));
  const bool had_name = std::exchange(document.HasFileName, true);
  if (save_document(window, document.fileName, services.host)) {
    if (services.remember_file) services.remember_file(document.fileName);
    return true;
  }
  document.fileName = old_name;
  document.HasFileName = had_name;
  return false;
}

bool settle_changes(DocumentWindow& window, Services& services) {
  if (!window.document.dirty) return true;
  switch (ask_about_file(services.host, StringId::NotSavedQuestion, window.document, true)) {
    case Answer::No:
      return true;
    case Answer::Cancel:
      return false;
    case Answer::Yes:
      break;
  }
  return save(window, services) && !window.document.dirty;
}

}  // namespace vellum
