// The commands about whole animations, over the built tool.
#include "cli/tool.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class AnimationTool : public ToolTest {
 protected:
  fs::path animation() { return ToolTest::animation(3, testing::frame_control(3, 2, 1, 2, 1)); }

  json properties(const fs::path& file) {
    const auto result = vellum({"properties", file, "--json"});
    EXPECT_EQ(result.status, 0) << result.output;
    return json::parse(result.output);
  }
  std::vector<int> column(const fs::path& file, const char* name) {
    std::vector<int> values;
    const json all = properties(file);
    for (const auto& frame : all["frames"]) values.push_back(frame[name]);
    return values;
  }
};

TEST_F(AnimationTool, PropertiesTellTheFileAndItsLights) {
  const fs::path file = folder_ / "b.png";
  ASSERT_EQ(vellum({"save", animation(), file}).status, 0);
  const json p = properties(file);
  EXPECT_EQ(p["kind"], "APNG");
  EXPECT_EQ(p["running_time_ms"], 300);
  EXPECT_EQ(p["file_size"], fs::file_size(file)) << "what it would be written as is what it is";
  EXPECT_EQ(p["lights"], json::parse(R"({"canvas": "green", "memory": "green", "file": "green"})"));
  EXPECT_EQ(p["frames"][2]["x"], 2);
  const auto tight = vellum(
      {"--set", "PropertiesDimensionYellow=2", "--set", "PropertiesDimensionRed=3", "properties", file});
  EXPECT_NE(tight.output.find("Canvas:       4 x 3  [red]\n"), std::string::npos) << tight.output;
  const auto sorted = vellum({"--set", "PropertiesSort=4", "properties", file, "--json"});
  EXPECT_EQ(json::parse(sorted.output)["frames"][0]["number"], 3);
}

TEST_F(AnimationTool, ManageDoesWhatItsOptionsSay) {
  struct Case {
    std::vector<std::string> options;
    const char* column;
    std::vector<int> values;
  };
  const Case cases[] = {
      {{"--delay", "40"}, "delay_ms", {40, 40, 40}},
      {{"--delay", "1/8", "--frames", "2-3"}, "delay_ms", {100, 125, 125}},
      {{"--rate", "50"}, "delay_ms", {20, 20, 20}},
      {{"--scale-delay", "150", "--frames", "1,3"}, "delay_ms", {150, 100, 150}},
      {{"--add-delay", "-130", "--frames", "2"}, "delay_ms", {100, 0, 100}},
      {{"--total", "1000"}, "delay_ms", {333, 334, 333}},
      {{"--delay", "7", "--every", "2"}, "delay_ms", {100, 7, 100}},
      {{"--delay", "7", "--frames", "2", "--invert"}, "delay_ms", {7, 100, 7}},
      {{"--align", "bottom", "--frames", "3"}, "y", {0, 0, 2}},
      {{"--move", "-1,1", "--frames", "3"}, "x", {0, 0, 1}},
      {{"--position", "0,2", "--frames", "3"}, "y", {0, 0, 2}},
      {{"--delete", "--frames", "2"}, "width", {4, 2}},
      {{"--duplicate", "--frames", "3"}, "width", {4, 4, 2, 2}},
      {{"--move-up", "--frames", "3"}, "width", {4, 2, 4}},
  };
  for (const Case& c : cases) {
    std::vector<std::string> words = {"manage", animation(), folder_ / "out.png"};
    words.insert(words.end(), c.options.begin(), c.options.end());
    const auto result = vellum(words);
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(column(folder_ / "out.png", c.column), c.values) << c.options[0];
  }
}

TEST_F(AnimationTool, ManageSetsPlaysDisposalAndChunks) {
  const fs::path out = folder_ / "out.png";
  ASSERT_EQ(vellum({"manage", animation(), out, "--plays", "4", "--dispose", "previous", "--blend", "over",
                    "--frames", "2", "--only-images"})
                .status,
            0);
  const json p = properties(out);
  EXPECT_EQ(p["plays"], 4);
  EXPECT_EQ(p["frames"][1]["dispose"], "previous");
  EXPECT_EQ(p["frames"][1]["blend"], "over");
  EXPECT_EQ(p["frames"][0]["dispose"], "none");
  EXPECT_EQ(vellum({"list", out}).output.find("TEXT"), std::string::npos);
}

TEST_F(AnimationTool, StripAndUnstripAreTheReverseOfEachOther) {
  const fs::path strip = folder_ / "strip.png", again = folder_ / "again.png";
  ASSERT_EQ(vellum({"strip", animation(), strip, "--columns", "2"}).status, 0);
  EXPECT_EQ(testing::rgba_by_libpng(strip).size(), 8u * 6 * 4);
  const auto result = vellum({"unstrip", strip, again, "--cell", "4x3", "--kind", "apng", "--delay", "30"});
  ASSERT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(column(again, "delay_ms"), (std::vector<int>{30, 30, 30, 30}));
  EXPECT_EQ(vellum({"list", again}).output.find("TEXT"), std::string::npos);
  const auto cut = vellum({"unstrip", strip, again, "--cell", "5x3", "--kind", "apng"});
  EXPECT_EQ(cut.status, 0);
  EXPECT_NE(cut.output.find("2 images inserted; 2 incomplete cells left out"), std::string::npos)
      << cut.output;
  for (const auto& [kind, name] : {std::pair("mng", "s.mng"), {"webp", "s.webp"}}) {
    ASSERT_EQ(vellum({"unstrip", strip, folder_ / name, "--cell", "4x3", "--kind", kind}).status, 0) << kind;
    EXPECT_EQ(column(folder_ / name, "delay_ms"), (std::vector<int>{100, 100, 100, 100})) << kind;
  }
}

TEST_F(AnimationTool, ResizeScalesFramesAndTellsWrongUsage) {
  const fs::path in = animation(), out = folder_ / "resized.png";
  struct Case {
    std::vector<std::string> options;
    int status, width, height;
  };
  const Case cases[] = {{{"--percent", "50"}, 0, 2, 2},
                        {{"--percent", "200,100"}, 0, 8, 3},
                        {{"--size", "10x5"}, 0, 10, 5},
                        {{"--width", "8"}, 0, 8, 6},
                        {{"--height", "6", "--filter", "mitchell", "--blur", "1.5"}, 0, 8, 6},
                        {{"--width", "5", "--height", "7", "--no-antialias"}, 0, 5, 7}};
  for (const Case& c : cases) {
    std::vector<std::string> words{"resize", in, out};
    words.insert(words.end(), c.options.begin(), c.options.end());
    const auto result = vellum(words);
    EXPECT_EQ(result.status, c.status) << ::testing::PrintToString(c.options) << result.output;
    if (c.status != 0) continue;
    const auto list = json::parse(vellum({"list", out, "--json"}).output);
    EXPECT_EQ(list["width"], c.width) << ::testing::PrintToString(c.options);
    EXPECT_EQ(list["height"], c.height) << ::testing::PrintToString(c.options);
  }
}

TEST_F(AnimationTool, PaletteTakesBuiltInComputedAndFilesColors) {
  const fs::path in = animation(), out = folder_ / "palette.png", file = folder_ / "colors.gpl";
  for (const std::vector<std::string>& options : {std::vector<std::string>{"--id", "0"},
                                                  {"--colors", "16", "--sketch", "--fifteen-bits"},
                                                  {"--id", "6", "--dither", "--fast"}}) {
    std::vector<std::string> words{"palette", in, out};
    words.insert(words.end(), options.begin(), options.end());
    const auto result = vellum(words);
    ASSERT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(testing::objections(out), "");
    EXPECT_NE(vellum({"list", out}).output.find("PLTE"), std::string::npos);
  }
  EXPECT_EQ(vellum({"palette", out, "--export", file}).status, 0);
  std::ifstream text(file);
  std::string first;
  std::getline(text, first);
  EXPECT_EQ(first, "GIMP Palette");
  EXPECT_EQ(vellum({"palette", in, out, "--file", file}).status, 0);
  EXPECT_EQ(vellum({"palette", in, out, "--file", in}).status, 0) << "the colors of a picture";
}

TEST_F(AnimationTool, WizardTellsWhatItLeavesOutAndWritesAllOrNothing) {
  const std::string one = animation(), bad = folder_ / "bad.gif", out = folder_ / "o.mng";
  std::ofstream(bad) << "GIF89a";
  const auto told =
      vellum({"wizard", "-o", out, one, bad, one, "--delay", "40", "--palette", "dither", "--no-loop"});
  EXPECT_EQ(told.status, 0) << told.output;
  EXPECT_NE(told.output.find("Left out: bad.gif"), std::string::npos) << told.output;
  EXPECT_EQ(column(out, "delay_ms"), std::vector<int>(2, 40));
  EXPECT_EQ(properties(out)["plays"], 1);
  for (const auto& [options, status] :
       std::vector<std::pair<std::vector<std::string>, int>>{{{one, bad, one, "--strict"}, 1},
                                                             {{bad, bad}, 1},
                                                             {{one}, 2},
                                                             {{one, one, "--delay", "32761"}, 2},
                                                             {{one, one, "--palette", "7"}, 2},
                                                             {{one, one, "--kind", "webp"}, 2}}) {
    std::vector<std::string> words = {"wizard", "-o", folder_ / "none.mng"};
    words.insert(words.end(), options.begin(), options.end());
    EXPECT_EQ(vellum(words).status, status) << ::testing::PrintToString(options);
    EXPECT_FALSE(fs::exists(folder_ / "none.mng"));
  }
}

}  // namespace
}  // namespace vellum
