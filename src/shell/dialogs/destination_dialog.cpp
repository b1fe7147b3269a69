#include "shell/dialogs/destination_dialog.h"

#include <QDir>
#include <QFileInfo>
#include <QPushButton>

#include "batch/settings.h"
#include "configuration/shell_settings.h"
#include "shell/dialogs/folder_actions.h"
#include "shell/dialogs/folder_line.h"
#include "shell/forms/default_folders.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"
#include "shell/widgets/folder_tree.h"

namespace vellum {
namespace {

constexpr QSize kFirstSize(460, 480), kLeastSize(320, 280);

class DestinationDialog : public QDialog {
 public:
  DestinationDialog(Services& services, QWidget* parent)
      : QDialog(parent), line_(new FolderLine(this)), tree_(new FolderTree(this)) {
    setWindowTitle(tr("Destination"));
    setObjectName(QStringLiteral("DestinationDialog"));
    QVBoxLayout* layout = dialog_layout(*this);
    layout->setSpacing(style::kGap);
    layout->addWidget(line_);
    tree_->setAccessibleName(tr("Folders"));
    tree_->show_removable(settings::IncludeFloppyDisks != 0 || settings::BPDriveMapFloppies != 0);
    layout->addWidget(tree_, 1);
    QDialogButtonBox* buttons =
        add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("BATCHPROCESSOR"));
    QPushButton* make = buttons->addButton(tr("&New folder..."), QDialogButtonBox::ActionRole);
    layout->addWidget(buttons);
    const auto show = [this](const QString& folder) { show_folder(folder); };
    connect(line_, &FolderLine::folder_chosen, this, show);
    connect(tree_, &FolderTree::folder_chosen, this, show);
    connect(make, &QPushButton::clicked, this, [this, &services, show] {
      QMenu menu;
      add_folder_actions(menu, folder_, services, this, show);
      menu.actions().front()->trigger();
    });
    tree_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(tree_, &QWidget::customContextMenuRequested, this, [this, &services, show](const QPoint& place) {
      QMenu menu(this);
      add_folder_actions(menu, folder_, services, this, show);
      menu.exec(tree_->viewport()->mapToGlobal(place));
    });
    const QSize kept(settings::BPDestWidth, settings::BPDestDepth);
    setMinimumSize(kLeastSize);
    resize(kept.isEmpty() ? kFirstSize : kept.expandedTo(kLeastSize));
    show_folder(QDir::cleanPath(usable_folder(settings::BatchProcessorDestPath)));
  }

  const QString& folder() const { return folder_; }
  FolderLine& line() { return *line_; }

 protected:
  void done(int result) override {
    settings::BPDestWidth = width();
    settings::BPDestDepth = height();
    QDialog::done(result);
  }

 private:
  void show_folder(const QString& folder) {
    folder_ = folder;
    line_->show_folder(folder);
    tree_->show_folder(folder);
  }

  FolderLine* line_;
  FolderTree* tree_;
  QString folder_;
};

}  // namespace

std::optional<QString> choose_destination(Services& services, QWidget* parent) {
  DestinationDialog dialog(services, parent);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  dialog.line().remember(dialog.folder());
  settings::BatchProcessorDestPath = to_path(dialog.folder()).string();
  return dialog.folder();
}

}  // namespace vellum
