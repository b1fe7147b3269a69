// Whatever sequence of edits is applied, the list stays a file that can be written.
#include <random>

#include "core/edit/copy_chunks.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/edit_closing.h"
#include "core/edit/image_edit.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/move_chunks.h"
#include "core/edit/paste_chunks.h"
#include "core/edit/undo.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/loops.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::Recorder;

struct Start {
  DocumentKind kind;
  std::uint8_t colorType;
  const char* name;
};

constexpr Start kStarts[] = {
    {DocumentKind::PING, 2, "a.png"}, {DocumentKind::PING, 3, "a.png"}, {DocumentKind::PING, 0, "a.png"},
    {DocumentKind::APNG, 2, "a.png"}, {DocumentKind::APNG, 3, "a.png"}, {DocumentKind::APNG, 6, "a.png"},
    {DocumentKind::APNG, 0, "a.png"}, {DocumentKind::MING, 2, "a.mng"}, {DocumentKind::WEBP, 2, "a.webp"},
};

/// Random edits of one document, and of others that chunks come from.
class Editor {
 public:
  Editor(const Start& start, unsigned seed)
      : window(testing::small_document(start.kind, 2, start.colorType)), random_(seed) {
    for (const Start& other : kStarts)
      others_.push_back(testing::small_document(other.kind, 2, other.colorType));
  }

  /// One edit of any kind; its name.
  std::string edit() {
    window.document.caret = static_cast<std::int32_t>(below(window.list.size()));
    static constexpr std::pair<const char*, void (Editor::*)()> edits[] = {
        {"insert", &Editor::insert},
        {"insert", &Editor::insert},
        {"insert picture", &Editor::insert_picture},
        {"delete", &Editor::erase},
        {"move rows", &Editor::move},
        {"move entry", &Editor::move_to},
        {"paste", &Editor::paste},
        {"paste", &Editor::paste},
        {"drop", &Editor::drop},
        {"images", &Editor::images},
        {"undo", &Editor::undo},
        {"redo", &Editor::redo},
        {"replace", &Editor::replace},
        {"merge", &Editor::merge},
        {"cut", &Editor::cut},
    };
    const auto& [name, apply] = edits[below(std::size(edits))];
    (this->*apply)();
    return name;
  }

  DocumentWindow window;
  Recorder recorder;

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }
  void select(DocumentWindow& from, std::size_t most) {
    from.list.select_all(false);
    for (std::size_t i = 0; i < 1 + below(most); ++i) from.list.select(below(from.list.size()), true);
  }
  Picture picture() {
    static constexpr std::uint32_t depths[] = {1, 4, 8, 24, 32};
    const std::uint32_t size = below(3) == 0 ? 9 : 3;
    return testing::small_picture(size, size + 1, depths[below(5)], static_cast<unsigned>(below(100)));
  }

  void insert() {
    static constexpr ChunkTag tags[] = {tag::PLTE, tag::tRNS, tag::bKGD, tag::gAMA, tag::tEXt, tag::zTXt,
                                        tag::tIME, tag::BACK, tag::TERM, tag::LOOP, tag::ENDL, tag::FRAM,
                                        tag::DEFI, tag::IHDR, tag::IEND, tag::MEND};
    // What has a content to begin with; a SEEK is right behind a SAVE alone.
    auto others = insertable_tags(window);
    std::erase_if(others, [](ChunkTag tag) { return !has_default_content(tag) || tag == tag::SEEK; });
    const ChunkTag tag =
        below(2) == 0 || others.empty() ? tags[below(std::size(tags))] : others[below(others.size())];
    insert_chunk(window, tag, {}, recorder.host);
  }
  void insert_picture() {
    const Picture pictures[] = {picture(), picture()};
    insert_pictures(window, std::span(pictures).first(1 + below(2)), recorder.host);
  }
  void erase() {
    select(window, 2);
    // Loops that have lost an end are told and not mended; they are another test's.
    for (std::size_t i = 0; i < window.list.size(); ++i)
      if (place_of(window.list.record(i).tag, window.document.kind) == ChunkPlace::Loop)
        window.list.select(i, false);
    delete_selected(window, recorder.host);
  }
  void cut() {
    select(window, 1);
    if (place_of(window.list.record(0).tag, window.document.kind) != ChunkPlace::Loop &&
        window.document.kind != DocumentKind::MING)
      cut_selected(window, recorder.host);
  }
  void move() {
    select(window, 3);
    move_rows(window, below(2) == 0, recorder.host);
  }
  void move_to() { move_entry(window, below(window.list.size()), below(window.list.size()), recorder.host); }
  DocumentWindow& source() { return below(2) == 0 ? window : others_[below(others_.size())]; }
  void paste() {
    DocumentWindow& from = source();
    select(from, 4);
    if (const auto copied = copy_selected(from, recorder.host))
      paste_block(window, copied->block, recorder.host);
  }
  void drop() {
    DocumentWindow& from = source();
    select(from, 4);
    drop_rows(window, from, below(window.list.size()), recorder.host);
  }
  void images() {
    select(window, 3);
    move_images(window, {1 + below(4), below(2) == 0, below(2) == 0}, recorder.host);
  }
  void undo() { undo_pop(window); }
  void redo() { redo_pop(window); }
  void replace() {
    std::size_t entry = below(window.list.size());
    if (!is_image_entry(window.document.kind, window.list.record(entry).tag)) return;
    undo_push(window, recorder.host);
    if (replace_image(window, entry, picture(), recorder.host) == Replaced::Done) finish_edit(window, true);
  }
  void merge() {
    if (is_animation(window.document.kind) && window.list.size() < 40)
      merge_document(window, others_[below(others_.size())], {below(3), below(2) == 0}, recorder.host);
  }

  std::mt19937 random_;
  std::vector<DocumentWindow> others_;
};

/// Every level back, and every one forward again: nothing differs.
void check_undo(const DocumentWindow& now) {
  const auto same = [](const ChunkList& a, const ChunkList& b) {
    bool equal = a.size() == b.size();
    for (std::size_t i = 0; equal && i < a.size(); ++i) equal = a.entry(i).record == b.entry(i).record;
    return equal;
  };
  DocumentWindow window = now;
  std::vector<ChunkList> states;
  do states.push_back(window.list);
  while (undo_pop(window));
  for (std::size_t i = 1; i < states.size(); ++i) {
    ASSERT_TRUE(redo_pop(window));
    EXPECT_TRUE(same(window.list, states[states.size() - 1 - i]));
  }
  EXPECT_EQ(window.document.dirty, now.document.dirty);
}

void check_list(const DocumentWindow& window) {
  const DocumentKind kind = window.document.kind;
  const ListShape shape = shape_of(window.list, kind);
  ASSERT_GT(shape.head, 0u);
  if (kind != DocumentKind::WEBP) ASSERT_EQ(shape.end + 1, window.list.size()) << "the end is the last entry";
  ASSERT_LT(static_cast<std::size_t>(window.document.caret), window.list.size());
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkTag tag = window.list.record(i).tag;
    EXPECT_EQ(window.list.entry(i).listIndex, i);
    if (stands_once(tag, kind)) EXPECT_EQ(chunk_count_tag(window.list, tag), 1u) << tag_letters(tag);
    const ChunkPlace place = place_of(tag, kind);
    if (place != ChunkPlace::Fixed)
      EXPECT_TRUE(is_in_place(shape, tag, i)) << tag_letters(tag) << " at " << i;
  }
}

class EditSequences : public ::testing::TestWithParam<Start> {};

TEST_P(EditSequences, LeaveAFileThatIsValidAndReadsBack) {
  const testing::ScratchFolder folder;
  std::size_t saved = 0;
  for (unsigned seed = 0; seed < 25; ++seed) {
    Editor editor(GetParam(), seed);
    std::string done;
    for (int step = 0; step < 40; ++step) {
      done += editor.edit() + ", ";
      check_list(editor.window);
      if (step % 16 == 3) check_undo(editor.window);
      if (HasFailure()) FAIL() << seed << ": " << done << testing::tags_of(editor.window.list);
      const auto file = folder / GetParam().name;
      if (step % 8 != 7 || !save_document(editor.window, file, editor.recorder.host)) continue;
      ++saved;
      DocumentWindow again;
      ASSERT_TRUE(open_document(again, file, editor.recorder.host))
          << seed << ": " << done << testing::tags_of(editor.window.list) << editor.recorder.messages.back();
      EXPECT_EQ(chunk_count_images(again.list, again.document.kind),
                chunk_count_images(editor.window.list, editor.window.document.kind));
      if (editor.window.document.kind != DocumentKind::MING || loops_match(editor.window.list))
        EXPECT_EQ(testing::objections(file), "")
            << seed << ": " << done << testing::tags_of(editor.window.list);
      if (HasFailure()) return;
    }
  }
  EXPECT_GT(saved, 25u) << "too few of the documents could be written for the test to mean much";
}

INSTANTIATE_TEST_SUITE_P(Kinds, EditSequences, ::testing::ValuesIn(kStarts), [](const auto& start) {
  return kind_letters(start.param.kind) + std::to_string(start.param.colorType);
});

}  // namespace
}  // namespace vellum
