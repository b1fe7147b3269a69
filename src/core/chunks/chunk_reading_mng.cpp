// Readings of the chunks that an MNG alone holds and this program keeps as they are (MNG 1.0).
#include "core/chunks/payload_reader.h"

#include "base/translation.h"

namespace vellum {
namespace {

constexpr const char* kClipTypes[] = {"absolute", "relative to the last"};
constexpr const char* kFlags[] = {"no", "yes"};
constexpr const char* kMagnifyMethods[] = {"none",
                                           "repeated",
                                           "linear",
                                           "closest pixel",
                                           "linear colors, closest alpha",
                                           "closest colors, linear alpha"};
constexpr std::size_t kShownPastes = 64;

void objects_line(PayloadReader& p) {
  const std::uint32_t first = p.u16(), last = p.u16();
  p.line("Objects", std::to_string(first) + translated(" to ") + std::to_string(last));
}

void position_line(PayloadReader& p, const char* name) {
  const std::int32_t x = p.i32(), y = p.i32();
  p.line(name, std::to_string(x) + ", " + std::to_string(y));
}

void bounds_line(PayloadReader& p) {
  const std::int32_t left = p.i32(), right = p.i32(), top = p.i32(), bottom = p.i32();
  p.line("Bounds", format_text(translated("left %d, right %d, top %d, bottom %d"), left, right, top, bottom));
}

void size_line(PayloadReader& p, const char* name) {
  const std::uint32_t width = p.u32(), height = p.u32();
  p.line(name, format_text("%u x %u", width, height));
}

/// An offset of 4 or 8 bytes.
std::string offset_text(PayloadReader& p, bool wide) {
  const std::uint64_t high = wide ? p.u32() : 0;
  return grouped(high << 32 | p.u32());
}

void save_entry(PayloadReader& p, bool wide) {
  static constexpr const char* types[] = {"Segment with its time", "Segment", "Subframe", "Exported image"};
  const std::uint32_t type = p.u8();
  std::string value;
  if (type <= 1) value = translated("offset ") + offset_text(p, wide);
  if (type == 0) {
    value += translated(", time ") + offset_text(p, wide);
    value += translated(", layer ") + offset_text(p, wide);
    value += translated(", frame ") + offset_text(p, wide);
  }
  if (type >= std::size(types)) return p.set_damaged();
  const std::string name = utf8_from_latin1(p.until_nul_or_end());
  if (!name.empty()) value += (value.empty() ? "" : ", ") + name;
  p.line(types[type], value);
}

void paste_source(PayloadReader& p) {
  static constexpr const char* modes[] = {"over", "replace", "under"};
  p.line("Source", p.u16());
  p.named("Composition", p.u8(), modes);
  p.line("Orientation", p.u8());
  static constexpr const char* origins[] = {"the target's corner", "the position"};
  p.named("Offset from", p.u8(), origins);
  position_line(p, "Offset");
  p.named("Bounds from", p.u8(), origins);
  bounds_line(p);
}

}  // namespace

void read_clip(PayloadReader& p) {
  objects_line(p);
  p.named("Clipping", p.u8(), kClipTypes);
  bounds_line(p);
}

void read_clone(PayloadReader& p) {
  p.line("Source", p.u16());
  p.line("Clone", p.u16());
  static constexpr const char* types[] = {"full", "partial", "renumbered"};
  if (p.more()) p.named("Type", p.u8(), types);
  if (p.more()) p.named("Hidden", p.u8(), kFlags);
  if (p.more()) p.named("Concrete", p.u8(), kFlags);
  if (!p.more()) return;
  p.named("Position type", p.u8(), kClipTypes);
  position_line(p, "Position");
}

void read_discard(PayloadReader& p) {
  if (p.left() == 0) return p.line("", translated("All objects but 0"));
  std::string objects;
  while (p.more()) objects += (objects.empty() ? "" : ", ") + std::to_string(p.u16());
  p.line("Objects", objects);
}

void read_save(PayloadReader& p) {
  if (p.left() == 0) return p.line("", translated("No index"));
  const std::uint32_t width = p.u8();
  if (width != 4 && width != 8) return p.set_damaged();
  p.line("Bytes of an offset", width);
  while (p.more()) save_entry(p, width == 8);
}

void read_seek(PayloadReader& p) { p.text("Segment", p.rest()); }

void read_needed(PayloadReader& p) {
  while (p.more()) p.text("Needs", p.until_nul_or_end());
}

void read_export(PayloadReader& p) {
  p.line("Snapshot", p.u16());
  p.text("Name", p.rest());
}

void read_priority(PayloadReader& p) {
  p.named("Type", p.u8(), kClipTypes);
  p.line("Priority", p.u8());
}

void read_magnify(PayloadReader& p) {
  // Whatever is cut off at the end has its default: no magnification, the same vertically as horizontally.
  if (p.left() == 0) return p.line("", translated("No magnification"));
  p.line("First object", p.u16());
  if (p.more()) p.line("Last object", p.u16());
  if (p.more()) p.named("Horizontal method", p.u8(), kMagnifyMethods);
  for (const char* name :
       {"Horizontal factor", "Vertical factor", "Left factor", "Right factor", "Top factor", "Bottom factor"})
    if (p.more()) p.line(name, p.u16());
  if (p.more()) p.named("Vertical method", p.u8(), kMagnifyMethods);
}

void read_paste(PayloadReader& p) {
  p.line("Target", p.u16());
  static constexpr const char* types[] = {"absolute", "relative to the last of this target",
                                          "relative to the last"};
  p.named("Position type", p.u8(), types);
  position_line(p, "Position");
  for (std::size_t i = 0; i < kShownPastes && p.more(); ++i) paste_source(p);
}

void read_basis(PayloadReader& p) {
  size_line(p, "Size");
  p.line("Bit depth", p.u8());
  p.line("Color type", p.u8());
  p.line("Compression", p.u8());
  p.line("Filter", p.u8());
  p.line("Interlace", p.u8());
  if (!p.more()) return;
  for (const char* name : {"Red", "Green", "Blue"}) p.line(name, p.u16());
  if (p.more()) p.line("Alpha", p.u16());
  if (p.more()) p.named("Viewable", p.u8(), kFlags);
}

void read_delta_header(PayloadReader& p) {
  static constexpr const char* images[] = {"as the parent", "PNG", "JNG"};
  static constexpr const char* deltas[] = {"whole image replaced", "samples added",    "alpha added",
                                           "colors added",         "samples replaced", "alpha replaced",
                                           "colors replaced",      "no change"};
  p.line("Object", p.u16());
  p.named("Image type", p.u8(), images);
  p.named("Delta type", p.u8(), deltas);
  if (p.more()) size_line(p, "Block size");
  if (p.more()) position_line(p, "Block position");
}

}  // namespace vellum
