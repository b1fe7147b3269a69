// Pasting, dropping and merging: entries that come from another place.
#pragma once

#include "core/edit/adding.h"
#include "core/edit/clipboard_block.h"

namespace vellum {

/// Pastes a clipboard block behind the caret, an undo level first: records in their order, each in the form
/// of this kind of document and at its place; the caret moves on with them. Records that may not stand here
/// are passed over, and each reason is shown once. Several records that hold LOOPs keep them around what they
/// held. False when nothing was pasted.
bool paste_block(DocumentWindow& window, std::span<const std::uint8_t> bytes, Host& host);

/// A picture becomes an image behind the caret; text (UTF-8) a tEXt with the keyword "Comment". An undo level
/// first.
bool paste_picture(DocumentWindow& window, const Picture& picture, Host& host);
bool paste_text(DocumentWindow& window, std::string_view text, Host& host);

/// Copies the selected image entries of `from` (which may be the same window) behind `row`. Other selected
/// entries are passed over; an image of another kind ends it with its message, what was dropped before stays.
/// An undo level first.
bool drop_rows(DocumentWindow& to, const DocumentWindow& from, std::size_t row, Host& host);
/// The same for the images of a block of another program.
bool drop_block(DocumentWindow& to, std::span<const std::uint8_t> bytes, std::size_t row, Host& host);
/// Pictures of dropped files, each a frame behind `row` in the order given.
bool drop_pictures(DocumentWindow& to, std::span<const Picture> pictures, std::size_t row, Host& host);

struct MergeRequest {
  std::size_t after = 0;  ///< image, counted from 1; 0: in front of all
  bool texts = false;     ///< text chunks come along
};
/// The images of another animation become images of this one, in their order; an undo level first. Different
/// color types of the first images are asked about. The first image of an animated PNG is padded to the
/// canvas that all images together take.
bool merge_document(DocumentWindow& to, const DocumentWindow& from, const MergeRequest& request, Host& host);

}  // namespace vellum
