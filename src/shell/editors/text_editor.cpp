// The editor of text chunks: counters, files, the date.
#include <QDateTime>
#include <QHBoxLayout>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

#include "base/file.h"
#include "base/limits.h"
#include "base/text.h"
#include "core/chunks/text_chunk.h"
#include "shell/editors/field_editor.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kCountDelay = 200;  // ms of quiet before a text is deflated to tell its size

QString counters(const FieldValues& values, bool latin1) {
  TextChunk text;
  text.text = values.text("text");
  const auto characters = to_qt(text.text).size();
  const std::size_t bytes = latin1 ? latin1_from_utf8(text.text).size() : text.text.size();
  return QObject::tr("%1, %2, %3 deflated")
      .arg(to_qt(count_text(StringId::OneCharacter, static_cast<std::uint64_t>(characters))),
           to_qt(count_text(StringId::OneByte, bytes)),
           to_qt(count_text(StringId::OneByte, deflated_text_bytes(text, latin1))));
}

/// A label that follows the text.
QLabel* add_counters(Form& form, bool latin1) {
  auto* label = new QLabel(&form);
  label->setObjectName(QStringLiteral("counters"));
  auto* timer = new QTimer(label);
  timer->setSingleShot(true);
  timer->setInterval(kCountDelay);
  const auto show = [&form, label, latin1] { label->setText(counters(form.values(), latin1)); };
  QObject::connect(timer, &QTimer::timeout, label, show);
  QObject::connect(&form, &Form::edited, timer, [timer](const QString& name) {
    if (name == QLatin1String("text")) timer->start();
  });
  show();
  return label;
}

/// A file's text: UTF-8 where it is valid, otherwise Latin-1.
std::string decoded(std::span<const std::uint8_t> bytes) {
  const std::string text(bytes.begin(), bytes.end());
  const QString utf8 = to_qt(text);
  return utf8.contains(QChar::ReplacementCharacter) ? utf8_from_latin1(text) : text;
}

std::optional<std::filesystem::path> choose(Editing editing, const QString& title, bool saving) {
  const auto& ask = editing.services.choose_file;
  const QString filters = QObject::tr("Text (*.txt);;All files (*)");
  return ask ? ask({title.toStdString(), filters.toStdString(), {}, saving}) : std::nullopt;
}

void load_text(Editing editing) {
  const auto path = choose(editing, QObject::tr("Load text"), false);
  if (!path) return;
  std::string reason;
  const auto file = read_file(*path, reason, kMaximumTextBytes);
  if (!file) return editing.services.host.show(StringId::ErrorReadingFile, {}, reason);
  editing.form.set_value("text", with_line_feeds(decoded(*file)));
}

void save_text(Editing editing) {
  const auto path = choose(editing, QObject::tr("Save text"), true);
  if (!path) return;
  const std::string text = editing.form.values().text("text");
  SafeFile file(*path);
  if (file.ok() && file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) &&
      file.commit())
    return;
  editing.services.host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, file.reason());
}

void insert_date(Editing editing) {
  if (auto* text = qobject_cast<QPlainTextEdit*>(editing.form.input("text"))) {
    text->insertPlainText(
        QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("MMMM d, yyyy h:mm")));
    text->setFocus();
  }
}

struct TextButton {
  const char* label;
  void (*press)(Editing);
};
constexpr TextButton kButtons[] = {
    {"Load...", load_text}, {"Save...", save_text}, {"Insert date", insert_date}};

}  // namespace

void decorate_text(Editing& editing) {
  const bool latin1 = editing.window.list.record(editing.index).tag != tag::iTXt;
  auto* row = new QWidget(&editing.form);
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  for (const TextButton& button : kButtons) {
    auto* widget = new QPushButton(QObject::tr(button.label), row);
    widget->setAutoDefault(false);
    layout->addWidget(widget);
    QObject::connect(widget, &QPushButton::clicked, row, [editing, press = button.press] { press(editing); });
  }
  layout->addStretch(1);
  editing.form.add_row_behind("text", {}, row);
  editing.form.add_row_behind("compressed", {}, add_counters(editing.form, latin1));
  if (auto* dialog = qobject_cast<QDialog*>(&editing.owner)) dialog->setSizeGripEnabled(true);
}

}  // namespace vellum
