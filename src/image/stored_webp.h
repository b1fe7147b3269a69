// The image data of a WebP frame or still as its file holds them: what a canvas came from.
#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <span>

#include "base/file.h"
#include "image/picture.h"
#include "image/picture_operations.h"

namespace vellum {

class StoredWebp;

/// The canvases of a file that were made last, so that those behind them need one step: some, as workers ask
/// for frames at several places.
struct WebpTrack {
  struct Made {
    const StoredWebp* frame;  ///< an identity, never followed
    Picture canvas;
  };
  std::mutex lock;
  std::deque<Made> made;  ///< the last one behind
};

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
  using Before = std::shared_ptr<const StoredWebp>;

  /// `before` is the frame in front of it; null for the first. The bytes lie in what `owner` keeps alive.
  /// `canvas` is the one that it shows: of one in some frames that lie on each other it is kept, packed where
  /// memory is short, so that others can be made from it.
  StoredWebp(const Frame& frame, const Before& before, std::shared_ptr<const FileContent> owner,
             const Picture& canvas);

  ChunkHandle make() const override;
  std::size_t held_bytes() const override { return frame_.pixels.size() + (key_ ? key_.held_bytes() : 0); }

  const Frame& frame() const { return frame_; }
  bool is_behind(const StoredWebp* other) const { return other && before_.lock().get() == other; }
  bool lossless() const;
  /// Whether the bytes still are what was read.
  bool intact() const { return owner_->intact(); }

 private:
  bool begins() const { return frame_.alone || frame_.onNothing; }
  ChunkHandle make_by_itself() const;
  ChunkHandle make_on_others() const;
  Picture canvas_at_hand() const;

  Frame frame_;
  std::weak_ptr<const StoredWebp> before_;
  Before ground_;       ///< the same where the canvas is made on it
  unsigned steps_ = 0;  ///< from a canvas that is made by itself, or kept
  ChunkHandle key_;
  std::shared_ptr<WebpTrack> track_;
  std::shared_ptr<const FileContent> owner_;
};

using KeptWebp = std::shared_ptr<const StoredWebp>;

/// The frame that a block came from; null where it has none, or another source.
KeptWebp stored_webp_of(const ChunkHandle& block);

}  // namespace vellum
