#include "core/files/unchecked_images.h"

#include <atomic>

#include "base/parallel.h"

namespace vellum {

bool all_sound(const UncheckedImages& images) {
  std::atomic<bool> sound = true;
  parallel_for(images.streams.size(), [&](std::size_t i) {
    if (!sound) return;
    if (!images.streams[i]->whole() || !images.streams[i]->intact()) sound = false;
  });
  return sound;
}

}  // namespace vellum
