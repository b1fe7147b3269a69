// The clock that a player on the screen goes by.
#pragma once

#include <QElapsedTimer>

#include "playback/player.h"

namespace vellum {

inline Player::Clock player_clock() {
  QElapsedTimer clock;
  clock.start();
  return [clock] { return static_cast<std::uint64_t>(clock.elapsed()); };
}

}  // namespace vellum
