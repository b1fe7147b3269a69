#include "core/files/read_mng.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "base/byte_order.h"
#include "base/crc.h"
#include "base/limits.h"
#include "base/parallel.h"
#include "base/translation.h"
#include "core/chunks/compressed_text.h"
#include "core/files/mng_stored.h"
#include "core/files/png_reading.h"
#include "core/model/chunk_layout.h"
#include "core/model/framing.h"
#include "core/settings.h"
#include "image/chunk_stream.h"
#include "image/stored_image.h"

namespace vellum {
namespace {

constexpr std::size_t kHeaderBytes = 28;

/// An embedded PNG between its IHDR and its IEND.
struct OpenImage {
  const StreamChunk* header;
  ChunkRecord record;
  PngHeader fields;
  Palette palette{};
  std::vector<std::span<const std::uint8_t>> data;
  std::vector<ChunkHandle> texts{};  ///< of chunks inside it that became entries, in front of it
  std::shared_ptr<StoredMngImage> stored = nullptr;
};

/// What becomes an entry: a record, and for an image what it is decoded from.
struct Item {
  ChunkRecord record;
  const StreamChunk* chunk;
  std::unique_ptr<OpenImage> image;  ///< null for everything else
};

/// A file that is being read.
struct MngReading {
  DocumentWindow& window;
  Host& host;
  std::span<const StreamChunk> chunks;
  std::size_t fileBytes = 0;
  std::shared_ptr<const FileContent> owner;     ///< of the bytes of the file; may be null
  UncheckedImages* unchecked = nullptr;         ///< takes the images, where it isn't null
  std::vector<const StreamChunk*> wrongCrcs{};  ///< chunks, in their order
  std::vector<Item> items{};
  std::unique_ptr<OpenImage> open{};
  bool opaque = false;  ///< inside a JNG or delta image, whose chunks stay raw

  // Blocks that stay in force for every later image until another replaces them.
  FramBlock framing{};
  DefiBlock definition{};
  std::uint32_t definitionBytes = 0;
  bool hasFraming = false, hasDefinition = false;
  std::vector<const StreamChunk*> unused{};  ///< FRAM and DEFI that no image has met yet

  Palette lastPalette{};  ///< of the last PLTE, wherever it stood
  std::uint32_t lastPaletteBytes = 0;
  CopyOnWrite<EmbeddedImage> lastImage{};      ///< of the image that ended last
  std::weak_ptr<StoredMngImage> lastStored{};  ///< the same; empty where its bytes can't be written again
  std::size_t images = 0;
  std::size_t textBudget = kMaximumTextBytesOfFile;
  std::set<ChunkTag> dropped{};  ///< what stood inside images and is not kept

  bool fail(const StreamChunk& chunk, const char* reason, FaultKind kind = FaultKind::Damaged) const {
    return host.fail({kind, chunk.tag, static_cast<std::int64_t>(items.size()),
                      static_cast<std::int64_t>(chunk.offset), reason});
  }
  bool is_right(const StreamChunk& chunk) const { return !std::ranges::binary_search(wrongCrcs, &chunk); }
  bool add(ChunkRecord record, const StreamChunk& chunk) {
    items.push_back({std::move(record), &chunk, nullptr});
    return items.size() <= kMaximumEntries ||
           fail(chunk, translated("the file has too many chunks"), FaultKind::Limit);
  }
};

ChunkRecord raw_record(const StreamChunk& chunk) {
  ChunkRecord record;
  record.tag = chunk.tag;
  record.size = static_cast<std::int32_t>(chunk.data.size());
  record.data = ChunkHandle::copy_of(chunk.data);
  return record;
}

bool take_header(MngReading& reading) {
  const StreamChunk& chunk = reading.chunks.front();
  if (chunk.tag != tag::MHDR) return reading.fail(chunk, translated("the first chunk is no header"));
  if (chunk.data.size() < kHeaderBytes)
    return reading.fail(chunk, translated("the length is not that of a header"));
  if (chunk.storedCrc != chunk_crc(chunk.tag, chunk.data.first(kHeaderBytes)))
    warn_of_crc(reading.host, chunk);
  ChunkRecord record;
  record.tag = tag::MHDR;
  record.size = static_cast<std::int32_t>(chunk.data.size());
  std::uint32_t* const fields[] = {&record.frameWidth,       &record.frameHeight, &record.ticksPerSecond,
                                   &record.layerCount,       &record.frameCount,  &record.playTime,
                                   &record.simplicityProfile};
  for (std::size_t i = 0; i < std::size(fields); ++i) *fields[i] = read_be32(&chunk.data[4 * i]);
  if (std::max(record.frameWidth, record.frameHeight) > kMaximumDimension)
    return reading.fail(chunk, translated("the image is too large"), FaultKind::Limit);
  // Nothing is made of it here, but whoever plays or converts the document makes a canvas of this size.
  const std::uint64_t canvas = std::uint64_t{record.frameWidth} * record.frameHeight * kPlayedPixelBytes;
  if (const char* fault = decoding_fault(canvas, reading.fileBytes))
    return reading.fail(chunk, fault, FaultKind::Limit);
  return reading.add(std::move(record), chunk);
}

// --------------------------------------------------------------------------------------------- chunks of an
// open image

bool open_image(MngReading& reading, const StreamChunk& chunk) {
  if (reading.open) return reading.fail(chunk, translated("an image begins inside another"));
  if (chunk.data.size() != 13) return reading.fail(chunk, translated("the length is not that of a header"));
  auto image = std::make_unique<OpenImage>();
  image->header = &chunk;
  image->fields = parse_png_header(chunk.data.first<13>());
  if (const char* fault = png_header_fault(image->fields)) return reading.fail(chunk, fault);
  if (image->fields.colorType == 0) image->palette = png_grey_palette(image->fields.bitDepth);
  ChunkRecord& record = image->record;
  record.tag = tag::PNGI;
  record.size = 13;
  record.flags = CRF_IHDR;
  put_png_header(record, image->fields);
  if (reading.hasFraming) {
    record.flags |= CRF_FRAM;
    record.image.edit().framBlock = reading.framing;
  }
  if (reading.hasDefinition) {
    record.flags |= CRF_DEFI;
    record.image.edit().defiBlock = reading.definition;
    record.image.edit().defiBytes = reading.definitionBytes;
  }
  reading.unused.clear();
  reading.open = std::move(image);
  return true;
}

bool take_palette(MngReading& reading, const StreamChunk& chunk) {
  if (!reading.open) reading.host.warn(StringId::UnexpectedPalette, settings::WarnBadPalChunk);
  if (chunk.data.size() > 768 || chunk.data.size() % 3 != 0)
    return reading.fail(chunk, translated("the length is not that of a palette"));
  // An empty one inside an image means the global palette (MNG 1.0, "PLTE").
  if (chunk.data.empty() && reading.open) return true;
  reading.lastPalette.fill(0);
  std::ranges::copy(chunk.data, reading.lastPalette.begin());
  reading.lastPaletteBytes = static_cast<std::uint32_t>(chunk.data.size());
  if (!reading.open) return true;
  EmbeddedImage& image = reading.open->record.image.edit();
  image.palette = reading.lastPalette;
  image.paletteBytes = reading.lastPaletteBytes;
  reading.open->record.flags |= CRF_PLTE;
  if (reading.open->fields.colorType == 3) reading.open->palette = reading.lastPalette;
  return true;
}

bool take_background(MngReading& reading, const StreamChunk& chunk) {
  if (!reading.open) return true;
  EmbeddedImage& image = reading.open->record.image.edit();
  std::ranges::copy(chunk.data.first(std::min(chunk.data.size(), image.background.size())),
                    image.background.begin());
  reading.open->record.flags |= CRF_BKGD;
  return true;
}

bool take_transparency(MngReading& reading, const StreamChunk& chunk) {
  if (!reading.open) return true;
  EmbeddedImage& image = reading.open->record.image.edit();
  const auto bytes = chunk.data.first(std::min(chunk.data.size(), image.trans.size()));
  std::ranges::copy(bytes, image.trans.begin());
  image.transBytes = static_cast<std::uint32_t>(bytes.size());
  reading.open->record.flags |= CRF_TRNS;
  return true;
}

/// A paletted image without colors of its own takes the last palette of the file as its own.
bool complete_palette(MngReading& reading, const StreamChunk& chunk) {
  OpenImage& open = *reading.open;
  if (open.fields.colorType != 3 || (open.record.flags & CRF_PLTE)) return true;
  if (reading.lastPaletteBytes == 0) return reading.fail(chunk, translated("the image has no palette"));
  EmbeddedImage& image = open.record.image.edit();
  image.palette = open.palette = reading.lastPalette;
  image.paletteBytes = reading.lastPaletteBytes;
  open.record.flags |= CRF_PLTE;
  return true;
}

bool take_image_data(MngReading& reading, const StreamChunk& chunk) {
  if (!reading.open) return reading.fail(chunk, translated("image data without an image"));
  OpenImage& open = *reading.open;
  if (open.data.empty() && !complete_palette(reading, chunk)) return false;
  open.data.push_back(chunk.data);
  open.record.flags |= CRF_IDAT;
  return true;
}

/// Chunks outside images that no entry stands for: images take over what they say.
bool is_folded(ChunkTag tag) {
  static constexpr ChunkTag kFolded[] = {tag::FRAM, tag::DEFI, tag::PLTE, tag::bKGD, tag::tRNS};
  return std::ranges::find(kFolded, tag) != std::end(kFolded);
}

constexpr std::size_t kChunkHead = 8, kCrc = 4;

std::span<const std::uint8_t> bytes_between(const std::uint8_t* begin, const std::uint8_t* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

/// The image as its file holds it, where its chunks are right and nothing of it stands elsewhere.
std::shared_ptr<StoredMngImage> stored_image(const MngReading& reading, const OpenImage& open,
                                             const StreamChunk& last) {
  const StreamChunk* const first = open.header;
  if (!reading.owner || !last.data.empty()) return nullptr;
  const StreamChunk* front = first;
  while (front != reading.chunks.data() && is_folded(front[-1].tag)) --front;
  // One that stands in front of an entry, since the image before, can't be moved behind that.
  for (const StreamChunk* other = front; other != reading.chunks.data() && other[-1].tag != tag::IEND;
       --other)
    if (is_folded(other[-1].tag)) return nullptr;
  for (const StreamChunk* chunk = front; chunk <= &last; ++chunk)
    if (!reading.is_right(*chunk)) return nullptr;
  auto stored = std::make_shared<StoredMngImage>();
  const std::uint8_t* const begin = first->data.data() - kChunkHead;
  stored->front = bytes_between(front->data.data() - kChunkHead, begin);
  stored->image = bytes_between(begin, last.data.data() + kCrc);
  stored->texts = open.texts;
  stored->header = open.fields;
  stored->first = reading.images == 0;
  stored->before = reading.lastStored;
  return stored;
}

/// The chunks without an entry between the image that ended last and this chunk; empty where another stands
/// between them, or one is damaged.
std::span<const std::uint8_t> folded_in_front(const MngReading& reading, const StreamChunk& chunk) {
  const StreamChunk* front = &chunk;
  while (is_folded(front[-1].tag) && reading.is_right(front[-1])) --front;
  if (front[-1].tag != tag::IEND) return {};
  return bytes_between(front->data.data() - kChunkHead, chunk.data.data() - kChunkHead);
}

bool close_image(MngReading& reading, const StreamChunk& chunk) {
  if (!reading.open || !(reading.open->record.flags & CRF_IDAT))
    return reading.fail(chunk, translated("an image ends that has no data"));
  const StreamChunk& header = *reading.open->header;
  ChunkRecord record = reading.open->record;
  // Most images carry the very same blocks, which then lie in memory once.
  if (*record.image == *reading.lastImage) record.image = reading.lastImage;
  reading.lastImage = record.image;
  if ((reading.open->stored = stored_image(reading, *reading.open, chunk))) {
    reading.open->stored->flags = record.flags;
    reading.open->stored->fields = record.image;
  }
  reading.lastStored = reading.open->stored;
  ++reading.images;
  if (!reading.add(std::move(record), header)) return false;
  reading.items.back().image = std::move(reading.open);
  return true;
}

// -------------------------------------------------------------------------------------------------------
// other chunks

bool take_framing(MngReading& reading, const StreamChunk& chunk) {
  parse_framing(chunk.data, reading.framing);
  reading.hasFraming = true;
  reading.unused.push_back(&chunk);
  return true;
}

bool take_definition(MngReading& reading, const StreamChunk& chunk) {
  reading.definitionBytes = parse_definition(chunk.data, reading.definition);
  reading.hasDefinition = true;
  reading.unused.push_back(&chunk);
  return true;
}

/// Also one inside an embedded PNG is an entry of its own, in front of the image: that is added when it ends.
bool take_text(MngReading& reading, const StreamChunk& chunk) {
  ChunkRecord record = raw_record(chunk);
  if (const auto keyword = inflatable_keyword(chunk.data)) {
    TextFault fault;
    record.data = inflate_text_chunk(chunk.data, *keyword, reading.textBudget, fault);
    if (!record.data) return reading.fail(chunk, fault.reason, fault.kind);
  }
  if (reading.open) reading.open->texts.push_back(record.data);
  return reading.add(std::move(record), chunk);
}

/// JNG and delta images are not understood: all their chunks stay raw, with the framing in front of them.
bool open_opaque(MngReading& reading, const StreamChunk& chunk) {
  if (reading.open) return reading.fail(chunk, translated("an image begins inside another"));
  for (const StreamChunk* waiting : std::exchange(reading.unused, {}))
    if (!reading.add(raw_record(*waiting), *waiting)) return false;
  reading.opaque = true;
  return reading.add(raw_record(chunk), chunk);
}

bool take_end(MngReading& reading, const StreamChunk& chunk) {
  if (reading.open || reading.opaque) return reading.fail(chunk, translated("the file ends inside an image"));
  ChunkRecord record;
  record.tag = tag::MEND;
  if (const auto last = reading.lastStored.lock()) last->behind = folded_in_front(reading, chunk);
  return reading.add(std::move(record), chunk);
}

/// What is not known inside an embedded PNG is dropped, with a note, or a fault where it is critical.
bool take_other(MngReading& reading, const StreamChunk& chunk) {
  if (!reading.open) return reading.add(raw_record(chunk), chunk);
  if (!is_ancillary(chunk.tag) && reading.open->data.empty())
    return reading.fail(chunk, translated("a critical chunk of the image is not known"));
  reading.dropped.insert(chunk.tag);
  return true;
}

struct HandlerRow {
  ChunkTag tag;
  bool (*take)(MngReading&, const StreamChunk&);
};

constexpr HandlerRow kHandlers[] = {
    {tag::MEND, take_end},          {tag::DEFI, take_definition}, {tag::FRAM, take_framing},
    {tag::IHDR, open_image},        {tag::PLTE, take_palette},    {tag::bKGD, take_background},
    {tag::tRNS, take_transparency}, {tag::IDAT, take_image_data}, {tag::IEND, close_image},
    {tag::zTXt, take_text},
};

bool take_chunk(MngReading& reading, const StreamChunk& chunk) {
  // The tag of image records is this program's own: raw bytes under it would pass for a picture.
  if (chunk.tag == tag::PNGI) return reading.fail(chunk, translated("the chunk has a reserved name"));
  if (chunk.tag == tag::MHDR) return reading.fail(chunk, translated("there is a second header"));
  if (reading.opaque && chunk.tag != tag::MEND) {
    reading.opaque = chunk.tag != tag::IEND;
    return reading.add(raw_record(chunk), chunk);
  }
  if (begins_opaque_image(chunk.tag)) return open_opaque(reading, chunk);
  const auto row = std::ranges::find(kHandlers, chunk.tag, &HandlerRow::tag);
  return row == std::end(kHandlers) ? take_other(reading, chunk) : row->take(reading, chunk);
}

/// An end chunk is checked by its type alone.
void find_wrong_crcs(MngReading& reading) {
  static constexpr std::uint32_t kEnds[] = {tag::MEND, tag::IEND};
  std::vector<const StreamChunk*> chunks;
  chunks.reserve(reading.chunks.size());
  for (const StreamChunk& chunk : reading.chunks.subspan(1)) chunks.push_back(&chunk);
  reading.wrongCrcs = wrong_crcs(chunks, kEnds);
}

/// Of the image data of an image only the first chunk is told of.
void check_crc(MngReading& reading, const StreamChunk& chunk) {
  if (chunk.tag == tag::IDAT && reading.open && reading.open->data.size() > 1) return;
  if (!reading.is_right(chunk)) warn_of_crc(reading.host, chunk);
}

bool walk(MngReading& reading) {
  if (!take_header(reading)) return false;
  find_wrong_crcs(reading);
  for (const StreamChunk& chunk : reading.chunks.subspan(1)) {
    if (!take_chunk(reading, chunk)) return false;
    check_crc(reading, chunk);
  }
  return true;
}

// ---------------------------------------------------------------------------------------------------------
// the images

std::vector<Item*> images_of(MngReading& reading) {
  std::vector<Item*> images;
  for (Item& item : reading.items)
    if (item.image) images.push_back(&item);
  return images;
}

std::uint64_t picture_bytes(const std::vector<Item*>& images) {
  std::uint64_t bytes = 0;
  for (const Item* item : images)
    bytes += std::uint64_t{picture_stride(item->image->fields.width, png_picture_bits(item->image->fields))} *
             item->image->fields.height;
  return bytes;
}

bool pictures_fit_memory(const MngReading& reading, const std::vector<Item*>& images) {
  return picture_bytes(images) <= kMaximumKeptBytes ||
         reading.fail(reading.chunks.front(), translated("the images together are too large"),
                      FaultKind::Limit);
}

/// Leaves the check to whoever shows the images. False where one can't be right.
bool leave_unchecked(const MngReading& reading, const std::vector<Item*>& images) {
  for (Item* const item : images) {
    const OpenImage& image = *item->image;
    const PngDecoded expected = png_expect(image.fields, image.data, image.palette);
    if (!expected.picture) return false;
    item->record.data =
        kept_with_stream(expected, image.fields, image.data, reading.owner, image.stored, StreamSeen::NotYet);
  }
  for (const Item* item : images) reading.unchecked->streams.push_back(stored_image_of(item->record.data));
  return true;
}

bool decode_images(MngReading& reading, const Progress& progress) {
  constexpr std::size_t kAtOnce = 64;  // images between two steps of the progress bar
  const std::vector<Item*> images = images_of(reading);
  if (!pictures_fit_memory(reading, images)) return false;
  const bool packed = stay_packed(images.size(), picture_bytes(images));
  if (reading.unchecked && leave_unchecked(reading, images)) return true;
  const auto decode = packed ? png_check : png_decode;
  std::vector<const char*> reasons(images.size());
  std::vector<char> limits(images.size());
  std::atomic<bool> damaged = false;
  for (std::size_t first = 0; first < images.size() && !damaged; first += kAtOnce) {
    const std::size_t count = std::min(kAtOnce, images.size() - first);
    parallel_for(count, [&](std::size_t k) {
      if (damaged) return;
      const OpenImage& image = *images[first + k]->image;
      const PngDecoded decoded = decode(image.fields, image.data, image.palette, PngShortData::Fault);
      images[first + k]->record.data =
          kept_with_stream(decoded, image.fields, image.data, reading.owner, image.stored);
      reasons[first + k] = decoded.reason;
      limits[first + k] = decoded.limit;
      if (!decoded.picture) damaged = true;
    });
    progress.step(first + count, images.size());
  }
  for (std::size_t i = 0; i < images.size(); ++i)
    if (reasons[i])
      return reading.fail(*images[i]->chunk, reasons[i], limits[i] ? FaultKind::Limit : FaultKind::Damaged);
  return true;
}

}  // namespace

bool read_mng_unchecked(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
                        std::shared_ptr<const FileContent> owner, UncheckedImages* unchecked) {
  window.document.kind = DocumentKind::MING;
  GatheredChunks gathered;
  if (!gather_file(file, kMngSignature, tag::MEND, gathered, host)) return false;
  const QuietList quiet(window.list);
  const Progress progress(host, string_text(StringId::Loading));
  MngReading reading{window, host, gathered.chunks, file.size(), std::move(owner), unchecked};
  if (!walk(reading) || !decode_images(reading, progress)) return false;
  for (const Item& item : reading.items) chunk_list_append(window.list, window.document, item.record);
  chunk_list_close_change(window.list, window.document);
  tell_dropped(host, reading.dropped);
  if (gathered.end < file.size()) host.add_note(string_text(StringId::BytesBehindEnd));
  return true;
}

bool read_mng(DocumentWindow& window, std::span<const std::uint8_t> file, Host& host,
              std::shared_ptr<const FileContent> owner) {
  return read_mng_unchecked(window, file, host, std::move(owner), nullptr);
}

}  // namespace vellum
