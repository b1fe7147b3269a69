#include "shell/dialogs/movie_dialogs.h"

#include <QBoxLayout>

#include "base/text.h"
#include "exchange/movie_import.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr QSize kWindow(720, 560);

const DocumentWindow& no_document() {
  static const DocumentWindow nothing;
  return nothing;
}

bool open_view(MovieView& view, QLabel& facts, const std::filesystem::path& file, Host& host) {
  if (!view.open(file, host)) {
    host.show(StringId::ErrorReadingFile, {}, file.string() + ": " + host.take_fault());
    return false;
  }
  facts.setText(view.facts_text());
  return true;
}

}  // namespace

MovieWindow::MovieWindow(const std::filesystem::path& file, Services& services, QWidget* parent)
    : QDialog(parent),
      file_(file),
      services_(services),
      view_(new MovieView(this)),
      facts_(new QLabel(this)) {
  setWindowTitle(to_qt(file.filename().string()));
  QVBoxLayout* layout = dialog_layout(*this);
  facts_->setTextFormat(Qt::PlainText);
  layout->addWidget(view_, 1);
  layout->addWidget(facts_);
  QDialogButtonBox* buttons =
      add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Close, QStringLiteral("MOVIES"));
  buttons->button(QDialogButtonBox::Ok)->setText(tr("&Import"));
  layout->addWidget(buttons);
  resize(kWindow);
}

bool MovieWindow::open_movie_file() { return open_view(*view_, *facts_, file_, services_.host); }

MovieImportDialog::MovieImportDialog(const Importer& importer, const std::filesystem::path& file,
                                     Services& services, QWidget* parent)
    : ParameterDialog(importer.parameters, no_document(), {}, services, parent),
      file_(file),
      view_(new MovieView(this)),
      facts_(new QLabel(this)),
      expected_(new QLabel(this)) {
  auto* outer = static_cast<QBoxLayout*>(layout());
  outer->removeWidget(&form());
  facts_->setTextFormat(Qt::PlainText);
  facts_->setWordWrap(true);
  auto* left = new QVBoxLayout;
  left->setSpacing(style::kGap);
  left->addWidget(view_, 1);
  left->addWidget(facts_);
  auto* times = new QHBoxLayout;
  const auto add = [&](const QString& text, const char* field) {
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, field] {
      form().set_value(field, view_->time());
      follow();
    });
    times->addWidget(button);
  };
  add(tr("&From here"), "from");
  add(tr("&To here"), "to");
  times->addStretch(1);
  left->addLayout(times);
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addLayout(left, 1);
  row->addWidget(&form());
  outer->insertLayout(0, row, 1);
  form().add_row_behind({}, {}, expected_);
}

bool MovieImportDialog::open_movie_file() {
  if (!open_view(*view_, *facts_, file_, host())) return false;
  begin();
  // A range belongs to the movie that it was chosen for.
  form().set_value("from", std::int64_t{0});
  form().set_value("to", std::int64_t{0});
  follow();
  return true;
}

void MovieImportDialog::follow() {
  ParameterDialog::follow();
  if (fault()) return expected_->clear();
  const FieldValues all = values();
  const auto number = [&](const char* name) { return static_cast<std::uint32_t>(all.number(name)); };
  MovieImport import{.from = number("from"), .to = number("to")};
  if (number("depopulate") != 0) import.keep = number("keep"), import.skip = number("skip");
  const std::uint64_t frames = expected_frames(view_->facts(), import);
  expected_->setText(frames > 0 ? tr("About %1").arg(to_qt(count_text(StringId::OneFrame, frames)))
                                : QString());
}

}  // namespace vellum
