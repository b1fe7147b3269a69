// A tRNS chunk under edit, without a window.
#pragma once

#include <optional>

#include "core/model/document.h"
#include "image/png_header.h"

namespace vellum {

/// What the tRNS of a document means, by the header that rules it.
struct TransparencyEdit {
  PngHeader header;
  std::vector<std::uint8_t> alphas;        ///< of every entry of the palette; for the other types empty
  std::array<std::uint16_t, 3> samples{};  ///< the transparent grey (first) or red, green, blue
  Palette palette{};

  bool paletted() const { return header.colorType == 3; }
  std::uint32_t most() const { return (1u << header.bitDepth) - 1; }  ///< the largest sample
};

/// The tRNS in entry `index`, or the transparency of an indexed image of an MNG. Empty, with `fault` set to a
/// text for the user, when this document can have none.
std::optional<TransparencyEdit> transparency_edit_of(const DocumentWindow& window, std::size_t index,
                                                     std::string& fault);

/// The chunk: alphas up to the last one below 255 and at least one, or the samples.
std::vector<std::uint8_t> transparency_payload(const TransparencyEdit& edit);

/// The samples of a pixel of a picture of this document, at the header's depth.
std::array<std::uint16_t, 3> transparency_samples(const TransparencyEdit& edit, Colour pixel);

/// Writes it into the entry. False when the payload is what it was or memory is exhausted.
bool apply_transparency(DocumentWindow& window, std::size_t index, const TransparencyEdit& edit);

}  // namespace vellum
