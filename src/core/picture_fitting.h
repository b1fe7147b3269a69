// Pictures that come into a document, made fit for it.
#pragma once

#include <optional>

#include "base/host.h"
#include "core/document.h"
#include "image/png_header.h"

namespace vellum {

/// What happens to colors that a document's palette lacks. The first three are the values of
/// `PngPaletteOption`.
enum class PaletteChoice { Replace, Dither, Remap };

/// The choice without a question: Remap, or `PngPaletteOption` while `AllowAdvancedPalettes` is on.
PaletteChoice default_palette_choice();

/// True color without alpha. The colors of a 1-bit picture go through its table.
Picture opaque_true_color(const Picture& picture);

/// Makes the picture's size and form that of a PNG header: size, depth 1, 4 or 8, color type; for an indexed
/// picture the PLTE, which is replaced or made where it has other colors. tRNS, bKGD, hIST and sBIT that mean
/// something else then are removed. The caret stays on its entry.
void header_take_picture(DocumentWindow& window, const Picture& picture);

/// The header of a still picture gets the picture's size alone.
void header_take_size(DocumentWindow& window, const Picture& picture);

/// The colors of a document, looked up once for any number of pictures.
class PictureFitting {
 public:
  PictureFitting(DocumentWindow& window, Host& host, std::optional<PaletteChoice> choice = std::nullopt);

  /// The picture as this document holds it. PNG and animated PNG: matched to the palette or the greys of the
  /// header; 24 or 32 bits under a true-color header. A picture with alpha makes a 24-bit animated PNG one of
  /// 32 bits when the user agrees. WebP: 24 or 32 bits. MNG: as it is. For the image of a still PNG and the
  /// `first` one of an animated PNG the header follows the picture. Null when memory is exhausted.
  Picture fit(const Picture& picture, bool first);

  /// Whether an image of a document of this kind can stay as it is; `table` is the transparency of that
  /// document, as pictures take it.
  bool holds(const Picture& picture, const std::vector<std::uint8_t>& table) const;

 private:
  void look_up();
  Picture fit_to_header(const Picture& picture);
  Picture matched(const Picture& picture) const;
  Picture reduced(const Picture& picture) const;
  bool agree_to_alpha();
  bool promote();

  DocumentWindow& window_;
  Host& host_;
  PaletteChoice choice_;
  std::optional<bool> alphaAgreed_;
  PngHeader header_;
  Palette palette_{};
  std::uint32_t colors_ = 0;         ///< of the PLTE
  std::vector<std::uint8_t> table_;  ///< transparency of the document's pictures
};

}  // namespace vellum
