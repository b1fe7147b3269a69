// Saving a document: backup, the writer for its kind, and what changes in the document by it.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Whether a later frame of an animated PNG is wider or higher than the first image, which can't be saved.
bool frames_exceed_first(const DocumentWindow& window);

/// Writes the document to `path`: ".webp" by the extension, otherwise by kind. What stood there before
/// survives any failure. False, with the stated message given to the host, when it was not written (also when
/// the user refused to go on without a backup, which says nothing). The list changes only in what the save
/// itself refreshed: the time, and a header that had to change to hold its picture.
bool save_document(DocumentWindow& window, const std::filesystem::path& path, Host& host);

}  // namespace vellum
