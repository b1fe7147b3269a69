// The dialog of any operation: its fields, its scope, a preview before and after, its last values.
#pragma once

#include "operations/operation.h"
#include "shell/dialogs/parameter_dialog.h"

namespace vellum {

class ChangePreview;

struct OperationChoice {
  FieldValues values;
  FrameList frames;
};

class OperationDialog : public ParameterDialog {
  Q_OBJECT
 public:
  OperationDialog(const Operation& operation, const DocumentWindow& window, Services& services,
                  QWidget* parent);

  OperationChoice choice() const;

  // For what single operations add to their dialogs.
  const Operation& operation() const { return operation_; }
  ChangePreview* preview() { return preview_; }
  void follow() override;

 private:
  void add_note_of_needs();
  void add_preview();

  const Operation& operation_;
  ChangePreview* preview_ = nullptr;
};

/// What an operation is to do: asked for where it has fields or a scope. Nothing when the user cancelled.
std::optional<OperationChoice> ask_for_operation(const Operation& operation, const DocumentWindow& window,
                                                 Services& services, QWidget* parent);

}  // namespace vellum
