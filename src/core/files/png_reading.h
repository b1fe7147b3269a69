// What the readers of still and animated PNG files share: the chunks of a file, its header and colors, and
// the making of entries from them.
#pragma once

#include <optional>
#include <set>

#include "base/file.h"
#include "base/host.h"
#include "base/limits.h"
#include "core/files/unchecked_images.h"
#include "core/model/document.h"
#include "core/model/header_record.h"
#include "image/chunk_stream.h"
#include "image/png_header.h"

namespace vellum {

/// A PNG file that is being read.
struct PngReading {
  DocumentWindow& window;
  Host& host;
  const Progress& progress;
  std::span<const StreamChunk> chunks;       ///< IHDR first, IEND last
  std::shared_ptr<const FileContent> owner;  ///< of the bytes of the file; may be null
  UncheckedImages* unchecked = nullptr;      ///< takes the frames of an animation, where it isn't null
  PngHeader header = {};
  Palette palette{};  ///< the color table of pictures
  std::size_t textBudget = kMaximumTextBytesOfFile;

  /// Keeps the place and reason of a failure; always false.
  bool fail(const StreamChunk& chunk, const char* reason, FaultKind kind = FaultKind::Damaged) const;
  /// Adds an entry; false when the list is full.
  bool append(const ChunkRecord& record, const StreamChunk& chunk) const;
};

/// Whether the images of a file are only checked when it is read, and unpacked when somebody looks at them:
/// many whose pictures take `bytes` together, so that memory for all of them is not even touched.
constexpr bool stay_packed(std::size_t images, std::uint64_t bytes) {
  constexpr std::uint64_t kWorthUnpacking = std::uint64_t{24} << 20;
  return images > 1 && bytes > kWorthUnpacking;
}

/// Adds the entry of a chunk that holds no image: raw bytes, a zTXt inflated, IHDR, acTL and IEND in their
/// fields. False with the failure kept.
bool append_plain_chunk(PngReading& reading, const StreamChunk& chunk);

/// The warning about a wrong CRC, tied to its option.
void warn_of_crc(Host& host, const StreamChunk& chunk);

/// All chunks behind the signature, up to and with the one tagged `end`. False, with the failure kept, when
/// the signature is another or the file ends before.
bool gather_file(std::span<const std::uint8_t> file, const std::array<std::uint8_t, 8>& signature,
                 ChunkTag end, GatheredChunks& gathered, Host& host);

/// Tells which chunks inside images were not kept.
void tell_dropped(const Host& host, const std::set<ChunkTag>& tags);

/// The chunks of an animated PNG, read as such. Called by read_png.
bool read_apng(PngReading& reading);

}  // namespace vellum
