// What operations on frames compute: seen on the canvases that an animation shows before and after.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>

#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "image/picture_operations.h"
#include "operations/operation.h"
#include "playback/compositor.h"
#include "support/documents.h"

namespace vellum {
namespace {

using Canvases = std::vector<Picture>;

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
DocumentWindow animation(DocumentKind kind, std::uint8_t color_type) {
  DocumentWindow window = testing::small_document(kind, 4, color_type);
  const auto entries = frame_entries(window);
  for (std::size_t i = 1; i < entries.size(); ++i) {
    ChunkRecord record;
    chunk_list_get(window.list, entries[i], record);
    record_take_pixels(record, kind, PictureCrop(picture_of(record), {0, 0, 3, 3}));
    SetFrameOffset(record, kind, {static_cast<std::int32_t>(i), 1});
    set_frame_dispose(record, kind, i == 2);
    chunk_list_put(window.list, entries[i], record);
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

DocumentWindow done(const char* name, const DocumentWindow& source,
                    std::initializer_list<std::pair<const char*, std::int64_t>> given,
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
                     std::uint32_t height, const PixelOf& pixel) {
  const Canvases were = canvases_of(before), are = canvases_of(after);
  ASSERT_EQ(were.size(), are.size());
  for (std::size_t i = 0; i < are.size(); ++i) {
    ASSERT_EQ(are[i].width(), width);
    ASSERT_EQ(are[i].height(), height);
    for (std::uint32_t y = 0; y < height; ++y)
      for (std::uint32_t x = 0; x < width; ++x)
        for (unsigned c = 0; c < 24; c += 8)  // reconstructed frames of 32 bits have been rounded once more
          ASSERT_NEAR(PictureGetPixel(are[i], x, y) >> c & 255, pixel(were[i], x, y) >> c & 255, 1)
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
    const auto adjusted = [&](std::initializer_list<std::pair<const char*, std::int64_t>> given) {
      return done("adjust", source, given);
    };
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

}  // namespace
}  // namespace vellum
