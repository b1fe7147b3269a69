// The order in which frames play: each case is a list of entries in short form and the images that are found.
#include "playback/frame_walk.h"

#include <set>
#include <sstream>

#include "core/settings.h"
#include "playback/settings.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::be32;
using testing::record_of;

/// "I" an image, "L0:3" a LOOP of level 0 and count 3, "E0" its ENDL, "T2" a TERM of 2 iterations, "x" text.
ChunkRecord entry_of(const std::string& word) {
  const auto number = [&](std::size_t at) { return static_cast<std::uint32_t>(std::stoul(word.substr(at))); };
  ChunkRecord record;
  if (word[0] == 'L')
    record =
        record_of(tag::LOOP, std::string(1, static_cast<char>(number(1))) + be32(number(word.find(':') + 1)));
  if (word[0] == 'I') record.tag = tag::PNGI;
  if (word[0] == 'x') record = record_of(tag::tEXt, "Title");
  if (word[0] == 'E') record = record_of(tag::ENDL, std::string(1, static_cast<char>(number(1))));
  if (word[0] == 'T') record = record_of(tag::TERM, std::string("\3\0", 2) + be32(0) + be32(number(1)));
  return record;
}

DocumentWindow mng_of(const std::string& words) {
  DocumentWindow window;
  window.document.kind = DocumentKind::MING;
  ChunkRecord header;
  header.tag = tag::MHDR;
  chunk_list_append(window.list, window.document, header);
  std::istringstream in(words);
  for (std::string word; in >> word;) chunk_list_append(window.list, window.document, entry_of(word));
  return window;
}

/// The first images that are found, by their indexes; "." behind them when the animation is over.
std::string walked(FrameWalk& walk, const DocumentWindow& window, std::size_t most = 20) {
  std::string text;
  for (std::size_t i = 0; i < most; ++i) {
    const auto found = next_image(walk, window.list, window.document.kind);
    if (!found) return text + ".";
    text += std::to_string(*found) + ' ';
  }
  return text;
}

struct WalkCase {
  const char* words;
  const char* images;
};

TEST(FrameWalk, FollowsLoopsAndRepeats) {
  const WalkCase cases[] = {
      {"", "."},
      {"x x", "."},
      {"I I I", "1 2 3 ."},
      {"L0:1 I E0", "2 ."},
      {"L0:3 I x I E0 I", "2 4 2 4 2 4 6 ."},
      {"L0:2 L1:3 I E1 E0", "3 3 3 3 3 3 ."},
      // A loop of no rounds goes to the end of its own level, or of the list.
      {"I L0:0 I L1:1 I E1 E0 I", "1 8 ."},
      {"I L0:0 I I", "1 ."},
      // An end without a beginning, and one of another level: the innermost mark is dropped.
      {"I E0 I", "1 3 ."},
      {"L0:2 L1:2 I E7 I E0 I", "3 5 3 5 7 ."},
      // What is left open at the end stops playing, even with repeats left.
      {"T3 L0:2 I", "3 ."},
      {"T0 I I", "2 3 ."},
      {"T2 I I", "2 3 2 3 2 3 ."},
      {"I T1 I", "1 3 3 ."},
      // Rounds that show nothing would never end.
      {"I T9 x", "1 ."},
      {"I L0:2147483647 x E0 I", "1 ."},
      {"I L0:5000000 x E0 I", "1 5 ."},
      {"L0:2147483647 L1:0 I E1 E0", "."},
  };
  for (const WalkCase& c : cases) {
    const DocumentWindow window = mng_of(c.words);
    FrameWalk walk = begin_walk(window.list, window.document);
    EXPECT_EQ(walked(walk, window), c.images) << c.words;
    EXPECT_EQ(walked(walk, window), ".") << c.words << ": over is over";
    EXPECT_FALSE(walk.repeats) << c.words;
  }
}

TEST(FrameWalk, LoopsForEverAndSaysSo) {
  const DocumentWindow window = mng_of("L0:2147483647 I I E0 I");
  FrameWalk walk = begin_walk(window.list, window.document);
  EXPECT_EQ(walked(walk, window, 2), "2 3 ");
  EXPECT_FALSE(walk.repeats);
  EXPECT_EQ(walked(walk, window, 3), "2 3 2 ");
  EXPECT_TRUE(walk.repeats);
}

TEST(FrameWalk, MarksBeyondTheStackAreLost) {
  std::string words;
  for (int i = 0; i < 2000; ++i) words += "L" + std::to_string(i % 200) + ":2 ";
  const DocumentWindow window = mng_of(words + "I");
  FrameWalk walk = begin_walk(window.list, window.document);
  EXPECT_EQ(walked(walk, window), "2001 .");
  EXPECT_LT(walk.stack.size(), 1024u);
}

TEST(FrameWalk, PlaysOfAnimatedPngAndWebpAreRoundsFromTheFirstEntry) {
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::WEBP})
    for (const std::uint32_t plays : {0u, 1u, 3u}) {
      DocumentWindow window;
      window.document.kind = kind;
      ChunkRecord header, control, image;
      header.tag = kind == DocumentKind::APNG ? tag::IHDR : tag::WEBH;
      control.tag = kind == DocumentKind::APNG ? tag::acTL : tag::tEXt;
      image.tag = kind == DocumentKind::APNG ? tag::IDAT : tag::WEBI;
      control.numPlays = header.webpHeader.loopCount = plays;
      for (const ChunkRecord& record : {header, control, image, image})
        chunk_list_append(window.list, window.document, record);
      FrameWalk walk = begin_walk(window.list, window.document);
      const std::string expected = plays == 0 ? "2 3 2 3 2 3 2 " : plays == 1 ? "2 3 ." : "2 3 2 3 2 3 .";
      EXPECT_EQ(walked(walk, window, 7), expected);
      EXPECT_EQ(walk.repeats, plays == 0);
    }
}

TEST(FrameWalk, StepsBackAlongTheListAndRewindsWithItsLoops) {
  const DocumentWindow window = mng_of("T1 L0:2 I x I E0 I");
  FrameWalk walk = begin_walk(window.list, window.document);
  EXPECT_EQ(walked(walk, window, 2), "3 5 ");
  step_walk_back(walk, window.list, window.document.kind);
  EXPECT_EQ(walked(walk, window, 1), "3 ");
  step_walk_back(walk, window.list, window.document.kind);
  EXPECT_EQ(walked(walk, window, 1), "3 ") << "the first one stays";
  rewind_walk(walk, window.list, window.document);
  EXPECT_EQ(walked(walk, window), "3 5 3 5 7 3 5 3 5 7 .");
  step_walk_back(walk, window.list, window.document.kind);
  EXPECT_EQ(walked(walk, window, 1), "5 ") << "in front of the frame shown last";
}

TEST(FrameWalk, ATermOfTheLargestCountHasNoEnd) {
  const DocumentWindow window = mng_of("T2147483647 I");
  FrameWalk walk = begin_walk(window.list, window.document);
  EXPECT_EQ(walked(walk, window, 4), "2 2 2 2 ");
  EXPECT_TRUE(walk.repeats);
}

/// Where playing meets an image first, a walk straight to it stands too, and goes on alike.
TEST(FrameWalk, StraightToAnImage) {
  for (const char* words :
       {"I x I I", "T2 I L0:3 I x I E0 I", "L0:2 L1:3 I E1 I E0 I", "I L0:0 I E0 I L0:2 I E0"}) {
    const DocumentWindow window = mng_of(words);
    FrameWalk played = begin_walk(window.list, window.document);
    std::set<std::size_t> seen;
    std::vector<std::size_t> order;
    while (const auto found = next_image(played, window.list, window.document.kind)) {
      if (!seen.insert(*found).second) continue;
      std::vector<std::size_t> passed;
      FrameWalk straight = walk_to(window.list, window.document, *found, passed);
      EXPECT_EQ(passed, order) << words;
      EXPECT_EQ(next_image(straight, window.list, window.document.kind), *found) << words;
      order.push_back(*found);
      if (seen.size() == 1) {
        FrameWalk same = played;
        EXPECT_EQ(walked(straight, window), walked(same, window)) << words;
      }
    }
  }
  const DocumentWindow skipped = mng_of("I L0:0 I E0 I");
  std::vector<std::size_t> passed;
  FrameWalk walk = walk_to(skipped.list, skipped.document, 3, passed);
  EXPECT_EQ(walked(walk, skipped), "3 5 .") << "an image in a loop of no rounds";
}

TEST(FrameWalk, DeepAndWildLoopsComeToAnEnd) {
  std::string deep, wild;
  for (int i = 0; i < 2000; ++i) deep += "L" + std::to_string(i % 200) + ":1 ";
  for (int i = 0; i < 2000; ++i) wild += "L0:2147483647 E1 L3:1 E0 ";
  deep += "I ";
  for (int i = 2000; i-- > 0;) deep += "E" + std::to_string(i % 200) + " ";
  for (const std::string& words : {deep + "I", wild + "I"}) {
    const DocumentWindow window = mng_of(words);
    FrameWalk walk = begin_walk(window.list, window.document);
    std::size_t images = 0;
    while (images < 100 && next_image(walk, window.list, window.document.kind)) ++images;
    EXPECT_GE(images, 1u);
    EXPECT_LT(images, 100u);
  }
}

}  // namespace
}  // namespace vellum
