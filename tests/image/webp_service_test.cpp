// WebP files in memory, judged by the library's own animation decoder and by what the container says.
#include "image/webp_service.h"

#include <webp/demux.h>
#include <webp/mux.h>

#include <cstring>

#include "base/file.h"
#include "image/picture_operations.h"
#include "pixels_of.h"
#include "random_pictures.h"
#include "support/corpus.h"

namespace vellum {
namespace {

using testing::random_picture;
using testing::rgba_of;

using Bytes = std::vector<std::uint8_t>;

/// A canvas as it is shown.
struct Shown {
  std::string pixels;  ///< red, green, blue, alpha
  std::int64_t end = 0;
};

std::vector<Shown> shown_by_library(std::span<const std::uint8_t> file) {
  std::vector<Shown> canvases;
  const WebPData data{file.data(), file.size()};
  WebPAnimDecoder* decoder = WebPAnimDecoderNew(&data, nullptr);
  if (!decoder) return canvases;
  WebPAnimInfo info;
  WebPAnimDecoderGetInfo(decoder, &info);
  std::uint8_t* pixels = nullptr;
  int end = 0;
  while (WebPAnimDecoderGetNext(decoder, &pixels, &end))
    canvases.push_back(
        {{reinterpret_cast<char*>(pixels), std::size_t{4} * info.canvas_width * info.canvas_height}, end});
  WebPAnimDecoderDelete(decoder);
  return canvases;
}

std::vector<Shown> shown_by_us(std::span<const std::uint8_t> file, WebpAnimation* start = nullptr) {
  std::vector<Shown> canvases;
  const auto take_start = [&](const WebpAnimation& animation) {
    if (start) *start = animation;
    return true;
  };
  const auto take = [&](const WebpFrame& frame) {
    canvases.push_back({rgba_of(frame.canvas), frame.timestamp});
    return true;
  };
  return WEBPGetAnimation(file, take_start, take) ? canvases : std::vector<Shown>();
}

void expect_same(const std::vector<Shown>& ours, const std::vector<Shown>& judged, const std::string& name) {
  ASSERT_EQ(ours.size(), judged.size()) << name;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    EXPECT_EQ(ours[i].end, judged[i].end) << name << " frame " << i;
    const bool same = ours[i].pixels == judged[i].pixels;
    EXPECT_TRUE(same) << name << " frame " << i;
  }
}

TEST(WebpAnimation, CanvasesOfRealFilesAreThoseOfTheLibrary) {
  VELLUM_NEEDS_CORPUS();
  int animations = 0;
  for (const auto& row : testing::corpus_rows({"webp"})) {
    std::string reason;
    const auto file = read_file(testing::corpus_file(row), reason, 1 << 30);
    if (!WEBPGetInfoEx(*file)->isAnimation) continue;
    ++animations;
    expect_same(shown_by_us(*file), shown_by_library(*file), row.at("path"));
  }
  EXPECT_GE(animations, 10);
}

/// An animation whose frames lie anywhere, with every combination of blending and disposal.
Bytes random_animation(std::mt19937& random, std::uint32_t width, std::uint32_t height, int frames) {
  WebPMux* mux = WebPMuxNew();
  WebPMuxSetCanvasSize(mux, static_cast<int>(width), static_cast<int>(height));
  const WebPMuxAnimParams parameters{0x11223344, 3};
  WebPMuxSetAnimationParams(mux, &parameters);
  for (int i = 0; i < frames; ++i) {
    const bool whole = random() % 4 == 0;
    const std::uint32_t x = whole ? 0 : random() % width & ~1u, y = whole ? 0 : random() % height & ~1u;
    const Picture picture =
        random_picture(random, whole ? width : 1 + random() % (width - x),
                       whole ? height : 1 + random() % (height - y), random() % 3 ? 32 : 24);
    const Bytes stream = encode_webp_still(picture, true, 0);
    WebPMuxFrameInfo info{};
    info.bitstream = {stream.data(), stream.size()};
    info.x_offset = static_cast<int>(x);
    info.y_offset = static_cast<int>(y);
    info.duration = static_cast<int>(random() % 3 * 50);
    info.id = WEBP_CHUNK_ANMF;
    info.dispose_method = random() % 2 ? WEBP_MUX_DISPOSE_BACKGROUND : WEBP_MUX_DISPOSE_NONE;
    info.blend_method = random() % 3 ? WEBP_MUX_BLEND : WEBP_MUX_NO_BLEND;
    WebPMuxPushFrame(mux, &info, 1);
  }
  WebPData whole{};
  WebPMuxAssemble(mux, &whole);
  Bytes file(whole.bytes, whole.bytes + whole.size);
  WebPDataClear(&whole);
  WebPMuxDelete(mux);
  return file;
}

TEST(WebpAnimation, CanvasesOfAnyFramesAreThoseOfTheLibrary) {
  std::mt19937 random(5);
  for (int i = 0; i < 60; ++i) {
    const Bytes file = random_animation(random, 3 + random() % 30, 3 + random() % 30, 2 + i % 9);
    WebpAnimation start;
    expect_same(shown_by_us(file, &start), shown_by_library(file), "animation " + std::to_string(i));
    EXPECT_EQ(start.loopCount, 3u);
    EXPECT_EQ(start.backgroundColor, 0x11443322u) << "alpha, blue, green, red";
  }
}

// More frames than are decoded at once: the canvas goes over from batch to batch.
TEST(WebpAnimation, CanvasesGoOnOverManyFrames) {
  std::mt19937 random(6);
  const Bytes file = random_animation(random, 9, 8, 300);
  expect_same(shown_by_us(file), shown_by_library(file), "300 frames");
}

TEST(WebpAnimation, EitherCallbackMayRefuse) {
  std::mt19937 random(7);
  const Bytes file = random_animation(random, 9, 8, 5);
  int frames = 0;
  const auto yes = [](const WebpAnimation&) { return true; };
  EXPECT_FALSE(WEBPGetAnimation(file, yes, [&](const WebpFrame&) { return ++frames < 2; }));
  EXPECT_EQ(frames, 2);
  EXPECT_FALSE(WEBPGetAnimation(
      file, [](const WebpAnimation&) { return false; }, [&](const WebpFrame&) { return ++frames < 99; }));
  EXPECT_EQ(frames, 2);
}

TEST(WebpStill, RowsOfEitherDirectionGiveTheSamePicture) {
  std::mt19937 random(8);
  for (const std::uint32_t bits : {24u, 32u}) {
    const Picture picture = random_picture(random, 21, 17, bits);
    const auto encode = bits == 32 ? WEBPEncodeLosslessBGRA : WEBPEncodeLosslessBGR;
    const auto decode = bits == 32 ? WEBPDecodeBGRA : WEBPDecodeBGR;
    const auto step = static_cast<std::ptrdiff_t>(picture.stride());
    const auto rows = picture.handle().bytes().last(picture.stride() * 17);
    const Picture turned = PictureMirrorVertical(picture);
    EXPECT_TRUE(testing::same_block(decode(encode(rows, 21, 17, -step)), picture));
    EXPECT_TRUE(testing::same_block(decode(encode(rows, 21, 17, step)), turned));
    EXPECT_TRUE(encode(rows.first(rows.size() - 8), 21, 17, step).empty()) << "fewer bytes than promised";
    EXPECT_TRUE(encode(rows, 21, 17, 20).empty()) << "rows that overlap";
    EXPECT_TRUE(encode(rows, 0, 17, step).empty());
    EXPECT_TRUE(encode(rows, 21, 0, step).empty());
  }
  EXPECT_FALSE(WEBPDecodeBGRA(random_animation(random, 9, 8, 2))) << "an animation is no still";
}

TEST(WebpInfo, TellsWhatTheHeadersSay) {
  std::mt19937 random(9);
  Picture picture = random_picture(random, 7, 5, 32);
  PicturePutPixel(picture, 0, 0, 0x80112233);
  const Bytes clear = encode_webp_still(picture, true, 0);
  const Bytes solid = encode_webp_still(PictureToTrueColor(picture), false, 50);
  EXPECT_TRUE(WEBPGetInfoEx(clear)->hasAlpha);
  EXPECT_FALSE(WEBPGetInfoEx(solid)->hasAlpha);
  EXPECT_EQ(WEBPGetInfoEx(solid)->height, 5u);
  EXPECT_TRUE(WEBPGetInfoEx(random_animation(random, 9, 8, 2))->isAnimation);
  Bytes other = clear;
  std::memcpy(&other[8], "WAVE", 4);
  EXPECT_FALSE(WEBPGetInfoEx(other)) << "a RIFF file of another form";
  EXPECT_FALSE(WEBPGetInfoEx(std::span(clear).subspan(12))) << "the image chunk alone";
  EXPECT_FALSE(WEBPGetInfoEx({}));
}

/// A frame as the container has it.
struct Stored {
  int x, y, width, height, duration, dispose, blend;
  bool operator==(const Stored&) const = default;
};

void PrintTo(const Stored& f, std::ostream* out) {
  *out << f.x << "," << f.y << " " << f.width << "x" << f.height << " " << f.duration << " ms, dispose "
       << f.dispose << ", blend " << f.blend;
}

std::vector<Stored> stored_frames(const Bytes& file) {
  std::vector<Stored> frames;
  const WebPData data{file.data(), file.size()};
  WebPDemuxer* demuxer = WebPDemux(&data);
  WebPIterator frame{};
  for (bool more = demuxer && WebPDemuxGetFrame(demuxer, 1, &frame); more; more = WebPDemuxNextFrame(&frame))
    frames.push_back({frame.x_offset, frame.y_offset, frame.width, frame.height, frame.duration,
                      frame.dispose_method, frame.blend_method});
  WebPDemuxReleaseIterator(&frame);
  WebPDemuxDelete(demuxer);
  return frames;
}

struct Given {
  Picture canvas;
  std::int64_t start;
  std::uint32_t dispose;
};

Bytes write(WebpParameters parameters, const std::vector<Given>& frames, std::int64_t end) {
  parameters.frameCount = static_cast<std::uint32_t>(frames.size());
  parameters.canvasWidth = frames[0].canvas.width();
  parameters.canvasHeight = frames[0].canvas.height();
  std::size_t next = 0;
  Bytes file;
  const auto give = [&](WebpFrameRequest& request) {
    request.timestamp = request.last ? end : frames[next].start;
    if (request.last) return next == frames.size();
    request.canvas = [&canvas = frames[next].canvas] { return canvas; };
    request.dispose = frames[next++].dispose;
    return true;
  };
  return WEBPWriteAnimation(parameters, give, memory_sink(file)) ? file : Bytes();
}

TEST(WebpWriting, FramesAreTheRectanglesThatDiffer) {
  Picture first = PictureCreateAlpha(20, 16), dot = first, same = first;
  PictureFillRect(first, 0, 0, 20, 16, 0xFF0000FF);
  dot = first;
  PicturePutPixel(dot, 7, 5, 0xFF00FF00);
  PicturePutPixel(dot, 9, 6, 0xFF00FF00);
  Picture cleared = dot;
  PictureFillRect(cleared, 6, 4, 4, 3, 0);  // what is left when the dots' frame is cleared
  PicturePutPixel(cleared, 19, 15, 0x01020304);
  WebpParameters parameters;
  parameters.lossless = true;
  parameters.loopCount = 70'000;
  parameters.backgroundColor = 0x44332211;
  const Bytes file = write(
      parameters, {{first, 0, 0}, {dot, 10, 0}, {dot, 30, 0}, {first, 30, 0}, {dot, 40, 1}, {cleared, 50, 0}},
      20'000'000);
  const std::vector<Stored> expected = {{0, 0, 20, 16, 10, 0, 1}, {6, 4, 4, 3, 20, 0, 0},
                                        {0, 0, 1, 1, 0, 0, 0},    {6, 4, 4, 3, 10, 0, 0},
                                        {6, 4, 4, 3, 10, 1, 0},   {18, 14, 2, 2, 16'777'215, 0, 1}};
  EXPECT_THAT(stored_frames(file), ::testing::ElementsAreArray(expected));
  // "ANIM" stands behind VP8X (30 bytes): blue, green, red, alpha, plays.
  const std::uint8_t animation[] = {0x33, 0x22, 0x11, 0x44, 0xFF, 0xFF};
  EXPECT_TRUE(std::ranges::equal(std::span(file).subspan(38, 6), animation));
  const auto shown = shown_by_library(file);
  ASSERT_EQ(shown.size(), 6u);
  EXPECT_EQ(shown[4].pixels, rgba_of(dot));
  EXPECT_EQ(shown[5].pixels, rgba_of(cleared));
}

TEST(WebpWriting, WhatIsThereAlreadyIsLeftOutWhereTheRestIsOpaque) {
  // Two corners change, so that the rectangle is the canvas; `change` gives their color and alpha.
  const auto frames_with = [](Colour change, std::uint32_t rows) {
    Picture first = PictureCreateAlpha(40, 40);
    PictureFillRect(first, 0, 0, 40, 40, 0xFF102030);
    PicturePutPixel(first, 20, 20, 0x00445566);
    Picture second = first;
    PictureFillRect(second, 0, 0, 40, static_cast<std::int32_t>(rows), change);
    PicturePutPixel(second, 39, 39, change);
    return std::vector<Given>{{first, 0, 0}, {second, 10, 0}};
  };
  struct Case {
    Colour change;
    std::uint32_t rows;
    bool over;
  };
  for (const auto& [change, rows, over] :
       {Case{0xFF00FF00, 1, true}, {0x7F00FF00, 1, false}, {0xFF00FF00, 35, false}, {0xFF00FF00, 28, true}})
    for (const bool lossless : {true, false}) {
      const auto frames = frames_with(change, rows);
      WebpParameters parameters;
      parameters.lossless = lossless;
      const Bytes file = write(parameters, frames, 20);
      EXPECT_EQ(stored_frames(file)[1].blend, over ? 0 : 1) << rows;
      if (lossless) EXPECT_EQ(shown_by_library(file)[1].pixels, rgba_of(frames[1].canvas)) << rows;
    }
}

TEST(WebpWriting, LosslessFramesKeepEveryColor) {
  std::mt19937 random(10);
  std::vector<Given> frames;
  for (int i = 0; i < 40; ++i) frames.push_back({random_picture(random, 13, 11, 32), i * 7, i % 3 == 0});
  WebpParameters parameters;
  parameters.lossless = parameters.mixed = true;
  const auto shown = shown_by_library(write(parameters, frames, 280));
  ASSERT_EQ(shown.size(), frames.size());
  for (std::size_t i = 0; i < frames.size(); ++i) EXPECT_EQ(shown[i].pixels, rgba_of(frames[i].canvas)) << i;
}

TEST(WebpWriting, MixedFramesAreTheSmallerOfTheTwo) {
  std::mt19937 random(11);
  Picture flat = PictureCreateAlpha(64, 64);
  PictureFillRect(flat, 0, 0, 64, 64, 0xFF0000FF);
  const std::vector<Given> frames = {{random_picture(random, 64, 64, 32), 0, 0}, {flat, 10, 0}};
  WebpParameters parameters;
  parameters.quality = 30;
  const Bytes lossy = write(parameters, frames, 20);
  parameters.mixed = true;
  const Bytes mixed = write(parameters, frames, 20);
  parameters.lossless = true;
  const Bytes exact = write(parameters, frames, 20);
  EXPECT_LT(mixed.size(), lossy.size());
  EXPECT_LT(mixed.size(), exact.size());
  EXPECT_EQ(shown_by_library(mixed)[1].pixels, rgba_of(flat)) << "one color is smaller without loss";
}

TEST(WebpWriting, FailsWhenAFrameIsMissingOrOfAnotherSize) {
  const Picture right = PictureCreateAlpha(8, 8), wrong = PictureCreateAlpha(8, 9);
  EXPECT_TRUE(write({}, {{right, 0, 0}, {wrong, 0, 0}}, 0).empty());
  EXPECT_TRUE(write({}, {{right, 0, 0}, {PictureCreate(8, 8, nullptr, 24), 0, 0}}, 0).empty());
  EXPECT_TRUE(write({}, {{right, 0, 0}, {Picture(), 0, 0}}, 0).empty());
  WebpParameters parameters{8, 8, 0, 2};
  Bytes file;
  const auto refuse = [](WebpFrameRequest&) { return false; };
  EXPECT_FALSE(WEBPWriteAnimation(parameters, refuse, memory_sink(file)));
  parameters.frameCount = 0;
  const auto accept = [](WebpFrameRequest&) { return true; };
  EXPECT_FALSE(WEBPWriteAnimation(parameters, accept, memory_sink(file)));
  parameters = {16384, 8, 0, 2};
  EXPECT_FALSE(WEBPWriteAnimation(parameters, accept, memory_sink(file)));
}

}  // namespace
}  // namespace vellum
