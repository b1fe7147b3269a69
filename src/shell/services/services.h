// What the commands of the desktop ask of the world around them. The program fills it with boxes and dialogs,
// a test with answers.
#pragma once

#include <QString>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "base/host.h"
#include "core/model/document.h"
#include "operations/parameters.h"

namespace vellum {

struct SaveChoice {
  DocumentKind kind = DocumentKind::None;
  std::filesystem::path name;  ///< offered to the user
};

/// A file that a dialog loads or writes.
struct FileChoice {
  std::string title;
  std::string filters;         ///< "Text (*.txt);;All files (*)"
  std::filesystem::path name;  ///< offered to the user; or a folder
  bool saving = false;
  /// Number of the filter that was chosen last; null: the one that takes `name`, or the first.
  int* filter = nullptr;
  /// Fields below the list of files: those of a row as they fit `window`; `values` are shown, and take what
  /// the user chose.
  const Parameters* parameters = nullptr;
  const DocumentWindow* window = nullptr;
  FieldValues* values = nullptr;
  /// The field whose value is the number of the filter, and isn't shown.
  const char* filterField = nullptr;
};

struct Services {
  Host host;
  /// A file to open; empty when the user cancelled.
  std::function<std::optional<std::filesystem::path>()> choose_open;
  /// A file to write, about whose overwriting the user was asked; empty when the user cancelled.
  std::function<std::optional<std::filesystem::path>(const SaveChoice&)> choose_save;
  /// Pictures to insert, in the order in which they go in; empty when the user cancelled.
  std::function<std::vector<std::filesystem::path>(bool several)> choose_pictures;
  /// Whether the Shift key is down at this moment.
  std::function<bool()> shift_held;
  /// Whether an operation runs, so that no command may start.
  std::function<bool()> busy;
  /// Empty when the user cancelled.
  std::function<std::optional<std::filesystem::path>(const FileChoice&)> choose_file = {};
  /// A document has got this file for its own.
  std::function<void(const std::filesystem::path&)> remember_file = {};
  /// Whether the document is among the favorites.
  std::function<bool(const Document&)> is_favorite = {};
  /// Whether the Control key is down at this moment.
  std::function<bool()> control_held = {};
};

}  // namespace vellum
