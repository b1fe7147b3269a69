#include "shell/help/help_window.h"

#include <QApplication>
#include <QPointer>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>
#include <array>

#include "configuration/config_file.h"
#include "configuration/shell_settings.h"
#include "shell/forms/dialog_state.h"
#include "shell/forms/form_dialog.h"
#include "shell/look/icon.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr int kPageRole = Qt::UserRole;
constexpr const char* kStateFile = "HelpState.txt";

/// Sizes in pixels that the window had last; 0: as it comes.
struct HelpSizes {
  std::uint32_t wide = 0, deep = 0, contents = 0;
};

std::array<DialogStateRow, 3> state_rows(HelpSizes& sizes) {
  return {{{.id = 1, .tag = "UINT", .value = &sizes.wide},
           {.id = 2, .tag = "UINT", .value = &sizes.deep},
           {.id = 3, .tag = "UINT", .value = &sizes.contents}}};
}

QToolButton* tool(QWidget* parent, const char* icon, const QString& name, QKeySequence key) {
  auto* button = new QToolButton(parent);
  button->setIcon(program_icon(icon));
  button->setIconSize(QSize(style::kToolIcon, style::kToolIcon));
  button->setAutoRaise(true);
  button->setToolTip(QStringLiteral("%1 (%2)").arg(name, key.toString(QKeySequence::NativeText)));
  button->setAccessibleName(name);
  QObject::connect(new QShortcut(key, parent), &QShortcut::activated, button, &QToolButton::click);
  return button;
}

QPointer<HelpWindow>& the_window() {
  static QPointer<HelpWindow> window;
  return window;
}

HelpWindow& shown_window() {
  QPointer<HelpWindow>& window = the_window();
  if (!window) {
    window = new HelpWindow(find_guide(QCoreApplication::applicationDirPath()));
    // The guide alone doesn't keep the program running.
    window->setAttribute(Qt::WA_QuitOnClose, false);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, window, &QObject::deleteLater);
  }
  return *window;
}

}  // namespace

HelpWindow::HelpWindow(const QString& folder, QWidget* parent)
    : QDialog(parent, Qt::Window),
      folder_(folder),
      contents_(parse_contents(guide_text(folder, QLatin1String(kGuideIndex)))),
      view_(new GuideView(this)) {
  setWindowTitle(tr("Vellumcraft guide"));
  setWindowIcon(program_icon("vellumcraft"));
  splitter_ = new QSplitter(this);
  splitter_->addWidget(make_contents());
  splitter_->addWidget(view_);
  splitter_->setStretchFactor(1, 1);
  splitter_->setChildrenCollapsible(false);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(make_toolbar());
  layout->addWidget(splitter_, 1);
  HelpSizes sizes{940, 680, 250};
  restore_dialog_state(*this, state_rows(sizes), config_path(kStateFile));
  const QSize screen_size = screen()->availableSize();
  const auto held = [](std::uint32_t value, int most) {
    return static_cast<int>(std::min<std::uint32_t>(value, static_cast<std::uint32_t>(most)));
  };
  resize(held(sizes.wide, screen_size.width()), held(sizes.deep, screen_size.height()));
  const int contents = held(sizes.contents, width() / 2);
  splitter_->setSizes({contents, width() - contents});
  connect(view_, &QTextBrowser::sourceChanged, this, &HelpWindow::follow_page);
  if (folder_.isEmpty()) view_->setPlainText(text_of(StringId::NoGuide));
}

QWidget* HelpWindow::make_toolbar() {
  auto* bar = new QWidget(this);
  auto* line = new QHBoxLayout(bar);
  line->setContentsMargins(style::kGap, style::kGap / 2, style::kGap, style::kGap / 2);
  QToolButton* back = tool(this, "back", tr("Back"), QKeySequence(Qt::ALT | Qt::Key_Left));
  QToolButton* forward = tool(this, "forward", tr("Forward"), QKeySequence(Qt::ALT | Qt::Key_Right));
  QToolButton* index = tool(this, "contents", tr("All pages"), QKeySequence(Qt::ALT | Qt::Key_Home));
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(view_, &QTextBrowser::backwardAvailable, back, &QWidget::setEnabled);
  connect(view_, &QTextBrowser::forwardAvailable, forward, &QWidget::setEnabled);
  connect(back, &QToolButton::clicked, view_, &QTextBrowser::backward);
  connect(forward, &QToolButton::clicked, view_, &QTextBrowser::forward);
  connect(index, &QToolButton::clicked, this, [this] { show_page(QLatin1String(kGuideIndex)); });
  for (QToolButton* button : {back, forward, index}) line->addWidget(button);
  line->addStretch(1);
  words_ = new QLineEdit(bar);
  words_->setPlaceholderText(tr("Search (Ctrl+F)"));
  words_->setAccessibleName(tr("Search"));
  words_->setClearButtonEnabled(true);
  words_->setMaximumWidth(280);
  connect(words_, &QLineEdit::textChanged, this, &HelpWindow::search);
  connect(words_, &QLineEdit::returnPressed, this, [this] {
    if (QListWidgetItem* first = hits_->item(0)) hits_->setCurrentItem(first);
  });
  connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, words_, [this] {
    words_->setFocus();
    words_->selectAll();
  });
  line->addWidget(words_, 2);
  return bar;
}

QWidget* HelpWindow::make_contents() {
  auto* stack = new QStackedWidget;
  tree_ = new QTreeWidget;
  tree_->setHeaderHidden(true);
  tree_->setFrameShape(QFrame::NoFrame);
  tree_->setAccessibleName(tr("Contents"));
  hits_ = new QListWidget;
  hits_->setFrameShape(QFrame::NoFrame);
  hits_->setAccessibleName(tr("Found pages"));
  fill_contents();
  stack->addWidget(tree_);
  stack->addWidget(hits_);
  connect(tree_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    const QString page = item ? item->data(0, kPageRole).toString() : QString();
    if (!page.isEmpty() && page != view_->page()) show_page(page);
  });
  connect(hits_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
    if (!item || item->data(kPageRole).isNull()) return;
    show_page(item->data(kPageRole).toString());
    view_->mark_words(words_->text());
  });
  return stack;
}

void HelpWindow::fill_contents() {
  std::vector<QTreeWidgetItem*> above;  // the last one of each level
  for (const GuideEntry& entry : contents_) {
    const auto level = std::min(static_cast<std::size_t>(entry.level), above.size());
    above.resize(level);
    auto* item = above.empty() ? new QTreeWidgetItem(tree_) : new QTreeWidgetItem(above.back());
    item->setText(0, entry.title);
    item->setData(0, kPageRole, entry.page);
    if (entry.page.isEmpty()) {
      QFont bold = tree_->font();
      bold.setBold(true);
      item->setFont(0, bold);
      item->setFlags(Qt::ItemIsEnabled);
    }
    item->setExpanded(entry.level == 0);
    above.push_back(item);
  }
}

void HelpWindow::search(const QString& words) {
  auto* stack = static_cast<QStackedWidget*>(splitter_->widget(0));
  hits_->clear();
  const bool empty = words.trimmed().isEmpty();
  stack->setCurrentWidget(empty ? static_cast<QWidget*>(tree_) : hits_);
  if (empty) return view_->setExtraSelections({});
  for (const GuideHit& hit : search_guide(folder_, contents_, words)) {
    auto* item = new QListWidgetItem(hit.title, hits_);
    item->setData(kPageRole, hit.page);
  }
  if (hits_->count() == 0) {
    auto* nothing = new QListWidgetItem(text_of(StringId::NothingFound), hits_);
    nothing->setFlags(Qt::NoItemFlags);
  }
}

/// The contents show where the reader is. The view itself tells its new page only behind this signal.
void HelpWindow::follow_page(const QUrl& source) {
  const QSignalBlocker quiet(tree_);
  for (QTreeWidgetItemIterator at(tree_); *at; ++at)
    if ((*at)->data(0, kPageRole).toString() == source.fileName()) {
      tree_->setCurrentItem(*at);
      tree_->scrollToItem(*at);
      return;
    }
  tree_->setCurrentItem(nullptr);
}

void HelpWindow::show_page(const QString& page) {
  if (!folder_.isEmpty()) view_->show_page(folder_, page);
}

void HelpWindow::bring_up() {
  QWidget* dialog = QApplication::activeModalWidget();
  QWindow* front = dialog ? dialog->window()->windowHandle() : nullptr;
  winId();  // makes the window that the next line needs
  // What belongs to a dialog isn't blocked by it. Whether a window is blocked is found when it is shown.
  if (windowHandle()->transientParent() != front) {
    hide();
    windowHandle()->setTransientParent(front);
  }
  settings::MaximizePaint != 0 ? showMaximized() : show();
  raise();
  activateWindow();
}

void HelpWindow::done(int result) {
  if (!isMaximized()) {
    HelpSizes sizes{static_cast<std::uint32_t>(width()), static_cast<std::uint32_t>(height()),
                    static_cast<std::uint32_t>(splitter_->sizes().front())};
    store_dialog_state(*this, state_rows(sizes), config_path(kStateFile));
  }
  QDialog::done(result);
}

void install_help() {
  showHelp = [](const QString& topic) {
    shown_window().show_topic(topic);
    shown_window().bring_up();
  };
}

void show_guide_page(const QString& page) {
  shown_window().show_page(page);
  shown_window().bring_up();
}

}  // namespace vellum
