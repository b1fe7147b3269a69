// The dialog of any operation: its fields, its scope, a preview before and after, its last values.
#pragma once

#include "operations/operation.h"
#include "shell/forms/form_dialog.h"
#include "shell/services/services.h"

namespace vellum {

class ChangePreview;

struct OperationChoice {
  FieldValues values;
  FrameList frames;
};

class OperationDialog : public FormDialog {
  Q_OBJECT
 public:
  /// Row and window outlive the dialog. Settings, state file and history keep the values at OK.
  OperationDialog(const Operation& operation, const DocumentWindow& window, Services& services,
                  QWidget* parent);

  OperationChoice choice() const;

  // For what single operations add to their dialogs.
  const Operation& operation() const { return operation_; }
  const DocumentWindow& window() const { return window_; }
  Host& host() { return services_.host; }
  ChangePreview* preview() { return preview_; }
  /// Works preview and note out anew; for values that were put in without a person's hand.
  void follow();

 private:
  void add_scope_and_notes();
  void add_preview();
  void add_history();
  bool keep();

  const Operation& operation_;
  const DocumentWindow& window_;
  Services& services_;
  ChangePreview* preview_ = nullptr;
  QLabel* note_ = nullptr;
};

/// What an operation is to do: asked for where it has fields or a scope. Nothing when the user cancelled.
std::optional<OperationChoice> ask_for_operation(const Operation& operation, const DocumentWindow& window,
                                                 Services& services, QWidget* parent);

}  // namespace vellum
