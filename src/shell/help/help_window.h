// The guide in a window of its own: contents, search, pages with back and forward.
#pragma once

#include <QDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QSplitter>
#include <QTreeWidget>

#include "shell/help/guide.h"
#include "shell/help/guide_view.h"

namespace vellum {

class HelpWindow : public QDialog {
  Q_OBJECT
 public:
  explicit HelpWindow(const QString& folder, QWidget* parent = nullptr);

  void show_page(const QString& page);
  void show_topic(const QString& topic) { show_page(page_of_topic(folder_, topic)); }
  /// Brings the window in front, also of a dialog that blocks the program's other windows.
  void bring_up();

  GuideView& view() { return *view_; }

  void done(int result) override;

 private:
  QWidget* make_toolbar();
  QWidget* make_contents();
  void fill_contents();
  void search(const QString& words);
  void follow_page(const QUrl& source);

  QString folder_;
  std::vector<GuideEntry> contents_;
  GuideView* view_;
  QTreeWidget* tree_ = nullptr;
  QListWidget* hits_ = nullptr;
  QLineEdit* words_ = nullptr;
  QSplitter* splitter_ = nullptr;
};

/// Makes Help buttons and the commands of the Help menu work.
void install_help();

/// Shows a page of the guide in the one window that it has.
void show_guide_page(const QString& page);

}  // namespace vellum
