// What operations on frames compute: seen on the canvases that an animation shows before and after.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <numbers>
#include <numeric>

#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/resample.h"
#include "image/rotate.h"
#include "image/text_mask.h"
#include "operations/combine.h"
#include "operations/operation.h"
#include "operations/social_sizes.h"
#include "playback/compositor.h"
#include "support/corpus.h"
#include "support/documents.h"

namespace vellum {
namespace {

using Canvases = std::vector<Picture>;
using Given = std::vector<std::pair<const char*, std::int64_t>>;

Canvases canvases_of(const DocumentWindow& window) {
  Compositor compositor(window.list, window.document);
  Canvases canvases;
  for (std::uint32_t i = 0; i < compositor.frames(); ++i) canvases.push_back(compositor.frame(i).picture);
  return canvases;
}

std::vector<std::uint32_t> delays_of(const DocumentWindow& window) {
  std::vector<std::uint32_t> delays;
  for (const std::size_t entry : frame_entries(window))
    delays.push_back(
        GetFrameDelay(window.list.record(entry), window.document.kind, ticks_per_second(window.list)));
  return delays;
}

/// Four frames of 6 x 4; the later ones are 3 x 3 and one of them is disposed of.
DocumentWindow animation(DocumentKind kind, std::uint8_t color_type, bool disposes = true) {
  DocumentWindow window = testing::small_document(kind, 4, color_type);
  const auto entries = frame_entries(window);
  for (std::size_t i = 1; i < entries.size(); ++i) {
    ChunkRecord record;
    chunk_list_get(window.list, entries[i], record);
    record_take_pixels(record, kind, PictureCrop(picture_of(record), {0, 0, 3, 3}));
    SetFrameOffset(record, kind, {static_cast<std::int32_t>(i), 1});
    set_frame_dispose(record, kind, disposes && i == 2);
    chunk_list_put(window.list, entries[i], record);
  }
  if (!disposes) {
    ChunkRecord first;
    chunk_list_get(window.list, entries[0], first);
    set_frame_dispose(first, kind, 0);
    chunk_list_put(window.list, entries[0], first);
  }
  return window;
}

struct Form {
  DocumentKind kind;
  std::uint8_t colorType;
};
constexpr Form kForms[] = {{DocumentKind::APNG, 0}, {DocumentKind::APNG, 2}, {DocumentKind::APNG, 3},
                           {DocumentKind::APNG, 6}, {DocumentKind::MING, 2}, {DocumentKind::MING, 3},
                           {DocumentKind::MING, 6}, {DocumentKind::WEBP, 2}, {DocumentKind::WEBP, 6}};

DocumentWindow done(const char* name, const DocumentWindow& source, const Given& given,
                    const FrameList* frames = nullptr) {
  const Operation& operation = *find_operation(name);
  FieldValues values = initial_values(fields_for(operation.parameters, source));
  for (const auto& [field, value] : given) values.set(field, value);
  DocumentWindow window = source;
  testing::Recorder recorder;
  EXPECT_TRUE(run_operation(operation, window, values,
                            frames ? *frames : all_frames(frame_entries(source).size()), recorder.host))
      << name << ::testing::PrintToString(recorder.messages);
  return window;
}

using PixelOf = std::function<Colour(const Picture& before, std::uint32_t x, std::uint32_t y)>;

/// The canvases after it are those before it, pixel by pixel as `pixel` says.
void expect_canvases(const DocumentWindow& before, const DocumentWindow& after, std::uint32_t width,
                     std::uint32_t height, const PixelOf& pixel, int tolerance = 1) {
  const Canvases were = canvases_of(before), are = canvases_of(after);
  ASSERT_EQ(were.size(), are.size());
  for (std::size_t i = 0; i < are.size(); ++i) {
    ASSERT_EQ(are[i].width(), width);
    ASSERT_EQ(are[i].height(), height);
    for (std::uint32_t y = 0; y < height; ++y)
      for (std::uint32_t x = 0; x < width; ++x)
        for (unsigned c = 0; c < 24; c += 8)  // reconstructed frames of 32 bits have been rounded once more
          ASSERT_NEAR(PictureGetPixel(are[i], x, y) >> c & 255, pixel(were[i], x, y) >> c & 255, tolerance)
              << "frame " << i << " at " << x << ", " << y;
  }
}

TEST(FrameOperations, GeometryMovesCanvasesAsItMovesPictures) {
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = animation(form.kind, form.colorType);
    const auto flipped = [&](std::int64_t mode) { return done("flip", source, {{"mode", mode}}); };
    expect_canvases(source, flipped(0), 6, 4,
                    [](const Picture& p, auto x, auto y) { return PictureGetPixel(p, 5 - x, y); });
    expect_canvases(source, flipped(1), 6, 4,
                    [](const Picture& p, auto x, auto y) { return PictureGetPixel(p, x, 3 - y); });
    expect_canvases(source, flipped(2), 4, 6,
                    [](const Picture& p, auto x, auto y) { return PictureGetPixel(p, y, 3 - x); });
    expect_canvases(source, flipped(3), 4, 6,
                    [](const Picture& p, auto x, auto y) { return PictureGetPixel(p, 5 - y, x); });
    expect_canvases(source, flipped(4), 6, 4,
                    [](const Picture& p, auto x, auto y) { return PictureGetPixel(p, 5 - x, 3 - y); });
    // Rectangles that some frames don't reach into, too.
    for (const auto& [left, top, width, height] : std::initializer_list<std::array<std::uint32_t, 4>>{
             {0, 0, 2, 2}, {1, 1, 4, 3}, {5, 0, 1, 4}, {0, 3, 6, 1}})
      expect_canvases(
          source, done("crop", source, {{"left", left}, {"top", top}, {"width", width}, {"height", height}}),
          width, height, [left = left, top = top](const Picture& p, auto x, auto y) {
            return PictureGetPixel(p, left + x, top + y);
          });
    for (const auto& [width, height] :
         std::initializer_list<std::pair<std::uint32_t, std::uint32_t>>{{15, 9}, {4, 3}})
      expect_canvases(source, done("tile", source, {{"width", width}, {"height", height}}), width, height,
                      [](const Picture& p, auto x, auto y) { return PictureGetPixel(p, x % 6, y % 4); });
  }
}

TEST(FrameOperations, SelectedFramesTurnAboutTheirCentreAndLeaveTheCanvas) {
  for (const Form& form : kForms)
    for (const std::int64_t mode : {0, 2, 3}) {
      const DocumentWindow source = animation(form.kind, form.colorType);
      for (const std::size_t frame : {0, 2}) {
        const FrameList frames{frame};
        const DocumentWindow turned = done("flip", source, {{"mode", mode}}, &frames);
        const Extent canvas = document_size(turned.list, turned.document);
        EXPECT_EQ(canvas.width, 6u);
        EXPECT_EQ(canvas.height, 4u);
      }
    }
}

/// v + color + brightness, then the contrast about 128; each term truncated toward 0.
Colour balanced(Colour color, const std::array<int, 3>& add, int brightness, int contrast) {
  Colour result = 0;
  for (unsigned c = 0; c < 3; ++c) {
    const int v = static_cast<int>(color >> 8 * c & 255);
    const int moved = v + static_cast<int>(std::trunc(add[c] * 255 / 100.0)) +
                      static_cast<int>(std::trunc(brightness * 255 / 100.0));
    const int spread = static_cast<int>(std::trunc((moved - 128) * (100 + contrast) / 100.0)) + 128;
    result |= static_cast<Colour>(std::clamp(spread, 0, 255)) << 8 * c;
  }
  return result;
}

TEST(FrameOperations, BalanceMovesEachColorAndNothingElse) {
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = testing::small_document(form.kind, 2, form.colorType);
    for (const auto& [red, green, blue, brightness, contrast] : std::initializer_list<std::array<int, 5>>{
             {20, -7, 0, 0, 0}, {0, 0, 0, -33, 0}, {0, 0, 0, 0, 41}, {100, -100, 3, 5, -100}}) {
      const DocumentWindow after = done("balance", source,
                                        {{"red", red},
                                         {"green", green},
                                         {"blue", blue},
                                         {"brightness", brightness},
                                         {"contrast", contrast}});
      const auto were = testing::images_of(source), are = testing::images_of(after);
      for (std::size_t i = 0; i < were.size(); ++i) {
        const Picture before = PictureWithTransparency(were[i], {}),
                      now = PictureWithTransparency(are[i], {});
        for (std::uint32_t y = 0; y < before.height(); ++y)
          for (std::uint32_t x = 0; x < before.width(); ++x) {
            const Colour old = PictureGetPixel(before, x, y);
            ASSERT_EQ(PictureGetPixel(now, x, y),
                      balanced(old, {red, green, blue}, brightness, contrast) | (old & 0xFF000000));
          }
      }
      EXPECT_EQ(delays_of(after), delays_of(source));
    }
    const DocumentWindow same = done("balance", source, {});
    for (std::size_t i = 0; i < same.list.size(); ++i)
      EXPECT_EQ(same.list.entry(i).record, source.list.entry(i).record) << "five zeros change nothing";
  }
}

std::vector<std::uint32_t> colors_at_origin(const DocumentWindow& window) {
  std::vector<std::uint32_t> colors;
  for (const Picture& canvas : canvases_of(window)) colors.push_back(PictureGetPixel(canvas, 2, 1));
  return colors;
}

TEST(FrameOperations, OrderAndNumber) {
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    DocumentWindow source = animation(form.kind, form.colorType);
    const auto entries = frame_entries(source);
    for (std::size_t i = 0; i < entries.size(); ++i) {
      ChunkRecord record;
      chunk_list_get(source.list, entries[i], record);
      set_frame_delay(record, form.kind, ticks_per_second(source.list),
                      static_cast<std::uint32_t>(100 * (i + 1)));
      chunk_list_put(source.list, entries[i], record);
    }
    using Times = std::vector<std::uint32_t>;
    const auto were = colors_at_origin(source);
    const DocumentWindow back = done("reverse", source, {});
    // Reconstructed frames of 32 bits have been rounded once more.
    const auto are = colors_at_origin(back);
    for (std::size_t i = 0; i < are.size(); ++i)
      for (unsigned c = 0; c < 24; c += 8)
        EXPECT_NEAR(are[i] >> c & 255, were[were.size() - 1 - i] >> c & 255, 1) << i;
    EXPECT_EQ(delays_of(back), (Times{400, 300, 200, 100}));
    EXPECT_EQ(delays_of(done("reverse", source, {{"way", 1}})), (Times{100, 200, 300, 400, 300, 200}));
    const FrameList middle{1, 3};
    EXPECT_EQ(delays_of(done("reverse", source, {}, &middle)), (Times{100, 400, 300, 200}));
    EXPECT_EQ(delays_of(done("depopulate", source, {})), (Times{300, 700}));
    EXPECT_EQ(delays_of(done("depopulate", source, {{"preserve", 0}})), (Times{100, 300}));
    EXPECT_EQ(delays_of(done("depopulate", source, {{"mode", 1}})), (Times{600, 400}));
    EXPECT_EQ(colors_at_origin(done("depopulate", source, {{"keep", 1}, {"skip", 2}})),
              (std::vector<std::uint32_t>{were[0], were[3]}));
  }
}

/// Red, green, blue, alpha.
using Pixel = std::array<int, 4>;

/// The own pictures after it are those before it, pixel by pixel as `pixel` says of the whole picture.
void expect_pictures(
    const DocumentWindow& before, const DocumentWindow& after,
    const std::function<Pixel(const std::function<Pixel(int x, int y)>& at, int x, int y)>& pixel) {
  const auto were = testing::images_of(before), are = testing::images_of(after);
  ASSERT_EQ(were.size(), are.size());
  for (std::size_t i = 0; i < are.size(); ++i) {
    const auto from = testing::rgba_of(before, were[i]), to = testing::rgba_of(after, are[i]);
    const int width = static_cast<int>(were[i].width()), height = static_cast<int>(were[i].height());
    const auto at = [&](int x, int y) {
      x = std::clamp(x, 0, width - 1), y = std::clamp(y, 0, height - 1);
      const std::uint8_t* p = from.data() + 4 * (y * width + x);
      return Pixel{p[0], p[1], p[2], p[3]};
    };
    ASSERT_EQ(from.size(), to.size());
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const std::uint8_t* p = to.data() + 4 * (y * width + x);
        ASSERT_EQ((Pixel{p[0], p[1], p[2], p[3]}), pixel(at, x, y)) << x << ", " << y;
      }
  }
}

TEST(FrameOperations, AdjustFollowsItsFormulas) {
  const auto each = [](const auto& change) {
    return [change](const auto& at, int x, int y) {
      const Pixel p = at(x, y);
      return Pixel{change(p[0]), change(p[1]), change(p[2]), p[3]};
    };
  };
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = testing::small_document(form.kind, 2, form.colorType);
    const auto adjusted = [&](const Given& given) { return done("adjust", source, given); };
    expect_pictures(source,
                    adjusted({{"shadows", 20}, {"highlights", 220}, {"outputLow", 10}, {"outputHigh", 200}}),
                    each([](int v) {
                      return static_cast<int>(std::lround(10 + 190 * std::clamp((v - 20) / 200.0, 0.0, 1.0)));
                    }));
    expect_pictures(source, adjusted({{"invert", 1}}), each([](int v) { return 255 - v; }));
    expect_pictures(source, adjusted({{"lightness", 100}}), each([](int) { return 255; }));
    expect_pictures(source, adjusted({{"lightness", -100}}), each([](int) { return 0; }));
    // A third of a turn takes each color to the next; without saturation the middle of a color's ends stays.
    expect_pictures(source, adjusted({{"hue", 120}}), [](const auto& at, int x, int y) {
      const Pixel p = at(x, y);
      return Pixel{p[2], p[0], p[1], p[3]};
    });
    const auto grey = adjusted({{"saturation", -100}});
    expect_pictures(source, grey, [](const auto& at, int x, int y) {
      const Pixel p = at(x, y);
      const int middle =
          static_cast<int>(std::lround((std::max({p[0], p[1], p[2]}) + std::min({p[0], p[1], p[2]})) / 2.0));
      return Pixel{middle, middle, middle, p[3]};
    });
    expect_pictures(source, adjusted({{"channel", 2}, {"invert", 1}}), [](const auto& at, int x, int y) {
      const Pixel p = at(x, y);
      return Pixel{p[0], 255 - p[1], p[2], p[3]};
    });
    for (const std::int64_t k : {-10, 7})
      expect_pictures(source, adjusted({{"sharpen", k}}), [k](const auto& at, int x, int y) {
        Pixel result = at(x, y);
        for (std::size_t c = 0; c < 3; ++c) {
          int sum = 0;
          for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) sum += at(x + dx, y + dy)[c];
          const double v = result[c] + static_cast<double>(k) / 10 * (result[c] - sum / 9.0);
          result[c] = std::clamp(static_cast<int>(std::lround(v)), 0, 255);
        }
        return result;
      });
  }
}

TEST(FrameOperations, BordersComeAndGo) {
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = animation(form.kind, form.colorType);
    const auto bordered = [](const Picture& p, std::uint32_t x, std::uint32_t y) {
      const bool inside = x >= 2 && y >= 2 && x < 8 && y < 6;
      return inside ? PictureGetPixel(p, x - 2, y - 2) : make_colour(0x30, 0x20, 0x10, 255);
    };
    const auto framed = done("frame", source, {{"thickness", 2}, {"color", 0x102030}});
    for (const DocumentWindow& made :
         {framed, done("frame", source, {{"absolute", 1}, {"width", 10}, {"height", 8}, {"color", 0x102030}}),
          done("frame", source, {{"thickness", 2}, {"color", 0x102030}, {"firstOnly", 1}})})
      expect_canvases(source, made, 10, 8, bordered);
    const PixelOf same = [](const Picture& p, std::uint32_t x, std::uint32_t y) {
      return PictureGetPixel(p, x, y);
    };
    expect_canvases(source, done("trim", framed, {{"mode", 0}, {"color", 0x102030}}), 6, 4, same);
    expect_canvases(source, done("trim", framed, {{"mode", 2}, {"pixels", 2}}), 6, 4, same);
    expect_canvases(source, done("trim", framed, {{"mode", 2}, {"pixels", 2}, {"north", 0}, {"east", 0}}), 8,
                    6, [](const Picture& p, std::uint32_t x, std::uint32_t y) {
                      return x < 6 && y >= 2 ? PictureGetPixel(p, x, y - 2)
                                             : make_colour(0x30, 0x20, 0x10, 255);
                    });
    // Everything of one color.
    const Operation& trim = *find_operation("trim");
    DocumentWindow plain = done("adjust", source, {{"lightness", 100}});
    if (form.colorType == 6) continue;
    testing::Recorder recorder;
    FieldValues values = initial_values(trim.parameters.fields);
    EXPECT_FALSE(run_operation(trim, plain, values, all_frames(4), recorder.host));
    EXPECT_EQ(recorder.messages, std::vector<std::string>{"Nothing would be left of this animation."});
  }
}

TEST(FrameOperations, ShadowsLieUnderWhatThrowsThem) {
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING}) {
    const DocumentWindow source = testing::small_document(kind, 2, 2);
    const auto hard = done("shadow", source, {{"softness", 0}, {"offset", 3}});
    const auto flat = done("shadow", source,
                           {{"softness", 0}, {"offset", 3}, {"removeAlpha", 1}, {"background", 0xFFFFFF}});
    const auto were = testing::images_of(source), are = testing::images_of(hard),
               over = testing::images_of(flat);
    for (std::size_t i = 0; i < 2; ++i) {
      ASSERT_EQ(are[i].width(), 9u);
      ASSERT_EQ(are[i].height(), 7u);
      EXPECT_EQ(over[i].bits(), 24u);
      for (std::uint32_t y = 0; y < 7; ++y)
        for (std::uint32_t x = 0; x < 9; ++x) {
          const bool inside = x < 6 && y < 4, shaded = x >= 3 && y >= 3;
          const Colour color = inside ? PictureGetPixel(were[i], x, y) | 0xFF000000 : shaded ? 0x80000000 : 0;
          EXPECT_EQ(PictureGetPixel(are[i], x, y), color) << x << ", " << y;
          const Colour light = inside ? color & 0xFFFFFF : shaded ? 0x7F7F7F : 0xFFFFFF;
          EXPECT_EQ(PictureGetPixel(over[i], x, y) & 0xFFFFFF, light) << x << ", " << y;
        }
    }
    // A soft one reaches three times its softness in every direction, and loses nothing of its darkness.
    const auto soft =
        testing::images_of(done("shadow", source, {{"softness", 2}, {"offset", 0}, {"opacity", 100}}));
    EXPECT_EQ(soft[0].width(), 6u + 12);
    EXPECT_EQ(PictureGetPixel(soft[0], 0, 9) >> 24, 1u);
  }
}

/// The letters of the trials below, which are larger than most of the canvas.
const Mask& letters(const char* text = "A%i") {
  static std::map<std::string, Mask> drawn;
  Mask& mask = drawn[text];
  if (mask.values.empty()) mask = draw_text(text, {.family = "DejaVu Sans", .points = 4}).mask;
  return mask;
}

/// What shows where letters of a color lie over a pixel with their left and top at (left, top).
Colour lettered(Colour below, std::int64_t x, std::int64_t y, Colour color, std::uint32_t percent,
                const Mask& mask = letters()) {
  if (x < 0 || y < 0 || x >= mask.width || y >= mask.height) return below;
  const std::uint32_t alpha = (mask.row(static_cast<std::uint32_t>(y))[x] * percent + 50) / 100;
  Colour shown = 0;
  for (unsigned c = 0; c < 24; c += 8)
    shown |= ((color >> c & 255) * alpha + (below >> c & 255) * (255 - alpha)) / 255 << c;
  return shown;
}

FieldValues lettering(const char* operation, const DocumentWindow& source, const Given& given) {
  FieldValues values = initial_values(fields_for(find_operation(operation)->parameters, source));
  values.set("text", std::string(operation == std::string("caption") ? "i" : "A%i"));
  values.set("font", std::string("DejaVu Sans"));
  for (const char* name : {"bold", "italic"}) values.set(name, std::int64_t{0});
  values.set("size", std::int64_t{4});
  for (const auto& [name, value] : given) values.set(name, value);
  return values;
}

DocumentWindow lettered(const char* operation, const DocumentWindow& source, const Given& given) {
  DocumentWindow window = source;
  testing::Recorder recorder;
  EXPECT_TRUE(run_operation(*find_operation(operation), window, lettering(operation, source, given),
                            all_frames(4), recorder.host))
      << operation << ::testing::PrintToString(recorder.messages);
  return window;
}

TEST(FrameOperations, LettersLieOnTheCanvasesWhereTheyAreWanted) {
  const Mask& mask = letters("i");
  ASSERT_LE(mask.width, 4u);
  const auto high = mask.height + 2;
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = animation(form.kind, form.colorType);
    for (const std::int64_t x : {0, -2, 3}) {
      const auto drawn = [&](const Picture& p, auto px, auto py) {
        return lettered(PictureGetPixel(p, px, py), px - x, py, 0x2010F0, 70);
      };
      expect_canvases(
          source,
          lettered("text", source,
                   {{"at", 0}, {"margin", 0}, {"offsetX", x}, {"color", 0x2010F0}, {"opacity", 70}}),
          6, 4, drawn, 3);
    }
    // The second and the third frame alone: the fourth shows nothing of it.
    const DocumentWindow some =
        lettered("text", source, {{"at", 0}, {"margin", 0}, {"first", 2}, {"last", 3}, {"color", 0xFF00FF}});
    const Canvases were = canvases_of(source), are = canvases_of(some);
    for (std::size_t i = 0; i < 4; ++i)
      for (std::uint32_t y = 0; y < 4; ++y)
        for (std::uint32_t x = 0; x < 6; ++x) {
          const Colour before = PictureGetPixel(were[i], x, y),
                       wanted = i == 1 || i == 2 ? lettered(before, x, y, 0xFF00FF, 100) : before;
          for (unsigned c = 0; c < 24; c += 8)
            ASSERT_NEAR(PictureGetPixel(are[i], x, y) >> c & 255, wanted >> c & 255, 3) << i;
        }
    // A strip of one pixel more than the letters at each side, below or above.
    const auto left = (6 - static_cast<std::int64_t>(mask.width)) / 2;
    for (const bool above : {false, true}) {
      const DocumentWindow captioned =
          lettered("caption", source, {{"padding", 1}, {"above", above}, {"background", 0x80C0E0}});
      expect_canvases(
          source, captioned, 6, 4 + high,
          [&](const Picture& p, std::uint32_t x, std::uint32_t y) {
            const bool strip = above ? y < high : y >= 4;
            if (!strip) return PictureGetPixel(p, x, above ? y - high : y);
            return lettered(0x80C0E0, x - left, std::int64_t{y} - (above ? 0 : 4) - 1, 0, 100, mask);
          },
          3);
    }
    // What no frame covers has no mark: where a frame was cleared behind it, and around partial ones of a
    // WebP.
    if (form.kind == DocumentKind::WEBP) continue;
    const DocumentWindow standing = animation(form.kind, form.colorType, false);
    expect_canvases(
        standing, lettered("watermark", standing, {{"at", 0}, {"margin", 0}, {"color", 0x30F0F0}}), 6, 4,
        [](const Picture& p, auto x, auto y) {
          return lettered(PictureGetPixel(p, x, y), x, y, 0x30F0F0, 50);
        },
        3);
  }
}

/// A file of two frames of 3 x 2 with alpha.
std::string other_file(const testing::ScratchFolder& folder, DocumentWindow& other, std::uint8_t type) {
  other = testing::small_document(DocumentKind::APNG, 2, type);
  const auto path = folder / "other.png";
  testing::Recorder recorder;
  EXPECT_TRUE(save_document(other, path, recorder.host));
  return path;
}

DocumentWindow with_file(const char* operation, const DocumentWindow& source, const std::string& path,
                         const Given& given) {
  FieldValues values = initial_values(fields_for(find_operation(operation)->parameters, source));
  values.set("with", path);
  for (const auto& [name, value] : given) values.set(name, value);
  DocumentWindow window = source;
  testing::Recorder recorder;
  EXPECT_TRUE(run_operation(*find_operation(operation), window, values, all_frames(4), recorder.host))
      << operation << ::testing::PrintToString(recorder.messages);
  return window;
}

TEST(FrameOperations, AnOverlayLiesOverEachFrameAndAnUnderlayUnderIt) {
  const testing::ScratchFolder folder;
  DocumentWindow other;
  const std::string path = other_file(folder, other, 6);
  const auto pictures = testing::images_of(other);
  const auto laid = [&](Colour below, std::size_t frame, std::int64_t x, std::int64_t y,
                        std::uint32_t percent) {
    const Picture& top = pictures[frame % 2];
    if (x < 0 || y < 0 || x >= top.width() || y >= top.height()) return below & 0xFFFFFF;
    const Colour color = PictureGetPixel(top, x, y);
    const std::uint32_t alpha = ((color >> 24) * percent + 50) / 100;
    Colour shown = 0;
    for (unsigned c = 0; c < 24; c += 8)
      shown |= ((color >> c & 255) * alpha + (below >> c & 255) * (255 - alpha)) / 255 << c;
    return shown;
  };
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = animation(form.kind, form.colorType);
    const Canvases were = canvases_of(source);
    const auto expect = [&](const DocumentWindow& after, const auto& pixel) {
      const Canvases are = canvases_of(after);
      ASSERT_EQ(are.size(), were.size());
      for (std::size_t i = 0; i < are.size(); ++i)
        for (std::uint32_t y = 0; y < are[i].height(); ++y)
          for (std::uint32_t x = 0; x < are[i].width(); ++x)
            for (unsigned c = 0; c < 24; c += 8)
              ASSERT_NEAR(PictureGetPixel(are[i], x, y) >> c & 255, pixel(i, x, y) >> c & 255, 2)
                  << i << " at " << x << ", " << y;
    };
    expect(with_file("overlay", source, path, {{"at", 0}, {"offsetX", -1}, {"offsetY", 2}, {"opacity", 60}}),
           [&](std::size_t i, std::int64_t x, std::int64_t y) {
             return laid(PictureGetPixel(were[i], x, y), i, x + 1, y - 2, 60);
           });
    expect(with_file("overlay", source, path, {{"at", 0}, {"first", 2}, {"last", 2}}),
           [&](std::size_t i, std::int64_t x, std::int64_t y) {
             const Colour before = PictureGetPixel(were[i], x, y);
             return i == 1 ? laid(before, 0, x, y, 100) : before & 0xFFFFFF;
           });
    if (form.colorType == 6) continue;
    // What is opaque hides it, and beside it there is room.
    const DocumentWindow under =
        with_file("underlay", source, path, {{"canvas", 1}, {"scale", 200}, {"at", 8}});
    const Extent canvas = document_size(under.list, under.document);
    EXPECT_TRUE(canvas.width == 2 * pictures[0].width() && canvas.height == 2 * pictures[0].height());
    const Canvases are = canvases_of(under);
    for (std::size_t i = 0; i < are.size(); ++i)
      EXPECT_EQ(PictureGetPixel(are[i], canvas.width - 1, canvas.height - 1) & 0xFFFFFF,
                PictureGetPixel(were[i], 5, 3) & 0xFFFFFF);
  }
}

TEST(FrameOperations, EveryKindShowsTheSameOfWhatWholeCanvasesBecome) {
  const auto small = [](const char* name, const Given& given, DocumentKind kind, std::uint8_t type) {
    return canvases_of(done(name, testing::small_document(kind, 4, type), given));
  };
  const auto expect_equal = [](const Canvases& a, const Canvases& b) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
      ASSERT_TRUE(a[i].width() == b[i].width() && a[i].height() == b[i].height());
      for (std::uint32_t y = 0; y < a[i].height(); ++y)
        for (std::uint32_t x = 0; x < a[i].width(); ++x)
          for (unsigned c = 0; c < 24; c += 8)
            ASSERT_NEAR(PictureGetPixel(a[i], x, y) >> c & 255, PictureGetPixel(b[i], x, y) >> c & 255, 1)
                << i << " at " << x << ", " << y;
    }
  };
  {
    const std::uint8_t type = 2;
    const std::int64_t white = 0xFFFFFF;
    const std::pair<const char*, Given> work[] = {
        {"flip", {{"mode", 5}, {"angle", 30}, {"background", white}}},
        {"flip", {{"mode", 6}, {"shear", -20}, {"background", white}}},
        {"flip", {{"mode", 7}, {"shear", 40}, {"background", white}}},
        {"social", {{"destination", 11}, {"width", 50}, {"height", 30}, {"margin", 5}, {"keyline", 1}}}};
    for (const auto& [name, given] : work) {
      SCOPED_TRACE(std::string(name) + std::to_string(type));
      const Canvases wanted = small(name, given, DocumentKind::MING, type);
      expect_equal(small(name, given, DocumentKind::APNG, type), wanted);
      expect_equal(small(name, given, DocumentKind::WEBP, type), wanted);
    }
  }
  // An angle that is a quarter turn is that turn; one that isn't leaves the middle of a plain picture plain.
  for (const Form& form : kForms)
    expect_equal(
        canvases_of(done("flip", animation(form.kind, form.colorType), {{"mode", 5}, {"angle", -90}})),
        canvases_of(done("flip", animation(form.kind, form.colorType), {{"mode", 3}})));
  for (const std::uint32_t bits : {24u, 32u}) {
    const Picture plain = bits == 24 ? PictureCreateFilled(40, 30, 0x123456)
                                     : PictureToTrueColorAlpha(PictureCreateFilled(40, 30, 0x123456));
    for (const int angle : {7, -33, 45, 100, 200, 359}) {
      const Picture turned = rotated(plain, angle, 0);
      EXPECT_EQ(PictureGetPixelOpaque(turned, turned.width() / 2, turned.height() / 2) & 0xFFFFFF, 0x123456u);
      const double turn = angle * std::numbers::pi / 180;
      EXPECT_NEAR(turned.width(), std::abs(40 * std::cos(turn)) + std::abs(30 * std::sin(turn)), 1.1);
    }
    const Picture leaning = sheared(plain, 45, false, 0);
    EXPECT_EQ(leaning.width(), 70u);
    EXPECT_EQ(PictureGetPixel(leaning, 0, 0) & 0xFFFFFF, 0u) << "the top goes to the right";
    EXPECT_EQ(PictureGetPixel(leaning, 60, 2) & 0xFFFFFF, 0x123456u);
  }
}

TEST(FrameOperations, ImagesMoveAndAreCopiedAndOthersComeAmongThem) {
  const testing::ScratchFolder folder;
  DocumentWindow other;
  const std::string path = other_file(folder, other, 2);
  const auto order = [](const DocumentWindow& window, const DocumentWindow& source) {
    const auto are = testing::images_of(window), were = testing::images_of(source);
    std::string text;
    for (const Picture& picture : are) {
      const auto same = [&](const Picture& p) { return p.handle().data() == picture.handle().data(); };
      const auto at = std::ranges::find_if(were, same);
      text += at == were.end() ? '-' : static_cast<char>('1' + (at - were.begin()));
    }
    return text;
  };
  struct Case {
    const char* operation;
    FrameList frames;
    std::int64_t image, side;
    const char* wanted;
  };
  const Case cases[] = {{"move", {0}, 4, 0, "2341"},      {"move", {2, 3}, 1, 1, "3412"},
                        {"move", {1, 3}, 1, 0, "1243"},   {"move", {1}, 2, 0, "1234"},
                        {"copy", {0, 1}, 4, 0, "123412"}, {"copy", {3}, 1, 1, "41234"}};
  for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
    const DocumentWindow source = testing::small_document(kind, 4, 2);
    for (const Case& c : cases)
      EXPECT_EQ(order(done(c.operation, source, {{"image", c.image}, {"side", c.side}}, &c.frames), source),
                c.wanted)
          << c.operation;
    for (const std::int64_t after : {0, 2, 4}) {
      const DocumentWindow merged = with_file("merge", source, path, {{"after", after}});
      std::string wanted = "1234";
      wanted.insert(static_cast<std::size_t>(after), "--");
      EXPECT_EQ(order(merged, source), wanted);
      const auto delays = delays_of(merged), own = delays_of(source), theirs = delays_of(other);
      EXPECT_EQ(
          std::accumulate(delays.begin(), delays.end(), 0u),
          std::accumulate(own.begin(), own.end(), 0u) + std::accumulate(theirs.begin(), theirs.end(), 0u));
    }
  }
}

TEST(Combine, FilesPlayOneAfterTheOtherInTheMiddleOfTheLargest) {
  const testing::ScratchFolder folder;
  testing::Recorder recorder;
  const Form forms[] = {{DocumentKind::APNG, 0}, {DocumentKind::MING, 2}, {DocumentKind::WEBP, 2}};
  for (const bool whole : {true, false})
    for (const DocumentKind kind : {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP}) {
      std::vector<std::string> files;
      Canvases wanted;
      std::vector<std::uint32_t> delays;
      for (const Form& form : forms) {
        // Around partial frames of a WebP there would be nothing.
        DocumentWindow window = form.kind == DocumentKind::WEBP
                                    ? testing::small_document(form.kind, 4, form.colorType)
                                    : animation(form.kind, form.colorType, false);
        files.push_back(folder / (std::to_string(files.size()) + testing::kFileNames.at(form.kind)));
        ASSERT_TRUE(save_document(window, files.back(), recorder.host));
        DocumentWindow read;
        ASSERT_TRUE(open_document(read, files.back(), recorder.host));
        for (const Picture& canvas : canvases_of(read)) wanted.push_back(canvas);
        for (const std::uint32_t delay : delays_of(read)) delays.push_back(delay);
      }
      files.push_back(folder / "large.bmp");
      ASSERT_TRUE(GraphicFileWrite(files.back(), PictureCreateFilled(10, 9, 0x405060)));
      wanted.push_back(PictureCreateFilled(10, 9, 0x405060));
      delays.push_back(100);
      FieldValues values = initial_values(kCombine.fields);
      values.set("reconstruct", std::int64_t{whole});
      values.set("background", std::int64_t{0x0000FF});
      DocumentWindow made;
      ASSERT_TRUE(combine_files(made, files, values, kind, recorder.host))
          << ::testing::PrintToString(recorder.messages);
      EXPECT_EQ(delays_of(made), delays);
      const Canvases are = canvases_of(made);
      ASSERT_EQ(are.size(), wanted.size());
      for (std::size_t i = 0; i < are.size(); ++i) {
        const auto left = (10 - wanted[i].width()) / 2, top = (9 - wanted[i].height()) / 2;
        for (std::uint32_t y = 0; y < 9; ++y)
          for (std::uint32_t x = 0; x < 10; ++x) {
            const bool inside =
                x >= left && y >= top && x < left + wanted[i].width() && y < top + wanted[i].height();
            ASSERT_EQ(PictureGetPixel(are[i], x, y) & 0xFFFFFF,
                      inside ? PictureGetPixel(wanted[i], x - left, y - top) & 0xFFFFFF : 0x0000FFu)
                << i << " at " << x << ", " << y;
          }
      }
    }
  DocumentWindow made;
  EXPECT_FALSE(combine_files(made, {folder / "no.png"}, initial_values(kCombine.fields), DocumentKind::APNG,
                             recorder.host));
  EXPECT_EQ(recorder.messages.size(), 1u);
}

TEST(TextMask, IsTightAndTheSameEachTimeInEveryStyleAndScript) {
  const std::string texts[] = {"Wave", "two\nlines", "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d", "broken \xff\xc3",
                               "e\xcc\x81"};
  for (const std::string& text : texts)
    for (const bool smooth : {true, false})
      for (const std::int32_t space : {-3, 0, 9}) {
        SCOPED_TRACE(text + " " + std::to_string(space));
        const TextStyle style{.family = "No Such Font", .smooth = smooth, .letterSpace = space, .gutter = 3};
        const DrawnText drawn = draw_text(text, style), again = draw_text(text, style);
        EXPECT_EQ(drawn.mask.values, again.mask.values);
        EXPECT_NE(drawn.family, style.family);
        Extent ink{};
        std::uint32_t left = drawn.mask.width, top = drawn.mask.height;
        for (std::uint32_t y = 0; y < drawn.mask.height; ++y)
          for (std::uint32_t x = 0; x < drawn.mask.width; ++x) {
            const std::uint8_t value = drawn.mask.row(y)[x];
            EXPECT_TRUE(smooth || value == 0 || value == 255);
            if (value == 0) continue;
            left = std::min(left, x), top = std::min(top, y);
            ink = {std::max(ink.width, x + 1), std::max(ink.height, y + 1)};
          }
        EXPECT_TRUE(left == 3 && top == 3 && ink.width + 3 == drawn.mask.width &&
                    ink.height + 3 == drawn.mask.height);
        // Letter by letter it becomes the whole, at its place.
        std::uint64_t before = 0;
        for (std::size_t shown = 0; shown <= count_characters(text); ++shown) {
          const Mask part = draw_text(text, style, shown).mask;
          ASSERT_EQ(part.width, drawn.mask.width);
          ASSERT_EQ(part.height, drawn.mask.height);
          std::uint64_t sum = 0;
          for (const std::uint8_t value : part.values) sum += value;
          EXPECT_GE(sum, before);
          before = sum;
        }
      }
  EXPECT_TRUE(draw_text("", {}).mask.values.empty());
  EXPECT_TRUE(draw_text(" \n ", {}).mask.values.empty());
  const std::string long_text(100'000, 'm'), longer(100'001, 'm');
  EXPECT_TRUE(draw_text(long_text, {.points = 400}).large && draw_text(longer, {}).large);
  const DrawnText wrapped = draw_text(long_text, {.points = 4, .wrap = 300});
  EXPECT_TRUE(!wrapped.large && wrapped.broken && wrapped.mask.width <= 300 && wrapped.mask.height > 8192);
  EXPECT_FALSE(draw_text("some words of a text", {.wrap = 300}).broken);
}

/// What a pixel of social media is without rows, parts or shared pictures: ground, shadow, keyline, image.
class PlainSocial {
 public:
  PlainSocial(const FieldValues& values, const Canvases& frames) : values_(values), frames_(frames) {
    const double room_w = width() - 2.0 * margin(), room_h = height() - 2.0 * margin();
    const double scale = std::min(room_w * at("size") / 100 / frames[0].width(),
                                  room_h * at("size") / 100 / frames[0].height());
    w_ = std::lround(frames[0].width() * scale);
    h_ = std::lround(frames[0].height() * scale);
    x_ = margin() + (width() - 2 * margin() - w_) * at("across") / 100;
    y_ = margin() + (height() - 2 * margin() - h_) * at("down") / 100;
    for (const Picture& frame : frames)
      images_.push_back(PictureResample(frame, static_cast<std::uint32_t>(w_), static_cast<std::uint32_t>(h_),
                                        ResampleFilter::Automatic));
  }
  Colour pixel(std::size_t frame, long x, long y) const {
    if (x >= x_ && y >= y_ && x < x_ + w_ && y < y_ + h_)
      return PictureGetPixel(images_[frame], static_cast<std::uint32_t>(x - x_),
                             static_cast<std::uint32_t>(y - y_)) &
             0xFFFFFF;
    const long line = at("keyline") ? at("keylineSize") : 0;
    if (x >= x_ - line && y >= y_ - line && x < x_ + w_ + line && y < y_ + h_ + line)
      return static_cast<Colour>(at("keylineColor"));
    const int alpha = (shadow(x, y) * static_cast<int>(at("shadowOpacity")) + 50) / 100;
    Colour result = 0;
    for (unsigned c = 0; c < 24; c += 8) {
      const auto over = static_cast<int>(at("shadowColor") >> c & 255),
                 under = static_cast<int>(ground(x, y) >> c & 255);
      result |= static_cast<Colour>(at("shadow") ? over * alpha / 255 + under * (255 - alpha) / 255 : under)
                << c;
    }
    return result;
  }
  long width() const { return at("width"); }
  long height() const { return at("height"); }

 private:
  long at(const char* name) const { return values_.number(name); }
  long margin() const { return at("margin"); }

  Colour ground(long x, long y) const {
    const auto first = static_cast<Colour>(at("color1")), second = static_cast<Colour>(at("color2"));
    if (at("process") == 0) return first;
    Colour result = 0;
    for (unsigned c = 0; c < 24; c += 8) {
      double value = 0;
      if (at("process") == 3) {
        const Picture& image = frames_[0];
        for (std::uint32_t i = 0; i < image.width() * image.height(); ++i)
          value += PictureGetPixel(image, i % image.width(), i / image.width()) >> c & 255;
        value /= image.width() * image.height();
      } else {
        const double share = at("gradientAngle") == 0
                                 ? (static_cast<double>(x) + 0.5) / static_cast<double>(width())
                                 : (static_cast<double>(y) + 0.5) / static_cast<double>(height());
        value = (first >> c & 255) + (static_cast<double>(second >> c & 255) - (first >> c & 255)) * share;
      }
      result |= static_cast<Colour>(std::lround(value)) << c;
    }
    return result;
  }
  /// Three boxes over a rectangle: down, across, down ...
  int shadow(long x, long y) const {
    const long soft = at("shadowSoftness"), reach = 3 * soft, box = 2 * soft + 1;
    if (mask_.empty()) {
      wide_ = w_ + 2 * reach, high_ = h_ + 2 * reach;
      mask_.assign(static_cast<std::size_t>(wide_ * high_), 0);
      for (long j = 0; j < h_; ++j)
        for (long i = 0; i < w_; ++i) mask_[static_cast<std::size_t>((j + reach) * wide_ + i + reach)] = 255;
      for (int pass = 0; pass < (soft == 0 ? 0 : 6); ++pass) {
        std::vector<int> next(mask_.size());
        for (long j = 0; j < high_; ++j)
          for (long i = 0; i < wide_; ++i) {
            long sum = 0;
            for (long d = -soft; d <= soft; ++d) sum += mask_at(pass % 2 ? i + d : i, pass % 2 ? j : j + d);
            next[static_cast<std::size_t>(j * wide_ + i)] = static_cast<int>((sum + box / 2) / box);
          }
        mask_ = next;
      }
    }
    return mask_at(x - x_ - at("shadowOffset") + reach, y - y_ - at("shadowOffset") + reach);
  }
  int mask_at(long i, long j) const {
    return i < 0 || j < 0 || i >= wide_ || j >= high_ ? 0 : mask_[static_cast<std::size_t>(j * wide_ + i)];
  }

  const FieldValues& values_;
  const Canvases& frames_;
  Canvases images_;
  long x_, y_, w_, h_;
  mutable long wide_ = 0, high_ = 0;
  mutable std::vector<int> mask_;
};

TEST(FrameOperations, SocialMediaIsAGroundAShadowAKeylineAndTheImage) {
  const Given cases[] = {
      {{"process", 0}, {"color1", 0x336699}, {"shadow", 0}},
      {{"process", 0},
       {"keyline", 1},
       {"keylineSize", 3},
       {"keylineColor", 0x10F0A0},
       {"across", 0},
       {"down", 100}},
      {{"process", 1},
       {"gradientAngle", 0},
       {"color2", 0x0011EE},
       {"shadowOffset", 30},
       {"shadowOpacity", 80}},
      {{"process", 1}, {"gradientAngle", 90}, {"size", 40}, {"shadowSoftness", 0}, {"shadowColor", 0x8844FF}},
      {{"process", 3}, {"margin", 0}, {"size", 100}, {"shadowSoftness", 7}, {"across", 70}}};
  for (const Form& form : kForms) {
    if (form.colorType == 6) continue;
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = animation(form.kind, form.colorType, false);
    const Canvases before = canvases_of(source);
    for (Given given : cases) {
      given.insert(given.begin(), {{"destination", 11}, {"width", 61}, {"height", 47}, {"margin", 4}});
      const Canvases after = canvases_of(done("social", source, given));
      FieldValues values = initial_values(find_operation("social")->parameters.fields);
      for (const auto& [field, value] : given) values.set(field, value);
      const PlainSocial plain(values, before);
      ASSERT_EQ(after.size(), before.size());
      for (std::size_t i = 0; i < after.size(); ++i)
        for (long y = 0; y < plain.height(); ++y)
          for (long x = 0; x < plain.width(); ++x)
            ASSERT_EQ(
                PictureGetPixel(after[i], static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)) &
                    0xFFFFFF,
                plain.pixel(i, x, y))
                << ", frame " << i << ": " << x << ", " << y;
    }
  }
}

TEST(SocialSizes, LinesOfOnesOwnAreNamesSizesAndKilobytes) {
  const auto size = parse_social_size("Wide strip; 970 x 250 ; 150");
  ASSERT_TRUE(size);
  EXPECT_EQ(size->first, "Wide strip");
  EXPECT_EQ(std::tuple(size->second.width, size->second.height, size->second.most),
            std::tuple(970u, 250u, 150u << 10));
  EXPECT_EQ(parse_social_size("a;1x1")->second.most, 0u);
  for (const char* line : {"", "a", ";1x1", "a;1x", "a;0x4", "a;4x16384", "a;4x4;", "a;4x4;0", "a;4x4;5 MB"})
    EXPECT_FALSE(parse_social_size(line)) << line;
  const testing::ScratchFolder folder;
  const auto before = std::exchange(socialSizesFile, folder / "sizes.txt");
  std::ofstream(socialSizesFile) << "# mine\r\nTall;100x300\r\nnonsense\nFlat;300x100;9\n";
  EXPECT_EQ(social_destinations().size(), 14u);
  EXPECT_STREQ(social_destinations()[12].name, "Tall");
  EXPECT_EQ(social_size(13)->most, 9u << 10);
  EXPECT_TRUE(social_sizes_fault().starts_with("Line 3 of sizes.txt")) << social_sizes_fault();
  socialSizesFile = before;
}

TEST(FrameOperations, TitlesStandInFrontCreditsBehindAndTheFramesBetweenStay) {
  for (const Form& form : kForms) {
    SCOPED_TRACE(std::string(testing::kFileNames.at(form.kind)) + " type " + std::to_string(form.colorType));
    const DocumentWindow source = animation(form.kind, form.colorType);
    const Operation& operation = *find_operation("titles");
    FieldValues values = initial_values(fields_for(operation.parameters, source));
    values.set("title", std::string("T"));
    values.set("creditsText", std::string("#C\nc"));
    for (const auto& [field, value] : Given{{"steps", 2},
                                            {"delay", 70},
                                            {"pause", 900},
                                            {"largeSize", 4},
                                            {"smallSize", 4},
                                            {"creditsEffect", 0},
                                            {"backColor", 0x302010}})
      values.set(field, value);
    DocumentWindow window = source;
    testing::Recorder recorder;
    ASSERT_TRUE(run_operation(operation, window, values, all_frames(4), recorder.host));
    const Canvases were = canvases_of(source), are = canvases_of(window);
    std::vector<std::uint32_t> delays = {70, 900, 70, 70};
    for (const std::uint32_t delay : delays_of(source)) delays.push_back(delay);
    delays.push_back(900);
    EXPECT_EQ(delays_of(window), delays);
    ASSERT_EQ(are.size(), 9u);
    bool lettered = false;
    for (std::uint32_t y = 0; y < 4; ++y)
      for (std::uint32_t x = 0; x < 6; ++x) {
        EXPECT_EQ(PictureGetPixel(are[3], x, y) & 0xFFFFFF, 0x302010u) << "faded out";
        lettered = lettered || (PictureGetPixel(are[1], x, y) & 0xFFFFFF) != 0x302010;
        for (std::size_t i = 0; i < 4; ++i)
          for (unsigned c = 0; c < 32; c += 8)
            ASSERT_NEAR(PictureGetPixelOpaque(are[4 + i], x, y) >> c & 255,
                        PictureGetPixelOpaque(were[i], x, y) >> c & 255, 1)
                << "frame " << i;
      }
    EXPECT_TRUE(lettered);
  }
}

}  // namespace
}  // namespace vellum
