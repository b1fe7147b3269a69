// Spinners: the images are squeezed as two faces of a block that turns, each lit by how far it faces the eye.
#include <array>

#include "generators/transition_effects.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/resample.h"

namespace vellum {
namespace {

/// An upright spinner turns its faces up and down.
struct Spinner {
  bool upright;
  bool leavingAtEnd;  ///< the leaving face stands right or below, and not left or above
};

std::uint32_t side_of(const Spinner& spinner, Extent canvas) {
  return spinner.upright ? canvas.height : canvas.width;
}

std::uint32_t step_of(const Spinner& spinner, const TransitionSteps& steps) {
  return spinner.upright ? steps.vertical : steps.horizontal;
}

std::uint32_t per_cent(std::uint32_t part, std::uint32_t whole) {
  return static_cast<std::uint32_t>(rounds_of(std::uint64_t{part} * 100, whole));
}

/// The picture squeezed to `percent`, each channel multiplied by light / 255.
Picture face(const Spinner& spinner, const Picture& picture, std::uint32_t percent, std::uint32_t light) {
  Picture face = spinner.upright ? PictureScalePercent(picture, 100, percent, ResampleFilter::Automatic)
                                 : PictureScalePercent(picture, percent, 100, ResampleFilter::Automatic);
  if (!face || light == 255) return face;
  std::array<std::uint8_t, 256> lit;
  for (std::uint32_t i = 0; i < lit.size(); ++i) lit[i] = static_cast<std::uint8_t>(i * light / 255);
  const EditRows rows(face);
  if (!rows) return {};
  const std::size_t bytes = 3 * std::size_t{face.width()};
  for_each_row(face.height(), rows.stride, [&](std::uint32_t y) {
    for (std::size_t i = 0; i < bytes; ++i) rows[y][i] = lit[rows[y][i]];
  });
  return face;
}

void lay(const Spinner& spinner, Picture& work, const Picture& face, std::uint32_t at) {
  const auto place = static_cast<std::int32_t>(at);
  PictureBlit(work, spinner.upright ? 0 : place, spinner.upright ? place : 0, face, 0, 0,
              static_cast<std::int32_t>(face.width()), static_cast<std::int32_t>(face.height()));
}

/// Whether the arriving face is drawn beside one of `left` pixels. Both ways it is the width that is asked,
/// so of a tall picture it comes late.
bool arrives(Extent canvas, std::uint32_t left) { return canvas.width > left; }

bool paint_faces(Picture& work, const TransitionScene& scene, const Spinner& spinner, std::uint32_t step) {
  const std::uint32_t side = side_of(spinner, scene.canvas()), width = step_of(spinner, scene.steps);
  const std::uint32_t left = side - step * width, light = step * (width * 255 / side);
  const Picture leaving = face(spinner, scene.leaving, per_cent(left, side), 255 - light);
  if (!leaving || !work.edit_block()) return false;
  const std::uint32_t covered = side_of(spinner, {leaving.width(), leaving.height()});
  lay(spinner, work, leaving, spinner.leavingAtEnd ? side - covered : 0);
  const std::uint32_t rest = per_cent(side - covered, side);
  if (!arrives(scene.canvas(), left) || rest == 0) return true;
  const Picture arriving = face(spinner, scene.arriving, rest, light);
  if (!arriving) return false;
  lay(spinner, work, arriving, spinner.leavingAtEnd ? 0 : covered);
  return true;
}

template <Spinner kSpinner>
std::uint64_t frames(Extent canvas, const TransitionSteps& steps) {
  return rounds_of(side_of(kSpinner, canvas), step_of(kSpinner, steps));
}

/// While the arriving face isn't there the leaving one shrinks over what it was before.
template <Spinner kSpinner>
std::uint64_t since(Extent canvas, const TransitionSteps& steps, std::uint64_t step) {
  const auto gone = static_cast<std::uint32_t>(step * step_of(kSpinner, steps));
  return arrives(canvas, side_of(kSpinner, canvas) - gone) ? step : 0;
}

template <Spinner kSpinner>
bool paint(Picture& work, const TransitionScene& scene, std::uint64_t step) {
  return paint_faces(work, scene, kSpinner, static_cast<std::uint32_t>(step));
}

template <Spinner kSpinner>
constexpr TransitionEffect kEffect{.still = false,
                                   .pauses = true,
                                   .overLeaving = false,
                                   .frames = frames<kSpinner>,
                                   .since = since<kSpinner>,
                                   .paint = paint<kSpinner>};

}  // namespace

constinit const TransitionEffect kSpinnerClockwise = kEffect<Spinner{false, false}>;
constinit const TransitionEffect kSpinnerCounterclockwise = kEffect<Spinner{false, true}>;
constinit const TransitionEffect kSpinnerDown = kEffect<Spinner{true, true}>;
constinit const TransitionEffect kSpinnerUp = kEffect<Spinner{true, false}>;

}  // namespace vellum
