#include "core/edit/clipboard_block.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/limits.h"
#include "core/chunks/chunk_table.h"
#include "core/model/framing.h"
#include "core/model/header_record.h"
#include "image/picture_rows.h"

namespace vellum {
namespace {

constexpr std::uint32_t kMagic = 0x4B484356;  // "VCHK"
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kLeastRecordBytes = 32;  // no record is shorter
constexpr std::size_t kNameLimit = 260;        // of a subframe

/// Gathers small things; what is large goes to the sink as it is.
class Writer {
 public:
  explicit Writer(const ByteSink& sink) : sink_(sink) {}
  void number(std::uint8_t& value) { out_.push_back(value); }
  void number(std::uint16_t& value) { put(value, 2); }
  void number(std::uint32_t& value) { put(value, 4); }
  void bytes(std::span<const std::uint8_t> bytes) {
    if (out_.size() + bytes.size() > kGathered) flush();
    if (bytes.size() > kGathered)
      good_ = good_ && sink_(bytes);
    else
      out_.insert(out_.end(), bytes.begin(), bytes.end());
  }
  void length(std::size_t length) { put(length, 8); }
  /// Gives what is gathered to the sink; false once the sink has ended the writing.
  bool flush() {
    good_ = good_ && sink_(out_);
    out_.clear();
    return good_;
  }

 private:
  void put(std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) out_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
  }
  static constexpr std::size_t kGathered = 4096;
  const ByteSink& sink_;
  std::vector<std::uint8_t> out_;
  bool good_ = true;
};

/// Reads zeros, and remembers it, where the bytes end.
class Reader {
 public:
  explicit Reader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}
  void number(std::uint8_t& value) { value = static_cast<std::uint8_t>(get(1)); }
  void number(std::uint16_t& value) { value = static_cast<std::uint16_t>(get(2)); }
  void number(std::uint32_t& value) { value = static_cast<std::uint32_t>(get(4)); }
  std::span<const std::uint8_t> bytes(std::uint64_t length) {
    good_ = good_ && length <= rest_.size();
    if (!good_) return {};
    const auto taken = rest_.first(static_cast<std::size_t>(length));
    rest_ = rest_.subspan(taken.size());
    return taken;
  }
  std::uint64_t length() { return get(8); }
  bool good() const { return good_; }
  std::size_t left() const { return rest_.size(); }

 private:
  std::uint64_t get(std::size_t count) {
    std::uint64_t value = 0;
    const auto taken = bytes(count);
    for (std::size_t i = taken.size(); i-- > 0;) value = value << 8 | taken[i];
    return value;
  }
  std::span<const std::uint8_t> rest_;
  bool good_ = true;
};

/// A number that the record keeps in the byte order of a file.
template <class Stream, class Number>
void file_order(Stream& stream, Number& value) {
  auto number = static_cast<std::uint32_t>(from_file_order(value));
  stream.number(number);
  value = static_cast<Number>(to_file_order(number));
}

/// The fields of a record but its data and its embedded image, in the same order for reading and writing.
template <class Stream>
void simple_fields(Stream& stream, ChunkRecord& record) {
  for (std::uint32_t* field :
       {&record.width, &record.height, &record.frameWidth, &record.frameHeight, &record.ticksPerSecond,
        &record.layerCount, &record.frameCount, &record.playTime, &record.simplicityProfile, &record.flags,
        &record.numFrames, &record.numPlays})
    stream.number(*field);
  for (std::uint8_t* field :
       {&record.bitDepth, &record.colorType, &record.compression, &record.filter, &record.interlace})
    stream.number(*field);
  FrameControl& frame = record.frameControl;
  for (std::uint32_t* field :
       {&frame.sequence, &frame.frameWidth, &frame.frameHeight, &frame.xOffset, &frame.yOffset})
    stream.number(*field);
  stream.number(frame.delayNum);
  stream.number(frame.delayDen);
  stream.number(frame.dispose);
  stream.number(frame.blend);
  WebpHeaderFields& header = record.webpHeader;
  for (std::uint32_t* field :
       {&header.canvasWidth, &header.canvasHeight, &header.loopCount, &header.frameCount, &header.colorType,
        &header.bitsPerPixel, &header.backgroundColor})
    stream.number(*field);
  WebpImageFields& image = record.webpImage;
  for (std::uint32_t* field : {&image.width, &image.height, &image.xOffset, &image.yOffset, &image.delay,
                               &image.bitsPerPixel, &image.dispose, &image.colorType})
    stream.number(*field);
}

template <class Stream>
void framing_fields(Stream& stream, FramBlock& block) {
  for (std::uint8_t* field : {&block.framingMode, &block.changeDelay, &block.changeTimeout,
                              &block.changeClipping, &block.changeSyncId, &block.clipType, &block.syncByte})
    stream.number(*field);
  for (std::uint32_t* field : {&block.interframeDelay, &block.timeout, &block.clipLeft, &block.clipRight,
                               &block.clipTop, &block.clipBottom})
    file_order(stream, *field);
}

template <class Stream>
void definition_fields(Stream& stream, DefiBlock& block) {
  auto id = static_cast<std::uint16_t>(from_file_order(std::uint32_t{block.objectId}) >> 16);
  stream.number(id);
  block.objectId = static_cast<std::uint16_t>(to_file_order(std::uint32_t{id} << 16));
  stream.number(block.doNotShow);
  stream.number(block.concreteFlag);
  for (std::int32_t* field : {&block.xLocation, &block.yLocation, &block.clipLeft, &block.clipRight,
                              &block.clipTop, &block.clipBottom})
    file_order(stream, *field);
}

std::span<const std::uint8_t> name_of(const FramBlock& block) {
  const auto end = std::find(block.subframeName.begin(), block.subframeName.begin() + kNameLimit, '\0');
  return {reinterpret_cast<const std::uint8_t*>(block.subframeName.data()),
          static_cast<std::size_t>(end - block.subframeName.begin())};
}

// ------------------------------------------------------------------------------------------------------
// writing

void write_sized(Writer& writer, std::span<const std::uint8_t> bytes) {
  writer.length(bytes.size());
  writer.bytes(bytes);
}

void write_embedded(Writer& writer, EmbeddedImage image) {
  write_sized(writer, std::span(image.palette).first(std::min<std::size_t>(image.paletteBytes, 768)));
  write_sized(writer, std::span(image.trans).first(std::min<std::size_t>(image.transBytes, 256)));
  writer.bytes(image.background);
  framing_fields(writer, image.framBlock);
  write_sized(writer, name_of(image.framBlock));
  definition_fields(writer, image.defiBlock);
  writer.number(image.defiBytes);
}

void write_record(Writer& writer, ChunkRecord record, DocumentKind kind) {
  writer.number(record.tag);
  auto size = static_cast<std::uint32_t>(record.size);
  writer.number(size);
  simple_fields(writer, record);
  if (kind == DocumentKind::MING && record.tag == tag::PNGI) write_embedded(writer, *record.image);
  const BlockPin pin(record.data);
  write_sized(writer, record.data.bytes());
}

void write_head(Writer& writer, const FrameSource& source, std::size_t count) {
  for (std::uint32_t number : {kMagic, kVersion, static_cast<std::uint32_t>(source.kind), source.ticks})
    writer.number(number);
  write_sized(writer, source.table);
  auto records = static_cast<std::uint32_t>(count);
  writer.number(records);
}

// ------------------------------------------------------------------------------------------------------
// reading

/// A group of bytes with its length, at most `most`, into a field; returns the length.
template <class Field>
std::uint32_t read_sized(Reader& reader, Field& field, std::size_t most, bool& good) {
  const std::uint64_t length = reader.length();
  good = good && length <= most;
  const auto bytes = reader.bytes(good ? length : 0);
  std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(field.data()));
  return static_cast<std::uint32_t>(bytes.size());
}

bool read_embedded(Reader& reader, EmbeddedImage& image) {
  bool good = true;
  image.paletteBytes = read_sized(reader, image.palette, image.palette.size(), good);
  image.transBytes = read_sized(reader, image.trans, image.trans.size(), good);
  const auto background = reader.bytes(image.background.size());
  std::ranges::copy(background, image.background.begin());
  framing_fields(reader, image.framBlock);
  read_sized(reader, image.framBlock.subframeName, kNameLimit, good);
  definition_fields(reader, image.defiBlock);
  reader.number(image.defiBytes);
  return good && image.paletteBytes % 3 == 0 && image.defiBytes <= sizeof(DefiBlock);
}

/// What an image record must be for everything behind it to rely on.
bool is_sound_image(const ChunkRecord& record, DocumentKind kind) {
  const Picture picture = picture_of(record);
  if (!has_rows(picture)) return false;
  const auto same = [&](std::uint32_t width, std::uint32_t height) {
    return width == picture.width() && height == picture.height();
  };
  if (kind == DocumentKind::APNG)
    return same(record.frameControl.frameWidth, record.frameControl.frameHeight) &&
           record.frameControl.dispose <= 2 && record.frameControl.blend <= 1;
  if (kind == DocumentKind::WEBP) return same(record.webpImage.width, record.webpImage.height);
  if (kind != DocumentKind::MING) return true;
  constexpr std::uint32_t known = CRF_IHDR | CRF_PLTE | CRF_BKGD | CRF_TRNS | CRF_FRAM | CRF_DEFI | CRF_IDAT;
  constexpr std::uint32_t complete = CRF_IHDR | CRF_IDAT;
  return same(record.width, record.height) && (record.flags & ~known) == 0 &&
         (record.flags & complete) == complete && !png_header_fault(png_header_of(record));
}

/// Headers and ends, most of which have fields in place of bytes.
bool is_fixed(const ChunkRecord& record, DocumentKind kind) {
  return is_valid_tag(record.tag) && place_of(record.tag, kind) == ChunkPlace::Fixed;
}

bool is_sound_header(const ChunkRecord& record) {
  if (record.size < 0) return false;
  if (record.tag == tag::IHDR) return !png_header_fault(png_header_of(record));
  return std::max({record.frameWidth, record.frameHeight, record.webpHeader.canvasWidth,
                   record.webpHeader.canvasHeight}) <= kMaximumDimension;
}

bool is_sound(const ChunkRecord& record, DocumentKind kind) {
  if (is_image_entry(kind, record.tag)) return is_sound_image(record, kind);
  if (!record.data) return is_sound_header(record);
  const bool raw = record.size >= 0 && static_cast<std::size_t>(record.size) <= record.data.size();
  // The size of a zTXt is that of its compressed form.
  return is_valid_tag(record.tag) && record.data.size() <= kMaximumFileBytes &&
         (raw ||
          (record.tag == tag::zTXt && record.size >= 0 && record.data.size() <= kMaximumTextBytes + 512));
}

bool read_record(Reader& reader, ChunkRecord& record, DocumentKind kind, bool whole) {
  reader.number(record.tag);
  std::uint32_t size = 0;
  reader.number(size);
  record.size = static_cast<std::int32_t>(size);
  simple_fields(reader, record);
  if (kind == DocumentKind::MING && record.tag == tag::PNGI && !read_embedded(reader, record.image.edit()))
    return false;
  const auto bytes = reader.bytes(reader.length());
  if (!reader.good()) return false;
  const bool fields_alone = whole && bytes.empty() && is_fixed(record, kind);
  if (!fields_alone) record.data = ChunkHandle::copy_of(bytes, 0);
  return (record.data || fields_alone) && is_sound(record, kind);
}

}  // namespace

std::vector<std::uint8_t> write_chunk_block(const ChunkBlock& block) {
  std::vector<std::uint8_t> out;
  std::size_t bytes = 0;
  for (const ChunkRecord& record : block.records) bytes += record.data.size() + 512;
  out.reserve(bytes);
  const ByteSink append = [&out](std::span<const std::uint8_t> piece) {
    out.insert(out.end(), piece.begin(), piece.end());
    return true;
  };
  Writer writer(append);
  write_head(writer, block.source, block.records.size());
  for (const ChunkRecord& record : block.records) write_record(writer, record, block.source.kind);
  writer.flush();
  return out;
}

bool write_chunk_block(DocumentKind kind, const ChunkList& list, const ByteSink& sink) {
  Writer writer(sink);
  write_head(writer, {kind, {}, 1}, list.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    write_record(writer, list.record(i), kind);
    if (!writer.flush()) return false;
  }
  return writer.flush();
}

std::optional<ChunkBlock> read_chunk_block(std::span<const std::uint8_t> bytes, bool whole) {
  Reader reader(bytes);
  std::uint32_t magic = 0, version = 0, kind = 0, count = 0;
  ChunkBlock block;
  for (std::uint32_t* number : {&magic, &version, &kind, &block.source.ticks}) reader.number(*number);
  block.source.kind = static_cast<DocumentKind>(kind);
  if (magic != kMagic || version != kVersion || kind_bit(block.source.kind) == 0) return std::nullopt;
  block.source.ticks = std::max(block.source.ticks, 1u);
  std::array<std::uint8_t, 256> table{};
  bool good = true;
  const std::uint32_t length = read_sized(reader, table, table.size(), good);
  block.source.table.assign(table.begin(), table.begin() + length);
  reader.number(count);
  if (!good || !reader.good() || count > kMaximumEntries || count > reader.left() / kLeastRecordBytes)
    return std::nullopt;
  for (std::uint32_t i = 0; i < count; ++i) {
    ChunkRecord record;
    if (!read_record(reader, record, block.source.kind, whole)) return std::nullopt;
    block.records.push_back(std::move(record));
  }
  if (!reader.good() || reader.left() != 0) return std::nullopt;
  return block;
}

}  // namespace vellum
