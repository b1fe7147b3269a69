// Readings of chunks that a PNG of any kind holds (PNG standard, third edition; PNG extensions).
#include "base/limits.h"
#include "base/translation.h"
#include "core/chunks/payload_reader.h"
#include "image/inflate.h"

namespace vellum {
namespace {

constexpr std::size_t kShownText = 4000;  // bytes; the rest of a longer text is left out
constexpr std::size_t kShownRows = 64;    // of a table
constexpr double kMetersPerInch = 0.0254;

constexpr const char* kUnits[] = {"unknown", "meter"};
constexpr const char* kOffsetUnits[] = {"pixel", "micrometer"};

std::string shortened(std::string text) {
  const bool cut = text.size() > kShownText;
  text = cut_utf8(std::move(text), kShownText);
  return cut ? text + " ..." : text;
}

std::string international_body(PayloadReader& p, bool compressed) {
  if (!compressed) return std::string(p.rest());
  bool over_limit = false;
  const auto stream = p.bytes(p.left());
  const auto text = inflate_text(stream, kMaximumTextBytes, over_limit);
  if (text) return *text;
  if (over_limit) return translated("(longer than ") + grouped(kMaximumTextBytes) + translated(" bytes)");
  p.set_damaged();
  return {};
}

void physical_line(PayloadReader& p, const char* name, std::uint32_t value, bool meter) {
  p.line(name, meter ? format_text(translated("%u per meter (%.2f dpi)"), value, value * kMetersPerInch)
                     : format_text(translated("%u per unit"), value));
}

std::string sample_text(PayloadReader& p, bool wide) {
  const auto sample = [&] { return std::to_string(wide ? p.u16() : p.u8()); };
  std::string text;
  for (const char* name :
       {translated("red "), translated(", green "), translated(", blue "), translated(", alpha ")})
    text += name + sample();
  return text + translated(", used ") + std::to_string(p.u16());
}

constexpr const char* kEquations[] = {"linear", "base-e exponential", "any-base exponential",
                                      "hyperbolic sine"};
constexpr const char* kScaleUnits[] = {"", "meter", "radian"};

}  // namespace

void read_international_text(PayloadReader& p) {
  p.text("Keyword", p.until_nul());
  const bool compressed = p.u8() == 1;
  p.line("Compressed", compressed ? translated("yes") : translated("no"));
  if (p.u8() != 0) p.set_damaged();
  p.line("Language", std::string(p.until_nul()));
  p.line("Translated keyword", std::string(p.until_nul()));
  if (p.damaged()) return;
  p.line("Text", shortened(international_body(p, compressed)));
}

void read_xmp(PayloadReader& p) { p.line("Text", shortened(std::string(p.rest()))); }

void read_physical_size(PayloadReader& p) {
  const std::uint32_t x = p.u32(), y = p.u32(), unit = p.u8();
  physical_line(p, "Horizontal", x, unit == 1);
  physical_line(p, "Vertical", y, unit == 1);
  p.named("Unit", unit, kUnits);
}

void read_significant_bits(PayloadReader& p) {
  static constexpr std::array<std::array<const char*, 4>, 4> names = {{
      {"Grey"},
      {"Grey", "Alpha"},
      {"Red", "Green", "Blue"},
      {"Red", "Green", "Blue", "Alpha"},
  }};
  if (p.left() == 0 || p.left() > 4) return p.set_damaged();
  for (const char* name : names[p.left() - 1])
    if (name) p.line(name, std::to_string(p.u8()) + translated(" bits"));
}

void read_histogram(PayloadReader& p) {
  if (p.left() == 0 || p.left() % 2 != 0 || p.left() > 512) return p.set_damaged();
  p.line("Colors", static_cast<std::int64_t>(p.left() / 2));
  for (unsigned first = 0; p.more();) {
    std::string counts;
    unsigned i = first;
    for (; i < first + 8 && p.more(); ++i) counts += (counts.empty() ? "" : " ") + std::to_string(p.u16());
    p.line(format_text(translated("%u to %u"), first, i - 1), counts);
    first = i;
  }
}

void read_suggested_palette(PayloadReader& p) {
  p.text("Name", p.until_nul());
  const std::uint32_t depth = p.u8();
  p.line("Depth", std::to_string(depth) + translated(" bits"));
  const std::size_t row = depth == 16 ? 10 : 6;
  if ((depth != 8 && depth != 16) || p.left() % row != 0) return p.set_damaged();
  p.line("Colors", static_cast<std::int64_t>(p.left() / row));
  for (std::size_t i = 0; i < kShownRows && p.more(); ++i)
    p.line(translated("Color ") + std::to_string(i), sample_text(p, depth == 16));
  p.bytes(p.left());
}

void read_offset(PayloadReader& p) {
  const std::int32_t x = p.i32(), y = p.i32();
  p.line("X", x);
  p.line("Y", y);
  p.named("Unit", p.u8(), kOffsetUnits);
}

void read_calibration(PayloadReader& p) {
  p.text("Name", p.until_nul());
  const std::int32_t low = p.i32(), high = p.i32();
  p.line("Original samples", std::to_string(low) + translated(" to ") + std::to_string(high));
  p.named("Equation", p.u8(), kEquations);
  const std::uint32_t parameters = p.u8();
  p.text("Unit", parameters == 0 ? p.until_nul_or_end() : p.until_nul());
  for (std::uint32_t i = 0; i < parameters; ++i)
    p.text(translated("Parameter ") + std::to_string(i),
           i + 1 < parameters ? p.until_nul() : p.until_nul_or_end());
}

void read_scale(PayloadReader& p) {
  p.named("Unit", p.u8(), kScaleUnits);
  p.text("Pixel width", p.until_nul());
  p.text("Pixel height", p.until_nul_or_end());
}

void read_global_physical_size(PayloadReader& p) {
  // MNG 1.0, "pHYg": an empty one takes back an earlier one.
  if (p.left() == 0) return p.line("", translated("No size"));
  read_physical_size(p);
}

}  // namespace vellum
