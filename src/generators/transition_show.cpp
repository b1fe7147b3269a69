#include "generators/transition_show.h"

#include <algorithm>
#include <new>

#include "core/edit/picture_fitting.h"
#include "image/picture_operations.h"

namespace vellum {

TransitionShow::TransitionShow(std::vector<TransitionImage> images, Extent canvas, Colour matt,
                               const TransitionSteps& steps, std::uint32_t seed)
    : images_(std::move(images)), canvas_(canvas), matt_(matt), random_(seed), entered_(images_.size()) {
  scene_.steps = steps;
  firsts_.push_back(0);
  std::uint64_t drawn = 0;
  for (std::size_t i = 0; i < images_.size(); ++i) {
    const TransitionEffect& effect = effect_of(i);
    firsts_.push_back(firsts_.back() + effect.still + effect.frames(canvas, steps));
    drawn_.push_back(drawn);
    if (effect.places) drawn += effect.places(canvas, steps);
  }
}

const TransitionEffect& TransitionShow::effect_of(std::size_t image) const {
  return transition_effects()[images_[image].effect];
}

Picture TransitionShow::on_canvas(std::size_t image) const {
  const Picture picture = opaque_true_color(images_[image].held.picture());
  if (!picture) throw std::bad_alloc();
  const auto place = [](std::uint32_t whole, std::uint32_t part) {
    return static_cast<std::int32_t>((whole - part) / 2);
  };
  Picture result =
      PictureExtendCanvas(picture, canvas_.width, canvas_.height, place(canvas_.width, picture.width()),
                          place(canvas_.height, picture.height()), matt_);
  // A frame that is an image itself outlives the file that the image came from.
  if (result && result.handle().source()) result = PictureDuplicate(result);
  if (!result) throw std::bad_alloc();
  return result;
}

void TransitionShow::enter(std::size_t image) {
  if (entered_ == image) return;
  const bool follows = entered_ + 1 == image;
  entered_ = images_.size();
  work_ = {};
  done_ = 0;
  scene_.leaving = follows ? scene_.arriving : on_canvas(image);
  scene_.arriving = on_canvas((image + 1) % images_.size());
  scene_.order.clear();
  if (const auto places = effect_of(image).places) {
    Random15 random = random_;
    random.skip(drawn_[image]);
    scene_.order = drawn_lots(static_cast<std::uint32_t>(places(canvas_, scene_.steps)), random);
  }
  entered_ = image;
}

Picture TransitionShow::painted(const TransitionEffect& effect, std::uint64_t step) {
  const std::uint64_t since = effect.since(canvas_, scene_.steps, step);
  // Of frames that cover each other the one that was asked for again stays, too.
  if (done_ <= since || done_ > step + 1) {
    work_ = effect.overLeaving ? scene_.leaving : PictureCreate(canvas_.width, canvas_.height, nullptr, 24);
    done_ = since;
  }
  for (; done_ <= step; ++done_)
    if (!work_ || !effect.paint(work_, scene_, done_)) throw std::bad_alloc();
  return work_;
}

StreamedFrame TransitionShow::frame(std::uint64_t number) try {
  const std::lock_guard lock(mutex_);
  const auto image =
      static_cast<std::size_t>(std::ranges::upper_bound(firsts_, number) - firsts_.begin() - 1);
  const TransitionEffect& effect = effect_of(image);
  enter(image);
  std::uint64_t step = number - firsts_[image];
  StreamedFrame frame;
  frame.delay = step == 0 && (effect.still || effect.pauses) ? images_[image].pause : images_[image].delay;
  const bool still = effect.still && step == 0;
  step -= effect.still && !still;
  frame.picture = still ? scene_.leaving : painted(effect, step);
  return frame;
} catch (const std::bad_alloc&) {
  done_ = 0;
  return {};
}

}  // namespace vellum
