// The clipboard, and what else carries chunks between windows and programs.
#pragma once

#include <QMimeData>

#include "core/edit/copy_chunks.h"

namespace vellum {

/// A block of core/edit/clipboard_block.h.
inline const QString kChunkMime = QStringLiteral("application/x-vellumcraft-chunks");

/// All forms of what was copied. Nothing in it depends on the document any longer.
QMimeData* mime_of(const CopiedChunks& copied);
QByteArray bytes_of(const std::vector<std::uint8_t>& block);
std::span<const std::uint8_t> span_of(const QByteArray& bytes);

void put_on_clipboard(const CopiedChunks& copied);

/// Pastes what the clipboard holds behind the caret: chunks before a picture before text. False, after a
/// message, when nothing was pasted.
bool paste_from_clipboard(DocumentWindow& window, Host& host);

}  // namespace vellum
