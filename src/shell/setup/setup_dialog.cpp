#include "shell/setup/setup_dialog.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>
#include <memory>

#include "configuration/setting_values.h"
#include "configuration/shell_settings.h"
#include "exchange/settings.h"
#include "shell/look/language.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/setup/setup_fields.h"
#include "shell/setup/theme_dialog.h"
#include "shell/setup/video_encoders.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

enum PageNumber { kFilesPage, kDisplayPage, kApplicationPage };

constexpr double kMostOfScreen = 0.75;  // of its height
constexpr int kAroundPage = 150;        // pixels above and below it: title, tabs, buttons, margins

QPushButton* page_button(const QString& text) {
  auto* button = new QPushButton(text);
  button->setAutoDefault(false);
  return button;
}

/// What a page can have of the screen's width, beside the dialog's edges and a scroll bar.
int page_room(const QScreen& screen) {
  const int bar = QApplication::style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  return screen.availableSize().width() - 2 * style::kMargin - bar;
}

/// Where there is no room beside each other, the fields stand below each other.
SettingPage* make_page(const SetupPageRow& row, int room) {
  auto page = std::make_unique<SettingPage>(row.fields, row.columns);
  if (row.columns > 1 && page->sizeHint().width() > room) page = std::make_unique<SettingPage>(row.fields, 1);
  return page.release();
}

/// A page that is higher than the screen can be scrolled.
QScrollArea* scrolled(SettingPage* page, const QScreen& screen) {
  auto* area = new QScrollArea;
  area->setWidgetResizable(true);
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidget(page);
  // The page of a tab has the tab's ground, not that of a list.
  area->viewport()->setAutoFillBackground(false);
  page->setAutoFillBackground(false);
  const QSize wanted = page->sizeHint();
  const int height = screen.availableSize().height();
  const int most = std::min(static_cast<int>(height * kMostOfScreen), height - kAroundPage);
  const int bar = wanted.height() > most ? area->verticalScrollBar()->sizeHint().width() : 0;
  area->setMinimumSize(std::min(wanted.width(), page_room(screen)) + bar, std::min(wanted.height(), most));
  return area;
}

}  // namespace

SetupDialog::SetupDialog(QWidget* parent, Host host)
    : QDialog(parent),
      host_(std::move(host)),
      paint_(stored_paint_choice()),
      codec_(settings::VideoCompressionCodec) {
  setWindowTitle(tr("Setup"));
  tabs_ = new QTabWidget(this);
  for (const SetupPageRow& row : setup_pages()) pages_.push_back(make_page(row, page_room(*screen())));
  add_files_buttons(*pages_[kFilesPage]);
  add_display_buttons(*pages_[kDisplayPage]);
  add_language(*pages_[kApplicationPage]);
  for (std::size_t i = 0; i < pages_.size(); ++i)
    tabs_->addTab(scrolled(pages_[i], *screen()), shown(setup_pages()[i].name));
  tabs_->setCurrentIndex(std::clamp(settings::SetupPageIndex, 0, tabs_->count() - 1));
  const auto topic = [this] {
    return QStringLiteral("SETUP_%1")
        .arg(to_qt(setup_pages()[static_cast<std::size_t>(tabs_->currentIndex())].name));
  };
  QDialogButtonBox* buttons = add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, topic);
  auto* defaults = buttons->addButton(tr("&Defaults"), QDialogButtonBox::ResetRole);
  defaults->setToolTip(tr("Puts the values that the program came with into the fields of this page"));
  connect(defaults, &QPushButton::clicked, this, [this] {
    pages_[static_cast<std::size_t>(tabs_->currentIndex())]->set_defaults();
    if (tabs_->currentIndex() == kApplicationPage) language_->setCurrentIndex(0);
  });
  QVBoxLayout* layout = dialog_layout(*this);
  layout->addWidget(tabs_, 1);
  layout->addWidget(buttons);
}

void SetupDialog::add_files_buttons(SettingPage& page) {
  QPushButton* codec = page_button(tr("Select video compression codec"));
  connect(codec, &QPushButton::clicked, this, [this] {
    if (const auto chosen = ask_for_video_encoder(this, codec_, movie_encoders())) codec_ = *chosen;
  });
  page.add_buttons({codec});
}

void SetupDialog::add_display_buttons(SettingPage& page) {
  QPushButton* theme = page_button(tr("Select theme..."));
  connect(theme, &QPushButton::clicked, this, [this] { ask_for_theme(this, host_); });
  QPushButton* paint = page_button(tr("Select paint..."));
  connect(paint, &QPushButton::clicked, this, [this] {
    if (const auto chosen = ask_for_paint_program(this, paint_)) paint_ = *chosen;
  });
  page.add_buttons({theme, paint});
}

void SetupDialog::add_language(SettingPage& page) {
  const LanguageChoices choices = language_choices();
  language_ = new QComboBox;
  language_->setObjectName(QStringLiteral("Language"));
  for (qsizetype i = 0; i < choices.codes.size(); ++i) language_->addItem(choices.names[i], choices.codes[i]);
  language_->setCurrentIndex(std::max(language_->findData(to_qt(settings::Language)), 0));
  auto* label = new QLabel(tr("&Language*:"));
  label->setBuddy(language_);
  for (QWidget* widget : {static_cast<QWidget*>(label), static_cast<QWidget*>(language_)})
    widget->setToolTip(tr("Of menus, windows and messages; the guide is English"));
  page.add_buttons({label, language_});
}

void SetupDialog::set_all_defaults() {
  for (SettingPage* page : pages_) page->set_defaults();
  language_->setCurrentIndex(0);
}

void SetupDialog::done(int result) {
  settings::SetupPageIndex = tabs_->currentIndex();
  if (result == Accepted) {
    for (SettingPage* page : pages_) restart_ |= page->store();
    store_paint_choice(paint_);
    const SettingRow& language = *find_setting("Language");
    if (const std::string code = language_->currentData().toString().toStdString(); code != *language.text) {
      change_setting(language, {0, code});
      restart_ = true;
    }
    const SettingRow& codec = *find_setting("VideoCompressionCodec");
    if (codec_ != *codec.text) change_setting(codec, {0, codec_});
  }
  QDialog::done(result);
}

bool edit_settings(QWidget* parent, bool defaults, Host& host) {
  SetupDialog dialog(parent, host);
  if (defaults) dialog.set_all_defaults();
  if (dialog.exec() != QDialog::Accepted || !dialog.needs_restart()) return false;
  host.show(StringId::SetupRestart);
  return true;
}

}  // namespace vellum
