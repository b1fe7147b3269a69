// A list of files with their small pictures, which come when they are made.
#pragma once

#include <QImage>
#include <QListView>
#include <functional>

namespace vellum {

/// What is known of a file.
struct FileLook {
  QImage image;    ///< null: none, or not made yet
  QSize size;      ///< pixels of the picture itself
  QString detail;  ///< a line about it
  bool known = false;
  bool animated = false;
};

struct ThumbnailListForm {
  bool thumbnails = true;  ///< off: a line of text each
  bool details = true;
  bool tight = true;  ///< no gap between rows
  bool exact = true;  ///< in the shape of the picture; off: square
  int height = 48;    ///< of a row with a thumbnail, device-independent pixels
};

class ThumbnailModel;

/// Rows are numbered from 1. Files can be dragged out of it; into it where it `takes_files`: those of other
/// lists and programs, and its own rows, which move, or with Control are copied.
class ThumbnailList : public QListView {
  Q_OBJECT
 public:
  using Looks = std::function<FileLook(const QString& path)>;
  /// `looks` is asked for what is painted, again and again until it knows.
  explicit ThumbnailList(Looks looks, QWidget* parent = nullptr);

  void set_form(const ThumbnailListForm& form);
  const ThumbnailListForm& form() const { return form_; }
  void set_takes_files(bool takes);
  /// What an empty list says.
  void set_hint(const QString& hint) { hint_ = hint; }

  const QStringList& paths() const;
  /// Selected files stay so where they are still there.
  void set_paths(const QStringList& paths);

  std::vector<int> selected_rows() const;
  QStringList selected_paths() const;
  /// In front of the row; they are then what is selected.
  void insert_paths(int row, const QStringList& paths);
  void remove_selected();
  /// The selected rows, in their order, in front of `row`; and without those where they were.
  void copy_selected(int row);
  void move_selected(int row);

  /// Something was made.
  void refresh_looks() { viewport()->update(); }

 signals:
  /// The files, or their order, have changed.
  void edited();
  void selection_changed();
  /// Double click or Enter.
  void opened(const QString& path);
  /// Files that were dropped in front of a row.
  void files_dropped(int row, const QStringList& paths);

 protected:
  void startDrag(Qt::DropActions actions) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  int row_at(QPoint place) const;
  bool edit_by_key(const QKeyEvent& event);
  void select_rows(int first, int count);

  ThumbnailListForm form_;
  QString hint_;
  ThumbnailModel* model_;
  int dropRow_ = -1;  ///< where a line shows what would be dropped
};

}  // namespace vellum
