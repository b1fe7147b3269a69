// The graphic matrix: how many frames transitions take, and that each ends where the next begins.
#include <gtest/gtest.h>

#include "generators/generator.h"
#include "generators/matrix_effects.h"
#include "image/picture_operations.h"
#include "support/documents.h"

namespace vellum {
namespace {

bool same(const Picture& a, const Picture& b) {
  for (std::uint32_t y = 0; y < a.height(); ++y)
    for (std::uint32_t x = 0; x < a.width(); ++x)
      if (PictureGetPixel(a, x, y) != PictureGetPixel(b, x, y)) return false;
  return a.width() == b.width() && a.height() == b.height();
}

TEST(MatrixEffects, TakeTheFramesOfTheirFormulas) {
  const MatrixSteps steps{.blinds = 12,
                          .block = 12,
                          .blockStep = 8,
                          .diamond = 24,
                          .diamondStep = 3,
                          .disappear = 50,
                          .dissolve = 10,
                          .dot = 16,
                          .dotStep = 2,
                          .duststorm = 16,
                          .expand = 15,
                          .panes = 32,
                          .panesSteps = 8};
  // On 60 x 40: none 1; strips of 12; 5 x 4 blocks by 8; |dx| + |dy| to 24 by 3; 40 halved until below 2;
  // 10 fades; corners at 11.3 by 2; 16 shares; 100 % by 15; 8 turns.
  const std::uint32_t frames[] = {1, 12, 3, 8, 5, 10, 6, 16, 7, 8};
  for (std::size_t i = 0; i < kMatrixEffects; ++i)
    EXPECT_EQ(matrix_effect(i).frames(60, 40, steps), frames[i]) << i;
  const Picture old = PictureCreateFilled(60, 40, 0x0000FF), next = PictureCreateFilled(60, 40, 0xFF0000);
  for (std::size_t i = 1; i < kMatrixEffects; ++i)
    for (std::uint32_t frame = 1; frame < frames[i]; ++frame) {
      Picture cell = old;
      ASSERT_TRUE(matrix_effect(i).paint(cell, next, frame, steps, 5));
      EXPECT_FALSE(same(cell, old)) << i << " " << frame;
      EXPECT_FALSE(same(cell, next)) << i << " " << frame;
    }
  // One of 16 shares of all pixels, and a tenth of the way.
  Picture dust = old, faded = old;
  matrix_effect(7).paint(dust, next, 4, steps, 9);
  matrix_effect(5).paint(faded, next, 1, steps, 9);
  std::uint32_t changed = 0;
  for (std::uint32_t p = 0; p < 2400; ++p) changed += PictureGetPixel(dust, p % 60, p / 60) == 0xFF0000;
  EXPECT_EQ(changed, 600u);
  EXPECT_EQ(PictureGetPixel(faded, 0, 0), 0x1A00E6u) << "229.5 and 25.5, rounded up";
}

TEST(Matrix, GoesRoundAndEndsWhereItBegan) {
  const Generator& generator = *find_generator("matrix");
  testing::Recorder recorder;
  for (std::int64_t transition = 0; transition <= 10; ++transition)
    for (std::int64_t animation = 0; animation < 4; ++animation)
      for (const std::size_t pictures : {1, 3, 4, 5})
        for (const DocumentKind kind : {DocumentKind::MING, DocumentKind::WEBP}) {
          SCOPED_TRACE(::testing::Message() << transition << " " << animation << " " << pictures);
          GeneratorInputs inputs;
          inputs.kind = kind;
          for (std::size_t i = 0; i < pictures; ++i)
            inputs.pictures.push_back(testing::small_picture(30 + static_cast<std::uint32_t>(i), 20,
                                                             i % 2 ? 32 : 8, static_cast<unsigned>(i + 1)));
          FieldValues values = initial_values(generator.parameters.fields);
          values.set("factor", std::int64_t{60}), values.set("seed", std::int64_t{3}),
              values.set("transition", transition);
          values.set("animation", animation), values.set("mode", static_cast<std::int64_t>(pictures % 3)),
              values.set("edge", animation);
          const auto stream = generated_frames(generator, values, inputs, recorder.host);
          ASSERT_TRUE(stream);
          Picture canvas = stream->frame(0).picture;
          const Picture first = canvas;
          ASSERT_EQ(canvas.width(), stream->canvas.width);
          std::size_t pauses = 1;
          for (std::size_t i = 1; i < stream->count; ++i) {
            const StreamedFrame frame = stream->frame(i);
            ASSERT_TRUE(frame.picture);
            EXPECT_TRUE(kind != DocumentKind::WEBP || covers_canvas(frame, stream->canvas));
            PictureBlit(canvas, frame.offset.x, frame.offset.y, frame.picture, 0, 0,
                        static_cast<std::int32_t>(frame.picture.width()),
                        static_cast<std::int32_t>(frame.picture.height()));
            pauses += frame.delay == 1500;
          }
          EXPECT_TRUE(same(canvas, first));
          const std::size_t rounds = pictures == 4 ? 4 : pictures;  // 4 cells; four pictures move on by one
          EXPECT_EQ(pauses, animation == 3 ? 1 : 1 + rounds * (animation == 0 ? 1 : 4));
          if (transition == 5 && animation < 3) EXPECT_EQ(stream->count, 1 + 10 * (pauses - 1));
        }
}

}  // namespace
}  // namespace vellum
