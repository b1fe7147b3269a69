// JPEG through libjpeg-turbo, its EXIF orientation through libexif.
//
// The library reports errors by a jump. Every function that sets the target of one (`setjmp`) holds no object
// with a destructor; the records that own memory live in its caller.
#include <csetjmp>
#include <cstdio>
#include <vector>

#include <jpeglib.h>
#include <libexif/exif-data.h>

#include "base/translation.h"
#include "image/codecs.h"
#include "image/orientation.h"

namespace vellum {
namespace {

struct ErrorJump {
  jpeg_error_mgr manager{};
  std::jmp_buf target{};
  std::array<char, JMSG_LENGTH_MAX> text{};  ///< the error, else the first warning; empty: there is none
  std::uint32_t row = 0;                     ///< that was to be read when the first warning came

  static ErrorJump& of(j_common_ptr info) { return *reinterpret_cast<ErrorJump*>(info->err); }
};

[[noreturn]] void jump(j_common_ptr info) {
  info->err->format_message(info, ErrorJump::of(info).text.data());
  std::longjmp(ErrorJump::of(info).target, 1);
}
void stay_silent(j_common_ptr) {}

struct ScanProgress {
  jpeg_progress_mgr manager{};
  std::uint64_t fileBytes = 0;
};

/// Levels below 0 are warnings: data is damaged or missing.
void keep_warning(j_common_ptr info, int level) {
  if (level >= 0) return;
  ErrorJump& error = ErrorJump::of(info);
  if (info->err->num_warnings++ > 0) return;
  info->err->format_message(info, error.text.data());
  if (info->is_decompressor) error.row = reinterpret_cast<j_decompress_ptr>(info)->output_scanline;
}

jpeg_error_mgr* prepare(ErrorJump& error) {
  jpeg_std_error(&error.manager);
  error.manager.error_exit = jump;
  error.manager.output_message = stay_silent;
  error.manager.emit_message = keep_warning;
  return &error.manager;
}

/// Of a progressive file: the numbers that all its scans make wait for the last one.
std::uint64_t coefficient_bytes(const jpeg_decompress_struct& info) {
  std::uint64_t bytes = 0;
  for (int i = 0; i < info.num_components; ++i) {
    const jpeg_component_info& part = info.comp_info[i];
    bytes += std::uint64_t{part.width_in_blocks} * part.height_in_blocks * DCTSIZE2 * sizeof(JCOEF);
  }
  return jpeg_has_multiple_scans(const_cast<j_decompress_ptr>(&info)) ? bytes : 0;
}

/// More scans than any encoder writes: a small file could otherwise keep the decoder busy for hours.
void count_scans(j_common_ptr info) {
  if (!info->is_decompressor) return;
  const auto& file = *reinterpret_cast<j_decompress_ptr>(info);
  const auto& progress = *reinterpret_cast<ScanProgress*>(info->progress);
  const std::uint64_t pixels =
      std::uint64_t{file.image_width} * file.image_height * static_cast<unsigned>(file.input_scan_number);
  if (file.input_scan_number > kMaximumScans ||
      (pixels > kUnquestionedScanPixels && pixels / kScanPixelsOfAByte > progress.fileBytes)) {
    std::snprintf(ErrorJump::of(info).text.data(), JMSG_LENGTH_MAX,
                  translated("it has more scans than its size allows"));
    std::longjmp(ErrorJump::of(info).target, 1);
  }
}

struct Decompressor {
  jpeg_decompress_struct info{};
  ErrorJump error;
  ScanProgress progress;

  Decompressor() = default;
  ~Decompressor() { jpeg_destroy_decompress(&info); }
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;

  std::uint32_t bits() const { return info.num_components == 1 ? 8 : 24; }
  bool has_black() const { return info.out_color_space == JCS_CMYK; }
};

/// From this size on the whole is read, and questioned as such.
constexpr std::uint64_t kMostReducedPixels = std::uint64_t{64} << 20;

/// The smallest of the library's quick forms whose sides keep that many pixels; 0: all of them.
void reduce(jpeg_decompress_struct& info, std::uint32_t enough) {
  const std::uint32_t shorter = std::min(info.image_width, info.image_height);
  info.scale_num = info.scale_denom = 1;
  if (enough == 0 || std::uint64_t{info.image_width} * info.image_height > kMostReducedPixels) return;
  while (info.scale_denom < 8 && shorter / (2 * info.scale_denom) >= enough) info.scale_denom *= 2;
}

bool open_file(Decompressor& file, FileBytes bytes, std::uint32_t enough) {
  file.info.err = prepare(file.error);
  if (setjmp(file.error.target)) return false;
  jpeg_create_decompress(&file.info);
  file.progress.manager.progress_monitor = count_scans;
  file.progress.fileBytes = bytes.size();
  file.info.progress = &file.progress.manager;
  jpeg_save_markers(&file.info, JPEG_APP0 + 1, 0xFFFF);
  jpeg_mem_src(&file.info, bytes.data(), static_cast<unsigned long>(bytes.size()));
  jpeg_read_header(&file.info, TRUE);
  reduce(file.info, enough);
  jpeg_calc_output_dimensions(&file.info);
  switch (file.info.num_components) {
    case 1:
      file.info.out_color_space = JCS_GRAYSCALE;
      return true;
    case 3:
      file.info.out_color_space = JCS_EXT_BGR;
      return true;
    case 4:
      file.info.out_color_space = JCS_CMYK;
      return true;
    default:
      return false;
  }
}

/// Ink over paper. Adobe's files store the ink inverted, as the light that is left.
void store_inks(const std::uint8_t* in, std::uint8_t* out, std::size_t width, bool inverted) {
  const std::uint8_t turn = inverted ? 0 : 255;
  for (std::size_t x = 0; x < width; ++x, in += 4, out += 3) {
    const std::uint32_t black = in[3] ^ turn;
    for (std::size_t i = 0; i < 3; ++i)
      out[2 - i] = static_cast<std::uint8_t>(((in[i] ^ turn) * black + 127) / 255);
  }
}

/// `inks` is room for one row with four bytes a pixel where the file has black.
bool decode_rows(Decompressor& file, const EditRows& rows, std::uint8_t* inks) {
  if (setjmp(file.error.target)) return false;
  jpeg_start_decompress(&file.info);
  while (file.info.output_scanline < file.info.output_height) {
    std::uint8_t* out = rows[file.info.output_scanline];
    JSAMPROW line = inks ? inks : out;
    jpeg_read_scanlines(&file.info, &line, 1);
    if (inks) store_inks(inks, out, file.info.output_width, file.info.saw_Adobe_marker);
  }
  return true;  // what stands behind the last row is not looked at
}

struct ExifDeleter {
  void operator()(ExifData* data) const { exif_data_unref(data); }
};

/// EXIF 2.3, tag 0x0112, of a block that begins "Exif"; 1 without one.
int orientation_of_block(FileBytes block) {
  const std::unique_ptr<ExifData, ExifDeleter> data(exif_data_new());
  if (!data) return 1;
  exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_load_data(data.get(), block.data(), static_cast<unsigned>(block.size()));
  const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
  if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) return 1;
  const int value = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
  return value >= 1 && value <= 8 ? value : 1;
}

int orientation_of(const Decompressor& file) {
  constexpr std::array<std::uint8_t, 6> start = {'E', 'x', 'i', 'f', 0, 0};
  for (auto marker = file.info.marker_list; marker; marker = marker->next) {
    const FileBytes block(marker->data, marker->data_length);
    if (block.size() > start.size() && std::ranges::equal(block.first(start.size()), start))
      return orientation_of_block(block);
  }
  return 1;
}

/// Gives the bytes of the library to a file. A failed write shows when the file is committed.
struct Destination {
  jpeg_destination_mgr manager{};
  SafeFile* file = nullptr;
  std::array<std::uint8_t, 65536> buffer;

  static Destination& of(j_compress_ptr info) { return *reinterpret_cast<Destination*>(info->dest); }
  static void begin(j_compress_ptr info) {
    of(info).manager.next_output_byte = of(info).buffer.data();
    of(info).manager.free_in_buffer = of(info).buffer.size();
  }
  static boolean flush(j_compress_ptr info) {
    of(info).file->write(of(info).buffer);
    begin(info);
    return TRUE;
  }
  static void end(j_compress_ptr info) {
    Destination& to = of(info);
    to.file->write(std::span(to.buffer).first(to.buffer.size() - to.manager.free_in_buffer));
  }
};

struct Compressor {
  jpeg_compress_struct info{};
  ErrorJump error;
  Destination destination;

  explicit Compressor(SafeFile& file) {
    destination.file = &file;
    destination.manager.init_destination = Destination::begin;
    destination.manager.empty_output_buffer = Destination::flush;
    destination.manager.term_destination = Destination::end;
  }
  ~Compressor() { jpeg_destroy_compress(&info); }
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
};

/// Mode 2 halves the color planes both ways (4:2:0), 1 across (4:2:2), 0 not at all (4:4:4).
void set_subsampling(jpeg_compress_struct& info, int mode) {
  if (info.num_components != 3) return;
  info.comp_info[0].h_samp_factor = mode >= 1 ? 2 : 1;
  info.comp_info[0].v_samp_factor = mode == 2 ? 2 : 1;
}

bool compress_rows(Compressor& to, const Picture& picture, int quality, int subsampling) {
  to.info.err = prepare(to.error);
  if (setjmp(to.error.target)) return false;
  jpeg_create_compress(&to.info);
  to.info.dest = &to.destination.manager;
  to.info.image_width = picture.width();
  to.info.image_height = picture.height();
  to.info.input_components = picture.bits() == 8 ? 1 : 3;
  to.info.in_color_space = picture.bits() == 8 ? JCS_GRAYSCALE : JCS_EXT_BGR;
  jpeg_set_defaults(&to.info);
  jpeg_set_quality(&to.info, quality, TRUE);
  set_subsampling(to.info, subsampling);
  jpeg_start_compress(&to.info, TRUE);
  while (to.info.next_scanline < to.info.image_height) {
    auto* row = const_cast<JSAMPROW>(picture.row(to.info.next_scanline));
    jpeg_write_scanlines(&to.info, &row, 1);
  }
  jpeg_finish_compress(&to.info);
  return true;
}

bool encode_jpg(const Picture& picture, const GraphicSwitches& switches, SafeFile& file) {
  const Picture plain = has_grey_ramp(picture) ? picture : true_colour_shown(picture);
  if (!plain) return false;
  const auto to = std::make_unique<Compressor>(file);
  return compress_rows(*to, plain, std::clamp(switches.quality.value_or(75), 0, 100),
                       std::clamp(switches.subsampling.value_or(2), 0, 2));
}

}  // namespace

bool is_jpg(FileBytes file) {
  return file.size() >= 3 && file[0] == 0xFF && file[1] == 0xD8 && file[2] == 0xFF;
}

GraphicReading decode_jpg(FileBytes bytes, Part part, const GraphicSwitches& switches) {
  const auto file = std::make_unique<Decompressor>();
  if (!open_file(*file, bytes, part == Part::Whole ? switches.enough : 0))
    return {{}, GraphicFault::Damaged, file->error.text.data()};
  const int orientation = switches.exif_orientation ? orientation_of(*file) : 1;
  const std::uint32_t width = file->info.output_width, height = file->info.output_height;
  const bool turned = part == Part::Header && swaps_sides(orientation);
  const std::uint64_t wanted =
      coefficient_bytes(file->info) + std::uint64_t{picture_stride(width, file->bits())} * height;
  if (const char* fault = part == Part::Whole ? decoding_fault(wanted, bytes.size()) : nullptr)
    return {{}, GraphicFault::TooLarge, fault};
  GraphicReading reading = reading_of_size(turned ? height : width, turned ? width : height, &grey_ramp(),
                                           file->bits(), part, bytes.size());
  if (!reading.picture || part == Part::Header) return reading;
  const EditRows rows(reading.picture);
  std::vector<std::uint8_t> inks(file->has_black() ? 4 * std::size_t{width} : 0);
  const bool whole = decode_rows(*file, rows, inks.empty() ? nullptr : inks.data());
  reading.told = file->error.text.data();
  if (!whole && file->info.output_scanline == 0) return {{}, GraphicFault::Damaged, reading.told};
  if (!whole) reading = cut_reading(std::move(reading), file->info.output_scanline, height);
  if (whole && file->error.row > 0)
    reading.told += translated(", from row ") + std::to_string(file->error.row) + translated(" on");
  reading.picture = oriented(reading.picture, orientation);
  return reading;
}

bool JPGWriteGraphicFile(const std::filesystem::path& path, const GraphicSwitches& switches,
                         const Picture& picture) {
  return write_through(path, picture, [&](SafeFile& file) { return encode_jpg(picture, switches, file); });
}

}  // namespace vellum
