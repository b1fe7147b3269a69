// Transitions against their formulas, drawn pixel by pixel.
#include <gtest/gtest.h>

#include <cmath>

#include "base/memory_budget.h"
#include "base/settings.h"
#include "core/files/save_document.h"
#include "generators/generator.h"
#include "generators/transition_effects.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/remap.h"
#include "image/resample.h"
#include "image/superpalette.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::Recorder;

// ------------------------------------------------------------------------------------ the plain
// implementation

struct Numbers {
  int horizontal = 8, vertical = 8, spacing = 16, raster = 4, tile = 6, tiles = 45, grains = 500,
      dissolve = 24, radarStart = 0, radarStep = 10;
};

struct PlainFrame {
  Picture picture;
  std::uint32_t delay;
};

/// One build: frames are added, and one random run goes through all of it.
struct Plain {
  Numbers n;
  std::uint32_t random;
  std::uint32_t pause = 0, delay = 0;
  std::vector<PlainFrame> frames = {};
  Picture l = {}, a = {}, work = {};
  int w = 0, h = 0;

  void put(const Picture& picture, std::uint32_t time) { frames.push_back({picture, time}); }
  void still() { put(l, pause); }
  void blit(int dx, int dy, const Picture& from, int sx, int sy, int wide, int high) {
    for (int y = 0; y < high; ++y)
      for (int x = 0; x < wide; ++x) {
        const bool inside = dx + x >= 0 && dx + x < w && dy + y >= 0 && dy + y < h && sx + x >= 0 &&
                            sx + x < static_cast<int>(from.width()) && sy + y >= 0 &&
                            sy + y < static_cast<int>(from.height());
        if (inside) PicturePutPixel(work, dx + x, dy + y, PictureGetPixel(from, sx + x, sy + y));
      }
  }
  int rand() {
    random = random * 214013 + 2531011;
    return static_cast<int>(random >> 16 & 0x7FFF);
  }

  // Parts of the sliding family: y, x and their extent; p is what is still to go.
  void from_left(int y, int high, int p) {
    blit(w - p, y, l, 0, y, p, high);
    blit(0, y, a, p, y, w - p, high);
  }
  void from_right(int y, int high, int p) {
    blit(0, y, l, w - p, y, p, high);
    blit(p, y, a, 0, y, w - p, high);
  }
  void from_top(int x, int wide, int p) {
    blit(x, h - p, l, x, 0, wide, p);
    blit(x, 0, a, x, p, wide, h - p);
  }
  void from_bottom(int x, int wide, int p) {
    blit(x, 0, l, x, h - p, wide, p);
    blit(x, p, a, x, 0, wide, h - p);
  }

  void slide(int effect, int p) {
    if (effect >= 12 && effect <= 15) blit(0, 0, l, 0, 0, w, h);
    switch (effect) {
      case 5:
        for (int y = 0; y < h + 2 * n.raster; y += 2 * n.raster)
          from_right(y, n.raster, p), from_left(y + n.raster, n.raster, p);
        return;
      case 6:
        from_right(0, h / 2, p);
        return from_left(h / 2, h / 2, p);
      case 11:
        for (int x = 0; x < w + 2 * n.raster; x += 2 * n.raster)
          from_bottom(x, n.raster, p), from_top(x + n.raster, n.raster, p);
        return;
      case 12:
        return blit(0, 0, a, 0, p, w, h - p);
      case 13:
        return blit(0, 0, a, p, 0, w - p, h);
      case 14:
        return blit(p, 0, a, 0, 0, w - p, h);
      case 15:
        return blit(0, p, a, 0, 0, w, h - p);
      case 18:
        from_bottom(0, w / 2, p);
        return from_top(w / 2, w - w / 2, p);
      case 19:
        return from_bottom(0, w, p);
      case 20:
        return from_left(0, h, p);
      case 21:
        return from_right(0, h, p);
      default:
        return from_top(0, w, p);
    }
  }

  Picture lit(const Picture& picture, bool tall, int percent, int light) {
    Picture face =
        PictureScalePercent(picture, tall ? 100 : percent, tall ? percent : 100, ResampleFilter::Automatic);
    for (std::uint32_t y = 0; y < face.height(); ++y)
      for (std::uint32_t x = 0; x < face.width(); ++x) {
        const Colour c = PictureGetPixel(face, x, y);
        const auto part = [&](std::uint32_t v) { return v * static_cast<std::uint32_t>(light) / 255; };
        PicturePutPixel(face, x, y, make_colour(part(red_of(c)), part(green_of(c)), part(blue_of(c))));
      }
    return face;
  }

  void spin(bool tall, bool leavingLast) {
    const int size = tall ? h : w, step = tall ? n.vertical : n.horizontal, unit = step * 255 / size;
    const auto percent = [&](int part) { return (part * 100 + size - 1) / size; };
    for (int s = size, k = 0; s > 0; s -= step, ++k) {
      const Picture leaving = lit(l, tall, percent(s), 255 - k * unit);
      const int covered = static_cast<int>(tall ? leaving.height() : leaving.width());
      const int at = leavingLast ? size - covered : 0;
      blit(tall ? 0 : at, tall ? at : 0, leaving, 0, 0, w, h);
      if (w - s > 0 && percent(size - covered) > 0) {
        const int to = leavingLast ? 0 : covered;
        blit(tall ? 0 : to, tall ? to : 0, lit(a, tall, percent(size - covered), k * unit), 0, 0, w, h);
      }
      put(work, k == 0 ? pause : delay);
    }
  }

  void draw_lots(const std::vector<std::pair<int, int>>& places, int at_once, int side) {
    auto list = places;
    std::size_t remaining = list.size();
    while (remaining > 0) {
      for (int i = 0; i < at_once && remaining > 0; ++i) {
        const std::size_t r = static_cast<std::size_t>(rand()) % remaining;
        blit(list[r].first, list[r].second, a, list[r].first, list[r].second, side, side);
        list[r] = list[--remaining];
      }
      put(work, delay);
    }
  }

  void sweep() {
    const int cx = w / 2, cy = h / 2;
    const double radius = std::ceil(std::sqrt(cx * cx + cy * cy));
    const auto end = [&](int degrees) {
      const double t = degrees * 6.283185005187988 / 360;
      return std::pair(std::trunc(std::cos(t) * radius), std::trunc(std::sin(t) * radius));
    };
    for (int b = 0; b < 360; b += n.radarStep) {
      const auto from = end(n.radarStart + b), to = end(n.radarStart + b + n.radarStep);
      const double turn = from.first * to.second - from.second * to.first;
      const bool same = turn == 0 && from.first * to.first + from.second * to.second >= 0;
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
          const double px = x + 0.5 - cx, py = cy - (y + 0.5);
          const bool left = from.first * py - from.second * px >= 0,
                     right = px * to.second - py * to.first >= 0;
          const bool sector = same ? n.radarStep > 180 : turn >= 0 ? left && right : left || right;
          const auto near = [&](const std::pair<double, double>& arm) {
            const double along = px * arm.first + py * arm.second, across = px * arm.second - py * arm.first;
            const double length = arm.first * arm.first + arm.second * arm.second;
            return px * px + py * py <= 2.25 ||
                   (length > 0 && along >= 0 && across * across <= 2.25 * length);
          };
          if (sector || near(from) || near(to)) blit(x, y, a, x, y, 1, 1);
        }
      put(work, delay);
    }
  }

  void dissolve() {
    still();
    for (int level = 0; level < n.dissolve - 255 % n.dissolve + 255; level += n.dissolve) {
      const auto t = static_cast<std::uint32_t>(std::min(level, 255));
      const auto mix = [t](std::uint32_t x, std::uint32_t y) { return x * t / 255 + y * (255 - t) / 255; };
      work = PictureCreate(l.width(), l.height(), nullptr, 24);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
          const Colour p = PictureGetPixel(a, x, y), q = PictureGetPixel(l, x, y);
          PicturePutPixel(work, x, y,
                          make_colour(mix(red_of(p), red_of(q)), mix(green_of(p), green_of(q)),
                                      mix(blue_of(p), blue_of(q))));
        }
      put(work, delay);
    }
  }

  void interlace() {
    static constexpr int kPass[6][4] = {{0, 0, 8, 8}, {0, 4, 8, 8}, {4, 0, 8, 4},
                                        {0, 2, 4, 4}, {2, 0, 4, 2}, {0, 1, 2, 2}};
    for (const auto& pass : kPass) {
      for (int y = pass[0]; y < h; y += pass[2])
        for (int x = pass[1]; x < w; x += pass[3]) blit(x, y, a, x, y, 1, 1);
      put(work, delay);
    }
  }

  void blocks() {
    const int half = n.spacing / 2;
    for (int i = 0; half >= 2 && i < half / 2; ++i) {
      const int o = -1 - i;
      for (int y = o; y + i + 1 <= h - h % half + half; y += half)
        for (int x = o; x + i + 1 <= w - w % half + half; x += half)
          blit(x, y, a, x, y, 2 + 2 * i, 2 + 2 * i);
      put(work, delay);
    }
  }

  void run(int effect) {
    w = static_cast<int>(l.width()), h = static_cast<int>(l.height());
    const bool adds = effect == 0 || effect == 4 || (effect >= 8 && effect <= 10);
    work = adds ? l : PictureCreate(l.width(), l.height(), nullptr, 24);
    if (effect == 7) return still();
    if (effect == 1) return dissolve();
    if (effect == 0) return blocks();
    if (effect == 2 || effect == 3) return spin(true, effect == 2);
    if (effect == 16 || effect == 17) return spin(false, effect == 17);
    still();
    if (effect == 4) return interlace();
    if (effect == 8) return sweep();
    std::vector<std::pair<int, int>> places;
    if (effect == 9 || effect == 10) {
      const int t = effect == 9 ? 1 : n.tile;
      for (int y = 0; effect == 9 ? y < h : y <= h - h % t; y += t)
        for (int x = 0; effect == 9 ? x < w : x <= w - w % t; x += t) places.emplace_back(x, y);
      return draw_lots(places, effect == 9 ? n.grains : n.tiles, t);
    }
    const bool upright =
        effect == 11 || effect == 12 || effect == 15 || effect == 18 || effect == 19 || effect == 22;
    for (int p = upright ? h : w; p > 0; p -= upright ? n.vertical : n.horizontal) {
      slide(effect, p);
      put(work, delay);
    }
  }
};

/// Images in the middle of the largest width and height, on the matt color.
std::vector<Picture> on_canvas(const std::vector<Picture>& pictures, Colour matt) {
  std::uint32_t w = 0, h = 0;
  for (const Picture& p : pictures) w = std::max(w, p.width()), h = std::max(h, p.height());
  std::vector<Picture> all;
  for (const Picture& p : pictures) {
    Picture canvas = PictureCreateFilled(w, h, matt);
    const Picture deep = PictureToTrueColor(p);
    for (std::uint32_t y = 0; y < p.height(); ++y)
      for (std::uint32_t x = 0; x < p.width(); ++x)
        PicturePutPixel(canvas, x + (w - p.width()) / 2, y + (h - p.height()) / 2,
                        PictureGetPixel(deep, x, y));
    all.push_back(canvas);
  }
  if (all.size() == 1) all.push_back(PictureCreateFilled(w, h, matt));
  return all;
}

bool same(const Picture& a, const Picture& b) {
  if (!a || !b || a.width() != b.width() || a.height() != b.height() || a.bits() != b.bits()) return false;
  for (std::uint32_t y = 0; y < a.height(); ++y)
    for (std::uint32_t x = 0; x < a.width(); ++x)
      if (PictureGetPixel(a, x, y) != PictureGetPixel(b, x, y)) return false;
  return true;
}

const Generator& transition() { return *find_generator("transition"); }

FieldValues values_of(const Numbers& n, int effect, std::int64_t seed) {
  FieldValues values = initial_values(transition().parameters.fields);
  const std::pair<const char*, int> all[] = {{"effect", effect},
                                             {"delay", 30},
                                             {"pause", 500},
                                             {"mattColor", 0x336699},
                                             {"horizontalStep", n.horizontal},
                                             {"verticalStep", n.vertical},
                                             {"blockSpacing", n.spacing},
                                             {"rasterSize", n.raster},
                                             {"tileSize", n.tile},
                                             {"tileBlockSize", n.tiles},
                                             {"sandstormBlockSize", n.grains},
                                             {"dissolveStep", n.dissolve},
                                             {"radarStartAngle", n.radarStart},
                                             {"radarStepAngle", n.radarStep}};
  for (const auto& [name, value] : all) values.set(name, std::int64_t{value});
  values.set("seed", seed);
  return values;
}

struct Case {
  std::vector<Picture> pictures;
  Numbers numbers;
};

std::vector<Case> cases() {
  const auto picture = [](std::uint32_t w, std::uint32_t h, std::uint32_t bits) {
    return testing::small_picture(w, h, bits);
  };
  return {
      {{picture(33, 20, 24), picture(14, 27, 8), picture(33, 5, 32)}, {}},
      {{picture(21, 55, 24), picture(20, 54, 24)}, {5, 7, 4, 1, 4, 10, 100, 128, 77, 100}},
      {{picture(64, 9, 24)}, {100, 3, 21, 3, 9, 11, 250, 51, 359, 181}},
      {{picture(1, 1, 24), picture(1, 1, 24)}, {1, 1, 200, 100, 100, 10, 100, 4, 10, 359}},
      {{picture(3, 2, 24), picture(2, 7, 24)}, {1, 1, 8, 2, 4, 10, 100, 100, 45, 1}},
  };
}

TEST(Transition, EveryEffectShowsWhatItsFormulasSayInAnyOrderOfAsking) {
  for (std::size_t c = 0; c < cases().size(); ++c) {
    const Case trial = cases()[c];
    const auto canvases = on_canvas(trial.pictures, 0x336699);
    for (int effect = 0; effect < 23; ++effect) {
      SCOPED_TRACE("case " + std::to_string(c) + ", " + kTransitionNames[effect].name);
      Plain plain{trial.numbers, 4711, 500, 30};
      for (std::size_t i = 0; i < canvases.size(); ++i) {
        plain.l = canvases[i], plain.a = canvases[(i + 1) % canvases.size()];
        plain.run(effect);
      }
      Recorder recorder;
      const auto stream = generated_frames(transition(), values_of(trial.numbers, effect, 4711),
                                           {{trial.pictures.begin(), trial.pictures.end()}}, recorder.host);
      ASSERT_TRUE(stream);
      ASSERT_EQ(stream->count, plain.frames.size());
      const auto check = [&](std::size_t i) {
        const StreamedFrame frame = stream->frame(i);
        ASSERT_EQ(frame.delay, plain.frames[i].delay) << i;
        ASSERT_TRUE(same(frame.picture, plain.frames[i].picture)) << "frame " << i;
      };
      for (std::size_t i = 0; i < stream->count && !HasFailure(); ++i) check(i);
      for (std::size_t i = stream->count; i-- > 0 && !HasFailure();)
        if (i % 3 != 1) check(i);
      if (HasFailure()) return;
    }
  }
}

TEST(Transition, ImagesHaveValuesOfTheirOwnAndOneRandomRunGoesThroughAll) {
  const std::vector<Picture> pictures = {testing::small_picture(20, 16, 24),
                                         testing::small_picture(18, 16, 24),
                                         testing::small_picture(20, 9, 24)};
  const auto canvases = on_canvas(pictures, 0x336699);
  Plain plain{Numbers{}, 9};
  const int effects[] = {9, 10, 9};
  for (std::size_t i = 0; i < 3; ++i) {
    plain.pause = i == 1 ? 0 : 500, plain.delay = i == 2 ? 77 : 30;
    plain.l = canvases[i], plain.a = canvases[(i + 1) % 3];
    plain.run(effects[i]);
  }
  GeneratorInputs inputs{{pictures.begin(), pictures.end()}};
  inputs.own.resize(3);
  inputs.own[1].set("effect", std::int64_t{10}), inputs.own[1].set("pause", std::int64_t{0});
  inputs.own[2].set("delay", std::int64_t{77});
  Recorder recorder;
  const auto stream = generated_frames(transition(), values_of({}, 9, 9), inputs, recorder.host);
  ASSERT_EQ(stream->count, plain.frames.size());
  for (std::size_t i = 0; i < stream->count; ++i) {
    EXPECT_TRUE(same(stream->frame(i).picture, plain.frames[i].picture)) << i;
    EXPECT_EQ(stream->frame(i).delay, plain.frames[i].delay);
  }
  inputs.own[2].set("delay", std::int64_t{1001});
  EXPECT_FALSE(generated_frames(transition(), values_of({}, 9, 9), inputs, recorder.host));
  EXPECT_EQ(recorder.messages.size(), 1u);
}

TEST(Transition, OnlyAnMngTakesAPaletteMadeForAllFramesOrAGivenOne) {
  const std::vector<HeldPicture> pictures = {testing::small_picture(40, 30, 24),
                                             testing::small_picture(30, 40, 24)};
  for (const DocumentKind kind : {DocumentKind::MING, DocumentKind::APNG, DocumentKind::WEBP})
    for (const int palette : {-1, 0, 1, 3, 8})
      for (const bool dither : {false, true}) {
        SCOPED_TRACE(testing::kFileNames.at(kind));
        FieldValues values = values_of({}, 20, 1);
        Recorder recorder;
        const auto deep = generated_frames(transition(), values, {pictures}, recorder.host);
        values.set("trueColor", std::int64_t{0});
        values.set("dither", std::int64_t{dither});
        values.set("customPalette", std::int64_t{palette < 0});
        values.set("palette", std::int64_t{std::max(palette, 0)});
        DocumentWindow window;
        ASSERT_TRUE(generate(transition(), values, {pictures}, kind, window, recorder.host));
        const testing::ScratchFolder folder;
        const auto path = folder / testing::kFileNames.at(kind);
        ASSERT_TRUE(save_document(window, path, recorder.host));
        EXPECT_EQ(testing::objections(path), "");
        const auto entries = frame_entries(window);
        ASSERT_EQ(entries.size(), deep->count);
        const Picture first = picture_of(window.list.record(entries[3]));
        if (kind != DocumentKind::MING) {
          EXPECT_TRUE(same(first, deep->frame(3).picture));
          continue;
        }
        Host quiet;
        const auto wanted =
            palette < 0 ? superpalette(
                              deep->count, [&](std::size_t i) { return deep->frame(i).picture; }, 256, quiet)
                        : PaletteColors();
        EXPECT_EQ(first.bits(), palette == 0 ? 1u : palette == 1 ? 4u : 8u);
        if (palette >= 0) continue;
        const Picture plain =
            dither ? DitherPicture(deep->frame(3).picture, wanted.palette, wanted.count, kRemapColors)
                   : RemapPicture(deep->frame(3).picture, wanted.palette, wanted.count, kRemapColors);
        EXPECT_TRUE(same(PictureToTrueColor(first), PictureToTrueColor(plain)));
      }
}

TEST(Transition, ARadarThatStandsStillGoesOnUntilItIsStopped) {
  Numbers numbers;
  numbers.radarStep = 0;
  Recorder recorder;
  const std::vector<HeldPicture> pictures = {testing::small_picture(40, 30, 24)};
  const auto stream = generated_frames(transition(), values_of(numbers, 8, 1), {pictures}, recorder.host);
  ASSERT_TRUE(stream);
  const Picture earlier = stream->frame(7).picture;
  EXPECT_EQ(earlier.handle().data(), stream->frame(8).picture.handle().data()) << "one picture";
  int asked = 0;
  recorder.host.stop_requested = [&] { return ++asked > 500; };
  DocumentWindow window;
  EXPECT_FALSE(generate(transition(), values_of(numbers, 8, 1), {pictures}, DocumentKind::APNG, window,
                        recorder.host));
  EXPECT_EQ(window.list.size(), 0u);
  EXPECT_TRUE(recorder.messages.empty());
}

TEST(Transition, FilesAreReadAgainWhileTheyAreTheSameAndElseTheAnimationIsGivenUpWithTheReason) {
  settings::PictureMemoryMegabytes = 1;
  const testing::ScratchFolder folder;
  for (const bool palette : {false, true})
    for (const std::string fate : {"same", "gone", "changed", "damaged"}) {
      SCOPED_TRACE(fate);
      Recorder recorder;
      GeneratorInputs plain, held;
      for (std::uint32_t i = 0; i < 4; ++i) {
        const auto path = folder / (std::to_string(i) + ".bmp");
        ASSERT_TRUE(GraphicFileWrite(path.string(), testing::small_picture(700 - i, 600, 24, i)));
        plain.pictures.push_back(GraphicFileRead(path.string()));
        held.pictures.push_back(hold_picture_file(path, recorder.host));
      }
      EXPECT_LE(resident_bytes(), memory_budget()) << "nobody works on them yet";
      const auto last = folder / "3.bmp";
      if (fate == "gone") std::filesystem::remove(last);
      if (fate == "changed")
        ASSERT_TRUE(GraphicFileWrite(last.string(), testing::small_picture(700, 600, 24)));
      if (fate == "damaged") std::filesystem::resize_file(last, 30);
      FieldValues values = values_of({}, 7, 1);
      values.set("trueColor", std::int64_t{!palette});
      DocumentWindow window;
      const bool made = generate(transition(), values, held, DocumentKind::MING, window, recorder.host);
      EXPECT_EQ(made, fate == "same");
      if (made) {
        DocumentWindow wanted;
        ASSERT_TRUE(generate(transition(), values, plain, DocumentKind::MING, wanted, recorder.host));
        for (int i = 0; i < 4; ++i) std::filesystem::remove(folder / (std::to_string(i) + ".bmp"));
        EXPECT_EQ(recorder.messages.size(), 0u);
        const auto frames = stored_frames(window), others = stored_frames(wanted);
        ASSERT_EQ(frames.count, others.count);
        for (std::size_t i = 0; i < frames.count; ++i)
          EXPECT_TRUE(same(frames.frame(i).picture, others.frame(i).picture)) << "without its file, " << i;
        continue;
      }
      EXPECT_EQ(window.list.size(), 0u);
      ASSERT_EQ(recorder.messages.size(), 1u);
      EXPECT_NE(recorder.messages.front().find("3.bmp"), std::string::npos) << recorder.messages.front();
    }
  settings::PictureMemoryMegabytes = 0;
}

}  // namespace
}  // namespace vellum
