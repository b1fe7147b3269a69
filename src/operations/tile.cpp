// Tile: each frame repeated over a canvas of a given size.
#include <algorithm>
#include <cstring>

#include "base/limits.h"
#include "core/edit/edit_closing.h"
#include "image/picture_rows.h"
#include "image/webp_container.h"
#include "operations/change_pictures.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr Field side(const char* name, const char* label, std::int64_t initial, int& setting) {
  return {.name = name,
          .label = label,
          .least = 1,
          .most = kMostWebpPixels,
          .initial = initial,
          .setting = &setting};
}

constexpr Field kFields[] = {
    side("width", "Width", 320, settings::TileAnimationWidth),
    side("height", "Height", 240, settings::TileAnimationDepth),
};

constexpr const char* kSides[] = {"width", "height"};
constexpr CompoundOption kOptions[] = {{.name = "size",
                                        .form = "WxH",
                                        .help = "The size of the canvas in pixels",
                                        .fields = kSides,
                                        .parting = 'x'}};

unsigned needs(const DocumentWindow&, const FieldValues&, const FrameList&) { return kWholeCanvases; }

std::optional<FieldFault> check(const FieldValues& values, const DocumentWindow&) {
  const auto bytes = static_cast<std::uint64_t>(values.number("width") * values.number("height")) * 4;
  if (bytes <= kMaximumPictureBytes) return std::nullopt;
  return fault_of("width", StringId::ResultTooLarge);
}

/// The source's first row, repeated: whole bytes are copied in growing runs, packed pixels in runs of a row.
void repeat_row(std::uint8_t* out, std::uint32_t width, const std::uint8_t* in, std::uint32_t period,
                std::uint32_t bits) {
  for (std::uint32_t x = 0; x < width; x += period)
    copy_pixels(out, x, in, 0, std::min(period, width - x), bits);
}

Picture tiled(const Picture& picture, std::uint32_t width, std::uint32_t height) {
  const Palette palette = palette_of(picture);
  Picture result = create_rows(width, height, &palette, picture.bits());
  const EditRows rows(result);
  if (!rows) return {};
  const std::uint32_t period = picture.height();
  for (std::uint32_t y = 0; y < std::min(height, period); ++y)
    repeat_row(rows[y], width, picture.row(y), picture.width(), picture.bits());
  for (std::uint32_t y = period; y < height; ++y) std::memcpy(rows[y], rows[y - period], rows.stride);
  return result;
}

bool run(OperationRun& run) {
  const auto width = static_cast<std::uint32_t>(run.number("width")),
             height = static_cast<std::uint32_t>(run.number("height"));
  const auto tile = [&](FrameWork& work) {
    work.picture = tiled(work.picture, width, height);
    work.offset = {};
    return static_cast<bool>(work.picture);
  };
  if (!change_pictures(run.draft, all_frames(frame_entries(run.draft).size()),
                       string_text(StringId::BuildingCaption), run.host, tile))
    return false;
  finish_edit(run.draft, false);
  return true;
}

}  // namespace

constinit const Operation kTile{
    .parameters =
        {
            .name = "tile",
            .title = "Tile",
            .help = "Each frame repeated over a canvas of another size",
            .command = 323,
            .kinds = kAnimatedKinds,
            .fields = kFields,
            .options = kOptions,
            .check = check,
        },
    .result = OperationResult::NewWindow,
    .prefix = StringId::TiledPrefix,
    .batch = 10,
    .batchPrefix = "Tile_",
    .preview = OperationPreview::Full,
    .needs = needs,
    .run = run,
};

}  // namespace vellum
