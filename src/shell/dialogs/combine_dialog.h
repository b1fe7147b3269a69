// Combine: a list of files, and what becomes of them.
#pragma once

#include "shell/dialogs/parameter_dialog.h"
#include "shell/services/thumbnails.h"

namespace vellum {

class CombineDialog : public ParameterDialog {
  Q_OBJECT
 public:
  CombineDialog(Services& services, QWidget* parent);

  std::vector<std::string> files() const;
  void add_files(const QStringList& files);
  ThumbnailList& list() { return *list_; }

 private:
  QWidget* make_buttons();
  void move_selected(int by);
  void update_buttons();

  Thumbnails thumbnails_;
  ThumbnailList* list_;
};

}  // namespace vellum
