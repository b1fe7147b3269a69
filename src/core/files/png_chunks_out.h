// Which chunks of a list go into a PNG file, with which payload and in which order, so that the file is valid
// for the header that is written.
#pragma once

#include <string>
#include <vector>

#include "core/chunks/chunk_table.h"
#include "core/model/document.h"
#include "image/png_header.h"

namespace vellum {

/// A chunk that is ready to be written.
struct ChunkOut {
  ChunkTag tag = 0;
  std::vector<std::uint8_t> payload;
  std::size_t entry = kNoEntry;  ///< the entry it comes from
};

/// What the chunks of a list are made to fit.
struct ChunksOutRequest {
  DocumentKind kind = DocumentKind::PING;
  PngHeader written;                      ///< the header of the file
  PngHeader from;                         ///< the header that the entries were made for
  std::vector<std::uint8_t> palette;      ///< the PLTE of the file, red, green, blue; empty: none is written
  std::vector<std::uint8_t> fromPalette;  ///< the one that indexes of the entries mean
  bool greyBecamePalette = false;    ///< a grey document that is written with indexes into the grey table
  bool transparencyApplied = false;  ///< the pictures carry it as alpha; no tRNS goes out
  int level = 9;                     ///< of compressed texts
  bool keepStored = true;            ///< those that nobody changed go out as they came
  bool updateTime = true;            ///< tIME gets the time of now
};

/// The payload of an entry for this file, converted from the header it was made for where color type or depth
/// differ; `notes` gets a line for each entry that is changed or left out. Nothing for an entry that does not
/// go out.
///
/// Left out are chunks that the policy (chunks/chunk_policy.h) leaves out, a second one of a kind that stands
/// once, and animation chunks of a still picture whose header changed. Unknown chunks go out byte for byte.
std::vector<ChunkOut> chunks_out(const ChunkList& list, const ChunksOutRequest& request,
                                 std::vector<std::string>& notes);

}  // namespace vellum
