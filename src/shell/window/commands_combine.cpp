// The command Combine.
#include "configuration/shell_settings.h"
#include "core/build/build_animation.h"
#include "core/model/kind_table.h"
#include "operations/combine.h"
#include "shell/dialogs/combine_dialog.h"
#include "shell/window/commands.h"
#include "shell/window/lend.h"
#include "shell/window/main_window.h"

namespace vellum {

void combine_command(MainWindow& main) {
  const LentDocuments lent(open_documents(main));
  CombineDialog dialog(main.services(), &main);
  if (dialog.exec() != QDialog::Accepted) return;
  static unsigned count = 0;  // of documents of this name in this run of the program
  const DocumentKind kind = build_kind(kDefaultKind);
  DocumentWindow made;
  made.document.fileName =
      std::filesystem::path(settings::OpenExportPath) / ("Combined" + std::to_string(++count));
  made.document.fileName += kind_row(kind).extensions.front();
  if (!combine_files(made, dialog.files(), dialog.values(), kind, main.services().host)) return;
  if (DocumentFrame* frame = main.add_document(std::move(made))) frame->size_to_content();
}

}  // namespace vellum
