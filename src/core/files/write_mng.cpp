#include "core/files/write_mng.h"

#include <algorithm>
#include <atomic>

#include "base/byte_order.h"
#include "base/parallel.h"
#include "base/translation.h"
#include "core/chunks/chunk_payload.h"
#include "core/chunks/chunk_policy.h"
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

/// Fits and encodes the images side by side; the reason of a failure, or null.
const char* encode_images(const ChunkList& list, std::vector<ImageOut>& images, const SaveOptions& options,
                          const Progress& progress) {
  constexpr std::size_t kAtOnce = 64;  // images between two steps of the progress bar
  std::atomic<const char*> reason = nullptr;
  for (std::size_t first = 0; first < images.size() && !reason; first += kAtOnce) {
    const std::size_t count = std::min(kAtOnce, images.size() - first);
    parallel_for(count, [&](std::size_t k) {
      ImageOut& image = images[first + k];
      const ChunkRecord& record = list.record(image.entry);
      const Picture picture = picture_of(record);
      if (!picture) {
        reason = translated("an image has lost its picture");
        return;
      }
      const std::uint32_t entries = record.flags & CRF_PLTE ? record.image->paletteBytes / 3 : 0;
      image.form = png_form(picture, png_header_of(record), entries);
      if (image.form.picture)
        image.stream = image_stream(image.form.header, image.form.picture, options, deep_key(record));
      if (!image.stream) reason = translated("an image can't be compressed");
    });
    progress.step(images[first + count - 1].entry, list.size());
  }
  return reason;
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

/// Writes images, as their file held them while nothing in front of them is another than there.
class ImageWriter {
 public:
  bool write(const Sink& sink, const ChunkRecord& record, const ImageOut& image, InForce& force) {
    const auto stored = stored_bytes(record, image);
    const bool in_place = stored && (first_ ? stored->first : last_ && stored->before.lock() == last_);
    first_ = false;
    last_ = in_place ? stored : nullptr;
    if (!in_place) return write_image(sink, record, image, force);
    force.framing |= (record.flags & CRF_FRAM) != 0;
    force.definition |= (record.flags & CRF_DEFI) != 0;
    return sink.write(stored->front) && sink.write(stored->image) && image.stream->intact();
  }

 private:
  bool first_ = true;
  std::shared_ptr<const StoredMngImage> last_;
};

/// What a save of an MNG works on.
struct Saving {
  const ChunkList& list;
  std::vector<ImageOut> images;
  std::vector<ChunkOut> others;  ///< payloads of all entries but headers and images, in list order
};

bool write_entries(const Sink& sink, const Saving& saving) {
  auto image = saving.images.begin();
  auto other = saving.others.begin();
  InForce force;
  ImageWriter writer;
  for (std::size_t i = 0; i < saving.list.size(); ++i) {
    bool good = true;
    if (image != saving.images.end() && image->entry == i)
      good = writer.write(sink, saving.list.record(i), *image++, force);
    else if (other != saving.others.end() && other->entry == i) {
      force.framing |= other->tag == tag::FRAM;
      force.definition |= other->tag == tag::DEFI;
      good = write_chunk(sink, other->tag, other->payload);
      ++other;
    }
    if (!good) return false;
  }
  return true;
}

bool write_file(const Sink& sink, const Saving& saving, const ChunkRecord& header, const SaveOptions& options,
                Host& host) {
  const auto comment =
      options.identify ? identity_comment(saving.list, options.identificationFile) : std::nullopt;
  const bool written = sink.write(kMngSignature) &&
                       write_chunk(sink, tag::MHDR, mng_header_payload(header)) &&
                       (!comment || write_chunk(sink, comment->tag, comment->payload)) &&
                       write_entries(sink, saving) && sink.finish();
  return written || host.fail({FaultKind::Limit, 0, -1, -1, write_fault(sink)});
}

/// The chunks of a JNG or a delta image go out as they came.
std::vector<ChunkOut> other_entries(const ChunkList& list, const SaveOptions& options,
                                    std::vector<std::string>& notes) {
  std::vector<ChunkOut> others;
  bool opaque = false;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const ChunkRecord& record = list.record(i);
    if (record.tag == tag::MHDR || record.tag == tag::PNGI) continue;
    ChunkOut chunk{record.tag, plain_payload(record, options.compression, options.updateTime), i};
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
  Saving saving{window.list, image_entries(window.list), other_entries(window.list, options, notes)};
  if (const char* reason = encode_images(window.list, saving.images, options, progress)) {
    host.fail({FaultKind::Limit, 0, -1, -1, reason});
    return WriteResult::Failed;
  }
  for (ImageOut& image : saving.images) complete_image(window.list.record(image.entry), image, notes);
  if (!write_file(sink, saving, header, options, host)) return WriteResult::Failed;
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
