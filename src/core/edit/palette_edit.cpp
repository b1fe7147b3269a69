#include "core/edit/palette_edit.h"

#include <algorithm>
#include <tuple>

#include "base/string_table.h"
#include "base/text.h"
#include "image/remap.h"

namespace vellum {
namespace {

int luminance(const PaletteEntry& e) { return 77 * e.red + 150 * e.green + 28 * e.blue; }

/// Greys in front of colors; then the place on the color circle in sixths of 255 parts.
std::tuple<bool, int, int> hue_order(const PaletteEntry& e) {
  const int high = std::max({e.red, e.green, e.blue}), low = std::min({e.red, e.green, e.blue});
  const int range = high - low;
  if (range == 0) return {false, 0, luminance(e)};
  int hue = 0;
  if (e.red == high)
    hue = (e.green - e.blue) * 255 / range;
  else if (e.green == high)
    hue = 2 * 255 + (e.blue - e.red) * 255 / range;
  else
    hue = 4 * 255 + (e.red - e.green) * 255 / range;
  return {true, hue < 0 ? hue + 6 * 255 : hue, luminance(e)};
}

std::uint64_t use_of(const PaletteEntry& entry, const PaletteUsage& usage) {
  return entry.origin < 0 ? 0 : usage[static_cast<std::size_t>(entry.origin)];
}

template <typename Key>
void sort_by(std::vector<PaletteEntry>& entries, const Key& key) {
  std::ranges::stable_sort(entries, {}, key);
}

std::string numbered(StringId id, std::size_t number) {
  return format_text(string_text(id).data(), static_cast<unsigned>(number));
}

std::string count_fault(const PaletteEdit& edit) { return numbered(StringId::PaletteCount, edit.most); }

/// The entry nearest to a color among those that `fits` lets in; nothing when it lets none in.
template <typename Fits>
std::optional<std::uint32_t> nearest(const PaletteEdit& edit, const PaletteEntry& wanted, const Fits& fits) {
  Palette palette{};
  std::vector<std::uint32_t> positions;
  for (std::size_t i = 0; i < edit.entries.size() && positions.size() < 256; ++i) {
    const PaletteEntry& e = edit.entries[i];
    if (!fits(e)) continue;
    const std::uint8_t color[] = {e.red, e.green, e.blue};
    std::copy_n(color, 3, palette.begin() + 3 * static_cast<std::ptrdiff_t>(positions.size()));
    positions.push_back(static_cast<std::uint32_t>(i));
  }
  if (positions.empty()) return std::nullopt;
  return positions[NearestPaletteIndex(wanted.red, wanted.green, wanted.blue, palette,
                                       static_cast<std::uint32_t>(positions.size()))];
}

}  // namespace

std::string palette_add(PaletteEdit& edit, std::size_t position, const PaletteEntry& entry) {
  if (edit.entries.size() >= edit.most) return count_fault(edit);
  position = std::min(position, edit.entries.size());
  edit.entries.insert(edit.entries.begin() + static_cast<std::ptrdiff_t>(position), entry);
  return {};
}

std::string palette_delete(PaletteEdit& edit, std::vector<std::size_t> positions, const PaletteUsage& usage) {
  std::ranges::sort(positions);
  for (const std::size_t position : positions)
    if (use_of(edit.entries[position], usage) > 0) return numbered(StringId::ColorInUse, position);
  if (positions.size() >= edit.entries.size()) return count_fault(edit);
  for (auto position = positions.rbegin(); position != positions.rend(); ++position)
    edit.entries.erase(edit.entries.begin() + static_cast<std::ptrdiff_t>(*position));
  return {};
}

void palette_swap(PaletteEdit& edit, std::size_t a, std::size_t b) {
  std::swap(edit.entries[a], edit.entries[b]);
}

void palette_sort(PaletteEdit& edit, PaletteSort by, const PaletteUsage& usage) {
  if (by == PaletteSort::Luminance) sort_by(edit.entries, luminance);
  if (by == PaletteSort::Hue) sort_by(edit.entries, hue_order);
  if (by == PaletteSort::Use)
    std::ranges::stable_sort(edit.entries, std::ranges::greater(),
                             [&](const PaletteEntry& e) { return use_of(e, usage); });
}

void palette_reverse(PaletteEdit& edit) { std::ranges::reverse(edit.entries); }

void palette_gradient(PaletteEdit& edit, std::size_t first, std::size_t last) {
  const PaletteEntry from = edit.entries[first], to = edit.entries[last];
  const auto steps = static_cast<int>(last - first);
  for (int i = 1; i < steps; ++i) {
    PaletteEntry& entry = edit.entries[first + static_cast<std::size_t>(i)];
    const auto mix = [&](int a, int b) {
      return static_cast<std::uint8_t>((a * (steps - i) + b * i + steps / 2) / steps);
    };
    entry.red = mix(from.red, to.red);
    entry.green = mix(from.green, to.green);
    entry.blue = mix(from.blue, to.blue);
  }
}

std::vector<std::size_t> palette_unused(const PaletteEdit& edit, const PaletteUsage& usage) {
  std::vector<std::size_t> unused;
  for (std::size_t i = 0; i < edit.entries.size(); ++i)
    if (use_of(edit.entries[i], usage) == 0) unused.push_back(i);
  return unused;
}

bool palette_load(PaletteEdit& edit, const PaletteColors& colors) {
  const std::uint32_t count = std::min(colors.count, edit.most);
  edit.entries.resize(count);
  for (std::size_t i = 0; i < count; ++i) {
    edit.entries[i].red = colors.palette[3 * i];
    edit.entries[i].green = colors.palette[3 * i + 1];
    edit.entries[i].blue = colors.palette[3 * i + 2];
  }
  return colors.cut || count < colors.count;
}

PaletteColors palette_colors(const PaletteEdit& edit) {
  PaletteColors colors;
  for (const PaletteEntry& entry : edit.entries) {
    if (colors.count == 256) break;
    std::uint8_t* place = &colors.palette[3 * std::size_t{colors.count++}];
    place[0] = entry.red;
    place[1] = entry.green;
    place[2] = entry.blue;
  }
  return colors;
}

std::uint32_t palette_match(const PaletteEdit& edit, const PaletteEntry& wanted) {
  const auto alike = nearest(edit, wanted, [&](const PaletteEntry& e) { return e.alpha == wanted.alpha; });
  if (alike) return *alike;
  return nearest(edit, wanted, [](const PaletteEntry&) { return true; }).value_or(0);
}

}  // namespace vellum
