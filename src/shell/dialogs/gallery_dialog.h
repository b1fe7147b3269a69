// The web gallery: its items, what the pages look like, a preview in the browser.
#pragma once

#include "batch/gallery.h"
#include "shell/dialogs/parameter_dialog.h"
#include "shell/services/thumbnails.h"

namespace vellum {

class GalleryDialog : public ParameterDialog {
  Q_OBJECT
 public:
  GalleryDialog(Services& services, QWidget* parent);
  ~GalleryDialog() override;

  ThumbnailList& items() { return *items_; }
  void add_files(const QStringList& files);
  /// Builds into the folder, and tells of each item in a window. False after a message.
  bool build(const FieldValues& values);
  void accept() override;

  /// Shows a page; the browser where nobody sets another.
  std::function<void(const std::filesystem::path& page)> browse;

 private:
  QWidget* make_list();
  void preview();
  void move_by(int rows);
  void settle_buttons();

  Services& services_;
  Thumbnails thumbnails_;
  ThumbnailList* items_;
  std::vector<QPushButton*> needSome_;
};

}  // namespace vellum
