#include "shell/dialogs/overwrite_prompt.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/file_thumbnail.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kSide = 128;  // of a thumbnail, device-independent pixels

struct AnswerRow {
  OverwriteAnswer answer;
  const char* label;
};
constexpr AnswerRow kAnswers[] = {
    {OverwriteAnswer::Overwrite,
     QT_TRANSLATE_NOOP("vellum::OverwritePrompt", "&Overwrite the existing document")},
    {OverwriteAnswer::Skip, QT_TRANSLATE_NOOP("vellum::OverwritePrompt", "&Skip the current document")},
    {OverwriteAnswer::KeepBoth, QT_TRANSLATE_NOOP("vellum::OverwritePrompt", "&Keep both documents")},
    {OverwriteAnswer::NewName,
     QT_TRANSLATE_NOOP("vellum::OverwritePrompt", "&Enter a new name for this document")},
    {OverwriteAnswer::Cancel, QT_TRANSLATE_NOOP("vellum::OverwritePrompt", "&Cancel this batch")},
};

/// Whether an answer can hold for later files too.
bool can_hold(OverwriteAnswer answer) {
  return answer != OverwriteAnswer::NewName && answer != OverwriteAnswer::Cancel;
}

QLabel* framed(const QImage& image, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setFixedSize(kSide + 8, kSide + 8);
  label->setAlignment(Qt::AlignCenter);
  label->setFrameShape(QFrame::StyledPanel);
  label->setPixmap(QPixmap::fromImage(image));
  return label;
}

QImage small_image(const Picture& picture) {
  if (!picture) return {};
  const QSize own(static_cast<int>(picture.width()), static_cast<int>(picture.height()));
  return scaled_image(picture,
                      own.scaled(own.boundedTo({kSide, kSide}), Qt::KeepAspectRatio).expandedTo({1, 1}));
}

}  // namespace

OverwritePrompt::OverwritePrompt(const std::filesystem::path& target, const Picture& result,
                                 Services& services, QWidget* parent)
    : QDialog(parent),
      target_(target),
      services_(services),
      name_(new QLineEdit(path_text(target.filename()), this)),
      rest_(new QCheckBox(tr("&Apply to the rest of this batch"), this)) {
  setWindowTitle(tr("Overwrite"));
  QVBoxLayout* layout = dialog_layout(*this);
  layout->setSpacing(style::kGap);
  auto* text = new QLabel(to_qt(filled(StringId::OverwriteText, {target.filename().string()})), this);
  text->setTextFormat(Qt::PlainText);
  text->setWordWrap(true);
  layout->addWidget(text);
  layout->addWidget(make_pictures(result));
  make_answers(*layout);
  layout->addWidget(rest_);
  buttons_ =
      add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("BATCHPROCESSOR"));
  buttons_->button(QDialogButtonBox::Ok)->setText(tr("&Proceed"));
  buttons_->button(QDialogButtonBox::Cancel)->setText(tr("Cancel &batch"));
  layout->addWidget(buttons_);
  connect(name_, &QLineEdit::textChanged, this, &OverwritePrompt::follow_answer);
  follow_answer();
}

QWidget* OverwritePrompt::make_pictures(const Picture& result) {
  auto* pictures = new QWidget(this);
  auto* grid = new QGridLayout(pictures);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setHorizontalSpacing(style::kMargin);
  grid->addWidget(new QLabel(tr("Existing document:"), pictures), 0, 0);
  grid->addWidget(new QLabel(tr("New document:"), pictures), 0, 1);
  grid->addWidget(framed(file_thumbnail(target_, kSide), pictures), 1, 0);
  grid->addWidget(framed(small_image(result), pictures), 1, 1);
  grid->setColumnStretch(2, 1);
  return pictures;
}

void OverwritePrompt::make_answers(QLayout& layout) {
  for (const AnswerRow& row : kAnswers) {
    auto* button = new QRadioButton(tr(row.label), this);
    connect(button, &QRadioButton::toggled, this, &OverwritePrompt::follow_answer);
    layout.addWidget(button);
    answers_.emplace_back(row.answer, button);
    if (row.answer != OverwriteAnswer::NewName) continue;
    auto* line = new QWidget(this);
    auto* box = new QHBoxLayout(line);
    box->setContentsMargins(style::kWideGap, 0, 0, 0);
    auto* label = new QLabel(tr("&Name:"), line);
    label->setBuddy(name_);
    box->addWidget(label);
    box->addWidget(name_, 1);
    layout.addWidget(line);
  }
  answers_.front().second->setChecked(true);
}

OverwriteAnswer OverwritePrompt::answer() const {
  for (const auto& [answer, button] : answers_)
    if (button->isChecked()) return answer;
  return OverwriteAnswer::Cancel;
}

void OverwritePrompt::choose(OverwriteAnswer wanted) {
  for (const auto& [answer, button] : answers_)
    if (answer == wanted) button->setChecked(true);
}

std::filesystem::path OverwritePrompt::new_path() const {
  return target_.parent_path() / to_path(name_->text());
}

void OverwritePrompt::follow_answer() {
  const bool named = answer() == OverwriteAnswer::NewName;
  name_->setEnabled(named);
  rest_->setEnabled(can_hold(answer()));
  const QString name = name_->text();
  // buttons_ comes last.
  if (auto* box = findChild<QDialogButtonBox*>())
    box->button(QDialogButtonBox::Ok)
        ->setEnabled(!named || (!name.trimmed().isEmpty() && !name.contains(u'/')));
}

void OverwritePrompt::accept() {
  std::error_code error;
  if (answer() == OverwriteAnswer::NewName && std::filesystem::exists(new_path(), error)) {
    const Message question{StringId::NewNameExists,
                           {},
                           filled(StringId::NewNameExists, {name_->text().toStdString()}),
                           {},
                           nullptr};
    if (services_.host.ask && services_.host.ask(question, false) != Answer::Yes) {
      name_->setFocus();
      name_->selectAll();
      return;
    }
  }
  QDialog::accept();
}

OverwriteChoice OverwritePrompt::choice() const {
  if (result() != Accepted) return {OverwriteAnswer::Cancel, {}, false};
  return {answer(), new_path(), can_hold(answer()) && rest_->isChecked()};
}

}  // namespace vellum
