#include "shell/setup/paint_search_box.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

#include "configuration/setting_values.h"
#include "configuration/shell_settings.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/paint_programs.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kPathRole = Qt::UserRole;
constexpr QSize kList(420, 190);

QListWidgetItem* add_program(QListWidget& list, const QString& name, const QString& path) {
  auto* item = new QListWidgetItem(path.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, path), &list);
  item->setData(kPathRole, path);
  item->setData(kPathRole + 1, name);
  return item;
}

/// The row of a program; one that is not listed gets a row of its own.
void select_program(QListWidget& list, const QString& name, const QString& path) {
  for (int row = 0; row < list.count(); ++row)
    if (list.item(row)->data(kPathRole).toString() == path) return list.setCurrentRow(row);
  list.setCurrentItem(add_program(list, name, path));
}

void look_for_program(QDialog& dialog, QListWidget& list) {
  const QString path =
      QFileDialog::getOpenFileName(&dialog, QObject::tr("Select paint"), QStringLiteral("/usr/bin"));
  if (!path.isEmpty()) select_program(list, QFileInfo(path).baseName(), path);
}

void store(const char* key, const SettingValue& value) { change_setting(*find_setting(key), value); }

}  // namespace

PaintChoice stored_paint_choice() {
  const bool alpha = settings::PaintbrushSupportsAlpha != 0;
  if (settings::UseWindowsPaintbrush != 0) return {{}, {}, alpha};
  return {settings::PaintbrushName, settings::PaintbrushPath, alpha};
}

void store_paint_choice(const PaintChoice& choice) {
  if (choice == stored_paint_choice()) return;
  store("UseWindowsPaintbrush", {choice.path.empty() ? 1 : 0, {}});
  store("PaintbrushName", {0, choice.name});
  store("PaintbrushPath", {0, choice.path});
  store("PaintbrushSupportsAlpha", {choice.keepsAlpha ? 1 : 0, {}});
}

std::optional<PaintChoice> ask_for_paint_program(QWidget* parent, const PaintChoice& now) {
  QDialog dialog(parent);
  dialog.setObjectName(QStringLiteral("PaintSearchBox"));
  dialog.setWindowTitle(QObject::tr("Select paint"));
  auto* list = new QListWidget(&dialog);
  list->setMinimumSize(kList);
  list->setAccessibleName(QObject::tr("Paint programs"));
  add_program(*list, QObject::tr("The desktop's own program for pictures"), {});
  for (const PaintProgram& program : installed_paint_programs())
    add_program(*list, program.name, program.path);
  const bool none_found = list->count() == 1;
  select_program(*list, to_qt(now.name), to_qt(now.path));
  auto* alpha = new QCheckBox(QObject::tr("&The program knows transparency"), &dialog);
  alpha->setChecked(now.keepsAlpha);
  QDialogButtonBox* buttons =
      add_buttons(dialog, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("PAINT"));
  auto* browse = buttons->addButton(QObject::tr("&Browse..."), QDialogButtonBox::ActionRole);
  QObject::connect(browse, &QPushButton::clicked, &dialog, [&] { look_for_program(dialog, *list); });
  QObject::connect(list, &QListWidget::itemDoubleClicked, &dialog, &QDialog::accept);
  QVBoxLayout* layout = dialog_layout(dialog);
  layout->addWidget(
      new QLabel(none_found ? text_of(StringId::NoPaintProgram) : text_of(StringId::PaintPrograms)));
  layout->addWidget(list, 1);
  layout->addWidget(alpha);
  layout->addWidget(buttons);
  list->setFocus();
  if (dialog.exec() != QDialog::Accepted || !list->currentItem()) return std::nullopt;
  const QListWidgetItem& chosen = *list->currentItem();
  const QString path = chosen.data(kPathRole).toString();
  return PaintChoice{path.isEmpty() ? std::string() : chosen.data(kPathRole + 1).toString().toStdString(),
                     path.toStdString(), alpha->isChecked()};
}

}  // namespace vellum
