// GIF out: all frames in one palette, with one transparent index and no partial alpha.
#include "exchange/export_gif.h"

#include <algorithm>
#include <array>

#include "base/byte_order.h"
#include "base/parallel.h"
#include "base/translation.h"
#include "core/build/frame_stream.h"
#include "core/model/frame_values.h"
#include "exchange/exchange_rows.h"
#include "exchange/gif_palette.h"
#include "exchange/settings.h"
#include "image/picture_operations.h"
#include "image/picture_rows.h"
#include "image/remap.h"
#include "image/to_colors.h"
#include "operations/frames.h"
#include "operations/reconstruct.h"

namespace vellum {
namespace {

constexpr Field kFields[] = {
    {.name = "dither", .label = "Dither", .type = FieldType::Flag, .setting = &settings::GIFDither},
    {.name = "threshold",
     .label = "Transparency threshold",
     .least = 0,
     .most = 255,
     .tip = "Pixels whose alpha is not above it become transparent",
     .initial = 128,
     .setting = &settings::GIFTransparency},
    {.name = "maskColor",
     .label = "Transparency mask color",
     .type = FieldType::Color,
     .most = 0xFFFFFF,
     .tip = "What programs show that know no transparency",
     .initial = 0xFFFFFF,
     .setting = &settings::GIFMaskColor},
    {.name = "optimize",
     .label = "Optimize",
     .type = FieldType::Flag,
     .tip = "Frames are cut to what changes; the file becomes smaller",
     .setting = &settings::GIFOptimize},
    {.name = "best",
     .label = "Best colors",
     .type = FieldType::Flag,
     .tip = "A computed palette is moved to where the colors are; this takes a moment longer",
     .setting = &settings::GIFBest},
};

GifOptions options_of(const FieldValues& values) {
  return {values.number("dither") != 0, static_cast<std::uint32_t>(values.number("threshold")),
          static_cast<Colour>(values.number("maskColor")), values.number("best") != 0};
}

/// What a frame of an animated PNG asks of the others, that a GIF with one palette can't do.
bool builds_on_others(const DocumentWindow& window) {
  for (const std::size_t entry : frame_entries(window)) {
    const FrameControl& control = window.list.record(entry).frameControl;
    if (control.blend != 0 || control.dispose != 0) return true;
  }
  return false;
}

bool prepare(ExportRun& run) {
  const DocumentWindow& window = run.source;
  if (window.document.kind != DocumentKind::APNG || (!builds_on_others(window) && !has_transparency(window)))
    return true;
  const StringId id = StringId::GifReconstructQuestion;
  const Message question{id, {}, std::string(string_text(id)), {}, nullptr};
  if (run.host.ask && run.host.ask(question, false) != Answer::Yes) return false;
  return reconstruct_frames(run.draft, CanvasDepth::AsNeeded, run.host) || run.host.stopped() ||
         run.refuse(StringId::MemoryError);
}

/// What a frame has, that the palette depends on.
struct Look {
  std::uint32_t bits = 0;
  std::uint32_t entries = 0;  ///< used ones, up to the last
  std::array<bool, 256> used{};
  Palette palette{};
  std::optional<std::uint8_t> key;  ///< the one entry that counts as transparent
  bool masked = false;              ///< has transparent pixels
  bool single = true;               ///< and all of them are of the key
  bool partial = false;             ///< has alpha that a GIF loses
};

void look_at_indexes(Look& look, const StreamedFrame& frame, std::uint32_t threshold) {
  const Picture& picture = frame.picture;
  PictureGetPalette(picture, look.palette);
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for_each_index_run(picture.row(y), picture.width(), look.bits,
                       [&](std::size_t, const std::uint8_t* indexes, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) look.used[indexes[i]] = true;
                       });
  for (std::size_t i = 0; i < 256; ++i)
    if (look.used[i]) look.entries = static_cast<std::uint32_t>(i + 1);
  const auto& table = frame.transparency;
  for (std::size_t i = 0; i < std::min<std::size_t>(table.size(), 256); ++i) {
    if (table[i] < threshold) {
      look.single = look.single && !look.key;
      look.key = static_cast<std::uint8_t>(i);
    }
    if (!look.used[i]) continue;
    look.masked = look.masked || table[i] <= threshold;
    look.single = look.single && (table[i] > threshold || look.key == i);
    look.partial = look.partial || (table[i] > 0 && table[i] < 255);
  }
}

void look_at_alpha(Look& look, const Picture& picture, std::uint32_t threshold) {
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* pixels = picture.row(y);
    std::uint32_t least = 255, partial = 0;
    for (std::size_t x = 0, width = picture.width(); x < width; ++x) {
      const std::uint32_t alpha = read_le32(pixels + 4 * x) >> 24;
      least = std::min(least, alpha);
      partial |= (alpha + 1) & 0xFE;
    }
    look.masked = look.masked || least <= threshold;
    look.partial = look.partial || partial != 0;
  }
}

Look look_at(const StreamedFrame& frame, std::uint32_t threshold) {
  Look look;
  if (!has_rows(frame.picture)) return look;
  look.bits = frame.picture.bits();
  if (look.bits <= 8) {
    look_at_indexes(look, frame, threshold);
  } else if (look.bits == 32) {
    look_at_alpha(look, frame.picture, threshold);
  } else if (frame.transparency.size() >= 6) {
    look_at_alpha(look, PictureWithTransparency(frame.picture, frame.transparency), threshold);
  }
  return look;
}

/// The palette that all frames share as they are; nothing where they don't.
std::optional<GifColors> shared_colors_of(std::span<const Look> looks) {
  GifColors colors;
  std::array<bool, 256> known{};
  for (const Look& look : looks) {
    if (look.bits > 8 || !look.single) return std::nullopt;
    if (look.key && colors.transparent.value_or(*look.key) != *look.key) return std::nullopt;
    if (look.key) colors.transparent = look.key;
    colors.count = std::max(colors.count, look.entries);
    for (std::size_t i = 0; i < look.entries; ++i) {
      if (!look.used[i]) continue;
      const auto own = look.palette.begin() + static_cast<std::ptrdiff_t>(3 * i);
      const auto common = colors.palette.begin() + static_cast<std::ptrdiff_t>(3 * i);
      const bool hidden = look.key == i;
      if (known[i] && !hidden && !std::equal(own, own + 3, common)) return std::nullopt;
      if (!hidden || !known[i]) std::copy_n(own, 3, common);
      known[i] = known[i] || !hidden;
    }
  }
  if (std::ranges::none_of(looks, &Look::masked)) colors.transparent.reset();
  return colors;
}

/// 24 or 32 bits, for a palette and for matching.
Picture true_color_of(const StreamedFrame& frame, const GifOptions& options) {
  const bool ready = frame.picture.bits() == 32 || (frame.picture.bits() == 24 && frame.transparency.empty());
  return ready ? frame.picture : with_sharp_alpha(frame.picture, frame.transparency, options.threshold);
}

/// How many frames are taken at a time; each core takes neighbours, for they are alike.
std::size_t frames_at_a_time() { return 8 * parallel_width(); }

/// One palette for frames that have none in common. Nothing when the user stopped it, or a picture is lost.
std::optional<GifColors> computed_colors(const FrameStream& stream, bool masked, const GifOptions& options,
                                         Host& host) {
  const Progress progress(host, translated(kQuantizing));
  GifPalette palette(options.threshold);
  for (std::size_t first = 0; first < stream.count; first += frames_at_a_time()) {
    if (host.stopped()) return std::nullopt;
    std::vector<Picture> pictures(std::min(frames_at_a_time(), stream.count - first));
    for (std::size_t i = 0; i < pictures.size(); ++i)
      pictures[i] = true_color_of(stream.frame(first + i), options);
    palette.add(pictures);
    progress.step(first + pictures.size(), stream.count);
  }
  return palette.colors(masked, options.mask, options.best);
}

/// All that the frames are written with.
struct Plan {
  FrameStream stream;
  std::vector<Look> looks;
  GifColors colors;
  bool shared = false;  ///< the frames' own indexes are those of the palette
  std::uint8_t background = 0;
  GifOptions options;
};

/// The part of a frame that lies on the screen, in the frame; empty where none does.
PictureRect part_on_screen(const Plan& plan, const Picture& picture, FrameOffset offset) {
  const std::int64_t x = offset.x, y = offset.y;
  const std::int64_t left = std::max<std::int64_t>(-x, 0), top = std::max<std::int64_t>(-y, 0),
                     right = std::min<std::int64_t>(picture.width(), plan.stream.canvas.width - x),
                     bottom = std::min<std::int64_t>(picture.height(), plan.stream.canvas.height - y);
  if (left >= right || top >= bottom) return {};
  return {static_cast<std::int32_t>(left), static_cast<std::int32_t>(top), static_cast<std::int32_t>(right),
          static_cast<std::int32_t>(bottom)};
}

Picture cropped(const Picture& picture, const PictureRect& part) {
  const bool whole = part.right - part.left == static_cast<std::int32_t>(picture.width()) &&
                     part.bottom - part.top == static_cast<std::int32_t>(picture.height());
  return whole ? picture : PictureCrop(picture, part);
}

/// Whether the place of a frame is empty when the next one is drawn.
bool is_disposed(const ExportRun& run, const Plan& plan, const std::vector<std::size_t>& entries,
                 std::size_t frame) {
  const DocumentKind kind = run.draft.document.kind;
  if (GetFrameDispose(run.draft.list.record(entries[frame]), kind) == 1) return true;
  // Frames that are whole pictures replace each other; through the holes of one nothing older may show.
  return kind != DocumentKind::MING && frame + 1 < plan.looks.size() && plan.looks[frame + 1].masked;
}

/// What one core writes: frames as blocks, each with its control extension.
class FrameBlocks {
 public:
  FrameBlocks(const ExportRun& run, const Plan& plan, const std::vector<std::size_t>& entries)
      : run_(run), plan_(plan), entries_(entries) {
    if (!plan.shared && GifMatcher::can_match(plan.colors))
      matcher_.emplace(plan.colors, plan.options.threshold, plan.options.dither);
  }

  /// Empty when memory is exhausted.
  Bytes of(std::size_t number) {
    const StreamedFrame frame = plan_.stream.frame(number);
    const PictureRect part = part_on_screen(plan_, frame.picture, frame.offset);
    const bool outside = part.left == part.right;
    GifImage image;
    image.delay = gif_delay(frame.delay);
    image.packed = 7;
    if (is_disposed(run_, plan_, entries_, number)) image.disposal = GifDisposal::Background;
    if (plan_.looks[number].masked || outside) image.transparent = plan_.colors.transparent;
    if (outside) {
      // One pixel that shows nothing new, so that the delay stays.
      own_.assign(1, plan_.colors.transparent.value_or(plan_.background));
      image.width = image.height = 1;
      image.indexes = own_;
    } else {
      image.left = static_cast<std::uint32_t>(frame.offset.x + part.left);
      image.top = static_cast<std::uint32_t>(frame.offset.y + part.top);
      image.width = static_cast<std::uint32_t>(part.right - part.left);
      image.height = static_cast<std::uint32_t>(part.bottom - part.top);
      image.indexes = indexes(frame, part);
      if (image.indexes.empty()) return {};
    }
    Bytes bytes;
    put_gif_image(bytes, image, table_bits(plan_.colors.count));
    return bytes;
  }

 private:
  std::span<const std::uint8_t> indexes(const StreamedFrame& frame, const PictureRect& part) {
    Picture picture = plan_.shared ? frame.picture : true_color_of(frame, plan_.options);
    if (picture) picture = cropped(picture, part);
    if (!picture) return {};
    if (matcher_) return matcher_->match(picture);
    if (!plan_.shared)
      picture = in_gif_colors(with_sharp_alpha(picture, {}, plan_.options.threshold), plan_.colors,
                              plan_.options.dither);
    if (!picture) return {};
    return own_ = indexes_of(picture);
  }

  const ExportRun& run_;
  const Plan& plan_;
  const std::vector<std::size_t>& entries_;
  std::optional<GifMatcher> matcher_;
  std::vector<std::uint8_t> own_;
};

bool write_frames(ExportRun& run, const Plan& plan, const Sink& sink) {
  const Progress progress(run.host, string_text(StringId::Writing));
  const auto entries = frame_entries(run.draft);
  std::vector<FrameBlocks> lanes;
  for (std::size_t lane = 0; lane < parallel_width(); ++lane) lanes.emplace_back(run, plan, entries);
  for (std::size_t first = 0; first < plan.stream.count; first += frames_at_a_time()) {
    if (run.host.stopped()) return false;
    std::vector<Bytes> parts(std::min(frames_at_a_time(), plan.stream.count - first));
    const std::size_t share = (parts.size() + lanes.size() - 1) / lanes.size();
    parallel_for(lanes.size(), [&](std::size_t lane) {
      for (std::size_t i = lane * share; i < std::min((lane + 1) * share, parts.size()); ++i)
        parts[i] = lanes[lane].of(first + i);
    });
    for (const Bytes& part : parts) {
      if (part.empty()) return run.refuse(StringId::MemoryError);
      if (!sink.write(part)) return false;
    }
    progress.step(first + parts.size(), plan.stream.count);
  }
  return sink.write({&kGifTrailer, 1});
}

bool write_plain(ExportRun& run, const GifOptions& options, const Sink& sink) {
  Plan plan{.stream = stored_frames(run.draft), .looks = {}, .colors = {}, .options = options};
  plan.looks.resize(plan.stream.count);
  parallel_for(plan.looks.size(),
               [&](std::size_t i) { plan.looks[i] = look_at(plan.stream.frame(i), options.threshold); });
  if (std::ranges::any_of(plan.looks, [](const Look& look) { return look.bits == 0; }))
    return run.refuse(StringId::ErrorAccessingChunk);
  const bool masked = std::ranges::any_of(plan.looks, &Look::masked);
  auto colors = shared_colors_of(plan.looks);
  plan.shared = colors.has_value();
  if (!colors) colors = computed_colors(plan.stream, masked, options, run.host);
  if (!colors) return false;
  plan.colors = *colors;
  if (std::ranges::any_of(plan.looks, &Look::partial))
    run.host.warn(StringId::GifTransparencyLost, settings::WarnGifTransparency);
  plan.background = gif_background(run.source, options.mask, plan.colors);
  return sink.write(gif_beginning(run, options, plan.colors)) && write_frames(run, plan, sink);
}

bool write(ExportRun& run, const FieldValues& values, const Sink& sink) {
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  if (canvas.width > kMostGif || canvas.height > kMostGif)
    return run.host.fail(
        {FaultKind::Limit, 0, -1, -1, translated("a GIF has at most 65535 pixels in each direction")});
  const GifOptions options = options_of(values);
  return values.number("optimize") != 0 ? write_optimized_gif(run, options, sink)
                                        : write_plain(run, options, sink);
}

}  // namespace

std::uint32_t gif_delay(std::uint32_t milliseconds) { return std::clamp(milliseconds / 10, 1u, kMostGif); }

std::uint8_t gif_background(const DocumentWindow& window, Colour mask, const GifColors& colors) {
  const bool told = chunk_find_first(window.list, tag::bKGD) != kNoEntry ||
                    chunk_find_first(window.list, tag::BACK) != kNoEntry;
  const Colour color = told ? document_background(window.list, window.document) : mask;
  return static_cast<std::uint8_t>(NearestPaletteIndex(red_of(color), green_of(color), blue_of(color),
                                                       colors.palette, std::max(colors.count, 1u)));
}

Bytes gif_beginning(const ExportRun& run, const GifOptions& options, const GifColors& colors) {
  const Extent canvas = document_size(run.draft.list, run.draft.document);
  Bytes bytes;
  put_gif_head(bytes, canvas.width, canvas.height, colors, gif_background(run.source, options.mask, colors));
  const std::uint32_t plays = GetIterations(run.source.list, run.source.document);
  if (plays != 1) put_gif_plays(bytes, plays > kMostGif ? 0 : plays);
  return bytes;
}

std::vector<std::uint8_t> indexes_of(const Picture& picture) {
  std::vector<std::uint8_t> indexes(std::size_t{picture.width()} * picture.height());
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    unpack_indices(indexes.data() + std::size_t{y} * picture.width(), picture.row(y), 0, picture.width(),
                   picture.bits());
  return indexes;
}

Picture in_gif_colors(const Picture& picture, const GifColors& colors, bool dither) {
  GivenColors given{colors.palette, colors.count};
  if (colors.transparent) {
    given.alpha.assign(*colors.transparent + std::size_t{1}, 255);
    given.alpha.back() = 0;
  }
  return to_colors(picture, given, dither);
}

constinit const Exporter kExportGif{
    .parameters =
        {
            .name = "gif",
            .title = "Export to GIF",
            .help = "An animation as a GIF",
            .command = 122,
            .kinds = kAnimatedKinds,
            .fields = kFields,
        },
    .filter = "GIF files",
    .extension = ".gif",
    .prepare = prepare,
    .write = write,
};

}  // namespace vellum
