#include "shell/dialogs/operation_dialog.h"

#include <QBoxLayout>
#include <QCheckBox>

#include "operations/preview_operation.h"
#include "shell/dialogs/change_preview.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kScope = "scope";
constexpr FieldChoice kScopes[] = {{0, "All frames"}, {1, "Selected frames"}};

/// What an operation's dialog has beside the fields of its row.
std::vector<Field> scope_field(const Operation& operation, const DocumentWindow& window) {
  if (!operation.scoped) return {};
  return {{.name = kScope,
           .label = "Apply to",
           .type = FieldType::Choice,
           .choices = kScopes,
           .look = FieldLook::Radio,
           .locked = selected_frames(window).empty()}};
}

}  // namespace

OperationDialog::OperationDialog(const Operation& operation, const DocumentWindow& window, Services& services,
                                 QWidget* parent)
    : ParameterDialog(operation.parameters, window, scope_field(operation, window), services, parent),
      operation_(operation) {
  add_note_of_needs();
  add_preview();
  decorate_operation(*this);
  begin();
}

OperationChoice OperationDialog::choice() const {
  const FieldValues values = form().values();
  const bool some = operation_.scoped && values.number(kScope) == 1;
  return {values, some ? selected_frames(window()) : all_frames(frame_entries(window()).size())};
}

void OperationDialog::add_note_of_needs() {
  const OperationChoice now = choice();
  if (!(operation_needs(operation_, window(), now.values, now.frames) & kWholeCanvases)) return;
  form().add_note(text_of(StringId::ReconstructedFirst));
  auto* box = new QCheckBox(tr("Reconstruct first"), this);
  box->setChecked(true);
  box->setEnabled(false);
  form().add_row_behind({}, {}, box);
}

void OperationDialog::add_preview() {
  if (operation_.preview == OperationPreview::None) return;
  const bool full = operation_.preview == OperationPreview::Full;
  preview_ = new ChangePreview(
      window(),
      [this](const ChangePreview::Shown& shown) {
        const FieldValues values = form().values();
        if (check_values(operation_.parameters, values, window())) return Picture();
        return preview_operation(operation_, shown.picture, values, window());
      },
      [this](const Picture&) {
        const FieldValues values = form().values();
        const bool grows = operation_.growth && !check_values(operation_.parameters, values, window());
        return grows ? operation_.growth(values, window()) : 1.0;
      },
      this, full ? ChangePreview::Source::Canvas : ChangePreview::Source::ReducedFrame);
  static_cast<QBoxLayout*>(layout())->insertWidget(1, preview_, 1);
}

void OperationDialog::follow() {
  ParameterDialog::follow();
  if (preview_) preview_->refresh();
}

std::optional<OperationChoice> ask_for_operation(const Operation& operation, const DocumentWindow& window,
                                                 Services& services, QWidget* parent) {
  if (operation.parameters.fields.empty() && !operation.scoped)
    return OperationChoice{{}, all_frames(frame_entries(window).size())};
  OperationDialog dialog(operation, window, services, parent);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.choice();
}

}  // namespace vellum
