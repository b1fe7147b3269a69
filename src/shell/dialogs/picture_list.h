// A list of pictures from files and the clipboard, in an order that a person gives them.
#pragma once

#include <QCache>
#include <QListWidget>
#include <QPushButton>

#include "base/fields.h"
#include "image/held_picture.h"
#include "shell/services/services.h"
#include "shell/services/thumbnails.h"

namespace vellum {

struct ListedPicture {
  HeldPicture picture;         ///< as it is
  std::filesystem::path file;  ///< empty for one from the clipboard
  QString name;
  FieldValues own;  ///< values that it has in place of the common ones
  bool overridden = false;
};

class PictureList : public QWidget {
  Q_OBJECT
 public:
  explicit PictureList(Services& services, QWidget* parent = nullptr);

  /// The pictures from the top.
  std::vector<const ListedPicture*> pictures() const;
  std::size_t count() const { return static_cast<std::size_t>(list_->count()); }
  int current() const { return list_->currentRow(); }
  QListWidget& list() { return *list_; }
  /// For pictures that have no values of their own.
  void hide_override() { open_->hide(); }

  /// False, after a message, when it can't be read.
  bool add_file(const std::filesystem::path& file);
  void add(const HeldPicture& picture, const std::filesystem::path& file, const QString& name);
  void give_own(int row, FieldValues own, const QString& text);
  const ListedPicture& at(int row) const;
  /// The picture, at most as large as a preview. Null when memory is exhausted or the file is gone.
  Picture small(int row) const;

  /// The names of files, one a line. Files that are gone are passed over; the first one that can't be read
  /// ends it.
  void load(const std::filesystem::path& names);
  /// Silent where it can't be written.
  void store(const std::filesystem::path& names) const;

  void choose();
  void paste();
  /// With Shift held all.
  void remove();
  void move_by(int rows);

 signals:
  void changed();
  void opened(int row);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QPushButton* add_button(const QString& text, void (PictureList::*action)());
  void move_up() { move_by(-1); }
  void move_down() { move_by(1); }
  void open() {
    if (list_->currentRow() >= 0) emit opened(list_->currentRow());
  }
  Picture small_of_number(int number) const;
  /// What the row is painted with; empty until it is made.
  QImage thumbnail(int number);
  void show_enabled();
  /// Files of another program, as they come over the list and into it. False for anything else.
  bool take_drop(QDropEvent& event);

  Services& services_;
  QListWidget* list_;
  QPushButton *remove_, *paste_, *open_, *up_, *down_;
  std::map<int, ListedPicture> held_;   ///< by the number that the row keeps wherever it goes
  mutable QCache<int, Picture> small_;  ///< by the same number
  Thumbnails thumbnails_;               ///< of files
  int next_ = 0;
};

}  // namespace vellum
