// What is drawn from nothing: how many frames, how long each, which colors at rest; what turns and what goes
// round without a seam.
#include <gtest/gtest.h>

#include <numeric>

#include "generators/generator.h"
#include "image/picture_operations.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::Recorder;
using Given = std::vector<std::pair<const char*, FieldValue>>;

FieldValue n(std::int64_t number) { return number; }

struct Made {
  DocumentWindow window;
  std::vector<std::uint32_t> delays;
  std::vector<Picture> canvases;
};

Made made(const char* name, const Given& given, DocumentKind kind = DocumentKind::APNG) {
  const Generator& generator = *find_generator(name);
  FieldValues values = initial_values(generator.parameters.fields);
  for (const auto& [field, value] : given) {
    EXPECT_TRUE(find_field(generator.parameters.fields, field)) << field;
    values.set(field, value);
  }
  GeneratorInputs inputs;
  if (generator.input == GeneratorInput::Pictures)
    inputs.pictures = {testing::small_picture(9, 6, 24), testing::small_picture(5, 8, 24)};
  Recorder recorder;
  Made result;
  EXPECT_TRUE(generate(generator, values, inputs, kind, result.window, recorder.host)) << name;
  const FrameStream frames = canvas_frames(result.window);
  for (std::size_t i = 0; i < frames.count; ++i) {
    const StreamedFrame frame = frames.frame(i);
    result.delays.push_back(frame.delay);
    result.canvases.push_back(frame.picture);
  }
  return result;
}

constexpr Colour kOpaque = 0xFF000000, kClear = 0x01000000, kAny = 0xFF000000;

struct Row {
  const char* generator;
  Given given;
  std::size_t count;
  std::uint32_t delay;
  std::ptrdiff_t rest;  ///< the frame at rest; -1: there is none
  std::uint32_t pause;
  Colour corner;             ///< of the frame at rest, or of the first; kClear: transparent
  Colour text = 0xFF000000;  ///< a color that is seen then; 0xFF000000 says nothing
};

bool shows(const Picture& picture, Colour color) {
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x)
      if (PictureGetPixel(picture, x, y) == (color | kOpaque)) return true;
  return false;
}

TEST(Drawn, FramesTimesAndColorsAreThoseThatTheValuesSay) {
  const FieldValue ab = std::string("AB"), wide = std::string("{green}A{pause}B");
  const Row rows[] = {
      {"banner", {{"simpleCells", n(5)}}, 5, 100, 4, 2000, 0xFFFFFF, 0x0000FF},
      {"banner", {{"simpleCells", n(5)}, {"simpleRolling", n(1)}}, 10, 100, 4, 2000, 0xFFFFFF, 0x0000FF},
      {"banner", {{"simpleCells", n(5)}, {"simplePause", n(0)}}, 5, 100, 4, 100, 0xFFFFFF},
      {"banner", {{"simpleCells", n(5)}, {"simpleTransparent", n(1)}}, 5, 100, 4, 2000, kClear, 0x808080},
      {"banner", {{"type", n(0)}, {"embossedCells", n(5)}}, 5, 100, 4, 2000, 0xC0C0C0, 0xFFFFFF},
      {"banner", {{"type", n(1)}, {"steps", n(4)}}, 8, 100, 4, 2000, 0x000000, 0xFFFFFF},
      {"banner", {{"type", n(1)}, {"glow", n(0)}, {"glowCells", n(5)}}, 5, 100, 4, 2000, 0x000000, 0xFFFFFF},
      {"banner", {{"type", n(1)}, {"glow", n(3)}, {"text", ab}}, 2, 100, 1, 2000, 0x000000, 0xFFFFFF},
      {"banner", {{"type", n(2)}, {"scannersCells", n(5)}}, 5, 100, 4, 2000, 0x000000, 0x0000FF},
      {"banner", {{"type", n(4)}, {"softCells", n(5)}}, 5, 100, 4, 2000, 0xFFFFFF, 0x0000FF},
      {"banner", {{"type", n(5)}, {"text", ab}}, 3, 100, 2, 2000, 0xFFFFFF, 0x0000FF},
      {"banner", {{"type", n(6)}, {"textureCells", n(5)}}, 5, 100, 4, 2000, 0xFFFFFF, 0x000000},
      {"banner", {{"type", n(7)}, {"waveCells", n(7)}}, 7, 100, -1, 0, 0xFFFFFF, 0x808080},
      {"button", {{"roundness", n(100)}, {"states", n(1)}}, 3, 500, -1, 0, kClear, 0xC0C0C0},
      {"button",
       {{"roundness", n(100)}, {"states", n(1)}, {"transparent", n(0)}},
       3,
       500,
       -1,
       0,
       0xFFFFFF,
       0xC0C0C0},
      // Two letters of 8 dots on a sign of 32 have 48 dots to go.
      {"led", {{"text", ab}, {"characters", n(4)}}, 48, 60, -1, 0, 0x000000, 0x404040},
      {"led", {{"text", ab}, {"characters", n(4)}, {"jumpby", n(5)}}, 10, 60, -1, 0, 0x000000},
      {"led", {{"text", ab}, {"characters", n(4)}, {"loop", n(0)}}, 49, 60, -1, 0, 0x000000},
      {"led", {{"text", ab}, {"characters", n(4)}, {"smoothScroll", n(1)}}, 96, 30, -1, 0, 0x000000},
      {"led", {{"text", ab}, {"characters", n(4)}, {"compact", n(1)}}, 36, 60, -1, 0, 0x000000},
      {"led", {{"text", ab}, {"effect", n(2)}}, 20, 60, -1, 0, 0x000000},
      // "A" in the middle of 32 dots: 20 of them behind its left.
      {"led", {{"text", wide}, {"characters", n(4)}}, 48, 60, 20, 1000, 0x000000, 0x00FF00},
      {"led", {{"text", ab}, {"effect", n(4)}}, 2, 60, 1, 1000, 0x000000, 0x0000FF},
      {"led", {{"text", ab}, {"effect", n(5)}}, 2, 1000, 0, 1000, 0x000000, 0x0000FF},
      {"led", {{"text", wide}, {"effect", n(6)}}, 2, 1000, 0, 1000, 0x000000, 0x00FF00},
      {"panel", {{"text", ab}}, 6, 375, -1, 0, 0x86AD9E, 0x000000},
      {"panel", {{"text", ab}, {"showCursor", n(0)}}, 2, 100, 1, 1500, 0x86AD9E, 0x000000},
      {"panel", {{"text", std::string("A\\nB")}, {"effect", n(1)}}, 2, 100, 1, 1500, 0x86AD9E, 0x000000},
      {"panel", {{"text", ab}, {"effect", n(2)}}, 20, 100, 10, 1500, 0x86AD9E, 0x000000},
      {"panel", {{"text", ab}, {"effect", n(4)}}, 2, 1500, 0, 1500, 0x86AD9E, 0x000000},
      {"panel", {{"text", ab}, {"effect", n(5)}}, 1, 1500, 0, 1500, 0x86AD9E, 0x000000},
      {"throbber", {}, 12, 80, -1, 0, kClear, 0x000000},
      {"throbber", {{"incAngle", n(7)}}, 51, 80, -1, 0, kClear, 0x000000},
      {"throbber", {{"incAngle", n(180)}, {"transparent", n(0)}}, 2, 80, -1, 0, 0xFFFFFF, 0x000000},
      {"photostack", {{"steps", n(3)}, {"seed", n(3)}, {"size", n(32)}}, 6, 60, 5, 1000, 0x808080, 0xFFFFFF},
  };
  for (const Row& row : rows) {
    std::string trace = row.generator;
    for (const auto& [field, value] : row.given)
      trace += std::string(" ") + field + "=" +
               field_value_text(*find_field(find_generator(row.generator)->parameters.fields, field), value);
    SCOPED_TRACE(trace);
    const Made result = made(row.generator, row.given);
    ASSERT_EQ(result.delays.size(), row.count);
    const std::size_t rest = row.rest < 0 ? 0 : static_cast<std::size_t>(row.rest);
    if (row.rest >= 0) {
      EXPECT_EQ(result.delays[rest], row.pause);
    }
    // The panel's cursor blinks behind two letters that were typed.
    const std::size_t other = rest == 0 ? row.count - 1 : 0;
    if (row.count > 1) {
      EXPECT_EQ(result.delays[other], row.delay);
    }
    const Picture& shown = result.canvases[row.rest < 0 ? row.count / 2 : rest];
    const Colour corner = PictureGetPixel(shown, 0, 0);
    EXPECT_EQ(row.corner == kClear ? alpha_of(corner) : corner,
              row.corner == kClear ? 0 : row.corner | kOpaque);
    if (row.text != kAny) {
      EXPECT_TRUE(shows(shown, row.text)) << std::hex << row.text;
    }
  }
}

/// How many pixels differ.
std::size_t step_between(const Picture& a, const Picture& b) {
  std::size_t count = 0;
  for (std::uint32_t y = 0; y < a.height(); ++y)
    for (std::uint32_t x = 0; x < a.width(); ++x)
      count += PictureGetPixel(a, x, y) != PictureGetPixel(b, x, y);
  return count;
}

TEST(Drawn, WhatGoesRoundHasNoSeam) {
  const FieldValue text = std::string("Round");
  const std::pair<const char*, Given> rows[] = {
      {"banner", {{"text", text}, {"simpleRolling", n(1)}}},
      {"banner", {{"text", text}, {"type", n(1)}}},
      {"banner", {{"text", text}, {"type", n(7)}}},
      {"led", {{"text", text}, {"characters", n(5)}, {"jumpby", n(3)}}},
      {"led", {{"text", text}, {"characters", n(5)}, {"effect", n(1)}, {"smoothScroll", n(1)}}},
      {"led", {{"text", text}, {"characters", n(5)}, {"effect", n(3)}}},
      {"panel", {{"text", text}, {"effect", n(2)}}},
      {"panel", {{"text", text}, {"effect", n(3)}, {"columns", n(6)}}},
      {"throbber", {}},
      {"throbber", {{"type", n(1)}}},
      {"throbber", {{"type", n(2)}, {"incAngle", n(7)}}},
      {"throbber", {{"type", n(3)}}},
      {"throbber", {{"type", n(4)}, {"incAngle", n(11)}}},
  };
  for (const auto& [name, given] : rows) {
    SCOPED_TRACE(name);
    const auto canvases = made(name, given).canvases;
    std::size_t most = 0;
    for (std::size_t i = 1; i < canvases.size(); ++i)
      most = std::max(most, step_between(canvases[i - 1], canvases[i]));
    EXPECT_GT(most, 0u);
    EXPECT_LE(step_between(canvases.back(), canvases.front()), most + most / 10);
  }
}

TEST(Drawn, AThrobberTurnedByAStepIsItsNextFrame) {
  for (std::int64_t type = 0; type < 5; ++type) {
    SCOPED_TRACE(type);
    const auto canvases =
        made("throbber", {{"type", n(type)}, {"incAngle", n(90)}, {"startAngle", n(17)}}).canvases;
    ASSERT_EQ(canvases.size(), 4u);
    const std::uint32_t last = canvases[0].width() - 1;
    for (std::uint32_t y = 0; y <= last; ++y)
      for (std::uint32_t x = 0; x <= last; ++x)
        ASSERT_NEAR(alpha_of(PictureGetPixel(canvases[1], last - y, x)),
                    alpha_of(PictureGetPixel(canvases[0], x, y)), 20);
  }
}

TEST(Drawn, FramesHoldWhatChangesAndAPaletteHasTheColorsThatAreAllowed) {
  const Made sign = made("led", {{"effect", n(4)}}, DocumentKind::MING);
  for (const Picture& picture : testing::images_of(sign.window)) EXPECT_EQ(picture.bits(), 4u);
  const auto images = testing::images_of(sign.window);
  EXPECT_LT(images[1].width(), images[0].width() / 4) << "one letter of the sign";
  const Made clear = made("banner", {{"trueColor", n(0)}, {"simpleTransparent", n(1)}}, DocumentKind::MING);
  for (const Picture& picture : testing::images_of(clear.window)) EXPECT_LE(picture.bits(), 8u);
  EXPECT_EQ(alpha_of(PictureGetPixel(clear.canvases.back(), 0, 0)), 0);
}

TEST(Drawn, BadTextsAreToldOrDrawnAndALongOneCanBeStopped) {
  const std::string endless = "{red", nonsense = "{green{{}{pause{nobody}";
  for (const char* name : {"banner", "button", "led", "panel"})
    for (const std::string& text :
         {std::string(), std::string("  "), std::string(10'000, 'x'), endless, nonsense,
          std::string("\xFF\xFE\xC3"), std::string("\n\n"), std::string("{pause}"), std::string("{{}")}) {
      SCOPED_TRACE(std::string(name) + " " + text.substr(0, 20));
      const Generator& generator = *find_generator(name);
      FieldValues values = initial_values(generator.parameters.fields);
      values.set("text", text);
      Recorder recorder;
      DocumentWindow window;
      const bool fine = generate(generator, values, {}, DocumentKind::MING, window, recorder.host);
      EXPECT_EQ(recorder.messages.size(), fine ? 0u : 1u);
      EXPECT_EQ(window.list.size() > 0, fine);
      if (text.empty() || text == "  " || text.size() > 260) {
        EXPECT_FALSE(fine);
      }
      int asked = 0;
      recorder.host.stop_requested = [&] { return ++asked > 1; };
      DocumentWindow stopped;
      if (fine && name != std::string("button")) {
        generate(generator, values, {}, DocumentKind::MING, stopped, recorder.host);
        EXPECT_LE(asked, 3);
      }
    }
}

}  // namespace
}  // namespace vellum
