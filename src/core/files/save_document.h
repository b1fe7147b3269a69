// Saving a document: backup, the writer for its kind, and what changes in the document by it.
#pragma once

#include "base/host.h"
#include "core/files/write_png.h"

namespace vellum {

/// What a file of this name holds: WebP by the extension ".webp", otherwise the document's kind, and None
/// where that is WebP.
DocumentKind written_kind(const std::filesystem::path& path, DocumentKind kind);

/// Whether a later frame of an animated PNG is wider or higher than the first image, which can't be saved.
bool frames_exceed_first(const DocumentWindow& window);

/// Writes the document as a file of the kind `written`, its own one or WEBP, into `sink`. The list changes
/// only in what a save itself refreshes, and not at all on a failure.
WriteResult write_document(DocumentWindow& window, DocumentKind written, const Sink& sink,
                           const SaveOptions& options, Host& host);

/// The time of a file that is not in its folder.
inline constexpr auto kFileGone = std::filesystem::file_time_type::min();
/// The time of the document's file where that is another than when it was read or saved; nothing where it is
/// the same, and for a document without a file.
std::optional<std::filesystem::file_time_type> changed_on_disk(const Document& document);

/// Writes the document to `path`. What stood there before survives any failure; what is no regular file is
/// not replaced. False, with the message given to the host, when it was not written (also when the
/// user refused to go on without a backup, which says nothing). The list changes only in what the save itself
/// refreshed: the time, and a header that had to change to hold its picture.
bool save_document(DocumentWindow& window, const std::filesystem::path& path, Host& host,
                   const SaveOptions& options = save_options());

}  // namespace vellum
