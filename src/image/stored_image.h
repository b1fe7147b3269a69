// The image data of a picture as a PNG stream holds them: what the picture came from, or was packed to.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "base/file.h"
#include "image/png_decode.h"

namespace vellum {

/// The zlib stream of an image, under the header that it fits. A picture whose block has one for its source
/// has not been changed since: who writes it under the same header may write these bytes.
class StoredImage : public BlockSource {
 public:
  using Bytes = std::span<const std::uint8_t>;

  /// What looking at the stream tells.
  struct Finding {
    const char* reason = nullptr;  ///< why there is no picture
    bool isShort = false;          ///< rows are missing
    bool exact = false;            ///< it is the stream of this image and nothing else
  };

  /// `pieces` are what single chunks held, in their order, and lie in what `owner` keeps alive. `table` is
  /// the color table of pictures of at most 8 bits. `finding`: empty where nobody has looked
  /// at the stream yet. The picture of such a one is blank where it turns out to have none, so whoever shows
  /// it asks for the finding then.
  StoredImage(const PngHeader& header, const Palette& table, std::vector<Bytes> pieces,
              std::shared_ptr<const FileContent> owner, std::optional<Finding> finding);

  ChunkHandle make() const override;
  std::size_t held_bytes() const override { return bytes_; }

  const PngHeader& header() const { return header_; }
  std::span<const Bytes> pieces() const { return pieces_; }
  /// Looks at the stream where nobody has done so.
  Finding finding() const;
  /// Whether it gives a picture of all its rows. Not looked at again where somebody made that picture.
  bool whole() const { return whole_ || (!finding().reason && !finding().isShort); }
  void keep_whole() const { whole_ = true; }
  /// Whether it may be written again.
  bool exact() const { return finding().exact; }
  /// Whether the bytes still are what was read.
  bool intact() const { return owner_->intact(); }

  /// What else the reader of the file knows of the image, for the writer of the same format; mostly null.
  const std::shared_ptr<const void>& context() const { return context_; }
  void keep_context(std::shared_ptr<const void> context) { context_ = std::move(context); }

  /// The largest index of the picture, where somebody has looked for it; -1 before.
  int largest_index() const { return largestIndex_; }
  void keep_largest_index(std::uint32_t index) const { largestIndex_ = static_cast<int>(index); }

 private:
  PngHeader header_;
  std::unique_ptr<const Palette> table_;  ///< null above 8 bits
  std::vector<Bytes> pieces_;
  std::shared_ptr<const FileContent> owner_;
  std::size_t bytes_ = 0;
  std::shared_ptr<const void> context_;
  const bool unchecked_;  ///< at first
  mutable std::mutex lock_;
  mutable std::optional<Finding> finding_;
  mutable std::atomic<int> largestIndex_ = -1;
  mutable std::atomic<bool> whole_ = false;
};

/// The stream that a block came from; null where it has none, or another source.
std::shared_ptr<const StoredImage> stored_image_of(const ChunkHandle& block);

/// Whether the stream was decoded or checked, or only `png_expect` asked about it.
enum class StreamSeen { Yes, NotYet };

/// A picture that was decoded from these pieces, as a block that keeps them for its source; or, of a picture
/// that was only checked, one whose rows are made when somebody looks at it.
ChunkHandle kept_with_stream(const PngDecoded& decoded, const PngHeader& header,
                             std::vector<StoredImage::Bytes> pieces, std::shared_ptr<const FileContent> owner,
                             std::shared_ptr<const void> context = nullptr,
                             StreamSeen seen = StreamSeen::Yes);

}  // namespace vellum
