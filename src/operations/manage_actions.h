// What Manage can do to frames with one value, as rows that its dialog and its command line read.
#pragma once

#include "base/fields.h"
#include "operations/manage_frames.h"

namespace vellum {

struct ManageAction {
  Field field;       ///< name: the option; label: as the dialog shows it
  const char* form;  ///< of the value, for a command line
  const char* help;
  const char* shipped;  ///< what stands in the dialog at first
  /// Nothing when the value is a text that can't be read.
  std::optional<Managed> (*apply)(DocumentWindow&, const FrameList&, const FieldValue&);
  StringId rule{};  ///< told then
};

/// In the order of the dialog.
std::span<const ManageAction> manage_actions();
/// The name must be there.
const ManageAction& manage_action(std::string_view name);
/// The field with the choices that the kind has; nothing where the kind has none of them.
std::optional<Field> manage_field(const ManageAction& action, DocumentKind kind);

}  // namespace vellum
