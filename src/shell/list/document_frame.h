// One document window in the work area: the document, its list, its title, and how it is closed.
#pragma once

#include <QMdiSubWindow>
#include <functional>

#include "core/model/document.h"
#include "shell/list/chunk_list_view.h"
#include "shell/list/find_bar.h"
#include "shell/list/note_strip.h"

namespace vellum {

class DocumentFrame : public QMdiSubWindow {
  Q_OBJECT
 public:
  DocumentFrame(DocumentWindow content, ThumbnailCache& thumbnails);
  ~DocumentFrame() override;

  DocumentWindow& content() { return content_; }
  Document& document() { return content_.document; }
  ChunkList& entries() { return content_.list; }
  ChunkListView& list() { return *list_; }
  FindBar& find_bar() { return *find_; }
  /// Of this window alone, as long as the program runs.
  std::uint64_t number() const { return number_; }

  /// Asked before the window closes; false keeps it open.
  std::function<bool(DocumentFrame&)> may_close;
  void close_without_question();

  /// Makes the title tell path and state of the document; where it is too long its beginning goes.
  void update_title();
  /// The height of a window that comes into an area of this height.
  static int opening_height(int area);
  /// Takes the width that the thumbnails want, but not less than a line of text does. A maximized window does
  /// so when it is restored, and takes the height of a new one, since the area may have been smaller before.
  void size_to_content();
  /// Shows the document's notes above the list, or that it has none.
  void show_notes();
  /// Scrolls to the caret's entry.
  void show_caret();
  /// Sets the thumbnail scale as far as the pictures fit, and keeps the top entry.
  void set_scale(int index);

 signals:
  /// Entries, selection or caret changed.
  void changed();
  /// The person has read the notes.
  void notes_dismissed();

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  int title_width() const;

  DocumentWindow content_;
  ChunkListView* list_;
  NoteStrip* notes_;
  FindBar* find_;
  std::uint64_t number_;
  bool settled_ = false;
  bool sizePending_ = false;  ///< the width follows the content once the window is neither full nor an icon
};

/// What people call a document of this kind.
QString kind_text(DocumentKind kind);

/// `text` as a window title, in which "[*]" stands for itself.
QString plain_title(QString text);

}  // namespace vellum
