#include "core/files/write_mng.h"

#include <algorithm>
#include <atomic>

#include "base/byte_order.h"
#include "base/memory_budget.h"
#include "base/parallel.h"
#include "base/translation.h"
#include "core/chunks/chunk_payload.h"
#include "core/chunks/chunk_policy.h"
#include "core/chunks/compressed_text.h"
#include "core/chunks/identity_comment.h"
#include "core/files/mng_stored.h"
#include "core/files/png_reading.h"
#include "core/files/png_writing.h"
#include "core/model/chunk_description.h"
#include "core/model/framing.h"
#include "core/model/loops.h"
#include "image/png_form.h"

namespace vellum {
namespace {

/// An image entry in the form in which it is written.
struct ImageOut {
  std::size_t entry;
  PngForm form;
  KeptStream stream;
  std::vector<std::uint8_t> palette{}, background{}, transparency{};  ///< empty: not written
};

// ---------------------------------------------------------------------------------------------------------
// the images

/// The PLTE of an image: its own colors, filled up from the picture's table as far as pixels reach; none for
/// greys.
std::vector<std::uint8_t> palette_of(const ChunkRecord& record, const PngForm& form) {
  const std::uint8_t type = form.header.colorType;
  const bool own = record.flags & CRF_PLTE;
  if (type == 0 || type == 4 || (type != 3 && !own)) return {};
  const auto& stored = record.image->palette;
  const std::size_t bytes =
      own ? std::min<std::size_t>(record.image->paletteBytes / 3 * 3, stored.size()) : 0;
  std::vector<std::uint8_t> palette(stored.begin(), stored.begin() + static_cast<std::ptrdiff_t>(bytes));
  if (type != 3) return palette;
  Palette table;
  const std::size_t colors = PictureGetPalette(form.picture, table);
  const std::size_t used = own ? largest_index(form.picture) + std::size_t{1} : colors;
  while (palette.size() < 3 * used) palette.push_back(table[palette.size()]);
  palette.resize(std::min(palette.size(), std::size_t{3} << form.header.bitDepth));
  return palette;
}

/// bKGD and tRNS of an image, as long as the color type wants them; empty where they do not fit it.
std::vector<std::uint8_t> fitted(const ChunkRecord& record, ChunkTag tag, const PngContext& context,
                                 Mending& mending) {
  const EmbeddedImage& image = *record.image;
  std::vector<std::uint8_t> payload;
  if (tag == tag::bKGD) {
    const std::size_t length = context.colorType == 3 ? 1 : context.colorType % 4 == 0 ? 2 : 6;
    payload.assign(image.background.begin(), image.background.begin() + static_cast<std::ptrdiff_t>(length));
  } else {
    std::size_t length = std::min<std::size_t>(image.transBytes, image.trans.size());
    if (context.colorType == 3) length = std::min<std::size_t>(length, context.paletteEntries);
    payload.assign(image.trans.begin(), image.trans.begin() + static_cast<std::ptrdiff_t>(length));
  }
  mending = mend_chunk(tag, payload, context, DocumentKind::PING);
  if (mending == Mending::LeftOut) payload.clear();
  return payload;
}

/// The chunks beside the image data, made to fit the form.
void complete_image(const ChunkRecord& record, ImageOut& image, std::vector<std::string>& notes) {
  image.palette = palette_of(record, image.form);
  const PngHeader& header = image.form.header;
  const PngContext context{header.bitDepth, header.colorType,
                           static_cast<std::uint32_t>(image.palette.size() / 3)};
  const auto take = [&](RecordFlag flag, ChunkTag tag, std::vector<std::uint8_t>& payload) {
    if (!(record.flags & flag)) return;
    Mending mending = Mending::Good;
    payload = fitted(record, tag, context, mending);
    if (mending != Mending::Good) notes.push_back(mending_note(mending, tag, image.entry));
  };
  take(CRF_BKGD, tag::bKGD, image.background);
  take(CRF_TRNS, tag::tRNS, image.transparency);
}

std::optional<std::array<std::uint16_t, 3>> deep_key(const ChunkRecord& record) {
  const EmbeddedImage& image = *record.image;
  const std::size_t samples = record.colorType == 0 ? 1 : record.colorType == 2 ? 3 : 0;
  if (record.bitDepth != 16 || !(record.flags & CRF_TRNS) || samples == 0 || image.transBytes != 2 * samples)
    return std::nullopt;
  std::array<std::uint16_t, 3> key{};
  for (std::size_t i = 0; i < samples; ++i) key[i] = read_be16(&image.trans[2 * i]);
  return key;
}

std::vector<ImageOut> image_entries(const ChunkList& list) {
  std::vector<ImageOut> images;
  for (std::size_t i = 0; i < list.size(); ++i)
    if (list.record(i).tag == tag::PNGI) images.push_back({i, {}, {}, {}, {}, {}});
  return images;
}

/// Fits and encodes an image; the reason of a failure, or null.
const char* encode_image(const ChunkRecord& record, ImageOut& image, const SaveOptions& options) {
  const Picture picture = picture_of(record);
  if (!picture) return translated("an image has lost its picture");
  const std::uint32_t entries = record.flags & CRF_PLTE ? record.image->paletteBytes / 3 : 0;
  image.form = png_form(picture, png_header_of(record), entries);
  if (image.form.picture)
    image.stream = image_stream(image.form.header, image.form.picture, options, deep_key(record));
  return image.stream ? nullptr : translated("an image can't be compressed");
}

bool write_optional(const Sink& sink, ChunkTag tag, std::span<const std::uint8_t> payload) {
  return payload.empty() || write_chunk(sink, tag, payload);
}

/// Which of the two blocks are in force where the writer stands: they hold for every later image.
struct InForce {
  bool framing = false, definition = false;
};

/// The blocks in front of an image: its own, or, where one of an earlier image is in force, one that says
/// nothing.
std::vector<std::uint8_t> framing_out(const ChunkRecord& record, InForce& force) {
  if (record.flags & CRF_FRAM) {
    force.framing = true;
    return framing_payload(record.image->framBlock);
  }
  if (!force.framing) return {};
  FramBlock block;
  block.framingMode = block.changeDelay = 1;
  return framing_payload(block);
}

std::vector<std::uint8_t> definition_out(const ChunkRecord& record, InForce& force) {
  if (record.flags & CRF_DEFI) {
    force.definition = true;
    return definition_payload(record.image->defiBlock, record.image->defiBytes);
  }
  if (!force.definition) return {};
  DefiBlock block;
  block.concreteFlag = 1;
  return definition_payload(block, 12);
}

bool write_image(const Sink& sink, const ChunkRecord& record, const ImageOut& image, InForce& force) {
  return write_optional(sink, tag::FRAM, framing_out(record, force)) &&
         write_optional(sink, tag::DEFI, definition_out(record, force)) &&
         write_chunk(sink, tag::IHDR, png_header_payload(image.form.header)) &&
         write_optional(sink, tag::PLTE, image.palette) &&
         write_optional(sink, tag::bKGD, image.background) &&
         write_optional(sink, tag::tRNS, image.transparency) && write_image_data(sink, *image.stream) &&
         write_chunk(sink, tag::IEND, {});
}

// -----------------------------------------------------------------------------------------------------------
// the file

/// The bytes that the image came with, where its record and its stream still say what they say.
std::shared_ptr<const StoredMngImage> stored_bytes(const ChunkRecord& record, const ImageOut& image) {
  if (image.stream != record.data.source() || !image.stream->context()) return nullptr;
  const auto stored = std::static_pointer_cast<const StoredMngImage>(image.stream->context());
  const bool same = record.flags == stored->flags && image.form.header == stored->header &&
                    *record.image == *stored->fields;
  return same ? stored : nullptr;
}

/// What a save of an MNG works on.
struct Saving {
  const ChunkList& list;
  const SaveOptions& options;
  const Progress& progress;
  std::vector<std::string>& notes;
  std::vector<ImageOut> images;
  std::vector<ChunkOut> others;  ///< payloads of all entries but headers and images, in list order
  std::size_t encoded = 0;       ///< of the images
  const char* reason = nullptr;  ///< of a failure that isn't the sink's
};

/// Encodes the next images side by side: a number of them at a time, so that nobody holds all.
bool encode_some(Saving& saving) {
  constexpr std::size_t kMost = 64, kMostBytes = std::size_t{32} << 20;
  const std::size_t first = saving.encoded;
  for (std::size_t bytes = 0; saving.encoded < saving.images.size() && saving.encoded < first + kMost &&
                              (bytes < kMostBytes || saving.encoded < first + parallel_width());
       ++saving.encoded)
    bytes += saving.list.record(saving.images[saving.encoded].entry).data.size();
  std::atomic<const char*> reason = nullptr;
  parallel_for(saving.encoded - first, [&](std::size_t k) {
    ImageOut& image = saving.images[first + k];
    if (reason) return;
    if (const char* why = encode_image(saving.list.record(image.entry), image, saving.options)) reason = why;
  });
  saving.reason = reason;
  if (reason) return false;
  for (std::size_t i = first; i < saving.encoded; ++i)
    complete_image(saving.list.record(saving.images[i].entry), saving.images[i], saving.notes);
  saving.progress.step(saving.images[saving.encoded - 1].entry, saving.list.size());
  return true;
}

/// Lets go what an image that was written needs no more.
void release(const Saving& saving, ImageOut& image) {
  const ChunkHandle& block = saving.list.record(image.entry).data;
  const bool made = image.stream != block.source();
  image.form.picture = {};
  if (!saving.options.keepStreams) image.stream = nullptr;
  if (made) let_go(block);
}

/// Writes entries, images as their file held them while nothing in front of them is another than there.
class EntryWriter {
 public:
  EntryWriter(const Sink& sink, Saving& saving) : sink_(sink), saving_(saving) {}

  bool write() {
    auto other = saving_.others.begin();
    for (std::size_t image = 0; image <= saving_.images.size(); ++image) {
      const bool end = image == saving_.images.size();
      const std::size_t entry = end ? saving_.list.size() : saving_.images[image].entry;
      const auto next = std::find_if(other, saving_.others.end(),
                                     [entry](const ChunkOut& chunk) { return chunk.entry > entry; });
      const std::span<const ChunkOut> in_front(other, next);
      if (end) return write_end(in_front);
      if (image == saving_.encoded && !encode_some(saving_)) return false;
      if (!write_image_entry(saving_.images[image], in_front)) return false;
      release(saving_, saving_.images[image]);
      other = next;
    }
    return true;
  }

 private:
  bool write_others(std::span<const ChunkOut> others) {
    for (const ChunkOut& other : others) {
      force_.framing |= other.tag == tag::FRAM;
      force_.definition |= other.tag == tag::DEFI;
      if (!write_chunk(sink_, other.tag, other.payload)) return false;
    }
    return true;
  }

  /// `in_front`: the entries between the image before and this one.
  bool write_image_entry(const ImageOut& image, std::span<const ChunkOut> in_front) {
    const ChunkRecord& record = saving_.list.record(image.entry);
    auto stored = stored_bytes(record, image);
    const bool in_place = stored && (first_ ? stored->first : last_ && stored->before.lock() == last_) &&
                          ends_with_texts(in_front, *stored);
    first_ = false;
    last_ = in_place ? std::move(stored) : nullptr;
    if (!last_) return write_others(in_front) && write_image(sink_, record, image, force_);
    if (!write_others(in_front.first(in_front.size() - last_->texts.size()))) return false;
    force_.framing |= (record.flags & CRF_FRAM) != 0;
    force_.definition |= (record.flags & CRF_DEFI) != 0;
    return sink_.write(last_->front) && sink_.write(last_->image) && image.stream->intact();
  }

  /// Whether the entries of the chunks inside the image stand where they were put.
  bool ends_with_texts(std::span<const ChunkOut> in_front, const StoredMngImage& stored) const {
    if (in_front.size() < stored.texts.size()) return false;
    return std::ranges::equal(in_front.last(stored.texts.size()), stored.texts,
                              [&](const ChunkOut& chunk, const ChunkHandle& text) {
                                const ChunkRecord& record = saving_.list.record(chunk.entry);
                                return record.tag == tag::zTXt && record.data.shares_with(text) &&
                                       chunk.payload == compressed_text_payload(record, 0, true);
                              });
  }

  bool write_end(std::span<const ChunkOut> others) {
    if (last_ && !others.empty() && others.front().tag == tag::MEND && !sink_.write(last_->behind))
      return false;
    return write_others(others);
  }

  const Sink& sink_;
  Saving& saving_;
  InForce force_;
  bool first_ = true;
  std::shared_ptr<const StoredMngImage> last_;
};

bool write_file(const Sink& sink, Saving& saving, const ChunkRecord& header, Host& host) {
  const SaveOptions& options = saving.options;
  const auto comment =
      options.identify ? identity_comment(saving.list, options.identificationFile) : std::nullopt;
  const bool written = sink.write(kMngSignature) &&
                       write_chunk(sink, tag::MHDR, mng_header_payload(header)) &&
                       (!comment || write_chunk(sink, comment->tag, comment->payload)) &&
                       EntryWriter(sink, saving).write() && sink.finish();
  return written ||
         host.fail({FaultKind::Limit, 0, -1, -1, saving.reason ? saving.reason : write_fault(sink)});
}

/// The chunks of a JNG or a delta image go out as they came.
std::vector<ChunkOut> other_entries(const ChunkList& list, const SaveOptions& options,
                                    std::vector<std::string>& notes) {
  std::vector<ChunkOut> others;
  bool opaque = false;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    if (record.tag == tag::MHDR || record.tag == tag::PNGI) continue;
    ChunkOut chunk{record.tag,
                   plain_payload(record, options.compression, options.updateTime, options.keepStored), i};
    opaque = record.tag != tag::IEND && (opaque || begins_opaque_image(record.tag));
    if (!opaque) {
      const Mending mending = mend_chunk(chunk.tag, chunk.payload, {}, DocumentKind::MING);
      if (mending != Mending::Good) notes.push_back(mending_note(mending, chunk.tag, i));
      if (mending == Mending::LeftOut) continue;
    }
    others.push_back(std::move(chunk));
  }
  return others;
}

}  // namespace

WriteResult write_mng(DocumentWindow& window, const Sink& sink, const SaveOptions& options, Host& host) {
  ChunkRecord header;
  if (chunk_find_first(window.list, tag::MHDR, &header) == kNoEntry) {
    host.fail({FaultKind::Misuse, 0, -1, -1, translated("the document has no header")});
    return WriteResult::Failed;
  }
  const Progress progress(host, string_text(StringId::Writing));
  std::vector<std::string> notes;
  std::vector<ChunkOut> others = other_entries(window.list, options, notes);
  Saving saving{window.list, options, progress, notes, image_entries(window.list), std::move(others)};
  if (!write_file(sink, saving, header, host)) return WriteResult::Failed;
  take_over_written(window, saving.others);
  for (const ImageOut& image : saving.images) {
    if (options.keepStreams) keep_stream(window.list, image.entry, image.stream);
    take_over_header(window, image.entry, image.form.header);
  }
  if (!loops_match(window.list)) notes.emplace_back(translated("LOOP and ENDL chunks do not match"));
  tell_notes(host, notes);
  return WriteResult::Done;
}

}  // namespace vellum
