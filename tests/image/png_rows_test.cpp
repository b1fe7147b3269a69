// The PNG rows against libpng: what one of the two packs, the other unpacks to the same samples, and the
// filters that we choose are those that libpng chooses.
#include <png.h>

#include <csetjmp>
#include <random>

#include "base/byte_order.h"
#include "image/chunk_stream.h"
#include "image/deflate.h"
#include "image/inflate.h"
#include "image/png_decode.h"
#include "image/png_encode.h"
#include "image/png_filter.h"
#include "image/png_form.h"
#include "image/png_smallest.h"

namespace vellum {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Shape {
  std::uint8_t colorType, bitDepth, interlace;
  std::uint32_t width, height;
};

std::vector<Shape> all_shapes() {
  static constexpr std::pair<int, int> types[] = {{0, 1}, {0, 2},  {0, 4},  {0, 8}, {0, 16},
                                                  {2, 8}, {2, 16}, {3, 1},  {3, 2}, {3, 4},
                                                  {3, 8}, {4, 8},  {4, 16}, {6, 8}, {6, 16}};
  static constexpr std::pair<unsigned, unsigned> sizes[] = {{1, 1}, {1, 9},   {7, 1},
                                                            {5, 3}, {33, 17}, {64, 40}};
  std::vector<Shape> shapes;
  for (const auto& [type, depth] : types)
    for (const auto& [width, height] : sizes)
      for (const int interlace : {0, 1})
        shapes.push_back({static_cast<std::uint8_t>(type), static_cast<std::uint8_t>(depth),
                          static_cast<std::uint8_t>(interlace), width, height});
  return shapes;
}

PngHeader header_of(const Shape& s) {
  return {s.width, s.height, s.bitDepth, s.colorType, 0, 0, s.interlace};
}

/// Rows of samples as the standard packs them, smooth enough that every filter is chosen somewhere.
std::vector<Bytes> sample_rows(const PngHeader& header, unsigned seed) {
  std::mt19937 random(seed);
  const auto bytes = static_cast<std::size_t>(png_row_bytes(header, header.width));
  std::vector<Bytes> rows(header.height, Bytes(bytes));
  for (std::size_t y = 0; y < rows.size(); ++y)
    for (std::size_t x = 0; x < bytes; ++x)
      rows[y][x] = static_cast<std::uint8_t>(y % 5 == 0 ? random() : x * 3 + y * y + (random() & 3));
  const unsigned used = header.width * png_samples(header.colorType) * header.bitDepth % 8;
  if (used != 0)
    for (Bytes& row : rows) row.back() &= static_cast<std::uint8_t>(0xFF00 >> used);
  return rows;
}

void collect(png_structp png, png_bytep data, png_size_t length) {
  auto* out = static_cast<Bytes*>(png_get_io_ptr(png));
  out->insert(out->end(), data, data + length);
}

Bytes written_by_libpng(const PngHeader& header, std::vector<Bytes> rows) {
  Bytes file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(png, &file, collect, nullptr);
  png_set_IHDR(png, info, header.width, header.height, header.bitDepth, header.colorType, header.interlace, 0,
               0);
  png_color colors[256] = {};
  if (header.colorType == 3) png_set_PLTE(png, info, colors, 1 << header.bitDepth);
  png_write_info(png, info);
  std::vector<png_bytep> pointers;
  for (Bytes& row : rows) pointers.push_back(row.data());
  png_write_image(png, pointers.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return file;
}

struct Source {
  std::span<const std::uint8_t> rest;
};

void supply(png_structp png, png_bytep data, png_size_t length) {
  auto* source = static_cast<Source*>(png_get_io_ptr(png));
  if (source->rest.size() < length) png_error(png, "end");
  std::copy_n(source->rest.begin(), length, data);
  source->rest = source->rest.subspan(length);
}

std::vector<Bytes> read_by_libpng(const Bytes& file, const PngHeader& header) {
  Source source{file};
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  std::vector<Bytes> rows(header.height,
                          Bytes(static_cast<std::size_t>(png_row_bytes(header, header.width))));
  std::vector<png_bytep> pointers;
  for (Bytes& row : rows) pointers.push_back(row.data());
  if (setjmp(png_jmpbuf(png)) != 0) {
    ADD_FAILURE() << "libpng refuses the file";
  } else {
    png_set_read_fn(png, &source, supply);
    png_read_info(png, info);
    png_read_image(png, pointers.data());
    png_read_end(png, nullptr);
  }
  png_destroy_read_struct(&png, &info, nullptr);
  return rows;
}

Bytes joined_image_data(const Bytes& file) {
  Bytes stream;
  for (const StreamChunk& chunk : gather_chunks(file, 8, 0x49454E44).chunks)
    if (chunk.tag == 0x49444154) stream.insert(stream.end(), chunk.data.begin(), chunk.data.end());
  return stream;
}

/// A sample of the row, 16 bits cut to the high byte as pictures have them.
unsigned sample(const Bytes& row, const PngHeader& header, std::size_t x, unsigned channel) {
  const std::size_t at = x * png_samples(header.colorType) + channel;
  if (header.bitDepth == 16) return row[2 * at];
  if (header.bitDepth == 8) return row[at];
  return row[at * header.bitDepth / 8] >> (8 - header.bitDepth - at * header.bitDepth % 8) &
         ((1u << header.bitDepth) - 1);
}

/// The picture's pixel that the standard means, by the pixel.
Colour expected_pixel(const Bytes& row, const PngHeader& header, std::size_t x) {
  const auto at = [&](unsigned channel) { return sample(row, header, x, channel); };
  switch (header.colorType) {
    case 2:
      return make_colour(at(0), at(1), at(2));
    case 4:
      return make_colour(at(0), at(0), at(0), at(1));
    case 6:
      return make_colour(at(0), at(1), at(2), at(3));
    default:
      return at(0);
  }
}

TEST(PngRows, DecodesWhatLibpngWrites) {
  for (const Shape& shape : all_shapes()) {
    const PngHeader header = header_of(shape);
    const auto rows = sample_rows(header, 7);
    const Bytes stream = joined_image_data(written_by_libpng(header, rows));
    const std::span<const std::uint8_t> pieces[] = {std::span(stream).first(3), std::span(stream).subspan(3)};
    const Palette palette{};
    const PngDecoded decoded = png_decode(header, pieces, palette);
    ASSERT_TRUE(decoded.picture) << decoded.reason;
    ASSERT_EQ(decoded.picture.bits(), png_picture_bits(header));
    for (std::uint32_t y = 0; y < header.height; ++y)
      for (std::uint32_t x = 0; x < header.width; ++x)
        ASSERT_EQ(PictureGetPixel(decoded.picture, x, y), expected_pixel(rows[y], header, x))
            << "type " << +shape.colorType << " depth " << +shape.bitDepth << " interlace "
            << +shape.interlace << " at " << x << "," << y;
    const std::size_t used = (std::size_t{header.width} * decoded.picture.bits() + 7) / 8;
    for (std::uint32_t y = 0; y < header.height; ++y)
      for (std::size_t i = used; i < decoded.picture.stride(); ++i)
        ASSERT_EQ(decoded.picture.row(y)[i], 0) << "padding";
  }
}

constexpr int kSmallest = 10;  // behind the levels: the best of all ways, and the slow packer

TEST(PngRows, LibpngReadsWhatWeEncodeAndHasChosenTheSameFilters) {
  for (const Shape& shape : all_shapes()) {
    const PngHeader header = header_of(shape);
    auto rows = sample_rows(header, 11);
    if (header.bitDepth == 16)  // what an 8-bit picture can hold
      for (Bytes& row : rows)
        for (std::size_t i = 0; i + 1 < row.size(); i += 2) row[i + 1] = row[i];
    const Bytes theirs = written_by_libpng(header, rows);
    const Bytes theirs_stream = joined_image_data(theirs);
    const std::span<const std::uint8_t> pieces[] = {theirs_stream};
    const Palette palette{};
    const Picture picture = png_decode(header, pieces, palette).picture;
    ASSERT_TRUE(picture);
    for (const int level : {0, 1, 8, 9, kSmallest}) {
      const Bytes stream = level == kSmallest ? png_encode_smallest(header, picture, std::nullopt, {1, false})
                                              : png_encode(header, picture, level);
      Bytes file(kPngSignature.begin(), kPngSignature.end());
      append_chunk(file, 0x49484452, png_header_payload(header));
      const Bytes colors(3u << header.bitDepth % 16);
      if (header.colorType == 3) append_chunk(file, 0x504C5445, colors);
      append_chunk(file, 0x49444154, stream);
      append_chunk(file, 0x49454E44, {});
      ASSERT_EQ(read_by_libpng(file, header), rows)
          << "type " << +shape.colorType << " depth " << +shape.bitDepth << " interlace " << +shape.interlace
          << " level " << level;
      if (level == kSmallest) EXPECT_LE(stream.size(), png_encode(header, picture, 9).size());
      if (level == 9) EXPECT_LE(stream.size(), png_encode(header, picture, 8).size() + 4);  // by a trial
      if (level == 0) {
        Bytes written;
        EXPECT_TRUE(png_write_stored(header, picture, [&](std::span<const std::uint8_t> piece) {
          written.insert(written.end(), piece.begin(), piece.end());
          return true;
        }));
        EXPECT_EQ(written, stream);
      }
      if (level == 0 || level >= 9) continue;  // not filtered, or by other rules
      Bytes ours(png_filtered_bytes(header)), wanted(ours.size());
      ASSERT_EQ(inflate_into(stream, ours), ours.size());
      ASSERT_EQ(inflate_into(theirs_stream, wanted), wanted.size());
      ASSERT_EQ(ours, wanted) << "filters of type " << +shape.colorType << " depth " << +shape.bitDepth
                              << ", " << shape.width << " x " << shape.height << " interlace "
                              << +shape.interlace;
    }
  }
}

TEST(PngRows, LargeImagesThatAreReadInBandsHoldEachSample) {
  for (const std::uint8_t type : {2, 6}) {
    const PngHeader header = header_of({type, 8, 0, 1401, 1203});
    const auto rows = sample_rows(header, 3);
    const Bytes stream = joined_image_data(written_by_libpng(header, rows));
    // Chunks of odd lengths, some of them empty.
    std::vector<std::span<const std::uint8_t>> pieces;
    for (std::size_t at = 0, length = 0; at < stream.size(); at += length, length = 7 * length + 1)
      pieces.push_back(std::span(stream).subspan(at, length = std::min(length, stream.size() - at)));
    const PngDecoded decoded = png_decode(header, pieces, Palette{});
    const Picture& picture = decoded.picture;
    ASSERT_TRUE(picture && !decoded.judged && png_check(header, pieces, Palette{}).exact);
    const unsigned channels = png_samples(type);
    for (std::uint32_t y = 0; y < header.height; ++y)
      for (std::uint32_t x = 0; x < header.width; ++x)
        for (unsigned c = 0; c < channels; ++c)
          ASSERT_EQ(picture.row(y)[channels * x + c], rows[y][channels * x + (c < 3 ? 2 - c : c)])
              << x << ' ' << y;
  }
}

TEST(PngRows, TheSmallestLevelFiltersAsPacksBest) {
  std::mt19937 random(9);
  Picture dots = PictureCreateFilled(300, 300, 0);  // of four colors: their differences would be more
  for (std::uint32_t i = 0; i < 90'000; ++i)
    PicturePutPixel(dots, i % 300, i / 300,
                    std::array{0x706050u, 0x455468u, 0x7B4A5Cu, 0x58763Fu}[random() % 4]);
  const PngHeader header{300, 300, 8, 2, 0, 0, 0};
  EXPECT_LT(10 * png_encode(header, dots, 9).size(), 9 * png_encode(header, dots, 8).size());
}

TEST(PngFilter, RowsTogetherAreUndoneAsOneByOne) {
  std::mt19937 random(5);
  for (const std::size_t distance : {3, 4, 6})
    for (std::size_t pixels = 20; pixels < 60; ++pixels) {
      const std::size_t bytes = distance * pixels, rows = 4;
      Bytes image((rows + 1) * (bytes + 1) + kFilterSlack);
      for (auto& byte : image) byte = static_cast<std::uint8_t>(random());
      const std::uint8_t type = image[0] % 3 + 2;
      for (std::size_t y = 1; y <= rows; ++y) image[y * (bytes + 1)] = type;
      Bytes expected(image);
      for (std::size_t y = 1; y <= rows; ++y) {
        std::uint8_t* row = &expected[y * (bytes + 1) + 1];
        ASSERT_TRUE(png_unfilter(type, row, row - bytes - 1, bytes, distance));
      }
      std::size_t done = 0;
      while (done < rows) {
        std::uint8_t* next = &image[(done + 1) * (bytes + 1)];
        const std::size_t count = png_unfilter_some(next, rows - done, next - bytes, bytes, distance);
        ASSERT_TRUE(count == 1 || (count == rows && type > 2));
        done += count;
      }
      ASSERT_EQ(image, expected) << "type " << +type << " distance " << distance << " pixels " << pixels;
    }
}

TEST(PngFilter, EveryTypeAndPixelSizeIsUndoneByTheFormulaOfTheStandard) {
  std::mt19937 random(3);
  for (const std::size_t distance : {1, 2, 3, 4, 6, 8})
    for (const std::size_t pixels : {1, 2, 3, 31}) {
      const std::size_t bytes = distance * pixels;
      for (std::uint8_t type = 0; type < 5; ++type) {
        Bytes prior(bytes + kFilterSlack), row(bytes + kFilterSlack);
        for (std::size_t i = 0; i < bytes; ++i) prior[i] = static_cast<std::uint8_t>(random());
        for (std::size_t i = 0; i < bytes; ++i) row[i] = static_cast<std::uint8_t>(random());
        Bytes expected(row);
        for (std::size_t i = 0; i < bytes; ++i) {
          const int a = i < distance ? 0 : expected[i - distance], b = prior[i],
                    c = i < distance ? 0 : prior[i - distance];
          const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
          const int paeth = pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
          const int predicted[] = {0, a, b, (a + b) / 2, paeth};
          expected[i] = static_cast<std::uint8_t>(row[i] + predicted[type]);
        }
        ASSERT_TRUE(png_unfilter(type, row.data(), prior.data(), bytes, distance));
        ASSERT_EQ(row, expected) << "type " << +type << " distance " << distance << " pixels " << pixels;
      }
    }
  std::uint8_t row[32] = {};
  EXPECT_FALSE(png_unfilter(5, row, row, 4, 4));
}

/// Images of a few rows and of several bands.
class PngDecodeOf : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(PngDecodeOf, DamagedAndShortData) {
  const std::uint32_t side = GetParam();
  const PngHeader header{side, side, 8, 2, 0, 0, 0};
  Picture picture = PictureCreateFilled(side, side, 0x123456);
  std::mt19937 random(4);  // without noise a large one packs as small as nothing else
  for (std::uint32_t i = 0; i < side * side / 16; ++i)
    PicturePutPixel(picture, random() % (side / 2), random() % (side / 2), random() & 0xFFFFFF);
  const Bytes whole = png_encode(header, picture, 3);
  const Palette palette{};
  const auto decode = [&](const Bytes& stream, PngShortData mode = PngShortData::Fault) {
    const std::span<const std::uint8_t> pieces[] = {stream};
    const PngDecoded checked = png_check(header, pieces, palette, mode);
    PngDecoded decoded = png_decode(header, pieces, palette, mode);
    EXPECT_EQ(static_cast<bool>(checked.picture), static_cast<bool>(decoded.picture));
    EXPECT_EQ(checked.reason, decoded.reason);
    if (decoded.judged) EXPECT_EQ(checked.exact, decoded.exact);
    decoded.exact = checked.exact;
    return decoded;
  };
  EXPECT_TRUE(decode(whole).picture && decode(whole).exact);
  for (const std::size_t more : {1, 4, 7, 8, 9, 16, 100}) {
    Bytes longer(whole);
    longer.resize(whole.size() + more, 3);
    EXPECT_TRUE(decode(longer).picture) << "bytes behind the stream are not looked at";
    EXPECT_FALSE(decode(longer).exact) << more;
  }
  for (std::size_t i = 1; i <= 4; ++i) {
    Bytes wrong_check(whole);
    wrong_check[whole.size() - i] ^= 1;
    EXPECT_FALSE(decode(wrong_check).picture);
    EXPECT_FALSE(decode(Bytes(whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(i))).exact);
  }
  EXPECT_FALSE(decode(Bytes(whole.begin(), whole.end() - 6)).picture);
  EXPECT_FALSE(decode({}).picture);
  // A filter that doesn't exist, in the last row.
  Bytes rows(png_filtered_bytes(header));
  rows[(side - 1) * (rows.size() / side)] = 5;
  EXPECT_FALSE(decode(deflate_bytes(rows, 6)).picture);
  PngHeader tall = header;
  tall.height = 2 * side;
  const std::span<const std::uint8_t> pieces[] = {whole};
  EXPECT_FALSE(png_decode(tall, pieces, palette).picture);
  const PngDecoded half = png_decode(tall, pieces, palette, PngShortData::Zeros);
  ASSERT_TRUE(half.picture && half.isShort);
  EXPECT_EQ(PictureGetPixel(half.picture, side - 1, side - 1), 0x123456u);
  EXPECT_EQ(PictureGetPixel(half.picture, side - 1, side), 0u);
  // More content than the header asks for: what is complete counts.
  PngHeader flat = header;
  flat.height = side / 2;
  const PngDecoded upper = png_decode(flat, pieces, palette);
  ASSERT_TRUE(upper.picture && !upper.exact);
  EXPECT_EQ(PictureGetPixel(upper.picture, side - 1, side / 2 - 1), 0x123456u);
  // A header that promises far more than the stream can hold takes no memory.
  const PngHeader bomb{1'000'000, 1'000'000, 8, 0, 0, 0, 0};
  EXPECT_FALSE(png_decode(bomb, pieces, palette).picture);
}

INSTANTIATE_TEST_SUITE_P(Sides, PngDecodeOf, ::testing::Values(8, 1800), ::testing::PrintToStringParamName());

TEST(Deflate, PiecesJoinToOneStreamAtEveryLevel) {
  std::mt19937 random(5);
  Bytes content(300'000);
  for (std::size_t i = 0; i < content.size(); ++i)
    content[i] = static_cast<std::uint8_t>(i % 1000 < 800 ? i / 7 : random());
  for (int level = 0; level <= 9; ++level)
    for (const std::vector<std::size_t>& cuts :
         {std::vector<std::size_t>{}, {1}, {70'000, 70'001}, {100'000, 200'000}}) {
      std::vector<DeflatePiece> pieces;
      std::size_t from = 0;
      for (const std::size_t cut : cuts) {
        pieces.push_back(deflate_piece(std::span(content).subspan(from, cut - from), level, false));
        from = cut;
      }
      pieces.push_back(deflate_piece(std::span(content).subspan(from), level, true));
      const Bytes stream = join_pieces(pieces, level);
      ASSERT_EQ((stream[0] * 256 + stream[1]) % 31, 0);
      Bytes back(content.size() + 1);
      ASSERT_EQ(inflate_into(stream, back), content.size())
          << "level " << level << ", " << cuts.size() << " cuts";
      back.pop_back();
      ASSERT_EQ(back, content);
    }
}

TEST(PngForm, KeepsTheWantedHeaderWhereItCanAndChangesItLeastOtherwise) {
  const auto indexed = [](std::uint32_t bits, Colour largest) {
    Picture picture = PictureCreate(5, 3, nullptr, bits);
    PicturePutPixel(picture, 4, 2, largest);
    return picture;
  };
  const auto colored = [](std::uint32_t bits, Colour pixel) {
    Picture picture = PictureCreate(5, 3, nullptr, bits);
    for (int y = 0; y < 3; ++y)
      for (int x = 0; x < 5; ++x) PicturePutPixel(picture, x, y, 0xFF000000);
    PicturePutPixel(picture, 1, 1, pixel);
    return picture;
  };
  struct Case {
    const char* what;
    Picture picture;
    int type, depth, entries;  // wanted
    int expected_type, expected_depth;
  };
  const Colour grey = 0xFF777777, red = 0xFF0000FF, glass = 0x80777777, red_glass = 0x800000FF;
  const Case cases[] = {
      {"two bits hold 3", indexed(8, 3), 3, 2, 4, 3, 2},
      {"two bits do not hold 4", indexed(8, 4), 3, 2, 4, 3, 4},
      {"many entries raise the depth", indexed(8, 3), 3, 2, 17, 3, 8},
      {"the index is the grey", indexed(8, 255), 0, 8, 0, 0, 8},
      {"16 bits over 8", indexed(8, 255), 0, 16, 0, 0, 16},
      {"a packed picture in more bits", indexed(1, 1), 0, 4, 0, 0, 4},
      {"grey true color", colored(24, grey), 0, 8, 0, 0, 8},
      {"red is not grey", colored(24, red), 0, 8, 0, 2, 8},
      {"glass is not grey", colored(32, glass), 0, 8, 0, 6, 8},
      {"opaque grey of 32 bits", colored(32, grey), 0, 16, 0, 0, 16},
      {"grey glass", colored(32, glass), 4, 16, 0, 4, 16},
      {"red glass", colored(32, red_glass), 4, 8, 0, 6, 8},
      {"opaque as true color", colored(32, red), 2, 16, 0, 2, 16},
      {"glass as true color", colored(32, red_glass), 2, 8, 0, 6, 8},
      {"true color as glass", colored(24, red), 6, 8, 0, 6, 8},
      {"true color under a palette", colored(24, red), 3, 4, 16, 2, 8},
      {"a palette under true color", indexed(4, 15), 2, 8, 0, 2, 8},
  };
  for (const Case& c : cases) {
    const PngHeader wanted{5, 3, static_cast<std::uint8_t>(c.depth), static_cast<std::uint8_t>(c.type), 0,
                           0, 0};
    const PngForm form = png_form(c.picture, wanted, static_cast<std::uint32_t>(c.entries));
    EXPECT_EQ(+form.header.colorType, c.expected_type) << c.what;
    EXPECT_EQ(+form.header.bitDepth, c.expected_depth) << c.what;
    EXPECT_FALSE(png_encode(form.header, form.picture, 1).empty()) << c.what;
  }
}

TEST(PngForm, APictureOfAnotherSizeIsCroppedOrPadded) {
  const Picture picture = PictureCreateFilled(4, 4, 0xFFFFFF);
  const PngForm form = png_form(picture, {6, 2, 8, 2, 0, 0, 0}, 0);
  ASSERT_EQ(form.picture.width(), 6u);
  ASSERT_EQ(form.picture.height(), 2u);
  EXPECT_EQ(PictureGetPixel(form.picture, 3, 1), 0xFFFFFFu);
  EXPECT_EQ(PictureGetPixel(form.picture, 4, 1), 0u);
}

}  // namespace
}  // namespace vellum
