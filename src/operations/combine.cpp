#include "operations/combine.h"

#include <algorithm>
#include <new>

#include "base/limits.h"
#include "core/build/frame_stream.h"
#include "core/edit/frame_layer.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "image/lay.h"
#include "image/picture_operations.h"
#include "operations/frames.h"
#include "operations/places.h"
#include "operations/reconstruct.h"
#include "operations/second_file.h"
#include "operations/settings.h"

namespace vellum {
namespace {

constexpr Field kFields[] = {
    {.name = "background",
     .label = "Background",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .tip = "Around what is smaller than the canvas, where no file has transparency",
     .initial = 0xFFFFFF,
     .setting = &settings::CombineBackground},
    place_field(kCenterPlace),
    {.name = "loop",
     .label = "Loop",
     .type = FieldType::Flag,
     .most = 1,
     .initial = 1,
     .setting = &settings::CombineLoop},
    {.name = "reconstruct",
     .label = "Whole canvases",
     .type = FieldType::Flag,
     .most = 1,
     .tip = "Frames that build on each other become what they show",
     .initial = 1,
     .setting = &settings::CombineReconstruct},
};

/// One file: its frames, and where the first of them stands among all.
struct Part {
  std::unique_ptr<DocumentWindow> window;
  FrameStream frames;
  std::size_t first = 0;
  bool whole = true;  ///< its frames are canvases
};

struct Parts {
  std::vector<Part> parts;
  Extent canvas;
  std::size_t count = 0;
  bool clear = false;
  Colour background = 0;
  std::int64_t place = 0;
};

/// A still as a stream of one frame.
FrameStream still_frame(const DocumentWindow& window) {
  FrameStream stream{document_size(window.list, window.document), 1, 0, {}};
  stream.frame = [&window](std::size_t) {
    StreamedFrame frame;
    const auto entries = frame_entries(window);
    static_cast<FrameLayer&>(frame) =
        frame_layer_of(frame_source_of(window), window.list.record(entries.front()));
    frame.delay = static_cast<std::uint32_t>(std::clamp(settings::DefaultDelay, 0, 60'000));
    return frame;
  };
  return stream;
}

/// Frames that are taken away again need canvases: around them lies what their own document hasn't.
bool takes_away(const FrameStream& frames) {
  for (std::size_t i = 0; i < frames.count; ++i) {
    const StreamedFrame frame = frames.frame(i);
    if (frame.dispose != 0 || frame.clears) return true;
  }
  return false;
}

bool open_part(Parts& parts, const std::string& file, const FieldValues& values, DocumentKind kind,
               Host& host) {
  Part part{std::make_unique<DocumentWindow>(), {}, parts.count};
  DocumentWindow& window = *part.window;
  if (!open_second_file(window, file, host)) return false;
  if (frame_entries(window).empty()) {
    host.show(StringId::NoImagesHere, {}, file);
    return false;
  }
  if (!is_animation(window.document.kind)) {
    part.frames = still_frame(window);
  } else {
    const FrameStream stored = stored_frames(window);
    // Around a partial frame of a WebP nothing stays.
    part.whole = values.number("reconstruct") != 0 || kind == DocumentKind::WEBP || takes_away(stored);
    part.frames = part.whole ? canvas_frames(window) : stored;
  }
  parts.clear = parts.clear || has_transparency(window);
  parts.canvas.width = std::max(parts.canvas.width, part.frames.canvas.width);
  parts.canvas.height = std::max(parts.canvas.height, part.frames.canvas.height);
  parts.count += part.frames.count;
  parts.parts.push_back(std::move(part));
  return true;
}

/// In the form that all have.
Picture in_form(const StreamedFrame& frame, bool clear) {
  const Picture shown =
      frame.picture.bits() == 32 ? frame.picture : PictureWithTransparency(frame.picture, frame.transparency);
  return clear ? (shown.bits() == 32 ? shown : PictureToTrueColorAlpha(shown)) : PictureToTrueColor(shown);
}

StreamedFrame frame_at(const Parts& parts, std::size_t number) {
  const auto behind = std::ranges::upper_bound(parts.parts, number, {}, &Part::first);
  const Part& part = *(behind - 1);
  StreamedFrame frame = part.frames.frame(number - part.first);
  if (!frame.picture) return frame;
  const Picture picture = in_form(frame, parts.clear);
  frame.picture = picture;
  frame.transparency.clear();
  const std::int64_t x =
      frame.offset.x + place_in(parts.place % 3, parts.canvas.width, part.frames.canvas.width, 0);
  const std::int64_t y =
      frame.offset.y + place_in(parts.place / 3, parts.canvas.height, part.frames.canvas.height, 0);
  frame.offset = {static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)};
  // The first frame of a file hides the file in front of it.
  if (!picture || (!part.whole && number != part.first)) return frame;
  frame.picture = parts.clear
                      ? PictureCreateAlpha(parts.canvas.width, parts.canvas.height)
                      : PictureCreateFilled(parts.canvas.width, parts.canvas.height, parts.background);
  if (frame.picture && !lay_picture(frame.picture, x, y, picture)) frame.picture = {};
  frame.offset = {};
  frame.over = false;
  frame.clears = false;
  if (part.whole) frame.dispose = 0;
  return frame;
}

bool is_too_large(const Parts& parts, DocumentKind kind) {
  const std::int64_t most = kind_row(kind).mostPixels;
  return parts.canvas.width > most || parts.canvas.height > most || !canvases_fit(parts.count, parts.canvas);
}

}  // namespace

constinit const Parameters kCombine{
    .name = "combine",
    .title = "Combine",
    .help = "The frames of several files, one after the other, as one animation",
    .command = 117,
    .fields = kFields,
};

bool combine_files(DocumentWindow& window, const std::vector<std::string>& files, const FieldValues& values,
                   DocumentKind kind, Host& host) try {
  Parts parts;
  parts.background = static_cast<Colour>(values.number("background"));
  parts.place = values.number("at");
  const Progress progress(host, string_text(StringId::Loading));
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (host.stopped() || !open_part(parts, files[i], values, kind, host)) return false;
    progress.step(i + 1, files.size());
  }
  if (parts.parts.empty()) return false;
  if (is_too_large(parts, kind)) {
    host.show(StringId::ResultTooLarge);
    return false;
  }
  const FrameStream stream{parts.canvas, parts.count, values.number("loop") != 0 ? 0u : 1u,
                           [&parts](std::size_t frame) { return frame_at(parts, frame); }};
  if (build_from_stream(window, stream, kind, host)) return true;
  std::string reason = host.take_fault();
  if (!host.stopped()) host.show(StringId::ErrorAccessingChunk, {}, std::move(reason));
  return false;
} catch (const std::bad_alloc&) {
  host.show(StringId::MemoryError);
  return false;
}

}  // namespace vellum
