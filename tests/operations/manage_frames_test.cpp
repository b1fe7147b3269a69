// Bulk changes of frames: exact totals, held ranges, order, and what stays untouched.
#include "operations/manage_frames.h"

#include "core/chunks/new_chunk.h"
#include "core/model/chunk_layout.h"
#include "core/model/played_frames.h"
#include "image/picture_operations.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::Recorder;

/// An animation of pictures with these sizes; frame i is filled with the color i.
DocumentWindow animation(DocumentKind kind, const std::vector<Extent>& sizes) {
  DocumentWindow window;
  window.document.kind = kind;
  const auto append = [&](ChunkTag tag, const NewChunkArgument& argument = {}) {
    ChunkRecord record;
    EXPECT_TRUE(new_chunk(window, record, tag, argument)) << tag_letters(tag);
    chunk_list_append(window.list, window.document, record);
  };
  const bool apng = kind == DocumentKind::APNG, mng = kind == DocumentKind::MING;
  append(apng ? tag::IHDR : mng ? tag::MHDR : tag::WEBH);
  if (apng) append(tag::acTL);
  if (kind != DocumentKind::WEBP) append(tag::tEXt);
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    NewChunkArgument argument;
    argument.picture = PictureCreateFilled(sizes[i].width, sizes[i].height, static_cast<Colour>(i)).handle();
    append(image_tag(kind), argument);
  }
  if (kind != DocumentKind::WEBP) append(apng ? tag::IEND : tag::MEND);
  chunk_list_close_change(window.list, window.document);
  return window;
}

DocumentWindow animation(DocumentKind kind, std::size_t frames) {
  return animation(kind, std::vector<Extent>(frames, Extent{20, 10}));
}

std::vector<std::uint32_t> delays(const DocumentWindow& window) {
  std::vector<std::uint32_t> result;
  for (const std::size_t entry : frame_entries(window))
    result.push_back(
        frame_delay_ms(window.list.record(entry), window.document.kind, ticks_per_second(window.list)));
  return result;
}

/// The colors of the frames' top left pixels: which frame stands where.
std::vector<Colour> order_of(const DocumentWindow& window) {
  std::vector<Colour> result;
  for (const Picture& picture : testing::images_of(window)) result.push_back(PictureGetPixel(picture, 0, 0));
  return result;
}

constexpr DocumentKind kAnimations[] = {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP};
using Times = std::vector<std::uint32_t>;

TEST(ManageFrames, TotalsAreExactAndSharesStay) {
  struct Case {
    std::vector<std::uint32_t> before;
    std::uint64_t total;
    std::vector<std::uint32_t> after;
  };
  const Case cases[] = {
      {{100, 100, 100}, 1000, {333, 334, 333}},
      {{0, 0, 0, 0}, 10, {3, 2, 3, 2}},
      {{10, 20, 30}, 6, {1, 2, 3}},
      {{1, 1, 1, 1, 1}, 2, {0, 1, 0, 1, 0}},
      {{50, 50}, 0, {0, 0}},
      {{40'000, 40'000}, 160'000, {80'000, 80'000}},
  };
  for (const DocumentKind kind : kAnimations)
    for (const Case& c : cases) {
      DocumentWindow window = animation(kind, c.before.size());
      for (std::size_t i = 0; i < c.before.size(); ++i) set_delays(window, {i}, c.before[i]);
      EXPECT_EQ(set_total_time(window, all_frames(c.before.size()), c.total).held, 0u);
      EXPECT_EQ(delays(window), c.after) << kind_letters(kind) << " " << c.total;
      EXPECT_EQ(total_time_ms(window, all_frames(c.before.size())), c.total);
    }
}

TEST(ManageFrames, ATotalOfSomeFramesLeavesTheOthers) {
  DocumentWindow window = animation(DocumentKind::WEBP, 4);
  set_delays(window, all_frames(4), 70);
  set_total_time(window, {1, 3}, 101);
  EXPECT_EQ(delays(window), (Times{70, 51, 70, 50}));
}

TEST(ManageFrames, DelaysAreScaledAddedToAndHeld) {
  for (const DocumentKind kind : kAnimations) {
    DocumentWindow window = animation(kind, 2);
    set_delays(window, {0, 1}, 40);
    scale_delays(window, {1}, 250);
    EXPECT_EQ(delays(window), (Times{40, 100})) << kind_letters(kind);
    add_to_delays(window, {0, 1}, -60);
    EXPECT_EQ(delays(window), (Times{0, 40})) << kind_letters(kind);
    add_to_delays(window, {0, 1}, 5);
    EXPECT_EQ(delays(window), (Times{5, 45})) << kind_letters(kind);
  }
  DocumentWindow window = animation(DocumentKind::WEBP, 1);
  EXPECT_EQ(set_delays(window, {0}, 60'000'000).held, 1u);
  EXPECT_EQ(delays(window), (Times{0xFFFFFF}));
}

TEST(ManageFrames, FractionsStayExact) {
  DocumentWindow window = animation(DocumentKind::APNG, 1);
  const auto control = [&] { return window.list.record(frame_entries(window)[0]).frameControl; };
  set_frame_rate(window, {0}, *parse_frame_delay("24000/1001"));
  EXPECT_EQ(std::pair(control().delayNum, control().delayDen),
            std::pair(std::uint16_t{1001}, std::uint16_t{24000}));
  scale_delays(window, {0}, 200);
  EXPECT_EQ(std::pair(control().delayNum, control().delayDen),
            std::pair(std::uint16_t{2002}, std::uint16_t{24000}));
  const auto record = window.list.entry(frame_entries(window)[0]).record;
  EXPECT_EQ(scale_delays(window, {0}, 100).changed, 0u);
  EXPECT_EQ(window.list.entry(frame_entries(window)[0]).record, record) << "nothing was to be changed";
}

TEST(ManageFrames, ARateKeepsItsPaceInWholeUnits) {
  for (const DocumentKind kind : {DocumentKind::MING, DocumentKind::WEBP}) {
    DocumentWindow window = animation(kind, 6);
    set_frame_rate(window, all_frames(6), *parse_frame_delay("30"));
    EXPECT_EQ(delays(window), (Times{33, 34, 33, 33, 34, 33})) << kind_letters(kind);
  }
}

TEST(ManageFrames, ATimeAboveZeroIsATickAtLeast) {
  DocumentWindow window = animation(DocumentKind::MING, 1);
  Recorder recorder;
  std::string reason;
  ASSERT_TRUE(set_ticks(window, 10, recorder.host, reason)) << reason;
  set_delays(window, {0}, 3);
  EXPECT_EQ(delays(window), (Times{100}));
}

TEST(ManageFrames, FramesAlignInNinePlaces) {
  constexpr int lefts[] = {0, 8, 17}, tops[] = {0, 4, 8};
  for (const DocumentKind kind : kAnimations)
    for (std::size_t place = 0; place < 9; ++place) {
      DocumentWindow window = animation(kind, {{21, 11}, {4, 3}});
      align_frames(window, {0, 1}, place);
      const FrameOffset at = GetFrameOffset(window.list.record(frame_entries(window)[1]), kind);
      EXPECT_EQ(at.x, lefts[place % 3]) << kind_letters(kind) << " place " << place;
      EXPECT_EQ(at.y, tops[place / 3]) << kind_letters(kind) << " place " << place;
      EXPECT_EQ(document_size(window.list, window.document).width, 21u);
    }
}

TEST(ManageFrames, PlacesAreHeldAndTheFirstFrameOfAnAnimatedPngFillsTheCanvas) {
  DocumentWindow window = animation(DocumentKind::APNG, {{20, 10}, {4, 3}});
  EXPECT_EQ(move_frames_by(window, {0, 1}, {-5, 30}).held, 2u) << "both, for one reason or the other";
  const auto entries = frame_entries(window);
  EXPECT_EQ(GetFrameOffset(window.list.record(entries[0]), DocumentKind::APNG).y, 0);
  EXPECT_EQ(GetFrameOffset(window.list.record(entries[1]), DocumentKind::APNG).x, 0);
  EXPECT_EQ(GetFrameOffset(window.list.record(entries[1]), DocumentKind::APNG).y, 30);
  const Picture first = picture_of(window.list.record(entries[0]));
  EXPECT_EQ(std::pair(first.width(), first.height()), std::pair(20u, 33u));
  EXPECT_EQ(document_size(window.list, window.document).height, 33u);

  DocumentWindow mng = animation(DocumentKind::MING, 1);
  EXPECT_EQ(move_frames_by(mng, {0}, {-5, INT32_MIN}).held, 0u);
  EXPECT_EQ(move_frames_by(mng, {0}, {-5, INT32_MIN}).held, 1u);
  EXPECT_EQ(GetFrameOffset(mng.list.record(frame_entries(mng)[0]), DocumentKind::MING).x, -10);
}

TEST(ManageFrames, ASmallFrameThatComesFirstIsPadded) {
  DocumentWindow window = animation(DocumentKind::APNG, {{20, 10}, {4, 3}});
  set_positions(window, {1}, {6, 2});
  FrameList frames = {1};
  EXPECT_EQ(shift_frames(window, frames, false).changed, 1u);
  EXPECT_EQ(frames, (FrameList{0}));
  const Picture first = picture_of(window.list.record(frame_entries(window)[0]));
  EXPECT_EQ(std::pair(first.width(), first.height()), std::pair(20u, 10u));
  EXPECT_EQ(PictureGetPixel(first, 6, 2), 1u);
  EXPECT_EQ(PictureGetPixel(first, 5, 2), 0u);
}

TEST(ManageFrames, RunsMoveAndStopAtTheEnds) {
  struct Case {
    FrameList frames;
    bool down;
    std::vector<Colour> order;
    FrameList after;
  };
  const Case cases[] = {
      {{1, 2}, false, {1, 2, 0, 3}, {0, 1}}, {{0, 2}, false, {0, 2, 1, 3}, {0, 1}},
      {{1, 2}, true, {0, 3, 1, 2}, {2, 3}},  {{1, 3}, true, {0, 2, 1, 3}, {2, 3}},
      {{0, 1}, false, {0, 1, 2, 3}, {0, 1}}, {{}, true, {0, 1, 2, 3}, {}},
  };
  for (const DocumentKind kind : kAnimations)
    for (const Case& c : cases) {
      DocumentWindow window = animation(kind, 4);
      FrameList frames = c.frames;
      shift_frames(window, frames, c.down);
      EXPECT_EQ(order_of(window), c.order) << kind_letters(kind);
      EXPECT_EQ(frames, c.after) << kind_letters(kind);
    }
}

TEST(ManageFrames, FramesAreDuplicatedAndDeleted) {
  for (const DocumentKind kind : kAnimations) {
    DocumentWindow window = animation(kind, 3);
    EXPECT_EQ(duplicate_frames(window, {0, 2}).changed, 2u);
    EXPECT_EQ(order_of(window), (std::vector<Colour>{0, 0, 1, 2, 2})) << kind_letters(kind);
    Recorder recorder;
    EXPECT_EQ(delete_frames(window, {0, 1, 4}, recorder.host).changed, 3u);
    EXPECT_EQ(order_of(window), (std::vector<Colour>{1, 2}));
    EXPECT_TRUE(recorder.messages.empty() && recorder.warnings.empty());
    EXPECT_EQ(delete_frames(window, {0, 1}, recorder.host).changed, 0u);
    EXPECT_EQ(recorder.messages, std::vector<std::string>{"An animation must keep at least one image."});
    EXPECT_EQ(order_of(window).size(), 2u);
  }
}

TEST(ManageFrames, TextsGoAndWhatImagesNeedStays) {
  DocumentWindow window = animation(DocumentKind::MING, 2);
  ASSERT_TRUE(set_document_plays(window, 3));
  EXPECT_EQ(testing::tags_of(window.list), "MHDR TERM tEXt PNGI PNGI MEND");
  DocumentWindow copy;
  copy.document = window.document;
  copy.list = window.list;
  EXPECT_EQ(delete_texts(copy), 1u);
  EXPECT_EQ(delete_all_but_images(window), 1u);
  EXPECT_EQ(testing::tags_of(window.list), "MHDR TERM PNGI PNGI MEND");
  EXPECT_EQ(testing::tags_of(copy.list), testing::tags_of(window.list));
  EXPECT_EQ(delete_all_but_images(window), 0u);
}

TEST(ManageFrames, PlaysAreToldWhereTheKindTellsThem) {
  for (const DocumentKind kind : kAnimations)
    for (const std::uint32_t plays : {0u, 1u, 7u, most_plays(kind)}) {
      DocumentWindow window = animation(kind, 2);
      for (const std::uint32_t before : {5u, plays}) ASSERT_TRUE(set_document_plays(window, before));
      EXPECT_EQ(GetIterations(window.list, window.document), plays) << kind_letters(kind);
    }
  // A loop around some of the images says nothing of the whole, and keeps what it says.
  DocumentWindow inner = animation(DocumentKind::MING, 3);
  const auto loop_of = [&inner](ChunkTag tag) {
    ChunkRecord record;
    EXPECT_TRUE(new_chunk(inner, record, tag, {.picture = {}, .number = 9}));
    return record;
  };
  chunk_list_insert(inner.list, inner.document, frame_entries(inner)[2], loop_of(tag::ENDL));
  chunk_list_insert(inner.list, inner.document, frame_entries(inner)[0], loop_of(tag::LOOP));
  EXPECT_EQ(whole_plays(inner), 1u);
  ASSERT_TRUE(set_document_plays(inner, 4));
  EXPECT_EQ(whole_plays(inner), 4u);
  EXPECT_EQ(payload_be32(inner.list.record(chunk_find_first(inner.list, tag::LOOP)), 1), 9u);
  EXPECT_EQ(payload_be32(inner.list.record(chunk_find_first(inner.list, tag::TERM)), 6), 3u);
  DocumentWindow webp = animation(DocumentKind::WEBP, 1);
  EXPECT_FALSE(set_document_plays(webp, 65536));
}

TEST(ManageFrames, DisposalAndBlendingAreThoseOfTheKind) {
  for (const DocumentKind kind : kAnimations) {
    DocumentWindow window = animation(kind, 2);
    set_disposal(window, {1}, 1);
    EXPECT_EQ(GetFrameDispose(window.list.record(frame_entries(window)[1]), kind), 1u);
    EXPECT_EQ(GetFrameDispose(window.list.record(frame_entries(window)[0]), kind), 0u);
    EXPECT_EQ(set_disposal(window, {0, 1}, 2).changed, kind == DocumentKind::APNG ? 2u : 0u);
    set_disposal(window, {0, 1}, 0);
    EXPECT_EQ(GetFrameDispose(window.list.record(frame_entries(window)[1]), kind), 0u);
    EXPECT_EQ(set_blending(window, {0, 1}, 1).changed, kind == DocumentKind::APNG ? 2u : 0u);
  }
}

TEST(ManageFrames, ADraftIsTakenOnlyWhenItDiffers) {
  DocumentWindow window = animation(DocumentKind::APNG, 2);
  DocumentWindow draft;
  draft.document = window.document;
  draft.list = window.list;
  EXPECT_FALSE(take_draft(window, draft));
  EXPECT_FALSE(window.document.dirty);
  set_delays(draft, {1}, 7);
  EXPECT_TRUE(take_draft(window, draft));
  EXPECT_TRUE(window.document.dirty);
  EXPECT_EQ(delays(window)[1], 7u);
}

TEST(Frames, ListsAreReadAndInverted) {
  struct Case {
    const char* text;
    std::optional<FrameList> frames;
  };
  const Case cases[] = {
      {"1", FrameList{0}},
      {"3,1-2", FrameList{0, 1, 2}},
      {"2-2, 5", FrameList{1, 4}},
      {"0", std::nullopt},
      {"6", std::nullopt},
      {"3-2", std::nullopt},
      {"", std::nullopt},
      {"1,", std::nullopt},
      {"1-", std::nullopt},
      {"1-2-3", std::nullopt},
      {"a", std::nullopt},
      {"-1", std::nullopt},
      {"99999999999999999999999", std::nullopt},
  };
  for (const Case& c : cases) EXPECT_EQ(parse_frame_list(c.text, 5), c.frames) << c.text;
  EXPECT_EQ(every_nth(7, 3), (FrameList{2, 5}));
  EXPECT_EQ(every_nth(7, 8), FrameList{});
  EXPECT_EQ(inverted({0, 2}, 4), (FrameList{1, 3}));
}

}  // namespace
}  // namespace vellum
