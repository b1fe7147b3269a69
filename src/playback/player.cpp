#include "playback/player.h"

#include <algorithm>
#include <utility>

#include "base/fields.h"
#include "core/model/frame_values.h"
#include "playback/interlace_passes.h"
#include "playback/settings.h"

namespace vellum {
namespace {

constexpr int kSpeeds[] = {10, 25, 50, 75, 100, 150, 200, 400, 800, 1600};
constexpr int kNormalSpeed = 100;

/// How long one tick composes on the way to a frame that is sought, in milliseconds: between two, input is
/// heard.
constexpr std::uint64_t kSeekSlice = 20;

}  // namespace

Player::Player(const ChunkList& list, const Document& document, Clock clock)
    : list_(list), document_(document), compositor_(list, document), clock_(std::move(clock)) {}

bool Player::is_animation() const { return vellum::is_animation(document_.kind); }

void Player::stand(PlayerState state) {
  target_.reset();
  stays_ = false;
  state_ = state;
}

void Player::play() {
  if (state_ == PlayerState::Closed) return;
  // A still image is rewound by nothing: its passes come once.
  if (state_ == PlayerState::Ended && is_animation()) compositor_.rewind();
  state_ = PlayerState::Playing;
}

/// Whether nothing but what is shown can ever come: one image that has no delay, or is played for ever.
bool Player::is_settled() const {
  return compositor_.frames() == 1 && (shown_.delay == 0 || GetIterations(list_, document_) == 0);
}

void Player::close() { stand(PlayerState::Closed); }

std::uint32_t Player::wait_behind(std::uint64_t begin) const {
  const std::uint64_t end = clock_();
  const std::uint64_t elapsed = end < begin ? 0 : end - begin;
  const std::uint64_t delay = std::uint64_t{shown_.delay} * kNormalSpeed / static_cast<unsigned>(speed_);
  const std::uint64_t wait = delay > elapsed ? delay - elapsed : delay;
  return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(wait, 1, UINT32_MAX));
}

std::optional<std::uint32_t> Player::tick(const std::function<void(const ShownFrame&)>& paint) {
  if (target_) return go_to_target(paint);
  if (state_ != PlayerState::Playing) return std::nullopt;
  if (!is_animation()) return show_pass(paint);
  const std::uint64_t begin = clock_();
  if (!show_next(paint)) return std::nullopt;
  if (is_settled()) {
    stand(PlayerState::Ended);
    return std::nullopt;
  }
  return wait_behind(begin);
}

/// An interlaced still image comes pass by pass where that is wanted; any other at once.
std::optional<std::uint32_t> Player::show_pass(const std::function<void(const ShownFrame&)>& paint) {
  if (pass_ == 0) {
    if (!show_next(nullptr)) return std::nullopt;
    pass_ = settings::DisplayInterlace != 0 && is_interlaced(list_) ? 0 : kInterlacePasses - 1;
  }
  ++pass_;
  ShownFrame shown = shown_;
  shown.picture = picture_after_pass(shown.picture, pass_);
  if (paint) paint(shown);
  if (pass_ < kInterlacePasses)
    return static_cast<std::uint32_t>(std::clamp(settings::InterlaceDelay, 1, 10000));
  stand(PlayerState::Ended);
  return std::nullopt;
}

std::optional<std::uint32_t> Player::go_to_target(const std::function<void(const ShownFrame&)>& paint) {
  const std::uint64_t begin = clock_();
  bool first = true;
  // At least one frame a tick, however slow it is.
  const auto in_time = [&] { return std::exchange(first, false) || clock_() - begin < kSeekSlice; };
  if (!compositor_.prepare(*target_, in_time)) return 1;
  const std::uint32_t target = *target_;
  target_.reset();
  if (!std::exchange(stays_, false)) {
    compositor_.go_to(target);
    show_next(paint);
    return std::nullopt;
  }
  shown_.picture = compositor_.frame(target).picture;
  if (paint) paint(shown_);
  return state_ == PlayerState::Playing ? std::optional(wait_behind(begin)) : std::nullopt;
}

void Player::pause() {
  if (state_ == PlayerState::Playing) state_ = PlayerState::Paused;
}

void Player::rewind(const std::function<void(const ShownFrame&)>& paint) {
  if (state_ == PlayerState::Closed) return;
  stand(PlayerState::Paused);
  compositor_.rewind();
  show_next(paint);
}

void Player::step_forward(const std::function<void(const ShownFrame&)>& paint) {
  if (state_ == PlayerState::Closed) return;
  if (stays_) return seek(shown_.ordinal + 1);
  stand(PlayerState::Paused);
  show_next(paint);
}

void Player::step_back(const std::function<void(const ShownFrame&)>& paint) {
  if (state_ == PlayerState::Closed) return;
  if (stays_) return seek(std::max(shown_.ordinal, 1u) - 1);
  stand(PlayerState::Paused);
  compositor_.step_back();
  show_next(paint);
}

void Player::seek(std::uint32_t ordinal) {
  if (state_ == PlayerState::Closed || compositor_.frames() == 0) return;
  stand(PlayerState::Paused);
  target_ = std::min(ordinal, static_cast<std::uint32_t>(compositor_.frames() - 1));
  stays_ = false;
}

void Player::set_ground(Ground ground) {
  if (state_ == PlayerState::Closed || ground == ground_) return;
  ground_ = ground;
  compositor_.set_ground(ground);
  if (target_ || !hasShown_) return;
  target_ = shown_.ordinal;
  stays_ = true;
}

std::span<const int> Player::speeds() { return kSpeeds; }

void Player::change_speed(int direction) {
  const auto at = std::ranges::find(kSpeeds, speed_) - kSpeeds;
  const auto to = std::clamp<std::ptrdiff_t>(at + direction, 0, std::ssize(kSpeeds) - 1);
  speed_ = direction == 0 ? kNormalSpeed : kSpeeds[to];
}

bool Player::show_next(const std::function<void(const ShownFrame&)>& paint) {
  auto frame = compositor_.next();
  if (!frame) {
    stand(PlayerState::Ended);
    return false;
  }
  shown_ = std::move(*frame);
  hasShown_ = true;
  if (paint) paint(shown_);
  return true;
}

std::string Player::title(int zoom) const {
  const Extent canvas = compositor_.values().canvas;
  const bool named = (state_ == PlayerState::Playing || !is_animation()) && !list_.empty();
  std::string text =
      named ? filled(StringId::ViewTitle, {document_.fileName.filename().string(),
                                           std::to_string(canvas.width), std::to_string(canvas.height)})
            : filled(StringId::BlockTitle,
                     {std::to_string(hasShown_ ? shown_.entry + 1 : compositor_.position())});
  if (zoom != 100) text += filled(StringId::ResizedTitle, {std::to_string(zoom)});
  return text;
}

std::string Player::progress_text() const {
  return filled(StringId::PlayProgress, {std::to_string(shown_.ordinal + 1),
                                         std::to_string(compositor_.frames()), std::to_string(shown_.start)});
}

}  // namespace vellum
