// The animation wizard: folders, the pictures of one of them, and those of the animation in their order.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileSystemWatcher>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QSplitter>
#include <QTimer>

#include "generators/wizard.h"
#include "shell/dialogs/motion_preview.h"
#include "shell/services/services.h"
#include "shell/services/thumbnails.h"
#include "shell/widgets/folder_tree.h"

class QMenu;
class QVBoxLayout;

namespace vellum {

/// What a person chose, as `build_wizard` takes it.
struct WizardChoice {
  std::vector<std::filesystem::path> files;
  FieldValues values;
};

class WizardDialog : public QDialog {
  Q_OBJECT
 public:
  /// Opens with the settings, which follow every change at once; with Shift held, with others than the first
  /// time.
  explicit WizardDialog(Services& services, QWidget* parent = nullptr);

  ~WizardDialog() override;

  /// Makes the animation; the host shows its progress in the dialog. Where that fails the dialog stays.
  std::function<bool(const WizardChoice& choice, DocumentWindow& window, Host& host)> build;
  /// What Test does with an animation that was made.
  std::function<void(const DocumentWindow& window)> view;
  /// What Build made.
  DocumentWindow& made() { return made_; }

  ThumbnailList& available() { return *available_; }
  ThumbnailList& chosen() { return *chosen_; }
  FolderTree& folders() { return *folders_; }
  const QString& folder() const { return folder_; }
  /// The line below the lists, whole.
  const QString& status() const { return statusText_; }
  void show_folder(const QString& folder);
  /// Reads the folder anew.
  void refresh();
  void add_selected();
  /// The menus of a right click on row `row` (-1: beside the rows), filled when they open.
  void fill_available_menu(QMenu& menu);
  void fill_chosen_menu(QMenu& menu, int row);

  void accept() override;
  void run_test();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void done(int result) override;

 private:
  void reset_settings();
  void make_lists();
  QWidget* make_pane(const QString& title, QWidget* list, QPushButton* below = nullptr);
  void make_controls(QVBoxLayout* layout);
  void make_actions();
  void follow_files();
  void choose_size();
  void lay_out_panes();
  void store_panes();
  void watch(const QString& folder);
  void take_files(int row, const QStringList& paths);
  void preview(const QString& path);
  void set_thumbnails(ThumbnailList& list, int& setting, bool on);
  ThumbnailListForm form_of(int thumbnails) const;
  void show_status();
  void tell(const QString& text);
  void play();
  /// Plays from the beginning when something was chosen, or is found to be larger.
  void follow_sizes(bool anew);
  bool run(DocumentWindow& window);
  WizardChoice choice() const;
  FieldValues values() const;

  Services& services_;
  DocumentKind kind_;
  QString folder_, statusText_;
  DocumentWindow made_;
  Thumbnails thumbnails_, pictures_;  ///< of the rows, of the preview
  QFileSystemWatcher watcher_;
  QTimer refreshLater_, followLater_;
  FolderTree* folders_;
  ThumbnailList *available_, *chosen_;
  QSplitter* panes_;
  MotionPreview* motion_;
  QPushButton *add_, *remove_, *build_, *test_;
  QComboBox* palette_;
  QSpinBox* delay_;
  QCheckBox *loop_, *preserve_;
  QLabel* status_;
  QDialogButtonBox* buttons_;
  struct Shown;
  std::shared_ptr<Shown> shown_;  ///< what the preview shows, as its workers make it
  QSize canvas_;                  ///< of the preview, in pixels of the files
};

}  // namespace vellum
