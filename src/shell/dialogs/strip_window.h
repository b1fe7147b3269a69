// The window of a film strip: modeless, beside the document that it shows.
#pragma once

#include <QMenu>
#include <QWidget>

#include "operations/film_strip.h"
#include "shell/dialogs/strip_view.h"
#include "shell/list/document_frame.h"
#include "shell/services/services.h"

namespace vellum {

class StripWindow : public QWidget {
  Q_OBJECT
 public:
  /// Lives no longer than the frame. `run` starts a command of the program by its number on that document.
  StripWindow(DocumentFrame& frame, ThumbnailCache& thumbnails, Services& services,
              std::function<void(int)> run, QWidget* parent = nullptr);

  StripView& view() { return *view_; }
  DocumentFrame& frame() { return frame_; }

  /// Asks for cells and a file; false when nothing was written or inserted.
  bool save_strip();
  bool insert_from_strip();

 private:
  void add_option(QMenu& menu, const QString& label, StripOption bit);
  void move_selected(std::size_t to);
  std::optional<FilmStrip> ask_for_cells(const Parameters& parameters);
  bool insert_cells(const FilmStrip& strip, const std::filesystem::path& path);

  DocumentFrame& frame_;
  Services& services_;
  StripView* view_;
};

}  // namespace vellum
