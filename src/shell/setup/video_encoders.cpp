#include "shell/setup/video_encoders.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kNameRole = Qt::UserRole;
constexpr QSize kList(480, 280);

void fill(QListWidget& list, const std::vector<MovieEncoder>& encoders, const std::string& now) {
  auto* usual = new QListWidgetItem(QObject::tr("The usual one of the file type"), &list);
  usual->setData(kNameRole, QString());
  for (const MovieEncoder& encoder : encoders) {
    auto* item = new QListWidgetItem(
        QStringLiteral("%1 - %2").arg(to_qt(encoder.name), to_qt(encoder.description)), &list);
    item->setData(kNameRole, to_qt(encoder.name));
    if (encoder.name == now) list.setCurrentItem(item);
  }
  if (!list.currentItem()) list.setCurrentItem(usual);
}

void show_matching(QListWidget& list, const QString& words) {
  for (int row = 0; row < list.count(); ++row)
    list.item(row)->setHidden(!list.item(row)->text().contains(words, Qt::CaseInsensitive));
}

}  // namespace

std::optional<std::string> ask_for_video_encoder(QWidget* parent, const std::string& now,
                                                 const std::vector<MovieEncoder>& encoders) {
  QDialog dialog(parent);
  dialog.setWindowTitle(QObject::tr("Video compression codec"));
  QVBoxLayout* layout = dialog_layout(dialog);
  auto* list = new QListWidget(&dialog);
  const auto ok = encoders.empty() ? QDialogButtonBox::NoButton : QDialogButtonBox::Ok;
  QDialogButtonBox* buttons = add_buttons(dialog, ok | QDialogButtonBox::Cancel, QStringLiteral("CODEC"));
  if (encoders.empty()) {
    list->hide();
    layout->addWidget(new QLabel(text_of(StringId::NoMovieLibraries)));
  } else {
    fill(*list, encoders, now);
    list->setMinimumSize(kList);
    list->setAccessibleName(QObject::tr("Encoders"));
    auto* search = new QLineEdit(&dialog);
    search->setPlaceholderText(QObject::tr("Search"));
    search->setClearButtonEnabled(true);
    QObject::connect(search, &QLineEdit::textChanged, list,
                     [list](const QString& words) { show_matching(*list, words); });
    QObject::connect(list, &QListWidget::itemDoubleClicked, &dialog, &QDialog::accept);
    layout->addWidget(search);
    layout->addWidget(list, 1);
    search->setFocus();
  }
  layout->addWidget(buttons);
  if (dialog.exec() != QDialog::Accepted || !list->currentItem()) return std::nullopt;
  return list->currentItem()->data(kNameRole).toString().toStdString();
}

}  // namespace vellum
