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

#include "base/host.h"
#include "base/late_library.h"

namespace vellum {

/// Whether they are there, loaded now; else the reason is kept in the host. Asked before anything of them is
/// called.
bool load_movie_libraries(Host& host);
/// The same for who needs no reason.
bool load_movie_libraries();
/// Null where there is none of this name.
void* movie_function(const char* name);

// What the attributes of some of them say (pure, must be used) is lost here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"
VELLUM_LATE_FUNCTION(movie_function, av_audio_fifo_alloc);
VELLUM_LATE_FUNCTION(movie_function, av_audio_fifo_free);
VELLUM_LATE_FUNCTION(movie_function, av_audio_fifo_read);
VELLUM_LATE_FUNCTION(movie_function, av_audio_fifo_size);
VELLUM_LATE_FUNCTION(movie_function, av_audio_fifo_write);
VELLUM_LATE_FUNCTION(movie_function, av_buffer_create);
VELLUM_LATE_FUNCTION(movie_function, av_channel_layout_copy);
VELLUM_LATE_FUNCTION(movie_function, av_channel_layout_default);
VELLUM_LATE_FUNCTION(movie_function, av_codec_is_encoder);
VELLUM_LATE_FUNCTION(movie_function, av_codec_iterate);
VELLUM_LATE_FUNCTION(movie_function, av_compare_ts);
VELLUM_LATE_FUNCTION(movie_function, av_dict_free);
VELLUM_LATE_FUNCTION(movie_function, av_dict_get);
VELLUM_LATE_FUNCTION(movie_function, av_dict_set);
VELLUM_LATE_FUNCTION(movie_function, av_dict_set_int);
VELLUM_LATE_FUNCTION(movie_function, av_display_rotation_get);
VELLUM_LATE_FUNCTION(movie_function, av_find_best_stream);
VELLUM_LATE_FUNCTION(movie_function, av_frame_alloc);
VELLUM_LATE_FUNCTION(movie_function, av_frame_free);
VELLUM_LATE_FUNCTION(movie_function, av_frame_get_buffer);
VELLUM_LATE_FUNCTION(movie_function, av_free);
VELLUM_LATE_FUNCTION(movie_function, av_freep);
VELLUM_LATE_FUNCTION(movie_function, av_guess_frame_rate);
VELLUM_LATE_FUNCTION(movie_function, av_guess_sample_aspect_ratio);
VELLUM_LATE_FUNCTION(movie_function, av_interleaved_write_frame);
VELLUM_LATE_FUNCTION(movie_function, av_log_set_level);
VELLUM_LATE_FUNCTION(movie_function, av_malloc);
VELLUM_LATE_FUNCTION(movie_function, av_opt_find);
VELLUM_LATE_FUNCTION(movie_function, av_opt_set_double);
VELLUM_LATE_FUNCTION(movie_function, av_opt_set_int);
VELLUM_LATE_FUNCTION(movie_function, av_packet_alloc);
VELLUM_LATE_FUNCTION(movie_function, av_packet_free);
VELLUM_LATE_FUNCTION(movie_function, av_packet_move_ref);
VELLUM_LATE_FUNCTION(movie_function, av_packet_rescale_ts);
VELLUM_LATE_FUNCTION(movie_function, av_packet_unref);
VELLUM_LATE_FUNCTION(movie_function, av_pix_fmt_desc_get);
VELLUM_LATE_FUNCTION(movie_function, av_read_frame);
VELLUM_LATE_FUNCTION(movie_function, av_rescale);
VELLUM_LATE_FUNCTION(movie_function, av_rescale_q);
VELLUM_LATE_FUNCTION(movie_function, av_samples_alloc_array_and_samples);
VELLUM_LATE_FUNCTION(movie_function, av_samples_set_silence);
VELLUM_LATE_FUNCTION(movie_function, av_seek_frame);
VELLUM_LATE_FUNCTION(movie_function, av_stream_get_side_data);
VELLUM_LATE_FUNCTION(movie_function, av_strerror);
VELLUM_LATE_FUNCTION(movie_function, av_write_trailer);
VELLUM_LATE_FUNCTION(movie_function, avcodec_alloc_context3);
VELLUM_LATE_FUNCTION(movie_function, avcodec_descriptor_get);
VELLUM_LATE_FUNCTION(movie_function, avcodec_find_best_pix_fmt_of_list);
VELLUM_LATE_FUNCTION(movie_function, avcodec_find_decoder_by_name);
VELLUM_LATE_FUNCTION(movie_function, avcodec_find_encoder);
VELLUM_LATE_FUNCTION(movie_function, avcodec_find_encoder_by_name);
VELLUM_LATE_FUNCTION(movie_function, avcodec_flush_buffers);
VELLUM_LATE_FUNCTION(movie_function, avcodec_free_context);
VELLUM_LATE_FUNCTION(movie_function, avcodec_get_name);
VELLUM_LATE_FUNCTION(movie_function, avcodec_open2);
VELLUM_LATE_FUNCTION(movie_function, avcodec_parameters_from_context);
VELLUM_LATE_FUNCTION(movie_function, avcodec_parameters_to_context);
VELLUM_LATE_FUNCTION(movie_function, avcodec_receive_frame);
VELLUM_LATE_FUNCTION(movie_function, avcodec_receive_packet);
VELLUM_LATE_FUNCTION(movie_function, avcodec_send_frame);
VELLUM_LATE_FUNCTION(movie_function, avcodec_send_packet);
VELLUM_LATE_FUNCTION(movie_function, avformat_alloc_context);
VELLUM_LATE_FUNCTION(movie_function, avformat_alloc_output_context2);
VELLUM_LATE_FUNCTION(movie_function, avformat_close_input);
VELLUM_LATE_FUNCTION(movie_function, avformat_find_stream_info);
VELLUM_LATE_FUNCTION(movie_function, avformat_free_context);
VELLUM_LATE_FUNCTION(movie_function, avformat_new_stream);
VELLUM_LATE_FUNCTION(movie_function, avformat_open_input);
VELLUM_LATE_FUNCTION(movie_function, avformat_query_codec);
VELLUM_LATE_FUNCTION(movie_function, avformat_write_header);
VELLUM_LATE_FUNCTION(movie_function, avio_alloc_context);
VELLUM_LATE_FUNCTION(movie_function, avio_context_free);
VELLUM_LATE_FUNCTION(movie_function, avio_flush);
VELLUM_LATE_FUNCTION(movie_function, swr_alloc_set_opts2);
VELLUM_LATE_FUNCTION(movie_function, swr_convert);
VELLUM_LATE_FUNCTION(movie_function, swr_free);
VELLUM_LATE_FUNCTION(movie_function, swr_get_out_samples);
VELLUM_LATE_FUNCTION(movie_function, swr_init);
VELLUM_LATE_FUNCTION(movie_function, sws_alloc_context);
VELLUM_LATE_FUNCTION(movie_function, sws_freeContext);
VELLUM_LATE_FUNCTION(movie_function, sws_getCoefficients);
VELLUM_LATE_FUNCTION(movie_function, sws_getColorspaceDetails);
VELLUM_LATE_FUNCTION(movie_function, sws_init_context);
VELLUM_LATE_FUNCTION(movie_function, sws_scale_frame);
VELLUM_LATE_FUNCTION(movie_function, sws_setColorspaceDetails);
#pragma GCC diagnostic pop

}  // namespace vellum
