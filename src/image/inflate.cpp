#include "image/inflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <memory>

namespace vellum {
namespace {

/// zlib's inflate for as long as it lives.
class ZlibInflate {
 public:
  ZlibInflate() { ok_ = inflateInit(&stream_) == Z_OK; }
  ~ZlibInflate() {
    if (ok_) inflateEnd(&stream_);
  }
  ZlibInflate(const ZlibInflate&) = delete;
  ZlibInflate& operator=(const ZlibInflate&) = delete;
  bool ok() const { return ok_; }
  z_stream* operator->() { return &stream_; }

  /// Goes on until `out` is full or the input ends; Z_OK, Z_STREAM_END, Z_BUF_ERROR (no more input), or a
  /// fault.
  int run(std::span<std::uint8_t> out, std::size_t& produced) {
    int status = Z_OK;
    produced = 0;
    while (produced < out.size() && status == Z_OK) {
      const auto piece = static_cast<uInt>(std::min<std::size_t>(out.size() - produced, 1u << 30));
      stream_.next_out = out.data() + produced;
      stream_.avail_out = piece;
      status = inflate(&stream_, Z_NO_FLUSH);
      produced += piece - stream_.avail_out;
    }
    return status;
  }

 private:
  z_stream stream_{};
  bool ok_ = false;
};

struct FreeDecompressor {
  void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
};

/// One decompressor a thread: making one for each small frame would cost as much as the frame.
libdeflate_decompressor* decompressor() {
  thread_local const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> own(
      libdeflate_alloc_decompressor());
  return own.get();
}

/// The slow way, which also takes streams that hold more than `out`: rows that are complete count.
std::optional<std::size_t> inflate_by_zlib(std::span<const std::uint8_t> stream,
                                           std::span<std::uint8_t> out) {
  ZlibInflate zlib;
  if (!zlib.ok()) return std::nullopt;
  std::size_t done = 0;
  while (done < out.size()) {
    // zlib counts the input in 32 bits.
    const std::size_t piece = std::min<std::size_t>(stream.size(), 1u << 30);
    zlib->next_in = const_cast<Bytef*>(stream.data());
    zlib->avail_in = static_cast<uInt>(piece);
    std::size_t produced = 0;
    const int status = zlib.run(out.subspan(done), produced);
    done += produced;
    stream = stream.subspan(piece - zlib->avail_in);
    if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) return std::nullopt;
    if (status == Z_STREAM_END || done == out.size()) return done;
    if (stream.empty()) return std::nullopt;
  }
  return done;
}

}  // namespace

std::optional<std::size_t> inflate_into(std::span<const std::uint8_t> stream, std::span<std::uint8_t> out,
                                        bool* exact) {
  if (exact) *exact = false;
  std::size_t consumed = 0, produced = 0;
  if (libdeflate_decompressor* fast = decompressor()) {
    const auto result = libdeflate_zlib_decompress_ex(fast, stream.data(), stream.size(), out.data(),
                                                      out.size(), &consumed, &produced);
    if (exact) *exact = result == LIBDEFLATE_SUCCESS && produced == out.size() && consumed == stream.size();
    if (result == LIBDEFLATE_SUCCESS) return produced;
  }
  return inflate_by_zlib(stream, out);
}

std::optional<std::string> inflate_text(std::span<const std::uint8_t> stream, std::size_t limit,
                                        bool& over_limit) {
  over_limit = false;
  ZlibInflate zlib;
  if (!zlib.ok() || stream.size() > (std::size_t{1} << 31)) return std::nullopt;
  zlib->next_in = const_cast<Bytef*>(stream.data());
  zlib->avail_in = static_cast<uInt>(stream.size());
  constexpr std::size_t kStep = 8192;
  std::string text;
  for (int status = Z_OK; status != Z_STREAM_END;) {
    if (text.size() > limit) {
      over_limit = true;
      return std::nullopt;
    }
    const std::size_t have = text.size();
    // Growing by half keeps long texts linear.
    text.resize(have + std::max(kStep, have / 2));
    std::size_t produced = 0;
    status = zlib.run({reinterpret_cast<std::uint8_t*>(text.data()) + have, text.size() - have}, produced);
    text.resize(have + produced);
    if (status != Z_OK && status != Z_STREAM_END) return std::nullopt;
  }
  over_limit = text.size() > limit;
  if (over_limit) return std::nullopt;
  return text;
}

}  // namespace vellum
