#include "shell/dialogs/new_dialog.h"

#include "core/chunks/chunk_fields.h"
#include "core/edit/new_document_fields.h"
#include "shell/editors/field_editor.h"

namespace vellum {
namespace {

QString title_of(DocumentKind kind) {
  switch (kind) {
    case DocumentKind::PING:
      return QObject::tr("New PNG");
    case DocumentKind::APNG:
      return QObject::tr("New animated PNG");
    case DocumentKind::MING:
      return QObject::tr("New MNG");
    default:
      return QObject::tr("New WebP");
  }
}

}  // namespace

std::optional<NewDocument> ask_for_new_document(QWidget* parent, DocumentKind kind, Host& host) {
  NewDocument parameters = default_new_document(kind);
  FormDialog dialog(title_of(kind), QStringLiteral("NEW"), new_document_fields(kind),
                    new_document_values(parameters), host, parent);
  offer_depths_of_color_type(dialog.form(), kind);
  dialog.adjustSize();
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  parameters = new_document_of(dialog.form().values(), parameters);
  keep_new_document(parameters);
  return parameters;
}

}  // namespace vellum
