#include "shell/setup/video_encoders.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>

#include "base/text.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kPatience = 5000;  // milliseconds that the movie program has to answer
constexpr int kNameRole = Qt::UserRole;
constexpr QSize kList(480, 280);

/// The next word of a line, which it is taken off.
std::string_view take_word(std::string_view& line) {
  line = trimmed(line);
  const std::size_t end = std::min(line.find(' '), line.size());
  const std::string_view word = line.substr(0, end);
  line.remove_prefix(end);
  return word;
}

void fill(QListWidget& list, const std::vector<VideoEncoder>& encoders, const std::string& now) {
  auto* usual = new QListWidgetItem(QObject::tr("The usual one of the file type"), &list);
  usual->setData(kNameRole, QString());
  for (const VideoEncoder& encoder : encoders) {
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

std::vector<VideoEncoder> parse_video_encoders(std::string_view list) {
  // Six letters of abilities, the first of which says what is encoded; the name; the description. Above them
  // the letters are explained, each with an equals sign behind it.
  constexpr std::size_t kAbilities = 6;
  std::vector<VideoEncoder> encoders;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find('\n'), list.size());
    std::string_view line = list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
    const std::string_view abilities = take_word(line);
    const std::string_view name = take_word(line);
    if (abilities.size() != kAbilities || abilities.front() != 'V' || name.empty() || name == "=") continue;
    encoders.push_back({std::string(name), std::string(trimmed(line))});
  }
  return encoders;
}

std::vector<VideoEncoder> find_video_encoders() {
  const QString program = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
  if (program.isEmpty()) return {};
  QProcess process;
  process.start(program, {QStringLiteral("-hide_banner"), QStringLiteral("-encoders")}, QIODevice::ReadOnly);
  if (!process.waitForFinished(kPatience)) {
    process.kill();
    process.waitForFinished(kPatience);
    return {};
  }
  return parse_video_encoders(process.readAllStandardOutput().toStdString());
}

std::optional<std::string> ask_for_video_encoder(QWidget* parent, const std::string& now,
                                                 const std::vector<VideoEncoder>& encoders) {
  QDialog dialog(parent);
  dialog.setWindowTitle(QObject::tr("Video compression codec"));
  QVBoxLayout* layout = dialog_layout(dialog);
  auto* list = new QListWidget(&dialog);
  const auto ok = encoders.empty() ? QDialogButtonBox::NoButton : QDialogButtonBox::Ok;
  QDialogButtonBox* buttons = add_buttons(dialog, ok | QDialogButtonBox::Cancel, QStringLiteral("CODEC"));
  if (encoders.empty()) {
    list->hide();
    layout->addWidget(new QLabel(text_of(StringId::NoVideoEncoders)));
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
