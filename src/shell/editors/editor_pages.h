// What the editors of this folder share: pages over OK and Cancel, and files that they load and write.
#pragma once

#include <QDialog>
#include <QTabWidget>

#include "shell/services/services.h"
#include "shell/widgets/raw_page.h"

namespace vellum {

/// "Edit PLTE".
QString editor_title(ChunkTag tag);
/// The page of the guide that tells of such chunks.
QString chunk_topic(ChunkTag tag);

/// Lays the pages out over OK and Cancel and gives the dialog its title. `check` runs at OK; a text that it
/// returns is shown, and the dialog stays; so it does where `agree`, asked behind it, is false.
void finish_editor(QDialog& dialog, QTabWidget* pages, ChunkTag tag, Services& services,
                   std::function<std::string()> check = nullptr, std::function<bool()> agree = nullptr);

/// Shows a text that has its values already.
void tell(Services& services, StringId id, std::string text, std::string more = {});

/// The bytes of a file that the user chooses; nothing, after the user was told, when it can't be read.
std::optional<std::vector<std::uint8_t>> load_bytes(Services& services, const QString& title);
/// Writes them to a file that the user chooses. False when that failed, after the user was told, or was
/// cancelled.
bool save_bytes(Services& services, const QString& title, std::span<const std::uint8_t> bytes);

/// Writes the payload of a record, as it will be written, to a file that the user chooses.
bool export_raw(const ChunkRecord& record, DocumentKind kind, Services& services);

}  // namespace vellum
