#include "shell/dialogs/folder_actions.h"

#include <QDir>
#include <QFileInfo>
#include <QInputDialog>

#include "shell/look/text.h"

namespace vellum {
namespace {

using Changed = std::function<void(const QString& folder)>;

/// A name without a slash; empty when the user cancelled.
QString ask_name(const QString& title, const QString& now, QWidget* parent) {
  const QString name =
      QInputDialog::getText(parent, title, text_of(StringId::FolderName), QLineEdit::Normal, now).trimmed();
  return name.contains(u'/') || name == QStringLiteral(".") || name == QStringLiteral("..") ? QString()
                                                                                            : name;
}

void make_folder(const QString& folder, Services& services, QWidget* parent, const Changed& changed) {
  const QString name = ask_name(QObject::tr("New folder"), {}, parent);
  if (name.isEmpty()) return;
  const QString made = QDir(folder).filePath(name);
  if (QDir().mkdir(made)) return changed(made);
  services.host.show(StringId::FolderNotMade, {}, made.toStdString());
}

void rename_folder(const QString& folder, Services& services, QWidget* parent, const Changed& changed) {
  const QFileInfo info(folder);
  const QString name = ask_name(QObject::tr("Rename folder"), info.fileName(), parent);
  if (name.isEmpty() || name == info.fileName()) return;
  const QString renamed = info.dir().filePath(name);
  if (!QFileInfo::exists(renamed) && QDir().rename(folder, renamed)) return changed(renamed);
  services.host.show(StringId::FolderNotRenamed, {}, folder.toStdString());
}

void remove_folder(const QString& folder, Services& services, const Changed& changed) {
  const QString above = QFileInfo(folder).absolutePath();
  if (QDir().rmdir(folder)) return changed(above);
  services.host.show(StringId::FolderNotRemoved, {}, folder.toStdString());
}

}  // namespace

void add_folder_actions(QMenu& menu, const QString& folder, Services& services, QWidget* parent,
                        const Changed& changed) {
  menu.addAction(QObject::tr("&New folder"), parent,
                 [=, &services] { make_folder(folder, services, parent, changed); });
  QAction* rename = menu.addAction(QObject::tr("&Rename folder"), parent,
                                   [=, &services] { rename_folder(folder, services, parent, changed); });
  QAction* remove = menu.addAction(QObject::tr("Re&move folder"), parent,
                                   [=, &services] { remove_folder(folder, services, changed); });
  const bool own = !QDir(folder).isRoot() && folder != QDir::homePath();
  rename->setEnabled(own);
  remove->setEnabled(own);
}

}  // namespace vellum
