#include "shell/dialogs/operation_dialog.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QScreen>

#include "image/resample.h"
#include "operations/preview_operation.h"
#include "operations/reconstruct.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kTallForm = 240, kMoreRoom = 160;  ///< pixels
constexpr const char* kScope = "scope";
constexpr FieldChoice kScopes[] = {{0, "All frames"}, {1, "Selected frames"}};

/// What an operation's dialog has beside the fields of its row.
std::vector<Field> scope_field(const Operation& operation, const DocumentWindow& window) {
  if (!operation.scoped || operation.ofSelected) return {};
  return {{.name = kScope,
           .label = "Apply to",
           .type = FieldType::Choice,
           .choices = kScopes,
           .look = FieldLook::Radio,
           .tip = "Select images in the list to apply it to them alone",
           .locked = selected_frames(window).empty()}};
}

}  // namespace

OperationDialog::OperationDialog(const Operation& operation, const DocumentWindow& window, Services& services,
                                 QWidget* parent, FieldValues asked)
    : ParameterDialog(operation.parameters, window, scope_field(operation, window), services, parent,
                      std::move(asked)),
      operation_(operation) {
  add_note_of_needs();
  add_preview();
  decorate_operation(*this);
  begin();
  // More room for the picture where the screen has it.
  const QSize most = screen()->availableSize() - QSize(kMoreRoom, kMoreRoom) / 4;
  if (beside_) resize((sizeHint() + QSize(kMoreRoom, 0)).boundedTo(most));
}

OperationChoice OperationDialog::choice() const {
  const FieldValues all = values();
  const bool some = operation_.ofSelected || (operation_.scoped && all.number(kScope) == 1);
  return {all, some ? selected_frames(window()) : all_frames(frame_entries(window()).size())};
}

void OperationDialog::add_note_of_needs() {
  const OperationChoice now = choice();
  if (!makes_whole_canvases(operation_, window(), now.values, now.frames)) return;
  form().add_note(text_of(StringId::ReconstructedFirst));
  auto* box = new QCheckBox(tr("Reconstruct first"), this);
  box->setChecked(true);
  box->setEnabled(false);
  form().add_row_behind({}, {}, box);
}

Picture OperationDialog::preview_of(const ChangePreview::Shown& shown) {
  // What can't be done yet changes nothing.
  if (fault()) return shown.picture;
  const FieldValues all = preview_values(operation_, values(), window(), shown.frame);
  if (!operation_.previewShown) return preview_operation(operation_, shown.picture, all, window());
  if (!playing_) {
    playing_.emplace(window().list, window().document);
    transparent_ = has_transparency(window());
  }
  const auto frame = static_cast<std::uint32_t>(shown.frame);
  return PictureScalePercent(operation_.previewShown(*playing_, frame, all, transparent_), shown.percent,
                             shown.percent, ResampleFilter::Box);
}

void OperationDialog::add_preview() {
  if (operation_.preview == OperationPreview::None) return;
  const bool full = operation_.preview == OperationPreview::Full;
  const Extent canvas = document_size(window().list, window().document);
  preview_ = new ChangePreview(
      window(), [this](const ChangePreview::Shown& shown) { return preview_of(shown); },
      [this, canvas](const Picture& frame) {
        if (operation_.previewShown)
          return std::max(1.0 * canvas.width / frame.width(), 1.0 * canvas.height / frame.height());
        const bool grows = operation_.growth && !fault();
        return grows ? operation_.growth(values(), window()) : 1.0;
      },
      this, full ? ChangePreview::Source::Canvas : ChangePreview::Source::ReducedFrame);
  auto* outer = static_cast<QBoxLayout*>(layout());
  if (form().sizeHint().height() <= kTallForm) {
    outer->insertWidget(1, preview_, 1);
    return;
  }
  // Below a tall form nobody would see it.
  preview_->stack();
  outer->removeWidget(&form());
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(&form());
  row->addWidget(preview_, 1);
  outer->insertLayout(0, row, 1);
  beside_ = true;
}

void OperationDialog::follow() {
  ParameterDialog::follow();
  if (preview_) preview_->refresh();
}

std::optional<OperationChoice> ask_for_operation(const Operation& operation, const DocumentWindow& window,
                                                 Services& services, QWidget* parent) {
  const Parameters& parameters = operation.parameters;
  if (operation.ofSelected && selected_frames(window).empty()) {
    services.host.show(StringId::SelectImagesToMove);
    return std::nullopt;
  }
  const auto fields = fields_for(parameters, window);
  const OperationChoice first{setting_values(fields), all_frames(frame_entries(window).size())};
  const auto whole = [&] { return makes_whole_canvases(operation, window, first.values, first.frames); };
  if (parameters.fields.empty() && !operation.scoped) {
    if (whole()) services.host.add_note(string_text(StringId::ReconstructedFirst));
    return first;
  }
  const auto tells = [&] {
    return whole() || (parameters.note && !parameters.note(first.values, window).empty());
  };
  if (fields.empty() && !operation.scoped && !tells()) return first;
  const auto asked = ask_first(operation, window, services, parent);
  if (!asked) return std::nullopt;
  OperationDialog dialog(operation, window, services, parent, *asked);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  OperationChoice choice = dialog.choice();
  return ask_last(operation, choice, window, services) ? std::optional(std::move(choice)) : std::nullopt;
}

}  // namespace vellum
