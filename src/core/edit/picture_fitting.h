// Pictures that come into a document, made fit for it.
#pragma once

#include <optional>

#include "base/host.h"
#include "core/model/document.h"
#include "image/png_header.h"

namespace vellum {

/// What happens to colors that a document's palette lacks. The first three are the values of
/// `PngPaletteOption`; Local is a palette of the image's own, which an MNG can have.
enum class PaletteChoice { Replace, Dither, Remap, Local };

/// True color without alpha. The colors of a 1-bit picture go through its table.
Picture opaque_true_color(const Picture& picture);

/// The colors of a document, looked up once for any number of pictures.
class PictureFitting {
 public:
  /// Without a choice the colors are remapped; while `AllowAdvancedPalettes` is on the user is asked.
  PictureFitting(DocumentWindow& window, Host& host, std::optional<PaletteChoice> choice = std::nullopt);

  /// The document takes a picture, whoever brings it: the picture as this document holds it. `replaced` is
  /// the entry whose picture it becomes, none where it comes in beside the others (which are all in the
  /// list).
  ///
  /// PNG and animated PNG: matched to the palette or the greys of the header; 24 or 32 bits under a
  /// true-color header. A picture with alpha makes a 24-bit animated PNG one of 32 bits when the user agrees.
  /// Only where the document has no other image does the header follow the picture; a palette that was there
  /// stays all the same. WebP: 24 or 32 bits. MNG: as it is. Null when the user cancelled or memory is
  /// exhausted.
  Picture fit(const Picture& picture, std::size_t replaced = kNoEntry);

  /// Whether the document has images beside the replaced one.
  bool has_others(std::size_t replaced = kNoEntry);

  /// Whether the user cancelled the last question, or stopped the last matching.
  bool cancelled() const { return cancelled_; }

  /// Whether an image of a document of this kind can stay as it is; `table` is the transparency of that
  /// document, as pictures take it.
  bool holds(const Picture& picture, const std::vector<std::uint8_t>& table) const;

 private:
  void look_up();
  Picture fit_to_kind(const Picture& picture, std::size_t replaced);
  Picture fit_alone(const Picture& picture, bool replaces);
  Picture fit_to_header(const Picture& picture);
  std::optional<PaletteChoice> choose();
  Picture in_existing_palette(const Picture& picture);
  bool agree_to_alpha();
  bool promote();

  DocumentWindow& window_;
  Host& host_;
  std::optional<PaletteChoice> choice_;
  bool cancelled_ = false;
  bool others_ = false;  ///< an image was met that stays
  std::optional<bool> alphaAgreed_;
  PngHeader header_;
  Palette palette_{};
  std::uint32_t colors_ = 0;         ///< of the PLTE
  std::vector<std::uint8_t> table_;  ///< transparency of the document's pictures
};

}  // namespace vellum
