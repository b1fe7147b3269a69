#include "operations/build_stills.h"

#include <algorithm>

#include "base/parallel.h"
#include "base/text.h"
#include "core/build/build_animation.h"
#include "core/edit/picture_fitting.h"
#include "core/files/first_picture.h"
#include "core/files/open_document.h"
#include "core/model/chunk_layout.h"
#include "core/model/kind_table.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "operations/changed_parts.h"
#include "operations/extract_frames.h"
#include "operations/frames.h"
#include "operations/manage_frames.h"

namespace vellum {
namespace {

Extent largest(std::span<const Picture> pictures) {
  Extent canvas;
  for (const Picture& picture : pictures)
    canvas = {std::max(canvas.width, picture.width()), std::max(canvas.height, picture.height())};
  return canvas;
}

bool fills(const Picture& picture, Extent canvas) {
  return picture.width() == canvas.width && picture.height() == canvas.height;
}

/// The first frame of an animation makes its canvas: around a smaller one it is transparent.
Picture on_canvas(const Picture& picture, Extent canvas) {
  if (fills(picture, canvas)) return picture;
  const Picture deep = picture.bits() == 32 ? picture : PictureToTrueColorAlpha(picture);
  return PictureExtendCanvas(deep, canvas.width, canvas.height, 0, 0, 0);
}

/// WebP gets true color, with the colors that the table of a 1-bit picture has.
Picture for_kind(const Picture& picture, DocumentKind kind) {
  return kind == DocumentKind::WEBP && picture.bits() <= 8 ? opaque_true_color(picture) : picture;
}

/// The frames as the document gets them.
std::vector<FrameLayer> layers_of(std::span<const Picture> pictures, const StillsBuild& build) {
  const Extent canvas = largest(pictures);
  const bool same_size =
      std::ranges::all_of(pictures, [&](const Picture& picture) { return fills(picture, canvas); });
  const bool same_depth = std::ranges::all_of(
      pictures, [&](const Picture& picture) { return picture.bits() == pictures[0].bits(); });
  const bool clear = !same_size || !same_depth || pictures[0].bits() == 32;
  std::vector<FrameLayer> layers(pictures.size());
  if (build.kind == DocumentKind::APNG && !build.whole && same_size && same_depth && pictures[0].bits() > 8) {
    layers[0].picture = pictures[0];
    parallel_for(layers.size() - 1,
                 [&](std::size_t i) { layers[i + 1] = changed_part(pictures[i], pictures[i + 1]); });
    return layers;
  }
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    // Frames of a WebP replace what is there.
    const bool whole = i == 0 || build.kind == DocumentKind::WEBP;
    layers[i].picture = for_kind(whole ? on_canvas(pictures[i], canvas) : pictures[i], build.kind);
    layers[i].dispose = clear && build.kind != DocumentKind::WEBP ? 1 : 0;
  }
  return layers;
}

bool add_all(DocumentWindow& window, std::span<const Picture> pictures, const StillsBuild& build,
             Host& host) {
  const Progress progress(host, string_text(StringId::BuildingCaption));
  const std::vector<FrameLayer> layers = layers_of(pictures, build);
  for (std::size_t i = 0; i < layers.size(); ++i) {
    const FrameLayer& layer = layers[i];
    const AddFrameOptions options{kFrameDispose | kFrameBlend | kFrameTransparency, layer.dispose,
                                  layer.over ? 1u : 0u, 0, layer.dispose == 1};
    if (host.stopped() || AddFrame(window, layer.picture, -1, nullptr, build.delay, layer.offset.x,
                                   layer.offset.y, static_cast<std::uint32_t>(i), &options) == 0)
      return false;
    progress.step(i + 1, layers.size());
  }
  return true;
}

}  // namespace

GraphicReading read_still(const std::filesystem::path& file) {
  const GraphicReading header = read_graphic_file(file.string(), Part::Header);
  const bool is_document =
      header.module ? header.module->extension == "png" : has_extension_of(file, DocumentKind::MING);
  if (!is_document) return read_graphic_file(file.string());
  // As a document it has its transparency; what can't be opened as one may still be shown in part.
  DocumentWindow window;
  Host nobody;
  if (open_document(window, file, nobody))
    if (const auto entries = frame_entries(window); !entries.empty())
      return {own_picture(window, entries.front()), {}, {}};
  return first_picture(file);
}

bool build_from_stills(DocumentWindow& window, std::span<const Picture> pictures, const StillsBuild& build,
                       Host& host) {
  const auto number = build_number(build.kind);
  if (!number || pictures.empty() || !std::ranges::all_of(pictures, has_rows)) return false;
  DocumentWindow made;
  made.document.fileName = window.document.fileName;
  const std::int32_t iterations = iterations_for(build.kind, build.plays == 0);
  const bool whole = BeginAnimation(made, iterations, 0, *number) && add_all(made, pictures, build, host) &&
                     EndAnimation(made, iterations);
  if (!whole) return false;
  if (build.plays > 1) set_document_plays(made, build.plays);
  window.document = made.document;
  window.list = made.list;
  chunk_list_close_change(window.list, window.document);
  return true;
}

}  // namespace vellum
