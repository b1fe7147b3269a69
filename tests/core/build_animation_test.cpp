// The three calls that build an animation, read a second time: what each leaves in the list.
#include "core/build/build_animation.h"

#include <gtest/gtest.h>

#include "core/model/frame_values.h"
#include "core/model/framing.h"
#include "core/settings.h"
#include "image/picture_operations.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum {
namespace {

using testing::small_picture;
using testing::tags_of;

constexpr std::uint32_t kApng = 0, kMng = 1, kWebp = 2;

/// A whole build of pictures with these depths; null options.
DocumentWindow built(std::uint32_t kind, std::int32_t iterations, const std::vector<std::uint32_t>& depths,
                     std::int32_t transparent = -1) {
  DocumentWindow window;
  EXPECT_TRUE(BeginAnimation(window, iterations, 0, kind));
  for (std::size_t i = 0; i < depths.size(); ++i)
    EXPECT_NE(AddFrame(window, small_picture(6, 4, depths[i]), transparent, nullptr, 120, 0, 0,
                       static_cast<std::uint32_t>(i), nullptr),
              0u);
  EXPECT_TRUE(EndAnimation(window, iterations));
  return window;
}

TEST(BuildAnimation, EntriesHeaderAndFramesAreThoseOfTheKind) {
  struct Case {
    std::uint32_t kind;
    std::int32_t iterations;
    std::vector<std::uint32_t> depths;
    std::int32_t transparent;
    const char* tags;
    unsigned type, depth;  ///< of the header
  };
  const Case cases[] = {
      {kApng, 0, {24, 24}, -1, "IHDR acTL IDAT IDAT IEND", 2, 8},
      {kApng, -5, {32}, -1, "IHDR acTL IDAT IEND", 6, 8},
      {kApng, 3, {8, 8}, -1, "IHDR PLTE acTL IDAT IDAT IEND", 3, 8},
      {kApng, 0, {4}, 2, "IHDR PLTE tRNS acTL IDAT IEND", 3, 4},
      {kApng, 0, {1}, 2, "IHDR PLTE acTL IDAT IEND", 3, 1},  // there is no entry 2
      {kApng, 0, {24}, 0xFFFFFF, "IHDR acTL IDAT IEND", 2, 8},
      {kMng, 0, {24, 8}, -1, "MHDR LOOP PNGI PNGI ENDL MEND", 0, 0},
      {kMng, 77, {32}, -1, "MHDR LOOP PNGI ENDL MEND", 0, 0},
      {kMng, kNoLoop, {4}, 1, "MHDR PNGI MEND", 0, 0},
      {kWebp, 4, {8, 24}, -1, "WEBH WEBI WEBI", 3, 8},
      {kWebp, -1, {24}, -1, "WEBH WEBI", 2, 24},
      {kWebp, 0, {32}, -1, "WEBH WEBI", 6, 32},
  };
  for (const Case& c : cases) {
    const DocumentWindow window = built(c.kind, c.iterations, c.depths, c.transparent);
    const auto what = ::testing::Message()
                      << c.kind << ", " << c.iterations << ", " << c.depths[0] << " bits";
    EXPECT_EQ(tags_of(window.list), c.tags) << what;
    EXPECT_EQ(window.document.caret, 0) << what;
    EXPECT_TRUE(window.document.dirty) << what;
    const Extent size = document_size(window.list, window.document);
    EXPECT_TRUE(size.width == 6 && size.height == 4) << what;
    const ChunkRecord& header = window.list.record(0);
    const auto plays = static_cast<std::uint32_t>(std::max(c.iterations, 0));
    if (c.kind == kApng) {
      EXPECT_TRUE(header.colorType == c.type && header.bitDepth == c.depth) << what;
      EXPECT_EQ(window.list.record(chunk_find_first(window.list, tag::acTL)).numPlays, plays) << what;
      EXPECT_EQ(window.list.record(chunk_find_first(window.list, tag::acTL)).numFrames, c.depths.size())
          << what;
      if (c.type == 3) EXPECT_EQ(window.list.record(1).size, 3 << c.depth) << what;
    } else if (c.kind == kWebp) {
      EXPECT_TRUE(header.webpHeader.colorType == c.type && header.webpHeader.bitsPerPixel == c.depth) << what;
      EXPECT_EQ(header.webpHeader.loopCount, plays) << what;
    } else {
      EXPECT_EQ(header.ticksPerSecond, 1000u) << what;
      const std::size_t loop = chunk_find_first(window.list, tag::LOOP);
      if (loop != kNoEntry) EXPECT_EQ(payload_be32(window.list.record(loop), 1), 0x7FFFFFFFu) << what;
    }
    std::size_t next = 0;
    for (std::size_t i = 0; i < window.list.size(); ++i) {
      const ChunkRecord& record = window.list.record(i);
      if (!is_image_entry(window.document.kind, record.tag)) continue;
      const std::uint32_t bits = c.depths[next++];
      EXPECT_FALSE(record.description.empty()) << what;
      if (c.kind == kApng) {
        EXPECT_TRUE(record.frameControl.delayNum == 120 && record.frameControl.delayDen == 1000) << what;
        EXPECT_EQ(record.frameControl.blend, bits == 32 ? 1 : 0) << what;
        EXPECT_EQ(record.frameControl.dispose, 0) << what;
      } else if (c.kind == kWebp) {
        EXPECT_EQ(record.webpImage.delay, 120u) << what;
        EXPECT_GE(picture_of(record).bits(), 24u) << what;
      } else {
        const std::uint32_t flags = CRF_IHDR | CRF_IDAT | CRF_FRAM | CRF_DEFI |
                                    (bits <= 8 ? std::uint32_t{CRF_PLTE} : 0) |
                                    (c.transparent >= 0 ? std::uint32_t{CRF_TRNS} : 0);
        EXPECT_EQ(record.flags, flags) << what;
        EXPECT_EQ(from_file_order(record.image->framBlock.interframeDelay), 120u) << what;
        EXPECT_EQ(record.image->framBlock.framingMode, c.transparent == -1 ? 1 : 3) << what;
        EXPECT_EQ(record.image->defiBytes, 12u) << what;
      }
    }
  }
}

TEST(BuildAnimation, TransparencyIsATableOrAColorKey) {
  const auto trans = [](const DocumentWindow& window, std::size_t entry) {
    const ChunkRecord& record = window.list.record(entry);
    return std::vector<std::uint8_t>(record.image->trans.begin(),
                                     record.image->trans.begin() + record.image->transBytes);
  };
  const std::vector<std::uint8_t> entry = {255, 255, 255, 0};
  EXPECT_EQ(trans(built(kMng, kNoLoop, {8}, 3), 1), entry);
  EXPECT_EQ(trans(built(kMng, kNoLoop, {24}, 0x332211), 1),
            (std::vector<std::uint8_t>{0, 0x11, 0, 0x22, 0, 0x33}));
  const DocumentWindow apng = built(kApng, 0, {8}, 3);
  const auto payload = raw_payload(apng.list.record(2));
  EXPECT_EQ(std::vector<std::uint8_t>(payload.begin(), payload.end()), entry);
}

TEST(BuildAnimation, OptionsGoBeforeWhatFollowsFromThePicture) {
  DocumentWindow window;
  ASSERT_TRUE(BeginAnimation(window, 0, 0, kApng));
  const AddFrameOptions source{kFrameDispose | kFrameBlend, 1, 0};
  ASSERT_EQ(AddFrame(window, small_picture(6, 4, 32), -1, nullptr, 70'000, 0, 0, 0, &source), 3u);
  const FrameControl& control = window.list.record(2).frameControl;
  EXPECT_TRUE(control.blend == 0 && control.dispose == 1);
  EXPECT_TRUE(control.delayNum == 7000 && control.delayDen == 100) << "no 16 bits hold 70000";
  const AddFrameOptions front{kFrameAtIndex, 0, 0, 2};
  EXPECT_EQ(AddFrame(window, small_picture(2, 2, 32), -1, nullptr, 1, 4, 2, 1, &front), 3u)
      << "in front of it";
  EXPECT_EQ(window.list.record(2).frameControl.xOffset, 4u);
  DocumentWindow mng;
  ASSERT_TRUE(BeginAnimation(mng, 0, 0, kMng));
  const AddFrameOptions keeps{kFrameTransparency, 0, 0, 0, false};
  ASSERT_NE(AddFrame(mng, small_picture(6, 4, 8), 1, nullptr, 1, -3, -2, 0, &keeps), 0u);
  EXPECT_EQ(mng.list.record(2).image->framBlock.framingMode, 1);
  EXPECT_EQ(GetFrameOffset(mng.list.record(2), DocumentKind::MING).x, -3);
}

TEST(BuildAnimation, WhatFailsLeavesEverythingAsItWas) {
  DocumentWindow window;
  window.document.fileName = "/somewhere/name.gif";
  EXPECT_FALSE(BeginAnimation(window, 0, 0, 3));
  EXPECT_FALSE(EndAnimation(window, 0)) << "nothing was begun";
  EXPECT_TRUE(window.list.empty() && window.document.kind == DocumentKind::None);
  EXPECT_EQ(window.document.fileName, "/somewhere/name.gif");
  ASSERT_TRUE(BeginAnimation(window, 0, 0, kWebp));
  EXPECT_EQ(window.document.fileName, "/somewhere/name.webp");
  const AddFrameOptions at{kFrameAtIndex, 0, 0, 0};
  EXPECT_EQ(AddFrame(window, Picture(), -1, nullptr, 1, 0, 0, 0, &at), 0u);
  EXPECT_EQ(AddFrame(window, small_picture(2, 2, 24), -1, nullptr, 1, 16'382, 0, 0, &at), 0u)
      << "too far right";
  EXPECT_EQ(window.document.caret, 1);
  EXPECT_EQ(tags_of(window.list), "WEBH");
}

TEST(BuildAnimation, LaterIndexedFramesTakeTheColorsOfTheDocumentWhereTheyCan) {
  Palette first{}, swapped{}, other{};
  for (std::size_t i = 0; i < 6; ++i) first[i] = static_cast<std::uint8_t>(10 * i + 10);
  std::copy_n(first.begin(), 3, swapped.begin() + 3);
  std::copy_n(first.begin() + 3, 3, swapped.begin());
  other[0] = 99;
  const auto frame = [](const Palette& palette) {
    Picture picture = PictureCreate(3, 2, &palette, 1);
    PicturePutPixel(picture, 0, 0, 1);
    return picture;
  };
  DocumentWindow window;
  ASSERT_TRUE(BeginAnimation(window, 0, 0, kApng));
  for (std::uint32_t i = 0; const Palette* palette : {&first, &swapped, &other})
    ASSERT_NE(AddFrame(window, frame(*palette), -1, nullptr, 1, 0, 0, i++, nullptr), 0u);
  const auto images = testing::images_of(window);
  EXPECT_EQ(PictureGetPixel(images[1], 0, 0), 0u) << "the same color at another index";
  EXPECT_EQ(PictureGetPixel(images[1], 1, 1), 1u);
  Palette kept;
  PictureGetPalette(images[2], kept);
  EXPECT_EQ(kept[0], 99) << "a color that is missing: the frame keeps its own";
}

TEST(BuildAnimation, WhatLiesLeftAndAboveIsCutButInAnMng) {
  for (const std::uint32_t kind : {kApng, kWebp}) {
    DocumentWindow window;
    ASSERT_TRUE(BeginAnimation(window, 0, 0, kind));
    ASSERT_NE(AddFrame(window, small_picture(6, 4, 24), -1, nullptr, 1, -2, -1, 0, nullptr), 0u);
    ASSERT_NE(AddFrame(window, small_picture(6, 4, 24), -1, nullptr, 1, -6, 0, 1, nullptr), 0u);
    const auto images = testing::images_of(window);
    EXPECT_TRUE(images[0].width() == 4 && images[0].height() == 3);
    EXPECT_EQ(PictureGetPixel(images[0], 0, 0), PictureGetPixel(small_picture(6, 4, 24), 2, 1));
    EXPECT_TRUE(images[1].width() == 1 && images[1].bits() == 32) << "nothing of it is seen";
  }
}

TEST(BuildAnimation, IterationsAndKindsHaveTheirNumbers) {
  EXPECT_EQ(iterations_for(DocumentKind::MING, false), kNoLoop);
  EXPECT_EQ(iterations_for(DocumentKind::APNG, false), 1);
  EXPECT_EQ(iterations_for(DocumentKind::MING, true), 0);
  const testing::SettingsGuard guard;
  settings::DefaultAnimationType = 2;
  EXPECT_EQ(build_kind(kDefaultKind), DocumentKind::WEBP);
  EXPECT_EQ(build_kind(kApng), DocumentKind::APNG);
}

}  // namespace
}  // namespace vellum
