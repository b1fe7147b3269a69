// What there is to say about an animation: its size, its times, what its pictures take, and whether that is
// much.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "base/host.h"
#include "core/files/save_options.h"
#include "core/model/frame_values.h"

namespace vellum {

struct FrameProperties {
  std::size_t number = 0;  ///< among the frames, from 1
  std::size_t entry = 0;   ///< index in the list
  Extent size;
  FrameOffset offset;
  std::uint32_t delay = 0;  ///< milliseconds
  std::uint32_t dispose = 0;
  bool over = false;
  std::uint32_t bits = 0;    ///< of a pixel; 0 where the picture is lost
  std::uint64_t colors = 0;  ///< that its pixels can have
  std::uint64_t memory = 0;  ///< bytes of its picture
};

struct AnimationProperties {
  std::string name;
  DocumentKind kind = DocumentKind::None;
  Extent canvas;
  std::vector<FrameProperties> frames;
  std::uint64_t runningTime = 0;        ///< milliseconds of one pass, loops not counted
  std::uint32_t plays = 0;              ///< 0 for ever
  std::optional<std::uint32_t> ticks;   ///< to a second, of an MNG
  std::vector<std::string> colorForms;  ///< "8 bits, palette", the shallowest first
  std::uint32_t paletteColors = 0;      ///< of the document's PLTE; 0 without one
  std::uint64_t memory = 0;             ///< bytes of all pictures; those that frames share count once
  std::optional<std::uint64_t> fileSize;
};

/// All but the file's size.
AnimationProperties animation_properties(const DocumentWindow& window);

/// Bytes of the document's file on the disk; nothing for one that was never saved.
std::optional<std::uint64_t> size_on_disk(const Document& document);
/// Bytes that the document would have as a file: it is written, to nowhere. Nothing where it can't be
/// written, or the host wants to stop. May run beside others that read the document's records.
std::optional<std::uint64_t> size_when_written(const DocumentWindow& window, const SaveOptions& options,
                                               Host& host);

enum class FrameColumn { Number, Size, Delay, Colors, Memory };
inline constexpr std::array kFrameColumns = {"Number", "Size", "Delay", "Colors", "Memory"};
/// The column of a number; those out of range mean Number.
FrameColumn frame_column(int index);
/// Rising; equal ones by their number. Size is that of the area.
void sort_frames(std::vector<FrameProperties>& frames, FrameColumn column);

enum class Light { Green, Yellow, Red };
inline constexpr std::array kLightNames = {"green", "yellow", "red"};
/// Up to `yellow` is green, up to `red` yellow.
Light traffic_light(std::uint64_t value, std::uint64_t yellow, std::uint64_t red);

/// Where lights change: the larger side of the canvas in pixels, file and memory in KB of 1024 bytes.
struct PropertyLimits {
  int dimensionYellow = 640, dimensionRed = 1024;
  int fileYellow = 512, fileRed = 2048;
  int memoryYellow = 16384, memoryRed = 65536;
};
Light canvas_light(const AnimationProperties& properties, const PropertyLimits& limits);
Light file_light(const AnimationProperties& properties, const PropertyLimits& limits);
Light memory_light(const AnimationProperties& properties, const PropertyLimits& limits);

/// Names and values for people, a light where one belongs to it.
struct PropertyLine {
  std::string name, value;
  std::optional<Light> light;
};
std::vector<PropertyLine> property_lines(const AnimationProperties& properties, const PropertyLimits& limits);
/// The cells of a frame's row under `kFrameHeadings`.
inline constexpr std::array kFrameHeadings = {"Number",  "Size",  "Position", "Delay",
                                              "Dispose", "Blend", "Colors",   "Memory"};
std::array<std::string, kFrameHeadings.size()> frame_cells(const FrameProperties& frame);

/// Lines and frames as plain text, with aligned columns; as JSON.
std::string properties_text(const AnimationProperties& properties, const PropertyLimits& limits);
std::string properties_json(const AnimationProperties& properties, const PropertyLimits& limits);

}  // namespace vellum
