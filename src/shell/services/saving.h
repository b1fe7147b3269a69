// Save, Save as and the question before closing: what happens to the document's name and to its file.
#pragma once

#include "shell/services/services.h"

namespace vellum {

/// Whether files with this extension (".png") are opened as documents.
bool is_document_extension(std::string_view extension);

/// `name` with the extension that files of this kind carry: another picture extension is replaced, any other
/// ending is part of the name.
std::filesystem::path with_kind_extension(const std::filesystem::path& name, DocumentKind kind);

/// Both tell the user why they failed. True when the file was written; otherwise the name is what it was.
bool save(DocumentWindow& window, Services& services);
bool save_as(DocumentWindow& window, Services& services);

/// Whether the window may be closed: nothing to lose, saved now, or given up by the user.
bool settle_changes(DocumentWindow& window, Services& services);

}  // namespace vellum
