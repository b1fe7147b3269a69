// WebP, the first frame of an animation, through libwebp.
#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>

#include "image/codecs.h"

namespace vellum {
namespace {

/// A file taken apart and its first frame.
class FirstFrame {
 public:
  explicit FirstFrame(FileBytes file) {
    const WebPData data{file.data(), file.size()};
    demuxer_ = WebPDemux(&data);
    found_ = demuxer_ && WebPDemuxGetFrame(demuxer_, 1, &frame_);
  }
  ~FirstFrame() {
    WebPDemuxReleaseIterator(&frame_);
    WebPDemuxDelete(demuxer_);
  }
  FirstFrame(const FirstFrame&) = delete;
  FirstFrame& operator=(const FirstFrame&) = delete;

  explicit operator bool() const { return found_; }
  const WebPIterator& operator*() const { return frame_; }
  std::uint32_t width() const { return WebPDemuxGetI(demuxer_, WEBP_FF_CANVAS_WIDTH); }
  std::uint32_t height() const { return WebPDemuxGetI(demuxer_, WEBP_FF_CANVAS_HEIGHT); }
  /// What the frame leaves free of the canvas is transparent.
  bool covers_canvas() const {
    return frame_.width == static_cast<int>(width()) && frame_.height == static_cast<int>(height());
  }
  bool has_alpha() const {
    return frame_.has_alpha || !covers_canvas() ||
           (WebPDemuxGetI(demuxer_, WEBP_FF_FORMAT_FLAGS) & ALPHA_FLAG);
  }

 private:
  WebPDemuxer* demuxer_ = nullptr;
  WebPIterator frame_{};
  bool found_ = false;
};

bool fits(const FirstFrame& file, const WebPBitstreamFeatures& features) {
  const WebPIterator& frame = *file;
  return features.width == frame.width && features.height == frame.height && frame.x_offset >= 0 &&
         frame.y_offset >= 0 && std::int64_t{frame.x_offset} + frame.width <= file.width() &&
         std::int64_t{frame.y_offset} + frame.height <= file.height();
}

/// Decodes into the frame's place in the picture, turned over because rows lie bottom up.
bool decode_frame(const FirstFrame& file, Picture& picture) {
  const WebPIterator& frame = *file;
  WebPDecoderConfig config;
  if (!WebPInitDecoderConfig(&config) ||
      WebPGetFeatures(frame.fragment.bytes, frame.fragment.size, &config.input) != VP8_STATUS_OK ||
      !fits(file, config.input))
    return false;
  const EditRows rows(picture);
  const std::size_t size = picture.bits() / 8;
  const auto width = static_cast<std::size_t>(frame.width), height = static_cast<std::size_t>(frame.height);
  config.options.flip = 1;
  config.output.colorspace = size == 4 ? MODE_BGRA : MODE_BGR;
  config.output.is_external_memory = 1;
  config.output.u.RGBA.rgba = rows[static_cast<std::size_t>(frame.y_offset) + height - 1] +
                              size * static_cast<std::size_t>(frame.x_offset);
  config.output.u.RGBA.stride = static_cast<int>(rows.stride);
  config.output.u.RGBA.size = rows.stride * (height - 1) + size * width;
  return WebPDecode(frame.fragment.bytes, frame.fragment.size, &config) == VP8_STATUS_OK;
}

int put_bytes(const std::uint8_t* bytes, std::size_t count, const WebPPicture* picture) {
  return static_cast<SafeFile*>(picture->custom_ptr)->write({bytes, count});
}

bool configure(const GraphicSwitches& switches, WebPConfig& config) {
  if (!WebPConfigInit(&config)) return false;
  config.quality = static_cast<float>(std::clamp(switches.quality.value_or(75), 0, 100));
  config.lossless = switches.lossless;
  // Without loss means every color, those under alpha 0 too.
  config.exact = switches.lossless;
  return WebPValidateConfig(&config);
}

bool encode_webp(const Picture& picture, const GraphicSwitches& switches, SafeFile& file) {
  WebPConfig config;
  WebPPicture frame;
  if (!picture || picture.width() > WEBP_MAX_DIMENSION || picture.height() > WEBP_MAX_DIMENSION) return false;
  if (!configure(switches, config) || !WebPPictureInit(&frame)) return false;
  frame.use_argb = switches.lossless;
  frame.width = static_cast<int>(picture.width());
  frame.height = static_cast<int>(picture.height());
  frame.writer = put_bytes;
  frame.custom_ptr = &file;
  const auto import = picture.bits() == 32 ? WebPPictureImportBGRA : WebPPictureImportBGR;
  const bool written =
      import(&frame, picture.row(0), -static_cast<int>(picture.stride())) && WebPEncode(&config, &frame);
  WebPPictureFree(&frame);
  return written;
}

}  // namespace

Picture decode_webp(FileBytes bytes, Part part) {
  const FirstFrame file(bytes);
  if (!file) return {};
  const std::uint32_t bits = file.has_alpha() ? 32 : 24;
  if (part == Part::Header) return PictureCreateHeaderOnly(file.width(), file.height(), nullptr, bits);
  Picture picture = file.covers_canvas() ? create_rows(file.width(), file.height(), nullptr, bits)
                                         : PictureCreate(file.width(), file.height(), nullptr, bits);
  return picture && decode_frame(file, picture) ? picture : Picture();
}

Picture WEBPGetFileInformation(const std::filesystem::path& path, const GraphicSwitches&) {
  return read_through(path, [](FileBytes file) { return decode_webp(file, Part::Header); });
}

Picture WEBPReadGraphicFile(const std::filesystem::path& path, const GraphicSwitches&) {
  return read_through(path, [](FileBytes file) { return decode_webp(file, Part::Whole); });
}

bool WEBPWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches& switches,
                          const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) {
    return encode_webp(picture.bits() == 32 ? picture : true_colour_shown(picture), switches, file);
  });
}

}  // namespace vellum
