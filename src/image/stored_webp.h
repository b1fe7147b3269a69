// The image data of a WebP frame or still as its file holds them: what a canvas came from.
#pragma once

#include <memory>
#include <span>

#include "base/file.h"
#include "image/picture.h"
#include "image/picture_operations.h"

namespace vellum {

/// A picture whose block has one for its source is the whole canvas while this frame was shown, and has not
/// been changed since. Who writes the frame onto what lay below it, or one that hides that, may write these
/// bytes.
class StoredWebp : public BlockSource {
 public:
  /// What a frame is in its file.
  struct Frame {
    std::span<const std::uint8_t> pixels;  ///< the chunks of the image (ALPH, VP8, VP8L) as they lie there
    std::uint32_t canvasWidth = 0, canvasHeight = 0;
    PictureRect area;
    bool blend = false, dispose = false;
    std::uint32_t bits = 32;  ///< of the picture
    bool alone = false;       ///< nothing of what lies below shows through
    bool onNothing = false;   ///< what lay below was all transparent
  };

  /// `before` is the frame in front of it; null for the first. The bytes lie in what `owner` keeps alive.
  StoredWebp(const Frame& frame, std::shared_ptr<const StoredWebp> before,
             std::shared_ptr<const FileContent> owner)
      : frame_(frame), before_(before), first_(!before), owner_(std::move(owner)) {}

  /// The canvas, where it follows from the frame by itself.
  ChunkHandle make() const override;
  bool can_make() const override { return frame_.alone || frame_.onNothing; }
  std::size_t held_bytes() const override { return frame_.pixels.size(); }

  const Frame& frame() const { return frame_; }
  bool is_first() const { return first_; }
  bool is_behind(const StoredWebp* other) const { return other && before_.lock().get() == other; }
  bool lossless() const;
  /// Whether the bytes still are what was read.
  bool intact() const { return owner_->intact(); }

 private:
  Frame frame_;
  std::weak_ptr<const StoredWebp> before_;
  bool first_;
  std::shared_ptr<const FileContent> owner_;
};

using KeptWebp = std::shared_ptr<const StoredWebp>;

/// The frame that a block came from; null where it has none, or another source.
KeptWebp stored_webp_of(const ChunkHandle& block);

}  // namespace vellum
