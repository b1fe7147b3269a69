// Animated PNG (APNG extension): one color type for all frames, made from their pictures.
#include <algorithm>
#include <atomic>

#include "base/byte_order.h"
#include "base/memory_budget.h"
#include "base/parallel.h"
#include "base/translation.h"
#include "core/files/png_reading.h"
#include "core/files/png_writing.h"
#include "core/files/write_png.h"
#include "core/model/first_frame.h"
#include "core/model/frame_values.h"
#include "image/picture_operations.h"
#include "image/png_encode.h"
#include "image/png_form.h"

namespace vellum {
namespace {

/// An image of the file: a frame, or the default image outside the animation.
struct FrameOut {
  ChunkHandle block;                    ///< of the picture, whose rows may be let go
  const ChunkRecord* record = nullptr;  ///< null for the default image
  KeptStream stream = {};
  /// Pinned for as long as it lives.
  Picture picture() const { return Picture(block); }
  const FrameControl* control() const { return record ? &record->frameControl : nullptr; }
};

/// What a save of an animated PNG works on.
struct Saving {
  DocumentWindow& window;
  Host& host;
  const SaveOptions& options;
  std::size_t headerEntry = kNoEntry;
  PngHeader from;  ///< the header as the list has it
  PngHeader written;
  std::vector<std::size_t> entries;   ///< of the frames
  std::vector<FrameOut> images;       ///< the IDAT first
  std::vector<std::uint8_t> palette;  ///< PLTE; empty for true color
  std::vector<std::uint8_t> table;    ///< transparency of indexed pictures, by index
  bool transparencyApplied = false;

  bool fail(const char* reason, FaultKind kind = FaultKind::Misuse) const {
    return host.fail({kind, 0, -1, -1, reason});
  }
};

std::span<const std::uint8_t> raw_of(const ChunkList& list, ChunkTag tag) {
  const std::size_t at = chunk_find_first(list, tag);
  return at == kNoEntry ? std::span<const std::uint8_t>() : raw_payload(list.record(at));
}

// ---------------------------------------------------------------------------------------- which images, in
// which order

bool collect_frames(Saving& saving) {
  const ChunkList& list = saving.window.list;
  ChunkRecord header;
  saving.headerEntry = chunk_find_header(list, saving.window.document, 0, header);
  if (saving.headerEntry == kNoEntry) return saving.fail(translated("the document has no header"));
  saving.from = saving.written = png_header_of(header);
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (!is_image_entry(DocumentKind::APNG, list.record(i).tag)) continue;
    if (!picture_of(list.record(i))) return saving.fail(translated("a frame has lost its picture"));
    saving.entries.push_back(i);
    saving.images.push_back({list.record(i).data, &list.record(i)});
  }
  return !saving.images.empty() || saving.fail(translated("there is no image in this file"));
}

/// The header holds all frames; it never cuts one.
void grow_canvas(Saving& saving) {
  for (const FrameOut& image : saving.images) {
    saving.written.width = std::max(saving.written.width, image.control()->xOffset + image.picture().width());
    saving.written.height =
        std::max(saving.written.height, image.control()->yOffset + image.picture().height());
  }
}

bool covers_canvas(const FrameOut& image, const PngHeader& header) {
  return image.control()->xOffset == 0 && image.control()->yOffset == 0 &&
         image.picture().width() == header.width && image.picture().height() == header.height;
}

/// The IDAT must cover the canvas. It is the kept default image, or the first frame where that does;
/// otherwise a default image outside the animation is made from the first frame.
bool choose_default_image(Saving& saving) {
  const Picture kept(saving.window.document.defaultImage);
  const FrameOut& first = saving.images.front();
  FrameOut image;
  if (kept && kept.width() == saving.written.width && kept.height() == saving.written.height) {
    image.block = kept.handle();
  } else if (covers_canvas(first, saving.written)) {
    return true;
  } else {
    const Picture picture = first.picture();
    image.block = PictureExtendCanvas(picture, saving.written.width, saving.written.height,
                                      static_cast<std::int32_t>(first.control()->xOffset),
                                      static_cast<std::int32_t>(first.control()->yOffset),
                                      frame_surroundings(saving.window.list, picture))
                      .handle();
    if (!image.block) return saving.fail(translated("memory is exhausted"), FaultKind::Limit);
  }
  saving.images.insert(saving.images.begin(), std::move(image));
  return true;
}

// ------------------------------------------------------------------------------------------- the one color
// type of all

std::uint32_t deepest(const std::vector<FrameOut>& images) {
  std::uint32_t bits = 0;
  for (const FrameOut& image : images) bits = std::max(bits, image.picture().bits());
  return bits;
}

/// Which indexes a picture uses.
std::array<bool, 256> used_indexes(const Picture& picture) {
  std::array<bool, 256> used{};
  const std::uint32_t bits = picture.bits(), mask = (1u << bits) - 1;
  for (std::uint32_t y = 0; y < picture.height(); ++y) {
    const std::uint8_t* row = picture.row(y);
    for (std::size_t x = 0; x < picture.width(); ++x)
      used[row[x * bits / 8] >> (8 - bits - x * bits % 8) & mask] = true;
  }
  return used;
}

/// The palette that all pictures could share: the list's (the grey table of a grey document), else the first
/// frame's; filled up from the first frame's table.
std::vector<std::uint8_t> shared_palette(const Saving& saving) {
  Palette own;
  const std::size_t own_bytes = 3 * std::size_t{PictureGetPalette(saving.images.front().picture(), own)};
  std::vector<std::uint8_t> palette(own.begin(), own.begin() + static_cast<std::ptrdiff_t>(own_bytes));
  if (saving.from.colorType != 0) {
    const auto raw = raw_of(saving.window.list, tag::PLTE);
    const std::size_t bytes = std::min<std::size_t>(raw.size() / 3 * 3, 768);
    if (bytes != 0) palette.assign(raw.begin(), raw.begin() + static_cast<std::ptrdiff_t>(bytes));
  }
  std::size_t used = 0;
  for (const FrameOut& image : saving.images)
    used = std::max<std::size_t>(used, largest_index(image.picture()) + 1);
  while (palette.size() < 3 * used) palette.push_back(own[palette.size()]);
  return palette;
}

bool agrees_with(const Picture& picture, const std::vector<std::uint8_t>& palette) {
  Palette own;
  PictureGetPalette(picture, own);
  const auto at = [&](std::size_t i) { return i < palette.size() ? palette[i] : std::uint8_t{0}; };
  const std::size_t bytes = 3 * std::size_t{picture.colours()};
  std::size_t first = 0;
  while (first < bytes && own[first] == at(first)) ++first;
  if (first == bytes) return true;  // the usual case: no pixel needs to be looked at
  const auto used = used_indexes(picture);
  for (std::size_t i = first / 3; i < picture.colours(); ++i)
    if (used[i] &&
        (own[3 * i] != at(3 * i) || own[3 * i + 1] != at(3 * i + 1) || own[3 * i + 2] != at(3 * i + 2)))
      return false;
  return true;
}

bool palette_form(Saving& saving) {
  const auto palette = shared_palette(saving);
  for (const FrameOut& image : saving.images)
    if (!agrees_with(image.picture(), palette)) return false;
  saving.palette = palette;
  const auto entries = palette.size() / 3;
  const std::uint32_t bits = deepest(saving.images);
  saving.written.colorType = 3;
  saving.written.bitDepth =
      static_cast<std::uint8_t>(entries > 16 ? 8 : std::max(bits, entries > 2 ? 4u : 1u));
  return true;
}

/// The picture in true color, with what tRNS makes transparent where `alpha` is wanted.
Picture in_true_color(const Saving& saving, const Picture& picture, bool alpha) {
  if (picture.bits() == 32) return picture;
  if (!alpha) return picture.bits() == 24 ? picture : PictureToTrueColorAlpha(picture);
  return PictureWithTransparency(picture, saving.table);
}

bool true_color_form(Saving& saving) {
  saving.table = transparency_table(raw_of(saving.window.list, tag::tRNS), saving.from);
  const bool indexed =
      std::ranges::any_of(saving.images, [](const FrameOut& i) { return i.picture().bits() <= 8; });
  const bool alpha = deepest(saving.images) == 32 || (indexed && !saving.table.empty());
  saving.transparencyApplied = alpha;
  saving.written.colorType = alpha ? 6 : 2;
  saving.written.bitDepth = 8;
  const auto raw = raw_of(saving.window.list, tag::PLTE);
  if (saving.from.colorType == 2 || saving.from.colorType == 6) saving.palette.assign(raw.begin(), raw.end());
  for (FrameOut& image : saving.images) {
    image.block = in_true_color(saving, image.picture(), alpha).handle();
    if (!image.block) return saving.fail(translated("memory is exhausted"), FaultKind::Limit);
  }
  return true;
}

/// The form that all kept streams have; null where there are none, or not of one form.
const PngHeader* stored_form(const Saving& saving) {
  const PngHeader* form = nullptr;
  for (const FrameOut& image : saving.images) {
    const KeptStream stored = stored_image_of(image.block);
    if (!stored || !stored->exact()) continue;
    const PngHeader& own = stored->header();
    if (own.interlace != saving.written.interlace ||
        (form && (form->colorType != own.colorType || form->bitDepth != own.bitDepth)))
      return nullptr;
    form = &own;
  }
  return form;
}

/// Whether the images without a stream can be told in the form, too.
bool others_fit(const Saving& saving, const PngHeader& form) {
  return std::ranges::all_of(saving.images, [&](const FrameOut& image) {
    if (stored_image_of(image.block)) return true;
    return image.picture().bits() <= 8
               ? largest_index(image.picture()) < 1u << std::min<unsigned>(form.bitDepth, 8)
               : form.colorType != 4 || picture_content(image.picture()).grey;
  });
}

/// Whether the palette is the one that greys of this depth stand for.
bool is_grey_table(const std::vector<std::uint8_t>& palette, std::uint8_t depth) {
  const Palette greys = png_grey_palette(std::min<std::uint8_t>(depth, 8));
  return palette.size() <= greys.size() && std::equal(palette.begin(), palette.end(), greys.begin());
}

/// The streams of images that nobody changed decide, where their form holds what the chosen one holds: an
/// index may have fewer bits, a sample more, grey may stay grey.
void take_stored_form(Saving& saving) {
  PngHeader& written = saving.written;
  const PngHeader* form = saving.options.keepStored ? stored_form(saving) : nullptr;
  if (!form) return;
  const bool indexed = written.colorType == 3 && form->colorType == 3 &&
                       saving.palette.size() <= std::size_t{3} << form->bitDepth;
  const bool grey = written.colorType == 3 && form->colorType == 0 && saving.from.colorType == 0 &&
                    is_grey_table(saving.palette, form->bitDepth);
  const bool same = written.colorType == form->colorType && written.colorType != 3;
  const bool grey_alpha = written.colorType == 6 && form->colorType == 4;
  if (!(indexed || grey || same || grey_alpha) || !others_fit(saving, *form)) return;
  if (grey) saving.palette.clear();
  written.colorType = form->colorType;
  written.bitDepth = form->bitDepth;
}

bool choose_form(Saving& saving) {
  if (!(deepest(saving.images) <= 8 && palette_form(saving)) && !true_color_form(saving)) return false;
  take_stored_form(saving);
  return true;
}

PngHeader header_of(const Saving& saving, const FrameOut& image) {
  const Picture picture = image.picture();
  PngHeader header = saving.written;
  header.width = picture.width();
  header.height = picture.height();
  return header;
}

/// Images that are packed at a time: enough for all cores, few enough to be held packed.
std::size_t images_at_once(const Saving& saving, std::size_t first) {
  constexpr std::size_t kMost = 64, kMostBytes = std::size_t{32} << 20;
  const std::size_t left = saving.images.size() - first, fewest = std::min(left, 2 * parallel_width());
  std::size_t count = 0;
  for (std::size_t bytes = 0; count < std::min(left, kMost) && (count < fewest || bytes < kMostBytes);
       ++count)
    bytes += saving.images[first + count].block.size();
  return count;
}

bool encode_images(Saving& saving, std::size_t first, std::size_t count) {
  std::atomic<bool> failed = false;
  parallel_for(count, [&](std::size_t k) {
    FrameOut& image = saving.images[first + k];
    image.stream = image_stream(header_of(saving, image), image.picture(), saving.options);
    if (!image.stream) failed = true;
  });
  return !failed;
}

// -------------------------------------------------------------------------------------------------- the
// order of chunks

/// Behind which image a chunk that is neither text nor bound to a place stands: 0 in front of all of them.
struct ChunkGroups {
  std::vector<ChunkOut> front;                 ///< in front of the first image
  std::vector<std::vector<ChunkOut>> between;  ///< in front of frame i
  std::vector<ChunkOut> back;                  ///< behind the last image
};

constexpr int kTextRank = 3, kFreeRank = 4;

/// The rank of a chunk in front of the first image.
int front_rank(ChunkTag tag) {
  if (is_text(tag)) return kTextRank;
  switch (place_of(tag, DocumentKind::APNG)) {
    case ChunkPlace::BeforePalette:
      return 0;
    case ChunkPlace::AtPalette:
      return 1;
    case ChunkPlace::BehindPalette:
      return 2;
    default:
      return kFreeRank;
  }
}

bool stands_in_front(ChunkTag tag) {
  return front_rank(tag) < kTextRank || place_of(tag, DocumentKind::APNG) == ChunkPlace::BeforeImage;
}

/// `as_listed`: texts stay where they are, and so does what stands in front where that order is a legal one.
/// Otherwise texts come in front of the images.
ChunkGroups group_chunks(std::vector<ChunkOut> chunks, const std::vector<std::size_t>& frames,
                         bool as_listed) {
  ChunkGroups groups;
  groups.between.resize(frames.size());
  for (ChunkOut& chunk : chunks) {
    const auto frame =
        static_cast<std::size_t>(std::ranges::lower_bound(frames, chunk.entry) - frames.begin());
    if (frame == 0 || stands_in_front(chunk.tag) || (is_text(chunk.tag) && !as_listed))
      groups.front.push_back(std::move(chunk));
    else if (frame < frames.size() && is_safe_to_copy(chunk.tag))
      groups.between[frame].push_back(std::move(chunk));
    else
      groups.back.push_back(std::move(chunk));
  }
  const auto rank = [](const ChunkOut& chunk) { return front_rank(chunk.tag); };
  std::vector<int> bound;
  for (const ChunkOut& chunk : groups.front)
    if (rank(chunk) < kTextRank) bound.push_back(rank(chunk));
  if (!as_listed || !std::ranges::is_sorted(bound)) std::ranges::stable_sort(groups.front, {}, rank);
  return groups;
}

/// The animation control: behind the header, or where the list has it.
void put_animation_control(const ChunkList& list, std::size_t frames, bool as_listed, ChunkGroups& groups) {
  ChunkRecord control;
  const std::size_t entry = chunk_find_first(list, tag::acTL, &control);
  ChunkOut chunk{tag::acTL, std::vector<std::uint8_t>(8), entry};
  write_be32(chunk.payload.data(), static_cast<std::uint32_t>(frames));
  write_be32(chunk.payload.data() + 4, control.numPlays);
  auto place = groups.front.begin();
  if (as_listed)
    place = std::ranges::find_if(groups.front, [&](const ChunkOut& other) { return other.entry > entry; });
  groups.front.insert(place, std::move(chunk));
}

/// Whether all images go out as the streams that they came from.
bool all_stored(const Saving& saving) {
  return std::ranges::all_of(saving.images, [&](const FrameOut& image) {
    return usable_stream(header_of(saving, image), image.block, saving.options) != nullptr;
  });
}

ChunksOutRequest chunks_request(const Saving& saving) {
  ChunksOutRequest request;
  request.kind = DocumentKind::APNG;
  request.written = saving.written;
  request.from = saving.from;
  request.palette = saving.palette;
  const auto colors = raw_of(saving.window.list, tag::PLTE);
  request.fromPalette.assign(colors.begin(), colors.end());
  request.greyBecamePalette = saving.from.colorType == 0 && saving.written.colorType == 3;
  request.transparencyApplied = saving.transparencyApplied;
  request.level = saving.options.compression;
  request.keepStored = saving.options.keepStored;
  request.updateTime = saving.options.updateTime;
  return request;
}

/// A palette that no entry of the list stands for.
bool palette_is_made(const Saving& saving, const std::vector<ChunkOut>& chunks) {
  return !saving.palette.empty() && std::ranges::find(chunks, tag::PLTE, &ChunkOut::tag) == chunks.end();
}

ChunkGroups chunks_for(const Saving& saving, std::vector<std::string>& notes) {
  std::vector<ChunkOut> chunks = chunks_out(saving.window.list, chunks_request(saving), notes);
  if (!saving.options.animationTexts) std::erase_if(chunks, [](const ChunkOut& c) { return is_text(c.tag); });
  if (palette_is_made(saving, chunks))
    chunks.insert(chunks.begin(), {tag::PLTE, saving.palette, saving.headerEntry});
  const bool as_listed = all_stored(saving);
  ChunkGroups groups = group_chunks(std::move(chunks), saving.entries, as_listed);
  put_animation_control(saving.window.list, saving.entries.size(), as_listed, groups);
  return groups;
}

// ------------------------------------------------------------------------------------------------------------
// the file

bool write_frame_control(const Sink& sink, const FrameOut& image, std::uint32_t sequence) {
  const FrameControl& control = *image.control();
  std::uint8_t payload[26];
  write_be32(payload, sequence);
  write_be32(payload + 4, image.picture().width());
  write_be32(payload + 8, image.picture().height());
  write_be32(payload + 12, control.xOffset);
  write_be32(payload + 16, control.yOffset);
  write_be16(payload + 20, control.delayNum);
  write_be16(payload + 22, control.delayDen);
  payload[24] = std::min<std::uint8_t>(control.dispose, 2);
  payload[25] = std::min<std::uint8_t>(control.blend, 1);
  return write_chunk(sink, tag::fcTL, payload);
}

/// Each piece of the stream takes a sequence number.
bool write_frame_data(const Sink& sink, const FrameOut& image, std::uint32_t& sequence) {
  for (const auto piece : image.stream->pieces()) {
    std::vector<std::uint8_t> payload(4);
    write_be32(payload.data(), sequence++);
    payload.insert(payload.end(), piece.begin(), piece.end());
    if (!write_chunk(sink, tag::fdAT, payload)) return false;
  }
  return image.stream->intact();
}

/// Where the next image stands in the file.
struct WritePlace {
  std::uint32_t sequence = 0;  ///< one count over fcTL and fdAT together
  std::size_t frame = 0;
};

bool write_image(const Sink& sink, const FrameOut& image, bool is_first, const ChunkGroups& groups,
                 WritePlace& place) {
  if (image.control()) {
    if (!write_chunks(sink, groups.between[place.frame++])) return false;
    if (!write_frame_control(sink, image, place.sequence++)) return false;
  }
  return is_first ? write_image_data(sink, *image.stream) : write_frame_data(sink, image, place.sequence);
}

/// Some are packed and written, then the next: nobody holds all of them packed, but for who wants to keep
/// the streams. Nothing where one can't be packed.
std::optional<bool> write_images(const Sink& sink, Saving& saving, const ChunkGroups& groups,
                                 const Progress& progress) {
  WritePlace place;
  for (std::size_t first = 0; first < saving.images.size();) {
    const std::size_t count = images_at_once(saving, first);
    if (!encode_images(saving, first, count)) return std::nullopt;
    for (const std::size_t end = first + count; first < end; ++first) {
      FrameOut& image = saving.images[first];
      if (!write_image(sink, image, first == 0, groups, place)) return false;
      // Rows that were unpacked for this can be unpacked again.
      if (image.stream != image.block.source()) let_go(image.block);
      if (!saving.options.keepStreams) image.stream = nullptr;
    }
    progress.step(first, saving.images.size());
  }
  return true;
}

bool write_file(Saving& saving, const Sink& sink, const ChunkGroups& groups, const Progress& progress) {
  bool written = begin_png(sink, saving.written) && write_chunks(sink, groups.front);
  if (written) {
    const auto images = write_images(sink, saving, groups, progress);
    if (!images) return saving.fail(translated("an image can't be compressed"), FaultKind::Limit);
    written = *images && write_chunks(sink, groups.back) && write_chunk(sink, tag::IEND, {}) && sink.finish();
  }
  return written || saving.fail(write_fault(sink).c_str(), FaultKind::Limit);
}

/// The entries in their order; the default image in front of them has none.
void keep_streams(const Saving& saving) {
  const std::size_t others = saving.images.size() - saving.entries.size();
  for (std::size_t i = 0; i < saving.entries.size(); ++i)
    keep_stream(saving.window.list, saving.entries[i], saving.images[others + i].stream);
}

}  // namespace

WriteResult write_apng(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host) {
  const Progress progress(host, string_text(StringId::Writing));
  Saving saving{window, host, options, kNoEntry, {}, {}, {}, {}, {}, {}, false};
  if (!collect_frames(saving)) return WriteResult::Failed;
  grow_canvas(saving);
  if (!choose_default_image(saving) || !choose_form(saving)) return WriteResult::Failed;
  std::vector<std::string> notes;
  const ChunkGroups groups = chunks_for(saving, notes);
  if (!write_file(saving, sink, groups, progress)) return WriteResult::Failed;
  std::vector<ChunkOut> all = groups.front;
  all.insert(all.end(), groups.back.begin(), groups.back.end());
  for (const auto& chunks : groups.between) all.insert(all.end(), chunks.begin(), chunks.end());
  take_over_written(window, all);
  if (options.keepStreams) keep_streams(saving);
  tell_notes(host, notes);
  return WriteResult::Done;
}

}  // namespace vellum
