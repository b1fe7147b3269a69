// What holds for every generator, and what Spin makes.
#include <gtest/gtest.h>

#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "generators/generator.h"
#include "image/picture_operations.h"
#include "image/rotate.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/trials.h"

namespace vellum {
namespace {

using testing::Recorder;

constexpr DocumentKind kKinds[] = {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP};

GeneratorInputs inputs_of(const Generator& generator, std::uint32_t bits) {
  GeneratorInputs inputs;
  if (generator.input != GeneratorInput::None) inputs.pictures.push_back(testing::small_picture(9, 6, bits));
  if (generator.input == GeneratorInput::Pictures)
    inputs.pictures.push_back(testing::small_picture(5, 8, 32));
  return inputs;
}

/// Large signs tell no more than small ones, and chance would make each run another one.
FieldValues small(const Generator& generator, FieldValues values) {
  for (const Field& field : generator.parameters.fields) {
    const std::string_view name = field.name;
    const bool initial = values.number(name) == field.initial;
    if (initial && (name == "pointsize" || name == "characters" || name == "columns" || name == "size"))
      values.set(name, std::max<std::int64_t>(field.least, 8));
    if (initial && (name == "scatter" || name == "jumpby")) values.set(name, std::int64_t{8});
    if (initial && name.ends_with("Cells")) values.set(name, std::int64_t{3});
    if (initial && name == "seed") values.set(name, std::int64_t{7});
  }
  return values;
}

class GeneratorLaw : public ::testing::TestWithParam<const Generator*> {
 protected:
  testing::ScratchFolder folder;
};

TEST_P(GeneratorLaw, EveryValueGivesAValidFileOfTheFramesThatTheStreamHas) {
  const Generator& generator = *GetParam();
  std::size_t number = 0;
  for (const DocumentKind kind : kKinds)
    for (const FieldValues& tried : testing::trials(generator.parameters, {})) {
      const FieldValues values = small(generator, tried);
      SCOPED_TRACE(std::string(testing::kFileNames.at(kind)) + " trial " + std::to_string(number++));
      const auto inputs = inputs_of(generator, number % 2 ? 8 : 32);
      Recorder recorder;
      DocumentWindow window, again;
      if (check_values(generator.parameters, values, {})) {
        EXPECT_FALSE(generate(generator, values, inputs, kind, window, recorder.host));
        EXPECT_EQ(recorder.messages.size(), 1u);
        continue;
      }
      const auto stream = generated_frames(generator, values, inputs, recorder.host);
      ASSERT_TRUE(stream);
      ASSERT_TRUE(generate(generator, values, inputs, kind, window, recorder.host));
      const auto path = folder / testing::kFileNames.at(kind);
      ASSERT_TRUE(save_document(window, path, recorder.host)) << ::testing::PrintToString(recorder.messages);
      if (number % 8 == 0) {
        EXPECT_EQ(testing::objections(path), "");
      }
      ASSERT_TRUE(open_document(again, path, recorder.host));
      EXPECT_EQ(frame_entries(again).size(), stream->count);
      EXPECT_EQ(document_size(again.list, again.document).width, stream->canvas.width);
      if (again.document.kind != DocumentKind::PING)
        EXPECT_EQ(GetIterations(again.list, again.document), stream->plays);
    }
}

TEST_P(GeneratorLaw, StopsAndMissingPicturesLeaveNothing) {
  const Generator& generator = *GetParam();
  const FieldValues values = initial_values(generator.parameters.fields);
  DocumentWindow window;
  Recorder recorder;
  if (generator.input != GeneratorInput::None) {
    EXPECT_FALSE(generate(generator, values, {}, DocumentKind::APNG, window, recorder.host));
    EXPECT_EQ(recorder.messages.size(), 1u);
  }
  recorder.host.stop_requested = [] { return true; };
  EXPECT_FALSE(
      generate(generator, values, inputs_of(generator, 24), DocumentKind::APNG, window, recorder.host));
  EXPECT_EQ(window.list.size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(All, GeneratorLaw,
                         ::testing::ValuesIn(generator_table().begin(), generator_table().end()),
                         [](const auto& row) { return std::string(row.param->parameters.name); });

FrameStream spin(const Picture& picture, std::initializer_list<std::pair<const char*, std::int64_t>> given) {
  const Generator& generator = *find_generator("spin");
  FieldValues values = initial_values(generator.parameters.fields);
  for (const auto& [field, value] : given) values.set(field, value);
  Recorder recorder;
  return *generated_frames(generator, values, {{picture}}, recorder.host);
}

bool same(const Picture& a, const Picture& b) {
  if (a.width() != b.width() || a.height() != b.height()) return false;
  for (std::uint32_t y = 0; y < a.height(); ++y)
    for (std::uint32_t x = 0; x < a.width(); ++x)
      if (PictureGetPixel(a, x, y) != PictureGetPixel(b, x, y)) return false;
  return true;
}

TEST(Spin, TurnsByTruncatedAnglesOnTheCanvasThatIsWanted) {
  const Picture picture = testing::small_picture(21, 12, 24);
  // 360 / 7 * i truncated, as the eye would list them; 33 steps have one that rounding would change.
  const int sevenths[] = {0, 51, 102, 154, 205, 257, 308};
  const auto seven =
      spin(picture, {{"count", 7}, {"direction", 0}, {"frame", 110}, {"delay", 40}, {"backColor", 0x123456}});
  ASSERT_EQ(seven.count, 7u);
  std::uint32_t most = 0, least = 1000;
  for (const int angle : sevenths) {
    const auto [width, height] = rotated_size(21, 12, angle);
    most = std::max({most, width, height}), least = std::min({least, width, height});
  }
  EXPECT_EQ(seven.canvas.width, most);
  EXPECT_EQ(seven.canvas.height, most);
  for (std::size_t i = 0; i < 7; ++i) {
    const StreamedFrame frame = seven.frame(i);
    EXPECT_EQ(frame.delay, 40u);
    EXPECT_EQ(PictureGetPixel(frame.picture, 0, 0) & 0xFFFFFF, 0x123456u);
    const Picture turned = rotated(picture, sevenths[i], 0x123456);
    const auto middle = [](std::uint32_t whole, std::uint32_t part) {
      return static_cast<std::int32_t>(whole - part) / 2;
    };
    const std::int32_t x = middle(most, turned.width()), y = middle(most, turned.height());
    const Picture there = PictureCrop(frame.picture, {x, y, x + static_cast<std::int32_t>(turned.width()),
                                                      y + static_cast<std::int32_t>(turned.height())});
    EXPECT_TRUE(same(there, turned)) << sevenths[i];
  }
  EXPECT_EQ(spin(picture, {{"count", 7}, {"direction", 0}, {"frame", 111}}).canvas.width, least);
  EXPECT_EQ(spin(picture, {{"frame", 112}}).canvas.width, 21u);
  EXPECT_TRUE(same(spin(picture, {{"frame", 112}, {"direction", 0}}).frame(0).picture, picture));
  // Clockwise begins at one degree and so never stands upright.
  EXPECT_TRUE(same(spin(picture, {{"frame", 112}, {"count", 33}, {"direction", 0}}).frame(11).picture,
                   PictureCrop(rotated(picture, 119, 0),
                               [&] {
                                 const auto [w, h] = rotated_size(21, 12, 119);
                                 const std::int32_t x = (static_cast<std::int32_t>(w) - 21) / 2,
                                                    y = (static_cast<std::int32_t>(h) - 12) / 2;
                                 return PictureRect{x, y, x + 21, y + 12};
                               }())))
      << "119 and not 120";
  EXPECT_FALSE(same(spin(picture, {{"frame", 112}}).frame(0).picture, picture));
}

}  // namespace
}  // namespace vellum
