// Every window in a language that is longer than any: no text that is in no catalog, none that is cut.
#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDialog>
#include <QDockWidget>
#include <QFontComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTabBar>

#include "base/translation.h"
#include "core/chunks/chunk_facts.h"
#include "core/chunks/chunk_tip.h"
#include "shell/look/language.h"
#include "shell/look/text.h"
#include "shell/window/command_table.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

// These end the program or the document, change it, or make windows small; what the others open is looked at.
constexpr int kLeaving[] = {55, 123, 106, 109, 204, 201, 203, 61, 206, 207, 801, 802};

/// Whether the text has two letters in a row beside those of the catalog, of values and of names: numbers
/// with their units, formats and chunks, files and paths, keys, markup, the program itself.
bool has_plain(QString text) {
  static const QRegularExpression exempt(
      QStringLiteral("<[^>]*>|&[a-z]+;|\\S*[/"
                     ".]\\w+\\S*|\\b(ms|px|dpi|KB|MB|GB|KiB|MiB|GiB|min|Hz)\\b|"
                     "\\b[A-Z0-9]{2,}\\b|\\b[A-Za-z][A-Za-z][A-Z][A-Za-z]\\b|\\b(WebP|WebM|Vellumcraft|"
                     "untitled|Qt|Windows|Flash)\\b|"
                     "\\b(Ctrl|Shift|Alt|Del|Esc|Return|PgUp|PgDown|Home|End|Left|Right|Up|Down|Backspace|"
                     "F\\d+)\\b(\\+\\S+)?|"
                     "\\b(Hermite|Hanning|Hamming|Blackman|Gaussian|Catrom|Mitchell|Lanczos|Bessel|Sinc|"
                     "Title|Comment|Favorites|bmp|gif|jpg|pcx|png|tga|webp)\\b|0x\\w+"));
  // A text may stand in another one; the end of one that is shown in part is missing.
  static const QRegularExpression innermost(QStringLiteral("\u27e6[^\u27e6\u27e7]*(\u27e7|$)"));
  while (text.contains(innermost)) text.remove(innermost);
  static const QRegularExpression letters(QStringLiteral("[A-Za-z]{2}"));
  text.remove(u'&').remove(exempt);
  return text.contains(letters);
}

/// Lists of what others named: fonts, encoders, months, folders, devices, keywords.
bool shows_names(const QWidget& widget) {
  static const QStringList names = {QStringLiteral("font"),     QStringLiteral("codec"),
                                    QStringLiteral("Language"), QStringLiteral("keyword"),
                                    QStringLiteral("titles"),   QStringLiteral("presets"),
                                    QStringLiteral("folders")};
  for (const QWidget* at = &widget; at; at = at->parentWidget())
    if (qobject_cast<const QFontComboBox*>(at) || at->inherits("QCalendarWidget") ||
        names.contains(at->objectName(), Qt::CaseInsensitive))
      return true;
  return false;
}

QStringList texts_of(const QWidget& widget) {
  QStringList texts{widget.toolTip(), widget.accessibleName()};
  if (widget.isWindow()) texts << widget.windowTitle();
  if (const auto* label = qobject_cast<const QLabel*>(&widget)) texts << label->text();
  if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) texts << button->text();
  if (const auto* box = qobject_cast<const QGroupBox*>(&widget)) texts << box->title();
  if (const auto* dock = qobject_cast<const QDockWidget*>(&widget)) texts << dock->windowTitle();
  if (const auto* tabs = qobject_cast<const QTabBar*>(&widget))
    for (int i = 0; i < tabs->count(); ++i) texts << tabs->tabText(i);
  if (const auto* list = qobject_cast<const QComboBox*>(&widget); list && !list->isEditable())
    for (int i = 0; i < list->count(); ++i) texts << list->itemText(i);
  if (const auto* head = qobject_cast<const QHeaderView*>(&widget); head && head->model())
    for (int i = 0; i < head->count(); ++i)
      texts << head->model()->headerData(i, head->orientation()).toString();
  if (const auto* menu = qobject_cast<const QMenu*>(&widget))
    for (const QAction* action : menu->actions())
      texts << action->text().section(u'\t', 0, 0) << action->statusTip();
  return texts;
}

/// A label or a button whose text needs more room than it has, and that has no tip with that text.
bool is_cut(const QWidget& widget) {
  if (!widget.isVisible() || widget.width() >= widget.sizeHint().width()) return false;
  if (const auto* label = qobject_cast<const QLabel*>(&widget))
    return !label->wordWrap() && label->pixmap().isNull() && !label->text().isEmpty();
  const auto* button = qobject_cast<const QAbstractButton*>(&widget);
  return button && !button->text().isEmpty() && !widget.inherits("QToolButton") &&
         button->text().remove(u'&') != button->toolTip();
}

struct Spoken {
  explicit Spoken(const char* code, const std::filesystem::path& folder) {
    const std::filesystem::path folders[] = {folder};
    use_language(std::vector<std::string>{code}, folders);
    install_catalog();
  }
  ~Spoken() { use_language({}, {}); }
};

class PseudoLanguage : Spoken, public WindowTest {
 protected:
  PseudoLanguage() : Spoken("xx", program_folder().parent_path() / "pseudo") {
    QObject::connect(&closer_, &QTimer::timeout, [this] { look_and_close(); });
    closer_.start(5);
  }
  void look_and_close() {
    QWidget* popup = QApplication::activePopupWidget();
    QWidget* opened = popup ? popup : QApplication::activeModalWidget();
    if (!opened) return;
    look_at(*opened);
    auto* dialog = qobject_cast<QDialog*>(opened);
    dialog ? dialog->reject() : static_cast<void>(opened->close());
  }
  void look_at(QWidget& window) {
    ++seen_;
    QList<QWidget*> all = window.findChildren<QWidget*>();
    all.push_back(&window);
    const std::string title = std::to_string(command_) + ", " + window.windowTitle().toStdString() + ": ";
    for (const QWidget* widget : all) {
      if (shows_names(*widget)) continue;
      for (const QString& text : texts_of(*widget))
        if (has_plain(text))
          plain_.insert(title + widget->metaObject()->className() + ' ' + text.toStdString());
      if (is_cut(*widget))
        cut_.insert(title + widget->metaObject()->className() + ' ' + widget->objectName().toStdString() +
                    ' ' + widget->property("text").toString().toStdString());
    }
  }
  void close_others() {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window != &main_ && window->isVisible()) {
        look_at(*window);
        window->close();
      }
  }

  SettingsGuard guard_;
  QTimer closer_;
  int seen_ = 0, command_ = 0;
  std::set<std::string> plain_, cut_;
};

TEST_F(PseudoLanguage, ReachesEveryTextAndFits) {
  ASSERT_EQ(language_in_use(), "xx");
  look_at(main_);
  for (const auto kind : {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
    DocumentFrame& frame = add(document_of(kind, main_.services().host));
    frame.entries().select(1, true);
    for (std::size_t i = 0; i < frame.entries().size(); ++i)
      for (const std::string& text : {searched_text(frame.content(), i), chunk_tip(frame.content(), i)})
        if (has_plain(to_qt(text))) plain_.insert(text);
    main_.refresh();
    settle();
    look_at(main_);
    for (const CommandRow& row : command_table()) {
      if (std::ranges::find(kLeaving, row.number) != std::end(kLeaving)) continue;
      command_ = row.number;
      main_.run(row.number);
      settle();
      close_others();
      if (row.menu == Menu::View) look_at(main_);
    }
    for (DocumentFrame* open : main_.area().documents()) open->close_without_question();
  }
  EXPECT_GT(seen_, 100);
  for (const std::string& text : plain_) ADD_FAILURE() << "in no catalog: " << text;
  for (const std::string& text : cut_) ADD_FAILURE() << "cut: " << text;
}

/// Marked letters, each of which leads to one thing in its menu. The English labels are given, and some share
/// one.
TEST(Languages, MenusHaveEachLetterOnce) {
  const std::filesystem::path folders[] = {program_folder().parent_path() / "share/locale"};
  const std::vector<Language> all = languages(folders);
  ASSERT_GT(all.size(), 1u);
  for (const Language& language : all) {
    if (language.code == "en") continue;
    const Spoken spoken(language.code.c_str(), folders[0]);
    std::map<Menu, std::map<QChar, QString>> letters;
    const auto take = [&](Menu menu, const char* label) {
      const QString text = QString::fromUtf8(translated(label)).section(u'\t', 0, 0);
      const qsizetype mark = text.indexOf(u'&');
      if (mark < 0) return;
      QString& other = letters[menu][text[mark + 1].toUpper()];
      EXPECT_TRUE(other.isEmpty() || other == text)
          << language.code << ": " << other.toStdString() << ", " << text.toStdString();
      other = text;
    };
    for (const CommandRow& row : command_table())
      if (row.menu != Menu::None) take(row.menu, row.label);
    for (const MenuRow& row : menu_table()) take(row.parent, row.label);
  }
}

}  // namespace
}  // namespace vellum::testing
