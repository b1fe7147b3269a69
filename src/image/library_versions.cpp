#include "image/library_versions.h"

// gif_lib.h and jpeglib.h want stdio.
#include <cstdio>

#include <gif_lib.h>
#include <isa-l.h>
#include <jpeglib.h>
#include <libdeflate.h>
#include <tbb/version.h>
#include <webp/decode.h>
#include <webp/encode.h>
#include <webp/mux.h>
#include <zlib.h>

#include "base/text.h"

namespace vellum {
namespace {

/// Eight bits each of major, minor and revision.
std::string packed_version(int version) {
  return format_text("%d.%d.%d", version >> 16 & 0xFF, version >> 8 & 0xFF, version & 0xFF);
}

#define VELLUM_TEXT_OF(value) #value
#define VELLUM_TEXT(value) VELLUM_TEXT_OF(value)

std::string jpeg_version() {
#ifdef LIBJPEG_TURBO_VERSION
  return VELLUM_TEXT(LIBJPEG_TURBO_VERSION);
#else
  return VELLUM_TEXT(JPEG_LIB_VERSION);
#endif
}

}  // namespace

std::vector<std::pair<std::string, std::string>> library_versions() {
  return {{"libdeflate", LIBDEFLATE_VERSION_STRING},
          {"ISA-L", format_text("%d.%d.%d", ISAL_MAJOR_VERSION, ISAL_MINOR_VERSION, ISAL_PATCH_VERSION)},
          {"zlib", zlibVersion()},
          {"libjpeg-turbo", jpeg_version()},
          {"giflib", format_text("%d.%d.%d", GIFLIB_MAJOR, GIFLIB_MINOR, GIFLIB_RELEASE)},
          {"libwebp (decoder)", packed_version(WebPGetDecoderVersion())},
          {"libwebp (encoder)", packed_version(WebPGetEncoderVersion())},
          {"libwebpmux", packed_version(WebPGetMuxVersion())},
          {"oneTBB", TBB_runtime_version()}};
}

}  // namespace vellum
