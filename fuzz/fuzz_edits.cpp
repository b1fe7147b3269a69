// Bytes as a person at work: each chooses an edit. Whatever was done, the document can be written and what
// was written opens; and Undo brings the beginning back, bit by bit.
#include <map>

#include "core/edit/clipboard_block.h"
#include "core/edit/copy_chunks.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/move_chunks.h"
#include "core/edit/new_document.h"
#include "core/edit/paste_chunks.h"
#include "core/edit/undo.h"
#include "core/files/read_mng.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/files/save_document.h"
#include "core/files/save_options.h"
#include "core/settings.h"
#include "fuzz_support.h"

using namespace vellum;
using namespace vellum::fuzz;

namespace {

/// The bytes, one after the other; zeros behind their end.
class Choices {
 public:
  explicit Choices(Input bytes) : bytes_(bytes) {}
  bool left() const { return !bytes_.empty(); }
  std::size_t below(std::size_t bound) {
    if (bytes_.empty() || bound == 0) return 0;
    const std::size_t value = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return value % bound;
  }

 private:
  Input bytes_;
};

constexpr DocumentKind kKinds[] = {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING,
                                   DocumentKind::WEBP};

std::vector<std::uint8_t> content_of(const DocumentWindow& window) {
  std::vector<std::uint8_t> bytes;
  write_chunk_block(window.document.kind, window.list, [&](Input piece) {
    bytes.insert(bytes.end(), piece.begin(), piece.end());
    return true;
  });
  return bytes;
}

Picture picture_of_choice(Choices& choices) {
  constexpr std::uint32_t kBits[] = {1, 4, 8, 24, 32};
  const Palette palette = {255, 0, 0, 0, 255, 0, 0, 0, 255};
  return PictureCreate(1 + choices.below(6), 1 + choices.below(6), &palette, kBits[choices.below(5)]);
}

struct Session {
  DocumentWindow window;
  std::vector<std::uint8_t> clipboard;
  Host host;

  void select(Choices& choices) {
    window.list.select_all(false);
    for (std::size_t i = choices.below(4); i > 0 && !window.list.empty(); --i)
      window.list.select(choices.below(window.list.size()), true);
    window.document.caret = static_cast<std::int32_t>(choices.below(window.list.size()));
  }
  void edit(Choices& choices) {
    const std::size_t what = choices.below(10);
    if (what == 0) select(choices);
    if (what == 1) insert(choices);
    if (what == 2) delete_selected(window, host);
    if (what == 3) move_rows(window, choices.below(2) == 1, host);
    if (what == 4 && !window.list.empty())
      move_entry(window, choices.below(window.list.size()), choices.below(window.list.size()), host);
    if (what == 5) copy(cut_selected(window, host));
    if (what == 6) copy(copy_selected(window, host));
    if (what == 7) paste_block(window, clipboard, host);
    if (what == 8) paste_picture(window, picture_of_choice(choices), host);
    if (what == 9) choices.below(2) == 1 ? undo_pop(window) : redo_pop(window);
  }

 private:
  void insert(Choices& choices) {
    const auto tags = insertable_tags(window);
    if (!tags.empty()) insert_chunk(window, tags[choices.below(tags.size())], {{}, 3}, host);
  }
  void copy(std::optional<CopiedChunks> copied) {
    if (copied) clipboard = std::move(copied->block);
  }
};

void check_it_can_be_written(Session& session) {
  SaveOptions options;
  options.compression = 1;
  std::vector<std::uint8_t> bytes;
  const DocumentKind kind = session.window.document.kind;
  DocumentWindow copy, again;
  copy.document = session.window.document;
  copy.list = session.window.list;
  if (write_document(copy, kind, memory_sink(bytes), options, session.host) != WriteResult::Done) return;
  const auto read = kind == DocumentKind::MING ? read_mng : kind == DocumentKind::WEBP ? read_webp : read_png;
  check(read(again, bytes, session.host, nullptr));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kMostEdits = 200;
  Choices choices({data, std::min(size, std::size_t{2000})});
  settings::UndoLevels = 32;
  settings::PngCompression = 1;
  Session session;
  NewDocument parameters = default_new_document(kKinds[choices.below(4)]);
  parameters.width = parameters.height = 5;
  if (!new_document(session.window, parameters)) return -1;
  const auto begun = content_of(session.window);
  std::size_t levels = 0;
  bool lost = false;  // the oldest level has gone, or what was undone was given up
  for (std::size_t i = 0; choices.left() && i < kMostEdits; ++i) {
    session.edit(choices);
    levels = std::max(levels, session.window.undoLevels.size());
    lost |= levels == 32;
  }
  check_it_can_be_written(session);
  while (undo_pop(session.window)) {
  }
  check(lost || content_of(session.window) == begun);
  return 0;
}
