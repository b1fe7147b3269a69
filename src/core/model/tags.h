// Chunk types as numbers, and the kinds of documents.
#pragma once

#include <cstdint>
#include <string>

namespace vellum {

/// A chunk type: the big-endian number of its four letters (IHDR is 0x49484452). Ordering is numeric.
using ChunkTag = std::uint32_t;

constexpr ChunkTag make_tag(const char (&letters)[5]) {
  return std::uint32_t{static_cast<unsigned char>(letters[0])} << 24 |
         std::uint32_t{static_cast<unsigned char>(letters[1])} << 16 |
         std::uint32_t{static_cast<unsigned char>(letters[2])} << 8 | static_cast<unsigned char>(letters[3]);
}

namespace tag {

// PNG standard, and the animated form.
inline constexpr ChunkTag IHDR = make_tag("IHDR"), PLTE = make_tag("PLTE"), IDAT = make_tag("IDAT"),
                          IEND = make_tag("IEND"), tEXt = make_tag("tEXt"), zTXt = make_tag("zTXt"),
                          iTXt = make_tag("iTXt"), tIME = make_tag("tIME"), gAMA = make_tag("gAMA"),
                          cHRM = make_tag("cHRM"), sRGB = make_tag("sRGB"), iCCP = make_tag("iCCP"),
                          mDCV = make_tag("mDCV"), cLLI = make_tag("cLLI"), cICP = make_tag("cICP"),
                          sBIT = make_tag("sBIT"), bKGD = make_tag("bKGD"), hIST = make_tag("hIST"),
                          tRNS = make_tag("tRNS"), pHYs = make_tag("pHYs"), sPLT = make_tag("sPLT"),
                          eXIf = make_tag("eXIf"), acTL = make_tag("acTL"), fcTL = make_tag("fcTL"),
                          fdAT = make_tag("fdAT");
// PNG extensions (registered chunks).
inline constexpr ChunkTag oFFs = make_tag("oFFs"), pCAL = make_tag("pCAL"), sCAL = make_tag("sCAL"),
                          sTER = make_tag("sTER"), gIFg = make_tag("gIFg"), gIFx = make_tag("gIFx");
// MNG 1.0.
inline constexpr ChunkTag MHDR = make_tag("MHDR"), MEND = make_tag("MEND"), TERM = make_tag("TERM"),
                          BACK = make_tag("BACK"), LOOP = make_tag("LOOP"), ENDL = make_tag("ENDL"),
                          FRAM = make_tag("FRAM"), DEFI = make_tag("DEFI"), MOVE = make_tag("MOVE"),
                          SHOW = make_tag("SHOW"), CLIP = make_tag("CLIP"), CLON = make_tag("CLON"),
                          DISC = make_tag("DISC"), SAVE = make_tag("SAVE"), SEEK = make_tag("SEEK"),
                          nEED = make_tag("nEED"), eXPI = make_tag("eXPI"), fPRI = make_tag("fPRI"),
                          pHYg = make_tag("pHYg"), MAGN = make_tag("MAGN"), PAST = make_tag("PAST");
// MNG 1.0: what begins an image that is not understood.
inline constexpr ChunkTag JHDR = make_tag("JHDR"), DHDR = make_tag("DHDR"), BASI = make_tag("BASI");
// WebP container: color profile, camera data and XMP beside the images.
inline constexpr ChunkTag ICCP = make_tag("ICCP"), EXIF = make_tag("EXIF"), XMP = make_tag("XMP ");
// Internal: an image of an MNG, the header and a frame of a WebP.
inline constexpr ChunkTag PNGI = make_tag("PNGI"), WEBH = make_tag("WEBH"), WEBI = make_tag("WEBI");

}  // namespace tag

/// What a document is: four letters stored in that byte order, so the number is their little-endian reading.
enum class DocumentKind : std::uint32_t {
  None = 0,
  PING = 0x474E4950,
  APNG = 0x474E5041,
  MING = 0x474E494D,
  WEBP = 0x50424557,
};

/// The kind's four letters: "PING".
std::string kind_letters(DocumentKind kind);
/// The tag's four letters; bytes that are no printable ASCII as "?".
std::string tag_letters(ChunkTag tag);

/// Whether a tag marks an image entry of this kind of document (and `data` then holds a picture): PING IDAT;
/// APNG IDAT and fdAT; MING PNGI; WEBP WEBI.
constexpr bool is_image_entry(DocumentKind kind, ChunkTag tag) {
  switch (kind) {
    case DocumentKind::PING:
      return tag == tag::IDAT;
    case DocumentKind::APNG:
      return tag == tag::IDAT || tag == tag::fdAT;
    case DocumentKind::MING:
      return tag == tag::PNGI;
    case DocumentKind::WEBP:
      return tag == tag::WEBI;
    case DocumentKind::None:
      break;
  }
  return false;
}

/// The tag of a new image entry of this kind.
constexpr ChunkTag image_tag(DocumentKind kind) {
  return kind == DocumentKind::MING ? tag::PNGI : kind == DocumentKind::WEBP ? tag::WEBI : tag::IDAT;
}

/// Whether a tag of an MNG begins a JNG or delta image, all of whose chunks, up to IEND, stay raw.
constexpr bool begins_opaque_image(ChunkTag tag) {
  return tag == tag::JHDR || tag == tag::DHDR || tag == tag::BASI;
}

/// Whether documents of this kind hold several images over time.
constexpr bool is_animation(DocumentKind kind) {
  return kind != DocumentKind::None && kind != DocumentKind::PING;
}

// The bits of a chunk type's letters (PNG standard, "Chunk naming conventions").
constexpr bool is_ancillary(ChunkTag tag) { return (tag & 0x20000000) != 0; }
constexpr bool is_safe_to_copy(ChunkTag tag) { return (tag & 0x20) != 0; }
/// Four ASCII letters, the third one upper case.
bool is_valid_tag(ChunkTag tag);

/// The three chunks of texts.
constexpr bool is_text(ChunkTag tag) { return tag == tag::tEXt || tag == tag::zTXt || tag == tag::iTXt; }

}  // namespace vellum
