// A repair that is under way: what its parts share.
#pragma once

#include "core/check/repair_file.h"
#include "core/chunks/chunk_table.h"
#include "image/chunk_stream.h"
#include "image/png_header.h"

namespace vellum {

using Payload = std::vector<std::uint8_t>;

/// A chunk that was found, whole or not.
struct FoundChunk {
  ChunkTag tag = 0;
  std::span<const std::uint8_t> data;
  std::uint64_t offset = 0;
};

/// The chunks of a PNG or MNG behind its signature. Where a length can't be, or a check value is wrong and
/// no chunk follows, the next chunk that is whole is looked for; of the one in between the bytes up to there
/// are taken. Nothing behind `end` is.
std::vector<FoundChunk> find_chunks(std::span<const std::uint8_t> file, ChunkTag end,
                                    std::vector<std::string>& given_up);

/// The data of one image, in one or several pieces, made right.
struct RepairedImage {
  std::vector<std::span<const std::uint8_t>> pieces;  ///< as they were, where nothing is wrong with them
  Payload stream;                                     ///< else packed again
  std::uint64_t rows = 0, rowsThere = 0;              ///< over all passes
  unsigned largestIndex = 0;                          ///< of an indexed image
  bool there() const { return rowsThere > 0; }
  std::span<const std::uint8_t> joined() const { return stream; }
};
RepairedImage repair_image(const PngHeader& header, std::span<const std::span<const std::uint8_t>> pieces,
                           bool indexed);

/// A PNG stream, IHDR to IEND, appended to `out`. `inherited`: entries of the palette that an image of an
/// MNG without one takes over; as many as it needs, behind the call. False, with nothing appended, where no
/// image can be saved.
bool repair_png_stream(std::span<const FoundChunk> chunks, DocumentKind kind, std::uint32_t& inherited,
                       Payload& out, std::vector<std::string>& given_up);

void repair_mng(std::span<const FoundChunk> chunks, RepairedFile& result);
void repair_webp(std::span<const std::uint8_t> file, RepairedFile& result);

/// "tEXt at 57": how a chunk is called.
std::string chunk_name(const FoundChunk& chunk);

}  // namespace vellum
