// What the writers change so that a file is valid, what they keep, and how they fail.
#include <fstream>

#include "base/byte_order.h"
#include "base/file.h"
#include "core/chunks/new_chunk.h"
#include "core/files/open_document.h"
#include "core/files/read_png.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "image/chunk_stream.h"
#include "image/inflate.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;
using testing::be16;
using testing::be32;
using testing::ChunkText;
using testing::frame_control;
using testing::header_payload;
using testing::png_file;
using testing::record_of;
using testing::Recorder;
using testing::zero_image;

class Writer : public ::testing::Test {
 protected:
  Writer() { settings::AutoUpdateTime = 0; }
  ~Writer() override {
    settings::AutoUpdateTime = 1;
    settings::APNGOpen = 1;
    settings::APNGIncludeTextChunks = 1;
    settings::CreateBackups = 0;
  }

  DocumentWindow opened(const std::vector<ChunkText>& chunks) {
    DocumentWindow window;
    EXPECT_TRUE(read_png(window, png_file(chunks), recorder_.host)) << recorder_.host.take_fault();
    return window;
  }

  /// The chunks of the saved file as "tag:hex" words; image data without its bytes.
  std::string saved(DocumentWindow& window) {
    EXPECT_TRUE(save_document(window, file_, recorder_.host))
        << (recorder_.messages.empty() ? "" : recorder_.messages.back());
    std::string reason, text;
    const auto bytes = read_file(file_, reason, 1 << 30);
    for (const StreamChunk& chunk : gather_chunks(*bytes, 8, tag::IEND).chunks) {
      EXPECT_TRUE(crc_agrees(chunk)) << tag_letters(chunk.tag);
      text += (text.empty() ? "" : " ") + tag_letters(chunk.tag);
      if (chunk.tag == tag::IDAT || chunk.tag == tag::IEND || chunk.tag == tag::fdAT) continue;
      text += ":";
      for (const std::uint8_t byte : chunk.data) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
      }
    }
    return text;
  }

  testing::ScratchFolder folder_;
  fs::path file_ = folder_ / "out.png";
  Recorder recorder_;
};

const ChunkText kEnd{"IEND", ""};

TEST_F(Writer, UnknownChunksKeepTheirPlacesAndBytes) {
  DocumentWindow window = opened({{"IHDR", header_payload(2, 2, 8, 2)},
                                  {"vlAa", "1"},
                                  {"gAMA", be32(45455)},
                                  {"vlBb", ""},
                                  {"IDAT", zero_image(2, 2, 8, 2)},
                                  {"vlCc", std::string("\0\xFF", 2)},
                                  kEnd});
  const std::string header =
      "IHDR:0000000200000002"
      "0802000000";
  EXPECT_EQ(saved(window), header + " vlAa:31 gAMA:0000b18f vlBb: IDAT vlCc:00ff IEND");
}

TEST_F(Writer, MisplacedRepeatedAndInvalidChunksAreSetRight) {
  DocumentWindow window = opened({{"IHDR", header_payload(2, 2, 8, 3)},
                                  {"PLTE", "abcdef"},
                                  {"gAMA", be32(45455)},
                                  {"tRNS", "123"},
                                  {"bKGD", "\x05"},
                                  {"IDAT", zero_image(2, 2, 8, 3)},
                                  {"pHYs", be32(1) + be32(1) + "\x01"},
                                  {"gAMA", be32(1)},
                                  {"tEXt", std::string("Title\0x", 7)},
                                  kEnd});
  EXPECT_EQ(saved(window),
            "IHDR:00000002000000020803000000 gAMA:0000b18f PLTE:616263646566 tRNS:3132 "
            "pHYs:000000010000000101 IDAT "
            "tEXt:5469746c650078 IEND");
  EXPECT_EQ(recorder_.notes,
            (std::vector<std::string>{"bKGD (entry 5) was left out", "gAMA (entry 8) was left out"}));
  EXPECT_EQ(window.document.notes, recorder_.notes) << "they stay on the document";
  EXPECT_EQ(window.list.size(), 10u) << "the list stays";
}

TEST_F(Writer, WrongChunksAreRepairedKeptOrLeftOutAlikeInAllKinds) {
  constexpr unsigned kPngs = 1, kMng = 2, kAll = 3;
  const std::string word(85, 'k'), none = "-";
  struct Case {
    unsigned kinds;
    const char* tag;
    std::string payload;
    std::string expected;  ///< "-": left out
  };
  const auto nul = [](const std::string& a, const std::string& b = {}) {
    return a + std::string(1, '\0') + b;
  };
  const Case cases[] = {
      {kAll, "tEXt", nul("Title", "a") + std::string(2, '\0'), nul("Title", "a")},
      {kAll, "tEXt", nul(word, "text"), nul(word.substr(0, 79), "text")},
      {kAll, "tEXt", nul(" a  b\n ", "x"), nul("a b", "x")},
      {kAll, "tEXt", "Alone", nul("Alone")},
      {kAll, "tEXt", word, word},
      {kAll, "tEXt", nul("Title", nul("a", "b")), nul("Title", nul("a", "b"))},
      {kAll, "iTXt", nul(word, std::string(4, '\0') + "x"),
       nul(word.substr(0, 79), std::string(4, '\0') + "x")},
      {kAll, "zTXt", "abcde", "abcde"},
      {kAll, "tIME", std::string("\x07\xD0\0\1\0\0\0", 7), std::string("\x07\xD0\0\1\0\0\0", 7)},
      {kAll, "pHYs", be32(1) + be32(1) + "\2", be32(1) + be32(1) + "\2"},
      {kAll, "gAMA", be32(45455) + "x", be32(45455)},
      {kAll, "gAMA", be32(0), none},
      {kAll, "gAMA", "abc", none},
      {kAll, "sRGB", "\x09", "\x09"},
      {kPngs, "sBIT", std::string(3, '\0'), none},
      {kPngs, "oFFs", be32(1) + be32(1), none},
      {kMng, "TERM", std::string(10, '\0'), std::string(1, '\0')},
      {kMng, "TERM", "\3", "\3" + std::string(9, '\0')},
      {kMng, "TERM", "\4", none},
      {kMng, "BACK", std::string(8, '\0'), std::string(7, '\0')},
      {kMng, "BACK", "abc", none},
      {kMng, "sRGB", "", ""},
  };
  settings::IdentifyFiles = 0;
  for (const auto& [kind, bit] :
       {std::pair{DocumentKind::PING, kPngs}, {DocumentKind::APNG, kPngs}, {DocumentKind::MING, kMng}})
    for (const Case& c : cases) {
      if (!(c.kinds & bit)) continue;
      DocumentWindow window = testing::small_document(kind, 1);
      const ChunkTag tag = read_be32(reinterpret_cast<const std::uint8_t*>(c.tag));
      chunk_list_insert(window.list, window.document, kind == DocumentKind::APNG ? 2 : 1,
                        record_of(tag, c.payload));
      recorder_.notes.clear();
      ASSERT_TRUE(save_document(window, file_, recorder_.host));
      std::string reason, found = none;
      const auto bytes = read_file(file_, reason, 1 << 20);
      for (const StreamChunk& chunk :
           gather_chunks(*bytes, 8, kind == DocumentKind::MING ? tag::MEND : tag::IEND).chunks)
        if (chunk.tag == tag) found.assign(chunk.data.begin(), chunk.data.end());
      EXPECT_EQ(found, c.expected) << c.tag << " in " << kind_letters(kind);
      EXPECT_EQ(recorder_.notes.size(), c.payload.empty() ? 0u : 1u) << c.tag << " in " << kind_letters(kind);
    }
  settings::IdentifyFiles = 1;
}

TEST_F(Writer, SixteenBitsKeepTheirKey) {
  DocumentWindow window = opened(
      {{"IHDR", header_payload(2, 1, 16, 0)}, {"tRNS", "\x12\x34"}, {"IDAT", zero_image(2, 1, 16, 0)}, kEnd});
  ChunkRecord image;
  const std::size_t at = chunk_find_first(window.list, tag::IDAT, &image);
  Picture picture = picture_of(image);
  PicturePutPixel(picture, 0, 0, 0x12);
  PicturePutPixel(picture, 1, 0, 0x77);
  image.data = picture.handle();
  chunk_list_put(window.list, at, image);
  EXPECT_EQ(saved(window), "IHDR:00000002000000011000000000 tRNS:1234 IDAT IEND");
  std::string reason;
  const auto bytes = read_file(file_, reason, 1 << 20);
  for (const StreamChunk& chunk : gather_chunks(*bytes, 8, tag::IEND).chunks) {
    if (chunk.tag != tag::IDAT) continue;
    std::vector<std::uint8_t> samples(5);
    ASSERT_EQ(inflate_into(chunk.data, samples), 5u);
    // Filter Sub may be chosen: undo it.
    if (samples[0] == 1)
      for (std::size_t i = 3; i < 5; ++i) samples[i] = static_cast<std::uint8_t>(samples[i] + samples[i - 2]);
    EXPECT_EQ(read_be16(&samples[1]), 0x1234) << "the key itself";
    EXPECT_EQ(read_be16(&samples[3]), 0x7777) << "any other sample is repeated";
  }
}

TEST_F(Writer, TheHeaderFollowsAPictureThatItCantHold) {
  DocumentWindow window = opened({{"IHDR", header_payload(2, 2, 8, 0)},
                                  {"bKGD", be16(7)},
                                  {"tRNS", be16(7)},
                                  {"IDAT", zero_image(2, 2, 8, 0)},
                                  kEnd});
  ChunkRecord image;
  const std::size_t at = chunk_find_first(window.list, tag::IDAT, &image);
  image.data = PictureCreateFilled(2, 2, 0x0000FF).handle();
  chunk_list_put(window.list, at, image);
  EXPECT_EQ(saved(window), "IHDR:00000002000000020802000000 bKGD:000700070007 IDAT IEND");
  EXPECT_EQ(window.list.record(0).description, "HEADER? IHDR (2 x 2, 16,777,216 colors)");
}

TEST_F(Writer, AStillWithoutItsPartsIsRefusedInWords) {
  DocumentWindow window =
      opened({{"IHDR", header_payload(2, 2, 8, 3)}, {"PLTE", "abc"}, {"IDAT", zero_image(2, 2, 8, 3)}, kEnd});
  window.list.remove(1);
  EXPECT_FALSE(save_document(window, file_, recorder_.host));
  window.list.remove(1);
  EXPECT_FALSE(save_document(window, file_, recorder_.host));
  ASSERT_EQ(recorder_.messages.size(), 2u);
  EXPECT_EQ(recorder_.messages[0], string_text(StringId::NoPaletteInPng));
  EXPECT_EQ(recorder_.messages[1], string_text(StringId::NoImageInPng));
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(Writer, CompressedTextComesBackAndStrangeOnesStay) {
  const std::string strange = std::string("\0\0", 2) + "zzz";
  DocumentWindow window = opened({{"IHDR", header_payload(1, 1, 8, 0)},
                                  {"zTXt", std::string("Comment\0\0", 9) + zero_image(1, 1, 8, 0)},
                                  {"IDAT", zero_image(1, 1, 8, 0)},
                                  {"zTXt", strange},
                                  kEnd});
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(window.list.record(1).data.data())), "Comment");
  EXPECT_EQ(raw_payload(window.list.record(3)).size(), strange.size()) << "an empty keyword stays compressed";
  ChunkRecord text;
  ASSERT_TRUE(new_chunk(window, text, tag::zTXt));
  chunk_list_insert(window.list, window.document, 1, text);
  ASSERT_TRUE(save_document(window, file_, recorder_.host));
  DocumentWindow again;
  ASSERT_TRUE(open_document(again, file_, recorder_.host));
  EXPECT_STREQ(reinterpret_cast<const char*>(again.list.record(1).data.data() + 8), "This space for rent...");
}

TEST_F(Writer, TimesAreRefreshedInFileAndList) {
  settings::AutoUpdateTime = 1;
  DocumentWindow window = opened({{"IHDR", header_payload(1, 1, 8, 0)},
                                  {"tIME", std::string("\x07\xD0\x01\x01\x00\x00\x00", 7)},
                                  {"IDAT", zero_image(1, 1, 8, 0)},
                                  kEnd});
  const std::string before = window.list.record(1).description;
  ASSERT_TRUE(save_document(window, file_, recorder_.host));
  EXPECT_NE(window.list.record(1).description, before);
}

std::vector<ChunkText> animation(const std::vector<ChunkText>& front, const std::vector<ChunkText>& middle,
                                 const std::vector<ChunkText>& back, unsigned type = 2) {
  std::vector<ChunkText> chunks = {{"IHDR", header_payload(2, 2, 8, type)}, {"acTL", be32(9) + be32(3)}};
  const auto add = [&chunks](const std::vector<ChunkText>& more) {
    chunks.insert(chunks.end(), more.begin(), more.end());
  };
  add(front);
  add({{"fcTL", frame_control(0, 2, 2, 0, 0, 1, 10, 7, 9)}, {"IDAT", zero_image(2, 2, 8, type)}});
  add(middle);
  add({{"fcTL", frame_control(1, 1, 1, 1, 1, 5, 0, 1, 1)}, {"fdAT", be32(2) + zero_image(1, 1, 8, type)}});
  add(back);
  add({kEnd});
  return chunks;
}

TEST_F(Writer, AnAnimationKeepsItsOtherChunksInTheirOrder) {
  DocumentWindow window =
      opened(animation({{"vlAa", "1"}, {"tEXt", std::string("T\0x", 3)}, {"gAMA", be32(45455)}},
                       {{"vlBb", "2"}, {"vlCC", "3"}}, {{"tIME", std::string("\x07\xD0\x01\x01\0\0\0", 7)}}));
  EXPECT_EQ(testing::tags_of(window.list), "IHDR acTL vlAa tEXt gAMA IDAT vlBb vlCC IDAT tIME IEND");
  EXPECT_EQ(window.list.record(1).numFrames, 2u) << "what is there counts";
  const std::string file = saved(window);
  EXPECT_EQ(file,
            "IHDR:00000002000000020802000000 acTL:0000000200000003 vlAa:31 tEXt:540078 gAMA:0000b18f "
            "fcTL:00000000000000020000000200000000000000000001000a0000 IDAT vlBb:32 "
            "fcTL:00000001000000010000000100000001000000010005000001"
            "01 fdAT vlCC:33 tIME:07d00101000000 IEND");
}

TEST_F(Writer, TextOfAnAnimationFollowsItsOption) {
  settings::APNGIncludeTextChunks = 0;
  const auto chunks = animation({{"tEXt", std::string("T\0x", 3)}}, {}, {});
  DocumentWindow without = opened(chunks);
  EXPECT_EQ(chunk_count_tag(without.list, tag::tEXt), 0u);
  settings::APNGIncludeTextChunks = 1;
  DocumentWindow with = opened(chunks);
  settings::APNGIncludeTextChunks = 0;
  EXPECT_EQ(saved(with).find("tEXt"), std::string::npos);
  EXPECT_EQ(chunk_count_tag(with.list, tag::tEXt), 1u) << "it stays in the list";
}

TEST_F(Writer, ADefaultImageStaysOutsideTheAnimation) {
  DocumentWindow window = opened({{"IHDR", header_payload(3, 3, 8, 2)},
                                  {"acTL", be32(1) + be32(0)},
                                  {"IDAT", zero_image(3, 3, 8, 2)},
                                  {"fcTL", frame_control(0, 1, 1, 1, 0)},
                                  {"fdAT", be32(1) + zero_image(1, 1, 8, 2)},
                                  kEnd});
  EXPECT_EQ(testing::tags_of(window.list), "IHDR acTL IDAT IEND");
  EXPECT_EQ(document_size(window.list, window.document).width, 3u);
  const std::string expected =
      "IHDR:00000003000000030802000000 acTL:0000000100000000 IDAT "
      "fcTL:00000000000000010000000100000001000000000001000a0000 fdAT IEND";
  EXPECT_EQ(saved(window), expected);
  // Without it the IDAT is made from the first frame, again outside the animation.
  window.document.defaultImage.reset();
  EXPECT_EQ(saved(window), expected);
}

TEST_F(Writer, FramesOfDifferentDepthShareTheDeepestForm) {
  struct Case {
    const char* what;
    Picture first, second;
    const char* header;  ///< depth and type
  };
  Palette colors{};
  colors[0] = 9;
  const Case cases[] = {
      {"one table", PictureCreate(2, 2, &colors, 8), PictureCreate(2, 2, &colors, 8), "0803"},
      {"packed pictures", PictureCreate(2, 2, &colors, 1), PictureCreate(2, 2, &colors, 4), "0403"},
      {"tables that differ", PictureCreate(2, 2, &colors, 8), PictureCreate(2, 2, nullptr, 8), "0802"},
      {"a palette and true color", PictureCreate(2, 2, &colors, 8), PictureCreateFilled(2, 2, 0), "0802"},
      {"true color and glass", PictureCreateFilled(2, 2, 0), PictureCreateAlpha(2, 2), "0806"},
  };
  for (const Case& c : cases) {
    DocumentWindow window = opened(animation({}, {}, {}));
    std::size_t frame = 0;
    for (std::size_t i = 0; i < window.list.size(); ++i) {
      ChunkRecord record = window.list.record(i);
      if (record.tag != tag::IDAT) continue;
      const Picture& picture = frame++ == 0 ? c.first : c.second;
      record.data = picture.handle();
      record.frameControl.xOffset = record.frameControl.yOffset = 0;
      record.frameControl.frameWidth = record.frameControl.frameHeight = 2;
      chunk_list_put(window.list, i, record);
    }
    EXPECT_EQ(saved(window).substr(21, 4), c.header) << c.what;
    DocumentWindow again;
    ASSERT_TRUE(open_document(again, file_, recorder_.host)) << c.what;
    const auto pictures = testing::images_of(again);
    ASSERT_EQ(pictures.size(), 2u);
    EXPECT_EQ(testing::rgba_of(again, pictures[0]), testing::rgba_of(window, c.first)) << c.what;
    EXPECT_EQ(testing::rgba_of(again, pictures[1]), testing::rgba_of(window, c.second)) << c.what;
  }
}

TEST_F(Writer, AGreyAnimationThatIsPackedAnewBecomesIndexesWithItsTransparency) {
  settings::KeepStoredImages = 0;
  DocumentWindow window =
      opened(animation({{"sBIT", "\x06"}, {"tRNS", be16(2)}, {"bKGD", be16(3)}}, {}, {}, 0));
  const std::string file = saved(window);
  EXPECT_EQ(file.substr(21, 4), "0803");
  EXPECT_NE(file.find(" sBIT:060606 PLTE:000000010101"), std::string::npos);
  EXPECT_NE(file.find(" tRNS:ffff00 "), std::string::npos);
  EXPECT_NE(file.find(" bKGD:03 "), std::string::npos);
  EXPECT_EQ(saved(window), file) << "a second save of the same document";
}

TEST_F(Writer, AStillThatHoldsAnAnimationRawWritesItAsItCame) {
  settings::APNGOpen = 0;
  DocumentWindow window = opened(animation({}, {}, {}));
  EXPECT_EQ(window.document.kind, DocumentKind::PING);
  EXPECT_EQ(testing::tags_of(window.list), "IHDR acTL fcTL IDAT fcTL fdAT IEND");
  const std::string file = saved(window);
  EXPECT_NE(file.find("acTL:0000000900000003 fcTL:"), std::string::npos);
  ChunkRecord image;
  const std::size_t at = chunk_find_first(window.list, tag::IDAT, &image);
  image.data = PictureCreateAlpha(2, 2).handle();
  chunk_list_put(window.list, at, image);
  EXPECT_EQ(saved(window), "IHDR:00000002000000020806000000 IDAT IEND")
      << "frames of another type than the image";
}

TEST_F(Writer, ALaterFrameLargerThanTheFirstIsRefused) {
  DocumentWindow window = opened(animation({}, {}, {}));
  const std::size_t first = chunk_find_first(window.list, tag::IDAT);
  ChunkRecord record;
  const std::size_t second = chunk_find_first(window.list, tag::IDAT, &record, first + 1);
  record.frameControl.frameHeight = 3;
  chunk_list_put(window.list, second, record);
  EXPECT_TRUE(frames_exceed_first(window));
  EXPECT_FALSE(save_document(window, file_, recorder_.host));
  EXPECT_EQ(recorder_.messages.back(), string_text(StringId::FrameTooLarge));
  EXPECT_FALSE(fs::exists(file_));
}

TEST_F(Writer, AFailedSaveHarmsNothing) {
  DocumentWindow window =
      opened({{"IHDR", header_payload(1, 1, 8, 0)}, {"IDAT", zero_image(1, 1, 8, 0)}, kEnd});
  window.document.dirty = true;
  fs::create_directory(folder_ / "dir.png");
  for (const fs::path& path : {folder_ / "dir.png", folder_ / "none/a.png"}) {
    EXPECT_FALSE(save_document(window, path, recorder_.host));
    EXPECT_TRUE(recorder_.messages.back().starts_with("There has been an error writing this file.\n"))
        << path;
  }
  EXPECT_TRUE(window.document.dirty);
  EXPECT_TRUE(fs::is_empty(folder_ / "dir.png"));
}

TEST_F(Writer, BackupsAreMadeAndARefusedOneStopsTheSave) {
  settings::CreateBackups = 1;
  DocumentWindow window =
      opened({{"IHDR", header_payload(1, 1, 8, 0)}, {"IDAT", zero_image(1, 1, 8, 0)}, kEnd});
  std::ofstream(file_) << "old";
  ASSERT_TRUE(save_document(window, file_, recorder_.host));
  std::ifstream backup(folder_ / "Backup of out.png");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(backup), {}), "old");
  // A folder of that name can't be replaced by a copy.
  fs::remove(folder_ / "Backup of out.png");
  fs::create_directories(folder_ / "Backup of out.png/x");
  recorder_.answer = Answer::No;
  const std::size_t told = recorder_.messages.size();
  EXPECT_FALSE(save_document(window, file_, recorder_.host));
  ASSERT_EQ(recorder_.messages.size(), told + 1) << "the question and nothing else";
  recorder_.answer = Answer::Yes;
  EXPECT_TRUE(save_document(window, file_, recorder_.host));
}

TEST_F(Writer, ASaveMarksEveryOtherStateAsUnsaved) {
  DocumentWindow window =
      opened({{"IHDR", header_payload(1, 1, 8, 0)}, {"IDAT", zero_image(1, 1, 8, 0)}, kEnd});
  window.undoLevels.push_back({window.list, false, 0, {}, {}});
  window.document.dirty = true;
  ASSERT_TRUE(save_document(window, file_, recorder_.host));
  EXPECT_FALSE(window.document.dirty);
  EXPECT_TRUE(window.undoLevels[0].dirty);
}

TEST_F(Writer, ReadingTellsOfWrongCrcsAndOfBytesBehindTheEnd) {
  auto file = png_file({{"IHDR", header_payload(1, 1, 8, 0)}, {"IDAT", zero_image(1, 1, 8, 0)}, kEnd});
  file[29] ^= 1;  // CRC of the header
  file.insert(file.end(), {1, 2, 3});
  DocumentWindow window;
  ASSERT_TRUE(read_png(window, file, recorder_.host));
  ASSERT_EQ(recorder_.warnings.size(), 1u);
  EXPECT_EQ(recorder_.warnings[0],
            "An incorrect CRC value has been encountered. This file may be damaged.\nIHDR, offset 8");
  EXPECT_EQ(recorder_.notes.size(), 1u);
  settings::WarnBadFileCRC = 0;
  DocumentWindow silent;
  EXPECT_TRUE(read_png(silent, file, recorder_.host));
  EXPECT_EQ(recorder_.warnings.size(), 1u);
  settings::WarnBadFileCRC = 1;
}

}  // namespace
}  // namespace vellum
