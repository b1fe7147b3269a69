// The commands that publish: print, the web gallery, favorites.
#include "core/files/open_document.h"
#include "shell/dialogs/favorites_window.h"
#include "shell/dialogs/gallery_dialog.h"
#include "shell/dialogs/print_dialog.h"
#include "shell/services/favorite_files.h"
#include "shell/viewer/view_document.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {

void print_command(MainWindow& main, DocumentFrame& frame) {
  const DocumentWindow copy{frame.content().document, frame.content().list, {}};
  PrintDialog(copy, main.services(), &main).exec();
}

void gallery_command(MainWindow& main) { GalleryDialog(main.services(), &main).exec(); }

void favorites_command(MainWindow& main) {
  Services& services = main.services();
  FavoritesWindow window(services, &main);
  window.open = [&](const std::filesystem::path& file) {
    if (main.open(file)) window.accept();
  };
  window.view = [&](const std::filesystem::path& file) {
    DocumentWindow shown;
    if (open_document(shown, file, services.host)) view_document(shown, false, services, &window);
  };
  window.exec();
  main.refresh();
}

void pin_command(MainWindow& main, DocumentFrame& frame) {
  const Document& document = frame.document();
  if (!document.HasFileName) return main.services().host.show(StringId::SaveBeforePin);
  std::string reason;
  if (!pin_favorite(document.fileName, reason))
    main.services().host.show(StringId::ErrorWritingFile, {}, reason);
  frame.list().viewport()->update();
}

void unpin_command(MainWindow& main, DocumentFrame& frame) {
  std::string reason;
  if (!unpin_favorite(frame.document().fileName, reason))
    main.services().host.show(StringId::ErrorWritingFile, {}, reason);
  frame.list().viewport()->update();
}

}  // namespace vellum
