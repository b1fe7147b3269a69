// The movie libraries, loaded when something of them is called for the first time: they want more than a
// hundred others, and most runs of the programs have nothing to do with movies.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <atomic>

#include "base/host.h"

namespace vellum {

/// Whether they are there, loaded now; else the reason is kept in the host. Asked before anything of them is
/// called.
bool load_movie_libraries(Host& host);
/// The same for who needs no reason.
bool load_movie_libraries();
/// Null where there is none of this name.
void* movie_function(const char* name);

/// A function of the libraries under its own name.
template <class Function>
struct MovieFunction;
template <class Result, class... Arguments>
struct MovieFunction<Result(Arguments...)> {
  const char* name;
  std::atomic<Result (*)(Arguments...)> found{nullptr};

  Result operator()(Arguments... arguments) {
    auto* function = found.load(std::memory_order_relaxed);
    if (!function) {
      function = reinterpret_cast<Result (*)(Arguments...)>(movie_function(name));
      found.store(function, std::memory_order_relaxed);
    }
    return function(arguments...);
  }
};

#define VELLUM_MOVIE_FUNCTION(name) \
  inline constinit MovieFunction<decltype(::name)> name { #name }
// What the attributes of some of them say (pure, must be used) is lost here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
VELLUM_MOVIE_FUNCTION(av_audio_fifo_alloc);
VELLUM_MOVIE_FUNCTION(av_audio_fifo_free);
VELLUM_MOVIE_FUNCTION(av_audio_fifo_read);
VELLUM_MOVIE_FUNCTION(av_audio_fifo_size);
VELLUM_MOVIE_FUNCTION(av_audio_fifo_write);
VELLUM_MOVIE_FUNCTION(av_buffer_create);
VELLUM_MOVIE_FUNCTION(av_channel_layout_copy);
VELLUM_MOVIE_FUNCTION(av_channel_layout_default);
VELLUM_MOVIE_FUNCTION(av_codec_is_encoder);
VELLUM_MOVIE_FUNCTION(av_codec_iterate);
VELLUM_MOVIE_FUNCTION(av_compare_ts);
VELLUM_MOVIE_FUNCTION(av_dict_free);
VELLUM_MOVIE_FUNCTION(av_dict_get);
VELLUM_MOVIE_FUNCTION(av_dict_set);
VELLUM_MOVIE_FUNCTION(av_dict_set_int);
VELLUM_MOVIE_FUNCTION(av_display_rotation_get);
VELLUM_MOVIE_FUNCTION(av_find_best_stream);
VELLUM_MOVIE_FUNCTION(av_frame_alloc);
VELLUM_MOVIE_FUNCTION(av_frame_free);
VELLUM_MOVIE_FUNCTION(av_frame_get_buffer);
VELLUM_MOVIE_FUNCTION(av_free);
VELLUM_MOVIE_FUNCTION(av_freep);
VELLUM_MOVIE_FUNCTION(av_guess_frame_rate);
VELLUM_MOVIE_FUNCTION(av_guess_sample_aspect_ratio);
VELLUM_MOVIE_FUNCTION(av_interleaved_write_frame);
VELLUM_MOVIE_FUNCTION(av_log_set_level);
VELLUM_MOVIE_FUNCTION(av_malloc);
VELLUM_MOVIE_FUNCTION(av_opt_find);
VELLUM_MOVIE_FUNCTION(av_opt_set_double);
VELLUM_MOVIE_FUNCTION(av_opt_set_int);
VELLUM_MOVIE_FUNCTION(av_packet_alloc);
VELLUM_MOVIE_FUNCTION(av_packet_free);
VELLUM_MOVIE_FUNCTION(av_packet_move_ref);
VELLUM_MOVIE_FUNCTION(av_packet_rescale_ts);
VELLUM_MOVIE_FUNCTION(av_packet_unref);
VELLUM_MOVIE_FUNCTION(av_pix_fmt_desc_get);
VELLUM_MOVIE_FUNCTION(av_read_frame);
VELLUM_MOVIE_FUNCTION(av_rescale);
VELLUM_MOVIE_FUNCTION(av_rescale_q);
VELLUM_MOVIE_FUNCTION(av_samples_alloc_array_and_samples);
VELLUM_MOVIE_FUNCTION(av_samples_set_silence);
VELLUM_MOVIE_FUNCTION(av_seek_frame);
VELLUM_MOVIE_FUNCTION(av_stream_get_side_data);
VELLUM_MOVIE_FUNCTION(av_strerror);
VELLUM_MOVIE_FUNCTION(av_write_trailer);
VELLUM_MOVIE_FUNCTION(avcodec_alloc_context3);
VELLUM_MOVIE_FUNCTION(avcodec_descriptor_get);
VELLUM_MOVIE_FUNCTION(avcodec_find_best_pix_fmt_of_list);
VELLUM_MOVIE_FUNCTION(avcodec_find_decoder_by_name);
VELLUM_MOVIE_FUNCTION(avcodec_find_encoder);
VELLUM_MOVIE_FUNCTION(avcodec_find_encoder_by_name);
VELLUM_MOVIE_FUNCTION(avcodec_flush_buffers);
VELLUM_MOVIE_FUNCTION(avcodec_free_context);
VELLUM_MOVIE_FUNCTION(avcodec_get_name);
VELLUM_MOVIE_FUNCTION(avcodec_open2);
VELLUM_MOVIE_FUNCTION(avcodec_parameters_from_context);
VELLUM_MOVIE_FUNCTION(avcodec_parameters_to_context);
VELLUM_MOVIE_FUNCTION(avcodec_receive_frame);
VELLUM_MOVIE_FUNCTION(avcodec_receive_packet);
VELLUM_MOVIE_FUNCTION(avcodec_send_frame);
VELLUM_MOVIE_FUNCTION(avcodec_send_packet);
VELLUM_MOVIE_FUNCTION(avformat_alloc_context);
VELLUM_MOVIE_FUNCTION(avformat_alloc_output_context2);
VELLUM_MOVIE_FUNCTION(avformat_close_input);
VELLUM_MOVIE_FUNCTION(avformat_find_stream_info);
VELLUM_MOVIE_FUNCTION(avformat_free_context);
VELLUM_MOVIE_FUNCTION(avformat_new_stream);
VELLUM_MOVIE_FUNCTION(avformat_open_input);
VELLUM_MOVIE_FUNCTION(avformat_query_codec);
VELLUM_MOVIE_FUNCTION(avformat_write_header);
VELLUM_MOVIE_FUNCTION(avio_alloc_context);
VELLUM_MOVIE_FUNCTION(avio_context_free);
VELLUM_MOVIE_FUNCTION(avio_flush);
VELLUM_MOVIE_FUNCTION(swr_alloc_set_opts2);
VELLUM_MOVIE_FUNCTION(swr_convert);
VELLUM_MOVIE_FUNCTION(swr_free);
VELLUM_MOVIE_FUNCTION(swr_get_out_samples);
VELLUM_MOVIE_FUNCTION(swr_init);
VELLUM_MOVIE_FUNCTION(sws_alloc_context);
VELLUM_MOVIE_FUNCTION(sws_freeContext);
VELLUM_MOVIE_FUNCTION(sws_getCoefficients);
VELLUM_MOVIE_FUNCTION(sws_getColorspaceDetails);
VELLUM_MOVIE_FUNCTION(sws_init_context);
VELLUM_MOVIE_FUNCTION(sws_scale_frame);
VELLUM_MOVIE_FUNCTION(sws_setColorspaceDetails);
#pragma GCC diagnostic pop
#undef VELLUM_MOVIE_FUNCTION

}  // namespace vellum
