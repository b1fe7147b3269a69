#include "core/model/frame_values.h"

#include <algorithm>

#include "core/model/framing.h"
#include "core/model/loops.h"
#include "core/model/playing_rules.h"
#include "core/settings.h"

namespace vellum {
namespace {

constexpr Colour kColourMask = 0xFFFFFF;

/// The low bytes of three 16-bit samples.
/// Which byte of a 16-bit sample tells the level of a color: the high one where samples have 16 bits.
std::size_t level_byte(unsigned bit_depth) { return bit_depth == 16 ? 0 : 1; }

Colour three_samples(const ChunkRecord& record, unsigned bit_depth) {
  const std::size_t at = level_byte(bit_depth);
  return make_colour(payload_byte(record, at), payload_byte(record, at + 2), payload_byte(record, at + 4));
}

Colour grey_sample(const ChunkRecord& record, unsigned bit_depth) {
  const unsigned most = bit_depth < 8 ? (1u << bit_depth) - 1 : 255;
  const unsigned sample = std::min<unsigned>(payload_byte(record, level_byte(bit_depth)), most);
  const unsigned level = sample * 255 / std::max(most, 1u);
  return make_colour(level, level, level);
}

std::optional<Colour> background_of_png(const ChunkList& list) {
  const std::size_t header = chunk_find_first(list, tag::IHDR);
  const std::size_t at = chunk_find_first(list, tag::bKGD, nullptr, 1);
  if (header == kNoEntry || at == kNoEntry) return std::nullopt;
  const std::uint8_t type = list.record(header).colorType, depth = list.record(header).bitDepth;
  if (type == 2 || type == 6) return three_samples(list.record(at), depth);
  if (type == 0 || type == 4) return grey_sample(list.record(at), depth);
  return std::nullopt;
}

std::optional<Colour> background_of_mng(const ChunkList& list) {
  const std::size_t at = chunk_find_first(list, tag::BACK, nullptr, 1);
  if (at == kNoEntry) return std::nullopt;
  return three_samples(list.record(at), 16);
}

std::optional<Colour> background_of_webp(const ChunkList& list) {
  const std::size_t at = chunk_find_first(list, tag::WEBH);
  if (at == kNoEntry) return std::nullopt;
  return list.record(at).webpHeader.backgroundColor & kColourMask;
}

std::optional<Colour> stated_background(const ChunkList& list, DocumentKind kind) {
  if (kind == DocumentKind::MING) return background_of_mng(list);
  if (kind == DocumentKind::WEBP) return background_of_webp(list);
  return background_of_png(list);
}

std::uint32_t whole_milliseconds(std::uint64_t amount, std::uint64_t per_second) {
  const std::uint64_t result = (amount * 1000 + per_second - 1) / per_second;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(result, 0xFFFFFFFF));
}

PngHeader header_of(const ChunkRecord& record) {
  return {record.width, record.height, record.bitDepth, record.colorType};
}

/// A denominator of 0 means hundredths (APNG extension, fcTL).
std::uint32_t delay_of_fraction(std::uint32_t numerator, const FrameControl& control) {
  return whole_milliseconds(numerator, control.delayDen == 0 ? 100 : control.delayDen);
}

/// The FRAM of an image; one that changes nothing where it had none.
FramBlock& framing_of(ChunkRecord& record) {
  FramBlock& block = record.image.edit().framBlock;
  if (!(record.flags & CRF_FRAM)) block.framingMode = 1;
  record.flags |= CRF_FRAM;
  return block;
}

constexpr std::uint32_t kLongestWebpDelay = 0xFFFFFF;  // WebP container, "ANMF"

std::uint32_t plays_of_count(std::uint32_t count) { return count >= kLoopForEver ? 0 : count; }

/// MNG 1.0, "LOOP": nesting level, count.
std::uint32_t plays_of_mng(const ChunkList& list) {
  const std::size_t image = chunk_find_first(list, tag::PNGI), loop = chunk_find_first(list, tag::LOOP);
  return loop < image ? plays_of_count(payload_be32(list.record(loop), 1)) : term_plays(list);
}

}  // namespace

std::uint32_t frame_delay_ms(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks) {
  if (kind == DocumentKind::WEBP) return record.webpImage.delay;
  if (kind == DocumentKind::APNG) return delay_of_fraction(record.frameControl.delayNum, record.frameControl);
  if (kind != DocumentKind::MING) return 0;
  const std::uint64_t delay = delay_ticks(record);
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(delay * 1000 / std::max(ticks, 1u), 0xFFFFFFFF));
}

std::uint32_t GetFrameDelay(const ChunkRecord& record, DocumentKind kind, std::uint32_t ticks) {
  if (kind != DocumentKind::APNG) return frame_delay_ms(record, kind, ticks);
  if (!is_image_entry(kind, record.tag)) return 1;
  return delay_of_fraction(std::max<std::uint32_t>(record.frameControl.delayNum, 1), record.frameControl);
}

std::uint32_t GetFrameDispose(const ChunkRecord& record, DocumentKind kind) {
  if (kind == DocumentKind::WEBP) return record.webpImage.dispose;
  if (kind == DocumentKind::APNG) return record.tag == tag::IDAT ? record.frameControl.dispose : 0;
  return kind == DocumentKind::MING && clears_canvas(record) ? 1 : 0;
}

std::uint32_t ticks_per_second(const ChunkList& list) {
  const std::size_t at = chunk_find_first(list, tag::MHDR);
  return at == kNoEntry ? 1000 : std::max(list.record(at).ticksPerSecond, 1u);
}

void set_frame_delay(ChunkRecord& record, DocumentKind kind, std::uint32_t ticks,
                     std::uint32_t milliseconds) {
  if (kind == DocumentKind::WEBP) record.webpImage.delay = std::min(milliseconds, kLongestWebpDelay);
  if (kind == DocumentKind::APNG) {
    std::uint32_t per = 1000;  // the longest delays lose their last digits
    for (; milliseconds > 0xFFFF && per > 1; per /= 10) milliseconds /= 10;
    record.frameControl.delayNum = static_cast<std::uint16_t>(std::min(milliseconds, 0xFFFFu));
    record.frameControl.delayDen = static_cast<std::uint16_t>(per);
  }
  if (kind != DocumentKind::MING) return;
  const std::uint64_t amount = (std::uint64_t{milliseconds} * ticks + 500) / 1000;
  set_frame_ticks(record, static_cast<std::uint32_t>(
                              std::clamp<std::uint64_t>(amount, milliseconds > 0 ? 1 : 0, kLoopForEver)));
}

void set_frame_ticks(ChunkRecord& record, std::uint32_t amount) {
  FramBlock& block = framing_of(record);
  // Under mode 0 no delay is written (MNG 1.0, "FRAM").
  if (block.framingMode == 0) block.framingMode = 1;
  block.changeDelay = std::max<std::uint8_t>(block.changeDelay, 1);
  block.interframeDelay = to_file_order(amount);
}

void set_frame_dispose(ChunkRecord& record, DocumentKind kind, std::uint32_t dispose) {
  if (kind == DocumentKind::APNG) record.frameControl.dispose = static_cast<std::uint8_t>(dispose);
  if (kind == DocumentKind::WEBP) record.webpImage.dispose = dispose == 1;
  if (kind != DocumentKind::MING || clears_canvas(record) == (dispose == 1)) return;
  std::uint8_t& mode = framing_of(record).framingMode;
  const bool together = mode == 2 || mode == 4;
  mode = static_cast<std::uint8_t>((dispose == 1 ? 3 : 1) + (together ? 1 : 0));
}

void SetFrameOffset(ChunkRecord& record, DocumentKind kind, FrameOffset offset) {
  const auto held = [](std::int32_t value) { return static_cast<std::uint32_t>(std::max(value, 0)); };
  if (kind == DocumentKind::APNG) {
    record.frameControl.xOffset = held(offset.x);
    record.frameControl.yOffset = held(offset.y);
  } else if (kind == DocumentKind::WEBP) {
    record.webpImage.xOffset = held(offset.x);
    record.webpImage.yOffset = held(offset.y);
  } else if (kind == DocumentKind::MING && ((record.flags & CRF_DEFI) || offset.x != 0 || offset.y != 0)) {
    EmbeddedImage& image = record.image.edit();
    if (!(record.flags & CRF_DEFI)) image.defiBlock.concreteFlag = 1;
    record.flags |= CRF_DEFI;
    image.defiBytes = std::max(image.defiBytes, 12u);
    image.defiBlock.xLocation = from_file_order(offset.x);
    image.defiBlock.yLocation = from_file_order(offset.y);
  }
}

std::vector<std::uint8_t> transparency_table(std::span<const std::uint8_t> payload, const PngHeader& header) {
  if (header.colorType == 3) return {payload.begin(), payload.end()};
  const auto level = [&](std::size_t i) {
    return header.bitDepth == 16 ? payload[2 * i] : payload[2 * i + 1];
  };
  if (header.colorType == 0 && payload.size() == 2) {
    std::vector<std::uint8_t> table(std::size_t{level(0)} + 1, 255);
    table.back() = 0;
    return table;
  }
  if (header.colorType == 2 && payload.size() == 6) return {0, level(0), 0, level(1), 0, level(2)};
  return {};
}

std::vector<std::uint8_t> document_transparency(const ChunkList& list) {
  const std::size_t at = chunk_find_first(list, tag::tRNS, nullptr, 1);
  const std::size_t header = chunk_find_first(list, tag::IHDR);
  if (at == kNoEntry || header == kNoEntry) return {};
  return transparency_table(raw_payload(list.record(at)), header_of(list.record(header)));
}

std::vector<std::uint8_t> image_transparency(const ChunkRecord& record) {
  const std::span<const std::uint8_t> trans = record.image->trans;
  return transparency_table(trans.first(std::min<std::size_t>(record.image->transBytes, trans.size())),
                            header_of(record));
}

std::uint32_t term_plays(const ChunkList& list) {
  const std::size_t end = chunk_find_first(list, tag::TERM);
  if (end == kNoEntry || payload_byte(list.record(end), 0) != 3) return 1;
  return plays_of_count(std::min(payload_be32(list.record(end), 6), kLoopForEver - 1) + 1);
}

std::uint32_t GetIterations(const ChunkList& list, const Document& document) {
  if (document.kind == DocumentKind::MING) return plays_of_mng(list);
  ChunkRecord header;
  const bool webp = document.kind == DocumentKind::WEBP;
  if (chunk_find_first(list, webp ? tag::WEBH : tag::acTL, &header) == kNoEntry) return 1;
  return webp ? header.webpHeader.loopCount : header.numPlays;
}

FrameOffset GetFrameOffset(const ChunkRecord& record, DocumentKind kind) {
  if (kind == DocumentKind::APNG)
    return {static_cast<std::int32_t>(record.frameControl.xOffset),
            static_cast<std::int32_t>(record.frameControl.yOffset)};
  if (kind == DocumentKind::WEBP)
    return {static_cast<std::int32_t>(record.webpImage.xOffset),
            static_cast<std::int32_t>(record.webpImage.yOffset)};
  if (kind != DocumentKind::MING || !(record.flags & CRF_DEFI) || record.image->defiBytes < 5) return {};
  return {from_file_order(record.image->defiBlock.xLocation),
          from_file_order(record.image->defiBlock.yLocation)};
}

Colour document_background(const ChunkList& list, const Document& document) {
  return stated_background(list, document.kind)
      .value_or(static_cast<Colour>(settings::DefaultBackgroundColour) & kColourMask);
}

}  // namespace vellum
