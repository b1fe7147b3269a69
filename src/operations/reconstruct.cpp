#include "operations/reconstruct.h"

#include <algorithm>

#include "base/translation.h"
#include "core/edit/document_colors.h"
#include "core/edit/edit_closing.h"
#include "core/edit/frame_layer.h"
#include "core/model/chunk_description.h"
#include "core/model/compose.h"
#include "core/model/frame_time.h"
#include "core/model/record_picture.h"
#include "image/fine_canvas.h"
#include "image/picture_operations.h"
#include "image/png_form.h"
#include "operations/frame_pictures.h"
#include "operations/frames.h"
#include "operations/operation_rows.h"
#include "operations/settings.h"
#include "playback/compositor.h"

namespace vellum {
namespace {

bool is_opaque(const Picture& picture) { return picture.bits() < 32 || picture_content(picture).opaque; }

using TakeCanvas = std::function<bool(std::size_t, const Picture&)>;

/// 24 bits, over the document's background, as the compositor draws them.
bool opaque_canvases(const DocumentWindow& window, Host& host, const TakeCanvas& take) {
  const ViewValues values = view_values(window.list, window.document);
  const auto entries = frame_entries(window);
  const Progress progress(host, string_text(StringId::BuildingCaption));
  CanvasState state;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (host.stopped()) return false;
    const Picture canvas = compose_frame(state, values, window.list.record(entries[i]));
    if (!canvas) return false;
    if (!take(i, canvas)) return true;
    progress.step(i + 1, entries.size());
  }
  return true;
}

/// 32 bits, on a transparent ground.
bool clear_canvases(const DocumentWindow& window, Host& host, const TakeCanvas& take) {
  const auto entries = frame_entries(window);
  const Progress progress(host, string_text(StringId::BuildingCaption));
  StraightCanvases canvases(window);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Picture canvas = host.stopped() ? Picture() : canvases.next(window.list.record(entries[i]));
    if (!canvas) return false;
    if (!take(i, canvas)) return true;
    progress.step(i + 1, entries.size());
  }
  return true;
}

CanvasDepth settled(const DocumentWindow& window, CanvasDepth depth) {
  if (depth != CanvasDepth::AsNeeded) return depth;
  return has_transparency(window) ? CanvasDepth::TrueColorAlpha : CanvasDepth::TrueColor;
}

/// All canvases; none when they are too large together, or something failed.
std::vector<HeldPicture> canvases_of(const DocumentWindow& window, CanvasDepth depth, Host& host) {
  const std::size_t count = frame_entries(window).size();
  std::vector<HeldPicture> canvases;
  if (!canvases_fit(count, document_size(window.list, window.document))) {
    host.fail({FaultKind::Limit, 0, -1, -1, translated("the frames are too large together")});
    return {};
  }
  const bool whole = for_each_canvas(window, depth, host, [&](std::size_t, const Picture& canvas) {
    canvases.push_back(hold_picture(canvas));
    return true;
  });
  return whole ? canvases : std::vector<HeldPicture>();
}

void put_canvases(DocumentWindow& window, const std::vector<HeldPicture>& canvases,
                  const DocumentColors& colors) {
  const DocumentKind kind = window.document.kind;
  ChunkRecord record;
  std::size_t frame = 0;
  for (const std::size_t entry : frame_entries(window)) {
    chunk_list_get(window.list, entry, record);
    const Picture canvas = canvases[frame++].picture();
    record_take_picture(record, kind, canvas);
    if (kind == DocumentKind::MING) put_image_transparency(record, colors.transparency);
    put_whole_canvas(record, kind, canvas, canvas.bits() == 32 || !colors.transparency.empty());
    record.description = chunk_description(record);
    chunk_list_put(window.list, entry, record);
  }
  if (kind == DocumentKind::APNG) put_document_colors(window, colors);
}

bool is_same(const Picture& a, const Picture& b) {
  const ChunkHandle &first = a.handle(), &second = b.handle();
  return first.size() == second.size() &&
         std::equal(first.data(), first.data() + first.size(), second.data());
}

bool merge_equal_frames(DocumentWindow& window) {
  const DocumentKind kind = window.document.kind;
  const std::uint32_t ticks = ticks_per_second(window.list);
  std::vector<bool> gone(window.list.size());
  std::size_t kept = kNoEntry;
  ChunkRecord record;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& here = window.list.record(i);
    if (here.tag == tag::LOOP || here.tag == tag::ENDL || here.tag == tag::TERM) kept = kNoEntry;
    if (!is_image_entry(kind, here.tag)) continue;
    const bool same = kept != kNoEntry && is_same(picture_of(here), picture_of(window.list.record(kept)));
    if (!same || !chunk_list_get(window.list, kept, record) || !add_frame_time(record, here, kind, ticks)) {
      kept = i;
      continue;
    }
    record.description = chunk_description(record);
    chunk_list_put(window.list, kept, record);
    gone[i] = true;
  }
  const bool any = std::ranges::find(gone, true) != gone.end();
  window.list.remove_marked(gone);
  return any;
}

constexpr FieldChoice kDepths[] = {
    {static_cast<int>(CanvasDepth::AsNeeded), "As needed"},
    {static_cast<int>(CanvasDepth::TrueColor), "True color", "24"},
    {static_cast<int>(CanvasDepth::TrueColorAlpha), "True color with alpha", "32"}};

constexpr Field kFields[] = {
    {.name = "depth", .label = "Depth", .type = FieldType::Choice, .choices = kDepths, .stateId = 1},
    {.name = "mergeEqual",
     .label = "Merge equal frames",
     .type = FieldType::Flag,
     .tip = "Frames that show the same become one that is shown as long",
     .stateId = 2},
};

CanvasDepth depth_of(const FieldValues& values) { return static_cast<CanvasDepth>(values.number("depth")); }

Picture preview_shown(Compositor& playing, std::uint32_t frame, const FieldValues& values, bool transparent) {
  const bool clear = depth_of(values) != CanvasDepth::TrueColor && transparent;
  playing.set_ground({clear ? Ground::Kind::Clear : Ground::Kind::Document});
  const Picture canvas = playing.frame(frame).picture;
  return clear && canvas.bits() == 32 ? straight_picture({canvas, {}}) : canvas;
}

bool run(OperationRun& run) {
  return reconstruct_frames(run.draft, depth_of(run.values), run.host, run.number("mergeEqual") != 0);
}

}  // namespace

bool is_independent(const DocumentWindow& window) {
  // Nobody needs the rows of all frames at a time.
  const auto without_rows = [](const Picture& picture) {
    return PictureCreateHeaderOnly(picture.width(), picture.height(), nullptr, picture.bits());
  };
  const FrameSource source = frame_source_of(window);
  std::vector<FrameLayer> layers;
  for (const std::size_t entry : frame_entries(window)) {
    layers.push_back(frame_layer_of(source, window.list.record(entry)));
    if (!layers.back().picture) return false;
    if (is_opaque(layers.back().picture)) layers.back().over = false;
    layers.back().picture = without_rows(layers.back().picture);
  }
  const Extent canvas = document_size(window.list, window.document);
  settle_clearing(layers, canvas);
  return are_whole_canvases(layers, canvas);
}

bool has_transparency(const DocumentWindow& window) {
  const FrameSource source = frame_source_of(window);
  for (const std::size_t entry : frame_entries(window)) {
    const Picture picture = frame_layer_of(source, window.list.record(entry)).picture;
    if (picture && !is_opaque(picture)) return true;
  }
  return false;
}

bool for_each_canvas(const DocumentWindow& window, CanvasDepth depth, Host& host, const TakeCanvas& take) {
  return settled(window, depth) == CanvasDepth::TrueColor ? opaque_canvases(window, host, take)
                                                          : clear_canvases(window, host, take);
}

bool reconstruct_frames(DocumentWindow& window, CanvasDepth depth, Host& host, bool merge_equal) {
  if (!is_animation(window.document.kind) || frame_entries(window).empty()) return false;
  std::vector<HeldPicture> canvases = canvases_of(window, depth, host);
  if (canvases.empty()) return false;
  DocumentColors colors{.colorType = canvases[0].picture().bits() == 32 ? std::uint8_t{6} : std::uint8_t{2}};
  const bool indexed = depth == CanvasDepth::AsNeeded && window.document.kind != DocumentKind::WEBP;
  if (const auto shared = indexed ? shared_colors(window) : std::nullopt)
    if (auto in_palette = in_colors(canvases, *shared); !in_palette.empty()) {
      canvases = std::move(in_palette);
      colors = *shared;
    }
  const QuietList quiet(window.list);
  put_canvases(window, canvases, colors);
  const bool merged = merge_equal && merge_equal_frames(window);
  finish_edit(window, merged);
  return true;
}

constinit const Operation kReconstruct{
    .parameters = {.name = "reconstruct",
                   .title = "Reconstruct",
                   .help = "Make each image the whole frame that it shows",
                   .command = 316,
                   .kinds = kAnimatedKinds,
                   .stateFile = "ReconstructState.txt",
                   .fields = kFields},
    .question = StringId::ReconstructQuestion,
    .asks = &settings::WarnReconstruct,
    .result = OperationResult::NewWindow,
    .prefix = StringId::ReconstructedPrefix,
    .batch = 5,
    .batchPrefix = "Reconstruct_",
    .preview = OperationPreview::Reduced,
    .previewShown = preview_shown,
    .run = run,
};

}  // namespace vellum
