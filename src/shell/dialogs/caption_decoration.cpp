// Caption: one of two forms, and a text that isn't lost when the dialog is left.
#include "configuration/shell_settings.h"
#include "operations/settings.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/dialogs/operation_dialog.h"

namespace vellum {

/// The fields of the form that Setup doesn't choose have their values already, and are not shown.
std::optional<FieldValues> fields_of_caption(const Operation& operation, const DocumentWindow& window,
                                             Services&, QWidget*) {
  const auto fields = fields_for(operation.parameters, window);
  const std::int64_t classic = settings::ClassicCaptionWindow != 0;
  const FieldValues now = setting_values(fields);
  FieldValues values;
  values.set("classic", classic);
  for (const Field& field : fields) {
    const Field* by = field.enabledBy ? find_field(fields, field.enabledBy) : nullptr;
    const Field& form = by && by->name != std::string_view("classic") ? *by : field;
    if (form.enabledBy && form.enabledAt != classic) values.set(field.name, *now.find(field.name));
  }
  return values;
}

void decorate_caption(OperationDialog& dialog) {
  decorate_strip(dialog);
  QObject::connect(&dialog, &QDialog::rejected, &dialog, [&dialog, first = dialog.kept_text()] {
    const std::string text = dialog.kept_text();
    Host& host = dialog.host();
    if (text.empty() || text == first || settings::AnnotatePromptSave == 0 || !host.ask) return;
    const StringId id = StringId::KeepCaption;
    const Message question{id, {}, std::string(string_text(id)), {}, &settings::AnnotatePromptSave};
    if (host.ask(question, false) == Answer::Yes) dialog.keep_text();
  });
}

}  // namespace vellum
