// What the writers of still and animated PNG files share.
#pragma once

#include "base/file.h"
#include "base/host.h"
#include "core/files/png_chunks_out.h"
#include "core/files/save_options.h"
#include "core/model/document.h"
#include "image/stored_image.h"

namespace vellum {

/// Signature and header.
bool begin_png(const Sink& sink, const PngHeader& header);
bool write_chunks(const Sink& sink, std::span<const ChunkOut> chunks);
/// Why something was not written: what the sink says, else that the file which images lie in is another by
/// now.
std::string write_fault(const Sink& sink);

using KeptStream = std::shared_ptr<const StoredImage>;

/// The stream that the picture in a block came from, where it can be written as it is under this header; else
/// null.
KeptStream usable_stream(const PngHeader& header, const ChunkHandle& block, const SaveOptions& options);

/// The image data of a picture: those that it came from, where they may stand in this form, else made anew.
/// Null where they can't be made.
KeptStream image_stream(const PngHeader& header, const Picture& picture, const SaveOptions& options,
                        std::optional<std::array<std::uint16_t, 3>> key = std::nullopt);

/// The image data of a still file.
struct ImageData {
  const PngHeader& header;
  const Picture& picture;
  std::optional<std::array<std::uint16_t, 3>> key;
  KeptStream stream;  ///< null where rows go out as they are: they are laid while they are written
};

/// As image_stream; nothing where they can't be made.
std::optional<ImageData> image_data(const PngHeader& header, const Picture& picture,
                                    const SaveOptions& options,
                                    std::optional<std::array<std::uint16_t, 3>> key);
bool write_image_data(const Sink& sink, const ImageData& data);
/// Image data as IDAT chunks, divided as the stream is. False also where the stream was changed meanwhile.
bool write_image_data(const Sink& sink, const StoredImage& stream);

/// A stream of this picture that has just been made; null of a null block.
KeptStream new_stream(const PngHeader& header, const Picture& picture, ChunkHandle bytes);
/// The same of a copy of the bytes; null without any.
KeptStream new_stream(const PngHeader& header, const Picture& picture, std::span<const std::uint8_t> bytes);
/// The picture of the record has the stream for its source from now on.
void keep_stream(ChunkList& list, std::size_t entry, const KeptStream& stream);

/// After a save: the entries whose content the writer made anew (times) go back into the list.
void take_over_written(DocumentWindow& window, std::span<const ChunkOut> chunks);
/// The same for the header as it was written.
void take_over_header(DocumentWindow& window, std::size_t header_entry, const PngHeader& written);

/// Tells what a save changed or left out.
void tell_notes(const Host& host, const std::vector<std::string>& notes);

/// The tRNS samples of a 16-bit grey or true-color document, for png_encode.
std::optional<std::array<std::uint16_t, 3>> deep_transparency_key(const ChunkList& list,
                                                                  const PngHeader& header);

}  // namespace vellum
