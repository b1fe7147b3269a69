// The animation wizard without its window: picture files become the frames of an animation.
#pragma once

#include <filesystem>
#include <functional>

#include "base/host.h"
#include "operations/parameters.h"

namespace vellum {

/// What becomes of the colors.
enum WizardPalette {
  kWizardAsIs,
  kWizardTrueColor,
  kWizardMatch,
  kWizardDither,
  kWizardFirst,
  kWizardPhotorealistic,  ///< dithered to 256 evenly spaced colors
  kWizardDrawn,           ///< matched to them
};

/// Its values: delay (ms), loop, palette (WizardPalette), preserveTransparency, masks, maskColor,
/// improvePalette.
extern const Parameters kWizard;

/// How many of the palette choices the wizard's list shows for a kind: WebP has none beyond true color, and
/// the last ones are shown while `AllowAdvancedPalettes` is on.
std::size_t wizard_palettes(DocumentKind kind);

/// Makes an empty window an animation of this kind with a frame for each file, in their order. Animated PNG
/// and WebP keep transparency as alpha and then use pictures as they are. In an MNG pixels that are
/// transparent by a color table or a key get an entry, or with true color the color, of their own; alpha of
/// 32 bits stays as it is, and goes with other colors.
///
/// Files are read some at a time, and beside the pictures of the document not more are held unpacked than
/// `gatheredBytes`. A picture that goes through as its PNG has it keeps its stream, and is written again as
/// that. A file that can't be read is asked about, and passed over with Yes. False after a message
/// when no file can be read, one is lost meanwhile, or memory is exhausted; and without one when the user
/// stopped it. Nothing is then left of it.
bool build_wizard(const std::vector<std::filesystem::path>& files, const FieldValues& values,
                  DocumentKind kind, DocumentWindow& window, Host& host);

/// What the frame of a file, the `number`th, shows on a canvas of this size, in 32 bits. Any number of
/// threads may ask; a null picture where the file can't be read or memory is exhausted.
using WizardShown =
    std::function<Picture(const std::filesystem::path& file, std::size_t number, const Extent& canvas)>;

/// For previews: what the animation of these files will show. A superpalette is gathered from at most 64 of
/// them, so that of more it is near the one that they will have, and else the same. Nothing where the first
/// file can't be read or `host` stops it.
WizardShown wizard_shown(const std::vector<std::filesystem::path>& files, const FieldValues& values,
                         DocumentKind kind, Host& host);

}  // namespace vellum
