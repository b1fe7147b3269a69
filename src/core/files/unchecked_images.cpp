#include "core/files/unchecked_images.h"

#include <atomic>

#include "base/parallel.h"

namespace vellum {

bool all_sound(const UncheckedImages& images) {
  std::atomic<bool> sound = true;
  parallel_for(images.streams.size(), [&](std::size_t i) {
    if (!sound) return;
    const StoredImage::Finding found = images.streams[i]->finding();
    if (found.reason || found.isShort || !images.streams[i]->intact()) sound = false;
  });
  return sound;
}

}  // namespace vellum
