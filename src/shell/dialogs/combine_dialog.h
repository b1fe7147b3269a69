// Combine: a list of files, and what becomes of them.
#pragma once

#include <QListWidget>

#include "shell/dialogs/parameter_dialog.h"

namespace vellum {

class CombineDialog : public ParameterDialog {
  Q_OBJECT
 public:
  CombineDialog(Services& services, QWidget* parent);

  std::vector<std::string> files() const;
  void add_files(const std::vector<std::filesystem::path>& files);

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  QWidget* make_buttons();
  void move_current(int by);
  void update_buttons();

  QListWidget* list_;
};

}  // namespace vellum
