// Pictures that come into a document: what becomes of them and of the document.
#include "core/edit/picture_fitting.h"

#include "core/edit/image_edit.h"
#include "core/edit/insert_chunk.h"
#include "core/edit/new_document.h"
#include "core/files/save_document.h"
#include "core/model/record_picture.h"
#include "core/settings.h"
#include "image/to_colors.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum {
namespace {

using testing::Recorder;
using testing::small_document;
using testing::small_picture;
using testing::tags_of;

constexpr auto P = DocumentKind::PING, A = DocumentKind::APNG, M = DocumentKind::MING, W = DocumentKind::WEBP;

TEST(Fitting, DepthFollowsTheDocument) {
  struct Case {
    DocumentKind kind;
    std::uint8_t colorType;
    std::uint32_t bits, fitted;
    const char* question = "";
  };
  const char* const asked = "Changing the color type will convert all images of this document.";
  for (const Case& c : {Case{A, 2, 1, 24},
                        {A, 2, 8, 24},
                        {A, 2, 24, 24},
                        {A, 2, 32, 32, asked},
                        {A, 6, 8, 32},
                        {A, 6, 24, 32},
                        {A, 6, 32, 32},
                        {A, 3, 24, 8},
                        {A, 3, 1, 8},
                        {A, 3, 32, 8},
                        {M, 2, 1, 1},
                        {M, 2, 4, 4},
                        {M, 2, 32, 32},
                        {W, 2, 1, 24},
                        {W, 2, 8, 24},
                        {W, 2, 32, 32}}) {
    Recorder recorder;
    DocumentWindow window = small_document(c.kind, 1, c.colorType);
    const Picture picture = small_picture(3, 3, c.bits, 4);
    const auto what = ::testing::Message()
                      << kind_letters(c.kind) << +c.colorType << " gets " << c.bits << " bits";
    EXPECT_TRUE(insert_pictures(window, {&picture, 1}, recorder.host)) << what;
    EXPECT_EQ(testing::images_of(window)[1].bits(), c.fitted) << what;
    EXPECT_EQ(recorder.messages.empty(), *c.question == 0) << what;
    if (*c.question) EXPECT_TRUE(recorder.messages[0].starts_with(c.question));
  }
}

TEST(Fitting, AlphaMakesTheDocumentTrueColorWithAlphaOrIsGivenUp) {
  for (const Answer answer : {Answer::Yes, Answer::No}) {
    Recorder recorder;
    recorder.answer = answer;
    DocumentWindow window = small_document(A, 2);
    const Picture before = testing::images_of(window)[0];
    const Picture pictures[] = {small_picture(3, 3, 32), small_picture(3, 3, 32, 2)};
    ASSERT_TRUE(insert_pictures(window, pictures, recorder.host));
    EXPECT_EQ(recorder.messages.size(), 1u) << "it is asked once";
    const bool promoted = answer == Answer::Yes;
    EXPECT_EQ(window.list.record(0).colorType, promoted ? 6 : 2);
    for (const Picture& image : testing::images_of(window)) EXPECT_EQ(image.bits(), promoted ? 32u : 24u);
    EXPECT_EQ(testing::rgba_of(window, testing::images_of(window)[0]), testing::rgba_of(window, before));
  }
}

TEST(Fitting, AStillTakesTheFormOfItsPicture) {
  struct Case {
    std::uint32_t bits;
    int depth, type;
    const char* tags;
  };
  for (const Case& c : {Case{1, 1, 3, "IHDR gAMA PLTE IDAT IEND"},
                        {4, 4, 3, "IHDR gAMA PLTE IDAT IEND"},
                        {8, 8, 3, "IHDR gAMA PLTE IDAT IEND"},
                        {24, 8, 2, "IHDR gAMA tRNS bKGD IDAT IEND"},
                        {32, 8, 6, "IHDR gAMA bKGD IDAT IEND"}}) {
    Recorder recorder;
    DocumentWindow window = small_document(P, 0);
    for (const ChunkTag tag : {tag::gAMA, tag::tRNS, tag::bKGD})
      ASSERT_TRUE(insert_chunk(window, tag, {}, recorder.host));
    const Picture picture = small_picture(13, 2, c.bits);
    ASSERT_TRUE(insert_pictures(window, {&picture, 1}, recorder.host));
    EXPECT_EQ(tags_of(window.list), c.tags) << c.bits;
    const ChunkRecord& header = window.list.record(0);
    EXPECT_EQ(header.width, 13u);
    EXPECT_EQ(header.bitDepth, c.depth) << c.bits;
    EXPECT_EQ(header.colorType, c.type) << c.bits;
    EXPECT_EQ(window.list.record(caret_entry(window)).tag, tag::IDAT);
  }
}

/// What every image but one shows, and the chunks that all of them are read by.
std::string shown_beside(const DocumentWindow& window, std::size_t entry) {
  std::string shown;
  const auto add = [&](const Picture& picture) {
    for (const std::uint8_t byte : testing::rgba_of(window, picture)) shown += static_cast<char>(byte);
  };
  if (const Picture kept(window.document.defaultImage); kept) add(kept);
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (window.list.record(i).tag == tag::IDAT && i != entry) add(picture_of(window.list.record(i)));
  return shown;
}

std::string colors_of(const DocumentWindow& window) {
  const ChunkRecord& header = window.list.record(0);
  std::string colors = {static_cast<char>(header.colorType), static_cast<char>(header.bitDepth)};
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (record.tag != tag::PLTE && record.tag != tag::tRNS && record.tag != tag::bKGD) continue;
    for (const std::uint8_t byte : raw_payload(record)) colors += static_cast<char>(byte);
  }
  return colors;
}

TEST(Fitting, AFrameThatIsReplacedLeavesTheOthersAndTheirColorsAlone) {
  const testing::ScratchFolder folder;
  for (const std::uint8_t type : {0, 2, 3, 4, 6})
    for (const std::size_t frame : {0u, 1u, 2u})
      for (const std::uint32_t bits : {1u, 4u, 8u, 24u, 32u})
        for (const bool beside : {false, true}) {
          Recorder recorder;
          DocumentWindow window = small_document(A, beside ? 1 : 3, type);
          insert_chunk(window, tag::tRNS, {{}, 200}, recorder.host);
          insert_chunk(window, tag::bKGD, {}, recorder.host);
          std::vector<std::size_t> images;
          for (std::size_t i = 0; i < window.list.size(); ++i)
            if (window.list.record(i).tag == tag::IDAT) images.push_back(i);
          if (beside) window.document.defaultImage = testing::images_of(window)[0].handle();
          std::size_t entry = images[beside ? 0 : frame];
          const std::string before = shown_beside(window, entry), colors = colors_of(window);
          recorder.messages.clear();
          ASSERT_EQ(replace_image(window, entry, small_picture(6, 4, bits, 9), recorder.host),
                    Replaced::Done);
          const auto what = ::testing::Message() << +type << " frame " << frame << " gets " << bits;
          EXPECT_EQ(shown_beside(window, entry), before) << what;
          const bool promoted = !recorder.messages.empty();  // the user agreed to alpha
          EXPECT_EQ(promoted, type == 2 && bits == 32) << what;
          if (!promoted) EXPECT_EQ(colors_of(window), colors) << what;
          EXPECT_EQ(window.list.record(entry).tag, tag::IDAT);
          if (bits == 24 && frame == 0) {
            ASSERT_TRUE(save_document(window, folder / "a.png", recorder.host));
            EXPECT_EQ(testing::objections(folder / "a.png"), "") << what;
          }
        }
}

TEST(Fitting, PalettesAreMatchedDitheredOrReplacedByTheSettings) {
  const testing::SettingsGuard guard;
  const Picture picture = small_picture(20, 20, 24);
  struct Case {
    int advanced, option;
    std::optional<PaletteChoice> choice;
    PaletteChoice done;
  };
  for (const Case& c : {Case{0, 0, {}, PaletteChoice::Remap},
                        {1, 0, {}, PaletteChoice::Replace},
                        {1, 1, {}, PaletteChoice::Dither},
                        {1, 2, {}, PaletteChoice::Remap},
                        {0, 0, PaletteChoice::Dither, PaletteChoice::Dither}}) {
    settings::AllowAdvancedPalettes = c.advanced;
    settings::PngPaletteOption = c.option;
    Recorder recorder;
    DocumentWindow window = small_document(P, 0, 3);  // with the palette of 216 colors
    Palette before{}, after{};
    const std::uint32_t colors = chunk_find_palette(window.list, before);
    ASSERT_TRUE(insert_pictures(window, {&picture, 1}, recorder.host, c.choice));
    chunk_find_palette(window.list, after);
    EXPECT_EQ(before == after, c.done != PaletteChoice::Replace);
    const Picture image = testing::images_of(window)[0];
    if (c.done == PaletteChoice::Replace) continue;
    const Picture wanted = to_colors(picture, {before, colors}, c.done == PaletteChoice::Dither);
    EXPECT_TRUE(std::ranges::equal(image.handle().bytes(), wanted.handle().bytes()));
  }
}

TEST(Fitting, TransparentEntriesStayOutOfTheMatch) {
  Recorder recorder;
  DocumentWindow window = small_document(A, 1, 3);
  Palette palette;
  chunk_find_palette(window.list, palette);
  ChunkRecord transparency;
  ASSERT_TRUE(new_chunk(window, transparency, tag::tRNS, {{}, 256}));
  transparency.data.edit()[9] = 0;
  ASSERT_TRUE(insert_record(window, transparency, recorder.host));
  Picture picture = PictureCreate(2, 1, nullptr, 32);
  PicturePutPixel(picture, 0, 0, make_colour(palette[27], palette[28], palette[29], 255));
  PicturePutPixel(picture, 1, 0, make_colour(1, 2, 3, 0));
  window.document.caret = static_cast<std::int32_t>(window.list.size()) - 2;
  ASSERT_TRUE(insert_pictures(window, {&picture, 1}, recorder.host));
  const Picture image = testing::images_of(window)[1];
  EXPECT_NE(PictureGetPixel(image, 0, 0), 9u) << "its color, but transparent";
  EXPECT_EQ(PictureGetPixel(image, 1, 0), 9u) << "a transparent pixel";
}

TEST(Fitting, ARecordFollowsItsPicture) {
  ChunkRecord record;
  const auto type = [&](std::uint32_t bits) {
    record_take_picture(record, M, small_picture(5, 7, bits));
    return int{record.colorType} * 10 + record.bitDepth;
  };
  EXPECT_EQ(type(4), 34);
  EXPECT_EQ(record.image->paletteBytes, 48u);
  EXPECT_EQ(record.flags, std::uint32_t{CRF_IHDR | CRF_IDAT | CRF_PLTE});
  record.flags |= CRF_TRNS;
  record.image.edit().transBytes = 1;
  EXPECT_EQ(type(4), 34);
  EXPECT_TRUE(record.flags & CRF_TRNS) << "the colors are the same";
  record_take_picture(record, M, small_picture(5, 7, 4, 99));
  EXPECT_FALSE(record.flags & CRF_TRNS) << "the colors are others";
  EXPECT_EQ(type(24), 28);
  EXPECT_EQ(record.flags, std::uint32_t{CRF_IHDR | CRF_IDAT});
  EXPECT_EQ(type(32), 68);
  EXPECT_EQ(record.width * 10 + record.height, 57u);
  ChunkRecord frame;
  record_take_picture(frame, W, small_picture(5, 7, 32));
  EXPECT_EQ(frame.webpImage.colorType, 6u);
  EXPECT_EQ(frame.webpImage.height, 7u);
}

TEST(NewDocuments, HoldWhatTheirKindNeeds) {
  const testing::SettingsGuard guard;
  struct Case {
    DocumentKind kind;
    std::uint8_t type;
    std::uint32_t plays;
    const char* tags;
  };
  for (const Case& c : {Case{P, 2, 0, "IHDR tEXt IEND"},
                        {P, 3, 0, "IHDR tEXt PLTE IEND"},
                        {A, 6, 0, "IHDR acTL tEXt IEND"},
                        {M, 2, 0, "MHDR tEXt LOOP ENDL MEND"},
                        {M, 2, 1, "MHDR tEXt MEND"},
                        {W, 2, 0, "WEBH"}}) {
    DocumentWindow window;
    NewDocument parameters = default_new_document(c.kind);
    parameters.colorType = c.type;
    parameters.plays = c.plays;
    ASSERT_TRUE(new_document(window, parameters));
    EXPECT_EQ(tags_of(window.list), c.tags);
    EXPECT_EQ(document_size(window.list, window.document).width, 160u);
    EXPECT_FALSE(window.document.dirty || window.document.HasFileName);
  }
  settings::AddInstructionsToNew = 0;
  DocumentWindow window;
  ASSERT_TRUE(new_document(window, default_new_document(A)));
  EXPECT_EQ(tags_of(window.list), "IHDR acTL IEND");
  NewDocument wrong = default_new_document(W);
  wrong.width = 16384;
  EXPECT_TRUE(new_document_fault(wrong));
  wrong = default_new_document(P);
  wrong.bitDepth = 4;
  EXPECT_TRUE(new_document_fault(wrong)) << "true color has 8 or 16 bits";
}

TEST(Fitting, OtherColorsAreAskedAboutWhereTheUserWantsThat) {
  struct Case {
    DocumentKind kind;
    std::size_t answer;
    const char* question;
    bool same, kept;  ///< the picture stays as it is; so does the palette
  };
  const char* const still =
      "Replace the existing palette|Dither the image to the existing palette|Remap the image to the existing "
      "palette|";
  const char* const global =
      "Remap this image to the global palette|Dither this image to the global palette|";
  const std::string local = std::string("Use a local palette for this image|") + global;
  const testing::SettingsGuard guard;
  settings::AllowAdvancedPalettes = 1;
  for (const Case& c :
       {Case{P, 0, still, true, false}, Case{P, 1, still, false, true}, Case{P, 2, still, false, true},
        Case{A, 0, global, false, true}, Case{A, 1, global, false, true},
        Case{M, 0, local.c_str(), true, true}, Case{M, 1, local.c_str(), false, true}}) {
    DocumentWindow window = small_document(c.kind, c.kind == P ? 0 : 1, 3);
    if (c.kind == M)
      chunk_list_insert(window.list, window.document, 1,
                        testing::record_of(tag::PLTE, std::string(6, '\x70')));
    Palette before{}, after{};
    const std::uint32_t colors = chunk_find_palette(window.list, before);
    std::string asked;
    Recorder recorder;
    recorder.host.choose = [&](Choice& choice) {
      for (const StringId id : choice.answers) asked += std::string(string_text(id)) + "|";
      choice.chosen = c.answer;
      return true;
    };
    PictureFitting fitting(window, recorder.host);
    const Picture picture = small_picture(5, 5, 8, 77);
    const Picture fitted = fitting.fit(picture);
    EXPECT_EQ(asked, c.question) << kind_letters(c.kind) << c.answer;
    EXPECT_EQ(fitted.handle().data() == picture.handle().data(), c.same) << kind_letters(c.kind) << c.answer;
    EXPECT_EQ(chunk_find_palette(window.list, after) == colors && before == after, c.kept)
        << kind_letters(c.kind) << c.answer;
  }
}

TEST(Fitting, ACancelledQuestionInsertsNothingAndAKeptAnswerIsNotAskedForAgain) {
  const testing::SettingsGuard guard;
  settings::AllowAdvancedPalettes = 1;
  const std::vector<Picture> pictures = {small_picture(6, 4, 8, 77), small_picture(6, 4, 8, 78)};
  for (const bool cancel : {true, false}) {
    DocumentWindow window = small_document(A, 1, 3);
    Recorder recorder;
    int asked = 0;
    recorder.host.choose = [&](Choice& choice) {
      ++asked;
      choice.keep = true;
      return !cancel;
    };
    EXPECT_EQ(insert_pictures(window, pictures, recorder.host), !cancel);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(testing::images_of(window).size(), cancel ? 1u : 3u);
    EXPECT_TRUE(recorder.messages.empty());
  }
}

}  // namespace
}  // namespace vellum
