// Inserting chunks: the tests of each tag, its place, and the messages.
#pragma once

#include "core/chunks/new_chunk.h"
#include "core/edit/adding.h"

namespace vellum {

/// Why a chunk with this tag can't be inserted at the caret; nothing when it can.
std::optional<StringId> insert_refusal(const DocumentWindow& window, ChunkTag tag);

/// Inserts the default content of a tag behind the caret (an undo level first), and moves the caret onto it.
/// LOOP and ENDL go around the caret's image; FRAM and DEFI become a part of it. A LOOP whose count is 0
/// repeats for ever; a FRAM whose delay is 0 takes `DefaultDelay`. An image needs its picture in the
/// argument. A tag without a default content gets as many zeros as it needs. False, with the message given to
/// the host, when it was refused (no undo level then) or failed.
bool insert_chunk(DocumentWindow& window, ChunkTag tag, const NewChunkArgument& argument, Host& host);

/// The tags that can be inserted in this kind of document by name, in the order of the chunk table: all but
/// images, what is fixed, and what stands once and is there.
std::vector<ChunkTag> insertable_tags(const DocumentWindow& window);

/// The same for a record that is made already: of an editor, or of the command line.
bool insert_record(DocumentWindow& window, const ChunkRecord& record, Host& host);

/// Inserts images behind the caret, one behind the other, in one undo level.
bool insert_pictures(DocumentWindow& window, std::span<const Picture> pictures, Host& host,
                     std::optional<PaletteChoice> choice = std::nullopt);

/// Why a chunk that the PNG header or the palette rules has no meaning here: tRNS beside an alpha channel or
/// without a palette, PLTE in a grey document. Nothing when it has.
std::optional<StringId> header_refusal(const DocumentWindow& window, ChunkTag tag);

/// Makes a FRAM or DEFI record a part of the image at `entry`. The refusal where that is none, or has one.
std::optional<StringId> fold_refusal(const DocumentWindow& window, ChunkTag tag, std::size_t entry);
void fold_into_image(DocumentWindow& window, const ChunkRecord& record, std::size_t entry);

/// The caret as an index, held inside the list.
std::size_t caret_entry(const DocumentWindow& window);

}  // namespace vellum
