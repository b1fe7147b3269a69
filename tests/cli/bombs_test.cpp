// Small files that ask for much: what is below 100 kB takes neither 1 GiB of memory nor 10 s of the
// processors, whatever is done with it. Each is made here.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "cli/tool.h"
#include "image/deflate.h"

namespace vellum {
namespace {

using testing::be16;
using testing::be32;

constexpr std::size_t kSmall = 100'000;

std::string le(std::uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i & 255);
  return text;
}

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

// --- WebP ---

std::string riff_chunk(const std::string& tag, const std::string& data) {
  return tag + le(data.size(), 4) + data + std::string(data.size() % 2, '\0');
}

/// A lossless image of one color: sizes, no transform, no cache, five codes of one symbol, which take no
/// bits.
std::string one_color(std::uint32_t width, std::uint32_t height) {
  const std::uint64_t bits = (width - 1) | std::uint64_t{height - 1} << 14;
  std::uint64_t codes = 0;
  int at = 3;  // behind the flags of transform, cache and meta codes
  for (int i = 0; i < 5; ++i, at += 4) codes |= std::uint64_t{1} << at;
  return riff_chunk("VP8L", "\x2F" + le(bits, 4) + le(codes, 8));
}

std::string webp(const std::string& chunks) { return "RIFF" + le(chunks.size() + 4, 4) + "WEBP" + chunks; }

std::string webp_animation(std::uint32_t canvas, std::uint32_t frame, std::size_t count) {
  const std::string one = riff_chunk("ANMF", le(0, 6) + le(frame - 1, 3) + le(frame - 1, 3) + le(10, 3) +
                                                 le(0, 1) + one_color(frame, frame));
  return webp(riff_chunk("VP8X", le(2, 4) + le(canvas - 1, 3) + le(canvas - 1, 3)) +
              riff_chunk("ANIM", le(0, 6)) + repeated(one, count));
}

// --- PNG and MNG ---

std::string text_of(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

/// Rows of zeros as short as deflate has them.
std::string zeros(std::size_t bytes) {
  const auto packed = deflate_bytes(std::vector<std::uint8_t>(bytes), 9);
  return {packed.begin(), packed.end()};
}

std::string png(std::uint32_t side, unsigned depth, unsigned type, unsigned interlace, std::size_t bytes) {
  return text_of(testing::png_file({{"IHDR", testing::header_payload(side, side, depth, type, interlace)},
                                    {"IDAT", zeros(bytes)},
                                    {"IEND", ""}}));
}

std::string animated_png(std::uint32_t side, unsigned frames) {
  const std::size_t row = (side + 7) / 8 + 1;
  const std::string data = zeros(row * side);
  std::vector<testing::ChunkText> chunks = {{"IHDR", testing::header_payload(side, side, 1, 0)},
                                            {"acTL", be32(frames) + be32(0)}};
  for (unsigned i = 0; i < frames; ++i) {
    chunks.push_back({"fcTL", testing::frame_control(i == 0 ? 0 : 2 * i - 1, side, side)});
    chunks.push_back(i == 0 ? testing::ChunkText{"IDAT", data}
                            : testing::ChunkText{"fdAT", be32(2 * i) + data});
  }
  chunks.push_back({"IEND", ""});
  return text_of(testing::png_file(chunks));
}

std::string mng(std::uint32_t canvas) {
  std::string file =
      text_of(testing::png_file({{"MHDR", be32(canvas) + be32(canvas) + be32(1000) + repeated(be32(0), 4)},
                                 {"IHDR", testing::header_payload(1, 1, 8, 2)},
                                 {"IDAT", testing::zero_image(1, 1, 8, 2)},
                                 {"IEND", ""},
                                 {"MEND", ""}}));
  return "\x8AMNG" + file.substr(4);
}

std::string texts(std::size_t count) {
  std::vector<testing::ChunkText> chunks = {{"IHDR", testing::header_payload(1, 1, 8, 2)}};
  const std::string text = "k" + std::string(2, '\0') + zeros(std::size_t{15} << 20);
  for (std::size_t i = 0; i < count; ++i) chunks.push_back({"zTXt", text});
  chunks.push_back({"IDAT", testing::zero_image(1, 1, 8, 2)});
  chunks.push_back({"IEND", ""});
  return text_of(testing::png_file(chunks));
}

// --- others ---

/// A progressive JPEG whose scans hold nothing.
std::string jpeg(std::uint32_t side, unsigned components, std::size_t scans) {
  std::string parts, scan_parts;
  for (unsigned i = 1; i <= components; ++i) parts += static_cast<char>(i) + std::string("\x11", 1) + '\0';
  std::string table(16, '\0');
  table[0] = 1;
  const std::string quantities = std::string(1, '\0') + std::string(64, '\1');
  std::string file = std::string("\xFF\xD8") + "\xFF\xDB" + be16(67) + quantities + "\xFF\xC2" +
                     be16(8 + 3 * components) + "\x08" + be16(side) + be16(side) +
                     static_cast<char>(components) + parts;
  for (const char kind : {'\0', '\x10'}) file += std::string("\xFF\xC4") + be16(20) + kind + table + '\0';
  std::string dc = std::string("\xFF\xDA") + be16(6 + 2 * components) + static_cast<char>(components);
  for (unsigned i = 1; i <= components; ++i) dc += static_cast<char>(i) + std::string(1, '\0');
  file += dc + std::string(3, '\0');
  const std::string ac = std::string("\xFF\xDA") + be16(8) + "\1\1" + std::string(1, '\0') + "\1\x3F" + '\0';
  return file + repeated(ac, scans) + "\xFF\xD9";
}

std::string bmp(std::uint32_t side) {
  return "BM" + le(1082, 4) + le(0, 4) + le(1078, 4) + le(40, 4) + le(side, 4) + le(side, 4) + le(1, 2) +
         le(8, 2) + le(1, 4) + std::string(1024 + 20, '\0') + std::string("\0\1", 2);
}

std::string gif(std::uint32_t screen) {
  return "GIF89a" + le(screen, 2) + le(screen, 2) + "\x80" + le(0, 2) + std::string(6, '\x7F') + "," +
         le(0, 4) + le(1, 2) + le(1, 2) + le(0, 1) + "\2\2" + "\x44\x01" + le(0, 1) + ";";
}

std::string tga(std::uint32_t side) {
  return le(0, 2) + "\x0A" + le(0, 9) + le(side, 2) + le(side, 2) + "\x18" + le(0, 1) +
         repeated(
             "\xFF"
             "abc",
             64);
}

std::string pcx(std::uint32_t side) {
  return "\x0A\x05\x01\x08" + le(0, 4) + le(side - 1, 2) + le(side - 1, 2) + std::string(53, '\0') + "\3" +
         le(side, 2) + std::string(60, '\0') + std::string(600, '\xFF');
}

struct Bomb {
  const char* name;
  std::string bytes;
  std::vector<std::vector<std::string>> commands;  ///< IN and OUT are the file and a folder for results
  bool refused;                                    ///< each says why, and exits with 1
};

std::vector<Bomb> bombs() {
  const std::vector<std::string> list = {"list", "IN"}, check = {"check", "IN"}, play = {"play", "IN"},
                                 build = {"build", "IN", "IN", "-o", "OUT/o.png"},
                                 small = {"build", "IN", "-o", "OUT/o.png"},
                                 shown = {"play", "IN", "--steps", "3"},
                                 import = {"import-gif", "IN", "OUT/o.png"},
                                 to_webp = {"convert", "IN", "OUT/o.webp", "--kind", "webp"};
  return {
      {"still.webp", webp(one_color(16383, 16383)), {list, build}, true},
      {"still.webp", webp(one_color(8000, 8000)), {list, check}, false},
      {"canvas.webp", webp_animation(16383, 1, 2), {list, play}, true},
      {"canvas.webp", webp_animation(5700, 1, 6), {list, shown, check}, false},
      {"frames.webp", webp_animation(1500, 1, 1000), {list}, true},
      {"frames.webp", webp_animation(1000, 1, 1000), {list}, false},
      {"whole.webp", webp_animation(4000, 4000, 60), {list, check}, false},
      {"rows.png", png(4900, 8, 6, 0, std::size_t{19601} * 4900), {list, check}, false},
      {"deep.png", png(3480, 16, 6, 1, std::size_t{97'000'000}), {list, check}, false},
      {"wide.png", png(20000, 1, 0, 0, std::size_t{2501} * 20000), {to_webp}, true},
      {"canvas.png", animated_png(20000, 1), {list, shown}, true},
      {"canvas.png", animated_png(5700, 6), {list, shown}, false},
      {"canvas.mng", mng(30000), {list, play}, true},
      {"canvas.mng", mng(5700), {list, shown}, false},
      {"texts.png", texts(6), {list}, true},
      {"texts.png", texts(4), {list, check}, false},
      {"wide.jpg", jpeg(65500, 4, 1), {build, list}, true},
      {"deep.jpg", jpeg(7800, 4, 3), {build}, true},
      {"scans.jpg", jpeg(5000, 3, 499), {build}, true},
      {"scans.jpg", jpeg(4000, 3, 60), {small}, false},
      {"runs.bmp", bmp(40000), {build, list}, true},
      {"screen.gif", gif(65535), {build, import}, true},
      {"screen.gif", gif(6000), {import}, false},
      {"runs.tga", tga(65535), {build}, true},
      {"runs.pcx", pcx(65535), {build}, true},
  };
}

struct Cost {
  int status = 0;
  long kilobytes = 0;
  double seconds = 0;
  std::string told;
};

/// Runs the tool with `words`; the kernel ends it behind 20 s of the processors: where others keep them busy,
/// what takes 10 s takes up to twice as long.
Cost cost_of(const std::vector<std::string>& words, const std::filesystem::path& told) {
  std::vector<std::string> all = words;
  all.insert(all.begin(), (testing::program_folder() / "vellum").string());
  std::vector<char*> arguments;
  for (std::string& word : all) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const rlimit seconds{20, 20};
    setrlimit(RLIMIT_CPU, &seconds);
    if (!freopen("/dev/null", "w", stdout) || !freopen(told.c_str(), "w", stderr)) _exit(126);
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  Cost cost;
  rusage usage{};
  wait4(child, &cost.status, 0, &usage);
  cost.kilobytes = usage.ru_maxrss;
  for (const timeval& time : {usage.ru_utime, usage.ru_stime})
    cost.seconds += static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  cost.told = testing::file_text(told);
  return cost;
}

class Bombs : public ToolTest {};

TEST_F(Bombs, TakeLittleMemoryAndTime) {
  constexpr long kMost = 1 << 20;  // kilobytes
  for (const Bomb& bomb : bombs()) {
    ASSERT_LT(bomb.bytes.size(), kSmall) << bomb.name;
    const auto file = folder_ / bomb.name;
    std::ofstream(file, std::ios::binary) << bomb.bytes;
    for (std::vector<std::string> words : bomb.commands) {
      std::string line;
      for (std::string& word : words) {
        if (word == "IN") word = file.string();
        if (word.starts_with("OUT")) word = folder_.path().string() + word.substr(3);
        line += word.substr(word.rfind('/') + 1) + ' ';
      }
      const Cost cost = cost_of(words, folder_ / "told");
      std::printf("%-44s %7zu bytes %5ld MB %6.2f s  %s", line.c_str(), bomb.bytes.size(),
                  cost.kilobytes >> 10, cost.seconds, cost.told.empty() ? "\n" : cost.told.c_str());
      EXPECT_TRUE(WIFEXITED(cost.status)) << line << "was ended behind 20 s: " << cost.told;
      EXPECT_EQ(WIFEXITED(cost.status) && WEXITSTATUS(cost.status) == 1, bomb.refused) << line << cost.told;
      EXPECT_EQ(bomb.refused && cost.told.empty(), false) << line << "is refused without a word";
      EXPECT_LT(cost.kilobytes, kMost) << line;
    }
  }
}

TEST_F(Bombs, ASettingLiftsTheLimitOrLowersIt) {
  const auto file = folder_ / "a.webp";
  std::ofstream(file, std::ios::binary) << webp(one_color(9000, 9000));
  EXPECT_NE(vellum({"list", file}).status, 0);
  EXPECT_EQ(vellum({"--set", "MaximumDecodedMegabytes=2000", "list", file}).status, 0);
  std::ofstream(file, std::ios::binary) << webp(one_color(1000, 1000));
  EXPECT_EQ(vellum({"list", file}).status, 0);
  EXPECT_NE(vellum({"--set", "MaximumDecodedMegabytes=1", "list", file}).status, 0);
}

}  // namespace
}  // namespace vellum
