#include "core/edit/palette_edit.h"

#include "base/string_table.h"
#include "support/documents.h"

namespace vellum {
namespace {

using testing::record_of;

struct Color {
  std::uint8_t red, green, blue;
};

constexpr Color kColors[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {128, 128, 128}, {255, 255, 0}};

std::string payload_of(std::span<const Color> colors) {
  std::string bytes;
  for (const Color& c : colors)
    for (const std::uint8_t channel : {c.red, c.green, c.blue}) bytes += static_cast<char>(channel);
  return bytes;
}

Palette palette_of_colors() {
  Palette palette{};
  const std::string bytes = payload_of(kColors);
  std::ranges::copy(bytes, palette.begin());
  return palette;
}

/// Four pixels a row with these indexes; index 4 is used by nobody.
Picture indexed_picture(std::uint32_t bits) {
  const Palette palette = palette_of_colors();
  Picture picture = PictureCreate(4, 2, &palette, bits);
  for (std::uint32_t x = 0; x < 4; ++x)
    for (std::uint32_t y = 0; y < 2; ++y) PicturePutPixel(picture, x, y, x);
  return picture;
}

ChunkRecord header(std::uint8_t depth, std::uint8_t type) {
  ChunkRecord record;
  record.tag = tag::IHDR;
  record.size = 13;
  record.width = 4;
  record.height = 2;
  record.bitDepth = depth;
  record.colorType = type;
  return record;
}

ChunkRecord image(ChunkTag tag, const Picture& picture) {
  ChunkRecord record;
  record.tag = tag;
  record.data = picture.handle();
  record.frameControl.frameWidth = 4;
  record.frameControl.frameHeight = 2;
  return record;
}

constexpr std::size_t kPalette = 1, kTransparency = 2, kBackground = 3, kHistogram = 4, kImage = 5;

DocumentWindow document(DocumentKind kind = DocumentKind::APNG, std::uint32_t bits = 8) {
  DocumentWindow window;
  window.document.kind = kind;
  const auto depth = static_cast<std::uint8_t>(bits);
  for (const ChunkRecord& record :
       {header(depth, 3), record_of(tag::PLTE, payload_of(kColors)),
        record_of(tag::tRNS, std::string("\x40\xFF\0", 3)), record_of(tag::bKGD, "\3"),
        record_of(tag::hIST, std::string("\0\1\0\2\0\3\0\4\0\5", 10)),
        image(tag::IDAT, indexed_picture(bits)), image(tag::IDAT, indexed_picture(bits)),
        record_of(tag::IEND, "")})
    chunk_list_append(window.list, window.document, record);
  window.document.defaultImage = indexed_picture(bits).handle();
  return window;
}

std::string raw_text(const DocumentWindow& window, std::size_t index) {
  const auto bytes = raw_payload(window.list.record(index));
  return {bytes.begin(), bytes.end()};
}

/// What the first row of a picture looks like: colors and alphas, whatever the indexes are.
std::vector<std::uint32_t> seen(const DocumentWindow& window, const Picture& picture) {
  std::vector<std::uint32_t> pixels;
  const Palette palette = [&] {
    Palette p{};
    PictureGetPalette(picture, p);
    return p;
  }();
  const std::string alphas = raw_text(window, kTransparency);
  for (std::uint32_t x = 0; x < picture.width(); ++x) {
    const std::size_t i = PictureGetPixel(picture, x, 0);
    const auto alpha = i < alphas.size() ? static_cast<std::uint8_t>(alphas[i]) : 255u;
    pixels.push_back(make_colour(palette[3 * i], palette[3 * i + 1], palette[3 * i + 2], alpha));
  }
  return pixels;
}

std::vector<std::vector<std::uint32_t>> all_seen(const DocumentWindow& window) {
  return {seen(window, picture_of(window.list.record(kImage))),
          seen(window, picture_of(window.list.record(kImage + 1))),
          seen(window, Picture(window.document.defaultImage))};
}

PaletteEdit edit_of(const DocumentWindow& window) { return *palette_edit_of(window, kPalette); }
PaletteUsage usage_of(const DocumentWindow& window) { return palette_usage(window, kPalette); }

std::string greys_of(const PaletteEdit& edit) {
  std::string text;
  for (const PaletteEntry& e : edit.entries) text += std::to_string(e.origin) + " ";
  return text;
}

TEST(PaletteEdit, TakesColorsAlphasAndTheLimitFromTheDocument) {
  const DocumentWindow window = document(DocumentKind::APNG, 4);
  const PaletteEdit edit = edit_of(window);
  ASSERT_EQ(edit.entries.size(), 5u);
  EXPECT_EQ(edit.most, 16u);
  EXPECT_EQ(edit.entries[2], (PaletteEntry{0, 0, 255, 0, 2}));
  EXPECT_EQ(edit.entries[4].alpha, 255);
  EXPECT_EQ(edit_of(document(DocumentKind::PING, 1)).entries.size(), 2u) << "no pixel reaches the others";
  EXPECT_FALSE(palette_edit_of(window, 0));
  EXPECT_FALSE(palette_edit_of(window, 99));
}

TEST(PaletteEdit, MovedEntriesTakePixelsTransparencyAndBackgroundAlong) {
  const struct {
    const char* name;
    void (*change)(PaletteEdit&, const PaletteUsage&);
    const char* order;
  } cases[] = {
      {"swap", [](PaletteEdit& e, const PaletteUsage&) { palette_swap(e, 0, 3); }, "3 1 2 0 4 "},
      {"reverse", [](PaletteEdit& e, const PaletteUsage&) { palette_reverse(e); }, "4 3 2 1 0 "},
      {"luminance", [](PaletteEdit& e, const PaletteUsage& u) { palette_sort(e, PaletteSort::Luminance, u); },
       "2 0 3 1 4 "},
      {"hue", [](PaletteEdit& e, const PaletteUsage& u) { palette_sort(e, PaletteSort::Hue, u); },
       "3 0 4 1 2 "},
      {"use", [](PaletteEdit& e, const PaletteUsage& u) { palette_sort(e, PaletteSort::Use, u); },
       "0 1 2 3 4 "},
      {"delete", [](PaletteEdit& e, const PaletteUsage& u) { EXPECT_EQ(palette_delete(e, {4}, u), ""); },
       "0 1 2 3 "},
      {"add in front",
       [](PaletteEdit& e, const PaletteUsage&) {
         EXPECT_EQ(palette_add(e, 0, {1, 2, 3}), "");
       },
       "-1 0 1 2 3 4 "},
  };
  for (const auto& c : cases)
    for (const bool change_images : {true, false}) {
      DocumentWindow window = document();
      const auto before = all_seen(window);
      PaletteEdit edit = edit_of(window);
      c.change(edit, usage_of(window));
      EXPECT_EQ(greys_of(edit), c.order) << c.name;
      const bool same = edit.entries == edit_of(window).entries;
      EXPECT_EQ(apply_palette(window, kPalette, edit, change_images), !same) << c.name;
      EXPECT_EQ(all_seen(window), before) << c.name << (change_images ? ", images change" : "");
      const auto background = static_cast<std::uint8_t>(raw_text(window, kBackground)[0]);
      EXPECT_EQ(edit.entries[background].origin, 3) << c.name;
      const std::string counts = raw_text(window, kHistogram);
      ASSERT_EQ(counts.size(), 2 * edit.entries.size()) << c.name;
      for (std::size_t i = 0; i < edit.entries.size(); ++i)
        EXPECT_EQ(counts[2 * i + 1], edit.entries[i].origin + 1) << c.name;
    }
}

TEST(PaletteEdit, ChangedColorsChangeTheImagesOrNot) {
  for (const bool change_images : {true, false}) {
    DocumentWindow window = document();
    PaletteEdit edit = edit_of(window);
    edit.entries[1] = {255, 255, 10, 255, 1};  // green becomes a yellow, and what is nearest to green is grey
    ASSERT_TRUE(apply_palette(window, kPalette, edit, change_images));
    const Picture picture = picture_of(window.list.record(kImage));
    const auto index = PictureGetPixel(picture, 1, 0);
    EXPECT_EQ(index, change_images ? 1u : 3u);
    EXPECT_EQ(raw_text(window, kPalette).substr(3, 3), "\xFF\xFF\x0A");
    EXPECT_EQ(palette_of_colors()[3], 0) << "the source of the picture is untouched";
    EXPECT_NE(window.list.record(kPalette).description.find("5 entries"), std::string::npos);
  }
}

TEST(PaletteEdit, ALoadedPaletteThatIsShorterMatchesWhatItLacks) {
  DocumentWindow window = document();
  PaletteEdit edit = edit_of(window);
  PaletteColors colors;
  colors.count = 3;
  colors.palette = {250, 0, 0, 0, 250, 0, 140, 140, 140};
  EXPECT_FALSE(palette_load(edit, colors));
  ASSERT_TRUE(apply_palette(window, kPalette, edit, true));
  const Picture picture = picture_of(window.list.record(kImage));
  EXPECT_EQ(PictureGetPixel(picture, 0, 0), 0u);
  EXPECT_EQ(PictureGetPixel(picture, 3, 0), 1u)
      << "the lost opaque grey takes the opaque entry; the nearer two let through";
  EXPECT_EQ(raw_text(window, kTransparency), std::string("\x40\xFF\0", 3));
  colors.count = 256;
  edit.most = 16;
  EXPECT_TRUE(palette_load(edit, colors)) << "did not fit";
  EXPECT_EQ(edit.entries.size(), 16u);
}

TEST(PaletteEdit, RefusesWhatCanNotBe) {
  const DocumentWindow window = document(DocumentKind::PING, 4);
  PaletteEdit edit = edit_of(window);
  const PaletteUsage usage = usage_of(window);
  EXPECT_EQ(palette_delete(edit, {4, 2}, usage), "Color 2 is used by an image and can't be deleted.");
  EXPECT_EQ(edit.entries.size(), 5u);
  EXPECT_EQ(palette_delete(edit, {0, 1, 2, 3, 4}, {}), "A palette must have from 1 to 16 colors.");
  while (edit.entries.size() < 16) ASSERT_EQ(palette_add(edit, 0, {}), "");
  EXPECT_EQ(palette_add(edit, 0, {}), "A palette must have from 1 to 16 colors.");
  EXPECT_EQ(palette_unused(edit_of(window), usage), (std::vector<std::size_t>{4}));
}

TEST(PaletteEdit, GradientsGoInEvenSteps) {
  PaletteEdit edit;
  for (int i = 0; i < 5; ++i) edit.entries.push_back({7, 7, 7, 255, i});
  edit.entries[0] = {0, 200, 10};
  edit.entries[4] = {100, 0, 11};
  palette_gradient(edit, 0, 4);
  EXPECT_EQ(edit.entries[2].red, 50);
  EXPECT_EQ(edit.entries[3].green, 50);
  EXPECT_EQ(edit.entries[4].blue, 11);
  palette_gradient(edit, 1, 1);
  palette_gradient(edit, 3, 4);
  EXPECT_EQ(edit.entries[3].green, 50);
}

TEST(PaletteEdit, ASuggestedPaletteChangesNoImage) {
  DocumentWindow window = document();
  chunk_list_put(window.list, 0, header(8, 2));
  PaletteEdit edit = edit_of(window);
  EXPECT_EQ(edit.most, 256u);
  EXPECT_EQ(edit.entries[0].alpha, 255) << "tRNS of true color is no table";
  EXPECT_EQ(usage_of(window), PaletteUsage{});
  palette_reverse(edit);
  const ChunkHandle before = window.list.record(kImage).data;
  ASSERT_TRUE(apply_palette(window, kPalette, edit, true));
  EXPECT_TRUE(window.list.record(kImage).data.shares_with(before));
  EXPECT_EQ(raw_text(window, kBackground), "\3");
  EXPECT_EQ(raw_text(window, kPalette).substr(0, 3), std::string("\xFF\xFF\0", 3));
}

TEST(PaletteEdit, AnImageOfAnMngHasItsOwn) {
  DocumentWindow window;
  window.document.kind = DocumentKind::MING;
  ChunkRecord record = image(tag::PNGI, indexed_picture(8));
  record.flags = CRF_IHDR | CRF_IDAT | CRF_PLTE | CRF_TRNS | CRF_BKGD;
  record.bitDepth = 8;
  record.colorType = 3;
  EmbeddedImage& embedded = record.image.edit();
  embedded.palette = palette_of_colors();
  embedded.paletteBytes = 15;
  embedded.trans[2] = 0;
  embedded.trans[0] = embedded.trans[1] = 255;
  embedded.transBytes = 3;
  embedded.background[0] = 1;
  chunk_list_append(window.list, window.document, record);
  auto edit = palette_edit_of(window, 0);
  ASSERT_TRUE(edit);
  palette_reverse(*edit);
  ASSERT_TRUE(apply_palette(window, 0, *edit, true));
  const ChunkRecord& changed = window.list.record(0);
  EXPECT_EQ(PictureGetPixel(picture_of(changed), 0, 0), 4u);
  EXPECT_EQ(changed.image->background[0], 3);
  EXPECT_EQ(changed.image->transBytes, 3u);
  EXPECT_EQ(changed.image->trans[2], 0);
  EXPECT_EQ(changed.image->palette[0], 255);
  EXPECT_EQ(changed.image->palette[1], 255);
}

}  // namespace
}  // namespace vellum
