// Supercompress: whatever runs, the same is shown and no file grows; what single passes are to do.
#include "operations/supercompress.h"

#include <gtest/gtest.h>

#include "core/build/frame_stream.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "image/settings.h"
#include "image/stored_image.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum {
namespace {

using testing::Recorder;
using Lines = std::vector<std::string>;

constexpr unsigned kAll = kPalettePass | kPrunePass | kRedundancyPass | kTextPass;

Lines run_passes(DocumentWindow& window, unsigned passes) {
  Lines lines;
  Host host;
  supercompress(
      window, passes, [&](const std::string& line) { lines.push_back(line); }, host, UINT64_MAX);
  return lines;
}

/// Every canvas as it is shown, and for how long; what is clear has no color.
void expect_same_shown(const DocumentWindow& before, const DocumentWindow& after) {
  const FrameStream a = canvas_frames(before), b = canvas_frames(after);
  ASSERT_EQ(a.count, b.count);
  EXPECT_EQ(a.plays, b.plays);
  for (std::size_t i = 0; i < a.count; ++i) {
    const StreamedFrame left = a.frame(i), right = b.frame(i);
    EXPECT_EQ(left.delay, right.delay) << i;
    ASSERT_TRUE(left.picture && right.picture) << i;
    ASSERT_EQ(left.picture.width(), right.picture.width());
    ASSERT_EQ(left.picture.height(), right.picture.height());
    for (std::uint32_t y = 0; y < left.picture.height(); ++y)
      for (std::uint32_t x = 0; x < left.picture.width(); ++x) {
        const Colour p = PictureGetPixel(left.picture, x, y), q = PictureGetPixel(right.picture, x, y);
        ASSERT_TRUE(p == q || (alpha_of(p) == 0 && alpha_of(q) == 0)) << i << ": " << x << ", " << y;
      }
  }
}

/// The document as a file, worked on, saved and read again.
void expect_law(const std::filesystem::path& in, const std::filesystem::path& out, unsigned passes) {
  Recorder recorder;
  DocumentWindow window, again;
  ASSERT_TRUE(open_document(window, in, recorder.host));
  const DocumentWindow before{window.document, window.list, {}};
  supercompress(window, passes, {}, recorder.host, document_bytes(window));
  ASSERT_TRUE(save_supercompressed(window, in, out, recorder.host))
      << ::testing::PrintToString(recorder.messages);
  EXPECT_LE(std::filesystem::file_size(out), std::filesystem::file_size(in));
  EXPECT_TRUE(testing::objections(out).empty() || !testing::objections(in).empty())
      << testing::objections(out);
  ASSERT_TRUE(open_document(again, out, recorder.host));
  expect_same_shown(before, again);
}

TEST(Supercompress, ShowsTheSameAndNeverGrowsOverRealAnimations) {
  VELLUM_NEEDS_CORPUS();
  const testing::ScratchFolder folder;
  for (const auto& row : testing::corpus_rows({"apng", "mng", "webp"})) {
    const auto file = testing::corpus_file(row);
    if (std::filesystem::file_size(file) > 4'000) continue;
    Recorder recorder;
    DocumentWindow window;
    if (!open_document(window, file, recorder.host) || frame_entries(window).empty()) continue;
    for (const unsigned passes : {kAll, kAll | kDeepPass | kRecompressPass}) {
      SCOPED_TRACE(file.filename().string() + ", passes " + std::to_string(passes));
      expect_law(file, folder / ("out" + file.extension().string()), passes);
      if (HasFatalFailure()) return;
    }
  }
}

/// A document of pictures, at these offsets, saved as the kind wants it.
DocumentWindow animation_of(DocumentKind kind, const std::vector<Picture>& pictures,
                            std::uint32_t dispose = 0) {
  DocumentWindow window =
      testing::small_document(kind, pictures.size(), color_type_of_bits(pictures.front().bits()));
  const auto entries = frame_entries(window);
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    ChunkRecord record;
    chunk_list_get(window.list, entries[i], record);
    record_take_picture(record, kind, pictures[i]);
    set_frame_dispose(record, kind, dispose);
    chunk_list_put(window.list, entries[i], record);
  }
  document_extent(window.list, window.document);
  return window;
}

TEST(Supercompress, MadeFramesOfEveryDepthAndDisposalShowTheSame) {
  const testing::ScratchFolder folder;
  const testing::SettingsGuard guard;
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP})
    for (const std::uint32_t bits : {1u, 4u, 8u, 24u, 32u})
      for (const std::uint32_t dispose : {0u, 1u, 2u}) {
        if (kind == DocumentKind::WEBP && bits < 24) continue;
        SCOPED_TRACE(std::string(testing::kFileNames.at(kind)) + ", bits " + std::to_string(bits) +
                     ", dispose " + std::to_string(dispose));
        std::vector<Picture> pictures(4, testing::small_picture(23, 17, bits));
        for (unsigned i = 1; i < 4; ++i)
          for (unsigned k = 0; k < 9; ++k)
            PicturePutPixel(pictures[i], 3 * i + k % 3, 2 * i + k / 3, 7 * i + k);
        DocumentWindow window = animation_of(kind, pictures, dispose);
        const auto file = folder / testing::kFileNames.at(kind);
        settings::WEBPLossless = 1;
        Recorder recorder;
        ASSERT_TRUE(save_document(window, file, recorder.host));
        for (const unsigned passes : {kAll + 0u, kDeepPass + 0u, kAll | kDeepPass | kRecompressPass})
          expect_law(file, folder / ("out" + file.extension().string()), passes);
        if (HasFatalFailure()) return;
      }
}

TEST(Supercompress, PrunesAsStated) {
  struct Case {
    const char* name;
    int changed;  ///< pixels of the second frame, from (5, 3)
    PictureRect rect;
    const char* line;
  };
  for (const Case& c : {Case{"identical: widened at the lower right corner", 0, {7, 5, 9, 7}, "48%."},
                        Case{"one pixel", 1, {5, 3, 6, 4}, "50%."}}) {
    SCOPED_TRACE(c.name);
    std::vector<Picture> pictures(2, testing::small_picture(10, 8, 24));
    for (int i = 0; i < c.changed; ++i) PicturePutPixel(pictures[1], 5 + i, 3, 0x123456);
    DocumentWindow window = animation_of(DocumentKind::APNG, pictures);
    const Lines lines = run_passes(window, kPrunePass);
    const ChunkRecord& record = window.list.record(frame_entries(window)[1]);
    EXPECT_EQ(GetFrameOffset(record, DocumentKind::APNG).x, c.rect.left);
    EXPECT_EQ(GetFrameOffset(record, DocumentKind::APNG).y, c.rect.top);
    EXPECT_EQ(picture_of(record).width(), static_cast<std::uint32_t>(c.rect.right - c.rect.left));
    EXPECT_EQ(picture_of(record).height(), static_cast<std::uint32_t>(c.rect.bottom - c.rect.top));
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0], "Beginning prune supercompression...");
    EXPECT_EQ(lines[1], std::string("Pruning reduced your uncompressed file by ") + c.line);
    EXPECT_EQ(lines[2], "Image pruning supercompression completed.");
  }
}

/// 16 x 16 pixels with this many values of 256.
Picture picture_with(unsigned values) {
  Palette palette{};
  for (std::size_t i = 0; i < 256; ++i) palette[3 * i] = static_cast<std::uint8_t>(i);
  Picture picture = PictureCreate(16, 16, &palette, 8);
  for (unsigned i = 0; i < 256; ++i) PicturePutPixel(picture, i % 16, i / 16, 255 - i % values);
  return picture;
}

TEST(Supercompress, PalettesAndRedundantPixelsAsStated) {
  for (const auto& [values, bits, told] :
       {std::tuple{2u, 1u, 2u}, {3u, 4u, 4u}, {16u, 4u, 16u}, {100u, 8u, 128u}, {129u, 8u, 0u}}) {
    DocumentWindow window = animation_of(DocumentKind::MING, {picture_with(values)});
    const Lines lines = run_passes(window, kPalettePass);
    EXPECT_EQ(picture_of(window.list.record(frame_entries(window)[0])).bits(), bits) << values;
    const auto line = "The target palette will contain " + std::to_string(told) + " colors.";
    EXPECT_EQ(std::ranges::count(lines, line), told != 0) << values;
  }
  for (const auto& [values, key] : {std::pair{256u, -1}, {255u, 0}}) {
    DocumentWindow window = animation_of(DocumentKind::MING, {picture_with(values), picture_with(values)});
    run_passes(window, kRedundancyPass);
    const ChunkRecord& record = window.list.record(frame_entries(window)[1]);
    EXPECT_EQ((record.flags & CRF_TRNS) != 0, key >= 0) << values;
    EXPECT_EQ(PictureGetPixel(picture_of(record), 4, 4), key < 0 ? 255u - 68u : 0u) << values;
  }
}

TEST(Supercompress, AnMngSaysWhatItsFramesNeedAndKeepsWhatOtherChunksPlace) {
  for (const bool moved : {false, true}) {
    DocumentWindow window = animation_of(DocumentKind::MING, {picture_with(9), picture_with(9)});
    ChunkRecord header;
    const std::size_t at = chunk_find_first(window.list, tag::MHDR, &header);
    header.simplicityProfile = 1;
    chunk_list_put(window.list, at, header);
    if (moved) {
      const std::string nowhere(13, '\0');
      window.list.insert(at + 1, std::make_shared<ChunkRecord>(testing::record_of(tag::MOVE, nowhere)));
    }
    const auto before = window.list.entry(frame_entries(window)[1]).record;
    run_passes(window, kPrunePass | kRedundancyPass | kDeepPass);
    chunk_find_first(window.list, tag::MHDR, &header);
    EXPECT_EQ(window.list.entry(frame_entries(window)[1]).record == before, moved);
    EXPECT_EQ(header.simplicityProfile & 11, moved ? 1u : 11u) << "framing; transparency";
  }
}

TEST(Supercompress, EqualNeighboursBecomeOneFrameThatIsShownAsLong) {
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING}) {
    DocumentWindow window = testing::small_document(kind, 3);
    const auto entries = frame_entries(window);
    ChunkRecord record, first;
    ASSERT_TRUE(chunk_list_get(window.list, entries[0], first) &&
                chunk_list_get(window.list, entries[1], record));
    record_take_picture(record, kind, picture_of(first));
    set_frame_delay(record, kind, ticks_per_second(window.list), 250);
    chunk_list_put(window.list, entries[1], record);
    const DocumentWindow before{window.document, window.list, {}};
    run_passes(window, kMergePass);
    const FrameStream was = canvas_frames(before), is = canvas_frames(window);
    ASSERT_EQ(is.count, was.count - 1) << kind_letters(kind);
    EXPECT_EQ(is.frame(0).delay, was.frame(0).delay + 250);
    EXPECT_EQ(is.frame(1).delay, was.frame(2).delay);
  }
}

TEST(Supercompress, TextsGoButAtTheFirstEntryAndNothingCheckedIsTold) {
  DocumentWindow window = testing::small_document(DocumentKind::APNG, 2);
  const auto text = std::make_shared<ChunkRecord>(testing::record_of(tag::tEXt, std::string("Title\0x", 7)));
  window.list.insert(0, text);
  window.list.insert(window.list.size(), text);
  EXPECT_EQ(run_passes(window, kTextPass)[1], "1 text chunk(s) were deleted.");
  EXPECT_EQ(window.list.record(0).tag, tag::tEXt);
  EXPECT_EQ(run_passes(window, 0), Lines{"No compression was achieved."});
}

TEST(Supercompress, StreamsAreKeptUntilAPictureChangesAndAStopLeavesTheRest) {
  DocumentWindow window = testing::small_document(DocumentKind::APNG, 3);
  run_passes(window, kRecompressPass);
  const std::size_t entry = frame_entries(window)[1];
  ChunkRecord record = window.list.record(entry);
  const auto stream = stored_image_of(record.data);
  ASSERT_TRUE(stream);
  std::vector<std::uint8_t> bytes;
  Host host;
  SaveOptions stored;
  stored.compression = 0;
  write_document(window, DocumentKind::APNG, memory_sink(bytes), stored, host);
  const auto piece = stream->pieces().front();
  EXPECT_NE(std::search(bytes.begin(), bytes.end(), piece.begin(), piece.end()), bytes.end())
      << "the file holds them";
  record_take_pixels(record, DocumentKind::APNG, testing::small_picture(6, 4, 24, 9));
  EXPECT_FALSE(stored_image_of(record.data));

  DocumentWindow stopped = testing::small_document(DocumentKind::APNG, 3);
  const auto before = stopped.list.entry(entry).record;
  host.stop_requested = [] { return true; };
  EXPECT_FALSE(supercompress(stopped, kPrunePass | kDeepPass, {}, host, UINT64_MAX).ran);
  EXPECT_EQ(stopped.list.entry(entry).record, before);
}

}  // namespace
}  // namespace vellum
