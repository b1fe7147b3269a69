// What stands in a dock of the main window, and what it may use of the program.
#pragma once

#include <QWidget>
#include <functional>

#include "shell/list/document_frame.h"
#include "shell/services/services.h"

namespace vellum {

/// Lent to all panels; lives as long as they do.
struct DockContext {
  Services& services;
  ThumbnailCache& thumbnails;
  std::function<void(int command)> run;  ///< on the active document, as its menu line does
  /// Drags the selected rows out of the panel, to other programs as files: the images' own pictures, or
  /// canvases.
  std::function<void(DocumentFrame& frame, bool canvases)> drag_out;
  std::function<bool(const DocumentFrame& frame, const QMimeData& dragged)> is_drag_of;
};

/// A panel is made when its dock is seen first. It hears of nothing while it isn't seen, and then has to
/// rest.
class DockPanel : public QWidget {
 public:
  using QWidget::QWidget;

  /// The document that commands act on from now on; null: there is none, or the panel is not seen any more.
  /// The earlier document may be gone and must not be touched.
  virtual void show_document(DocumentFrame* frame) = 0;
  /// Entries, selection or caret of that document may be others. Called once for all that happened in a row.
  virtual void follow() = 0;
  /// A command is about to run, or the panel goes out of sight: what is typed is taken now.
  virtual void settle() {}
};

}  // namespace vellum
