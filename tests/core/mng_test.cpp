// MNG documents: the corpus, the fold of FRAM and DEFI into images, what goes wrong, and what is written.
#include <fstream>
#include <sstream>

#include "base/byte_order.h"
#include "base/file.h"
#include "core/files/open_document.h"
#include "core/files/read_mng.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/model/framing.h"
#include "core/settings.h"
#include "image/chunk_stream.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::be32;
using testing::ChunkText;
using testing::header_payload;
using testing::Recorder;
using testing::tags_of;
using testing::zero_image;

std::vector<std::uint8_t> mng_file(const std::vector<ChunkText>& chunks) {
  std::vector<std::uint8_t> file = testing::png_file(chunks);
  file[0] = 0x8A;
  file[1] = 'M';
  return file;
}

const ChunkText kHead{"MHDR", be32(4) + be32(3) + be32(1000) + be32(0) + be32(0) + be32(0) + be32(0)};
const ChunkText kEnd{"MEND", ""};

/// An embedded image of 2 x 2 pixels, with these chunks in front of its data.
std::vector<ChunkText> image(unsigned type, const std::vector<ChunkText>& front = {}) {
  std::vector<ChunkText> chunks = {{"IHDR", header_payload(2, 2, 8, type)}};
  chunks.insert(chunks.end(), front.begin(), front.end());
  chunks.push_back({"IDAT", zero_image(2, 2, 8, type)});
  chunks.push_back({"IEND", ""});
  return chunks;
}

std::vector<ChunkText> joined(std::initializer_list<std::vector<ChunkText>> parts) {
  std::vector<ChunkText> all = {kHead};
  for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
  all.push_back(kEnd);
  return all;
}

class Mng : public ::testing::Test {
 protected:
  Mng() {
    settings::AutoUpdateTime = 0;
    settings::IdentifyFiles = 0;
  }
  ~Mng() override {
    settings::AutoUpdateTime = 1;
    settings::IdentifyFiles = 1;
    settings::IdentificationFile.clear();
  }
  bool read(DocumentWindow& window, const std::vector<ChunkText>& chunks) {
    return read_mng(window, mng_file(chunks), recorder_.host);
  }
  /// The chunks of the saved file: tag and payload.
  std::vector<ChunkText> saved(DocumentWindow& window) {
    EXPECT_TRUE(save_document(window, file_, recorder_.host));
    std::string reason;
    const auto bytes = read_file(file_, reason, 1 << 30);
    std::vector<ChunkText> chunks;
    for (const StreamChunk& chunk : gather_chunks(*bytes, 8, tag::MEND).chunks)
      chunks.push_back({tag_letters(chunk.tag), std::string(chunk.data.begin(), chunk.data.end())});
    return chunks;
  }
  testing::ScratchFolder folder_;
  std::filesystem::path file_ = folder_ / "out.mng";
  Recorder recorder_;
};

/// How many delays "250,0,100x24" lists.
std::size_t delays_in(const std::string& text) {
  std::size_t count = 0;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, ',');) {
    const auto times = part.find('x');
    count += times == std::string::npos ? 1 : std::stoul(part.substr(times + 1));
  }
  return count;
}

TEST_F(Mng, TheCorpusLoadsSavesAndIsStable) {
  VELLUM_NEEDS_CORPUS();
  std::size_t pixels = 0;
  for (const auto& row : testing::corpus_rows({"mng"})) {
    Recorder recorder;
    DocumentWindow window, again;
    const bool opened = open_document(window, testing::corpus_file(row), recorder.host);
    EXPECT_EQ(opened, row.at("verdict") != "rejected") << row.at("path");
    if (!opened) continue;
    const auto images = testing::images_of(window);
    // The index counts frames as a player shows them; its delays are one for each stored image.
    if (!row.at("delays_ms").empty())
      EXPECT_EQ(images.size(), delays_in(row.at("delays_ms"))) << row.at("path");
    if (!images.empty() && !row.at("pixel_md5").empty() && images[0].bits() == 32) {
      const auto rgba = testing::rgba_of(window, images[0]);
      pixels += testing::md5_of(rgba.data(), rgba.size()) == row.at("pixel_md5");
    }
    ASSERT_TRUE(save_document(window, file_, recorder.host)) << row.at("path");
    const auto judged = testing::run_tool({"pngcheck", "-q", file_});
    const auto before = testing::run_tool({"pngcheck", "-q", testing::corpus_file(row)});
    if (judged.there && before.status == 0) EXPECT_EQ(judged.status, 0) << row.at("path") << judged.output;
    ASSERT_TRUE(open_document(again, file_, recorder.host)) << row.at("path");
    const auto after = testing::images_of(again);
    ASSERT_EQ(images.size(), after.size());
    for (std::size_t i = 0; i < images.size(); ++i)
      EXPECT_EQ(testing::rgba_of(window, images[i]), testing::rgba_of(again, after[i]))
          << row.at("path") << " image " << i;
    ASSERT_TRUE(save_document(again, folder_ / "again.mng", recorder.host));
    EXPECT_EQ(testing::file_text(file_), testing::file_text(folder_ / "again.mng")) << row.at("path");
  }
  EXPECT_GT(pixels, 5u);
}

TEST_F(Mng, BlocksStayInForceUntilOthersReplaceThem) {
  const ChunkText framing{"FRAM", std::string("\x03\0\x01\0\0\0", 6) + be32(50)};
  const ChunkText place{"DEFI", std::string("\0\x01\0\x01", 4) + be32(1) + be32(0xFFFFFFFF)};
  DocumentWindow window;
  ASSERT_TRUE(read(
      window,
      joined({{framing, place}, image(2), image(2), {{"DEFI", std::string("\0\x02\0\x01", 4)}}, image(2)})));
  EXPECT_EQ(tags_of(window.list), "MHDR PNGI PNGI PNGI MEND");
  for (std::size_t i = 1; i <= 3; ++i) {
    const ChunkRecord& record = window.list.record(i);
    EXPECT_EQ(record.flags, std::uint32_t{CRF_IHDR | CRF_IDAT | CRF_FRAM | CRF_DEFI});
    EXPECT_EQ(from_file_order(record.image->framBlock.interframeDelay), 50u);
    EXPECT_EQ(frame_delay_ms(record, DocumentKind::MING, 1000), 50u);
    EXPECT_EQ(&*record.image == &*window.list.record(1).image, i < 3) << "equal blocks lie in memory once";
  }
  EXPECT_EQ(GetFrameOffset(window.list.record(2), DocumentKind::MING).y, -1);
  EXPECT_EQ(window.list.record(3).image->defiBytes, 4u) << "no position";
  EXPECT_EQ(document_size(window.list, window.document).width, 3u);
}

TEST_F(Mng, PalettesOfTheFileServeImagesWithoutTheirOwn) {
  const ChunkText colors{"PLTE", "abcdef"};
  DocumentWindow window;
  ASSERT_TRUE(read(window, joined({{colors}, image(3), image(3, {{"PLTE", "xyz"}}), image(0), image(3)})));
  ASSERT_EQ(recorder_.warnings.size(), 1u);
  EXPECT_EQ(recorder_.warnings[0], "WARNING: This MNG file has a PLTE chunk in an unexpected location.");
  const auto first_color = [&](std::size_t entry) {
    Palette palette;
    PictureGetPalette(picture_of(window.list.record(entry)), palette);
    return std::string(palette.begin(), palette.begin() + 3);
  };
  EXPECT_EQ(first_color(1), "abc");
  EXPECT_EQ(first_color(2), "xyz");
  EXPECT_EQ(first_color(4), "xyz") << "the last palette, not the greys between";
  EXPECT_EQ(window.list.record(4).image->paletteBytes, 3u) << "it becomes the image's own";
}

TEST_F(Mng, ChunksInsideAnImageAreFoldedOrDroppedAndOthersStay) {
  DocumentWindow window;
  ASSERT_TRUE(read(
      window,
      joined(
          {{{"tEXt", std::string("T\0x", 3)}, {"vlAa", "1"}},
           image(2,
                 {{"tEXt", std::string("I\0x", 3)}, {"zTXt", "raw"}, {"tRNS", "abcdef"}, {"bKGD", "ghijkl"}}),
           {{"JHDR", "x"}, {"IDAT", "y"}, {"IEND", ""}, {"bKGD", "z"}}})));
  EXPECT_EQ(tags_of(window.list), "MHDR tEXt vlAa zTXt PNGI JHDR IDAT IEND MEND");
  EXPECT_EQ(recorder_.notes, std::vector<std::string>{"Chunks inside images were not kept: tEXt"});
  EXPECT_EQ(window.list.record(4).image->transBytes, 6u);
}

TEST_F(Mng, IsRefusedWithItsReason) {
  struct Case {
    std::vector<ChunkText> chunks;
    const char* reason;
  };
  const Case cases[] = {
      {{{"MHDR", be32(1)}, kEnd}, "length is not that of a header"},
      {{{"tEXt", "x"}, kEnd}, "first chunk is no header"},
      {{kHead}, "without its end chunk"},
      {{kHead, {"IDAT", "x"}, kEnd}, "without an image"},
      {{kHead, {"IEND", ""}, kEnd}, "has no data"},
      {joined({image(3)}), "no palette"},
      {joined({image(2, {{"ABCD", ""}})}), "not known"},
      {joined({{{"IHDR", header_payload(2, 2, 8, 2)}, {"IHDR", header_payload(2, 2, 8, 2)}}}),
       "inside another"},
      {joined({{{"IHDR", header_payload(2, 2, 8, 2)}}}), "ends inside an image"},
      {joined({{{"PLTE", "ab"}}}), "length is not that of a palette"},
      {joined({{{"PNGI", "ab"}}}), "reserved name"},
      {joined({{{"DHDR", "x"}, {"PNGI", "ab"}, {"IEND", ""}}}), "reserved name"},
      {joined({{kHead}}), "second header"},
  };
  for (const Case& c : cases) {
    DocumentWindow window;
    EXPECT_FALSE(read(window, c.chunks)) << c.reason;
    const std::string told = recorder_.host.take_fault();
    EXPECT_NE(told.find(c.reason), std::string::npos) << told;
  }
  const auto whole = mng_file(joined({image(2)}));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    DocumentWindow window;
    EXPECT_FALSE(read_mng(window, std::span(whole).first(length), recorder_.host)) << length;
  }
}

TEST_F(Mng, FramingIsReadFromFixedPositionsAndWrittenInLevels) {
  FramBlock block;
  std::string wire = std::string("\x04\0\x01\x01\x01\0", 6) + be32(7) + be32(8) + "\x01";
  for (const std::uint32_t edge : {10u, 11u, 12u, 13u}) wire += be32(edge);
  const auto bytes = [](const std::string& text) {
    return std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  };
  parse_framing(bytes(wire), block);
  EXPECT_EQ(from_file_order(block.timeout), 8u);
  EXPECT_EQ(from_file_order(block.clipLeft), 11u) << "clip values are taken from four bytes later";
  parse_framing(bytes(std::string("\x01", 1)), block);
  EXPECT_EQ(from_file_order(block.interframeDelay), 7u) << "a short chunk leaves what it does not reach";
  const auto payload = [&](int mode, int delay, int timeout, int clipping) {
    block.framingMode = static_cast<std::uint8_t>(mode);
    block.changeDelay = static_cast<std::uint8_t>(delay);
    block.changeTimeout = static_cast<std::uint8_t>(timeout);
    block.changeClipping = static_cast<std::uint8_t>(clipping);
    return framing_payload(block).size();
  };
  EXPECT_EQ(payload(0, 1, 1, 1), 2u);
  EXPECT_EQ(payload(1, 0, 1, 1), 6u);
  EXPECT_EQ(payload(1, 1, 0, 1), 10u);
  EXPECT_EQ(payload(1, 1, 1, 0), 14u);
  EXPECT_EQ(payload(1, 1, 1, 1), 31u);
  const DefiBlock place{};
  for (const auto& [held, written] :
       {std::pair<unsigned, std::size_t>{0, 0}, {2, 0}, {3, 3}, {11, 4}, {12, 12}, {27, 12}, {28, 28}})
    EXPECT_EQ(definition_payload(place, held).size(), written);
}

TEST_F(Mng, TheIdentityCommentIsWrittenOnce) {
  settings::IdentifyFiles = 1;
  settings::IdentificationFile = folder_ / "me.txt";
  std::ofstream(settings::IdentificationFile) << "Me\tmyself\nand I\x01";
  DocumentWindow window, again;
  ASSERT_TRUE(read(window, joined({{{"TERM", std::string(1, '\0')}}, image(2)})));
  const auto chunks = saved(window);
  ASSERT_EQ(chunks[1].tag, "tEXt");
  EXPECT_EQ(chunks[1].payload,
            std::string("Comment\0", 8) +
                "FILE IDENTITY\r\nCreated or modified by\r\nMe myself\r\nand I\r\nVellumcraft 15\r\n");
  EXPECT_EQ(window.list.size(), 4u) << "the list does not change";
  const std::string once = testing::file_text(file_);
  ASSERT_TRUE(open_document(again, file_, recorder_.host));
  ASSERT_TRUE(save_document(again, file_, recorder_.host));
  EXPECT_EQ(testing::file_text(file_), once);
}

TEST_F(Mng, TheIdentityFileIsUtf8OrLatin1AndItsStartCounts) {
  settings::IdentifyFiles = 1;
  settings::IdentificationFile = folder_ / "me.txt";
  const std::string filler(2 << 20, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"\u00fc", "\xFC"}, {"\xFC", "\xFC"}, {"\u4e2d", "\u4e2d"}};
  for (const auto& [name, written] : cases) {
    std::ofstream(settings::IdentificationFile) << name << filler;
    DocumentWindow window;
    ASSERT_TRUE(read(window, joined({image(2)})));
    const ChunkText comment = saved(window)[1];
    EXPECT_EQ(comment.tag, name == "\u4e2d" ? "iTXt" : "tEXt");
    EXPECT_NE(comment.payload.find("by\r\n" + written + "xxx"), std::string::npos) << name;
    EXPECT_EQ(std::ranges::count(comment.payload, 'x'), 16'383 - static_cast<std::ptrdiff_t>(name.size()));
  }
}

TEST_F(Mng, AnImageGoesOutInTheFormOfItsHeader) {
  DocumentWindow window;
  ASSERT_TRUE(
      read(window, joined({image(3, {{"PLTE", "abcdef"}, {"tRNS", "123"}, {"bKGD", std::string(1, '\x01')}}),
                           image(0, {{"PLTE", "abc"}, {"tRNS", std::string("\0\x05", 2)}})})));
  std::string tags;
  for (const ChunkText& chunk : saved(window)) tags += chunk.tag + std::to_string(chunk.payload.size()) + " ";
  EXPECT_EQ(tags.find("MHDR28 IHDR13 PLTE6 bKGD1 tRNS2 IDAT"), 0u) << tags;
  EXPECT_NE(tags.find("IEND0 IHDR13 tRNS2 IDAT"), std::string::npos)
      << tags << ": a grey image has no palette";
}

TEST_F(Mng, AnImageDoesNotInheritTheBlocksOfAnother) {
  DocumentWindow window = testing::small_document(DocumentKind::MING, 2), again;
  const std::size_t first = chunk_find_first(window.list, tag::PNGI);
  ChunkRecord record;
  chunk_list_get(window.list, first, record);
  SetFrameOffset(record, DocumentKind::MING, {5, 3});
  chunk_list_put(window.list, first, record);
  chunk_list_get(window.list, first + 1, record);
  record.flags &= ~std::uint32_t{CRF_FRAM};
  chunk_list_put(window.list, first + 1, record);
  saved(window);
  ASSERT_TRUE(open_document(again, file_, recorder_.host));
  std::vector<std::uint32_t> values;
  for (std::size_t i = 0; i < again.list.size(); ++i)
    if (again.list.record(i).tag == tag::PNGI) {
      values.push_back(frame_delay_ms(again.list.record(i), DocumentKind::MING, 1000));
      values.push_back(
          static_cast<std::uint32_t>(GetFrameOffset(again.list.record(i), DocumentKind::MING).x));
    }
  EXPECT_EQ(values, (std::vector<std::uint32_t>{100, 5, 0, 0}));
}

}  // namespace
}  // namespace vellum
