// The built command-line tool: what it prints, its exit status, and what it leaves on the disk.
#include <sstream>

#include "cli/tool.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

class Tool : public ToolTest {
 protected:
  fs::path animation() { return ToolTest::animation(2, testing::frame_control(1, 2, 1, 2, 1, 1, 0, 1, 1)); }
};

TEST_F(Tool, ListShowsRowsAndJson) {
  const auto rows = vellum({"list", animation()});
  EXPECT_EQ(rows.status, 0);
  EXPECT_NE(rows.output.find("    3: TEXT               tEXt T\u00eftle\n"), std::string::npos)
      << rows.output;
  const auto json = vellum({"list", "--json", animation()});
  const auto document = nlohmann::json::parse(json.output);
  EXPECT_EQ(document["kind"], "APNG");
  EXPECT_EQ(document["width"], 4);
  ASSERT_EQ(document["entries"].size(), 6u);
  EXPECT_EQ(document["entries"][1]["numFrames"], 2);
  const auto expected =
      nlohmann::json::parse(R"({"index": 5, "tag": "IDAT", "size": 48, "label": "IMAGE", "text": "IDAT",
      "width": 2, "height": 1, "x": 2, "y": 1, "delay_ms": 10, "dispose": "background", "blend": "over", "bits": 24,
      "fields": {"x": 2, "y": 1, "delayNum": 1, "delayDen": 0, "rate": "10 ms", "dispose": "Background", "blend": "Over"}})");
  EXPECT_EQ(document["entries"][4], expected);
}

TEST_F(Tool, SaveAndFramesWriteFiles) {
  const fs::path out = folder_ / "out.png";
  ASSERT_EQ(vellum({"save", animation(), out}).status, 0);
  EXPECT_EQ(vellum({"list", out}).output, vellum({"list", animation()}).output);
  ASSERT_EQ(vellum({"frames", out, folder_ / "frames"}).status, 0);
  EXPECT_EQ(testing::rgba_by_libpng(folder_ / "frames/frame_00000.png").size(), 4u * 3 * 4);
  EXPECT_EQ(testing::rgba_by_libpng(folder_ / "frames/frame_00001.png").size(), 2u * 1 * 4);
  EXPECT_FALSE(fs::exists(folder_ / "frames/frame_00002.png"));
}

TEST_F(Tool, ConvertsKindAndColorsInOneGo) {
  const fs::path out = folder_ / "c.mng";
  ASSERT_EQ(
      vellum({"convert", animation(), out, "--kind", "mng", "--color", "palette", "--colors", "3"}).status,
      0);
  const auto document = nlohmann::json::parse(vellum({"list", "--json", out}).output);
  EXPECT_EQ(document["kind"], "MING");
  std::vector<int> depths;
  for (const auto& entry : document["entries"])
    if (entry.contains("delay_ms")) depths.push_back(entry["bits"]);
  EXPECT_EQ(depths, (std::vector<int>{1, 1}));
}

TEST_F(Tool, SavesOverItsOwnInput) {
  const fs::path file = animation();
  const auto before = vellum({"list", "--json", file}).output;
  ASSERT_EQ(vellum({"save", file, file}).status, 0);
  EXPECT_EQ(vellum({"list", "--json", file}).output, before);
}

TEST_F(Tool, WarnsOfWrongCrcsUnlessToldNotTo) {
  const fs::path file = animation();
  {
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(29);
    stream.put('?');
  }
  EXPECT_NE(
      vellum({"list", file}).output.find("vellum: warning: An incorrect CRC value has been encountered."),
      std::string::npos);
  for (const auto& words :
       {std::vector<std::string>{"--quiet", "list", file}, {"--set", "WarnBadFileCRC=0", "list", file}}) {
    const auto result = vellum(words);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.find("warning"), std::string::npos);
  }
}

TEST_F(Tool, ConfigListsGetsAndSets) {
  const fs::path file = folder_ / "Tarnwick/Vellumcraft 15.ini";
  const auto output = [&](std::vector<std::string> words) {
    words.insert(words.begin(), "config");
    const auto result = vellum(words);
    EXPECT_EQ(result.status, 0) << result.output;
    return result.output;
  };
  EXPECT_EQ(output({"get", "PngCompression"}), "9\n");
  EXPECT_EQ(output({"set", "PngCompression", "3"}) + output({"set", "ColorBalRed", "-10"}), "");
  EXPECT_EQ(output({"set", "ForRent", "a = b"}), "");
  EXPECT_EQ(output({"get", "ColorBalRed"}), "-10\n");
  EXPECT_EQ(output({"get", "ForRent"}), "a = b\n");
  const std::string list = output({"list"});
  EXPECT_TRUE(list.starts_with("AddInstructionsToNew = 1\nAllowAdvancedPalettes = 0\n")) << list;
  EXPECT_NE(list.find("\nPngCompression = 3  (default: 9)\n"), std::string::npos);
  const auto json = nlohmann::json::parse(output({"list", "--json"}));
  EXPECT_EQ(json["PngCompression"], nlohmann::json::parse(R"({"value": 3, "default": 9})"));
  EXPECT_EQ(json["ForRent"]["default"], "This space for rent...");
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  EXPECT_NE(text.str().find("\nColorBalRed = 4294967286\n"), std::string::npos);
}

TEST_F(Tool, CommandsUseTheFileAndTheRunOverrulesIt) {
  ASSERT_EQ(vellum({"config", "set", "APNGOpen", "0"}).status, 0);
  const auto kind = [&](std::vector<std::string> words) {
    for (const std::string& word : {std::string("list"), std::string("--json"), animation().string()})
      words.push_back(word);
    return nlohmann::json::parse(vellum(words).output)["kind"];
  };
  EXPECT_EQ(kind({}), "PING");
  EXPECT_EQ(kind({"--set", "APNGOpen=1"}), "APNG");
  EXPECT_EQ(kind({"--config", folder_ / "none.ini"}), "APNG");
  ASSERT_EQ(vellum({"--set", "APNGOpen=1", "config", "set", "UndoLevels", "4"}).status, 0);
  EXPECT_EQ(vellum({"config", "get", "APNGOpen"}).output, "0\n");
}

TEST_F(Tool, NewWritesEveryKind) {
  struct Case {
    std::vector<std::string> options;
    const char* name;
    const char* rows;
  };
  const Case cases[] = {
      {{"--kind", "png", "--size", "7x5", "--color", "grey", "--bits", "16"},
       "a.png",
       "IHDR (7 x 5, 65,536 colors)"},
      {{"--kind", "png", "--color", "palette", "--bits", "4"}, "b.png", "PLTE (16 entries)"},
      {{"--kind", "apng", "--color", "color-alpha", "--plays", "3"}, "c.png", "acTL (3 loops)"},
      {{"--kind", "mng", "--size", "8x9"}, "d.mng", "LOOP #0"},
      {{"--kind", "webp", "--size", "8x9"}, "e.webp", "WEBI"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> words = {"new", folder_ / c.name};
    words.insert(words.end(), c.options.begin(), c.options.end());
    EXPECT_EQ(vellum(words).status, 0) << c.name;
    EXPECT_NE(vellum({"list", folder_ / c.name}).output.find(c.rows), std::string::npos) << c.name;
    EXPECT_EQ(testing::objections(folder_ / c.name), "");
  }
}

TEST_F(Tool, EditAppliesItsOperationsInTheirOrder) {
  const fs::path out = folder_ / "out.png";
  const auto tags = [&](const fs::path& file) {
    std::string text;
    const auto document = nlohmann::json::parse(vellum({"list", "--json", file}).output);
    for (const auto& entry : document["entries"])
      text += (text.empty() ? "" : " ") + entry["tag"].get<std::string>();
    return text;
  };
  ASSERT_EQ(tags(animation()), "IHDR acTL tEXt IDAT IDAT IEND");
  struct Case {
    std::vector<std::string> operations;
    const char* tags;
  };
  const Case cases[] = {
      {{"--insert", "gAMA@5:2.2", "--delete", "3"}, "IHDR acTL gAMA IDAT IDAT IEND"},
      {{"--delete", "3", "--insert", "gAMA@4:1.8"}, "IHDR acTL gAMA IDAT IDAT IEND"},
      {{"--insert", "abCd@1:hex:00FF", "--move", "3@5"}, "IHDR acTL tEXt IDAT abCd IDAT IEND"},
      {{"--insert", "tEXt@3:Title=a:b@c", "--move", "4@3", "--delete", "4"}, "IHDR acTL tEXt IDAT IDAT IEND"},
      {{"--insert", "IDAT@5:" + animation().string()}, "IHDR acTL tEXt IDAT IDAT IDAT IEND"},
      {{"--insert", "abCd@1:hex:00FF"}, "IHDR acTL abCd tEXt IDAT IDAT IEND"},
      {{"--insert", "pHYs@5:hex:000000010000000101"}, "IHDR acTL tEXt pHYs IDAT IDAT IEND"},
      {{"--set-field", "4.delayNum=7", "--set-field", "2.numPlays=3"}, "IHDR acTL tEXt IDAT IDAT IEND"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> words = {"edit", animation(), out};
    words.insert(words.end(), c.operations.begin(), c.operations.end());
    const auto result = vellum(words);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(tags(out), c.tags) << c.operations[1];
    EXPECT_EQ(testing::objections(out), "");
  }
  EXPECT_NE(vellum({"list", out}).output.find("tEXt"), std::string::npos);
}

TEST_F(Tool, EditSetsFieldsAndDumpsPayloads) {
  const fs::path out = folder_ / "out.png", bytes = folder_ / "bytes";
  const auto result = vellum({"edit", animation(), out, "--set-field", "4.delayNum=7", "--set-field",
                              "2.numPlays=3", "--dump", "2=" + bytes.string()});
  ASSERT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(testing::file_text(bytes), std::string("\0\0\0\2\0\0\0\3", 8))
      << "frames and plays, as they are now";
  const auto listed = vellum({"list", "--json", out});
  EXPECT_NE(listed.output.find("\"numPlays\": 3"), std::string::npos) << listed.output;
  fs::remove(bytes);
  EXPECT_EQ(vellum({"edit", out, "--dump", "2=" + bytes.string()}).status, 0) << "needs no file to write";
  EXPECT_TRUE(fs::exists(bytes));
  EXPECT_EQ(vellum({"edit", out}).status, 2);
}

TEST_F(Tool, WhatJsonShowsIsWhatCanBeSet) {
  const std::string text = "Comment=\u0416 " + std::string(5000, 'x');
  const std::vector<std::string> everywhere = {"tEXt@1:" + text, "tEXt@1:Title=Two", "zTXt@1", "iTXt@1",
                                               "tIME@1"};
  const std::vector<std::string> png = {"gAMA@1", "cHRM@1", "sRGB@1",         "cICP@1", "mDCV@1",
                                        "cLLI@1", "sBIT@1", "bKGD@1",         "pHYs@1", "sPLT@1",
                                        "eXIf@1", "oFFs@1", "abCd@1:hex:00FF"};
  struct Case {
    const char* name;
    std::vector<std::string> made, inserted;
  };
  Case cases[] = {
      {"rgb.png", {"--kind", "png"}, png},
      {"colors.png", {"--kind", "png", "--color", "palette"}, {"tRNS@1", "hIST@1", "bKGD@1", "sBIT@1"}},
      {"a.png", {"--kind", "apng"}, png},
      {"a.mng",
       {"--kind", "mng"},
       {"PNGI@2:" + animation().string(), "DEFI@3:2,3", "TERM@1", "BACK@1", "MAGN@3:hex:00010001020002",
        "SHOW@3", "MOVE@3"}},
      {"a.webp", {"--kind", "webp"}, {}}};
  for (Case& c : cases) {
    const std::string file = folder_ / c.name, again = folder_ / (std::string("again-") + c.name);
    std::vector<std::string> words = {"--set", "AddInstructionsToNew=0", "--set", "IdentifyFiles=0", "new",
                                      file};
    words.insert(words.end(), c.made.begin(), c.made.end());
    ASSERT_EQ(vellum(words).status, 0);
    const bool texts = file.find("webp") == std::string::npos;
    if (texts) c.inserted.insert(c.inserted.end(), everywhere.begin(), everywhere.end());
    words = {"--set", "AutoUpdateTime=0", "edit", file, file};
    for (const std::string& chunk : c.inserted) words.insert(words.end(), {"--insert", chunk});
    const auto inserted = vellum(words);
    ASSERT_EQ(inserted.status, 0) << inserted.output;
    EXPECT_EQ(inserted.output.find("iTXt chunk") != std::string::npos, texts) << inserted.output;
    const auto document = nlohmann::json::parse(vellum({"list", "--json", file}).output);
    words = {"--set", "AutoUpdateTime=0", "edit", file, again};
    bool whole = false;
    for (const auto& entry : document["entries"])
      for (const auto& [name, value] : entry["fields"].items()) {
        const std::string typed = value.is_string() ? value.get<std::string>() : value.dump();
        whole = whole || typed == text.substr(8);
        words.insert(words.end(), {"--set-field", entry["index"].dump() + "." + name + "=" + typed});
      }
    EXPECT_EQ(whole, texts) << c.name;
    EXPECT_GT(words.size(), texts ? 40u : 8u) << c.name;
    const auto set = vellum(words);
    ASSERT_EQ(set.status, 0) << set.output;
    EXPECT_TRUE(std::ranges::equal(testing::file_text(file), testing::file_text(again))) << c.name;
  }
}

TEST_F(Tool, ProfilesGoInAndOutAndNotesAreTold) {
  std::string profile(200, '\0');
  profile.replace(16, 4, "RGB ").replace(36, 4, "acsp");
  std::ofstream(folder_ / "p.icc", std::ios::binary) << profile;
  const std::string name = (folder_ / "p.icc").string(), out = folder_ / "out.png",
                    back = folder_ / "back.icc";
  ASSERT_EQ(vellum({"edit", animation(), out, "--insert", "iCCP@1:Mine=@" + name}).status, 0);
  ASSERT_EQ(vellum({"edit", out, "--dump", "4.profile=" + back}).status, 0);
  EXPECT_EQ(testing::file_text(back), profile);
  std::ofstream(out, std::ios::binary | std::ios::app) << "rest";
  const std::string note = "behind the end";
  const auto listed = vellum({"list", "--json", out});
  EXPECT_NE(vellum({"list", out}).output.find(note), std::string::npos) << "on the terminal";
  EXPECT_NE(listed.output.substr(listed.output.find("\"notes\"")).find(note), std::string::npos);
}

TEST_F(Tool, PlayTellsStepsAndFailsWhereItCanNotWrite) {
  const auto file = animation();
  EXPECT_EQ(vellum({"play", file, "--steps", "3"}).output,
            "0\t4\t0\t0\t100\n1\t5\t1\t100\t10\n2\t4\t0\t0\t100\n");
  EXPECT_EQ(vellum({"play", file}).output, "0\t4\t0\t0\t100\n1\t5\t1\t100\t10\n");
  std::ofstream(folder_ / "taken") << "x";
  struct Case {
    std::vector<std::string> words;
    int status;
  };
  const Case cases[] = {
      {{"play", file, "--png", folder_ / "taken"}, 1},
      {{"play", file, "--png", folder_ / "new/deep", "--steps", "1"}, 0},
  };
  for (const Case& c : cases) EXPECT_EQ(vellum(c.words).status, c.status) << "case " << &c - cases;
  EXPECT_TRUE(fs::exists(folder_ / "new/deep/frame_00000.png"));
  const auto colored = vellum(
      {"--set", "DefaultBackgroundColour=255", "play", file, "--png", folder_ / "red", "--steps", "1"});
  EXPECT_EQ(colored.status, 0) << colored.output;
}

TEST_F(Tool, WhoLooksAtImagesWhileUnpackingThemTellsOfDamageWhatOpeningTellsAndWritesNothingBefore) {
  // Large enough that stills, too, are checked by being unpacked.
  constexpr unsigned kSize = 1500;
  const std::string whole = testing::zero_image(kSize, kSize, 8, 6);
  const std::string rows_missing = testing::zero_image(kSize, kSize - 1, 8, 6), cut = whole.substr(0, 40);
  std::string damaged = whole;
  damaged[whole.size() / 2] ^= 0x40;
  struct Case {
    unsigned frames;  ///< 0: a still
    std::string last;
    int status;
    const char* told;
  };
  const Case cases[] = {
      {4, whole, 0, ""},
      {4, damaged, 1, "the image data is damaged"},
      {4, cut, 1, "there is not enough image data"},
      {4, rows_missing, 0, "Frame 4 has less image data"},
      {0, whole, 0, ""},
      {0, damaged, 1, "the image data is damaged"},
      {0, rows_missing, 1, "there is not enough image data"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.told);
    std::vector<testing::ChunkText> chunks{{"IHDR", testing::header_payload(kSize, kSize, 8, 6)}};
    if (c.frames == 0) chunks.push_back({"IDAT", c.last});
    for (unsigned i = 0; i < c.frames; ++i) {
      if (i == 0) chunks.push_back({"acTL", testing::be32(c.frames) + testing::be32(1)});
      chunks.push_back({"fcTL", testing::frame_control(i == 0 ? 0 : 2 * i - 1, kSize, kSize)});
      if (i == 0)
        chunks.push_back({"IDAT", whole});
      else
        chunks.push_back({"fdAT", testing::be32(2 * i) + (i + 1 == c.frames ? c.last : whole)});
    }
    chunks.push_back({"IEND", ""});
    const auto bytes = testing::png_file(chunks);
    const std::string file = folder_ / "large.png";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    const auto played = vellum({"play", file}), listed = vellum({"list", file});
    const std::size_t steps = c.status != 0 ? 0 : std::max(c.frames, 1u);
    EXPECT_EQ(played.status, c.status) << played.output;
    EXPECT_EQ(listed.status, c.status);
    EXPECT_NE(played.output.find(c.told), std::string::npos) << played.output;
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(played.output, '\t')), 4 * steps);
    if (c.status != 0) EXPECT_EQ(played.output, listed.output);
    const fs::path small = folder_ / "small.png";
    fs::remove(small);
    const auto resized = vellum({"resize", file, small, "--percent", "2"});
    EXPECT_EQ(resized.status, c.status) << resized.output;
    EXPECT_EQ(fs::exists(small), c.status == 0);
    const std::size_t at = resized.output.find(c.told);
    EXPECT_NE(at, std::string::npos) << resized.output;
    if (*c.told) EXPECT_EQ(resized.output.find(c.told, at + 1), std::string::npos) << "told twice";
    if (c.status != 0) EXPECT_EQ(resized.output, listed.output);
  }
}

}  // namespace
}  // namespace vellum
