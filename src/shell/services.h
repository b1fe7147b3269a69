// What the commands of the desktop ask of the world around them. The program fills it with boxes and dialogs,
// a test with answers.
#pragma once

#include <QString>
#include <filesystem>
#include <functional>
#include <optional>

#include "base/host.h"
#include "core/document.h"

namespace vellum {

struct SaveChoice {
  DocumentKind kind = DocumentKind::None;
  std::filesystem::path name;  ///< offered to the user
};

/// A file beside documents: a picture, a text. The filter is one of the desktop's file dialogs.
struct FileChoice {
  QString title, filter;
  std::filesystem::path name;  ///< offered to the user, where one is written
};

struct Services {
  Host host;
  /// A file to open; empty when the user cancelled.
  std::function<std::optional<std::filesystem::path>()> choose_open;
  /// A file to write, about whose overwriting the user was asked; empty when the user cancelled.
  std::function<std::optional<std::filesystem::path>(const SaveChoice&)> choose_save;
  /// Whether the Shift key is down at this moment.
  std::function<bool()> shift_held;
  /// Whether an operation runs, so that no command may start.
  std::function<bool()> busy;
  /// A file to write beside documents, and one to read; empty when the user cancelled.
  std::function<std::optional<std::filesystem::path>(const FileChoice&)> choose_output, choose_input;
};

}  // namespace vellum
