// The sound of a movie that is written: read from a file, made what an encoder takes, as long as the movie.
#pragma once

#include <filesystem>
#include <functional>

#include "exchange/movie_input.h"

struct SwrContext;
struct AVAudioFifo;

namespace vellum {

class MovieSound {
 public:
  explicit MovieSound(const std::filesystem::path& file) : input_(file) {
    stream_ = input_.open_stream(AVMEDIA_TYPE_AUDIO, decoder_);
  }
  ~MovieSound();
  MovieSound(const MovieSound&) = delete;
  MovieSound& operator=(const MovieSound&) = delete;

  bool ok() const { return stream_ != nullptr; }
  /// Samples a second, and channels, of the file.
  int rate() const { return decoder_->sample_rate; }
  int channels() const { return decoder_->ch_layout.nb_channels; }

  /// Makes samples as this encoder, which is open, takes them; `length` in microseconds.
  bool begin(AVCodecContext& encoder, std::int64_t length);
  /// The next samples; the time of the first is their count. Null at the end, or without memory.
  LibavFrame next();
  /// The samples given so far.
  std::int64_t given() const { return given_; }

 private:
  bool decode_some();

  MovieInput input_;
  CodecContext decoder_;
  AVStream* stream_ = nullptr;
  AVCodecContext* encoder_ = nullptr;
  SwrContext* resampler_ = nullptr;
  AVAudioFifo* waiting_ = nullptr;
  std::int64_t given_ = 0, wanted_ = 0;
  bool atEnd_ = false;
};

}  // namespace vellum
