#include "exchange/movie_sound.h"

#include <algorithm>

namespace vellum {
namespace {

/// Samples that an encoder without a length of its own gets at a time.
constexpr int kUsualSamples = 1024;

}  // namespace

MovieSound::~MovieSound() {
  swr_free(&resampler_);
  if (waiting_) av_audio_fifo_free(waiting_);
}

bool MovieSound::begin(AVCodecContext& encoder, std::int64_t length) {
  encoder_ = &encoder;
  wanted_ = av_rescale(length, encoder.sample_rate, 1'000'000);
  waiting_ = av_audio_fifo_alloc(encoder.sample_fmt, encoder.ch_layout.nb_channels, kUsualSamples);
  return waiting_ &&
         swr_alloc_set_opts2(&resampler_, &encoder.ch_layout, encoder.sample_fmt, encoder.sample_rate,
                             &decoder_->ch_layout, decoder_->sample_fmt, decoder_->sample_rate, 0,
                             nullptr) >= 0 &&
         swr_init(resampler_) >= 0;
}

/// Puts what the file has next behind what waits. False at the end.
bool MovieSound::decode_some() {
  const LibavPacket packet(av_packet_alloc());
  const LibavFrame frame(av_frame_alloc());
  if (!packet || !frame) return false;
  for (;;) {
    const int got = avcodec_receive_frame(decoder_.get(), frame.get());
    if (got == 0) break;
    if (got == AVERROR_EOF || atEnd_) return false;
    if (av_read_frame(input_.format(), packet.get()) < 0) {
      atEnd_ = avcodec_send_packet(decoder_.get(), nullptr) < 0;
      continue;
    }
    if (packet->stream_index == stream_->index) avcodec_send_packet(decoder_.get(), packet.get());
    av_packet_unref(packet.get());
  }
  const int most = swr_get_out_samples(resampler_, frame->nb_samples);
  std::uint8_t** samples = nullptr;
  if (most <= 0) return true;
  if (av_samples_alloc_array_and_samples(&samples, nullptr, encoder_->ch_layout.nb_channels, most,
                                         encoder_->sample_fmt, 0) < 0)
    return false;
  const int made = swr_convert(resampler_, samples, most,
                               const_cast<const std::uint8_t**>(frame->extended_data), frame->nb_samples);
  const bool kept =
      made < 0 || av_audio_fifo_write(waiting_, reinterpret_cast<void**>(samples), made) == made;
  av_freep(&samples[0]);
  av_freep(&samples);
  return kept;
}

LibavFrame MovieSound::next() {
  if (given_ >= wanted_) return nullptr;
  const int step = encoder_->frame_size > 0 ? encoder_->frame_size : kUsualSamples;
  const int count = static_cast<int>(std::min<std::int64_t>(step, wanted_ - given_));
  while (av_audio_fifo_size(waiting_) < count && decode_some()) {
  }
  LibavFrame frame(av_frame_alloc());
  if (!frame) return nullptr;
  frame->nb_samples = count;
  frame->format = encoder_->sample_fmt;
  frame->sample_rate = encoder_->sample_rate;
  if (av_channel_layout_copy(&frame->ch_layout, &encoder_->ch_layout) < 0 ||
      av_frame_get_buffer(frame.get(), 0) < 0)
    return nullptr;
  const int there = av_audio_fifo_read(waiting_, reinterpret_cast<void**>(frame->extended_data), count);
  if (there < count)
    av_samples_set_silence(frame->extended_data, std::max(0, there), count - std::max(0, there),
                           encoder_->ch_layout.nb_channels, encoder_->sample_fmt);
  frame->pts = given_;
  given_ += count;
  return frame;
}

}  // namespace vellum
