// The canvases of a document that is worked on, for who asks for them several times.
#pragma once

#include <memory>
#include <optional>

#include "core/model/compose.h"

namespace vellum {

/// The canvases of a document's frames on no ground, 32 bits with straight alpha, what is clear black: kept
/// where they are no more than some hundred megabytes, else composed again. Best asked for in order.
class SourceCanvases {
 public:
  explicit SourceCanvases(DocumentWindow window);

  std::size_t size() const { return entries_.size(); }
  const DocumentWindow& window() const { return window_; }
  /// Whether each is composed once.
  bool keeps_all() const { return !kept_.empty(); }
  /// Null where a picture is lost or memory is exhausted.
  Picture canvas(std::size_t frame);

 private:
  DocumentWindow window_;
  std::vector<std::size_t> entries_;
  std::vector<Picture> kept_;
  std::optional<StraightCanvases> canvases_;
  std::vector<Picture> ahead_;  ///< of frames that come next, decoded
  std::size_t next_ = 0;        ///< the frame that `canvases_` composes next
};

/// Pictures of this many entries from `first` on, decoded side by side where that has not been done. Their
/// rows stay while they are held.
inline constexpr std::size_t kDecodedAhead = 16;
std::vector<Picture> decoded_pictures(const DocumentWindow& window, const std::vector<std::size_t>& entries,
                                      std::size_t first);

}  // namespace vellum
