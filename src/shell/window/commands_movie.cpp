// The commands of movies that come in.
#include "exchange/importer.h"
#include "shell/dialogs/movie_dialogs.h"
#include "shell/services/file_dialogs.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

const Importer& movies() { return *find_importer("import-movie"); }

std::optional<std::filesystem::path> choose_movie(Services& services) {
  if (!services.choose_file) return std::nullopt;
  const std::string filters = file_filter(movies().filter, movies().extensions).toStdString() + ";;" +
                              QObject::tr("All files (*)").toStdString();
  return services.choose_file({movies().parameters.title, filters, {}});
}

void import_movie_file(MainWindow& main, const std::filesystem::path& file) {
  MovieImportDialog dialog(movies(), file, main.services(), &main);
  if (!dialog.open_movie_file() || dialog.exec() != QDialog::Accepted) return;
  DocumentWindow content;
  if (!import_file(movies(), content, file, dialog.values(), main.services().host)) return;
  if (DocumentFrame* frame = main.add_document(std::move(content))) frame->size_to_content();
}

}  // namespace

void import_movie_command(MainWindow& main) {
  if (const auto file = choose_movie(main.services())) import_movie_file(main, *file);
}

void preview_movie_command(MainWindow& main) {
  const auto file = choose_movie(main.services());
  if (!file) return;
  MovieWindow window(*file, main.services(), &main);
  if (window.open_movie_file() && window.exec() == QDialog::Accepted) import_movie_file(main, *file);
}

}  // namespace vellum
