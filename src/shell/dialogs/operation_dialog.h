// The dialog of any operation: its fields, its scope, a preview before and after, its last values.
#pragma once

#include "operations/operation.h"
#include "shell/dialogs/change_preview.h"
#include "shell/dialogs/parameter_dialog.h"

namespace vellum {

struct OperationChoice {
  FieldValues values;
  FrameList frames;
};

class OperationDialog : public ParameterDialog {
  Q_OBJECT
 public:
  OperationDialog(const Operation& operation, const DocumentWindow& window, Services& services,
                  QWidget* parent, FieldValues asked = {});

  OperationChoice choice() const;

  // For what single operations add to their dialogs.
  const Operation& operation() const { return operation_; }
  ChangePreview* preview() { return preview_; }
  void follow() override;

 private:
  void add_note_of_needs();
  Picture preview_of(const ChangePreview::Shown& shown);
  void add_preview();

  const Operation& operation_;
  std::optional<Compositor> playing_;
  bool transparent_ = false;  ///< the document, once `playing_` is there
  ChangePreview* preview_ = nullptr;
  bool beside_ = false;  ///< the preview stands beside the form
};

/// What an operation is to do: asked where there is something to ask or to tell. Nothing when the user
/// cancelled.
std::optional<OperationChoice> ask_for_operation(const Operation& operation, const DocumentWindow& window,
                                                 Services& services, QWidget* parent);

}  // namespace vellum
