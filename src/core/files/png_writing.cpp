#include "core/files/png_writing.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/translation.h"
#include "core/files/png_reading.h"
#include "core/model/chunk_description.h"
#include "image/png_encode.h"

namespace vellum {
namespace {

/// A key stands in the samples of the stream, and may be another by now.
KeptStream stream_without_key(const PngHeader& header, const Picture& picture, const SaveOptions& options,
                              const std::optional<std::array<std::uint16_t, 3>>& key) {
  return key ? nullptr : usable_stream(header, picture.handle(), options);
}

}  // namespace

bool begin_png(const Sink& sink, const PngHeader& header) {
  return sink.write(kPngSignature) && write_chunk(sink, tag::IHDR, png_header_payload(header));
}

bool write_chunks(const Sink& sink, std::span<const ChunkOut> chunks) {
  return std::ranges::all_of(
      chunks, [&](const ChunkOut& chunk) { return write_chunk(sink, chunk.tag, chunk.payload); });
}

std::string write_fault(const Sink& sink) {
  const std::string reason = sink.reason();
  return reason.empty() ? translated("the file that the images come from was changed by another program")
                        : reason;
}

KeptStream new_stream(const PngHeader& header, const Picture& picture, ChunkHandle bytes) {
  if (!bytes) return nullptr;
  Palette table;
  PictureGetPalette(picture, table);
  const auto owner = std::make_shared<const FileContent>(std::move(bytes));
  return std::make_shared<const StoredImage>(header, table, std::vector{StoredImage::Bytes(*owner)}, owner,
                                             StoredImage::Finding{nullptr, false, true});
}

KeptStream new_stream(const PngHeader& header, const Picture& picture, std::span<const std::uint8_t> bytes) {
  return new_stream(header, picture, bytes.empty() ? ChunkHandle() : ChunkHandle::copy_of(bytes, 0));
}

KeptStream usable_stream(const PngHeader& header, const ChunkHandle& block, const SaveOptions& options) {
  const KeptStream stored = stored_image_of(block);
  const bool usable =
      options.keepStored && stored && stored->exact() && stored->header() == header && stored->intact();
  return usable ? stored : nullptr;
}

KeptStream image_stream(const PngHeader& header, const Picture& picture, const SaveOptions& options,
                        std::optional<std::array<std::uint16_t, 3>> key) {
  if (KeptStream stored = stream_without_key(header, picture, options, key)) return stored;
  if (options.encode) return new_stream(header, picture, options.encode(header, picture, key));
  return new_stream(header, picture, png_encode_block(header, picture, options.compression, key));
}

std::optional<ImageData> image_data(const PngHeader& header, const Picture& picture,
                                    const SaveOptions& options,
                                    std::optional<std::array<std::uint16_t, 3>> key) {
  const bool as_they_are = options.compression == 0 && !options.encode;
  ImageData data{header, picture, key,
                 as_they_are ? stream_without_key(header, picture, options, key)
                             : image_stream(header, picture, options, key)};
  if (!data.stream && !as_they_are) return std::nullopt;
  return data;
}

bool write_image_data(const Sink& sink, const StoredImage& stream) {
  constexpr std::size_t kLongest = 0x40000000;  // well inside the 31 bits of a length
  for (auto left : stream.pieces()) {
    do {
      const auto piece = left.first(std::min(left.size(), kLongest));
      if (!write_chunk(sink, tag::IDAT, piece)) return false;
      left = left.subspan(piece.size());
    } while (!left.empty());
  }
  return stream.intact();
}

bool write_image_data(const Sink& sink, const ImageData& data) {
  if (data.stream) return write_image_data(sink, *data.stream);
  return png_write_stored(
      data.header, data.picture,
      [&](std::span<const std::uint8_t> piece) { return write_chunk(sink, tag::IDAT, piece); }, data.key);
}

void keep_stream(ChunkList& list, std::size_t entry, const KeptStream& stream) {
  ChunkRecord record;
  if (!chunk_list_get(list, entry, record) || record.data.source() == stream) return;
  record.data = kept_picture(picture_of(record), stream);
  chunk_list_put(list, entry, record);
}

void take_over_written(DocumentWindow& window, std::span<const ChunkOut> chunks) {
  ChunkRecord record;
  for (const ChunkOut& chunk : chunks) {
    if (chunk.tag != tag::tIME || !chunk_list_get(window.list, chunk.entry, record)) continue;
    put_payload(record, chunk.payload);
    record.description = chunk_description(record);
    chunk_list_put(window.list, chunk.entry, record);
  }
}

void take_over_header(DocumentWindow& window, std::size_t header_entry, const PngHeader& written) {
  ChunkRecord record;
  if (!chunk_list_get(window.list, header_entry, record) || png_header_of(record) == written) return;
  put_png_header(record, written);
  record.description = chunk_description(record);
  chunk_list_put(window.list, header_entry, record);
}

void tell_notes(const Host& host, const std::vector<std::string>& notes) {
  for (const std::string& note : notes) host.add_note(note);
}

std::optional<std::array<std::uint16_t, 3>> deep_transparency_key(const ChunkList& list,
                                                                  const PngHeader& header) {
  const std::size_t at = chunk_find_first(list, tag::tRNS);
  if (at == kNoEntry || header.bitDepth != 16) return std::nullopt;
  const auto payload = raw_payload(list.record(at));
  const std::size_t samples = header.colorType == 0 ? 1 : header.colorType == 2 ? 3 : 0;
  if (samples == 0 || payload.size() != 2 * samples) return std::nullopt;
  std::array<std::uint16_t, 3> key{};
  for (std::size_t i = 0; i < samples; ++i) key[i] = read_be16(&payload[2 * i]);
  return key;
}

}  // namespace vellum
