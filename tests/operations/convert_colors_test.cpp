// Color types of whole documents: what becomes of pixels, palettes and transparency.
#include "operations/convert_colors.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "core/edit/frame_layer.h"
#include "core/edit/insert_chunk.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "image/picture_operations.h"
#include "image/remap.h"
#include "image/settings.h"
#include "operations/reconstruct.h"
#include "playback/compositor.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::kFileNames;
using testing::Recorder;
using testing::small_document;

constexpr auto P = DocumentKind::PING, A = DocumentKind::APNG, M = DocumentKind::MING, W = DocumentKind::WEBP;

/// The frames of a document with their transparency, a value a pixel: red in the lowest byte, alpha in the
/// highest.
std::vector<std::vector<std::uint32_t>> pixels_of(const DocumentWindow& window) {
  std::vector<std::vector<std::uint32_t>> frames;
  const FrameSource source = frame_source_of(window);
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    if (!is_image_entry(source.kind, window.list.record(i).tag)) continue;
    const Picture picture = frame_layer_of(source, window.list.record(i)).picture;
    auto& pixels = frames.emplace_back();
    for (std::uint32_t y = 0; y < picture.height(); ++y)
      for (std::uint32_t x = 0; x < picture.width(); ++x)
        pixels.push_back(PictureGetPixel(picture, x, y) | (picture.bits() == 32 ? 0 : 0xFF000000));
  }
  return frames;
}

unsigned grey(std::uint32_t pixel) {
  return (pixel & 255) * 77 / 255 + (pixel >> 8 & 255) * 150 / 255 + (pixel >> 16 & 255) * 28 / 255;
}
std::uint32_t grey_pixel(unsigned level, std::uint32_t alpha) { return level * 0x010101 | alpha << 24; }

struct Form {
  const char* name;
  ColorConversion conversion;
  /// What an opaque pixel must become.
  std::uint32_t (*becomes)(std::uint32_t pixel);
};

const Form kForms[] = {
    {"mono", black_and_white(100, false),
     [](std::uint32_t pixel) { return grey_pixel(grey(pixel) >= 100 ? 255 : 0, 255); }},
    {"grey", {.colorType = 0}, [](std::uint32_t pixel) { return grey_pixel(grey(pixel), 255); }},
    {"grey with alpha", {.colorType = 4}, [](std::uint32_t pixel) { return grey_pixel(grey(pixel), 255); }},
    {"palette", {.colorType = 3}, [](std::uint32_t pixel) { return pixel; }},
    {"true", {.colorType = 2}, [](std::uint32_t pixel) { return pixel; }},
    {"alpha", {.colorType = 6}, [](std::uint32_t pixel) { return pixel; }},
};

TEST(ConvertColors, EveryFormOfEveryKindIsWrittenAndReadBack) {
  const testing::ScratchFolder folder;
  const int lossless = std::exchange(settings::WEBPLossless, 1);
  Recorder recorder;
  for (const DocumentKind kind : {P, A, M, W})
    for (const std::uint8_t from : {2, 3, 6})
      for (const Form& form : kForms) {
        if (kind == W && from == 3) continue;
        const auto what = ::testing::Message()
                          << kFileNames.at(kind) << " of type " << +from << " to " << form.name;
        DocumentWindow window = small_document(kind, kind == P ? 1 : 3, from);
        // Opaque, so that the kinds of transparency don't matter here.
        ASSERT_TRUE(convert_colors(window, {.colorType = from == 3 ? from : std::uint8_t{2}}, recorder.host));
        auto expected = pixels_of(window);
        for (auto& frame : expected) std::ranges::transform(frame, frame.begin(), form.becomes);
        ASSERT_TRUE(convert_colors(window, form.conversion, recorder.host)) << what;
        EXPECT_EQ(pixels_of(window), expected) << what;
        const auto path = folder / kFileNames.at(kind);
        ASSERT_TRUE(save_document(window, path, recorder.host)) << what;
        EXPECT_EQ(testing::objections(path), "") << what;
        DocumentWindow read;
        ASSERT_TRUE(open_document(read, path, recorder.host)) << what;
        EXPECT_EQ(pixels_of(read), expected) << what;
      }
  settings::WEBPLossless = lossless;
  EXPECT_TRUE(recorder.messages.empty());
}

/// 32 bits, left half transparent, with few colors.
Picture half_clear(std::uint32_t colors) {
  Picture picture = PictureCreateAlpha(6, 4);
  for (std::uint32_t y = 0; y < 4; ++y)
    for (std::uint32_t x = 0; x < 6; ++x)
      PicturePutPixel(picture, x, y, (x < 3 ? 0x00000000u : 0xFF000000u) | (x + y) % colors * 40);
  return picture;
}

DocumentWindow half_clear_document(DocumentKind kind, std::uint32_t colors = 4) {
  DocumentWindow window = small_document(kind, 0, 6);
  Host host;
  std::vector<Picture> pictures(kind == P ? 1 : 2, half_clear(colors));
  insert_pictures(window, pictures, host);
  return window;
}

TEST(ConvertColors, APaletteKeepsAnEntryForTransparency) {
  Recorder recorder;
  for (const DocumentKind kind : {P, A, M}) {
    DocumentWindow window = half_clear_document(kind);
    const auto before = pixels_of(window);
    ASSERT_TRUE(convert_colors(window, {.colorType = 3}, recorder.host));
    for (const Picture& picture : testing::images_of(window)) EXPECT_EQ(picture.bits(), 4u);
    const auto after = pixels_of(window);
    for (std::size_t i = 0; i < before[0].size(); ++i) {
      EXPECT_EQ(after[0][i] >> 24, before[0][i] >> 24) << kind_letters(kind) << " pixel " << i;
      if (before[0][i] >> 24) EXPECT_EQ(after[0][i], before[0][i]);
    }
  }
}

TEST(ConvertColors, WhatAPaletteCanHoldComesBackEqual) {
  std::mt19937 random(1);
  Recorder recorder;
  for (const std::uint32_t colors : {1u, 2u, 3u, 16u, 17u, 255u, 256u})
    for (const int most_hidden : {0, 1, 128})  // none, clear ones, faint ones of any color
      for (const bool dither : {false, true}) {
        if (most_hidden > 0 && colors == 256) continue;
        Picture picture = PictureCreate(31, 17, nullptr, most_hidden > 0 ? 32 : 24);
        for (std::uint32_t i = 0; i < 31 * 17; ++i) {
          const std::uint32_t color = i < colors ? i : static_cast<std::uint32_t>(random()) % colors;
          const bool hidden = most_hidden > 0 && i >= colors && i % 3 == 0;
          const auto alpha =
              hidden ? static_cast<std::uint32_t>(random()) % static_cast<unsigned>(most_hidden) : 255u;
          const auto stray = static_cast<std::uint32_t>(random());
          PicturePutPixel(picture, i % 31, i / 31,
                          alpha << 24 | ((hidden ? stray : color * 2654435761u >> 5) & 0xFFFFFF));
        }
        DocumentWindow window = small_document(P, 0, most_hidden > 0 ? 6 : 2);
        ASSERT_TRUE(insert_pictures(window, {&picture, 1}, recorder.host));
        const auto before = pixels_of(window)[0];
        ASSERT_TRUE(convert_colors(window, {.colorType = 3, .dither = dither}, recorder.host));
        const auto after = pixels_of(window)[0];
        int wrong = 0;
        for (std::size_t i = 0; i < before.size(); ++i)
          wrong += before[i] >> 24 < 128 ? after[i] >> 24 >= 128 : after[i] != before[i];
        EXPECT_EQ(wrong, 0) << colors << " colors, hidden below " << most_hidden;
      }
}

TEST(ConvertColors, ATransparentEntryLeavesRoomInAFullPalette) {
  Recorder recorder;
  DocumentWindow window = half_clear_document(A, 5);
  ColorConversion two{.colorType = 3, .bitDepth = 1};
  two.palette = black_and_white(1, false).palette;
  ASSERT_TRUE(convert_colors(window, two, recorder.host));
  Palette palette;
  EXPECT_EQ(chunk_find_palette(window.list, palette), 2u) << "one color and the transparent entry";
  EXPECT_EQ(testing::images_of(window)[0].bits(), 1u);
  EXPECT_EQ(pixels_of(window)[0][0] >> 24, 0u);
}

TEST(ConvertColors, WhatCantBeTransparentLiesOverTheBackground) {
  Recorder recorder;
  for (const DocumentKind kind : {P, A, M, W})
    for (const ColorConversion& conversion : {ColorConversion{.colorType = 2}, black_and_white(128, false)}) {
      DocumentWindow window = half_clear_document(kind);
      ASSERT_TRUE(convert_colors(window, conversion, recorder.host));
      for (const auto& frame : pixels_of(window))
        for (std::size_t i = 0; i < frame.size(); ++i) {
          EXPECT_EQ(frame[i] >> 24, 255u) << kind_letters(kind) << " pixel " << i;
          if (i % 6 < 3) EXPECT_EQ(frame[i], 0xFFFFFFFF) << kind_letters(kind) << " pixel " << i;
        }
    }
}

TEST(ConvertColors, HeaderBackgroundAndDepthFollow) {
  struct Case {
    PngHeader wanted;
    const char* tags;
    const char* background;  ///< payload of bKGD
  };
  const std::string red("\0\xFF\0\0\0\0", 6);
  for (const Case& c : {Case{{.bitDepth = 8, .colorType = 0}, "IHDR bKGD IDAT IEND", "004d"},
                        Case{{.bitDepth = 2, .colorType = 0}, "IHDR bKGD IDAT IEND", "0001"},
                        Case{{.bitDepth = 16, .colorType = 2}, "IHDR bKGD IDAT IEND", "ffff00000000"},
                        Case{{.bitDepth = 4, .colorType = 3}, "IHDR PLTE bKGD IDAT IEND", ""},
                        Case{{.bitDepth = 8, .colorType = 6}, "IHDR bKGD IDAT IEND", "00ff00000000"}}) {
    Recorder recorder;
    DocumentWindow window = small_document(P, 1, 2);
    chunk_list_insert(window.list, window.document, 1, testing::record_of(tag::bKGD, red));
    ASSERT_TRUE(convert_to_header(window, c.wanted, recorder.host));
    EXPECT_EQ(testing::tags_of(window.list), c.tags);
    EXPECT_EQ(window.list.record(0).colorType, c.wanted.colorType);
    EXPECT_EQ(window.list.record(0).bitDepth, c.wanted.bitDepth);
    const auto payload = raw_payload(window.list.record(chunk_find_first(window.list, tag::bKGD)));
    std::string hex;
    for (const std::uint8_t byte : payload)
      hex += "0123456789abcdef"[byte >> 4], hex += "0123456789abcdef"[byte & 15];
    if (*c.background) EXPECT_EQ(hex, c.background);
  }
}

TEST(ConvertColors, DitheringIsThatOfDitherPicture) {
  Recorder recorder;
  DocumentWindow window = small_document(A, 2, 2);
  const auto pictures = testing::images_of(window);
  const ColorConversion conversion = black_and_white(1, true);
  ASSERT_TRUE(convert_colors(window, conversion, recorder.host));
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    const Picture expected = DitherPicture(pictures[i], conversion.palette.palette, 1, 0);
    for (std::uint32_t y = 0; y < 4; ++y)
      for (std::uint32_t x = 0; x < 6; ++x)
        EXPECT_EQ(PictureGetPixel(testing::images_of(window)[i], x, y), PictureGetPixel(expected, x, y));
  }
}

TEST(ConvertColors, StoppedOrWithoutImagesNothingChanges) {
  Recorder recorder;
  DocumentWindow empty = small_document(A, 0);
  EXPECT_FALSE(convert_colors(empty, {.colorType = 3}, recorder.host));
  DocumentWindow window = small_document(A, 3, 6);
  const auto before = pixels_of(window);
  recorder.host.stop_requested = [] { return true; };
  for (const Form& form : kForms)
    EXPECT_FALSE(convert_colors(window, form.conversion, recorder.host)) << form.name;
  EXPECT_EQ(pixels_of(window), before);
  EXPECT_FALSE(window.document.dirty);
}

TEST(ConvertColors, ALargeStillIsHeardOfAndCanBeStopped) {
  for (const bool dither : {false, true}) {
    DocumentWindow window = small_document(P, 0, 2);
    Recorder recorder;
    const Picture picture = PictureCreateFilled(1000, 1200, 0x123456);
    ASSERT_TRUE(insert_pictures(window, {&picture, 1}, recorder.host));
    int asked = 0, steps = 0;
    recorder.host.progress_step = [&](std::uint64_t, std::uint64_t) { ++steps; };
    recorder.host.stop_requested = [&] { return ++asked == 6; };
    ColorConversion conversion{.colorType = 3, .dither = dither};
    conversion.palette.count = 4;
    EXPECT_FALSE(convert_colors(window, conversion, recorder.host));
    EXPECT_GT(steps, 2);
    EXPECT_EQ(testing::images_of(window)[0].bits(), 24u);
  }
}

/// Every canvas that a document plays, once.
std::vector<std::vector<std::uint32_t>> played(const DocumentWindow& window) {
  Compositor compositor(window.list, window.document);
  std::vector<std::vector<std::uint32_t>> canvases;
  for (std::size_t i = 0; i < compositor.frames(); ++i) {
    const auto frame = compositor.next();
    if (!frame) break;
    auto& pixels = canvases.emplace_back();
    for (std::uint32_t y = 0; y < frame->picture.height(); ++y)
      for (std::uint32_t x = 0; x < frame->picture.width(); ++x)
        pixels.push_back(PictureGetPixel(frame->picture, x, y) & 0xFFFFFF);
  }
  return canvases;
}

/// Frames of all sizes and manners that build on each other; alpha is 0 or 255.
DocumentWindow dependent_document(DocumentKind kind, bool alpha) {
  DocumentWindow window = small_document(kind, 5, alpha ? 6 : 2);
  ChunkRecord record;
  unsigned frame = 0;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    if (!is_image_entry(kind, window.list.record(i).tag)) continue;
    chunk_list_get(window.list, i, record);
    Picture picture(record.data);
    if (alpha)
      for (std::uint32_t y = 0; y < picture.height(); ++y)
        for (std::uint32_t x = 0; x < picture.width(); ++x)
          PicturePutPixel(
              picture, x, y,
              (PictureGetPixel(picture, x, y) & 0xFFFFFF) | ((x + y + frame) % 3 ? 0xFF000000 : 0));
    if (frame > 0 && kind != W) picture = PictureCrop(picture, {0, 0, 2 + static_cast<int>(frame % 3), 2});
    FrameLayer layer{picture,
                     {static_cast<int>(kind == W ? 0 : frame), kind == W ? 0 : 1},
                     100,
                     frame % 3,
                     frame % 2 == 0};
    if (kind != A) layer.dispose %= 2;
    ChunkRecord made;
    EXPECT_TRUE(frame_record_of(window, layer, made));
    chunk_list_put(window.list, i, made);
    ++frame;
  }
  return window;
}

TEST(Reconstruct, PlaysTheSameCanvases) {
  Recorder recorder;
  for (const DocumentKind kind : {A, M, W})
    for (const bool alpha : {false, true})
      for (const CanvasDepth depth :
           {CanvasDepth::AsNeeded, CanvasDepth::TrueColor, CanvasDepth::TrueColorAlpha}) {
        DocumentWindow window = dependent_document(kind, alpha);
        const auto before = played(window);
        ASSERT_EQ(before.size(), 5u);
        ASSERT_TRUE(reconstruct_frames(window, depth, recorder.host));
        EXPECT_EQ(played(window), before) << kind_letters(kind) << alpha << static_cast<int>(depth);
        EXPECT_TRUE(is_independent(window));
        const Extent canvas = document_size(window.list, window.document);
        for (const Picture& picture : testing::images_of(window)) {
          EXPECT_EQ(picture.width(), canvas.width);
          EXPECT_EQ(picture.height(), canvas.height);
        }
      }
}

}  // namespace
}  // namespace vellum
