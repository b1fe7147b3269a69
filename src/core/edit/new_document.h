// New documents.
#pragma once

#include "core/model/document.h"

namespace vellum {

/// What a new document is made from; what a kind does not have is not looked at.
struct NewDocument {
  DocumentKind kind = DocumentKind::PING;
  std::uint32_t width = 0, height = 0;  ///< pixels; 0: the default frame size
  std::uint8_t colorType = 2;           ///< PNG, animated PNG: as in a PNG header
  std::uint8_t bitDepth = 8;
  bool interlaced = false;
  std::uint32_t plays = 0;              ///< animations; 0 for ever
  std::uint32_t ticks = 1000;           ///< MNG, to a second
  std::uint32_t background = 0xFFFFFF;  ///< WebP, 0xBBGGRR
};

/// The parameters as the settings have them.
NewDocument default_new_document(DocumentKind kind);

/// Why such a document can't be (a sentence part), or null for one that can.
const char* new_document_fault(const NewDocument& parameters);

/// Fills an empty window: the header (with its acTL, palette or loop), the comment with instructions while
/// `AddInstructionsToNew` is on, and the end. The caret stands where the first image goes behind. False when
/// the parameters are at fault.
bool new_document(DocumentWindow& window, const NewDocument& parameters);

/// Gives a document without images one of the canvas' size and the header's form, in the default background
/// color, or transparent where the form has alpha. False when memory is exhausted.
bool add_blank_image(DocumentWindow& window);

}  // namespace vellum
