// The galleries of favorites and the files in them.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QListWidget>
#include <QPushButton>

#include "configuration/favorites.h"
#include "shell/services/services.h"
#include "shell/services/thumbnails.h"

namespace vellum {

class FavoritesWindow : public QDialog {
  Q_OBJECT
 public:
  FavoritesWindow(Services& services, QWidget* parent);
  ~FavoritesWindow() override;

  QListWidget& galleries() { return *galleries_; }
  ThumbnailList& files() { return *files_; }
  std::string current() const;

  // What the buttons do. Names are asked for where none is given.
  void new_gallery(QString name = {});
  void rename_gallery(QString name = {});
  void delete_gallery();
  void import_gallery();
  void export_gallery();
  /// Asks for files that are added.
  void browse();
  void add_files(const QStringList& files);
  void open_selected();
  void view_selected();
  void remove_selected();
  void move_selected(const QString& gallery);
  void copy_selected(QString folder = {});
  void reveal_selected();
  /// New favorites go to the gallery that is shown.
  void pin_here();

  /// What opening and viewing do with a file.
  std::function<void(const std::filesystem::path&)> open, view;

 private:
  QWidget* make_galleries();
  QWidget* make_files();
  FileLook look(const QString& path);
  void fill(const std::string& name);
  void show_gallery();
  bool put(const FavoritesGallery& gallery);
  FavoritesGallery shown() const;
  void settle_buttons();
  QPushButton* add_button(QLayout& layout, const QString& text, void (FavoritesWindow::*action)());

  Services& services_;
  Thumbnails thumbnails_;
  QListWidget* galleries_;
  ThumbnailList* files_;
  QComboBox* move_;
  std::vector<QPushButton*> needFiles_, needGallery_;
};

}  // namespace vellum
