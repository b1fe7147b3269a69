// Movies out: canvases through an encoder into a container, with the time each of them stands.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <map>

#include "base/translation.h"
#include "exchange/constant_rate.h"
#include "exchange/movie.h"
#include "exchange/movie_sound.h"
#include "image/picture_operations.h"

namespace vellum {
namespace {

/// What a format holds where nobody says more: encoders in the order in which they are tried.
struct UsualCodecs {
  std::string_view extension;
  std::initializer_list<const char*> packed;
  const char* raw;  ///< without compression; null: the same
  std::initializer_list<const char*> sound;
};

const UsualCodecs kUsual[] = {
    {".avi", {"mjpeg"}, "rawvideo", {"pcm_s16le"}},
    {".mov", {"libx264", "mpeg4"}, "png", {"aac", "pcm_s16le"}},
    {".mp4", {"libx264", "mpeg4"}, nullptr, {"aac"}},
    {".webm", {"libvpx-vp9", "libvpx"}, nullptr, {"libopus", "libvorbis"}},
    {".mkv", {"ffv1"}, nullptr, {"aac", "libopus"}},
};

const UsualCodecs* usual_codecs(std::string_view extension) {
  const auto row = std::ranges::find(kUsual, extension, &UsualCodecs::extension);
  return row == std::end(kUsual) ? nullptr : row;
}

const AVCodec* first_encoder(std::span<const char* const> names) {
  for (const char* name : names)
    if (const AVCodec* codec = avcodec_find_encoder_by_name(name)) return codec;
  return nullptr;
}

const AVCodec* encoder_for(const MovieForm& form, const AVOutputFormat& format, std::string& missing) {
  missing = form.codec;
  if (!form.codec.empty()) {
    const AVCodec* codec = avcodec_find_encoder_by_name(form.codec.c_str());
    return codec && codec->type == AVMEDIA_TYPE_VIDEO ? codec : nullptr;
  }
  missing = form.extension.substr(1);
  std::ranges::transform(missing, missing.begin(), [](unsigned char c) { return std::toupper(c); });
  const UsualCodecs* usual = usual_codecs(form.extension);
  if (!usual) return avcodec_find_encoder(format.video_codec);
  if (!form.compress && usual->raw) return avcodec_find_encoder_by_name(usual->raw);
  return first_encoder({usual->packed.begin(), usual->packed.size()});
}

const AVCodec* sound_encoder_for(const MovieForm& form, const AVOutputFormat& format) {
  if (const UsualCodecs* usual = usual_codecs(form.extension))
    return first_encoder({usual->sound.begin(), usual->sound.size()});
  return avcodec_find_encoder(format.audio_codec);
}

/// The colors of what is lost on the way anyway are stored at half the size, as players expect; else they are
/// stored as they are where that can be.
AVPixelFormat pixels_for(const AVCodec& codec) {
  if (!codec.pix_fmts) return AV_PIX_FMT_BGR24;
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec.id);
  if (descriptor && (descriptor->props & AV_CODEC_PROP_LOSSY))
    for (const AVPixelFormat wanted :
         {codec.id == AV_CODEC_ID_MJPEG ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV420P})
      for (const AVPixelFormat* has = codec.pix_fmts; *has != AV_PIX_FMT_NONE; ++has)
        if (*has == wanted) return wanted;
  for (const AVPixelFormat wanted : {AV_PIX_FMT_BGR24, AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR0, AV_PIX_FMT_GBRP})
    for (const AVPixelFormat* has = codec.pix_fmts; *has != AV_PIX_FMT_NONE; ++has)
      if (*has == wanted) return wanted;
  return avcodec_find_best_pix_fmt_of_list(codec.pix_fmts, AV_PIX_FMT_BGR24, 0, nullptr);
}

/// Multiples that the sides have to be of.
std::pair<int, int> steps_of_sides(const MovieForm& form, const AVCodec& codec, AVPixelFormat pixels) {
  if (form.roundUp) return {4, 4};
  for (const AVCodecID free : {AV_CODEC_ID_MJPEG, AV_CODEC_ID_MPEG4, AV_CODEC_ID_VP8, AV_CODEC_ID_VP9})
    if (codec.id == free) return {1, 1};
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(pixels);
  return descriptor ? std::pair(1 << descriptor->log2_chroma_w, 1 << descriptor->log2_chroma_h)
                    : std::pair(1, 1);
}

int rounded_up(std::uint32_t side, int step) {
  return static_cast<int>((side + static_cast<std::uint32_t>(step) - 1) / static_cast<std::uint32_t>(step)) *
         step;
}

/// A file without a name; -1 where there can't be one.
int scratch_file(const std::filesystem::path& folder) {
  const std::filesystem::path place = folder.empty() ? std::filesystem::path(".") : folder;
  const int unnamed = open(place.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (unnamed >= 0) return unnamed;
  std::string name = (place / ".movieXXXXXX").string();
  const int named = mkostemp(name.data(), O_CLOEXEC);
  if (named >= 0) unlink(name.c_str());
  return named;
}

struct OutputFree {
  void operator()(AVFormatContext* format) const {
    if (format) free_descriptor_io(format->pb);
    avformat_free_context(format);
  }
};
struct ScalerFree {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

class MovieWriter {
 public:
  MovieWriter(const FrameStream& stream, const MovieForm& form, Host& host, std::string& missing)
      : stream_(stream), form_(form), host_(host), missing_(missing) {}
  ~MovieWriter() {
    format_.reset();
    if (descriptor_ >= 0) close(descriptor_);
  }
  MovieWriter(const MovieWriter&) = delete;
  MovieWriter& operator=(const MovieWriter&) = delete;

  MovieFault write(const std::filesystem::path& scratch, const Sink& sink);

 private:
  MovieFault open(const std::filesystem::path& scratch);
  void settle_times();
  MovieFault open_pictures();
  MovieFault open_sound();
  bool take_quality();
  MovieFault write_frames();
  bool send(std::size_t frame, std::int64_t time, std::int64_t duration, bool last);
  bool fill(AVFrame& frame, const Picture& canvas);
  bool put(AVPacket& packet, const AVCodecContext& codec, const AVStream& stream);
  bool drain(AVCodecContext& codec, AVStream& stream);
  bool put_last(std::int64_t end);
  bool write_sound(std::int64_t until);
  MovieFault copy(const Sink& sink);
  MovieFault other(const char* what, int error);

  const FrameStream& stream_;
  const MovieForm& form_;
  Host& host_;
  std::string& missing_;
  int descriptor_ = -1;
  std::unique_ptr<AVFormatContext, OutputFree> format_;
  CodecContext pictures_, sounds_;
  AVStream *pictureStream_ = nullptr, *soundStream_ = nullptr;
  std::unique_ptr<MovieSound> sound_;
  LibavPacket packet_{av_packet_alloc()}, waiting_{av_packet_alloc()};
  bool waits_ = false;
  std::unique_ptr<SwsContext, ScalerFree> scaler_;
  Picture padded_;
  AVRational clock_{1, 1000}, rate_{25, 1};
  bool constant_ = false;
  std::vector<std::int64_t> lengths_;  ///< of each frame of one pass, in ticks of the clock
  std::map<std::int64_t, std::int64_t> durations_;
};

MovieFault MovieWriter::other(const char* what, int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  if (error < 0) av_strerror(error, text, sizeof text);
  host_.fail({error == AVERROR(ENOSPC) ? FaultKind::Limit : FaultKind::Misuse, 0, -1, -1,
              std::string(what) + (error < 0 ? ": " + std::string(text) : std::string())});
  return MovieFault::Other;
}

/// AVI counts frames of one length; others tell the time of each.
void MovieWriter::settle_times() {
  const bool constant = form_.extension == ".avi";
  const std::uint32_t period = constant_period(form_.delays);
  clock_ = {constant ? static_cast<int>(period) : 1, 1000};
  constant_ = constant;
  lengths_ = lengths_in(form_.delays, static_cast<std::uint32_t>(clock_.num));
  rate_ = {1000, static_cast<int>(period)};
}

bool MovieWriter::take_quality() {
  const double f = form_.quality;
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(pictures_->codec_id);
  if (descriptor && !(descriptor->props & AV_CODEC_PROP_LOSSY)) return true;
  if (pictures_->priv_data && av_opt_find(pictures_->priv_data, "crf", nullptr, 0, 0)) {
    pictures_->bit_rate = 0;
    return av_opt_set_double(pictures_->priv_data, "crf", 51 - std::round(36 * f / 10000), 0) >= 0;
  }
  pictures_->flags |= AV_CODEC_FLAG_QSCALE;
  pictures_->global_quality = FF_QP2LAMBDA * (31 - static_cast<int>(std::lround(29 * f / 10000)));
  return true;
}

MovieFault MovieWriter::open_pictures() {
  const AVCodec* codec = encoder_for(form_, *format_->oformat, missing_);
  if (!codec) return MovieFault::NoEncoder;
  if (avformat_query_codec(format_->oformat, codec->id, FF_COMPLIANCE_NORMAL) == 0)
    return other((std::string(codec->name) + translated(" can't be in such a file")).c_str(), 0);
  pictureStream_ = avformat_new_stream(format_.get(), nullptr);
  pictures_.reset(avcodec_alloc_context3(codec));
  if (!pictureStream_ || !pictures_) throw std::bad_alloc();
  AVCodecContext& c = *pictures_;
  c.pix_fmt = pixels_for(*codec);
  const auto [across, down] = steps_of_sides(form_, *codec, c.pix_fmt);
  c.width = rounded_up(stream_.canvas.width, across);
  c.height = rounded_up(stream_.canvas.height, down);
  c.time_base = clock_;
  c.framerate = rate_;
  c.thread_count = 0;
  c.flags |= AV_CODEC_FLAG_BITEXACT;
  if (format_->oformat->flags & AVFMT_GLOBALHEADER) c.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (c.pix_fmt == AV_PIX_FMT_YUVJ420P) c.color_range = AVCOL_RANGE_JPEG;
  if (c.pix_fmt == AV_PIX_FMT_YUV420P) c.color_range = AVCOL_RANGE_MPEG, c.colorspace = AVCOL_SPC_SMPTE170M;
  if (!take_quality()) return other(translated("the quality can't be set"), 0);
  AVDictionary* options = nullptr;
  if (codec->id == AV_CODEC_ID_VP9) {
    av_dict_set(&options, "row-mt", "1", 0);
    av_dict_set(&options, "cpu-used", "4", 0);
  }
  const int opened = avcodec_open2(&c, codec, &options);
  av_dict_free(&options);
  if (opened < 0) return other(codec->name, opened);
  if (avcodec_parameters_from_context(pictureStream_->codecpar, &c) < 0) throw std::bad_alloc();
  pictureStream_->time_base = c.time_base;
  pictureStream_->avg_frame_rate = c.framerate;
  return MovieFault::None;
}

MovieFault MovieWriter::open_sound() {
  if (form_.sound.empty()) return MovieFault::None;
  sound_ = std::make_unique<MovieSound>(form_.sound);
  if (!sound_->ok()) return MovieFault::SoundNotRead;
  const AVCodec* codec = sound_encoder_for(form_, *format_->oformat);
  if (!codec) {
    missing_ = "sound";
    return MovieFault::NoEncoder;
  }
  soundStream_ = avformat_new_stream(format_.get(), nullptr);
  sounds_.reset(avcodec_alloc_context3(codec));
  if (!soundStream_ || !sounds_) throw std::bad_alloc();
  AVCodecContext& c = *sounds_;
  c.sample_fmt = codec->sample_fmts ? codec->sample_fmts[0] : AV_SAMPLE_FMT_S16;
  c.sample_rate = sound_->rate();
  if (codec->supported_samplerates) {
    // The next higher one that the encoder has, else its highest.
    int best = 0;
    for (const int* has = codec->supported_samplerates; *has; ++has)
      if (best == 0 || (best < sound_->rate() ? *has > best : *has >= sound_->rate() && *has < best))
        best = *has;
    c.sample_rate = best;
  }
  av_channel_layout_default(&c.ch_layout, std::clamp(sound_->channels(), 1, 2));
  c.bit_rate = 128'000;
  c.time_base = {1, c.sample_rate};
  c.flags |= AV_CODEC_FLAG_BITEXACT;
  if (format_->oformat->flags & AVFMT_GLOBALHEADER) c.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (const int opened = avcodec_open2(&c, codec, nullptr); opened < 0) return other(codec->name, opened);
  if (avcodec_parameters_from_context(soundStream_->codecpar, &c) < 0) throw std::bad_alloc();
  soundStream_->time_base = c.time_base;
  std::int64_t ticks = 0;
  for (const std::int64_t length : lengths_) ticks += length;
  const std::int64_t length = av_rescale_q(ticks * form_.passes, clock_, {1, 1'000'000});
  return sound_->begin(c, length) ? MovieFault::None : MovieFault::SoundNotRead;
}

MovieFault MovieWriter::open(const std::filesystem::path& scratch) {
  av_log_set_level(AV_LOG_QUIET);
  AVFormatContext* format = nullptr;
  const std::string name = "movie" + form_.extension;
  if (avformat_alloc_output_context2(&format, nullptr, nullptr, name.c_str()) < 0 || !format)
    return other(translated("nothing here writes such a file"), 0);
  format_.reset(format);
  format->flags |= AVFMT_FLAG_BITEXACT | AVFMT_FLAG_CUSTOM_IO;
  descriptor_ = scratch_file(scratch);
  if (descriptor_ < 0) return other(scratch.c_str(), AVERROR(errno));
  format->pb = descriptor_io(&descriptor_, true);
  if (!format->pb || !packet_ || !waiting_) throw std::bad_alloc();
  settle_times();
  if (const MovieFault fault = open_pictures(); fault != MovieFault::None) return fault;
  if (const MovieFault fault = open_sound(); fault != MovieFault::None) return fault;
  const int begun = avformat_write_header(format, nullptr);
  return begun < 0 ? other(translated("the file can't be begun"), begun) : MovieFault::None;
}

/// The canvas on the background, in the size of the movie, as the encoder takes it.
bool MovieWriter::fill(AVFrame& frame, const Picture& canvas) {
  Picture picture = canvas;
  if (picture.bits() == 32) picture = PictureFlatten(picture, form_.background);
  if (picture.bits() < 24) picture = PictureToTrueColor(picture);
  if (!picture) return false;
  const auto width = static_cast<std::uint32_t>(frame.width),
             height = static_cast<std::uint32_t>(frame.height);
  if (picture.width() != width || picture.height() != height) {
    if (!padded_) padded_ = PictureCreateFilled(width, height, form_.background);
    if (!padded_ || !padded_.edit_block()) return false;
    PictureBlit(padded_, 0, 0, picture, 0, 0, static_cast<std::int32_t>(picture.width()),
                static_cast<std::int32_t>(picture.height()));
    picture = padded_;
  }
  if (!scaler_) {
    scaler_.reset(sws_alloc_context());
    if (!scaler_) return false;
    const auto set = [&](const char* option, std::int64_t value) {
      av_opt_set_int(scaler_.get(), option, value, 0);
    };
    set("srcw", frame.width);
    set("srch", frame.height);
    set("src_format", AV_PIX_FMT_BGR24);
    set("dstw", frame.width);
    set("dsth", frame.height);
    set("dst_format", frame.format);
    set("dst_range", frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0);
    set("sws_flags", SWS_BICUBIC);
    set("threads", 0);
    if (sws_init_context(scaler_.get(), nullptr, nullptr) < 0) return false;
  }
  const LibavFrame from(av_frame_alloc());
  if (!from) return false;
  from->width = frame.width;
  from->height = frame.height;
  from->format = AV_PIX_FMT_BGR24;
  from->data[0] = const_cast<std::uint8_t*>(picture.row(0));
  from->linesize[0] = -static_cast<int>(picture.stride());
  from->buf[0] = av_buffer_create(
      from->data[0], picture.stride(), [](void*, std::uint8_t*) {}, nullptr, AV_BUFFER_FLAG_READONLY);
  return from->buf[0] && sws_scale_frame(scaler_.get(), &frame, from.get()) >= 0;
}

bool MovieWriter::put(AVPacket& packet, const AVCodecContext& codec, const AVStream& stream) {
  packet.stream_index = stream.index;
  av_packet_rescale_ts(&packet, codec.time_base, stream.time_base);
  return av_interleaved_write_frame(format_.get(), &packet) >= 0;
}

/// Packets of pictures wait for the next one, since the last one ends where the movie does.
bool MovieWriter::drain(AVCodecContext& codec, AVStream& stream) {
  while (avcodec_receive_packet(&codec, packet_.get()) >= 0) {
    if (&stream != pictureStream_) {
      if (!put(*packet_, codec, stream)) return false;
      continue;
    }
    if (waits_ && !put(*waiting_, codec, stream)) return false;
    if (const auto told = durations_.find(packet_->pts); told != durations_.end()) {
      packet_->duration = told->second;
      durations_.erase(told);
    }
    av_packet_move_ref(waiting_.get(), packet_.get());
    waits_ = true;
  }
  return true;
}

/// Formats that store differences of the times of decoding have the end of the last one by its length.
bool MovieWriter::put_last(std::int64_t end) {
  if (!waits_) return true;
  waits_ = false;
  const std::string_view name = format_->oformat->name;
  if (name == "mov" || name == "mp4" || name == "ipod") waiting_->duration = end - waiting_->pts;
  return put(*waiting_, *pictures_, *pictureStream_);
}

/// Sound up to a time of the pictures' clock.
bool MovieWriter::write_sound(std::int64_t until) {
  while (sound_ && av_compare_ts(sound_->given(), sounds_->time_base, until, clock_) < 0) {
    const LibavFrame samples = sound_->next();
    if (!samples) return true;
    if (avcodec_send_frame(sounds_.get(), samples.get()) < 0 || !drain(*sounds_, *soundStream_)) return false;
  }
  return true;
}

bool MovieWriter::send(std::size_t number, std::int64_t time, std::int64_t duration, bool last) {
  const LibavFrame frame(av_frame_alloc());
  if (!frame) return false;
  frame->width = pictures_->width;
  frame->height = pictures_->height;
  frame->format = pictures_->pix_fmt;
  frame->color_range = pictures_->color_range;
  frame->colorspace = pictures_->colorspace;
  if (av_frame_get_buffer(frame.get(), 0) < 0) return false;
  const Picture canvas = stream_.frame(number).picture;
  if (!canvas || !fill(*frame, canvas)) return false;
  frame->quality = pictures_->global_quality;
  // Frames of one length end where the next one begins: the last one is told once more where it ends.
  const bool again = constant_ && last && duration > 1;
  frame->pts = time;
  durations_[time] = again ? duration - 1 : duration;
  if (avcodec_send_frame(pictures_.get(), frame.get()) < 0 || !drain(*pictures_, *pictureStream_))
    return false;
  if (!again) return true;
  frame->pts = time + duration - 1;
  durations_[frame->pts] = 1;
  return avcodec_send_frame(pictures_.get(), frame.get()) >= 0 && drain(*pictures_, *pictureStream_);
}

MovieFault MovieWriter::write_frames() {
  const Progress progress(host_, string_text(StringId::Writing));
  const std::size_t total = stream_.count * form_.passes;
  std::int64_t time = 0;
  for (std::size_t i = 0; i < total; ++i) {
    if (host_.stopped()) return MovieFault::Stopped;
    const std::size_t frame = i % stream_.count;
    const std::int64_t length = lengths_[frame];
    if (!send(frame, time, length, i + 1 == total) || !write_sound(time + length))
      return other(translated("the file can't be written"), format_->pb->error);
    time += length;
    progress.step(i + 1, total);
  }
  if (avcodec_send_frame(pictures_.get(), nullptr) < 0 || !drain(*pictures_, *pictureStream_) ||
      !put_last(time) ||
      (sounds_ && (avcodec_send_frame(sounds_.get(), nullptr) < 0 || !drain(*sounds_, *soundStream_))) ||
      av_write_trailer(format_.get()) < 0)
    return other(translated("the file can't be written"), format_->pb->error);
  avio_flush(format_->pb);
  return format_->pb->error < 0 ? other(translated("the file can't be written"), format_->pb->error)
                                : MovieFault::None;
}

MovieFault MovieWriter::copy(const Sink& sink) {
  std::vector<std::uint8_t> bytes(1 << 20);
  off_t at = 0;
  for (;;) {
    const ssize_t got = pread(descriptor_, bytes.data(), bytes.size(), at);
    if (got < 0) return other(translated("the file can't be read again"), AVERROR(errno));
    if (got == 0) return MovieFault::None;
    if (!sink.write({bytes.data(), static_cast<std::size_t>(got)})) return MovieFault::Other;
    at += got;
  }
}

MovieFault MovieWriter::write(const std::filesystem::path& scratch, const Sink& sink) {
  MovieFault fault = open(scratch);
  if (fault == MovieFault::None) fault = write_frames();
  return fault == MovieFault::None ? copy(sink) : fault;
}

}  // namespace

bool movies_built() { return true; }

std::vector<MovieEncoder> movie_encoders() {
  std::vector<MovieEncoder> encoders;
  if (!load_movie_libraries()) return encoders;
  void* walk = nullptr;
  while (const AVCodec* codec = av_codec_iterate(&walk))
    if (av_codec_is_encoder(codec) && codec->type == AVMEDIA_TYPE_VIDEO &&
        !(codec->capabilities & AV_CODEC_CAP_HARDWARE))
      encoders.push_back({codec->name, codec->long_name ? codec->long_name : ""});
  std::ranges::sort(encoders, {}, &MovieEncoder::name);
  return encoders;
}

MovieFault write_movie(const FrameStream& stream, const MovieForm& form, const std::filesystem::path& scratch,
                       const Sink& sink, Host& host, std::string& missing) {
  if (!load_movie_libraries(host)) return MovieFault::Other;
  return MovieWriter(stream, form, host, missing).write(scratch, sink);
}

}  // namespace vellum
