// Copies of changed documents: they hold everything, anybody may have damaged them, and they belong to the
// process that made them until it ends.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "core/edit/clipboard_block.h"
#include "core/edit/undo.h"
#include "core/files/open_document.h"
#include "core/files/recovery_copy.h"
#include "core/files/recovery_folder.h"
#include "core/files/save_document.h"
#include "core/model/chunk_layout.h"
#include "core/model/document_mark.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;
using testing::Recorder;
using testing::ScratchFolder;
using testing::small_document;
using testing::small_picture;

std::vector<std::uint8_t> block_of(const DocumentWindow& window) {
  std::vector<std::uint8_t> bytes;
  write_chunk_block(window.document.kind, window.list, [&bytes](std::span<const std::uint8_t> piece) {
    bytes.insert(bytes.end(), piece.begin(), piece.end());
    return true;
  });
  return bytes;
}

/// Writes a copy, reads it, and holds the two documents equal.
void expect_comes_back(const DocumentWindow& window, const fs::path& path) {
  ASSERT_TRUE(write_recovery_copy(window, path, 1234567));
  const auto note = read_recovery_note(path);
  ASSERT_TRUE(note);
  EXPECT_EQ(note->made, 1234567);
  EXPECT_EQ(note->fileName, window.document.fileName);
  DocumentWindow again;
  ASSERT_TRUE(read_recovery_copy(path, again));
  EXPECT_EQ(again.document.kind, window.document.kind);
  EXPECT_EQ(again.document.fileName, window.document.fileName);
  EXPECT_EQ(again.document.HasFileName, window.document.HasFileName);
  EXPECT_EQ(again.document.fileTime, window.document.fileTime);
  EXPECT_TRUE(again.document.dirty);
  EXPECT_TRUE(std::ranges::equal(again.document.defaultImage.bytes(), window.document.defaultImage.bytes()));
  EXPECT_EQ(block_of(again), block_of(window));
  ASSERT_EQ(again.undoLevels.size(), window.undoLevels.size());
  for (std::size_t i = 0; i < window.undoLevels.size(); ++i) {
    EXPECT_EQ(again.undoLevels[i].name, window.undoLevels[i].name);
    EXPECT_EQ(testing::tags_of(again.undoLevels[i].list), testing::tags_of(window.undoLevels[i].list));
    EXPECT_EQ(again.undoLevels[i].dirty, window.undoLevels[i].dirty);
  }
}

TEST(RecoveryCopy, DocumentsOfAllKindsComeBack) {
  const ScratchFolder folder;
  for (const DocumentKind kind :
       {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
    DocumentWindow window = small_document(kind, kind == DocumentKind::PING ? 1 : 3);
    window.document.fileName = folder / "a\xC3\xA4, b\n.png";
    window.document.HasFileName = kind != DocumentKind::MING;
    window.document.fileTime = fs::file_time_type(fs::file_time_type::duration(-77));
    Host host;
    undo_push(window, host, "first");
    if (kind == DocumentKind::APNG) window.document.defaultImage = small_picture(6, 4, 24).handle();
    window.list.select(0, true);
    undo_push(window, host, "second");
    window.list.remove(window.list.size() - 1);
    chunk_list_close_change(window.list, window.document);
    expect_comes_back(window, folder / "x.copy");
  }
}

TEST(RecoveryCopy, RealFilesComeBack) {
  VELLUM_NEEDS_CORPUS();
  const ScratchFolder folder;
  std::size_t seen = 0;
  for (const auto& row : testing::corpus_rows({"png", "apng", "mng", "webp"})) {
    Recorder recorder;
    DocumentWindow window;
    if (++seen % 5 != 0 || !open_document(window, testing::corpus_file(row), recorder.host)) continue;
    // What every change brings up to date; a document that was just read may still differ.
    chunk_list_close_change(window.list, window.document);
    SCOPED_TRACE(window.document.fileName);
    expect_comes_back(window, folder / "x.copy");
  }
  EXPECT_GT(seen, 100u);
}

TEST(RecoveryCopy, DamagedCopiesAreRefused) {
  const ScratchFolder folder;
  const fs::path path = folder / "x.copy";
  DocumentWindow window = small_document(DocumentKind::APNG, 1);
  window.document.fileName = "a.png";
  Host host;
  undo_push(window, host);
  window.document.defaultImage = small_picture(2, 2, 24).handle();
  ASSERT_TRUE(write_recovery_copy(window, path, 0));
  const std::string whole = testing::file_text(path);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    std::ofstream(path, std::ios::binary) << whole.substr(0, length);
    DocumentWindow again;
    EXPECT_FALSE(read_recovery_copy(path, again)) << "cut at " << length;
    read_recovery_note(path);
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0xFF);
    std::ofstream(path, std::ios::binary) << changed;
    DocumentWindow again;
    Recorder recorder;
    // What is still sound may be read and saved; the sanitizers look on.
    if (read_recovery_copy(path, again)) save_document(again, folder / "saved.png", recorder.host);
  }
  EXPECT_FALSE(read_recovery_note(folder / "none.copy"));
}

TEST(RecoveryCopy, NothingIsLeftWhereItCantBeWrittenOrIsStopped) {
  const ScratchFolder folder;
  const DocumentWindow window = small_document(DocumentKind::APNG, 2);
  EXPECT_FALSE(write_recovery_copy(window, "/proc/none/x.copy", 0));
  EXPECT_FALSE(write_recovery_copy(window, folder / "x.copy", 0, [] { return true; }));
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(DocumentMark, SeesEveryChangeAndNoOther) {
  DocumentWindow window = small_document(DocumentKind::APNG, 2);
  const DocumentMark mark(window);
  window.list.select_all(true);
  EXPECT_TRUE(mark.matches(window));
  const auto changed = [&](auto&& change) {
    DocumentWindow other;
    other.document = window.document;
    other.list = window.list;
    change(other);
    return !mark.matches(other);
  };
  EXPECT_FALSE(changed([](DocumentWindow&) {}));
  EXPECT_TRUE(changed([](DocumentWindow& w) { w.list.remove(1); }));
  EXPECT_TRUE(changed([](DocumentWindow& w) { w.document.fileName = "other.png"; }));
  EXPECT_TRUE(changed([](DocumentWindow& w) { w.document.defaultImage = small_picture(2, 2, 24).handle(); }));
  EXPECT_TRUE(changed([](DocumentWindow& w) {
    ChunkRecord record;
    chunk_list_get(w.list, 2, record);
    chunk_list_put(w.list, 2, record);
  }));
}

TEST(RecoveryFolder, WhatIsInUseIsNotFoundAndEmptyFoldersGo) {
  const ScratchFolder scratch;
  const fs::path store = scratch / "state/recovery";
  EXPECT_TRUE(RecoveryFolder::abandoned(store).empty());
  {
    const auto folder = RecoveryFolder::create(store);
    const auto other = RecoveryFolder::create(store);
    ASSERT_TRUE(folder && other);
    EXPECT_NE(folder->copy_path(1), other->copy_path(1));
    std::ofstream(folder->copy_path(1)) << "x";
    EXPECT_TRUE(RecoveryFolder::abandoned(store).empty());
    EXPECT_EQ(fs::status(store).permissions(), fs::perms::owner_all);
  }
  // Two starts at the same time: one has it.
  auto found = RecoveryFolder::abandoned(store);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_TRUE(RecoveryFolder::abandoned(store).empty());
  fs::remove(found[0].copies().at(0));
  found.clear();
  EXPECT_EQ(std::distance(fs::directory_iterator(store), {}), 1);  // the store's own lock
  EXPECT_FALSE(RecoveryFolder::create("/proc/none/recovery"));
  EXPECT_TRUE(RecoveryFolder::abandoned("/proc/none/recovery").empty());
}

TEST(RecoveryFolder, CopiesOfAKilledProcessAreFound) {
  const ScratchFolder scratch;
  const DocumentWindow window = small_document(DocumentKind::WEBP, 2);
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const auto folder = RecoveryFolder::create(scratch.path());
    char state = folder && write_recovery_copy(window, folder->copy_path(1), 5) ? 'y' : 'n';
    std::ofstream(folder->copy_path(2).replace_filename(".vellum-save-abcdef")) << "half";
    if (write(ready[1], &state, 1) != 1) _exit(1);
    for (;;) pause();
  }
  char state = 'n';
  ASSERT_EQ(read(ready[0], &state, 1), 1);
  ASSERT_EQ(state, 'y');
  EXPECT_TRUE(RecoveryFolder::abandoned(scratch.path()).empty()) << "the process still runs";
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  const auto found = RecoveryFolder::abandoned(scratch.path());
  ASSERT_EQ(found.size(), 1u);
  const auto copies = found[0].copies();
  ASSERT_EQ(copies.size(), 1u);
  EXPECT_FALSE(fs::exists(copies[0].parent_path() / ".vellum-save-abcdef"));
  DocumentWindow again;
  ASSERT_TRUE(read_recovery_copy(copies[0], again));
  EXPECT_EQ(block_of(again), block_of(window));
}

}  // namespace
}  // namespace vellum
