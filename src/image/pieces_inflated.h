// A zlib stream (RFC 1950) that lies in pieces, read a part at a time and up to where it is damaged.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <span>
#include <string>

namespace vellum {

class PiecesInflated {
 public:
  using Pieces = std::span<const std::span<const std::uint8_t>>;

  /// The pieces outlive it. Throws std::bad_alloc, as `read` does.
  explicit PiecesInflated(Pieces pieces);
  ~PiecesInflated();
  PiecesInflated(const PiecesInflated&) = delete;
  PiecesInflated& operator=(const PiecesInflated&) = delete;

  /// Fills `out` (below 4 GiB), or less where the stream ends or is damaged. Bytes that were written.
  std::size_t read(std::span<std::uint8_t> out);
  /// Whether the stream came to its end, check value and all.
  bool ended() const { return status_ == Z_STREAM_END; }
  bool damaged() const { return status_ != Z_OK && status_ != Z_STREAM_END && status_ != Z_BUF_ERROR; }
  /// zlib's words about the damage; may be empty.
  std::string why() const { return stream_.msg ? stream_.msg : ""; }
  /// Whether bytes are left that were not read.
  bool more_behind() const;

 private:
  bool next_piece();

  Pieces pieces_;
  std::size_t next_ = 0;
  z_stream stream_{};
  int status_ = Z_OK;
};

}  // namespace vellum
