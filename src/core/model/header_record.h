// The header of a PNG (PNG standard, "IHDR") as the fields of a record.
#pragma once

#include "core/model/chunk_record.h"
#include "image/png_header.h"

namespace vellum {

/// A record with these header fields (tag and payload untouched).
void put_png_header(ChunkRecord& record, const PngHeader& header);
PngHeader png_header_of(const ChunkRecord& record);

}  // namespace vellum
