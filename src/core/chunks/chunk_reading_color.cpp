// Readings of chunks that tell what colors mean (PNG standard, third edition; ICC.1:2022; ITU-T H.273).
#include "base/limits.h"
#include "base/translation.h"
#include "core/chunks/payload_reader.h"
#include "image/inflate.h"

namespace vellum {
namespace {

constexpr const char* kIntents[] = {"Perceptual", "Relative colorimetric", "Saturation",
                                    "Absolute colorimetric"};

struct CodeRow {
  std::uint32_t code;
  const char* name;
};

constexpr CodeRow kPrimaries[] = {
    {1, "BT.709"},         {2, "unspecified"}, {4, "BT.470 System M"}, {5, "BT.470 System B, G"},
    {6, "BT.601"},         {7, "ST 240"},      {8, "generic film"},    {9, "BT.2020, BT.2100"},
    {10, "ST 428-1, XYZ"}, {11, "DCI-P3"},     {12, "Display P3"},     {22, "EBU 3213-E"},
};
constexpr CodeRow kTransfers[] = {
    {1, "BT.709"},
    {2, "unspecified"},
    {4, "gamma 2.2"},
    {5, "gamma 2.8"},
    {6, "BT.601"},
    {7, "ST 240"},
    {8, "linear"},
    {9, "logarithmic, 100 to 1"},
    {10, "logarithmic, 316 to 1"},
    {11, "IEC 61966-2-4"},
    {12, "BT.1361"},
    {13, "sRGB"},
    {14, "BT.2020, 10 bits"},
    {15, "BT.2020, 12 bits"},
    {16, "PQ (BT.2100)"},
    {17, "ST 428-1"},
    {18, "HLG (BT.2100)"},
};
constexpr CodeRow kMatrices[] = {{0, "identity (RGB)"}};

void code_line(PayloadReader& p, const char* name, std::span<const CodeRow> rows) {
  const std::uint32_t code = p.u8();
  const auto row = std::ranges::find(rows, code, &CodeRow::code);
  p.line(name, std::to_string(code) + ", " + translated(row == rows.end() ? "unknown" : row->name));
}

/// Four letters as profiles hold them; unprintable ones as blanks.
std::string four_letters(std::uint32_t value) {
  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto letter = static_cast<char>(value >> shift);
    letters += letter >= 32 && letter < 127 ? letter : ' ';
  }
  return std::string(trimmed(letters));
}

constexpr std::size_t kProfileHeader = 128;  // ICC.1:2022, 7.2

constexpr struct {
  const char* letters;
  const char* name;
} kProfileClasses[] = {{"scnr", "input device"}, {"mntr", "display"},       {"prtr", "output device"},
                       {"link", "device link"},  {"abst", "abstract"},      {"spac", "color space"},
                       {"nmcl", "named colors"}, {"cenc", "color encoding"}};

std::string profile_class(std::uint32_t value) {
  const std::string letters = four_letters(value);
  for (const auto& row : kProfileClasses)
    if (letters == row.letters) return translated(row.name);
  return letters;
}

/// The fields of a profile's header in their order.
void read_profile_header(PayloadReader& p, std::string_view profile) {
  PayloadReader h({reinterpret_cast<const std::uint8_t*>(profile.data()), profile.size()});
  p.line("Stated size", grouped(h.u32()) + translated(" bytes"));
  p.line("Preferred module", four_letters(h.u32()));
  const std::uint32_t version = h.u32();
  p.line("Version", format_text("%u.%u.%u", version >> 24, version >> 20 & 15, version >> 16 & 15));
  p.line("Class", profile_class(h.u32()));
  p.line("Color space", four_letters(h.u32()));
  p.line("Connection space", four_letters(h.u32()));
  std::array<std::uint32_t, 6> time{};
  for (std::uint32_t& part : time) part = h.u16();
  p.line("Made",
         format_text("%04u-%02u-%02u %02u:%02u:%02u", time[0], time[1], time[2], time[3], time[4], time[5]));
  p.line("Signature", four_letters(h.u32()));
  p.line("Platform", four_letters(h.u32()));
  h.bytes(4);
  p.line("Manufacturer", four_letters(h.u32()));
  p.line("Model", four_letters(h.u32()));
  h.bytes(8);
  p.named("Rendering intent", h.u32(), kIntents);
}

std::string fraction(std::uint32_t value, double unit, int digits) {
  return format_text("%.*f", digits, value * unit);
}

std::string point(std::uint32_t x, std::uint32_t y, double unit) {
  return "x " + fraction(x, unit, 5) + ", y " + fraction(y, unit, 5);
}

}  // namespace

void read_profile(PayloadReader& p) {
  p.text("Profile name", p.until_nul());
  if (p.u8() != 0) p.set_damaged();
  p.line("Size deflated", grouped(p.left()) + translated(" bytes"));
  if (p.damaged()) return;
  bool over_limit = false;
  const auto profile = inflate_text(p.bytes(p.left()), kMaximumTextBytes, over_limit);
  if (over_limit)
    return p.line("Size", translated("more than ") + grouped(kMaximumTextBytes) + translated(" bytes"));
  if (!profile) return p.set_damaged();
  p.line("Size", grouped(profile->size()) + translated(" bytes"));
  profile->size() < kProfileHeader ? p.set_damaged() : read_profile_header(p, *profile);
}

void read_bare_profile(PayloadReader& p) {
  p.line("Size", grouped(p.left()) + translated(" bytes"));
  const auto profile = p.bytes(p.left());
  if (profile.size() < kProfileHeader) return p.set_damaged();
  read_profile_header(p, {reinterpret_cast<const char*>(profile.data()), profile.size()});
}

void read_rendering_intent(PayloadReader& p) { p.named("Rendering intent", p.u8(), kIntents); }

void read_chromaticities(PayloadReader& p) {
  for (const char* name : {"White point", "Red", "Green", "Blue"}) {
    const std::uint32_t x = p.u32(), y = p.u32();
    p.line(name, point(x, y, 1e-5));
  }
}

void read_code_points(PayloadReader& p) {
  code_line(p, "Color primaries", kPrimaries);
  code_line(p, "Transfer function", kTransfers);
  code_line(p, "Matrix coefficients", kMatrices);
  static constexpr const char* ranges[] = {"narrow", "full"};
  p.named("Range", p.u8(), ranges);
}

void read_mastering_display(PayloadReader& p) {
  for (const char* name : {"Red", "Green", "Blue", "White point"}) {
    const std::uint32_t x = p.u16(), y = p.u16();
    p.line(name, point(x, y, 0.00002));
  }
  p.line("Highest luminance", fraction(p.u32(), 0.0001, 4) + " cd/m\u00B2");
  p.line("Lowest luminance", fraction(p.u32(), 0.0001, 4) + " cd/m\u00B2");
}

void read_light_level(PayloadReader& p) {
  p.line("Highest light level", fraction(p.u32(), 0.0001, 4) + " cd/m\u00B2");
  p.line("Highest frame average", fraction(p.u32(), 0.0001, 4) + " cd/m\u00B2");
}

}  // namespace vellum
