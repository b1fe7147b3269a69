// The frames of a row of images that pass to each other, made when they are asked for.
#pragma once

#include <mutex>

#include "core/build/frame_stream.h"
#include "generators/random15.h"
#include "generators/transition_effects.h"
#include "image/held_picture.h"

namespace vellum {

struct TransitionImage {
  HeldPicture held;        ///< of any depth and size; transparency is dropped
  std::size_t effect = 0;  ///< by which it passes to the next one
  std::uint32_t pause = 0, delay = 0;
};

/// After the last image the first one comes again. One random run spans all of it, so what an image shows
/// depends on the images in front of it, but each is found without playing those.
class TransitionShow {
 public:
  /// Two images or more. `matt` is what surrounds those that are smaller than the canvas, 0x00BBGGRR.
  TransitionShow(std::vector<TransitionImage> images, Extent canvas, Colour matt,
                 const TransitionSteps& steps, std::uint32_t seed);

  std::uint64_t count() const { return firsts_.back(); }
  /// May be asked by several threads; in their order frames cost least. A null picture when memory is
  /// exhausted.
  StreamedFrame frame(std::uint64_t number);

 private:
  const TransitionEffect& effect_of(std::size_t image) const;
  Picture on_canvas(std::size_t image) const;
  void enter(std::size_t image);
  Picture painted(const TransitionEffect& effect, std::uint64_t step);

  std::vector<TransitionImage> images_;
  Extent canvas_;
  Colour matt_;
  Random15 random_;
  std::vector<std::uint64_t> firsts_;  ///< number of each image's first frame, and of all frames
  std::vector<std::uint64_t> drawn_;   ///< random numbers drawn in front of each image

  std::mutex mutex_;
  std::size_t entered_;  ///< the image that the scene is of
  TransitionScene scene_;
  Picture work_;
  std::uint64_t done_ = 0;  ///< steps in `work_`
};

}  // namespace vellum
