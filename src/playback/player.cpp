#include "playback/player.h"

#include "core/fields.h"

namespace vellum {
Player::Player(const ChunkList& list, const Document& document, Clock clock)
    : list_(list), document_(document), compositor_(list, document), clock_(std::move(clock)) {}

void Player::play() {
  if (state_ != PlayerState::Closed) state_ = PlayerState::Playing;
}

std::optional<std::uint32_t> Player::tick(const std::function<void(const ShownFrame&)>& paint) {
  if (state_ != PlayerState::Playing) return std::nullopt;
  const std::uint64_t begin = clock_();
  if (!show_next(paint)) return std::nullopt;
  const std::uint64_t end = clock_();
  const std::uint64_t elapsed = end < begin ? 0 : end - begin;
  const std::uint64_t wait = shown_.delay > elapsed ? shown_.delay - elapsed : shown_.delay;
  return static_cast<std::uint32_t>(std::max<std::uint64_t>(wait, 1));
}

void Player::pause() {
  if (state_ == PlayerState::Playing) state_ = PlayerState::Paused;
}

void Player::rewind(const std::function<void(const ShownFrame&)>& paint) {
  if (state_ == PlayerState::Closed) return;
  state_ = PlayerState::Paused;
  compositor_.rewind();
  show_next(paint);
}

void Player::step_forward(const std::function<void(const ShownFrame&)>& paint) {
  if (state_ == PlayerState::Closed) return;
  state_ = PlayerState::Paused;
  show_next(paint);
}

void Player::step_back(const std::function<void(const ShownFrame&)>& paint) {
  if (state_ == PlayerState::Closed) return;
  state_ = PlayerState::Paused;
  compositor_.step_back();
  show_next(paint);
}

bool Player::show_next(const std::function<void(const ShownFrame&)>& paint) {
  auto frame = compositor_.next();
  if (!frame) {
    state_ = PlayerState::Ended;
    return false;
  }
  shown_ = std::move(*frame);
  if (paint) paint(shown_);
  return true;
}

std::string Player::title(int zoom) const {
  const Extent canvas = compositor_.values().canvas;
  std::string text =
      state_ == PlayerState::Playing && !list_.empty()
          ? filled(StringId::ViewTitle, {document_.fileName.filename().string(), std::to_string(canvas.width),
                                         std::to_string(canvas.height)})
          : filled(StringId::BlockTitle, {std::to_string(compositor_.position())});
  if (zoom != 100) text += filled(StringId::ResizedTitle, {std::to_string(zoom)});
  return text;
}

std::string Player::progress_text() const {
  return filled(StringId::PlayProgress, {std::to_string(shown_.ordinal + 1),
                                         std::to_string(compositor_.frames()), std::to_string(shown_.start)});
}

}  // namespace vellum
