// A sound zlib stream (RFC 1950) that lies in pieces, inflated a part at a time as fast as can be.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

struct inflate_state;

namespace vellum {

/// For streams that are likely sound. What is wrong with one that isn't, and how far it can be read, is for
/// `PiecesInflated` and `inflate_into` to say.
class StreamInflate {
 public:
  using Pieces = std::span<const std::span<const std::uint8_t>>;

  /// The pieces outlive it.
  explicit StreamInflate(Pieces pieces);
  ~StreamInflate();
  StreamInflate(const StreamInflate&) = delete;
  StreamInflate& operator=(const StreamInflate&) = delete;

  /// Fills `out`, or less where the stream ends or is damaged. Bytes that were written.
  std::size_t read(std::span<std::uint8_t> out);
  /// Whether the stream came to its end with the right check value, and nothing lies behind it.
  bool ended() const;

 private:
  bool feed();
  std::span<const std::uint8_t> next_bytes(std::size_t most);

  Pieces pieces_;
  std::size_t next_ = 0, in_piece_ = 0;  ///< the piece that comes next; bytes of it that were taken
  std::uint64_t left_ = 0;               ///< bytes that were not taken
  std::vector<std::uint8_t> gathered_;   ///< small pieces
  std::unique_ptr<inflate_state> state_;
  bool damaged_ = false;
};

}  // namespace vellum
