// What the welcome wizard asks, and what becomes of the answers.
#pragma once

namespace vellum {

enum class Work { Chunks, Animations, Both };

struct WelcomeChoices {
  Work work = Work::Both;
  int animationType = 1;  ///< 0 animated PNG, 1 MNG, 2 WebP
  int delay = 100;        ///< milliseconds that a new frame is shown
  int viewMode = 5;       ///< index into the scales of thumbnails
  bool backups = false, identify = true, tips = true;
};

/// What the settings say now.
WelcomeChoices stored_choices();
/// What goes well with a kind of work: how large thumbnails are, and whether old files are kept.
void suit_work(WelcomeChoices& choices);
void store_choices(const WelcomeChoices& choices);

}  // namespace vellum
