// A person at work, to be killed:
//   edit_session STORE FILE PAUSE   opens the file and inserts a text every PAUSE ms (saying its number);
//   behind each edit
//                                   a copy for recovery goes to STORE, as the desktop makes it
//   edit_session STORE              says of each copy that is found there how many edits it has and how many
//   of them Undo
//                                   takes back, and removes it
#include <chrono>
#include <cstdio>
#include <thread>

#include "core/chunks/text_chunk.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/undo.h"
#include "core/files/open_document.h"
#include "core/files/recovery_copy.h"
#include "core/files/recovery_folder.h"

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

bool edit(DocumentWindow& window, std::size_t number) {
  Host host;
  window.document.caret = 0;
  window.document.dirty = true;
  if (!insert_record(window, record_of_text({"Edit", std::to_string(number)}), host)) return false;
  std::printf("%zu\n", number);
  return std::fflush(stdout) == 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 2) return tell_copies(arguments[1]);
  if (count != 4) return 2;
  const auto folder = RecoveryFolder::create(arguments[1]);
  DocumentWindow window;
  Host host;
  if (!folder || !open_document(window, arguments[2], host)) return 1;
  for (std::size_t number = 1; edit(window, number); ++number) {
    write_recovery_copy(window, folder->copy_path(1), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(arguments[3])));
  }
  return 1;
}
