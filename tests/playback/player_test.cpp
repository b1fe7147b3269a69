// The player's states and its timing, with a clock of our own.
#include "playback/player.h"

#include "playback/interlace_passes.h"
#include "support/documents.h"

namespace vellum {
namespace {

DocumentWindow webp_of(const std::vector<std::uint32_t>& delays, std::uint32_t plays = 1) {
  DocumentWindow window;
  window.document.kind = DocumentKind::WEBP;
  window.document.fileName = "/somewhere/100% walk.webp";
  ChunkRecord header;
  header.tag = tag::WEBH;
  header.webpHeader = {4, 3, plays, 0, 6, 32, 0};
  chunk_list_append(window.list, window.document, header);
  for (const std::uint32_t delay : delays) {
    ChunkRecord record;
    record.tag = tag::WEBI;
    record.data = PictureCreate(4, 3, nullptr, 24).handle();
    record.webpImage = {4, 3, 0, 0, delay, 24, 0, 2};
    chunk_list_append(window.list, window.document, record);
  }
  return window;
}

TEST(Player, ChargesDrawingAgainstTheDelayUnlessItTookLonger) {
  struct Case {
    std::uint32_t delay;
    std::int64_t drawing;
    std::uint32_t wait;
  };
  const Case cases[] = {
      {100, 0, 100}, {100, 30, 70}, {100, 99, 1}, {100, 100, 100}, {100, 250, 100},          {0, 0, 1},
      {0, 40, 1},    {1, 0, 1},     {1, 1, 1},    {50, -20, 50},   {3'600'000, 1, 3'599'999}};
  for (const Case& c : cases) {
    const DocumentWindow window = webp_of({c.delay, 1});
    std::uint64_t now = 1000;
    Player player(window.list, window.document, [&] { return now; });
    player.play();
    const auto wait = player.tick([&](const ShownFrame&) { now += static_cast<std::uint64_t>(c.drawing); });
    EXPECT_EQ(wait, c.wait) << c.delay << " ms, drawn in " << c.drawing;
  }
}

TEST(Player, GoesThroughItsStates) {
  const DocumentWindow window = webp_of({10, 20, 30});
  std::vector<std::uint32_t> shown;
  const auto paint = [&](const ShownFrame& frame) { shown.push_back(frame.ordinal); };
  Player player(window.list, window.document, [] { return 0; });
  EXPECT_EQ(player.state(), PlayerState::Opening);
  EXPECT_FALSE(player.tick(paint)) << "nothing moves before Play";
  player.play();
  EXPECT_FALSE(player.can_play());
  EXPECT_TRUE(player.can_pause());
  EXPECT_EQ(player.tick(paint), 10u);
  EXPECT_EQ(player.title(100), "View 100% walk.webp [4 x 3]");
  EXPECT_EQ(player.title(50), "View 100% walk.webp [4 x 3] - (resized to 50 %)");
  EXPECT_EQ(player.progress_text(), "1 of 3 frames - 0 ms");
  player.pause();
  EXPECT_EQ(player.state(), PlayerState::Paused);
  EXPECT_EQ(player.title(100), "Block 2");
  EXPECT_FALSE(player.tick(paint)) << "a beat that was on its way";
  player.step_forward(paint);
  player.step_forward(paint);
  EXPECT_EQ(player.progress_text(), "3 of 3 frames - 30 ms");
  player.step_back(paint);
  EXPECT_EQ(player.state(), PlayerState::Paused);
  player.play();
  EXPECT_EQ(player.tick(paint), 30u);
  EXPECT_FALSE(player.tick(paint));
  EXPECT_EQ(player.state(), PlayerState::Ended);
  EXPECT_TRUE(player.can_play());
  EXPECT_EQ(player.title(100), "Block 4") << "the row of the last frame";
  player.play();
  EXPECT_EQ(player.tick(paint), 10u) << "Play begins anew";
  player.rewind(paint);
  EXPECT_EQ(player.state(), PlayerState::Paused);
  EXPECT_EQ(shown, (std::vector<std::uint32_t>{0, 1, 2, 1, 2, 0, 0}));
  player.close();
  player.play();
  player.step_forward(paint);
  EXPECT_EQ(player.state(), PlayerState::Closed);
  EXPECT_EQ(shown.size(), 7u);
}

TEST(Player, NothingFollowsOneImageThatStaysAsItIs) {
  for (const auto& [delay, plays, beats] :
       {std::tuple(0u, 0u, false), {0u, 1u, false}, {50u, 0u, false}, {50u, 2u, true}}) {
    const DocumentWindow window = webp_of({delay}, plays);
    Player player(window.list, window.document, [] { return 0; });
    player.play();
    EXPECT_EQ(player.tick({}).has_value(), beats) << delay << " ms, " << plays << " plays";
    EXPECT_EQ(player.state(), beats ? PlayerState::Playing : PlayerState::Ended);
    EXPECT_TRUE(player.shown().picture);
  }
}

TEST(Player, ADocumentWithoutImagesIsOverAtOnce) {
  const DocumentWindow window = webp_of({}, 0);
  Player player(window.list, window.document, [] { return 0; });
  player.play();
  EXPECT_FALSE(player.tick({}));
  EXPECT_EQ(player.state(), PlayerState::Ended);
  player.step_back({});
  player.rewind({});
  EXPECT_EQ(player.state(), PlayerState::Ended);
}

TEST(Player, SeeksInSlicesAndGoesOnOnAnotherGround) {
  const DocumentWindow window = webp_of(std::vector<std::uint32_t>(100, 1000));
  std::uint64_t now = 0;
  // Whoever looks at the clock finds that 5 ms have passed: a slice holds some frames.
  Player player(window.list, window.document, [&] { return now += 5; });
  std::vector<std::uint32_t> shown;
  const auto paint = [&](const ShownFrame& frame) { shown.push_back(frame.ordinal); };
  player.play();
  player.tick(paint);
  player.seek(70);
  std::size_t slices = 0;
  while (player.is_waiting() && ++slices < 1000) player.tick(paint);
  EXPECT_GT(slices, 5u);
  EXPECT_LT(slices, 70u);
  EXPECT_EQ(shown, (std::vector<std::uint32_t>{0, 70}));
  EXPECT_EQ(player.state(), PlayerState::Paused);
  player.seek(4'000'000'000);
  while (player.is_waiting()) player.tick(paint);
  EXPECT_EQ(shown.back(), 99u);
  player.seek(10);
  player.step_back(paint);
  EXPECT_FALSE(player.is_waiting()) << "a step gives up what was sought";
  EXPECT_EQ(shown.back(), 98u);
  player.play();
  player.set_ground({Ground::Kind::Clear, 0});
  std::optional<std::uint32_t> wait;
  for (int i = 0; i < 1000 && player.is_waiting(); ++i) wait = player.tick(paint);
  EXPECT_EQ(player.shown().picture.bits(), 32u);
  EXPECT_EQ(player.state(), PlayerState::Playing);
  ASSERT_TRUE(wait);
  EXPECT_GT(*wait, 900u);
  EXPECT_TRUE(player.tick(paint));
  EXPECT_EQ(shown.back(), 99u);
  player.set_ground({Ground::Kind::Solid, 0x123456});
  player.step_back(paint);
  EXPECT_TRUE(player.is_waiting()) << "what lies in front is composed in slices";
  while (player.is_waiting()) player.tick(paint);
  EXPECT_EQ(shown.back(), 98u);
  EXPECT_EQ(player.state(), PlayerState::Paused);
}

TEST(Player, SpeedShortensDelays) {
  struct Case {
    int changes;
    std::uint32_t delay, wait;
  };
  const Case cases[] = {{0, 100, 100}, {2, 100, 50}, {-1, 300, 400},   {99, 100, 6},
                        {99, 1, 1},    {-99, 0, 1},  {-99, 100, 1000}, {-99, 4'000'000'000, 4'294'967'295},
                        {4, 80, 10},   {3, 50, 12}};
  for (const Case& c : cases) {
    const DocumentWindow window = webp_of({c.delay, 1});
    Player player(window.list, window.document, [] { return 0; });
    for (int i = 0; i < std::abs(c.changes); ++i) player.change_speed(c.changes < 0 ? -1 : 1);
    player.play();
    EXPECT_EQ(player.tick({}), c.wait) << c.changes << " steps, " << c.delay << " ms";
  }
}

/// A picture whose pixels tell their place, after each pass, by the rule that each pixel shows the nearest
/// one that has come to its upper left.
TEST(Player, PassesOfAnInterlacedStill) {
  constexpr std::uint32_t kWide[] = {8, 4, 4, 2, 2, 1, 1}, kHigh[] = {8, 8, 4, 4, 2, 2, 1};
  for (const std::uint32_t bits : {1u, 8u, 24u}) {
    const Picture picture = testing::small_picture(13, 11, bits);
    for (unsigned pass = 1; pass <= 7; ++pass) {
      const Picture seen = picture_after_pass(picture, pass);
      for (std::uint32_t y = 0; y < 11; ++y)
        for (std::uint32_t x = 0; x < 13; ++x)
          ASSERT_EQ(PictureGetPixel(seen, x, y),
                    PictureGetPixel(picture, x - x % kWide[pass - 1], y - y % kHigh[pass - 1]))
              << bits << " bits, pass " << pass << ", " << x << ", " << y;
    }
  }
  EXPECT_FALSE(picture_after_pass({}, 3));
}

}  // namespace
}  // namespace vellum
