// Every real file of the corpus: it loads, warns or is refused as the index says (or as the exceptions below
// do), its pixels are those of the outside decoders, and what is saved from it satisfies the judge and is
// stable.
#include <fstream>

#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"
#include "support/libpng_oracle.h"

namespace vellum {
namespace {

using testing::first_image;
using testing::images_of;
using testing::Recorder;

/// Files whose fate is another than most decoders', and why.
struct Exception {
  const char* name;
  bool loads;
  [[maybe_unused]] const char* why;
};

constexpr Exception kExceptions[] = {
    {"brokensuite-chunk_crc.png", true, "a wrong CRC warns and never fails"},
    {"pngsuite-xhdn0g08.png", true, "a wrong CRC warns and never fails"},
    {"imagepng-x_consecutive_idat.png", true, "image data with other chunks between is joined"},
    {"pngsuite-xdtn0g01.png", true,
     "a file without an image opens; it can't be saved before one is inserted"},
    {"brokensuite-missing_ihdr.png", false, "the first chunk must be the header"},
    {"brokensuite-missing_plte.png", false, "a paletted image needs its palette"},
    {"brokensuite-plte_after_idat.png", false, "a paletted image needs its palette in front of it"},
    {"libspng-missing_plte.png", false, "a paletted image needs its palette"},
    {"brokensuite-plte_length_mod_three.png", false, "the length of a palette is divisible by 3"},
    {"brokensuite-plte_too_many_entries_2.png", false, "a palette has at most 256 entries"},
    {"apngsuite-chunk_no_fctl.png", false, "frame data without a frame control"},
    {"apngsuite-chunk_repeat_fctl.png", false, "a frame without data"},
    {"apngsuite-sequence_reorder.png", false, "the sequence has a gap"},
    {"apngsuite-sequence_reorder_chunk.png", false, "the sequence has a gap"},
    {"apngsuite-sequence_repeat_chunk.png", false, "the sequence has a gap"},
    {"isanimated-no-fcTL-chunk-before-last-fdAT-chunk.png", false, "the sequence has a gap"},
};

std::string name_of(const testing::TableRow& row) { return std::filesystem::path(row.at("path")).filename(); }

const Exception* exception_for(const std::string& name) {
  for (const Exception& exception : kExceptions)
    if (name == exception.name) return &exception;
  return nullptr;
}

std::vector<testing::TableRow> rows() { return testing::corpus_rows({"png", "png-bad", "apng", "apng-bad"}); }

/// Times stay as they are, so that two saves can be compared.
class Corpus : public ::testing::Test {
 protected:
  Corpus() { settings::AutoUpdateTime = 0; }
  ~Corpus() override { settings::AutoUpdateTime = 1; }
};

TEST_F(Corpus, LoadsWarnsOrRefusesAsTheIndexSays) {
  VELLUM_NEEDS_CORPUS();
  for (const auto& row : rows()) {
    Recorder recorder;
    DocumentWindow window;
    const bool opened = open_document(window, testing::corpus_file(row), recorder.host);
    const Exception* exception = exception_for(name_of(row));
    const bool expected = exception ? exception->loads : row.at("verdict") != "rejected";
    EXPECT_EQ(opened, expected) << name_of(row) << " (" << row.at("verdict") << ")"
                                << (recorder.messages.empty() ? "" : ": " + recorder.messages[0]);
    if (opened) {
      EXPECT_TRUE(recorder.messages.empty()) << name_of(row);
    } else {
      ASSERT_EQ(recorder.messages.size(), 1u) << name_of(row);
      EXPECT_TRUE(recorder.messages[0].starts_with("The file you attempted to load is corrupted.\n"))
          << name_of(row);
    }
  }
}

/// Where decoders differ the index has the answers of two; of 16-bit files the second one is rounded, which
/// ours is not.
bool agrees_with_index(const testing::TableRow& row, const std::string& md5) {
  const bool rounded = !row.at("rgba64be_md5").empty();
  return md5 == row.at("pixel_md5") || (!rounded && md5 == row.at("pixel_md5_alt"));
}

TEST_F(Corpus, PixelsAreThoseOfTheOutsideDecoders) {
  VELLUM_NEEDS_CORPUS();
  std::size_t by_index = 0, by_libpng = 0;
  for (const auto& row : rows()) {
    Recorder recorder;
    DocumentWindow window;
    const Picture picture =
        open_document(window, testing::corpus_file(row), recorder.host) ? first_image(window) : Picture();
    if (!picture) continue;
    const auto rgba = testing::rgba_of(window, picture);
    const auto judged = testing::rgba_by_libpng(testing::corpus_file(row));
    const bool index = agrees_with_index(row, testing::md5_of(rgba.data(), rgba.size()));
    by_index += index;
    by_libpng += rgba == judged;
    const bool own =
        name_of(row) == "brokensuite-plte_empty.png" || name_of(row) == "imagepng-x_consecutive_idat.png";
    EXPECT_TRUE(index || rgba == judged || own) << name_of(row) << ": " << row.at("exercises");
  }
  EXPECT_GT(by_index, 225u);
  EXPECT_GT(by_libpng, 235u);
}

TEST_F(Corpus, FramesDelaysAndLoopsAreThoseOfTheIndex) {
  VELLUM_NEEDS_CORPUS();
  for (const auto& row : testing::corpus_rows({"apng"})) {
    Recorder recorder;
    DocumentWindow window;
    ASSERT_TRUE(open_document(window, testing::corpus_file(row), recorder.host)) << name_of(row);
    EXPECT_EQ(window.document.kind, DocumentKind::APNG) << name_of(row);
    EXPECT_EQ(std::to_string(images_of(window).size()), row.at("frames")) << name_of(row);
    ChunkRecord control;
    ASSERT_NE(chunk_find_first(window.list, tag::acTL, &control), kNoEntry);
    EXPECT_EQ(control.numPlays == 0 ? "infinite" : std::to_string(control.numPlays), row.at("loop"))
        << name_of(row);
  }
}

TEST_F(Corpus, WhatIsSavedIsValidShowsTheSameAndIsStable) {
  VELLUM_NEEDS_CORPUS();
  const testing::ScratchFolder folder;
  const auto first = folder / "first.png", second = folder / "second.png";
  settings::PngCompression = 1;
  for (const auto& row : rows()) {
    Recorder recorder;
    DocumentWindow window, again;
    if (!open_document(window, testing::corpus_file(row), recorder.host) || !first_image(window)) continue;
    ASSERT_TRUE(save_document(window, first, recorder.host)) << name_of(row);
    const testing::ToolResult judged = testing::run_tool({"pngcheck", "-q", first});
    // A chunk that is not known goes back as it came, also where its name breaks the rules for names.
    const bool foreign =
        judged.output.find("illegal (unless recently approved) unknown, public chunk") != std::string::npos;
    // A known one that is wrong and harms nobody is kept, and told.
    const bool kept = std::ranges::any_of(recorder.notes, [](const std::string& note) {
      return note.find("was kept as it is") != std::string::npos;
    });
    if (judged.there && !foreign && !kept)
      EXPECT_EQ(judged.status, 0) << name_of(row) << ": " << judged.output;
    ASSERT_TRUE(open_document(again, first, recorder.host)) << name_of(row);
    const auto before = images_of(window), after = images_of(again);
    ASSERT_EQ(before.size(), after.size()) << name_of(row);
    for (std::size_t i = 0; i < before.size(); ++i)
      EXPECT_EQ(testing::rgba_of(window, before[i]), testing::rgba_of(again, after[i]))
          << name_of(row) << " image " << i;
    EXPECT_EQ(static_cast<bool>(window.document.defaultImage), static_cast<bool>(again.document.defaultImage))
        << name_of(row);
    ASSERT_TRUE(save_document(again, second, recorder.host)) << name_of(row);
    EXPECT_EQ(testing::file_text(first), testing::file_text(second)) << name_of(row);
  }
  settings::PngCompression = 9;
}

}  // namespace
}  // namespace vellum
