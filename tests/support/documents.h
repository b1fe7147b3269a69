// Documents made in code, and what tests ask of them.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "base/host.h"
#include "core/model/document.h"

namespace vellum::testing {

/// A host that keeps what it is told.
struct Recorder {
  Recorder();
  Host host;
  std::vector<std::string> messages;  ///< text, then the additional text behind a line end
  std::vector<std::string> warnings;
  std::vector<std::string> status;
  std::vector<std::string> notes;
  Answer answer = Answer::Yes;
};

/// A name for a file of each kind.
inline const std::map<DocumentKind, const char*> kFileNames = {{DocumentKind::PING, "a.png"},
                                                               {DocumentKind::APNG, "a.png"},
                                                               {DocumentKind::MING, "a.mng"},
                                                               {DocumentKind::WEBP, "a.webp"}};

/// Bytes of a PNG file from chunks: the signature, then each with its length and CRC.
struct ChunkText {
  std::string tag;
  std::string payload;
};
std::vector<std::uint8_t> png_file(const std::vector<ChunkText>& chunks);

/// An IHDR payload, and an IDAT payload of zeros for it.
std::string header_payload(unsigned width, unsigned height, unsigned depth, unsigned type,
                           unsigned interlace = 0);
std::string zero_image(unsigned width, unsigned height, unsigned depth, unsigned type);
/// Big-endian bytes.
std::string be32(std::uint32_t value);
std::string be16(std::uint32_t value);
/// Payload of an fcTL.
std::string frame_control(unsigned sequence, unsigned width, unsigned height, unsigned x = 0, unsigned y = 0,
                          unsigned delay = 1, unsigned per = 10, unsigned dispose = 0, unsigned blend = 0);

/// The tags of the list, with blanks between.
std::string tags_of(const ChunkList& list);
ChunkRecord record_of(ChunkTag tag, const std::string& payload);
/// Pixels as RGBA8, top row first, tRNS of the document applied: what the corpus takes the md5 of.
std::vector<std::uint8_t> rgba_of(const DocumentWindow& window, const Picture& picture);
/// The first image that a decoder shows: the default image, or the first image entry.
Picture first_image(const DocumentWindow& window);
/// The pictures of all image entries.
std::vector<Picture> images_of(const DocumentWindow& window);

/// A picture of this depth (1, 4, 8, 24, 32) whose pixels and colors follow from `seed`.
Picture small_picture(std::uint32_t width, std::uint32_t height, std::uint32_t bits, unsigned seed = 1);
/// A new document of 6 x 4 with images of that size in the form of the color type, and no comment.
DocumentWindow small_document(DocumentKind kind, std::size_t images, std::uint8_t color_type = 2);
/// What an outside program says against a saved file; empty when it has no objection or is not installed.
std::string objections(const std::filesystem::path& file);

}  // namespace vellum::testing
