// A check that is under way: what its parts share. Each part looks at one layer of the file.
#pragma once

#include <array>

#include "core/check/check_file.h"
#include "core/chunks/chunk_table.h"
#include "image/chunk_stream.h"
#include "image/png_header.h"

namespace vellum {

/// Takes findings; of one rule at most a hundred, since a file may be wrong a million times.
class Checking {
 public:
  void find(RuleId rule, std::string detail = {}) { add({rule, 0, 0, 0, std::move(detail)}); }
  void find(RuleId rule, const StreamChunk& chunk, std::string detail = {}) {
    add({rule, chunk.tag, number_of(chunk), chunk.offset, std::move(detail)});
  }
  void add(Finding finding);
  /// The findings in the order of the file.
  FileCheck take();

  DocumentKind kind = DocumentKind::None;
  /// All chunks of the file. Findings about one of them tell its number.
  std::vector<StreamChunk> chunks;

 private:
  std::uint32_t number_of(const StreamChunk& chunk) const;

  std::vector<Finding> findings_;
  std::array<std::uint32_t, 256> times_{};
  std::uint64_t leftOut_ = 0;
};

using ChunkSpan = std::span<const StreamChunk>;

/// Chunk frames of a PNG or MNG: types, lengths, check values, the end and what stands behind it. Fills
/// `checking.chunks`.
void check_frames(Checking& checking, std::span<const std::uint8_t> file, ChunkTag end);

/// A PNG stream, IHDR to IEND: order, number, contents, image data. `inherited`: entries of the palette that
/// an image of an MNG without one takes over; 0 where there is none.
void check_png_image(Checking& checking, ChunkSpan chunks, std::uint32_t inherited = 0);

/// Whether payload and type agree (see core/chunks/chunk_table.h), compressed contents included.
void check_payload(Checking& checking, const StreamChunk& chunk, const PngContext& context);

/// Whose row of the chunk table judges a chunk of a file of this kind: in an MNG chunks of PNG stand too.
DocumentKind judging_kind(DocumentKind file, ChunkTag tag);
/// What stands outside the images of an MNG is written as for an image of these samples (MNG 1.0, "bKGD").
inline constexpr PngContext kOutsideImages{.bitDepth = 16, .colorType = 2, .paletteEntries = 0};

/// Whether the compressed text or profile of a payload that is valid else can be unpacked; true where there
/// is none.
bool packed_is_whole(ChunkTag tag, std::span<const std::uint8_t> payload);

/// The rows of an image. `data` together are one zlib stream; findings are told of `at`. `palette`: entries,
/// 0 where indexes are not looked at.
void check_image_data(Checking& checking, const StreamChunk& at, const PngHeader& header,
                      std::span<const std::span<const std::uint8_t>> data, std::uint32_t palette);

/// What an animated PNG has beside its first image.
void check_frames_of_apng(Checking& checking, ChunkSpan chunks, const PngHeader& header,
                          std::uint32_t palette);

void check_mng(Checking& checking, std::span<const std::uint8_t> file);
void check_webp(Checking& checking, std::span<const std::uint8_t> file);

}  // namespace vellum
