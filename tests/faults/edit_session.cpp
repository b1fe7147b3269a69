// A person at work, to be killed:
//   edit_session STORE FILE PAUSE EAGER   opens the file and inserts a text every PAUSE ms (saying its
//   number);
//                                         copies for recovery go to STORE, by the program's own clock or,
//                                         EAGER = 1, at once behind each edit
//   edit_session STORE                    says of each copy that is found there how many edits it has and how
//   many of
//                                         them Undo takes back, and removes it
#include <QApplication>
#include <cstdio>

#include "core/chunks/text_chunk.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "shell/window/recovery.h"

namespace {

using namespace vellum;

std::size_t edits_of(const DocumentWindow& window) { return chunk_count_tag(window.list, tag::tEXt); }

int tell_copies(const char* store) {
  for (const RecoveryFolder& folder : RecoveryFolder::abandoned(store))
    for (const auto& path : folder.copies()) {
      DocumentWindow window;
      const bool read = read_recovery_copy(path, window);
      const std::size_t edits = edits_of(window);
      std::size_t undone = 0;
      while (read && undo_pop(window) && edits_of(window) == edits - undone - 1) ++undone;
      std::printf("%s %zu %zu\n", read ? "copy" : "damaged", edits, undone);
      std::error_code error;
      std::filesystem::remove(path, error);
    }
  return 0;
}

void edit(MainWindow& window, std::size_t number) {
  DocumentFrame& frame = *window.area().active();
  Host host;
  frame.document().caret = 0;
  if (!insert_record(frame.content(), record_of_text({"Edit", std::to_string(number)}), host)) std::abort();
  std::printf("%zu\n", number);
  std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 2) return tell_copies(arguments[1]);
  if (count != 5) return 2;
  QApplication application(count, arguments);
  MainWindow window;
  window.services().host.message = {};
  Recovery recovery(window, arguments[1]);
  window.show();
  if (!window.open(arguments[2])) return 1;
  QTimer timer;
  std::size_t edits = 0;
  const bool eager = *arguments[4] == '1';
  QObject::connect(&timer, &QTimer::timeout, [&] {
    edit(window, ++edits);
    window.refresh();
    if (eager) recovery.keep_changed();
  });
  timer.start(std::atoi(arguments[3]));
  return application.exec();
}
