#include "operations/reconstruct.h"

#include "core/chunk_description.h"
#include "core/document_colors.h"
#include "core/edit_closing.h"
#include "core/frame_layer.h"
#include "image/picture_operations.h"
#include "image/png_form.h"
#include "operations/frames.h"
#include "playback/compose.h"

namespace vellum {
namespace {

/// The frames as they play: with transparency as alpha, laid on the canvas by the rules of the compositor.
std::vector<FrameLayer> playing_layers(const DocumentWindow& window) {
  const FrameSource source = frame_source_of(window);
  std::vector<FrameLayer> layers;
  for (const std::size_t entry : frame_entries(window)) {
    const ChunkRecord& record = window.list.record(entry);
    FrameLayer layer = frame_layer_of(source, record);
    layer.dispose = GetFrameDispose(record, source.kind);
    layer.over = lies_over(source.kind, record);
    layers.push_back(std::move(layer));
  }
  return layers;
}

bool is_opaque(const Picture& picture) { return picture.bits() < 32 || picture_content(picture).opaque; }

/// 24 bits, over the document's background, as the compositor draws them. A null one at the end where a
/// picture is lost.
std::vector<Picture> opaque_canvases(const DocumentWindow& window, Host& host) {
  const ViewValues values = view_values(window.list, window.document);
  const auto entries = frame_entries(window);
  const Progress progress(host, "Building");
  CanvasState state;
  std::vector<Picture> canvases;
  for (const std::size_t entry : entries) {
    if (host.stopped()) return {};
    canvases.push_back(compose_frame(state, values, window.list.record(entry)));
    if (!canvases.back()) return {};
    progress.step(canvases.size(), entries.size());
  }
  return canvases;
}

/// 32 bits, on a transparent ground.
std::vector<Picture> clear_canvases(const DocumentWindow& window) {
  std::vector<FrameLayer> layers = playing_layers(window);
  for (const FrameLayer& layer : layers)
    if (!layer.picture) return {};
  if (!make_whole_canvases(layers, document_size(window.list, window.document))) return {};
  std::vector<Picture> canvases;
  for (FrameLayer& layer : layers) canvases.push_back(std::move(layer.picture));
  return canvases;
}

void put_canvases(DocumentWindow& window, const std::vector<Picture>& canvases) {
  const DocumentKind kind = window.document.kind;
  const QuietList quiet(window.list);
  ChunkRecord record;
  std::size_t frame = 0;
  for (const std::size_t entry : frame_entries(window)) {
    chunk_list_get(window.list, entry, record);
    put_whole_canvas(record, kind, canvases[frame++]);
    record.description = chunk_description(record);
    chunk_list_put(window.list, entry, record);
  }
  if (kind == DocumentKind::APNG)
    put_document_colors(window, {.colorType = canvases[0].bits() == 32 ? std::uint8_t{6} : std::uint8_t{2}});
}

}  // namespace

bool is_independent(const DocumentWindow& window) {
  std::vector<FrameLayer> layers = playing_layers(window);
  for (std::size_t i = 0; i < layers.size(); ++i) {
    const bool cleared = i == 0 || layers[i - 1].dispose == 1;
    if (!layers[i].picture) return false;
    if (cleared || is_opaque(layers[i].picture)) layers[i].over = false;
  }
  return are_whole_canvases(layers, document_size(window.list, window.document));
}

bool has_transparency(const DocumentWindow& window) {
  const FrameSource source = frame_source_of(window);
  for (const std::size_t entry : frame_entries(window)) {
    const Picture picture = frame_layer_of(source, window.list.record(entry)).picture;
    if (picture && !is_opaque(picture)) return true;
  }
  return false;
}

bool reconstruct_frames(DocumentWindow& window, CanvasDepth depth, Host& host) {
  if (!is_animation(window.document.kind) || frame_entries(window).empty()) return false;
  if (depth == CanvasDepth::AsNeeded)
    depth = has_transparency(window) ? CanvasDepth::TrueColorAlpha : CanvasDepth::TrueColor;
  const auto canvases =
      depth == CanvasDepth::TrueColor ? opaque_canvases(window, host) : clear_canvases(window);
  if (canvases.empty()) return false;
  put_canvases(window, canvases);
  finish_edit(window, false);
  return true;
}

}  // namespace vellum
