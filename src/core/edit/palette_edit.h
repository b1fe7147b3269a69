// The work of the palette editor, without a window: a palette under edit, and putting it back into its
// document so that pixels, transparency and background go on meaning what they meant.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/model/document.h"
#include "image/palette_file.h"

namespace vellum {

struct PaletteEntry {
  std::uint8_t red = 0, green = 0, blue = 0;
  std::uint8_t alpha = 255;
  int origin = -1;  ///< index in the document; -1: not there yet
  bool operator==(const PaletteEntry&) const = default;
};

struct PaletteEdit {
  std::vector<PaletteEntry> entries;
  std::uint32_t most = 256;  ///< entries that the images can have
};

/// How many pixels have each index of the document.
using PaletteUsage = std::array<std::uint64_t, 256>;

enum class PaletteSort { Luminance, Hue, Use };

/// The palette of entry `index`: a PLTE, or an image of an MNG with a palette of its own. Empty for any other
/// entry.
std::optional<PaletteEdit> palette_edit_of(const DocumentWindow& window, std::size_t index);
/// Over all pictures that this palette rules; zero where it rules none (a suggested palette).
PaletteUsage palette_usage(const DocumentWindow& window, std::size_t index);

// Steps of the edit. Positions are those of `entries`. A text tells why one was refused; empty when it was
// done.

std::string palette_add(PaletteEdit& edit, std::size_t position, const PaletteEntry& entry);
/// Refused as a whole when one of the entries is in use or none would stay.
std::string palette_delete(PaletteEdit& edit, std::vector<std::size_t> positions, const PaletteUsage& usage);
void palette_swap(PaletteEdit& edit, std::size_t a, std::size_t b);
/// Stable. Luminance: 77 R + 150 G + 28 B, dark first. Hue: greys first, then around the circle. Use: most
/// used first.
void palette_sort(PaletteEdit& edit, PaletteSort by, const PaletteUsage& usage);
void palette_reverse(PaletteEdit& edit);
/// Even steps between two entries, which stay.
void palette_gradient(PaletteEdit& edit, std::size_t first, std::size_t last);
/// Positions that no pixel uses.
std::vector<std::size_t> palette_unused(const PaletteEdit& edit, const PaletteUsage& usage);
/// Other colors at the same positions, at most as many as fit. True when some did not fit.
bool palette_load(PaletteEdit& edit, const PaletteColors& colors);

PaletteColors palette_colors(const PaletteEdit& edit);

/// The index of the entry that stands for a color: the same color and alpha, else the nearest with that
/// alpha, else the nearest.
std::uint32_t palette_match(const PaletteEdit& edit, const PaletteEntry& wanted);

/// Puts the palette back. `change_images`: the images take the new colors, and pixels follow their entries
/// where these moved; otherwise pixels get the index of the entry nearest to their color. False when nothing
/// differs or memory is exhausted; the document is then as it was.
bool apply_palette(DocumentWindow& window, std::size_t index, const PaletteEdit& edit, bool change_images);

}  // namespace vellum
