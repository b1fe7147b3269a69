// A movie in a window, and what is asked of one that is imported.
#pragma once

#include "exchange/importer.h"
#include "shell/dialogs/movie_view.h"
#include "shell/dialogs/parameter_dialog.h"

namespace vellum {

/// Plays a movie. Accepted: it is to be imported.
class MovieWindow : public QDialog {
  Q_OBJECT
 public:
  MovieWindow(const std::filesystem::path& file, Services& services, QWidget* parent);
  MovieView& view() { return *view_; }
  /// False after a message where the movie can't be read.
  bool open_movie_file();

 private:
  std::filesystem::path file_;
  Services& services_;
  MovieView* view_;
  QLabel* facts_;
};

/// The values of an import, beside the movie.
class MovieImportDialog : public ParameterDialog {
  Q_OBJECT
 public:
  MovieImportDialog(const Importer& importer, const std::filesystem::path& file, Services& services,
                    QWidget* parent);
  MovieView& view() { return *view_; }
  bool open_movie_file();
  void follow() override;

 private:
  std::filesystem::path file_;
  MovieView* view_;
  QLabel *facts_, *expected_;
};

}  // namespace vellum
