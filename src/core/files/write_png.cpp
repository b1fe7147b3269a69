#include "core/files/write_png.h"

#include <algorithm>

#include "base/translation.h"
#include "core/files/png_reading.h"
#include "core/files/png_writing.h"
#include "image/png_form.h"

namespace vellum {
namespace {

/// Where the parts of a PNG file follow each other (PNG standard, "Chunk ordering").
enum Zone { kBeforePalette, kPalette, kBehindPalette, kImage, kBehindImage };

/// The zone in which an entry stands in the list, moved into the nearest one that its tag may stand in.
Zone legal_zone(ChunkTag tag, Zone natural, bool has_palette) {
  switch (place_of(tag, DocumentKind::PING)) {
    case ChunkPlace::AtPalette:
      return kPalette;
    case ChunkPlace::BeforePalette:
      return has_palette ? kBeforePalette : std::min(natural, kBehindPalette);
    case ChunkPlace::BehindPalette:
      return has_palette ? kBehindPalette : std::min(natural, kBehindPalette);
    case ChunkPlace::BeforeImage:
      return std::min(natural, kBehindPalette);
    default:
      return natural;
  }
}

/// The chunks in the order of the file, the first `image` of the result in front of the image data.
struct OrderedChunks {
  std::vector<ChunkOut> chunks;
  std::size_t beforeImage = 0;
};

OrderedChunks in_order(std::vector<ChunkOut> chunks, std::size_t image_entry, std::size_t palette_entry) {
  const bool has_palette = std::ranges::find(chunks, tag::PLTE, &ChunkOut::tag) != chunks.end();
  const auto zone = [&](const ChunkOut& chunk) {
    const Zone natural = chunk.entry > image_entry                                    ? kBehindImage
                         : palette_entry < image_entry && chunk.entry > palette_entry ? kBehindPalette
                                                                                      : kBeforePalette;
    return legal_zone(chunk.tag, natural, has_palette);
  };
  std::ranges::stable_sort(chunks, {}, zone);
  OrderedChunks ordered;
  ordered.beforeImage = static_cast<std::size_t>(
      std::ranges::count_if(chunks, [&](const ChunkOut& c) { return zone(c) < kImage; }));
  ordered.chunks = std::move(chunks);
  return ordered;
}

/// The PLTE that goes out: the entry's, filled up from the picture's own colors as far as its pixels reach;
/// none for grey.
std::vector<std::uint8_t> palette_out(const ChunkList& list, std::size_t entry, const PngForm& form) {
  if (entry == kNoEntry || form.header.colorType == 0 || form.header.colorType == 4) return {};
  const auto raw = raw_payload(list.record(entry));
  std::vector<std::uint8_t> palette(raw.begin(), raw.end());
  if (form.header.colorType != 3) return palette;
  Palette own;
  PictureGetPalette(form.picture, own);
  for (std::size_t used = 3 * (std::size_t{largest_index(form.picture)} + 1); palette.size() < used;)
    palette.push_back(own[palette.size()]);
  return palette;
}

bool write_file(const Sink& sink, const ImageData& data, const OrderedChunks& ordered, Host& host) {
  const std::span<const ChunkOut> chunks = ordered.chunks;
  const bool written =
      begin_png(sink, data.header) && write_chunks(sink, chunks.first(ordered.beforeImage)) &&
      write_image_data(sink, data) && write_chunks(sink, chunks.subspan(ordered.beforeImage)) &&
      write_chunk(sink, tag::IEND, {}) && sink.finish();
  return written || host.fail({FaultKind::Limit, 0, -1, -1, write_fault(sink)});
}

}  // namespace

WriteResult write_png(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host) {
  const auto refuse = [&](StringId message) {
    host.show(message, StringId::ErrorWritingFile);
    return WriteResult::Refused;
  };
  const auto fail = [&](const char* reason) {
    host.fail({FaultKind::Misuse, 0, -1, -1, reason});
    return WriteResult::Failed;
  };
  ChunkRecord header_record;
  const std::size_t header_entry = chunk_find_header(window.list, window.document, 0, header_record);
  if (header_entry == kNoEntry) return fail(translated("the document has no header"));
  ChunkRecord image_record;
  const std::size_t image_entry = chunk_find_image(window.list, window.document, image_record, 0);
  const Picture picture = picture_of(image_record);
  if (image_entry == kNoEntry || !picture) return refuse(StringId::NoImageInPng);
  const std::size_t palette_entry = chunk_find_first(window.list, tag::PLTE);
  const PngHeader wanted = png_header_of(header_record);
  if (wanted.colorType == 3 && palette_entry == kNoEntry) return refuse(StringId::NoPaletteInPng);

  const Progress progress(host, string_text(StringId::Writing));
  Palette palette;
  const PngForm form = png_form(picture, wanted, chunk_find_palette(window.list, palette));
  if (!form.picture) return fail(translated("memory is exhausted"));
  const auto data =
      image_data(form.header, form.picture, options, deep_transparency_key(window.list, wanted));
  if (!data) return fail(translated("the image can't be compressed"));
  progress.step(image_entry, window.list.size());

  std::vector<std::string> notes;
  ChunksOutRequest request;
  request.written = form.header;
  request.from = wanted;
  request.palette = palette_out(window.list, palette_entry, form);
  const auto colors = palette_entry == kNoEntry ? std::span<const std::uint8_t>()
                                                : raw_payload(window.list.record(palette_entry));
  request.fromPalette.assign(colors.begin(), colors.end());
  request.level = options.compression;
  request.keepStored = options.keepStored;
  request.updateTime = options.updateTime;
  const OrderedChunks ordered = in_order(chunks_out(window.list, request, notes), image_entry, palette_entry);
  if (!write_file(sink, *data, ordered, host)) return WriteResult::Failed;
  if (options.keepStreams && data->stream) keep_stream(window.list, image_entry, data->stream);
  take_over_written(window, ordered.chunks);
  take_over_header(window, header_entry, form.header);
  tell_notes(host, notes);
  return WriteResult::Done;
}

}  // namespace vellum
