// ChunkRecord: one chunk of a document, whatever its kind.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/chunk_handle.h"
#include "base/copy_on_write.h"
#include "core/model/tags.h"
#include "image/picture.h"

namespace vellum {

struct Document;

/// What an image record of an MNG carries (`ChunkRecord::flags`). A complete image has at least CRF_IHDR and
/// CRF_IDAT.
enum RecordFlag : std::uint32_t {
  CRF_IHDR = 1,
  CRF_PLTE = 2,
  CRF_BKGD = 4,
  CRF_TRNS = 8,
  CRF_FRAM = 32,
  CRF_DEFI = 64,
  CRF_IDAT = 128,
};

/// A FRAM chunk that was folded into an image (MNG 1.0, "FRAM"). Delay, timeout and clip values stay in the
/// byte order of the file; the delay is in ticks of the MHDR.
struct FramBlock {
  std::uint8_t framingMode = 0;
  std::array<char, 1025> subframeName{};  ///< ends in a NUL; a reader fills at most 260 characters
  std::uint8_t changeDelay = 0, changeTimeout = 0, changeClipping = 0, changeSyncId = 0;
  std::uint32_t interframeDelay = 0, timeout = 0;
  std::uint8_t clipType = 0;
  std::uint32_t clipLeft = 0, clipRight = 0, clipTop = 0, clipBottom = 0;
  std::uint8_t syncByte = 0;
  bool operator==(const FramBlock&) const = default;
};

/// The first 28 bytes of a DEFI chunk (MNG 1.0, "DEFI"), in the byte order of the file.
struct DefiBlock {
  std::uint16_t objectId = 0;
  std::uint8_t doNotShow = 0, concreteFlag = 0;
  std::int32_t xLocation = 0, yLocation = 0, clipLeft = 0, clipRight = 0, clipTop = 0, clipBottom = 0;
  bool operator==(const DefiBlock&) const = default;
};

/// fcTL of an animated PNG's frame, in host order.
struct FrameControl {
  std::uint32_t sequence = 0, frameWidth = 0, frameHeight = 0, xOffset = 0, yOffset = 0;
  std::uint16_t delayNum = 0, delayDen = 0;  ///< seconds as a fraction; a denominator of 0 means 100
  std::uint8_t dispose = 0;                  ///< 0 None, 1 Background, 2 Previous
  std::uint8_t blend = 0;                    ///< 0 Source, 1 Over
};

struct WebpHeaderFields {
  std::uint32_t canvasWidth = 0, canvasHeight = 0, loopCount = 0, frameCount = 0;
  std::uint32_t colorType = 0;     ///< 2 without alpha, 6 with
  std::uint32_t bitsPerPixel = 0;  ///< 24 or 32
  std::uint32_t backgroundColor = 0;
};

struct WebpImageFields {
  std::uint32_t width = 0, height = 0, xOffset = 0, yOffset = 0;
  std::uint32_t delay = 0;  ///< milliseconds
  std::uint32_t bitsPerPixel = 0;
  std::uint32_t dispose = 0;  ///< 1 Background, otherwise 0
  std::uint32_t colorType = 0;
};

/// What an image of an MNG brings along: its own palette, transparency and background, and the FRAM and DEFI
/// in force. Read through `record.image->`, written through `record.image.edit()`; all zero in records of
/// other kinds.
struct EmbeddedImage {
  Palette palette{};
  std::uint32_t paletteBytes = 0;  ///< 3 x entries
  std::array<std::uint8_t, 256> trans{};
  std::uint32_t transBytes = 0;
  std::array<std::uint8_t, 6> background{};
  FramBlock framBlock;
  DefiBlock defiBlock;
  std::uint32_t defiBytes = 0;  ///< length of the DEFI folded in; 5 or more: its location fields are there
  bool operator==(const EmbeddedImage&) const = default;
};

/// One layout for all kinds of chunks, copied as a whole by assignment; the groups that a kind does not use
/// stay zero. Copies share the blocks that the handles hold, so a copy costs no pixels.
struct ChunkRecord {
  ChunkTag tag = 0;
  std::int32_t size = 0;  ///< payload bytes as reported; never the length of what is written or copied
  ChunkHandle data;       ///< the payload, with one zero byte behind a raw one; or a Picture; or null
  std::uint32_t listIndex = 0;
  ChunkHandle auxData;

  std::uint32_t width = 0, height = 0;  ///< IHDR, in pixels
  std::uint8_t bitDepth = 0, colorType = 0, compression = 0, filter = 0, interlace = 0;
  std::uint32_t frameWidth = 0, frameHeight = 0, ticksPerSecond = 0, layerCount = 0, frameCount = 0,
                playTime = 0,
                simplicityProfile = 0;  ///< MHDR

  std::uint32_t flags = 0;                    ///< RecordFlag bits of a PNGI
  CopyOnWrite<EmbeddedImage> image;           ///< palette ... defiBytes of a PNGI
  std::uint32_t numFrames = 0, numPlays = 0;  ///< acTL; 0 plays mean for ever
  FrameControl frameControl;

  const Document* owner = nullptr;  ///< which document this record was read from; an identity, never followed
  std::string description;          ///< the text of the entry: UTF-8, at most 260 bytes
  ChunkHandle spareData;
  std::uint32_t reserved = 0;
  WebpHeaderFields webpHeader;
  WebpImageFields webpImage;
};

/// The payload bytes of a record that holds raw ones: `size` of them, or what is there.
std::span<const std::uint8_t> raw_payload(const ChunkRecord& record);

/// Byte i of the payload, 0 behind its end: short payloads of fixed layouts read as zeros.
std::uint8_t payload_byte(const ChunkRecord& record, std::size_t i);
std::uint32_t payload_be32(const ChunkRecord& record, std::size_t offset);

/// Makes these bytes the payload, with `spare` zero bytes behind them. False when memory is exhausted.
bool put_payload(ChunkRecord& record, std::span<const std::uint8_t> bytes, std::size_t spare = 1);

/// The picture that an image record holds; null where it holds none.
inline Picture picture_of(const ChunkRecord& record) { return Picture(record.data); }

}  // namespace vellum
