// Editing of the list: undo levels, places, refusals and messages.
#include "core/edit/copy_chunks.h"
#include "core/edit/delete_chunks.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/move_chunks.h"
#include "core/edit/new_document.h"
#include "core/edit/paste_chunks.h"
#include "core/edit/undo.h"
#include "core/model/chunk_layout.h"
#include "core/model/frame_values.h"
#include "core/model/framing.h"
#include "core/settings.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum {
namespace {

using testing::record_of;
using testing::Recorder;
using testing::small_document;
using testing::small_picture;
using testing::tags_of;

/// A list of default chunks, named by their tags; images are 6 x 4.
DocumentWindow listed(DocumentKind kind, const std::string& tags, std::uint8_t color_type = 2) {
  DocumentWindow window;
  window.document.kind = kind;
  for (std::size_t i = 0; i < tags.size(); i += 5) {
    const ChunkTag tag = make_tag({tags[i], tags[i + 1], tags[i + 2], tags[i + 3], '\0'});
    ChunkRecord record;
    NewChunkArgument argument;
    argument.picture = small_picture(6, 4, color_type == 3 ? 8 : 24).handle();
    argument.number = tag == tag::LOOP ? 3 : 0;
    if (!new_chunk(window, record, tag, argument)) record = record_of(tag, "x");
    if (tag == tag::IHDR) record.colorType = color_type;
    chunk_list_append(window.list, window.document, record);
  }
  chunk_list_close_change(window.list, window.document);
  return window;
}

DocumentWindow at(DocumentWindow window, std::int32_t caret) {
  window.document.caret = caret;
  return window;
}

void select(DocumentWindow& window, std::initializer_list<std::size_t> entries) {
  window.list.select_all(false);
  for (const std::size_t entry : entries) window.list.select(entry, true);
}

constexpr auto P = DocumentKind::PING, A = DocumentKind::APNG, M = DocumentKind::MING, W = DocumentKind::WEBP;

// ------------------------------------------------------------------------------------------------------------
// undo

TEST(Undo, BringsBackListSelectionCaretAndDirtyAndCostsNoPixels) {
  Recorder recorder;
  DocumentWindow window = at(small_document(A, 2), 3);
  select(window, {2, 3});
  window.list.topIndex = 1;
  const std::string before = tags_of(window.list);
  ASSERT_TRUE(undo_push(window, recorder.host));
  EXPECT_TRUE(window.undoLevels[0].list.record(2).data.shares_with(window.list.record(2).data));
  ASSERT_TRUE(delete_selected(window, recorder.host));
  EXPECT_TRUE(window.document.dirty);
  EXPECT_EQ(window.undoLevels.back().name, "delete 2 chunks");
  ASSERT_TRUE(undo_pop(window));
  EXPECT_EQ(tags_of(window.list), before);
  EXPECT_EQ(window.document.caret, 3);
  EXPECT_EQ(window.list.selected_count(), 2u);
  EXPECT_EQ(window.list.topIndex, 1u);
  EXPECT_FALSE(window.document.dirty);
  EXPECT_FALSE(window.document.undoAvailable);
  EXPECT_FALSE(undo_pop(window)) << "the first level was what the second is";
}

TEST(Undo, WhatChangedNothingLeavesNoLevelAndTakesNothingFromRedo) {
  Recorder recorder;
  DocumentWindow window = at(small_document(A, 2), 3);
  ASSERT_TRUE(insert_chunk(window, tag::tEXt, {}, recorder.host));
  const std::string inserted = tags_of(window.list);
  ASSERT_TRUE(undo_pop(window));
  for (int i = 0; i < 3; ++i) undo_push(window, recorder.host, "look");
  undo_settle(window);
  EXPECT_FALSE(window.document.undoAvailable);
  ASSERT_TRUE(redo_pop(window));
  EXPECT_EQ(tags_of(window.list), inserted);
  EXPECT_EQ(window.undoLevels.back().name, "insert tEXt");
  ASSERT_TRUE(undo_pop(window));
  ASSERT_TRUE(insert_chunk(window, tag::gAMA, {}, recorder.host));
  EXPECT_FALSE(redo_pop(window)) << "a new change clears it";
  ASSERT_TRUE(insert_chunk(window, tag::tIME, {}, recorder.host));
  undo_take_back(window);
  EXPECT_EQ(chunk_count_tag(window.list, tag::tIME), 0u);
  EXPECT_EQ(window.undoLevels.size(), 1u);
}

TEST(Undo, TheOldestLevelGoesAtTheLimitOfTheSetting) {
  const testing::SettingsGuard guard;
  Recorder recorder;
  for (const auto& [levels, kept] : {std::pair{10, 10u}, {0, 1u}, {1000, 32u}}) {
    settings::UndoLevels = levels;
    DocumentWindow window = small_document(A, 1);
    for (int i = 0; i < 40; ++i) {
      window.document.caret = i;
      ASSERT_TRUE(undo_push(window, recorder.host));
      window.list.select(0, i % 2 == 0);
    }
    EXPECT_EQ(window.undoLevels.size(), kept);
    EXPECT_EQ(window.undoLevels.front().caret, 40 - static_cast<int>(kept));
  }
}

TEST(Undo, AnEmptyLevelIsDroppedAloneAndClearingDropsAll) {
  Recorder recorder;
  DocumentWindow window;
  undo_push(window, recorder.host);
  window.list = small_document(P, 1).list;
  EXPECT_FALSE(undo_pop(window));
  EXPECT_EQ(window.list.size(), 3u);
  undo_push(window, recorder.host);
  undo_clear(window);
  EXPECT_TRUE(window.undoLevels.empty());
  EXPECT_FALSE(window.document.undoAvailable);
}

// ------------------------------------------------------------------------------------------------- where
// chunks go

TEST(Insert, EveryTagGoesToItsPlace) {
  struct Case {
    DocumentKind kind;
    const char* list;
    std::int32_t caret;
    ChunkTag tag;
    const char* result;
    std::int32_t new_caret;
    std::uint8_t colorType = 2;
  };
  const Case cases[] = {
      {P, "IHDR IDAT IEND", 0, tag::tEXt, "IHDR tEXt IDAT IEND", 1},
      {P, "IHDR IDAT IEND", 1, tag::tEXt, "IHDR IDAT tEXt IEND", 2},
      {P, "IHDR IDAT IEND", 2, tag::gAMA, "IHDR gAMA IDAT IEND", 1},
      {P, "IHDR tEXt PLTE IDAT IEND", 0, tag::gAMA, "IHDR tEXt gAMA PLTE IDAT IEND", 2},
      {P, "IHDR tEXt IEND", 0, tag::gAMA, "IHDR gAMA tEXt IEND", 1},
      {P, "IHDR gAMA tRNS IDAT IEND", 4, tag::PLTE, "IHDR gAMA PLTE tRNS IDAT IEND", 2},
      {P, "IHDR bKGD gAMA IDAT IEND", 0, tag::PLTE, "IHDR PLTE bKGD gAMA IDAT IEND", 1},
      {P, "IHDR PLTE IDAT IEND", 0, tag::tRNS, "IHDR PLTE tRNS IDAT IEND", 2, 3},
      {P, "IHDR PLTE IDAT tEXt IEND", 3, tag::bKGD, "IHDR PLTE bKGD IDAT tEXt IEND", 2, 3},
      {P, "IHDR tEXt bKGD tEXt IEND", 0, tag::IDAT, "IHDR tEXt bKGD IDAT tEXt IEND", 3},
      {P, "IHDR IEND", 1, tag::IDAT, "IHDR IDAT IEND", 1},
      {A, "IHDR acTL IEND", 0, tag::IDAT, "IHDR acTL IDAT IEND", 2},
      {A, "IHDR acTL tRNS IDAT IDAT IEND", 3, tag::IDAT, "IHDR acTL tRNS IDAT IDAT IDAT IEND", 4},
      {A, "IHDR acTL IDAT IDAT IEND", 3, tag::tIME, "IHDR acTL IDAT IDAT tIME IEND", 4},
      {A, "IHDR acTL IDAT IDAT IEND", 3, tag::bKGD, "IHDR acTL bKGD IDAT IDAT IEND", 2},
      {M, "MHDR LOOP ENDL MEND", 0, tag::PNGI, "MHDR LOOP PNGI ENDL MEND", 2},
      {M, "MHDR TERM tEXt BACK PNGI MEND", 0, tag::PNGI, "MHDR TERM tEXt BACK PNGI PNGI MEND", 4},
      {M, "MHDR tEXt PNGI MEND", 2, tag::TERM, "MHDR TERM tEXt PNGI MEND", 1},
      {M, "MHDR TERM PNGI MEND", 0, tag::tEXt, "MHDR TERM tEXt PNGI MEND", 2},
      {M, "MHDR TERM LOOP PNGI ENDL MEND", 5, tag::BACK, "MHDR TERM BACK LOOP PNGI ENDL MEND", 2},
      {M, "MHDR PNGI PNGI MEND", 2, tag::LOOP, "MHDR PNGI LOOP PNGI MEND", 2},
      {M, "MHDR LOOP PNGI PNGI MEND", 3, tag::ENDL, "MHDR LOOP PNGI PNGI ENDL MEND", 4},
      {M, "MHDR JHDR JDAT IEND PNGI MEND", 1, tag::tEXt, "MHDR JHDR JDAT IEND tEXt PNGI MEND", 4},
      {M, "MHDR JHDR JDAT IEND MEND", 2, tag::BACK, "MHDR BACK JHDR JDAT IEND MEND", 1},
      {W, "WEBH WEBI", 0, tag::WEBI, "WEBH WEBI WEBI", 1},
      {W, "WEBH WEBI", 1, tag::WEBI, "WEBH WEBI WEBI", 2},
  };
  for (const Case& c : cases) {
    Recorder recorder;
    DocumentWindow window = at(listed(c.kind, c.list, c.colorType), c.caret);
    NewChunkArgument argument;
    argument.picture = small_picture(6, 4, 24).handle();
    const auto what = ::testing::Message() << tag_letters(c.tag) << " into " << c.list;
    EXPECT_TRUE(insert_chunk(window, c.tag, argument, recorder.host)) << what;
    EXPECT_EQ(tags_of(window.list), c.result) << what;
    EXPECT_EQ(window.document.caret, c.new_caret) << what;
    EXPECT_TRUE(window.document.dirty && window.document.undoAvailable);
    EXPECT_TRUE(recorder.messages.empty()) << recorder.messages[0];
  }
}

TEST(Insert, RefusalsSayWhyAndLeaveNoLevel) {
  struct Case {
    DocumentKind kind;
    const char* list;
    std::int32_t caret;
    ChunkTag tag;
    const char* message;
    std::uint8_t colorType = 2;
  };
  const char* const inappropriate = "There has been an error inserting this chunk.";
  const Case cases[] = {
      {P, "IHDR IDAT IEND", 0, tag::IEND, inappropriate},
      {P, "IHDR IDAT IEND", 0, tag::LOOP, inappropriate},
      {P, "IHDR IDAT IEND", 0, tag::acTL, inappropriate},
      {M, "MHDR MEND", 0, tag::tRNS, inappropriate},
      {W, "WEBH", 0, tag::tEXt, inappropriate},
      {A, "IHDR acTL IEND", 0, tag::fcTL, inappropriate},
      {P, "IHDR IDAT IEND", 0, tag::PLTE, inappropriate, 0},
      {P, "IHDR IDAT IEND", 0, tag::IDAT, "already exists"},
      {P, "IHDR gAMA IDAT IEND", 0, tag::gAMA, "already exists"},
      {M, "MHDR BACK MEND", 0, tag::BACK, "already exists"},
      {P, "IHDR IDAT IEND", 2, tag::tEXt, "The selected location is invalid"},
      {P, "IDAT IEND", 0, tag::gAMA, "The selected location is invalid"},
      {P, "IHDR IDAT IEND", 1, tag::tRNS, "Images with an alpha channel", 6},
      {P, "IHDR IDAT IEND", 1, tag::tRNS, "There is no palette in this document.", 3},
      {M, "MHDR PNGI MEND", 0, tag::LOOP, "Select the Image chunk which will begin your loop."},
      {M, "MHDR LOOP PNGI MEND", 2, tag::LOOP, "A LOOP chunk already exists in this image."},
      {M, "MHDR PNGI MEND", 1, tag::ENDL, "No LOOP chunk cound be found"},
      {M, "MHDR LOOP PNGI ENDL PNGI MEND", 4, tag::ENDL, "No LOOP chunk cound be found"},
      {M, "MHDR LOOP PNGI MEND", 3, tag::ENDL, "Select the Image chunk which will end your loop."},
      {M, "MHDR PNGI MEND", 0, tag::FRAM, "Select the first Image chunk to which the FRAM will apply."},
      {M, "MHDR PNGI MEND", 2, tag::DEFI, "Select the first Image chunk to which the DEFI will apply."},
      {M, "MHDR TERM MEND", 0, tag::TERM, "A TERM chunk currently exists for this file."},
  };
  for (const Case& c : cases) {
    Recorder recorder;
    DocumentWindow window = at(listed(c.kind, c.list, c.colorType), c.caret);
    NewChunkArgument argument;
    argument.picture = small_picture(6, 4, 24).handle();
    EXPECT_FALSE(insert_chunk(window, c.tag, argument, recorder.host));
    ASSERT_EQ(recorder.messages.size(), 1u) << tag_letters(c.tag) << " into " << c.list;
    EXPECT_NE(recorder.messages[0].find(c.message), std::string::npos)
        << tag_letters(c.tag) << " into " << c.list << ": " << recorder.messages[0];
    EXPECT_EQ(tags_of(window.list), c.list);
    EXPECT_FALSE(window.document.undoAvailable || window.document.dirty);
  }
}

TEST(Insert, FramingBecomesAPartOfTheImageAndLoopsGetTheirLevel) {
  Recorder recorder;
  DocumentWindow window = at(listed(M, "MHDR LOOP PNGI PNGI MEND"), 3);
  NewChunkArgument argument;
  argument.number = 250;
  ASSERT_TRUE(insert_chunk(window, tag::FRAM, argument, recorder.host));
  EXPECT_EQ(frame_delay_ms(window.list.record(3), M, 1000), 250u);
  EXPECT_FALSE(insert_chunk(window, tag::FRAM, argument, recorder.host));
  EXPECT_EQ(recorder.messages.back(), "A FRAM chunk currently exists for the selected Image chunk.");
  argument.number = 7 | 9u << 16;
  ASSERT_TRUE(insert_chunk(window, tag::DEFI, argument, recorder.host));
  EXPECT_EQ(GetFrameOffset(window.list.record(3), M).x, 7);
  EXPECT_EQ(GetFrameOffset(window.list.record(3), M).y, 9);
  EXPECT_EQ(document_size(window.list, window.document).width, 13u) << "the header follows the frames";
  ASSERT_TRUE(insert_chunk(window, tag::LOOP, {}, recorder.host));
  EXPECT_EQ(window.list.record(3).tag, tag::LOOP);
  EXPECT_EQ(payload_byte(window.list.record(3), 0), 1) << "one level deeper than the loop around it";
  EXPECT_EQ(payload_be32(window.list.record(3), 1), 0x7FFFFFFFu);
  window.document.caret = 4;
  ASSERT_TRUE(insert_chunk(window, tag::ENDL, {}, recorder.host));
  EXPECT_EQ(payload_byte(window.list.record(5), 0), 1);
}

TEST(Insert, CountsOfTheHeaderFollow) {
  Recorder recorder;
  DocumentWindow window = small_document(M, 1);
  ChunkRecord header;
  chunk_list_get(window.list, 0, header);
  header.frameCount = header.playTime = header.simplicityProfile = 5;
  chunk_list_put(window.list, 0, header);
  ASSERT_TRUE(insert_chunk(window, tag::tEXt, {}, recorder.host));
  EXPECT_EQ(window.list.record(0).frameCount, 5u) << "texts are not counted";
  const Picture picture = small_picture(2, 2, 8);
  ASSERT_TRUE(insert_pictures(window, {&picture, 1}, recorder.host));
  EXPECT_EQ(window.list.record(0).frameCount | window.list.record(0).simplicityProfile, 0u);
  DocumentWindow animation = small_document(A, 3);
  EXPECT_EQ(animation.list.record(1).numFrames, 3u);
  EXPECT_EQ(frame_delay_ms(animation.list.record(3), A, 0), 100u) << "DefaultDelay";
}

// ----------------------------------------------------------------------------------------------------------
// delete

TEST(Delete, FixedChunksStayAndOneQuestionTellsAll) {
  Recorder recorder;
  DocumentWindow window = at(listed(P, "IHDR PLTE IDAT IEND", 3), 3);
  window.list.select_all(true);
  ASSERT_TRUE(delete_selected(window, recorder.host));
  EXPECT_EQ(tags_of(window.list), "IHDR IEND");
  EXPECT_EQ(recorder.messages, std::vector<std::string>{"Do you wish to delete all 4 chunks?"});
  EXPECT_TRUE(recorder.warnings.empty());
  EXPECT_EQ(window.document.caret, 1);
  EXPECT_TRUE(undo_pop(window));
  EXPECT_EQ(tags_of(window.list), "IHDR PLTE IDAT IEND");
  const testing::SettingsGuard guard;
  settings::WarnMultipleDelete = 0;
  window.list.select_all(true);
  ASSERT_TRUE(delete_selected(window, recorder.host));
  ASSERT_EQ(recorder.warnings.size(), 3u) << "where it is switched off, each is told once";
  EXPECT_EQ(recorder.warnings[0], "The selected chunk can't be deleted.");
  EXPECT_NE(recorder.warnings[1].find("without an image (IDAT)"), std::string::npos);
  EXPECT_NE(recorder.warnings[2].find("without a palette (PLTE)"), std::string::npos);
}

TEST(Delete, OneNeedsNoQuestionAndARefusedOneLeavesNoLevel) {
  const testing::SettingsGuard guard;
  Recorder recorder;
  DocumentWindow window = small_document(A, 3);
  select(window, {2, 3});
  recorder.answer = Answer::No;
  EXPECT_FALSE(delete_selected(window, recorder.host));
  EXPECT_FALSE(window.document.undoAvailable || window.document.dirty);
  settings::WarnMultipleDelete = 0;
  EXPECT_TRUE(delete_selected(window, recorder.host)) << "a question that is switched off counts as Yes";
  EXPECT_EQ(tags_of(window.list), "IHDR acTL IDAT IEND");
  EXPECT_EQ(window.list.record(1).numFrames, 1u);
  EXPECT_EQ(recorder.messages.size(), 1u);
  select(window, {2});
  EXPECT_TRUE(delete_selected(window, recorder.host)) << "of an animation any image may go";
  EXPECT_TRUE(recorder.warnings.empty());
}

TEST(Delete, AnImageThatIsNotUnderstoodGoesAsAWhole) {
  Recorder recorder;
  const DocumentWindow start = listed(M, "MHDR FRAM JHDR JDAT teXt IEND PNGI MEND");
  struct Case {
    std::size_t entry;
    const char* result;
  };
  for (const Case& c : {Case{2, "MHDR FRAM PNGI MEND"},
                        {3, "MHDR FRAM JHDR JDAT teXt IEND PNGI MEND"},
                        {4, "MHDR FRAM JHDR JDAT IEND PNGI MEND"},
                        {5, "MHDR FRAM JHDR JDAT teXt IEND PNGI MEND"}}) {
    DocumentWindow window = start;
    select(window, {c.entry});
    delete_selected(window, recorder.host);
    EXPECT_EQ(tags_of(window.list), c.result) << c.entry;
  }
}

// ------------------------------------------------------------------------------------------------------
// copy, paste

TEST(Copy, FixedChunksDrawTheirMessages) {
  struct Case {
    DocumentKind kind;
    const char* list;
    std::size_t entry;
    const char* message;
  };
  for (const Case& c : {Case{P, "IHDR IDAT IEND", 0, "The header (IHDR) chunk can't be copied or deleted."},
                        {P, "IHDR IDAT IEND", 2, "The end (IEND) chunk can't be copied or deleted."},
                        {M, "MHDR MEND", 1, "The end (IEND) chunk can't be copied or deleted."},
                        {M, "MHDR MEND", 0, "That chunk can't be copied to the clipboard."},
                        {M, "MHDR JHDR JDAT IEND MEND", 2, "That chunk can't be copied to the clipboard."},
                        {W, "WEBH", 0, "That chunk can't be copied to the clipboard."},
                        {A, "IHDR acTL IEND", 1, "That chunk can't be copied to the clipboard."}}) {
    Recorder recorder;
    DocumentWindow window = listed(c.kind, c.list);
    select(window, {c.entry});
    EXPECT_FALSE(copy_selected(window, recorder.host));
    EXPECT_FALSE(cut_selected(window, recorder.host));
    EXPECT_EQ(recorder.messages,
              (std::vector<std::string>{c.message, c.message,
                                        "The currently selected chunk cannot be cut to the clipboard."}));
    EXPECT_EQ(tags_of(window.list), c.list);
  }
  Recorder recorder;
  DocumentWindow window = listed(P, "IHDR IDAT IEND");
  ChunkRecord lost = record_of(tag::IDAT, "no picture");
  chunk_list_put(window.list, 1, lost);
  select(window, {1});
  EXPECT_FALSE(copy_selected(window, recorder.host));
  EXPECT_EQ(recorder.messages.back(), "This chunk can't be copied.");
}

TEST(Copy, SeveralPassOverTheFixedOnesAndCutTakesWhatWasCopied) {
  Recorder recorder;
  DocumentWindow window = small_document(P, 1);
  insert_chunk(window, tag::tEXt, {}, recorder.host);
  window.list.select_all(true);
  const auto copied = cut_selected(window, recorder.host);
  ASSERT_TRUE(copied);
  EXPECT_EQ(copied->entries.size(), 2u);
  EXPECT_FALSE(copied->picture);
  EXPECT_EQ(tags_of(window.list), "IHDR IEND");
  window.document.caret = 0;
  EXPECT_TRUE(paste_block(window, copied->block, recorder.host));
  EXPECT_EQ(tags_of(window.list), "IHDR IDAT tEXt IEND");
  select(window, {2});
  const auto text = copy_selected(window, recorder.host);
  EXPECT_EQ(text->text, settings::ForRent);
  EXPECT_TRUE(recorder.messages.empty());
}

/// What a paste does to a list: chunks of `from` copied, pasted behind the caret.
struct PasteCase {
  DocumentKind fromKind;
  const char* from;
  std::vector<std::size_t> entries;
  DocumentKind kind;
  const char* list;
  std::int32_t caret;
  const char* result;
  const char* message = "";
};

TEST(Paste, RecordsGoToTheirPlacesInTheFormOfTheKind) {
  const char* const refused = "This chunk can't be pasted into the selected location.";
  const PasteCase cases[] = {
      {P, "IHDR IDAT IEND", {1}, A, "IHDR acTL IDAT IEND", 2, "IHDR acTL IDAT IDAT IEND"},
      {P, "IHDR IDAT IEND", {1}, M, "MHDR MEND", 0, "MHDR PNGI MEND"},
      {P, "IHDR IDAT IEND", {1}, W, "WEBH WEBI", 0, "WEBH WEBI WEBI"},
      {M, "MHDR PNGI PNGI MEND", {1, 2}, W, "WEBH", 0, "WEBH WEBI WEBI"},
      {W, "WEBH WEBI", {1}, P, "IHDR IEND", 0, "IHDR IDAT IEND"},
      {W, "WEBH WEBI", {1}, P, "IHDR IDAT IEND", 0, "IHDR IDAT IEND", refused},
      {P, "IHDR tEXt IEND", {1}, P, "IHDR IDAT IEND", 2, "IHDR IDAT IEND", refused},
      {P, "IHDR tEXt IEND", {1}, W, "WEBH WEBI", 0, "WEBH WEBI", refused},
      {P, "IHDR gAMA IEND", {1}, P, "IHDR gAMA IEND", 0, "IHDR gAMA IEND", "already exists"},
      {P, "IHDR gAMA tEXt IEND", {1, 2}, P, "IHDR IDAT IEND", 1, "IHDR gAMA IDAT tEXt IEND"},
      {P, "IHDR gAMA IEND", {1}, M, "MHDR MEND", 0, "MHDR MEND", refused},
      {P, "IHDR abCd IEND", {1}, M, "MHDR MEND", 0, "MHDR abCd MEND"},
      {P, "IHDR ABCD IEND", {1}, P, "IHDR IEND", 0, "IHDR IEND", refused},
      {M, "MHDR LOOP PNGI ENDL MEND", {1, 2, 3}, M, "MHDR PNGI MEND", 1, "MHDR PNGI LOOP PNGI ENDL MEND"},
      {M, "MHDR LOOP PNGI ENDL MEND", {1}, M, "MHDR PNGI MEND", 1, "MHDR LOOP PNGI MEND"},
      {M, "MHDR LOOP PNGI ENDL MEND", {3}, M, "MHDR PNGI MEND", 1, "MHDR PNGI MEND", "No LOOP chunk cound"},
      {M, "MHDR TERM BACK MEND", {1, 2}, M, "MHDR tEXt PNGI MEND", 2, "MHDR TERM tEXt BACK PNGI MEND"},
      {M, "MHDR FRAM JHDR IEND MEND", {1}, M, "MHDR PNGI MEND", 1, "MHDR PNGI MEND", ""},
      {M,
       "MHDR FRAM JHDR IEND MEND",
       {1},
       M,
       "MHDR PNGI MEND",
       0,
       "MHDR PNGI MEND",
       "incorrect position to insert a FRAM"},
  };
  for (const PasteCase& c : cases) {
    Recorder recorder;
    DocumentWindow from = listed(c.fromKind, c.from), window = at(listed(c.kind, c.list), c.caret);
    for (const std::size_t entry : c.entries) from.list.select(entry, true);
    const auto copied = copy_selected(from, recorder.host);
    ASSERT_TRUE(copied) << c.from;
    paste_block(window, copied->block, recorder.host);
    EXPECT_EQ(tags_of(window.list), c.result) << c.from << " into " << c.list;
    const std::string told = recorder.messages.empty() ? "" : recorder.messages[0];
    EXPECT_EQ(told.empty(), *c.message == 0) << c.from << " into " << c.list << told;
    EXPECT_NE(told.find(c.message), std::string::npos) << c.from << " into " << c.list << told;
  }
}

TEST(Paste, AFrameKeepsDelayOffsetDisposalAndPixelsInEveryKind) {
  for (const DocumentKind from_kind : {A, M, W})
    for (const DocumentKind kind : {A, M, W}) {
      Recorder recorder;
      DocumentWindow from = small_document(from_kind, 1), window = small_document(kind, 1);
      const std::size_t at_image = chunk_find_first(from.list, image_tag(from_kind));
      ChunkRecord record;
      chunk_list_get(from.list, at_image, record);
      set_frame_delay(record, from_kind, 1000, 330);
      SetFrameOffset(record, from_kind, {2, 1});
      record.frameControl.dispose = 1;
      record.webpImage.dispose = 1;
      if (from_kind == M) record.image.edit().framBlock.framingMode = 3;
      chunk_list_put(from.list, at_image, record);
      if (kind == M) {
        ChunkRecord header;
        chunk_list_get(window.list, 0, header);
        header.ticksPerSecond = 100;
        chunk_list_put(window.list, 0, header);
      }
      window.document.caret = static_cast<std::int32_t>(chunk_find_first(window.list, image_tag(kind)));
      select(from, {at_image});
      ASSERT_TRUE(paste_block(window, copy_selected(from, recorder.host)->block, recorder.host));
      const ChunkRecord& pasted = window.list.record(caret_entry(window));
      const auto what = kind_letters(from_kind) + " to " + kind_letters(kind);
      EXPECT_EQ(frame_delay_ms(pasted, kind, 100), 330u) << what;
      EXPECT_EQ(GetFrameOffset(pasted, kind).x, 2) << what;
      EXPECT_EQ(GetFrameOffset(pasted, kind).y, 1) << what;
      EXPECT_TRUE(kind == A   ? pasted.frameControl.dispose == 1
                  : kind == W ? pasted.webpImage.dispose == 1
                              : clears_canvas(pasted))
          << what;
      const Picture picture = picture_of(pasted);
      EXPECT_EQ(testing::rgba_of(window, picture), testing::rgba_of(from, picture_of(record))) << what;
    }
}

TEST(Paste, PicturesAndTextBecomeChunks) {
  Recorder recorder;
  for (const DocumentKind kind : {P, A, M, W}) {
    DocumentWindow window = small_document(kind, 0);
    EXPECT_TRUE(paste_picture(window, small_picture(5, 5, 32), recorder.host));
    EXPECT_EQ(chunk_count_images(window.list, kind), 1u);
    EXPECT_EQ(paste_text(window, "na\u00efve\r\nline", recorder.host), kind != W);
    if (kind == W) continue;
    const ChunkRecord& text = window.list.record(caret_entry(window));
    EXPECT_EQ(text.tag, tag::tEXt);
    EXPECT_EQ(text_of(text), "na\u00efve\nline");
  }
  EXPECT_EQ(recorder.messages.size(), 1u);
  DocumentWindow window = small_document(A, 1);
  const std::uint8_t rubbish[] = {1, 2, 3};
  EXPECT_FALSE(paste_block(window, rubbish, recorder.host));
  EXPECT_EQ(recorder.messages.back(), "The data on the clipboard is not a valid chunk.");
}

// ----------------------------------------------------------------------------------------------- drop,
// merge, move

TEST(Drop, CopiesImagesOfTheSameKindAndStopsAtOthers) {
  Recorder recorder;
  DocumentWindow from = listed(A, "IHDR acTL tEXt IDAT IDAT IEND"), window = small_document(A, 1);
  select(from, {2, 3, 4});
  ASSERT_TRUE(drop_rows(window, from, 0, recorder.host));
  EXPECT_EQ(tags_of(window.list), "IHDR acTL IDAT IDAT IDAT IEND") << "behind the last header row";
  EXPECT_EQ(window.document.caret, 3);
  ASSERT_TRUE(drop_rows(window, from, 5, recorder.host));
  EXPECT_EQ(tags_of(window.list), "IHDR acTL IDAT IDAT IDAT IDAT IDAT IEND") << "in front of the end";
  select(window, {2});
  ASSERT_TRUE(drop_rows(window, window, 2, recorder.host)) << "in its own window";
  EXPECT_EQ(chunk_count_images(window.list, A), 6u);
  EXPECT_TRUE(recorder.messages.empty());
  DocumentWindow mng = small_document(M, 1);
  mng.document.dirty = false;
  EXPECT_FALSE(drop_rows(mng, from, 1, recorder.host));
  EXPECT_EQ(recorder.messages.back(), "The selected chunk can't be dropped in this location.");
  EXPECT_FALSE(mng.document.dirty);
  DocumentWindow still = small_document(P, 1);
  EXPECT_FALSE(drop_rows(still, from, 0, recorder.host));
  EXPECT_EQ(recorder.messages.size(), 2u);
}

TEST(Merge, TakesAllImagesInOrderAndAsksAboutColorTypes) {
  Recorder recorder;
  for (const DocumentKind to : {A, M, W})
    for (const DocumentKind other : {A, M, W}) {
      DocumentWindow window = small_document(to, 2), from = small_document(other, 0);
      const Picture pictures[] = {small_picture(9, 9, 24, 5), small_picture(3, 3, 24, 6)};
      insert_pictures(from, pictures, recorder.host);
      insert_chunk(from, tag::tEXt, {}, recorder.host);
      recorder.messages.clear();
      const std::size_t texts = chunk_count_tag(window.list, tag::tEXt);
      ASSERT_TRUE(merge_document(window, from, {1, true}, recorder.host))
          << kind_letters(to) << kind_letters(other);
      const auto images = testing::images_of(window);
      ASSERT_EQ(images.size(), 4u);
      EXPECT_EQ(images[1].width(), 9u);
      EXPECT_EQ(images[2].width(), 3u);
      EXPECT_EQ(images[3].width(), 6u);
      EXPECT_EQ(images[0].width(), to == A ? 9u : 6u) << "the first one fills the canvas of an animated PNG";
      EXPECT_EQ(document_size(window.list, window.document).height, 9u);
      EXPECT_EQ(chunk_count_tag(window.list, tag::tEXt) - texts, to == W || other == W ? 0u : 1u);
      EXPECT_TRUE(recorder.messages.empty());
    }
  DocumentWindow window = small_document(A, 1, 3);
  recorder.answer = Answer::No;
  EXPECT_FALSE(merge_document(window, small_document(A, 1), {}, recorder.host));
  EXPECT_TRUE(recorder.messages.back().starts_with("You are about to merge two animations files"));
  EXPECT_EQ(chunk_count_images(window.list, A), 1u);
}

TEST(Move, RowsMoveByOneWhereTheirPlaceAllowsIt) {
  struct Case {
    DocumentKind kind;
    const char* list;
    std::vector<std::size_t> entries;
    bool down;
    const char* result;
  };
  const Case cases[] = {
      {P, "IHDR tEXt IDAT IEND", {1}, true, "IHDR IDAT tEXt IEND"},
      {P, "IHDR tEXt IDAT IEND", {1}, false, ""},
      {P, "IHDR IDAT tEXt IEND", {2}, true, ""},
      {P, "IHDR gAMA PLTE IDAT IEND", {1}, true, ""},
      {P, "IHDR gAMA tEXt IDAT IEND", {1}, true, "IHDR tEXt gAMA IDAT IEND"},
      {P, "IHDR PLTE tRNS IDAT IEND", {3}, false, ""},
      {P, "IHDR PLTE tRNS IDAT IEND", {2}, false, ""},
      {A, "IHDR acTL tEXt tIME IDAT IEND", {2, 3}, true, "IHDR acTL IDAT tEXt tIME IEND"},
      {A, "IHDR acTL tEXt IDAT tIME IEND", {3}, false, "IHDR acTL IDAT tEXt tIME IEND"},
      {A, "IHDR acTL tEXt IEND", {1}, true, ""},
      {M, "MHDR TERM tEXt PNGI MEND", {2}, false, ""},
      {M, "MHDR BACK tEXt PNGI MEND", {1}, true, "MHDR tEXt BACK PNGI MEND"},
      {M, "MHDR LOOP PNGI ENDL MEND", {1}, true, "MHDR PNGI LOOP ENDL MEND"},
      {M, "MHDR PNGI LOOP ENDL MEND", {2}, true, ""},
      {M, "MHDR PNGI JHDR IEND MEND", {1}, true, ""},
      {W, "WEBH WEBI", {1}, false, ""},
  };
  for (const Case& c : cases) {
    Recorder recorder;
    DocumentWindow window = listed(c.kind, c.list);
    for (const std::size_t entry : c.entries) window.list.select(entry, true);
    window.document.caret = static_cast<std::int32_t>(c.entries[0]);
    const bool legal = *c.result != 0;
    EXPECT_EQ(move_rows(window, c.down, recorder.host), legal) << c.list;
    EXPECT_EQ(tags_of(window.list), legal ? c.result : c.list);
    EXPECT_EQ(recorder.messages.size(), legal ? 0u : 1u);
    EXPECT_EQ(window.document.undoAvailable, legal);
    EXPECT_EQ(window.list.selected_count(), c.entries.size()) << "selection travels";
    if (legal) EXPECT_EQ(window.document.caret, static_cast<std::int32_t>(c.entries[0]) + (c.down ? 1 : -1));
  }
}

TEST(Move, ImagesGoBesideAnotherInTheirOrder) {
  struct Case {
    std::vector<std::size_t> images;  // that are selected, from 1
    MoveImages request;
    std::vector<std::uint32_t> result;  // the images by their widths
  };
  const Case cases[] = {
      {{1}, {3, false, false}, {2, 3, 1, 4}},        {{1}, {3, true, false}, {2, 1, 3, 4}},
      {{4, 2}, {1, true, false}, {2, 4, 1, 3}},      {{2, 3}, {2, true, false}, {1, 2, 3, 4}},
      {{1, 2}, {2, true, false}, {1, 2, 3, 4}},      {{1, 3}, {1, true, false}, {1, 3, 2, 4}},
      {{3}, {99, false, false}, {1, 2, 4, 3}},       {{1}, {1, false, true}, {1, 1, 2, 3, 4}},
      {{1, 4}, {2, true, true}, {1, 1, 4, 2, 3, 4}},
  };
  for (const Case& c : cases) {
    Recorder recorder;
    DocumentWindow window = small_document(M, 0);
    std::vector<Picture> pictures;
    for (std::uint32_t i = 1; i <= 4; ++i) pictures.push_back(small_picture(i, 2, 24));
    insert_pictures(window, pictures, recorder.host);
    const std::size_t first = chunk_find_first(window.list, tag::PNGI);
    for (const std::size_t image : c.images) window.list.select(first + image - 1, true);
    move_images(window, c.request, recorder.host);
    std::vector<std::uint32_t> widths;
    for (const Picture& picture : testing::images_of(window)) widths.push_back(picture.width());
    EXPECT_EQ(widths, c.result) << c.request.image << c.request.before << c.request.copy;
    EXPECT_EQ(window.list.selected_count(), c.images.size());
    EXPECT_TRUE(recorder.messages.empty());
  }
  Recorder recorder;
  DocumentWindow window = small_document(M, 1);
  EXPECT_FALSE(move_images(window, {}, recorder.host));
  EXPECT_EQ(recorder.messages.back(), "Select the images that you wish to move.");
}

}  // namespace
}  // namespace vellum
