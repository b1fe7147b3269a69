// Properties for people and for programs.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "base/translation.h"
#include "operations/animation_properties.h"

namespace vellum {
namespace {

constexpr std::uint64_t kKilobyte = 1024;

std::string kind_name(DocumentKind kind) {
  switch (kind) {
    case DocumentKind::PING:
      return "PNG";
    case DocumentKind::APNG:
      return translated("Animated PNG");
    case DocumentKind::MING:
      return "MNG";
    case DocumentKind::WEBP:
      return "WebP";
    case DocumentKind::None:
      break;
  }
  return {};
}

const char* dispose_name(std::uint32_t dispose) {
  static constexpr const char* names[] = {"None", "Background", "Previous"};
  return names[std::min(dispose, 2u)];
}

std::string size_text(Extent size) { return format_text("%u x %u", size.width, size.height); }

std::string time_text(std::uint64_t ms) {
  return grouped(ms) + translated(" ms (") +
         format_text("%llu.%03u s", static_cast<unsigned long long>(ms / 1000),
                     static_cast<unsigned>(ms % 1000)) +
         ")";
}

std::string bytes_text(std::uint64_t bytes) { return grouped(bytes) + translated(" bytes"); }

std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) text.append(text.empty() ? "" : "; ").append(translated(part));
  return text.empty() ? translated("none") : text;
}

Light light_of_bytes(std::uint64_t bytes, int yellow, int red) {
  const auto limit = [](int kilobytes) {
    return static_cast<std::uint64_t>(std::clamp(kilobytes, 1, 1'048'576)) * kKilobyte;
  };
  return traffic_light(bytes, limit(yellow), limit(red));
}

std::string padded(const std::string& text, std::size_t width, bool right) {
  const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
  return right ? blanks + text : text + blanks;
}

/// Numbers stand to the right.
bool is_number_column(std::size_t column) { return column != 4 && column != 5; }

std::string table_text(const std::vector<FrameProperties>& frames) {
  std::vector<std::array<std::string, kFrameHeadings.size()>> rows(1);
  std::ranges::transform(kFrameHeadings, rows[0].begin(), [](const char* name) { return translated(name); });
  for (const FrameProperties& frame : frames) rows.push_back(frame_cells(frame));
  std::array<std::size_t, kFrameHeadings.size()> widths{};
  for (const auto& row : rows)
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t c = 0; c < row.size(); ++c)
      line += (c > 0 ? "  " : "") + padded(row[c], widths[c], is_number_column(c));
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace

Light canvas_light(const AnimationProperties& properties, const PropertyLimits& limits) {
  const auto limit = [](int pixels) { return static_cast<std::uint64_t>(std::clamp(pixels, 1, 65535)); };
  return traffic_light(std::max(properties.canvas.width, properties.canvas.height),
                       limit(limits.dimensionYellow), limit(limits.dimensionRed));
}

Light file_light(const AnimationProperties& properties, const PropertyLimits& limits) {
  return light_of_bytes(properties.fileSize.value_or(0), limits.fileYellow, limits.fileRed);
}

Light memory_light(const AnimationProperties& properties, const PropertyLimits& limits) {
  return light_of_bytes(properties.memory, limits.memoryYellow, limits.memoryRed);
}

std::vector<PropertyLine> property_lines(const AnimationProperties& p, const PropertyLimits& limits) {
  std::vector<PropertyLine> lines = {
      {"File name", p.name, {}},
      {"Kind", kind_name(p.kind), {}},
      {"Canvas", size_text(p.canvas), canvas_light(p, limits)},
      {"Frames", grouped(p.frames.size()), {}},
      {"Running time", time_text(p.runningTime), {}},
      {"Plays", p.plays == 0 ? translated("for ever") : grouped(p.plays), {}},
  };
  if (p.ticks) lines.push_back({"Ticks per second", grouped(*p.ticks), {}});
  lines.push_back({"Color types", joined(p.colorForms), {}});
  lines.push_back(
      {"Palette",
       p.paletteColors == 0 ? translated("none") : grouped(p.paletteColors) + translated(" colors"),
       {}});
  lines.push_back({"Memory", bytes_text(p.memory), memory_light(p, limits)});
  if (p.fileSize) lines.push_back({"File size", bytes_text(*p.fileSize), file_light(p, limits)});
  return lines;
}

std::array<std::string, kFrameHeadings.size()> frame_cells(const FrameProperties& frame) {
  return {std::to_string(frame.number),
          size_text(frame.size),
          format_text("%d, %d", frame.offset.x, frame.offset.y),
          grouped(frame.delay) + " ms",
          translated(dispose_name(frame.dispose)),
          translated(frame.over ? "Over" : "Source"),
          grouped(frame.colors),
          grouped(frame.memory)};
}

std::string properties_text(const AnimationProperties& properties, const PropertyLimits& limits) {
  std::string text;
  const auto lines = property_lines(properties, limits);
  std::size_t width = 0;
  for (const PropertyLine& line : lines) width = std::max(width, translated(line.name).size());
  for (const PropertyLine& line : lines) {
    text += padded(std::string(translated(line.name)) + ":", width + 2, false) + line.value;
    if (line.light)
      text += std::string("  [") + translated(kLightNames[static_cast<std::size_t>(*line.light)]) + "]";
    text += "\n";
  }
  return text + "\n" + table_text(properties.frames);
}

std::string properties_json(const AnimationProperties& p, const PropertyLimits& limits) {
  using Json = nlohmann::ordered_json;
  const auto name_of = [](Light light) { return kLightNames[static_cast<std::size_t>(light)]; };
  Json json;
  json["name"] = p.name;
  json["kind"] = kind_letters(p.kind);
  json["width"] = p.canvas.width;
  json["height"] = p.canvas.height;
  json["running_time_ms"] = p.runningTime;
  json["plays"] = p.plays;
  if (p.ticks) json["ticksPerSecond"] = *p.ticks;
  json["color_types"] = p.colorForms;
  json["palette_colors"] = p.paletteColors;
  json["memory"] = p.memory;
  json["file_size"] = p.fileSize ? Json(*p.fileSize) : Json();
  json["lights"] = {{"canvas", name_of(canvas_light(p, limits))},
                    {"memory", name_of(memory_light(p, limits))}};
  if (p.fileSize) json["lights"]["file"] = name_of(file_light(p, limits));
  json["frames"] = Json::array();
  for (const FrameProperties& f : p.frames)
    json["frames"].push_back({{"number", f.number},
                              {"index", f.entry + 1},
                              {"width", f.size.width},
                              {"height", f.size.height},
                              {"x", f.offset.x},
                              {"y", f.offset.y},
                              {"delay_ms", f.delay},
                              {"dispose", lower_case(dispose_name(f.dispose))},
                              {"blend", f.over ? "over" : "source"},
                              {"bits", f.bits},
                              {"colors", f.colors},
                              {"memory", f.memory}});
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace vellum
