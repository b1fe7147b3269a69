// Chunks as bytes: what goes in comes out, and bytes of anybody never harm.
#include "core/edit/clipboard_block.h"

#include <random>

#include "core/chunks/chunk_table.h"
#include "core/chunks/new_chunk.h"
#include "core/model/frame_values.h"
#include "core/model/framing.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::small_document;

ChunkBlock block_of(const DocumentWindow& window) {
  ChunkBlock block{frame_source_of(window), {}};
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (place_of(window.list.record(i).tag, window.document.kind) != ChunkPlace::Fixed)
      block.records.push_back(window.list.record(i));
  return block;
}

/// An image of an MNG with every field in use.
DocumentWindow full_mng() {
  DocumentWindow window = small_document(DocumentKind::MING, 1, 3);
  const std::size_t at = chunk_find_first(window.list, tag::PNGI);
  ChunkRecord record;
  chunk_list_get(window.list, at, record);
  EmbeddedImage& image = record.image.edit();
  record.flags |= CRF_TRNS | CRF_BKGD | CRF_FRAM | CRF_DEFI;
  image.transBytes = 3;
  image.trans = {1, 2, 3};
  image.background = {9, 8, 7, 6, 5, 4};
  parse_framing(std::vector<std::uint8_t>{3, 'n', 'a', 0, 2, 1, 1, 1, 0, 0, 0, 50}, image.framBlock);
  image.framBlock.clipTop = 0x01020304;
  image.defiBytes = parse_definition(std::vector<std::uint8_t>{0, 7, 1, 1, 255, 255, 255, 254, 0, 0, 0, 5},
                                     image.defiBlock);
  chunk_list_put(window.list, at, record);
  return window;
}

TEST(ClipboardBlock, EveryFieldComesBack) {
  for (const DocumentWindow& window :
       {small_document(DocumentKind::PING, 1, 3), small_document(DocumentKind::APNG, 2, 6), full_mng(),
        small_document(DocumentKind::WEBP, 2)}) {
    const ChunkBlock block = block_of(window);
    const auto bytes = write_chunk_block(block);
    const auto again = read_chunk_block(bytes);
    ASSERT_TRUE(again) << kind_letters(block.source.kind);
    EXPECT_EQ(write_chunk_block(*again), bytes);
    ASSERT_EQ(again->records.size(), block.records.size());
    for (std::size_t i = 0; i < block.records.size(); ++i) {
      const ChunkRecord &a = block.records[i], &b = again->records[i];
      EXPECT_EQ(a.tag, b.tag);
      EXPECT_EQ(a.size, b.size);
      EXPECT_TRUE(std::ranges::equal(a.data.bytes(), b.data.bytes()));
      EXPECT_EQ(a.colorType, b.colorType);
      EXPECT_EQ(a.frameControl.frameWidth, b.frameControl.frameWidth);
      EXPECT_EQ(a.frameControl.delayDen, b.frameControl.delayDen);
      EXPECT_EQ(a.webpImage.delay, b.webpImage.delay);
      EXPECT_EQ(a.flags, b.flags);
      EXPECT_EQ(a.image->palette, b.image->palette);
      EXPECT_EQ(a.image->trans, b.image->trans);
      EXPECT_EQ(framing_payload(a.image->framBlock), framing_payload(b.image->framBlock));
      EXPECT_EQ(a.image->framBlock.clipTop, b.image->framBlock.clipTop);
      EXPECT_EQ(definition_payload(a.image->defiBlock, 28), definition_payload(b.image->defiBlock, 28));
      EXPECT_EQ(GetFrameOffset(a, block.source.kind).x, GetFrameOffset(b, block.source.kind).x);
    }
  }
}

TEST(ClipboardBlock, EveryCutAndEveryChangedByteIsReadSafelyOrRefused) {
  std::size_t refused = 0, read = 0;
  for (const DocumentWindow& window : {small_document(DocumentKind::APNG, 1), full_mng()}) {
    auto bytes = write_chunk_block(block_of(window));
    for (std::size_t length = 0; length < bytes.size(); ++length)
      EXPECT_FALSE(read_chunk_block(std::span(bytes).first(length))) << length;
    for (std::size_t i = 0; i < bytes.size(); ++i)
      for (const int change : {1, 0x80, 0xFF}) {
        bytes[i] ^= static_cast<std::uint8_t>(change);
        const auto block = read_chunk_block(bytes);
        block ? ++read : ++refused;
        // What is read can be used: pictures are pictures, and lengths are inside their blocks.
        for (std::size_t k = 0; block && k < block->records.size(); ++k) {
          const ChunkRecord& record = block->records[k];
          if (is_image_entry(block->source.kind, record.tag))
            EXPECT_TRUE(frame_layer_of(block->source, record).picture);
          EXPECT_LE(record.image->paletteBytes, 768u);
        }
        bytes[i] ^= static_cast<std::uint8_t>(change);
      }
    bytes.push_back(0);
    EXPECT_FALSE(read_chunk_block(bytes)) << "bytes behind the last record";
  }
  EXPECT_GT(refused, 100u);
  EXPECT_GT(read, 100u);
}

TEST(ClipboardBlock, ACountThatTheBytesCannotHoldIsRefusedBeforeMemoryIsTaken) {
  auto bytes = write_chunk_block({{DocumentKind::PING, {}, 1000}, {}});
  ASSERT_TRUE(read_chunk_block(bytes));
  for (std::size_t i = bytes.size() - 4; i < bytes.size(); ++i) bytes[i] = 0xFF;
  EXPECT_FALSE(read_chunk_block(bytes));
}

}  // namespace
}  // namespace vellum
