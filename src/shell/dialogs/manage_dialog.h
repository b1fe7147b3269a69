// Manage: all frames of an animation in one table, with actions on many of them. It works on a draft; OK
// makes the draft the document in one write.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QStackedWidget>
#include <QTableView>

#include "operations/manage_actions.h"
#include "shell/dialogs/frame_preview.h"
#include "shell/dialogs/manage_model.h"
#include "shell/forms/form_controls.h"
#include "shell/services/services.h"

namespace vellum {

class ManageDialog : public QDialog {
  Q_OBJECT
 public:
  ManageDialog(DocumentWindow& window, ThumbnailCache& thumbnails, Services& services,
               QWidget* parent = nullptr);

  DocumentWindow& draft() { return draft_; }
  ManageModel& model() { return *model_; }
  /// Runs the chosen action with the value that stands beside it.
  void apply_action();
  void accept() override;

 private:
  QWidget* make_header();
  QWidget* make_table();
  QWidget* make_actions();
  QWidget* make_side();
  void add_button(QGridLayout& grid, const char* name, const QString& label, std::function<void()> action);
  void take_header();
  /// Shows the draft again after an action: `frames` stay checked.
  void refresh(const FrameList& frames, std::size_t held = 0);
  void show_counts();

  DocumentWindow& window_;
  DocumentWindow draft_;
  Services& services_;
  ManageModel* model_;
  QTableView* table_ = nullptr;
  FramePreview* preview_ = nullptr;
  QComboBox* actions_ = nullptr;
  QStackedWidget* values_ = nullptr;
  std::vector<FormControl> controls_;
  std::vector<const ManageAction*> rows_;  ///< those of this kind
  std::optional<FormControl> plays_, ticks_;
  FormControl every_;
  QLabel* counts_ = nullptr;
};

}  // namespace vellum
