// Files that the movie libraries read: through one descriptor, so that nothing a file names is opened beside
// it.
#pragma once

#include <filesystem>
#include <memory>

#include "exchange/movie_library.h"

namespace vellum {

template <class T, auto& Free>
struct LibavFree {
  void operator()(T* object) const { Free(&object); }
};
using CodecContext = std::unique_ptr<AVCodecContext, LibavFree<AVCodecContext, avcodec_free_context>>;
using LibavFrame = std::unique_ptr<AVFrame, LibavFree<AVFrame, av_frame_free>>;
using LibavPacket = std::unique_ptr<AVPacket, LibavFree<AVPacket, av_packet_free>>;

class MovieInput {
 public:
  /// Opens the file and looks for its streams; `ok` tells.
  explicit MovieInput(const std::filesystem::path& file);
  ~MovieInput();
  MovieInput(const MovieInput&) = delete;
  MovieInput& operator=(const MovieInput&) = delete;

  bool ok() const { return opened_; }
  /// Bytes of the file.
  std::uint64_t size() const { return size_; }
  AVFormatContext* format() const { return format_; }
  /// The best stream of a type, with its decoder opened into `codec`; null where there is none.
  AVStream* open_stream(AVMediaType type, CodecContext& codec) const;

 private:
  int descriptor_ = -1;
  AVIOContext* io_ = nullptr;
  AVFormatContext* format_ = nullptr;
  std::uint64_t size_ = 0;
  bool opened_ = false;
};

/// Bytes of a descriptor for the libraries, to read and write. Freed by `free_descriptor_io`.
AVIOContext* descriptor_io(int* descriptor, bool writes);
void free_descriptor_io(AVIOContext*& io);

}  // namespace vellum
