// Files that the program keeps for itself, and anybody may have changed: copies for recovery, and histories.
// What is read is written, and reads back as the same.
#include <fstream>

#include "configuration/history.h"
#include "core/edit/undo.h"
#include "core/files/recovery_copy.h"
#include "fuzz_support.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

void copies(const std::string& path) {
  read_recovery_note(path);
  DocumentWindow window, again;
  if (!read_recovery_copy(path, window)) return;
  const std::size_t entries = window.list.size(), levels = window.undoLevels.size();
  check(write_recovery_copy(window, path, 0));
  check(read_recovery_copy(path, again));
  check(again.list.size() == entries && again.undoLevels.size() == levels);
  while (undo_pop(again)) {
  }
}

void histories(const std::string& path) {
  const auto files = load_file_history(path);
  const auto texts = load_history(path, HistoryKind::Texts);
  save_file_history(path, files);
  check(load_file_history(path) == files);
  save_history(path, texts);
  check(load_history(path, HistoryKind::Texts) == texts);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = scratch_file(".kept");
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  std::string_view(VELLUM_FUZZ_TARGET) == "recovery" ? copies(path) : histories(path);
  return 0;
}
