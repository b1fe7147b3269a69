// WebP documents: real files against the index, what a save keeps, and files that were made to harm.
#include <fstream>

#include "base/byte_order.h"
#include "base/file.h"
#include "core/build/convert_records.h"
#include "core/chunks/new_chunk.h"
#include "core/files/open_document.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/settings.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/webp_service.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"
#include "support/libpng_oracle.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;
using testing::be32;
using testing::frame_control;
using testing::header_payload;
using testing::images_of;
using testing::png_file;
using testing::Recorder;
using testing::rgba_of;
using testing::zero_image;

using Bytes = std::vector<std::uint8_t>;

Bytes bytes_of(const fs::path& path) {
  std::string reason;
  const auto file = read_file(path, reason, 1 << 30);
  const std::span<const std::uint8_t> bytes =
      file ? std::span<const std::uint8_t>(*file) : std::span<const std::uint8_t>();
  return {bytes.begin(), bytes.end()};
}

WebpHeaderFields header_of(const DocumentWindow& window) {
  ChunkRecord header;
  EXPECT_EQ(chunk_find_first(window.list, tag::WEBH, &header), 0u);
  return header.webpHeader;
}

std::vector<WebpImageFields> frames_of(const DocumentWindow& window) {
  std::vector<WebpImageFields> frames;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (window.list.record(i).tag == tag::WEBI) frames.push_back(window.list.record(i).webpImage);
  return frames;
}

std::vector<std::uint32_t> delays_of(const DocumentWindow& window) {
  std::vector<std::uint32_t> delays;
  for (const WebpImageFields& frame : frames_of(window)) delays.push_back(frame.delay);
  return delays;
}

/// A frame of one color, of which nothing else is like the one before.
struct Frame {
  std::uint32_t width = 12, height = 10;
  Colour colour = 0xFF0000FF;
  std::uint32_t delay = 10, x = 0, y = 0, dispose = 0;
  std::uint32_t bits = 32;
};

Picture picture_for(const Frame& frame) {
  const Palette palette{0x10, 0x20, 0x30, 0x40, 0x50, 0x60};
  Picture picture = PictureCreate(frame.width, frame.height, &palette, frame.bits);
  PictureFillRect(picture, 0, 0, static_cast<std::int32_t>(frame.width),
                  static_cast<std::int32_t>(frame.height), frame.colour);
  PicturePutPixel(picture, 0, 0, 1);
  return picture;
}

DocumentWindow document_of(const std::vector<Frame>& frames, std::uint32_t width = 12,
                           std::uint32_t height = 10) {
  DocumentWindow window;
  window.document.kind = DocumentKind::WEBP;
  ChunkRecord record;
  new_chunk(window, record, tag::WEBH);
  record.webpHeader.canvasWidth = width;
  record.webpHeader.canvasHeight = height;
  record.webpHeader.loopCount = 7;
  record.webpHeader.backgroundColor = 0x80FF4020;
  chunk_list_append(window.list, window.document, record);
  for (const Frame& frame : frames) {
    NewChunkArgument argument;
    argument.picture = picture_for(frame).handle();
    new_chunk(window, record, tag::WEBI, argument);
    record.webpImage.delay = frame.delay;
    record.webpImage.xOffset = frame.x;
    record.webpImage.yOffset = frame.y;
    record.webpImage.dispose = frame.dispose;
    chunk_list_append(window.list, window.document, record);
  }
  return window;
}

class WebpDocument : public ::testing::Test {
 protected:
  WebpDocument() { settings::WEBPLossless = 1; }
  ~WebpDocument() override {
    settings::WEBPLossless = settings::WebPAllowMixed = 0;
    settings::WEBPQualityFactor = 75;
  }

  DocumentWindow reopened(DocumentWindow& window) {
    DocumentWindow again;
    EXPECT_TRUE(save_document(window, file_, recorder_.host))
        << (recorder_.messages.empty() ? "" : recorder_.messages.back());
    EXPECT_TRUE(open_document(again, file_, recorder_.host));
    return again;
  }

  testing::ScratchFolder folder_;
  fs::path file_ = folder_ / "out.WebP";
  Recorder recorder_;
};

class WebpCorpus : public WebpDocument {};

TEST_F(WebpCorpus, FilesLoadOrAreRefusedAsTheIndexSays) {
  VELLUM_NEEDS_CORPUS();
  for (const auto& row : testing::corpus_rows({"webp", "webp-bad"})) {
    Recorder recorder;
    DocumentWindow window;
    const bool opened = open_document(window, testing::corpus_file(row), recorder.host);
    EXPECT_EQ(opened, row.at("verdict") == "loads") << row.at("path");
    EXPECT_EQ(recorder.messages.size(), opened ? 0u : 1u) << row.at("path");
    if (!opened) continue;
    EXPECT_EQ(window.document.kind, DocumentKind::WEBP);
    EXPECT_EQ(std::to_string(header_of(window).canvasWidth), row.at("width")) << row.at("path");
    EXPECT_EQ(std::to_string(header_of(window).canvasHeight), row.at("height")) << row.at("path");
    const Picture first = images_of(window).at(0);
    const auto rgba = rgba_of(window, first);
    EXPECT_EQ(testing::md5_of(rgba.data(), rgba.size()), row.at("pixel_md5")) << row.at("path");
    EXPECT_TRUE(
        std::ranges::all_of(first.handle().bytes().subspan(24, 8), [](auto byte) { return byte == 0; }))
        << row.at("path") << ": pixels per metre";
  }
}

/// "100,90x2" as 100, 90, 90.
std::vector<std::uint32_t> stated_delays(const std::string& text) {
  std::vector<std::uint32_t> delays;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, ',');) {
    const auto times = part.find('x');
    const std::size_t count = times == std::string::npos ? 1 : std::stoul(part.substr(times + 1));
    delays.insert(delays.end(), count, static_cast<std::uint32_t>(std::stoul(part)));
  }
  return delays;
}

TEST_F(WebpCorpus, FramesDelaysAndLoopsAreThoseOfTheIndex) {
  VELLUM_NEEDS_CORPUS();
  std::size_t compared = 0;
  for (const auto& row : testing::corpus_rows({"webp"})) {
    if (row.at("frames").empty()) continue;
    DocumentWindow window;
    ASSERT_TRUE(open_document(window, testing::corpus_file(row), recorder_.host));
    EXPECT_EQ(delays_of(window), stated_delays(row.at("delays_ms"))) << row.at("path");
    const std::uint32_t loops = header_of(window).loopCount;
    EXPECT_EQ(loops == 0 ? "infinite" : std::to_string(loops), row.at("loop")) << row.at("path");
    const auto pictures = images_of(window);
    const auto stated = testing::corpus_frames(row.at("path"));
    ASSERT_EQ(pictures.size(), stated.size()) << row.at("path");
    for (std::size_t i = 0; i < pictures.size(); ++i, ++compared) {
      const auto rgba = rgba_of(window, pictures[i]);
      EXPECT_EQ(testing::md5_of(rgba.data(), rgba.size()), stated[i].at("rgba_md5"))
          << row.at("path") << " " << i;
    }
  }
  EXPECT_GT(compared, 120u);
}

/// The count of frames by an outside program; `frames` where that is not there.
std::size_t counted_by_imagemagick(const fs::path& file, std::size_t frames) {
  const auto judged = testing::run_tool({"identify", "-format", "%n ", "webp:" + file.string()});
  return judged.there && judged.status == 0 ? std::stoul(judged.output) : frames;
}

TEST_F(WebpCorpus, ALosslessSaveKeepsPixelsTimesAndLoops) {
  VELLUM_NEEDS_CORPUS();
  for (const auto& row : testing::corpus_rows({"webp"})) {
    DocumentWindow window;
    ASSERT_TRUE(open_document(window, testing::corpus_file(row), recorder_.host));
    const DocumentWindow again = reopened(window);
    const auto before = images_of(window), after = images_of(again);
    ASSERT_EQ(before.size(), after.size()) << row.at("path");
    for (std::size_t i = 0; i < before.size(); ++i)
      EXPECT_TRUE(rgba_of(window, before[i]) == rgba_of(again, after[i])) << row.at("path") << " image " << i;
    const auto judged = testing::run_tool({"webpinfo", "-quiet", file_});
    if (judged.there) EXPECT_EQ(judged.status, 0) << row.at("path") << ": " << judged.output;
    if (before.size() < 2) continue;
    EXPECT_EQ(delays_of(window), delays_of(again)) << row.at("path");
    EXPECT_EQ(header_of(window).loopCount, header_of(again).loopCount) << row.at("path");
    EXPECT_EQ(header_of(window).backgroundColor, header_of(again).backgroundColor) << row.at("path");
    EXPECT_EQ(counted_by_imagemagick(file_, before.size()), before.size()) << row.at("path");
  }
}

TEST_F(WebpDocument, FramesThatLookTheSameAndEveryDelaySurvive) {
  const std::vector<Frame> frames = {
      {12, 10, 0xFF0000FF, 100, 0, 0, 0},    {12, 10, 0xFF0000FF, 150, 0, 0, 1},
      {12, 10, 0xFF0000FF, 0, 0, 0, 1},      {12, 10, 0x00123456, 0, 0, 0, 0},
      {12, 10, 0x80FF00FF, 70'000, 0, 0, 0}, {12, 10, 0x80FF00FF, 33, 0, 0, 1}};
  for (const int mixed : {0, 1}) {
    settings::WebPAllowMixed = mixed;
    DocumentWindow window = document_of(frames);
    const std::string records = testing::tags_of(window.list);
    const DocumentWindow again = reopened(window);
    EXPECT_EQ(testing::tags_of(window.list), records) << "a save changes nothing";
    EXPECT_EQ(delays_of(again), (std::vector<std::uint32_t>{100, 150, 0, 0, 70'000, 33}));
    const auto read = frames_of(again);
    ASSERT_EQ(read.size(), frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
      EXPECT_EQ(read[i].dispose, frames[i].dispose) << i;
      EXPECT_TRUE(read[i].bitsPerPixel == 32 && read[i].colorType == 6 && read[i].xOffset == 0) << i;
      EXPECT_EQ(rgba_of(again, images_of(again)[i]), rgba_of(window, images_of(window)[i])) << i;
    }
    const WebpHeaderFields header = header_of(again);
    EXPECT_TRUE(header.loopCount == 7 && header.frameCount == 6 && header.bitsPerPixel == 32);
    EXPECT_EQ(header.backgroundColor, 0x80FF4020u);
  }
}

TEST_F(WebpDocument, FramesAreKeptInsideTheCanvas) {
  DocumentWindow window = document_of({{12, 10, 0xFF0000FF, 10},
                                       {4, 4, 0xFF00FF00, 10, 200, 1},          // moved in from the right
                                       {30, 2, 0xFF00FF00, 10, 5, 0xFFFFFFFF},  // cut
                                       {12, 10, 0x00FF00, 10, 0, 0, 0, 24},
                                       {3, 3, 0, 10, 2, 2, 0, 8}});
  const DocumentWindow again = reopened(window);
  const auto shown = images_of(again);
  ASSERT_EQ(shown.size(), 5u);
  const auto pixel = [&](std::size_t i, int x, int y) { return PictureGetPixel(shown[i], x, y); };
  EXPECT_EQ(pixel(1, 11, 4), 0xFF00FF00u);
  EXPECT_EQ(pixel(1, 7, 4), 0u) << "the rest of the canvas is transparent";
  EXPECT_EQ(pixel(2, 0, 8), 1u);
  EXPECT_EQ(pixel(2, 11, 9), 0xFF00FF00u);
  EXPECT_EQ(pixel(2, 1, 7), 0u);
  EXPECT_EQ(pixel(3, 5, 5), 0xFF00FF00u);
  EXPECT_EQ(pixel(4, 2, 2), 0xFF605040u) << "index 1";
  EXPECT_EQ(pixel(4, 3, 3), 0xFF302010u) << "index 0";
}

TEST_F(WebpDocument, OneImageIsAStill) {
  for (const std::uint32_t bits : {32u, 24u, 8u}) {
    DocumentWindow window = document_of({{9, 8, bits == 8 ? 0u : 0x40000080u, 500, 1, 1, 0, bits}});
    const DocumentWindow again = reopened(window);
    const WebpHeaderFields header = header_of(again);
    EXPECT_EQ(header.canvasWidth, 9u) << "the size of the picture";
    EXPECT_EQ(header.bitsPerPixel, bits == 32 ? 32u : 24u);
    EXPECT_EQ(header.colorType, bits == 32 ? 6u : 2u);
    EXPECT_TRUE(header.loopCount == 0 && header.frameCount == 1);
    EXPECT_EQ(document_background(again.list, again.document), 0xFFFFFFu) << "it states none";
    EXPECT_EQ(rgba_of(again, images_of(again).at(0)), rgba_of(window, images_of(window).at(0))) << bits;
    EXPECT_EQ(delays_of(again), std::vector<std::uint32_t>{0});
    const auto judged = testing::run_tool({"dwebp", file_, "-o", folder_ / "judge.png"});
    if (judged.there)
      EXPECT_EQ(testing::rgba_by_libpng(folder_ / "judge.png"), rgba_of(window, images_of(window).at(0)))
          << bits;
  }
}

TEST_F(WebpDocument, QualityCountsWithoutLossless) {
  DocumentWindow window = document_of({{64, 64, 0x40000080}, {64, 64, 0xFF0040FF}}, 64, 64);
  settings::WEBPLossless = 0;
  const auto size_at = [&](int quality) {
    settings::WEBPQualityFactor = quality;
    EXPECT_EQ(images_of(reopened(window)).size(), 2u);
    return fs::file_size(file_);
  };
  const auto low = size_at(0);
  EXPECT_LT(low, size_at(100));
  EXPECT_EQ(low, size_at(-5)) << "a setting out of range is brought into it";
}

TEST_F(WebpDocument, WhatCantBeWrittenLeavesTheOldFile) {
  struct Case {
    const char* what;
    DocumentWindow window;
    const char* name;
    const char* reason;
  };
  DocumentWindow headless = document_of({{}});
  headless.list.remove(0);
  DocumentWindow headless_two = document_of({{}, {}});
  headless_two.list.remove(0);
  Case cases[] = {
      {"no image", document_of({}), "a.webp", "no image"},
      {"an image in front", headless, "a.webp", "no header in front"},
      {"two without a header", headless_two, "a.webp", "no header"},
      {"too wide", document_of({{}, {}}, 16384, 10), "a.webp", "16383"},
      {"a still too high", document_of({{1, 16384}}), "a.webp", "16383"},
      {"no canvas", document_of({{}, {}}, 0, 10), "a.webp", "no pixels"},
      {"another extension", document_of({{}, {}}), "a.png", "under this name"},
      {"no extension", document_of({{}, {}}), "a", "under this name"},
  };
  for (Case& c : cases) {
    const testing::ScratchFolder folder;
    std::ofstream(folder / c.name) << "old";
    Recorder recorder;
    EXPECT_FALSE(save_document(c.window, folder / c.name, recorder.host)) << c.what;
    ASSERT_EQ(recorder.messages.size(), 1u) << c.what;
    EXPECT_TRUE(recorder.messages[0].starts_with("There has been an error writing this file.\n")) << c.what;
    EXPECT_NE(recorder.messages[0].find(c.reason), std::string::npos) << recorder.messages[0];
    EXPECT_EQ(bytes_of(folder / c.name), (Bytes{'o', 'l', 'd'})) << c.what;
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 1) << c.what;
  }
}

using NamedBytes = std::pair<std::string, std::string>;

/// The entries that are no image, with their bytes.
std::vector<NamedBytes> others_of(const DocumentWindow& window) {
  std::vector<NamedBytes> others;
  for (std::size_t i = 1; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (record.tag == tag::WEBI) continue;
    const auto raw = raw_payload(record);
    others.emplace_back(tag_letters(record.tag), std::string(raw.begin(), raw.end()));
  }
  return others;
}

std::vector<NamedBytes> sorted(std::vector<NamedBytes> chunks) {
  std::ranges::sort(chunks);
  return chunks;
}

/// The header of a profile for RGB, and some bytes.
std::string rgb_profile() {
  std::string profile(131, '\1');
  return profile.replace(16, 4, "RGB ");
}

DocumentWindow with_others(std::size_t images) {
  DocumentWindow window = document_of(std::vector<Frame>(images));
  const NamedBytes front[] = {{"ICCP", rgb_profile()}, {"a1 b", "odd"}};
  const NamedBytes back[] = {
      {"vlAa", ""}, {"EXIF", std::string("II*\0\x08\0\0\0\0\0", 10)}, {"XMP ", "<x>\r\n</x>"}};
  std::size_t at = 1;
  for (const auto& [name, bytes] : front)
    chunk_list_insert(
        window.list, window.document, at++,
        testing::record_of(read_be32(reinterpret_cast<const std::uint8_t*>(name.data())), bytes));
  for (const auto& [name, bytes] : back)
    chunk_list_append(
        window.list, window.document,
        testing::record_of(read_be32(reinterpret_cast<const std::uint8_t*>(name.data())), bytes));
  return window;
}

TEST_F(WebpDocument, ChunksBesideTheImagesComeBackByteForByte) {
  for (const std::size_t images : {1u, 3u}) {
    DocumentWindow window = with_others(images);
    DocumentWindow again = reopened(window);
    EXPECT_EQ(testing::tags_of(again.list).substr(0, 24),
              "WEBH ICCP a1 b WEBI" + std::string(images > 1 ? " WEBI" : " vlAa"));
    EXPECT_EQ(others_of(again), others_of(window));
    EXPECT_EQ(testing::objections(file_), "");
    const Bytes once = bytes_of(file_);
    ASSERT_TRUE(save_document(again, file_, recorder_.host));
    EXPECT_EQ(bytes_of(file_), once);
    Bytes longer = once;
    longer.push_back('x');
    DocumentWindow with_more;
    ASSERT_TRUE(read_webp(with_more, longer, recorder_.host));
    EXPECT_EQ(recorder_.notes.back(), string_text(StringId::BytesBehindEnd));
  }
}

TEST_F(WebpDocument, WhatTellsOfTheDocumentGoesThroughOtherKindsAndBack) {
  for (const DocumentKind kind : {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING}) {
    const DocumentWindow window = with_others(kind == DocumentKind::PING ? 1 : 2);
    DocumentWindow other, back, read;
    ASSERT_TRUE(convert_document(window, other, kind, recorder_.host));
    const fs::path file = folder_ / testing::kFileNames.at(kind);
    ASSERT_TRUE(save_document(other, file, recorder_.host));
    EXPECT_EQ(testing::objections(file), "");
    ASSERT_TRUE(open_document(read, file, recorder_.host));
    ASSERT_TRUE(convert_document(read, back, DocumentKind::WEBP, recorder_.host));
    std::vector<NamedBytes> expected = others_of(window);
    std::erase_if(expected, [&](const NamedBytes& chunk) {
      return chunk.first == "a1 b" || chunk.first == "vlAa" ||
             (chunk.first == "EXIF" && kind == DocumentKind::MING);
    });
    EXPECT_EQ(sorted(others_of(back)), sorted(expected)) << kind_letters(kind);
  }
}

// ------------------------------------------------------------------------------------------- from other
// kinds

class WebpConversion : public WebpDocument {
 protected:
  DocumentWindow read(const std::vector<testing::ChunkText>& chunks) {
    DocumentWindow window;
    EXPECT_TRUE(read_png(window, png_file(chunks), recorder_.host)) << recorder_.host.take_fault();
    return window;
  }
};

TEST_F(WebpConversion, StillsGetTheirTransparencyApplied) {
  const testing::ChunkText end{"IEND", ""};
  struct Case {
    const char* what;
    std::vector<testing::ChunkText> chunks;
    std::uint32_t bits;
  };
  const Case cases[] = {
      {"palette",
       {{"IHDR", header_payload(5, 4, 2, 3)},
        {"PLTE", "abcdefghi"},
        {"tRNS", "\x70"},
        {"IDAT", zero_image(5, 4, 2, 3)},
        end},
       32},
      {"grey",
       {{"IHDR", header_payload(5, 4, 8, 0)},
        {"tRNS", std::string(2, '\0')},
        {"IDAT", zero_image(5, 4, 8, 0)},
        end},
       32},
      {"grey of another key",
       {{"IHDR", header_payload(5, 4, 8, 0)},
        {"tRNS", std::string("\0\x09", 2)},
        {"IDAT", zero_image(5, 4, 8, 0)},
        end},
       24},
      {"true color",
       {{"IHDR", header_payload(5, 4, 8, 2)},
        {"tRNS", std::string(6, '\0')},
        {"IDAT", zero_image(5, 4, 8, 2)},
        end},
       32},
      {"without", {{"IHDR", header_payload(5, 4, 8, 2)}, {"IDAT", zero_image(5, 4, 8, 2)}, end}, 24},
      {"one bit",
       {{"IHDR", header_payload(5, 4, 1, 3)}, {"PLTE", "abcdef"}, {"IDAT", zero_image(5, 4, 1, 3)}, end},
       24},
  };
  for (const Case& c : cases) {
    DocumentWindow window = read(c.chunks);
    const DocumentWindow again = reopened(window);
    EXPECT_EQ(rgba_of(again, images_of(again).at(0)), rgba_of(window, images_of(window).at(0))) << c.what;
    EXPECT_EQ(header_of(again).bitsPerPixel, c.bits) << c.what;
    EXPECT_EQ(window.document.kind, DocumentKind::PING);
  }
}

TEST_F(WebpConversion, WholeFramesGoOverAsTheyAre) {
  DocumentWindow window = read({{"IHDR", header_payload(4, 4, 8, 2)},
                                {"acTL", be32(2) + be32(0)},
                                {"fcTL", frame_control(0, 4, 4, 0, 0, 1, 10, 1)},
                                {"IDAT", zero_image(4, 4, 8, 2)},
                                {"fcTL", frame_control(1, 4, 4, 0, 0, 1, 10, 2, 1)},
                                {"fdAT", be32(2) + zero_image(4, 4, 8, 2)},
                                {"IEND", ""}});
  DocumentWindow converted;
  ASSERT_TRUE(convert_document(window, converted, DocumentKind::WEBP, recorder_.host));
  EXPECT_EQ(testing::tags_of(converted.list), "WEBH WEBI WEBI");
  EXPECT_TRUE(images_of(converted)[0].handle().shares_with(images_of(window)[0].handle()));
  EXPECT_EQ(frames_of(converted)[0].dispose, 1u);
  EXPECT_EQ(frames_of(converted)[1].dispose, 0u);
  const WebpHeaderFields header = header_of(converted);
  EXPECT_TRUE(header.bitsPerPixel == 24 && header.colorType == 2 && header.frameCount == 2);
}

// -------------------------------------------------------------------------------------------------- hostile

class WebpHostile : public WebpDocument {
 protected:
  Bytes saved(DocumentWindow window) {
    EXPECT_TRUE(save_document(window, file_, recorder_.host));
    return bytes_of(file_);
  }
};

TEST_F(WebpHostile, FramesThatPassTheMemoryOfADocumentAreRefusedBeforeTheyAreDecoded) {
  std::vector<Frame> frames(90, {1, 1});
  Bytes bytes = saved(document_of(frames));
  // 5,000 x 5,000 pixels: 100 MB a frame, 9 GB together.
  const std::uint8_t size[] = {0x87, 0x13, 0, 0x87, 0x13, 0};
  std::ranges::copy(size, bytes.begin() + 24);
  DocumentWindow window;
  EXPECT_FALSE(read_webp(window, bytes, recorder_.host));
  EXPECT_TRUE(window.list.empty());
  EXPECT_EQ(recorder_.host.fault.kind, FaultKind::Limit);
}

TEST_F(WebpHostile, OtherContentIsNamed) {
  const struct {
    Bytes bytes;
    const char* told;
  } cases[] = {
      {{'R', 'I', 'F', 'F', 40, 0, 0, 0, 'A', 'C', 'O', 'N', 'a', 'n', 'i', 'h'},
       "The content is an ANI file."},
      {png_file({{"IHDR", header_payload(1, 1, 8, 2)}}), "The content is a PNG file."},
      {{'R', 'I', 'F', 'F', 4, 0, 0, 0, 'W', 'E', 'B', 'P'}, "the header of a WebP file"},
      {{}, "the header of a WebP file"},
  };
  for (const auto& c : cases) {
    std::ofstream(file_, std::ios::binary)
        .write(reinterpret_cast<const char*>(c.bytes.data()), static_cast<std::streamsize>(c.bytes.size()));
    Recorder recorder;
    DocumentWindow window;
    EXPECT_FALSE(open_document(window, file_, recorder.host));
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_NE(recorder.messages[0].find(c.told), std::string::npos) << recorder.messages[0];
  }
}

TEST_F(WebpHostile, OtherNamesAreReadByContentAndPicturesAreOffered) {
  Recorder recorder;
  for (const DocumentKind kind :
       {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
    DocumentWindow window = testing::small_document(kind, 1), again;
    ASSERT_TRUE(save_document(window, folder_ / testing::kFileNames.at(kind), recorder.host));
    fs::rename(folder_ / testing::kFileNames.at(kind), folder_ / "a.apng");
    EXPECT_TRUE(open_document(again, folder_ / "a.apng", recorder.host));
    EXPECT_EQ(again.document.kind, kind);
  }
  const Picture picture = testing::small_picture(5, 3, 8);
  for (const char* name : {"a.gif", "a.bmp"}) {
    ASSERT_TRUE(GraphicFileWrite((folder_ / name).string(), picture));
    DocumentWindow refused, declined, window;
    EXPECT_FALSE(open_document(refused, folder_ / name, recorder.host));
    EXPECT_EQ(recorder.messages.back().find("corrupted"), std::string::npos) << recorder.messages.back();
    std::size_t answer = 1;
    recorder.host.choose = [&](Choice& choice) {
      choice.chosen = answer;
      return true;
    };
    EXPECT_FALSE(open_document(declined, folder_ / name, recorder.host));
    answer = 0;
    ASSERT_TRUE(open_document(window, folder_ / name, recorder.host));
    recorder.host.choose = {};
    EXPECT_FALSE(window.document.HasFileName);
    EXPECT_TRUE(window.document.dirty);
    EXPECT_EQ(window.document.fileName, folder_ / "a.png");
    EXPECT_EQ(testing::rgba_of(window, testing::images_of(window)[0]), testing::rgba_of(window, picture));
  }
}

}  // namespace
}  // namespace vellum
