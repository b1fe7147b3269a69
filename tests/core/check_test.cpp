// What a check finds in files with one known fault, what it agrees on with outside judges, and that a repair
// takes away what it says it does.
#include <fstream>

#include "core/check/check_file.h"
#include "core/check/repair_file.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "image/chunk_stream.h"
#include "image/deflate.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::be32;
using testing::ChunkText;
using testing::frame_control;
using testing::header_payload;
using testing::png_file;
using testing::zero_image;

using Bytes = std::vector<std::uint8_t>;
using Chunks = std::vector<ChunkText>;

Bytes::iterator place_of(Bytes& file, std::string_view tag) {
  return std::search(file.begin(), file.end(), tag.begin(), tag.end());
}

std::string rules_of(const FileCheck& check) {
  std::string names;
  for (const Finding& finding : check.findings) names += rule_name(finding.rule) + " ";
  return names;
}

Chunks still() {
  return {{"IHDR", header_payload(3, 2, 2, 3)},
          {"gAMA", be32(45455)},
          {"PLTE", std::string("\xFF\0\0\0\xFF\0\0\0\xFF", 9)},
          {"tRNS", std::string("\x80\xFF", 2)},
          {"IDAT", zero_image(3, 2, 2, 3)},
          {"tEXt", std::string("Title\0small", 11)},
          {"IEND", ""}};
}

Chunks animation() {
  return {{"IHDR", header_payload(2, 2, 8, 6)},
          {"acTL", be32(2) + be32(0)},
          {"fcTL", frame_control(0, 2, 2)},
          {"IDAT", zero_image(2, 2, 8, 6)},
          {"fcTL", frame_control(1, 1, 1, 1, 1)},
          {"fdAT", be32(2) + zero_image(1, 1, 8, 6)},
          {"IEND", ""}};
}

Chunks changed(Chunks chunks, std::size_t at, const ChunkText& by) {
  chunks[at] = by;
  return chunks;
}
Chunks moved(Chunks chunks, std::size_t from, std::size_t to) {
  const ChunkText chunk = chunks[from];
  chunks.erase(chunks.begin() + static_cast<std::ptrdiff_t>(from));
  chunks.insert(chunks.begin() + static_cast<std::ptrdiff_t>(to), chunk);
  return chunks;
}
Chunks without(Chunks chunks, std::size_t at) {
  chunks.erase(chunks.begin() + static_cast<std::ptrdiff_t>(at));
  return chunks;
}

TEST(Check, OneFaultIsToldByItsNameAndRepairedWhereThatIsSaid) {
  struct Case {
    Chunks chunks;
    const char* rules;
  };
  std::string long_image = zero_image(3, 3, 2, 3), cut_image = zero_image(3, 2, 2, 3);
  cut_image.resize(cut_image.size() - 4);
  const Case cases[] = {
      {still(), ""},
      {animation(), ""},
      {changed(still(), 1, {"gAMA", be32(0)}), "payload-invalid "},
      {changed(still(), 1, {"gAMA", "abc"}), "payload-length "},
      {changed(still(), 1, {"gaMA", be32(1)}), "chunk-unknown "},
      {changed(still(), 1, {"GAMA", be32(1)}), "critical-unknown "},
      {changed(still(), 1, {"gAma", be32(1)}), "type-reserved "},
      {changed(still(), 1, {"g?MA", be32(1)}), "type-invalid "},
      {changed(still(), 5, {"gAMA", be32(45455)}), "behind-image second-of-its-kind "},
      {moved(still(), 1, 2), "behind-palette "},
      {moved(still(), 3, 2), "before-palette "},
      {moved(still(), 3, 4), "behind-image "},
      {without(still(), 2), "payload-invalid palette-missing "},
      {without(still(), 4), "image-missing "},
      {without(still(), 6), "end-missing "},
      {without(still(), 0), "header-missing "},
      {changed(still(), 4, {"IDAT", zero_image(3, 1, 2, 3)}), "image-short "},
      {changed(still(), 4, {"IDAT", long_image}), "image-long "},
      {changed(still(), 4, {"IDAT", cut_image}), "image-damaged "},
      {changed(still(), 4, {"IDAT", zero_image(3, 2, 2, 3) + "x"}), "stream-long "},
      {changed(still(), 2, {"PLTE", std::string(15, '\x7F')}), "palette-too-long "},
      {changed(animation(), 1, {"acTL", be32(3) + be32(0)}), "frames-counted-wrong "},
      {changed(animation(), 4, {"fcTL", frame_control(2, 1, 1, 1, 1)}), "sequence-wrong sequence-wrong "},
      {changed(animation(), 4, {"fcTL", frame_control(1, 2, 1, 1, 1)}), "frame-outside image-short "},
      {changed(animation(), 4, {"fcTL", frame_control(1, 1, 1, 1, 1, 1, 10, 3, 2)}),
       "dispose-unknown blend-unknown "},
      {changed(animation(), 5, {"fdAT", be32(2) + "nothing"}), "image-damaged "},
      {without(animation(), 5), "frame-without-data "},
      {without(animation(), 4), "frames-counted-wrong sequence-wrong data-without-frame "},
      {without(animation(), 1), "animation-not-announced "},
      {moved(animation(), 1, 3), "animation-control-late "},
  };
  for (const Case& c : cases) {
    const Bytes file = png_file(c.chunks);
    const FileCheck check = check_file(file);
    EXPECT_EQ(rules_of(check), c.rules);
    const RepairedFile repaired = repair_file(file);
    if (repaired.bytes.empty()) continue;
    for (const Finding& left : check_file(repaired.bytes).findings)
      EXPECT_FALSE(rule(left.rule).repaired()) << c.rules << ": still " << rule_name(left.rule);
  }
}

/// The smallest documents that this program writes, one a kind.
std::vector<Bytes> small_files(const testing::ScratchFolder& folder) {
  std::vector<Bytes> files;
  for (const auto& [kind, name] : testing::kFileNames) {
    DocumentWindow window = testing::small_document(kind, kind == DocumentKind::PING ? 1 : 3, 6);
    Host host;
    EXPECT_TRUE(save_document(window, folder / name, host));
    files.push_back(testing::file_bytes(folder / name));
  }
  return files;
}

/// What a repair gives is right and opens; what could not be repaired gives nothing.
void expect_repaired(const Bytes& file, const testing::ScratchFolder& folder, const std::string& what) {
  const RepairedFile repaired = repair_file(file);
  if (repaired.bytes.empty()) return;
  const FileCheck check = check_file(repaired.bytes);
  for (const Finding& left : check.findings)
    EXPECT_FALSE(rule(left.rule).repaired()) << what << ": still " << finding_text(left);
  if (check.count(Severity::Error) != 0) return;
  const auto name = folder / testing::kFileNames.at(repaired.kind);
  std::ofstream(name, std::ios::binary)
      .write(reinterpret_cast<const char*>(repaired.bytes.data()),
             static_cast<std::streamsize>(repaired.bytes.size()));
  testing::Recorder recorder;
  DocumentWindow window;
  // What was changed may be a size: such files are right, and too large.
  const auto refused_for = [&](const char* reason) {
    return recorder.messages.front().find(reason) != std::string::npos;
  };
  EXPECT_TRUE(open_document(window, name, recorder.host) || refused_for("too large") ||
              refused_for("MaximumDecodedMegabytes"))
      << what << " of " << name << ": " << recorder.messages.front();
}

TEST(Check, WhatWeWriteIsRightAndWhatIsCutOrChangedIsFoundAndRepaired) {
  const testing::ScratchFolder folder;
  for (const Bytes& file : small_files(folder)) {
    EXPECT_EQ(rules_of(check_file(file)), "");
    EXPECT_EQ(repair_file(file).bytes, file);
    for (std::size_t size = 0; size < file.size(); ++size) {
      const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_FALSE(check_file(cut).findings.empty()) << size;
      expect_repaired(cut, folder, "cut at " + std::to_string(size));
    }
    for (std::size_t at = 0; at < file.size(); ++at) {
      Bytes other = file;
      other[at] ^= 0x5A;
      expect_repaired(other, folder, "changed at " + std::to_string(at));
    }
  }
}

TEST(Check, WhatARepairBringsToLightIsRepairedToo) {
  // The image needs more colors than there are, so the palette gets them; then the histogram is too short. It
  // is hidden in a chunk whose length is wrong.
  const Bytes rows = deflate_bytes(std::vector<std::uint8_t>{0, 0, 1, 2, 3}, 6);
  Bytes file = testing::png_file({{"IHDR", testing::header_payload(4, 1, 8, 3)},
                                  {"PLTE", std::string(6, '\x40')},
                                  {"hIST", std::string(4, '\1')},
                                  {"tEXt", std::string("a\0b", 3)},
                                  {"IDAT", {rows.begin(), rows.end()}},
                                  {"IEND", ""}});
  const auto text = place_of(file, "tEXt");
  *(text - 2) = 0x7F;
  const testing::ScratchFolder folder;
  expect_repaired(file, folder, "a histogram");
  const auto mended = repair_file(file).mended;
  EXPECT_TRUE(std::ranges::any_of(mended, [](const Finding& finding) { return finding.tag == tag::hIST; }));
}

TEST(Check, WhatStandsOnceBetweenTheImagesOfAnMngMayStandInsideEachToo) {
  const ChunkText time = {"tIME", std::string("\x07\xEA\1\1\0\0\0", 7)};
  Bytes file = png_file({{"MHDR", be32(3) + be32(2) + be32(100) + std::string(16, '\0')},
                         {"IHDR", header_payload(3, 2, 8, 6)},
                         time,
                         {"IDAT", zero_image(3, 2, 8, 6)},
                         {"IEND", ""},
                         time,
                         {"MEND", ""}});
  std::ranges::copy(kMngSignature, file.begin());
  EXPECT_EQ(rules_of(check_file(file)), "");
}

TEST(Check, APaletteThatImagesInheritGetsTheColorsThatTheyNeed) {
  const Bytes rows = deflate_bytes(std::vector<std::uint8_t>{0, 0, 1, 2, 200}, 6);
  Bytes file = png_file({{"MHDR", be32(4) + be32(1) + be32(100) + std::string(16, '\0')},
                         {"PLTE", std::string(6, '\x40')},
                         {"IHDR", header_payload(4, 1, 8, 3)},
                         {"IDAT", {rows.begin(), rows.end()}},
                         {"IEND", ""},
                         {"MEND", ""}});
  std::ranges::copy(kMngSignature, file.begin());
  EXPECT_EQ(rules_of(check_file(file)), "index-outside ");
  const RepairedFile repaired = repair_file(file);
  EXPECT_EQ(rules_of(check_file(repaired.bytes)), "");
  EXPECT_EQ(repaired.bytes.size(), file.size() + 3 * 199);
}

TEST(Check, AFrameFarAwayMakesNoCanvasThatIsTooLarge) {
  const testing::ScratchFolder folder;
  Bytes file = small_files(folder).back();
  // Without a header the frames make the canvas.
  const auto header = place_of(file, "VP8X"), frame = place_of(file, "ANMF");
  ASSERT_TRUE(header != file.end() && frame != file.end());
  *header = '?';
  std::ranges::copy(std::array<std::uint8_t, 6>{0x60, 0x80, 0, 0x08, 0x93, 0x90}, frame + 8);
  expect_repaired(file, folder, "a frame far away");
  EXPECT_FALSE(repair_file(file).bytes.empty()) << "the others are there";
}

TEST(Check, JudgesOfTheCorpusFindNothingThatWeDoNot) {
  VELLUM_NEEDS_CORPUS();
  const testing::ScratchFolder folder;
  for (const auto& row :
       testing::corpus_rows({"png", "apng", "png-bad", "apng-bad", "webp", "webp-bad", "mng"})) {
    const auto path = testing::corpus_file(row);
    const Bytes file = testing::file_bytes(path);
    const bool webp = row.at("kind").starts_with("webp");
    const auto judge = webp ? testing::run_tool({"webpinfo", path.string()})
                            : testing::run_tool({"pngcheck", "-q", path.string()});
    const FileCheck check = check_file(file);
    const bool objects =
        judge.output.find("ERROR") != std::string::npos || judge.output.find("Error") != std::string::npos;
    if (judge.there && objects) EXPECT_FALSE(check.findings.empty()) << path << judge.output;
    // What decoders make up for, and judges don't look at.
    const auto alone = [](const Finding& finding) {
      return rule(finding.rule).severity == Severity::Error && finding.rule != RuleId::Index_outside &&
             finding.rule != RuleId::Image_short && finding.rule != RuleId::Packed_damaged;
    };
    if (row.at("verdict") == "loads" && !objects)
      EXPECT_TRUE(std::ranges::none_of(check.findings, alone)) << path << ": " << rules_of(check);
    expect_repaired(file, folder, path.string());
  }
}

}  // namespace
}  // namespace vellum
