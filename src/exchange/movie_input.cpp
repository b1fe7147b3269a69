#include "exchange/movie_input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "base/limits.h"
#include "base/settings.h"

namespace vellum {
namespace {

constexpr int kBufferBytes = 1 << 18;

int read_bytes(void* opaque, std::uint8_t* bytes, int count) {
  const ssize_t got = read(*static_cast<int*>(opaque), bytes, static_cast<std::size_t>(count));
  return got > 0 ? static_cast<int>(got) : got == 0 ? AVERROR_EOF : AVERROR(errno);
}

int write_bytes(void* opaque, std::uint8_t* bytes, int count) {
  for (int done = 0; done < count;) {
    const ssize_t put =
        write(*static_cast<int*>(opaque), bytes + done, static_cast<std::size_t>(count - done));
    if (put < 0 && errno != EINTR) return AVERROR(errno);
    done += put > 0 ? static_cast<int>(put) : 0;
  }
  return count;
}

std::int64_t seek_bytes(void* opaque, std::int64_t offset, int whence) {
  const int descriptor = *static_cast<int*>(opaque);
  if (whence & AVSEEK_SIZE) {
    struct stat state {};
    return fstat(descriptor, &state) == 0 ? static_cast<std::int64_t>(state.st_size) : AVERROR(errno);
  }
  const off_t at = lseek(descriptor, static_cast<off_t>(offset), whence & ~AVSEEK_FORCE);
  return at < 0 ? AVERROR(errno) : static_cast<std::int64_t>(at);
}

/// Playlists name other files, and addresses.
int open_nothing(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
  return AVERROR(EACCES);
}

int open_regular(const std::filesystem::path& file, std::uint64_t& size) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat state {};
  if (descriptor >= 0 && (fstat(descriptor, &state) != 0 || !S_ISREG(state.st_mode))) {
    close(descriptor);
    return -1;
  }
  size = static_cast<std::uint64_t>(state.st_size);
  return descriptor;
}

/// The most pixels that a frame of a file of so many bytes may have.
std::int64_t most_pixels(std::uint64_t file_bytes) {
  constexpr std::uint64_t kPixelBytes = 4;
  const std::uint64_t plausible =
      settings::MaximumDecodedMegabytes > 0
          ? kMaximumPictureBytes
          : std::clamp(file_bytes * kMaximumExpansion, kUnquestionedBytes, kMaximumPictureBytes);
  return static_cast<std::int64_t>(std::min(plausible, maximum_decoded_bytes()) / kPixelBytes);
}

/// Looking for streams decodes frames already: not such that their file can't mean.
bool find_streams(AVFormatContext& format, std::uint64_t file_bytes) {
  std::vector<AVDictionary*> options(format.nb_streams, nullptr);
  for (AVDictionary*& one : options) av_dict_set_int(&one, "max_pixels", most_pixels(file_bytes), 0);
  const bool found = avformat_find_stream_info(&format, options.data()) >= 0;
  for (AVDictionary*& one : options) av_dict_free(&one);
  return found;
}

}  // namespace

AVIOContext* descriptor_io(int* descriptor, bool writes) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
  if (!buffer) return nullptr;
  AVIOContext* io = avio_alloc_context(buffer, kBufferBytes, writes ? 1 : 0, descriptor, read_bytes,
                                       writes ? write_bytes : nullptr, seek_bytes);
  if (!io) av_free(buffer);
  return io;
}

void free_descriptor_io(AVIOContext*& io) {
  if (!io) return;
  av_freep(&io->buffer);
  avio_context_free(&io);
}

MovieInput::MovieInput(const std::filesystem::path& file) : descriptor_(open_regular(file, size_)) {
  av_log_set_level(AV_LOG_QUIET);
  if (descriptor_ < 0) return;
  io_ = descriptor_io(&descriptor_, false);
  format_ = avformat_alloc_context();
  if (!io_ || !format_) return;
  format_->pb = io_;
  format_->io_open = open_nothing;
  format_->flags |= AVFMT_FLAG_CUSTOM_IO;
  // A failure frees the context.
  const std::string name = file.filename().string();
  if (avformat_open_input(&format_, name.c_str(), nullptr, nullptr) < 0) return;
  opened_ = find_streams(*format_, size_);
}

MovieInput::~MovieInput() {
  if (opened_ || (format_ && format_->iformat))
    avformat_close_input(&format_);
  else
    avformat_free_context(format_);
  free_descriptor_io(io_);
  if (descriptor_ >= 0) close(descriptor_);
}

AVStream* MovieInput::open_stream(AVMediaType type, CodecContext& codec) const {
  if (!opened_) return nullptr;
  const AVCodec* decoder = nullptr;
  const int index = av_find_best_stream(format_, type, -1, -1, &decoder, 0);
  if (index < 0 || !decoder) return nullptr;
  AVStream* stream = format_->streams[index];
  // The alpha of VP8 and VP9 is what these decoders alone read.
  const AVDictionaryEntry* alpha = av_dict_get(stream->metadata, "alpha_mode", nullptr, 0);
  if (alpha && alpha->value[0] == '1') {
    const bool nine = stream->codecpar->codec_id == AV_CODEC_ID_VP9;
    if (const AVCodec* other = avcodec_find_decoder_by_name(nine ? "libvpx-vp9" : "libvpx")) decoder = other;
  }
  codec.reset(avcodec_alloc_context3(decoder));
  if (!codec || avcodec_parameters_to_context(codec.get(), stream->codecpar) < 0) return nullptr;
  codec->pkt_timebase = stream->time_base;
  codec->thread_count = 0;
  codec->max_pixels = most_pixels(size_);
  if (avcodec_open2(codec.get(), decoder, nullptr) < 0) return nullptr;
  for (unsigned i = 0; i < format_->nb_streams; ++i)
    if (static_cast<int>(i) != index) format_->streams[i]->discard = AVDISCARD_ALL;
  return stream;
}

}  // namespace vellum
