#include "shell/start/welcome_wizard.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QRadioButton>
#include <QShortcut>
#include <QSpinBox>
#include <QVBoxLayout>
#include <QWizard>
#include <algorithm>
#include <memory>

#include "configuration/setting_values.h"
#include "configuration/shell_settings.h"
#include "core/model/chunk_layout.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/start/welcome_choices.h"

namespace vellum {
namespace {

constexpr int kIcon = 48;
constexpr int kMostDelay = 60000;  // milliseconds
constexpr int kOpen = 58, kNewStill = 101, kGuide = 52;
/// The New command of each default animation type, in their order.
constexpr int kNewAnimation[] = {102, 114, 105};

struct Option {
  int id;
  const char* name;
  const char* more;
};

constexpr Option kWork[] = {
    {static_cast<int>(Work::Chunks), "Look into files and repair them",
     "Lists show text only, and a backup is kept of each file that is written."},
    {static_cast<int>(Work::Animations), "Make animations", "Lists show each frame at its full size."},
    {static_cast<int>(Work::Both), "Both", "Lists show frames at half their size."},
};
constexpr Option kTypes[] = {
    {0, "Animated PNG", "Shown by every browser; all colors, smooth transparency, no loss."},
    {1, "MNG", "The oldest of them, with loops inside loops; few programs show it."},
    {2, "WebP", "Shown by browsers; the smallest files, with or without loss."},
};
constexpr Option kBegin[] = {
    {0, "Just show the window", nullptr},
    {kOpen, "Open a file", nullptr},
    {kNewAnimation[0], "Begin a new animation", nullptr},
    {kNewStill, "Begin a new still image", nullptr},
    {kGuide, "Read the first page of the guide", nullptr},
};

/// Wizards don't ask for a height that goes with the width: a text that was wrapped asks for its lines
/// itself.
class WrappedText : public QLabel {
 public:
  using QLabel::QLabel;

 protected:
  void resizeEvent(QResizeEvent* event) override {
    QLabel::resizeEvent(event);
    setMinimumHeight(heightForWidth(width()));
  }
};

/// Radio buttons, each with a smaller line below it.
QButtonGroup* add_options(QVBoxLayout& layout, QWidget* parent, std::span<const Option> options, int chosen) {
  auto* group = new QButtonGroup(parent);
  for (const Option& option : options) {
    auto* button = new QRadioButton(shown(option.name), parent);
    button->setChecked(option.id == chosen);
    group->addButton(button, option.id);
    layout.addWidget(button);
    if (!option.more) continue;
    auto* more = new WrappedText(shown(option.more), parent);
    more->setWordWrap(true);
    more->setForegroundRole(QPalette::PlaceholderText);
    more->setContentsMargins(style::kMargin * 3 / 4, 0, 0, style::kGap);
    layout.addWidget(more);
    button->setAccessibleDescription(more->text());
  }
  return group;
}

QWizardPage* add_page(QWizard& wizard, const QString& title, const QString& text) {
  auto* page = new QWizardPage;
  page->setTitle(title);
  page->setSubTitle(text);
  new QVBoxLayout(page);
  wizard.addPage(page);
  return page;
}

QVBoxLayout& column_of(QWizardPage* page) { return *static_cast<QVBoxLayout*>(page->layout()); }

/// The pages write what they hold to the choices, which the last page finds.
using Shared = std::shared_ptr<WelcomeChoices>;

void add_work_page(QWizard& wizard, const Shared& choices, const std::function<void()>& suited) {
  QWizardPage* page =
      add_page(wizard, QObject::tr("Welcome to Vellumcraft"), QObject::tr("What will you do most?"));
  QButtonGroup* work = add_options(column_of(page), page, kWork, static_cast<int>(choices->work));
  column_of(page).addStretch(1);
  QObject::connect(work, &QButtonGroup::idClicked, page, [choices, suited](int id) {
    choices->work = static_cast<Work>(id);
    suit_work(*choices);
    suited();
  });
}

void add_type_page(QWizard& wizard, const Shared& choices) {
  QWizardPage* page =
      add_page(wizard, QObject::tr("Animations"), QObject::tr("What should new animations be?"));
  QButtonGroup* types = add_options(column_of(page), page, kTypes, choices->animationType);
  auto* delay = new QSpinBox(page);
  delay->setRange(0, kMostDelay);
  delay->setSuffix(QObject::tr(" ms"));
  delay->setValue(choices->delay);
  auto* form = new QFormLayout;
  form->addRow(QObject::tr("&A new frame is shown for:"), delay);
  column_of(page).addLayout(form);
  column_of(page).addStretch(1);
  QObject::connect(types, &QButtonGroup::idClicked, page, [choices](int id) { choices->animationType = id; });
  QObject::connect(delay, &QSpinBox::valueChanged, page, [choices](int value) { choices->delay = value; });
}

QCheckBox* add_box(QVBoxLayout& layout, const QString& text, const Shared& choices,
                   bool WelcomeChoices::*flag) {
  auto* box = new QCheckBox(text);
  box->setChecked(choices.get()->*flag);
  layout.addWidget(box);
  QObject::connect(box, &QCheckBox::toggled, box, [choices, flag](bool on) { choices.get()->*flag = on; });
  return box;
}

/// Returns what brings the page to the choices that another page has changed.
std::function<void()> add_details_page(QWizard& wizard, const Shared& choices) {
  QWizardPage* page =
      add_page(wizard, QObject::tr("Details"), QObject::tr("All of this can be changed in Setup."));
  auto* scale = new QComboBox(page);
  for (const int percent : kThumbnailScales)
    scale->addItem(percent == 0 ? QObject::tr("Text only") : QStringLiteral("%1%").arg(percent));
  auto* form = new QFormLayout;
  form->addRow(QObject::tr("&Thumbnails in lists:"), scale);
  column_of(page).addLayout(form);
  QCheckBox* backups = add_box(column_of(page), QObject::tr("&Keep a backup of files that are written"),
                               choices, &WelcomeChoices::backups);
  add_box(column_of(page), QObject::tr("&Saved files tell who made them"), choices,
          &WelcomeChoices::identify);
  add_box(column_of(page), QObject::tr("Show a ti&p once a day"), choices, &WelcomeChoices::tips);
  column_of(page).addStretch(1);
  const auto refresh = [scale, backups, choices] {
    scale->setCurrentIndex(std::clamp(choices->viewMode, 0, scale->count() - 1));
    backups->setChecked(choices->backups);
  };
  refresh();
  QObject::connect(scale, &QComboBox::activated, page, [choices](int index) { choices->viewMode = index; });
  return refresh;
}

QButtonGroup* add_begin_page(QWizard& wizard) {
  QWizardPage* page = add_page(wizard, QObject::tr("Ready"), QObject::tr("Where would you like to begin?"));
  QButtonGroup* begin = add_options(column_of(page), page, kBegin, 0);
  column_of(page).addStretch(1);
  return begin;
}

int command_of(int begin, const WelcomeChoices& choices) {
  return begin == kNewAnimation[0] ? kNewAnimation[std::clamp(choices.animationType, 0, 2)] : begin;
}

void set_up_help(QWizard& wizard) {
  wizard.setOption(QWizard::HaveHelpButton, static_cast<bool>(showHelp));
  const auto help = [] {
    if (showHelp) showHelp(QStringLiteral("WELCOME"));
  };
  QObject::connect(&wizard, &QWizard::helpRequested, &wizard, help);
  QObject::connect(new QShortcut(QKeySequence::HelpContents, &wizard), &QShortcut::activated, &wizard, help);
}

}  // namespace

void show_welcome_wizard(QWidget* parent, std::function<void(int command)> run) {
  auto* wizard = new QWizard(parent);
  wizard->setObjectName(QStringLiteral("WelcomeWizard"));
  wizard->setAttribute(Qt::WA_DeleteOnClose);
  wizard->setWindowTitle(QObject::tr("Welcome wizard"));
  wizard->setWizardStyle(QWizard::ModernStyle);
  wizard->setPixmap(QWizard::LogoPixmap,
                    program_icon("vellumcraft").pixmap(QSize(kIcon, kIcon), wizard->devicePixelRatioF()));
  const Shared choices = std::make_shared<WelcomeChoices>(stored_choices());
  // The page of details comes later, but the first one brings it up to date.
  const auto refresh_details = std::make_shared<std::function<void()>>();
  add_work_page(*wizard, choices, [refresh_details] { (*refresh_details)(); });
  add_type_page(*wizard, choices);
  *refresh_details = add_details_page(*wizard, choices);
  QButtonGroup* begin = add_begin_page(*wizard);
  set_up_help(*wizard);
  if (settings::ShowWelcomeWizard != 0) change_setting(*find_setting("ShowWelcomeWizard"), {0, {}});
  QObject::connect(wizard, &QDialog::accepted, wizard, [choices, begin, run] {
    store_choices(*choices);
    if (const int command = command_of(begin->checkedId(), *choices); command != 0 && run) run(command);
  });
  wizard->show();
}

}  // namespace vellum
