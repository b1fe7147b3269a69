// GIF in: the frames of an animation, each with its own colors, as frames of a document.
#include <algorithm>
#include <unordered_map>

#include "base/limits.h"
#include "base/parallel.h"
#include "base/text.h"
#include "base/translation.h"
#include "core/build/build_animation.h"
#include "core/build/convert_records.h"
#include "core/build/frame_stream.h"
#include "core/chunks/text_chunk.h"
#include "core/edit/insertion.h"
#include "core/model/chunk_layout.h"
#include "core/settings.h"
#include "exchange/exchange_rows.h"
#include "exchange/gif_reader.h"
#include "image/picture_rows.h"
#include "image/remap.h"
#include "operations/convert_kind.h"

namespace vellum {
namespace {

constexpr Field kFields[] = {
    {.name = kKindField, .label = "Kind of document", .type = FieldType::Choice, .choices = kKindChoices},
    {.name = "comments", .label = "Comments become texts", .type = FieldType::Flag, .initial = 1},
};

void fit(std::vector<Field>& fields, const DocumentWindow&) {
  fields[0].initial = std::clamp(settings::DefaultAnimationType, 0, 2);
}

/// The part of a frame that lies on the canvas.
struct Place {
  std::uint32_t left, top, right, bottom;
  bool empty() const { return left >= right || top >= bottom; }
};

Place place_of(const GifFile& file, const GifFrame& frame) {
  return {frame.left, frame.top, std::min(frame.left + frame.width, file.width),
          std::min(frame.top + frame.height, file.height)};
}

/// What has to be known of a frame before the form of all is chosen.
struct Used {
  std::array<bool, 256> indexes{};
  bool holes = false;         ///< pixels that show what is below
  std::uint32_t missing = 0;  ///< rows
};

Used used_of(const GifFile& file, const GifFrame& frame) {
  const GifPixels pixels = gif_pixels(file, frame);
  Used used;
  used.missing = frame.height - pixels.rows;
  used.holes = used.missing > 0;
  for (std::uint32_t y = 0; y < pixels.there.size(); ++y)
    for (std::uint32_t x = 0; pixels.there[y] && x < frame.width; ++x)
      used.indexes[pixels.indexes[std::size_t{y} * frame.width + x]] = true;
  if (frame.transparent && used.indexes[*frame.transparent]) {
    used.holes = true;
    used.indexes[*frame.transparent] = false;
  }
  return used;
}

/// The form that all frames have: one palette where their colors fit in, else true color.
struct Form {
  std::uint32_t bits = 8;
  bool holes = false;  ///< entry 0 of the palette, or alpha 0, is what shows through
  Palette palette{};
  std::uint32_t colors = 0;
  std::unordered_map<Colour, std::uint8_t> entries;
};

Colour color_at(const Palette& palette, std::uint32_t count, std::size_t index) {
  // An index behind the table shows its first color.
  const std::uint8_t* color = &palette[3 * (index < count ? index : 0)];
  return make_colour(color[0], color[1], color[2]);
}

bool add_colors(Form& form, const GifFile& file, const GifFrame& frame, const Used& used) {
  Palette palette;
  const std::uint32_t count = gif_colors(file, frame, palette);
  for (std::size_t i = 0; i < 256; ++i) {
    if (!used.indexes[i]) continue;
    const Colour color = color_at(palette, count, i);
    if (form.entries.contains(color)) continue;
    if (form.colors == 256) return false;
    const std::uint8_t bytes[] = {red_of(color), green_of(color), blue_of(color)};
    std::ranges::copy(bytes, form.palette.begin() + 3 * form.colors);
    form.entries.emplace(color, static_cast<std::uint8_t>(form.colors++));
  }
  return true;
}

Form form_of(const GifFile& file, std::span<const Used> used) {
  const Place first = place_of(file, file.frames[0]);
  Form form;
  form.holes = first.left != 0 || first.top != 0 || first.right != file.width || first.bottom != file.height;
  for (std::size_t i = 0; i < used.size(); ++i)
    form.holes = form.holes || used[i].holes || place_of(file, file.frames[i]).empty();
  form.colors = form.holes ? 1 : 0;
  for (std::size_t i = 0; i < used.size(); ++i)
    if (!add_colors(form, file, file.frames[i], used[i])) {
      form.bits = form.holes ? 32 : 24;
      return form;
    }
  form.bits = picture_bits(depth_of_colors(std::max(form.colors, 2u)));
  return form;
}

/// What each index of a frame is in the form: an entry of its palette, or four bytes of a pixel. -1 where it
/// shows what is below.
std::array<std::int64_t, 256> values_of(const Form& form, const GifFile& file, const GifFrame& frame) {
  Palette palette;
  const std::uint32_t count = gif_colors(file, frame, palette);
  std::array<std::int64_t, 256> values{};
  for (std::size_t i = 0; i < 256; ++i) {
    const Colour color = color_at(palette, count, i);
    const auto entry = form.entries.find(color);
    if (form.bits > 8)
      values[i] = swap_red_and_blue(color) | 0xFF000000u;
    else
      values[i] = entry == form.entries.end() ? 0 : entry->second;
    if (frame.transparent == i) values[i] = -1;
  }
  return values;
}

void put_row(std::uint8_t* row, const std::int64_t* values, std::size_t count, std::uint32_t bits) {
  if (bits <= 8) {
    for (std::size_t x = 0; x < count; ++x)
      put_index(row, x, bits, values[x] < 0 ? 0 : static_cast<std::uint32_t>(values[x]));
    return;
  }
  const std::size_t bytes = bits / 8;
  for (std::size_t x = 0; x < count; ++x) {
    const auto pixel = values[x] < 0 ? 0 : static_cast<std::uint32_t>(values[x]);
    for (std::size_t b = 0; b < bytes; ++b) row[x * bytes + b] = static_cast<std::uint8_t>(pixel >> 8 * b);
  }
}

StreamedFrame streamed(const Form& form, const GifFile& file, std::size_t number) {
  const GifFrame& frame = file.frames[number];
  Place place = place_of(file, frame);
  const GifPixels pixels = gif_pixels(file, frame);
  const auto values = values_of(form, file, frame);
  StreamedFrame result;
  const bool nothing = place.empty();
  if (nothing) place = {0, 0, 1, 1};
  const Place canvas{0, 0, file.width, file.height}, shown = number == 0 ? canvas : place;
  result.picture = create_rows(shown.right - shown.left, shown.bottom - shown.top, &form.palette, form.bits);
  const EditRows rows(result.picture);
  if (!rows) return {};
  std::vector<std::int64_t> line(shown.right - shown.left);
  for (std::uint32_t y = shown.top; y < shown.bottom; ++y) {
    std::ranges::fill(line, -1);
    if (!nothing && y >= place.top && y < place.bottom && !pixels.there.empty() &&
        pixels.there[y - frame.top])
      for (std::uint32_t x = place.left; x < place.right; ++x)
        line[x - shown.left] =
            values[pixels.indexes[std::size_t{y - frame.top} * frame.width + (x - frame.left)]];
    put_row(rows[y - shown.top], line.data(), line.size(), form.bits);
  }
  result.offset = {static_cast<std::int32_t>(shown.left), static_cast<std::int32_t>(shown.top)};
  result.delay = frame.delay * 10;
  result.dispose = frame.disposal == 2 ? 1 : frame.disposal == 3 ? 2 : 0;
  result.over = number != 0 && form.holes;
  if (form.holes && form.bits <= 8) result.transparency = {0};
  return result;
}

/// Bytes that the pictures of the document take, one of them as large as the canvas.
std::uint64_t decoded_bytes(const GifFile& file) {
  std::uint64_t sum = std::uint64_t{file.width} * file.height * 4;
  for (const GifFrame& frame : file.frames) sum += std::uint64_t{frame.width} * frame.height * 4;
  return sum;
}

std::optional<std::vector<Used>> survey(const GifFile& file, Host& host) {
  const Progress progress(host, string_text(StringId::Loading));
  std::vector<Used> used(file.frames.size());
  const std::size_t step = 4 * parallel_width();
  for (std::size_t first = 0; first < used.size(); first += step) {
    if (host.stopped()) return std::nullopt;
    const std::size_t count = std::min(step, used.size() - first);
    parallel_for(count, [&](std::size_t i) { used[first + i] = used_of(file, file.frames[first + i]); });
    progress.step(first + count, used.size());
  }
  return used;
}

void tell_what_is_missing(const GifFile& file, std::span<const Used> used, Host& host) {
  if (!file.damage.empty()) host.add_note(translated("GIF: the file is damaged (") + file.damage + ")");
  const auto incomplete = std::ranges::count_if(used, [](const Used& frame) { return frame.missing > 0; });
  if (incomplete > 0)
    host.add_note(translated("GIF: parts of ") + std::to_string(incomplete) + translated(" of ") +
                  std::to_string(used.size()) + translated(" frames are missing"));
  if (std::ranges::any_of(file.frames, [&](const GifFrame& frame) {
        return frame.left + frame.width > file.width || frame.top + frame.height > file.height;
      }))
    host.add_note(translated("GIF: what lies beyond the canvas was cut off"));
}

void add_comments(DocumentWindow& window, const GifFile& file) {
  Insertion insertion(window, 1);
  for (const std::string& comment : file.comments) {
    std::string text = is_utf8(comment) ? comment : utf8_from_latin1(comment);
    insertion.add(record_of_text({"Comment", with_line_feeds(text)}));
  }
  insertion.flush();
  window.document.caret = 0;
  chunk_list_close_change(window.list, window.document);
}

/// One image as it lies on the canvas becomes a still.
bool make_one(DocumentWindow& window, const FrameStream& stream) {
  const StreamedFrame frame = stream.frame(0);
  return frame.picture && make_still(window, {}, frame.picture, frame.transparency);
}

bool read(DocumentWindow& window, ImportRun& run) {
  const auto file = read_gif(run.bytes);
  if (!file || file->frames.empty())
    return run.host.fail({FaultKind::Damaged, 0, -1, -1, translated("it holds no image")});
  if (const char* fault = decoding_fault(decoded_bytes(*file), file->bytes.size()))
    return run.host.fail({FaultKind::Limit, 0, -1, -1, fault});
  const auto used = survey(*file, run.host);
  if (!used) return false;
  if (std::ranges::all_of(*used, [](const Used& frame) { return frame.missing > 0; }) &&
      gif_pixels(*file, file->frames[0]).rows == 0)
    return run.host.fail({FaultKind::Damaged, 0, -1, -1, translated("its images can't be decoded")});
  const Form form = form_of(*file, *used);
  const FrameStream stream{
      {file->width, file->height}, file->frames.size(), file->plays.value_or(1), [&](std::size_t frame) {
        return streamed(form, *file, frame);
      }};
  DocumentWindow made;
  const bool still = stream.count == 1;
  if (!(still ? make_one(made, stream) : build_from_stream(made, stream, DocumentKind::APNG, run.host)))
    return run.host.stopped()
               ? false
               : run.host.fail({FaultKind::Limit, 0, -1, -1, translated("its pictures are too large")});
  tell_what_is_missing(*file, *used, run.host);
  if (run.values.number("comments") != 0) add_comments(made, *file);
  const DocumentKind kind = build_kind(static_cast<std::uint32_t>(run.values.number(kKindField)));
  if (still || kind == DocumentKind::APNG) {
    window = made;
    return true;
  }
  return convert_kind(made, window, {kind, false}, run.host);
}

bool recognizes(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kSignature = "GIF8";
  return bytes.size() > kSignature.size() && std::ranges::equal(bytes.first(kSignature.size()), kSignature);
}

bool is_animation(std::span<const std::uint8_t> bytes) {
  const auto file = read_gif(bytes);
  return file && file->frames.size() > 1;
}

constexpr std::string_view kExtensions[] = {".gif"};

}  // namespace

constinit const Importer kImportGif{
    .parameters =
        {
            .name = "import-gif",
            .title = "Import from GIF",
            .help = "A GIF as a document: frames, places, delays, transparency, plays and comments",
            .fields = kFields,
            .fit = fit,
        },
    .filter = "GIF files",
    .extensions = kExtensions,
    .recognizes = recognizes,
    .isAnimation = is_animation,
    .read = read,
};

}  // namespace vellum
