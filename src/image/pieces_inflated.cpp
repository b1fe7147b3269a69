#include "image/pieces_inflated.h"

#include <algorithm>
#include <new>

namespace vellum {

PiecesInflated::PiecesInflated(Pieces pieces) : pieces_(pieces) {
  status_ = inflateInit(&stream_);
  if (status_ == Z_MEM_ERROR) throw std::bad_alloc();
}
PiecesInflated::~PiecesInflated() { inflateEnd(&stream_); }

std::size_t PiecesInflated::read(std::span<std::uint8_t> out) {
  stream_.next_out = out.data();
  stream_.avail_out = static_cast<uInt>(out.size());
  while (stream_.avail_out > 0 && status_ == Z_OK) {
    if (stream_.avail_in == 0 && !next_piece()) break;
    status_ = inflate(&stream_, Z_NO_FLUSH);
  }
  // What can't be inflated for want of memory is no damage.
  if (status_ == Z_MEM_ERROR) throw std::bad_alloc();
  return out.size() - stream_.avail_out;
}

bool PiecesInflated::more_behind() const {
  return stream_.avail_in > 0 ||
         std::ranges::any_of(pieces_.subspan(next_), [](const auto& piece) { return !piece.empty(); });
}

bool PiecesInflated::next_piece() {
  while (next_ < pieces_.size() && pieces_[next_].empty()) ++next_;
  if (next_ == pieces_.size()) return false;
  stream_.next_in = const_cast<Bytef*>(pieces_[next_].data());
  stream_.avail_in = static_cast<uInt>(pieces_[next_].size());
  ++next_;
  return true;
}

}  // namespace vellum
