// An import as a row: files of another format that become documents.
#pragma once

#include <filesystem>

#include "base/host.h"
#include "operations/parameters.h"

namespace vellum {

struct ImportRun {
  std::span<const std::uint8_t> bytes;
  const FieldValues& values;
  Host& host;
  bool told = false;                ///< why it failed was told
  std::filesystem::path path = {};  ///< of the file
};

/// One row. Its command on the desktop, where it has a number, asks for such a file; `open_document` takes
/// them too, as soon as `take_imports` was called.
struct Importer {
  Parameters parameters;
  const char* filter;                            ///< "GIF files"
  std::span<const std::string_view> extensions;  ///< with their dots
  bool (*recognizes)(std::span<const std::uint8_t> bytes);
  /// Whether it is worth a question what kind of document it becomes; without it none is asked.
  bool (*isAnimation)(std::span<const std::uint8_t> bytes) = nullptr;
  /// Makes the window, which is empty, a document whose name is given its extension by the caller. False with
  /// the reason kept in the host, or told.
  bool (*read)(DocumentWindow& window, ImportRun& run) = nullptr;
  /// It reads the file by itself, a piece at a time, and gets no bytes; `open_document` doesn't take its
  /// files.
  bool fromFile = false;
};

/// All imports, in the order of the menu.
std::span<const Importer* const> importer_table();
const Importer* find_importer(std::string_view name);
const Importer* find_importer(int command);
/// The row that knows the content; null: none does.
const Importer* importer_of(std::span<const std::uint8_t> bytes);

/// The field that imports of animations have: what kind of document they become, numbered as in
/// build_animation.h.
inline constexpr const char* kKindField = "kind";
inline constexpr FieldChoice kKindChoices[] = {
    {0, "Animated PNG", "apng"}, {1, "MNG", "mng"}, {2, "WebP", "webp"}};

/// Reads such a file into the window, which is empty: a document that was never saved, named as the file with
/// the extension of its kind. False, with the message given to the host unless the user stopped it.
bool import_bytes(const Importer& importer, DocumentWindow& window, const std::filesystem::path& path,
                  std::span<const std::uint8_t> bytes, const FieldValues& values, Host& host);
bool import_file(const Importer& importer, DocumentWindow& window, const std::filesystem::path& path,
                 const FieldValues& values, Host& host);

/// From now on `open_document` takes files of the table. Where the host can ask, it does for the kind of
/// animations.
void take_imports();

}  // namespace vellum
