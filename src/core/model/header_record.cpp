#include "core/model/header_record.h"

namespace vellum {

void put_png_header(ChunkRecord& record, const PngHeader& header) {
  record.width = header.width;
  record.height = header.height;
  record.bitDepth = header.bitDepth;
  record.colorType = header.colorType;
  record.compression = header.compression;
  record.filter = header.filter;
  record.interlace = header.interlace;
}

PngHeader png_header_of(const ChunkRecord& record) {
  return {record.width,       record.height, record.bitDepth, record.colorType,
          record.compression, record.filter, record.interlace};
}

}  // namespace vellum
