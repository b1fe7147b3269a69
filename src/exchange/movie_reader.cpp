// Movies in: decoded frames as pictures, upright, with square pixels and the times at which they show.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/limits.h"
#include "base/translation.h"
#include "exchange/movie.h"
#include "exchange/movie_input.h"
#include "image/picture_operations.h"
#include "image/rotate.h"

namespace vellum {
namespace {

constexpr AVRational kMicroseconds{1, 1'000'000};
/// Between two frames that tell no times.
constexpr std::int64_t kUnknownStep = 40'000;

struct SwsFree {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

/// Degrees clockwise, a quarter at a time, that frames are turned by to stand upright.
int turn_of(const AVStream& stream) {
  const auto* matrix = reinterpret_cast<const std::int32_t*>(
      av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
  if (!matrix) return 0;
  const double degrees = -av_display_rotation_get(matrix);
  if (std::isnan(degrees)) return 0;
  return static_cast<int>((std::lround(degrees / 90) % 4 + 4) % 4) * 90;
}

/// The scaler may write whole vectors, also where a row ends within one.
constexpr std::uint32_t kSafeWidth = 32;

/// A frame whose rows are those of the picture, which lie from the bottom upward. Null without memory.
LibavFrame frame_over(Picture& picture) {
  LibavFrame frame(av_frame_alloc());
  std::uint8_t* top = picture.edit_row(0);
  if (!frame || !top) return nullptr;
  frame->data[0] = top;
  frame->linesize[0] = -static_cast<int>(picture.stride());
  frame->buf[0] = av_buffer_create(
      top, picture.stride(), [](void*, std::uint8_t*) {}, nullptr, 0);
  return frame->buf[0] ? std::move(frame) : nullptr;
}

bool copy_rows(Picture& picture, const AVFrame& frame) {
  const std::size_t used = std::size_t{picture.width()} * picture.bits() / 8;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    std::uint8_t* row = picture.edit_row(y);
    if (!row) return false;
    std::memcpy(row, frame.data[0] + std::ptrdiff_t{frame.linesize[0]} * y, used);
    std::memset(row + used, 0, picture.stride() - used);
  }
  return true;
}

class Movie {
 public:
  explicit Movie(const std::filesystem::path& file) : input_(file) {
    stream_ = input_.open_stream(AVMEDIA_TYPE_VIDEO, codec_);
  }

  bool open(std::uint32_t largest, Host& host);
  const MovieFacts& facts() const { return facts_; }
  std::optional<std::int64_t> next();
  Picture picture();
  bool seek(std::int64_t time);
  bool damaged() const { return damaged_; }

 private:
  void settle_facts();
  bool settle_size(std::uint32_t largest);
  bool decode();
  std::int64_t time_of(const AVFrame& frame);
  bool settle_scaler();

  MovieInput input_;
  CodecContext codec_;
  AVStream* stream_ = nullptr;
  LibavFrame frame_{av_frame_alloc()};
  LibavPacket packet_{av_packet_alloc()};
  MovieFacts facts_;
  int width_ = 0, height_ = 0;  ///< of pictures, before they are turned
  std::unique_ptr<SwsContext, SwsFree> scaler_;
  int scaledWidth_ = 0, scaledHeight_ = 0, scaledFormat_ = -1;
  std::int64_t start_ = 0, last_ = -1;
  bool atEnd_ = false, damaged_ = false;
};

bool Movie::open(std::uint32_t largest, Host& host) {
  if (!stream_ || !frame_ || !packet_)
    return host.fail({FaultKind::Damaged, 0, -1, -1, translated("it holds no movie that can be read")});
  settle_facts();
  const auto bytes = static_cast<std::uint64_t>(std::max(codec_->width, 0)) *
                     static_cast<std::uint64_t>(std::max(codec_->height, 0)) * 4;
  if (const char* fault = decoding_fault(bytes, input_.size()))
    return host.fail({FaultKind::Limit, 0, -1, -1, fault});
  if (!settle_size(largest))
    return host.fail({FaultKind::Limit, 0, -1, -1, translated("its pictures are too large")});
  return true;
}

void Movie::settle_facts() {
  const AVFormatContext& format = *input_.format();
  facts_.format = format.iformat->name;
  facts_.codec = avcodec_get_name(codec_->codec_id);
  facts_.turned = turn_of(*stream_);
  if (stream_->start_time != AV_NOPTS_VALUE)
    start_ = av_rescale_q(stream_->start_time, stream_->time_base, kMicroseconds);
  if (stream_->duration > 0)
    facts_.duration = av_rescale_q(stream_->duration, stream_->time_base, kMicroseconds);
  else if (format.duration > 0)
    facts_.duration = format.duration;
  const AVRational rate = av_guess_frame_rate(input_.format(), stream_, nullptr);
  if (stream_->avg_frame_rate.num > 0 && stream_->avg_frame_rate.den > 0)
    facts_.rate = av_q2d(stream_->avg_frame_rate);
  else if (rate.num > 0 && rate.den > 0)
    facts_.rate = av_q2d(rate);
  if (stream_->nb_frames > 0)
    facts_.frames = static_cast<std::uint64_t>(stream_->nb_frames);
  else if (facts_.rate > 0)
    facts_.frames = static_cast<std::uint64_t>(
        std::max(1.0, std::ceil(static_cast<double>(facts_.duration) / 1e6 * facts_.rate - 0.01)));
  const AVPixFmtDescriptor* pixels = av_pix_fmt_desc_get(codec_->pix_fmt);
  facts_.alpha = pixels && (pixels->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  facts_.sound = av_find_best_stream(input_.format(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) >= 0;
}

bool Movie::settle_size(std::uint32_t largest) {
  double width = codec_->width, height = codec_->height;
  const AVRational aspect = av_guess_sample_aspect_ratio(input_.format(), stream_, nullptr);
  if (aspect.num > 0 && aspect.den > 0) width = std::max(1.0, std::round(width * av_q2d(aspect)));
  const double side = std::max(width, height);
  if (largest > 0 && side > largest) {
    width = std::max(1.0, std::round(width * largest / side));
    height = std::max(1.0, std::round(height * largest / side));
  }
  if (!(width >= 1 && height >= 1) || side > kMaximumDimension || width * height * 4 > kMaximumPictureBytes)
    return false;
  width_ = static_cast<int>(width);
  height_ = static_cast<int>(height);
  const bool lies = facts_.turned % 180 != 0;
  facts_.width = static_cast<std::uint32_t>(lies ? height_ : width_);
  facts_.height = static_cast<std::uint32_t>(lies ? width_ : height_);
  return true;
}

/// Fills `frame_` with the next one. False at the end.
bool Movie::decode() {
  for (;;) {
    const int got = avcodec_receive_frame(codec_.get(), frame_.get());
    if (got == 0) return true;
    if (got == AVERROR_EOF || atEnd_) return false;
    if (got != AVERROR(EAGAIN)) damaged_ = true;
    const int read = av_read_frame(input_.format(), packet_.get());
    if (read < 0) {
      damaged_ = damaged_ || read != AVERROR_EOF;
      atEnd_ = avcodec_send_packet(codec_.get(), nullptr) < 0;
      continue;
    }
    if (packet_->stream_index == stream_->index) {
      damaged_ = damaged_ || (packet_->flags & AV_PKT_FLAG_CORRUPT) != 0;
      if (const int sent = avcodec_send_packet(codec_.get(), packet_.get());
          sent < 0 && sent != AVERROR(EAGAIN))
        damaged_ = true;
    }
    av_packet_unref(packet_.get());
  }
}

std::int64_t Movie::time_of(const AVFrame& frame) {
  const std::int64_t stamp = frame.best_effort_timestamp;
  if (stamp != AV_NOPTS_VALUE)
    return std::max(last_, av_rescale_q(stamp, stream_->time_base, kMicroseconds) - start_);
  if (last_ < 0) return 0;
  return last_ + (facts_.rate > 0 ? static_cast<std::int64_t>(1e6 / facts_.rate) : kUnknownStep);
}

std::optional<std::int64_t> Movie::next() {
  if (!decode()) return std::nullopt;
  damaged_ = damaged_ || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0 || frame_->decode_error_flags != 0;
  last_ = std::max<std::int64_t>(0, time_of(*frame_));
  return last_;
}

bool Movie::settle_scaler() {
  if (scaler_ && frame_->width == scaledWidth_ && frame_->height == scaledHeight_ &&
      frame_->format == scaledFormat_)
    return true;
  scaler_.reset(sws_alloc_context());
  if (!scaler_) return false;
  const auto set = [&](const char* name, std::int64_t value) {
    av_opt_set_int(scaler_.get(), name, value, 0);
  };
  set("srcw", frame_->width);
  set("srch", frame_->height);
  set("src_format", frame_->format);
  set("dstw", width_);
  set("dsth", height_);
  set("dst_format", facts_.alpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR24);
  set("src_range", frame_->color_range == AVCOL_RANGE_JPEG ? 1 : 0);
  set("sws_flags", SWS_BICUBIC);
  set("threads", 0);
  if (sws_init_context(scaler_.get(), nullptr, nullptr) < 0) return false;
  int *from = nullptr, *to = nullptr, from_range = 0, to_range = 0, brightness = 0, contrast = 0,
      saturation = 0;
  if (sws_getColorspaceDetails(scaler_.get(), &from, &from_range, &to, &to_range, &brightness, &contrast,
                               &saturation) >= 0)
    sws_setColorspaceDetails(scaler_.get(), sws_getCoefficients(frame_->colorspace), from_range, to, to_range,
                             brightness, contrast, saturation);
  scaledWidth_ = frame_->width;
  scaledHeight_ = frame_->height;
  scaledFormat_ = frame_->format;
  return true;
}

Picture Movie::picture() {
  const std::uint32_t bits = facts_.alpha ? 32 : 24;
  Picture made = PictureCreateForOverwrite(static_cast<std::uint32_t>(width_),
                                           static_cast<std::uint32_t>(height_), nullptr, bits);
  if (!made || !settle_scaler()) return {};
  const bool direct = static_cast<std::uint32_t>(width_) % kSafeWidth == 0;
  const LibavFrame out = direct ? frame_over(made) : LibavFrame(av_frame_alloc());
  if (!out) return {};
  out->width = width_;
  out->height = height_;
  out->format = facts_.alpha ? AV_PIX_FMT_BGRA : AV_PIX_FMT_BGR24;
  if (!direct && av_frame_get_buffer(out.get(), 0) < 0) return {};
  if (sws_scale_frame(scaler_.get(), out.get(), frame_.get()) < 0) return {};
  if (!direct && !copy_rows(made, *out)) return {};
  // Turned counterclockwise by the function.
  return facts_.turned == 0 ? made : rotated(made, 360 - facts_.turned, 0);
}

bool Movie::seek(std::int64_t time) {
  const std::int64_t at = av_rescale_q(time + start_, kMicroseconds, stream_->time_base);
  const bool found = av_seek_frame(input_.format(), stream_->index, at, AVSEEK_FLAG_BACKWARD) >= 0;
  if (!found &&
      av_seek_frame(input_.format(), stream_->index, 0, AVSEEK_FLAG_BYTE | AVSEEK_FLAG_BACKWARD) < 0)
    return false;
  avcodec_flush_buffers(codec_.get());
  atEnd_ = false;
  last_ = -1;
  return true;
}

}  // namespace

std::optional<MovieReader> open_movie(const std::filesystem::path& file, std::uint32_t largest, Host& host) {
  if (!load_movie_libraries(host)) return std::nullopt;
  const auto movie = std::make_shared<Movie>(file);
  if (!movie->open(largest, host)) return std::nullopt;
  return MovieReader{movie->facts(), [movie] { return movie->next(); }, [movie] { return movie->picture(); },
                     [movie](std::int64_t time) { return movie->seek(time); },
                     [movie] { return movie->damaged(); }};
}

}  // namespace vellum
