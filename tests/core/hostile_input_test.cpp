// Files that were made to harm: cut at every length, changed at every byte, and some built by hand. Whatever
// opens must save, and what was saved must open with the same entries.
#include "core/files/open_document.h"
#include "core/files/read_png.h"
#include "core/files/read_webp.h"
#include "core/files/save_document.h"
#include "core/settings.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::be32;
using testing::ChunkText;
using testing::frame_control;
using testing::header_payload;
using testing::png_file;
using testing::Recorder;
using testing::zero_image;

using Bytes = std::vector<std::uint8_t>;

Bytes small_still() {
  return png_file({{"IHDR", header_payload(3, 2, 2, 3)},
                   {"gAMA", be32(45455)},
                   {"PLTE", std::string("\xFF\0\0\0\xFF\0\0\0\xFF\x10\x20\x30", 12)},
                   {"tRNS", std::string("\x80\xFF", 2)},
                   {"zTXt", std::string("Comment\0\0", 9) + zero_image(1, 30, 8, 0)},
                   {"IDAT", zero_image(3, 2, 2, 3)},
                   {"tEXt", std::string("Title\0small", 11)},
                   {"IEND", ""}});
}

Bytes small_animation() {
  return png_file({{"IHDR", header_payload(2, 2, 8, 6)},
                   {"acTL", be32(2) + be32(0)},
                   {"fcTL", frame_control(0, 2, 2)},
                   {"IDAT", zero_image(2, 2, 8, 6)},
                   {"fcTL", frame_control(1, 1, 1, 1, 1)},
                   {"fdAT", be32(2) + zero_image(1, 1, 8, 6)},
                   {"IEND", ""}});
}

Bytes small_webp(const std::filesystem::path& scratch) {
  DocumentWindow window = testing::small_document(DocumentKind::WEBP, 3, 6);
  Host host;
  EXPECT_TRUE(save_document(window, scratch, host));
  return testing::file_bytes(scratch);
}

/// Whether the bytes open; if so they are saved and opened again.
bool survives(const Bytes& bytes, const std::filesystem::path& scratch) {
  Recorder recorder;
  DocumentWindow window;
  const auto read = scratch.extension() == ".webp" ? read_webp : read_png;
  if (!read(window, bytes, recorder.host, nullptr)) {
    EXPECT_TRUE(recorder.host.has_fault) << "a failure without a reason";
    return false;
  }
  if (!save_document(window, scratch, recorder.host)) {
    EXPECT_FALSE(recorder.messages.empty()) << "a refusal without a message";
    return true;
  }
  DocumentWindow again;
  EXPECT_TRUE(open_document(again, scratch, recorder.host));
  EXPECT_EQ(testing::images_of(window).size(), testing::images_of(again).size());
  return true;
}

class HostileInput : public ::testing::Test {
 protected:
  HostileInput() { settings::PngCompression = 1; }
  ~HostileInput() override { settings::PngCompression = 9; }
  testing::ScratchFolder folder_;
  const std::pair<std::filesystem::path, Bytes> files_[3] = {
      {folder_ / "a.png", small_still()},
      {folder_ / "b.png", small_animation()},
      {folder_ / "c.webp", small_webp(folder_ / "c.webp")}};
};

TEST_F(HostileInput, CutAtEveryLength) {
  for (const auto& [file, whole] : files_) {
    ASSERT_TRUE(survives(whole, file));
    for (std::size_t length = 0; length < whole.size(); ++length)
      EXPECT_FALSE(survives(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)), file))
          << file << " cut at " << length;
  }
}

TEST_F(HostileInput, ChangedAtEveryByte) {
  for (const auto& [file, whole] : files_) {
    std::size_t opened = 0;
    const bool webp = file.extension() == ".webp";
    for (std::size_t at = 0; at < whole.size(); ++at)
      for (const int change : {0x01, 0x80, 0xFF}) {
        if (webp && at >= 25 && at < 30) continue;  // sizes of a canvas stay small
        Bytes damaged(whole);
        damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ change);
        opened += survives(damaged, file);
      }
    EXPECT_GT(opened, webp ? 1 : whole.size() / 4) << "wrong CRCs alone keep no file from opening";
  }
}

struct Refused {
  const char* what;
  std::vector<ChunkText> chunks;
  const char* reason;  ///< part of what is told
};

TEST_F(HostileInput, IsRefusedWithItsReason) {
  const ChunkText end{"IEND", ""};
  const std::string frame = zero_image(2, 2, 8, 2), data = zero_image(2, 2, 8, 2);
  const ChunkText header{"IHDR", header_payload(2, 2, 8, 2)}, control{"acTL", be32(1) + be32(0)};
  const std::vector<Refused> cases = {
      {"no header", {{"IDAT", data}, end}, "first chunk is no header"},
      {"a short header", {{"IHDR", be32(2)}, end}, "length is not that of a header"},
      {"a second header", {header, header, {"IDAT", data}, end}, "second header"},
      {"no pixels", {{"IHDR", header_payload(0, 2, 8, 2)}, end}, "no pixels"},
      {"too many pixels", {{"IHDR", header_payload(1000001, 1, 8, 0)}, {"IDAT", "x"}, end}, "too large"},
      {"three bits", {{"IHDR", header_payload(2, 2, 3, 0)}, end}, "do not exist together"},
      {"a promise of a gigabyte",
       {{"IHDR", header_payload(20000, 20000, 8, 2)}, {"IDAT", data}, end},
       "not enough image data"},
      {"an unended text", {header, {"zTXt", std::string("a\0\0xyz", 6)}, end}, "compressed text is damaged"},
      {"a second palette", {header, {"PLTE", "abc"}, {"PLTE", "abc"}, end}, "second palette"},
      {"a palette of 769 bytes",
       {header, {"PLTE", std::string(769, 'a')}, end},
       "length is not that of a palette"},
      {"a short animation control",
       {header, {"acTL", be32(1)}, {"IDAT", data}, end},
       "length is not that of an animation"},
      {"no frames", {header, control, {"IDAT", data}, end}, "no frames"},
      {"no image", {header, control, end}, "no image"},
      {"a frame outside",
       {header, control, {"fcTL", frame_control(0, 2, 2, 1, 0)}, {"IDAT", data}, end},
       "outside the canvas"},
      {"an offset that overflows",
       {header, control, {"fcTL", frame_control(0, 2, 2, 0xFFFFFFFF, 0)}, {"IDAT", data}, end},
       "outside the canvas"},
      {"a small first frame",
       {header, control, {"fcTL", frame_control(0, 1, 1)}, {"IDAT", data}, end},
       "does not cover"},
      {"a frame without data",
       {header,
        control,
        {"fcTL", frame_control(0, 2, 2)},
        {"IDAT", data},
        {"fcTL", frame_control(1, 2, 2)},
        end},
       "frame has no data"},
      {"data without a frame",
       {header, control, {"IDAT", data}, {"fdAT", be32(0) + data}, end},
       "no frame in front"},
      {"data without a number",
       {header, control, {"fcTL", frame_control(0, 2, 2)}, {"IDAT", data}, {"fdAT", "ab"}, end},
       "sequence number is missing"},
  };
  for (const Refused& refused : cases) {
    Recorder recorder;
    DocumentWindow window;
    EXPECT_FALSE(read_png(window, png_file(refused.chunks), recorder.host)) << refused.what;
    EXPECT_NE(recorder.host.take_fault().find(refused.reason), std::string::npos)
        << refused.what << ": " << recorder.host.fault.reason;
  }
}

TEST_F(HostileInput, TextThatInflatesWithoutEndIsRefused) {
  // 40 MB of zeros in 40 KB, and five texts of 15 MB that pass the limit of the file only together.
  const auto text = [](unsigned megabytes) {
    return std::string("Bomb\0\0", 6) + zero_image(1'000'000 - 1, megabytes, 8, 0);
  };
  for (const std::vector<unsigned>& sizes : {std::vector<unsigned>{40}, {15, 15, 15, 15, 15}}) {
    std::vector<ChunkText> chunks = {{"IHDR", header_payload(1, 1, 8, 0)}};
    for (const unsigned size : sizes) chunks.push_back({"zTXt", text(size)});
    chunks.push_back({"IEND", ""});
    Recorder recorder;
    DocumentWindow window;
    EXPECT_FALSE(read_png(window, png_file(chunks), recorder.host));
    EXPECT_EQ(recorder.host.fault.kind, FaultKind::Limit);  // such a file may be right
    EXPECT_NE(recorder.host.take_fault().find("too long"), std::string::npos);
  }
}

}  // namespace
}  // namespace vellum
