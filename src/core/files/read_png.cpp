#include "core/files/read_png.h"

#include <algorithm>
#include <utility>

#include "base/byte_order.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/chunks/compressed_text.h"
#include "core/files/png_reading.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "image/png_bands.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

/// Every chunk's CRC is checked, of the IDAT run the first one's only.
void check_crcs(const PngReading& reading) {
  std::vector<const StreamChunk*> checked;
  checked.reserve(reading.chunks.size());
  bool image_seen = false;
  for (const StreamChunk& chunk : reading.chunks)
    if (chunk.tag != tag::IDAT || !std::exchange(image_seen, true)) checked.push_back(&chunk);
  static constexpr std::uint32_t kEnds[] = {tag::IEND};
  for (const StreamChunk* wrong : wrong_crcs(checked, kEnds)) warn_of_crc(reading.host, *wrong);
}

bool check_palette(PngReading& reading) {
  bool seen = false;
  for (const StreamChunk& chunk : reading.chunks) {
    if (chunk.tag == tag::IDAT && reading.header.colorType == 3 && !seen)
      return reading.fail(chunk, translated("the image has no palette in front of it"));
    if (chunk.tag != tag::PLTE) continue;
    if (chunk.data.size() > 768 || chunk.data.size() % 3 != 0)
      return reading.fail(chunk, translated("the length is not that of a palette"));
    if (std::exchange(seen, true)) return reading.fail(chunk, translated("there is a second palette"));
    if (reading.header.colorType == 3) std::ranges::copy(chunk.data, reading.palette.begin());
  }
  return true;
}

bool check_header(PngReading& reading) {
  const StreamChunk& first = reading.chunks.front();
  if (first.tag != tag::IHDR) return reading.fail(first, translated("the first chunk is no header"));
  if (first.data.size() != 13) return reading.fail(first, translated("the length is not that of a header"));
  reading.header = parse_png_header(first.data.first<13>());
  if (const char* fault = png_header_fault(reading.header)) return reading.fail(first, fault);
  if (reading.header.colorType == 0) reading.palette = png_grey_palette(reading.header.bitDepth);
  for (const StreamChunk& chunk : reading.chunks.subspan(1))
    if (chunk.tag == tag::IHDR) return reading.fail(chunk, translated("there is a second header"));
  return true;
}

/// The animation counts only where its header stands in front of the image.
bool is_animated(std::span<const StreamChunk> chunks) {
  for (const StreamChunk& chunk : chunks) {
    if (chunk.tag == tag::IDAT) return false;
    if (chunk.tag == tag::acTL) return true;
  }
  return false;
}

/// A large image may be left for who unpacks it while it is changed.
bool leaves_unchecked(const PngReading& reading) {
  return reading.unchecked && png_goes_in_bands(reading.header);
}

bool append_still_image(PngReading& reading, const StreamChunk& first) {
  std::vector<std::span<const std::uint8_t>> data;
  for (const StreamChunk& chunk : reading.chunks)
    if (chunk.tag == tag::IDAT) data.push_back(chunk.data);
  const bool later = leaves_unchecked(reading);
  const PngDecoded decoded = later ? png_expect(reading.header, data, reading.palette)
                                   : png_decode(reading.header, data, reading.palette);
  if (!decoded.picture)
    return reading.fail(first, decoded.reason, decoded.limit ? FaultKind::Limit : FaultKind::Damaged);
  ChunkRecord record;
  record.tag = tag::IDAT;
  record.size = static_cast<std::int32_t>(first.data.size());
  record.data = kept_with_stream(decoded, reading.header, std::move(data), reading.owner, nullptr,
                                 later ? StreamSeen::NotYet : StreamSeen::Yes);
  if (later) reading.unchecked->streams.push_back(stored_image_of(record.data));
  put_png_header(record, reading.header);
  return reading.append(record, first);
}

bool read_still(PngReading& reading) {
  reading.window.document.kind = DocumentKind::PING;
  bool image_seen = false;
  for (const StreamChunk& chunk : reading.chunks) {
    if (chunk.tag != tag::IDAT) {
      if (!append_plain_chunk(reading, chunk)) return false;
    } else if (!std::exchange(image_seen, true)) {
      if (!append_still_image(reading, chunk)) return false;
    }
  }
  return true;
}

bool check_animation_control(const PngReading& reading) {
  for (const StreamChunk& chunk : reading.chunks)
    if (chunk.tag == tag::acTL && chunk.data.size() != 8)
      return reading.fail(chunk, translated("the length is not that of an animation control"));
  return true;
}

bool read_gathered(PngReading& reading) {
  if (!check_header(reading)) return false;
  check_crcs(reading);
  if (!check_palette(reading)) return false;
  if (is_animated(reading.chunks) && settings::APNGOpen != 0)
    return check_animation_control(reading) && read_apng(reading);
  return read_still(reading);
}

}  // namespace

bool PngReading::fail(const StreamChunk& chunk, const char* reason, FaultKind kind) const {
  return host.fail({kind, chunk.tag, static_cast<std::int64_t>(window.list.size()),
                    static_cast<std::int64_t>(chunk.offset), reason});
}

bool PngReading::append(const ChunkRecord& record, const StreamChunk& chunk) const {
  return chunk_list_append(window.list, window.document, record) != 0 ||
         fail(chunk, translated("the file has too many chunks"), FaultKind::Limit);
}

void warn_of_crc(Host& host, const StreamChunk& chunk) {
  host.warn(StringId::WrongCrc, settings::WarnBadFileCRC,
            describe_fault({FaultKind::Damaged, chunk.tag, -1, static_cast<std::int64_t>(chunk.offset), {}}));
}

bool append_plain_chunk(PngReading& reading, const StreamChunk& chunk) {
  ChunkRecord record;
  record.tag = chunk.tag;
  record.size = static_cast<std::int32_t>(chunk.data.size());
  const auto keyword = chunk.tag == tag::zTXt ? inflatable_keyword(chunk.data) : std::nullopt;
  if (chunk.tag == tag::IHDR) {
    put_png_header(record, reading.header);
  } else if (chunk.tag == tag::IEND) {
    record.size = 0;
  } else if (chunk.tag == tag::acTL && chunk.data.size() >= 8) {
    record.numFrames = read_be32(&chunk.data[0]);
    record.numPlays = read_be32(&chunk.data[4]);
    record.size = 8;
  } else if (keyword) {
    TextFault fault;
    record.data = inflate_text_chunk(chunk.data, *keyword, reading.textBudget, fault);
    if (!record.data) return reading.fail(chunk, fault.reason, fault.kind);
  } else {
    record.data = ChunkHandle::copy_of(chunk.data);
  }
  return reading.append(record, chunk);
}

void tell_dropped(const Host& host, const std::set<ChunkTag>& tags) {
  std::string names;
  for (const ChunkTag tag : tags) names += (names.empty() ? "" : ", ") + tag_letters(tag);
  if (!names.empty()) host.add_note(with_value(string_text(StringId::InsideImagesNotKept), names));
}

bool gather_file(std::span<const std::uint8_t> file, const std::array<std::uint8_t, 8>& signature,
                 ChunkTag end, GatheredChunks& gathered, Host& host) {
  if (file.size() < signature.size() || !std::ranges::equal(file.first(signature.size()), signature))
    return host.fail({FaultKind::Damaged, 0, -1, 0, translated("the signature of the format is missing")});
  gathered = gather_chunks(file, signature.size(), end);
  return gathered.complete ||
         host.fail({FaultKind::Damaged, 0, static_cast<std::int64_t>(gathered.chunks.size()),
                    static_cast<std::int64_t>(gathered.end),
                    translated("the file ends inside a chunk or without its end chunk")});
}

bool read_png_unchecked(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
                        std::shared_ptr<const FileContent> owner, UncheckedImages* unchecked) {
  GatheredChunks gathered;
  if (!gather_file(file, kPngSignature, tag::IEND, gathered, host)) return false;
  const QuietList quiet(window.list);
  const Progress progress(host, string_text(StringId::Loading));
  PngReading reading{window, host, progress, gathered.chunks, std::move(owner), unchecked};
  if (!read_gathered(reading)) return false;
  chunk_list_close_change(window.list, window.document);
  if (gathered.end < file.size()) host.add_note(string_text(StringId::BytesBehindEnd));
  return true;
}

bool read_png(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
              std::shared_ptr<const FileContent> owner) {
  return read_png_unchecked(window, file, host, std::move(owner), nullptr);
}

}  // namespace vellum
