// Extract has a folder to browse for and, where files have no numbers, a name for each.
#include <QFileDialog>
#include <QPushButton>

#include "configuration/shell_settings.h"
#include "operations/extract_frames.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/forms/default_folders.h"
#include "shell/look/text.h"
#include "shell/services/picture_files.h"

namespace vellum {

void decorate_extract(OperationDialog& dialog) {
  Form& form = dialog.form();
  const std::filesystem::path title = document_title(dialog.window().document);
  form.set_value("folder", usable_folder(settings::OpenExportPath).toStdString());
  form.set_value("stem", title.stem().string());
  auto* browse = new QPushButton(QObject::tr("&Browse..."), &dialog);
  browse->setAutoDefault(false);
  QObject::connect(browse, &QPushButton::clicked, &dialog, [&dialog, &form] {
    const QString folder = QFileDialog::getExistingDirectory(&dialog, text_of(StringId::ExtractTitle),
                                                             to_qt(form.values().text("folder")));
    if (!folder.isEmpty()) form.set_value("folder", folder.toStdString());
  });
  form.add_row_behind("folder", {}, browse);
  QObject::connect(&dialog, &QDialog::accepted, &dialog,
                   [&form] { settings::OpenExportPath = form.values().text("folder"); });
}

bool ask_for_names(OperationChoice& choice, const DocumentWindow& window, Services& services) {
  if (choice.values.number("numbered") != 0 || choice.frames.size() < 2) return true;
  std::string names;
  for (const std::size_t frame : choice.frames) {
    const auto offered = extracted_names(
        window,
        {.folder = choice.values.text("folder"), .stem = choice.values.text("stem"), .frames = {frame}});
    const auto chosen =
        choose_picture_file(services, text_of(StringId::ExtractTitle), offered.front().string());
    if (!chosen) return false;
    names += chosen->string() + '\n';
  }
  choice.values.set("names", names);
  return true;
}

}  // namespace vellum
