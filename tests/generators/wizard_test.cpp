// The animation wizard's build: every palette choice in every kind over files of every form, and files that
// can't be read.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "base/memory_budget.h"
#include "core/build/frame_stream.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/model/kind_table.h"
#include "core/settings.h"
#include "generators/wizard.h"
#include "image/builtin_palette.h"
#include "image/chunk_stream.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/png_file.h"
#include "image/remap.h"
#include "image/settings.h"
#include "operations/build_stills.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum {
namespace {

using testing::Recorder;
using testing::small_picture;

constexpr DocumentKind A = DocumentKind::APNG, M = DocumentKind::MING, W = DocumentKind::WEBP;
constexpr Colour kMask = 0x818283;

/// A file, what it shows, and which of its alphas stand in a table.
struct Source {
  std::filesystem::path path;
  Picture shown;  ///< 32 bits
  bool table = false;
  bool own_alpha = false;
};

void write(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

class Wizard : public ::testing::Test {
 protected:
  /// A PNG with a tRNS, if that holds something.
  Source png(const char* name, const Picture& picture, const std::vector<std::uint8_t>& trns,
             const std::vector<std::uint8_t>& table) {
    const auto plain = encode_png_picture(picture, 9);
    std::vector<std::uint8_t> bytes(kPngSignature.begin(), kPngSignature.end());
    for (const StreamChunk& chunk : gather_chunks(plain, kPngSignature.size(), tag::IEND).chunks) {
      if (chunk.tag == tag::IDAT && !trns.empty()) append_chunk(bytes, tag::tRNS, trns);
      append_chunk(bytes, chunk.tag, chunk.data);
    }
    write(folder_ / name, bytes);
    return {folder_ / name, PictureWithTransparency(picture, table), !table.empty(), picture.bits() == 32};
  }
  /// A GIF with a graphic control in front of its image.
  Source gif(const char* name, const Picture& picture, std::uint8_t index) {
    EXPECT_TRUE(GraphicFileWrite((folder_ / name).string(), picture));
    auto bytes = testing::file_bytes(folder_ / name);
    const std::size_t image = 13 + (std::size_t{6} << (bytes[10] & 7));
    const std::uint8_t control[] = {0x21, 0xF9, 4, 1, 0, 0, index, 0};
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(image), std::begin(control), std::end(control));
    write(folder_ / name, bytes);
    std::vector<std::uint8_t> table(index + 1u, 255);
    table.back() = 0;
    return {folder_ / name, PictureWithTransparency(picture, table), true, false};
  }
  std::vector<Source> sources() {
    const Picture grey = PictureToGrey(small_picture(6, 4, 24, 3)), rgb = small_picture(4, 3, 24, 6);
    const auto level = static_cast<std::uint8_t>(PictureGetPixel(grey, 2, 1));
    std::vector<std::uint8_t> levels(level + 1u, 255);
    levels.back() = 0;
    const Colour key = PictureGetPixel(rgb, 1, 1);
    const std::vector<std::uint8_t> triple = {0, red_of(key), 0, green_of(key), 0, blue_of(key)};
    const Picture paletted = small_picture(6, 4, 4, 2);
    std::vector<std::uint8_t> alphas(16, 255);
    alphas[PictureGetPixel(paletted, 0, 0)] = 0;
    alphas[PictureGetPixel(paletted, 3, 2)] = 90;
    Picture deep = PictureToTrueColorAlpha(small_picture(6, 4, 24, 7));
    PicturePutPixel(deep, 2, 2, 0x40123456);
    return {png("source_a.png", paletted, alphas, alphas),
            png("source_b.png", grey, {0, level}, levels),
            png("source_c.png", rgb, triple, triple),
            png("source_d.png", deep, {}, {}),
            gif("e.gif", small_picture(6, 3, 8, 4), 0),
            png("source_f.png", small_picture(6, 4, 1, 5), {}, {})};
  }
  static std::vector<std::filesystem::path> paths(const std::vector<Source>& sources) {
    std::vector<std::filesystem::path> files;
    for (const Source& source : sources) files.push_back(source.path);
    return files;
  }
  static FieldValues values(std::int64_t palette, bool preserve, bool masks) {
    FieldValues values = initial_values(kWizard.fields);
    values.set("palette", palette);
    values.set("preserveTransparency", std::int64_t{preserve});
    values.set("masks", std::int64_t{masks});
    values.set("maskColor", std::int64_t{kMask});
    values.set("delay", std::int64_t{70});
    return values;
  }

  testing::SettingsGuard guard_;
  testing::ScratchFolder folder_;
  Recorder recorder_;
};

/// The colors that all frames have, and how many.
struct Colors {
  Palette palette{};
  std::uint32_t count = 0;
  bool mask = false;  ///< the last one is the entry for it
};

Colors colors_of(const DocumentWindow& window) {
  Colors colors;
  colors.count = chunk_find_palette(window.list, colors.palette);
  for (const std::size_t entry : frame_entries(window)) {
    const ChunkRecord& record = window.list.record(entry);
    if (window.document.kind != M) continue;
    colors.palette = record.image->palette;
    colors.count = record.image->paletteBytes / 3;
    if (record.image->transBytes > 0) colors.mask = true;
  }
  return colors;
}

/// What the text says of one pixel; nothing where a palette makes it something else.
std::optional<Colour> pixel_wanted(const Source& source, std::uint32_t x, std::uint32_t y,
                                   std::int64_t choice, bool preserve, bool masks, const Colors& colors) {
  const Colour pixel = PictureGetPixel(source.shown, x, y);
  const bool marked = source.table && alpha_of(pixel) < 255;
  if (choice == kWizardAsIs) return source.own_alpha || preserve ? pixel : pixel | 0xFF000000;
  if (choice <= kWizardDither && preserve && masks && marked) return 0;
  if (choice == kWizardTrueColor) return pixel | 0xFF000000;
  if (choice == kWizardDither || choice == kWizardPhotorealistic) return std::nullopt;
  const std::uint32_t index = NearestPaletteIndex(red_of(pixel), green_of(pixel), blue_of(pixel),
                                                  colors.palette, colors.count - (colors.mask ? 1 : 0));
  return make_colour(colors.palette[3 * index], colors.palette[3 * index + 1], colors.palette[3 * index + 2],
                     255);
}

void expect_superpalette(const Colors& colors, bool mask) {
  ASSERT_EQ(colors.mask, mask);
  const std::uint32_t count = colors.count - (mask ? 1 : 0);
  EXPECT_LE(count, mask ? 255u : 256u);
  const auto light = [&](std::uint32_t i) {
    const std::uint8_t* c = &colors.palette[3 * i];
    return (77 * c[0] + 150 * c[1] + 28 * c[2]) / 255;
  };
  for (std::uint32_t i = 2; i + 1 < count; ++i) EXPECT_LE(light(i - 1), light(i));
  if (!mask) return;
  const std::uint8_t* last = &colors.palette[3 * count];
  EXPECT_EQ(make_colour(last[0], last[1], last[2]), kMask);
}

TEST_F(Wizard, MakesOfEveryFileWhatChoiceAndKindSay) {
  settings::WEBPLossless = 1;
  settings::FastRemap = 0;
  settings::AllowAdvancedPalettes = 1;
  const auto files = sources();
  for (const DocumentKind kind : {A, M, W})
    for (std::int64_t given = kWizardAsIs; given <= kWizardDrawn; ++given)
      for (const bool preserve : {true, false})
        for (const bool masks : {true, false}) {
          SCOPED_TRACE(std::string(testing::kFileNames.at(kind)) + " choice " + std::to_string(given) +
                       (preserve ? " preserving" : "") + (masks ? " masks" : ""));
          std::int64_t choice = given;
          if (kind != M && preserve) choice = kWizardAsIs;
          if (kind == W) choice = std::min<std::int64_t>(choice, kWizardTrueColor);
          DocumentWindow window, read;
          ASSERT_TRUE(
              build_wizard(paths(files), values(given, preserve, masks), kind, window, recorder_.host));
          const auto path = folder_ / testing::kFileNames.at(kind);
          ASSERT_TRUE(save_document(window, path, recorder_.host));
          EXPECT_EQ(testing::objections(path), "");
          ASSERT_TRUE(open_document(read, path, recorder_.host));
          const Extent canvas = document_size(read.list, read.document);
          ASSERT_TRUE(canvas.width == 6 && canvas.height == 4);
          EXPECT_EQ(GetIterations(read.list, read.document), 0u);
          const Colors colors = choice >= kWizardMatch ? colors_of(window) : Colors{};
          if (choice == kWizardMatch || choice == kWizardDither)
            expect_superpalette(colors, kind == M && preserve && masks);
          if (choice == kWizardFirst) {
            EXPECT_EQ(colors.count, 16u);
          }
          if (choice >= kWizardPhotorealistic) {
            EXPECT_EQ(colors.count, 256u);
          }
          const FrameStream shown = canvas_frames(read);
          ASSERT_EQ(shown.count, files.size());
          for (std::uint32_t i = 0; i < shown.count; ++i) {
            const StreamedFrame frame = shown.frame(i);
            EXPECT_EQ(frame.delay, 70u);
            const Picture& source = files[i].shown;
            const Picture made = testing::images_of(window)[i];
            EXPECT_TRUE(choice < kWizardMatch || made.bits() <= 8) << i;
            EXPECT_TRUE(choice != kWizardTrueColor || made.bits() == 24) << i;
            for (std::uint32_t y = 0; y < source.height(); ++y)
              for (std::uint32_t x = 0; x < source.width(); ++x) {
                const auto wanted = pixel_wanted(files[i], x, y, choice, preserve, masks, colors);
                const Colour pixel = PictureGetPixel(frame.picture, x, y);
                const bool same = !wanted || pixel == *wanted || alpha_of(pixel | *wanted) == 0;
                ASSERT_TRUE(same) << i << ": " << x << ", " << y << ": " << std::hex << pixel << " for "
                                  << *wanted;
              }
            // Each file is shown alone: nothing of the one before lies around it.
            if (kind != W && source.width() < 6) {
              EXPECT_EQ(alpha_of(PictureGetPixel(frame.picture, 5, 0)), 0u);
            }
          }
        }
}

TEST_F(Wizard, APlainBuildReadsTheTransparencyOfTheSameFiles) {
  for (const Source& source : sources()) {
    const Picture read = PictureWithTransparency(read_still(source.path).picture, {});
    for (std::uint32_t y = 0; y < read.height(); ++y)
      for (std::uint32_t x = 0; x < read.width(); ++x)
        ASSERT_EQ(PictureGetPixel(read, x, y), PictureGetPixel(source.shown, x, y))
            << source.path << x << ", " << y;
  }
}

TEST_F(Wizard, FramesOfASuperpaletteDoNotDependOnWhatIsKeptInMemory) {
  const auto files = paths(sources());
  const auto dithered = values(kWizardDither, true, true);
  DocumentWindow kept, again;
  ASSERT_TRUE(build_wizard(files, dithered, M, kept, recorder_.host));
  const std::uint64_t room = std::exchange(gatheredBytes, 1);
  ASSERT_TRUE(build_wizard(files, dithered, M, again, recorder_.host));
  gatheredBytes = room;
  const auto ones = testing::images_of(kept), others = testing::images_of(again);
  for (std::size_t i = 0; i < ones.size(); ++i)
    EXPECT_TRUE(std::ranges::equal(ones[i].handle().bytes(), others[i].handle().bytes())) << i;
}

TEST_F(Wizard, PicturesThatGoThroughKeepTheirStreamsAndStayPacked) {
  const std::uint64_t room = std::exchange(gatheredBytes, 0);
  for (const std::uint32_t bits : {8u, 24u, 32u}) {
    std::vector<std::filesystem::path> files;
    std::vector<HeldPicture> stills;
    for (const char* name : {"1.png", "2.png", "3.png"}) {
      Picture picture = small_picture(90, 70, bits, 3);
      PicturePutPixel(picture, 5, 5, static_cast<Colour>(name[0]));
      write(folder_ / name, encode_png_picture(picture, 1));
      files.push_back(folder_ / name);
      stills.push_back(hold_picture(read_still(files.back()).picture));
      let_go(stills.back().block);
    }
    for (const DocumentKind kind : {A, M}) {
      SCOPED_TRACE(std::to_string(bits) + std::string(kind_row(kind).extensions.front()));
      const std::uint64_t before = resident_bytes();
      DocumentWindow window, plain;
      ASSERT_TRUE(build_wizard(files, values(kWizardAsIs, true, true), kind, window, recorder_.host));
      ASSERT_TRUE(
          build_from_stills(plain, stills, {.kind = kind, .delay = 70, .whole = true}, recorder_.host));
      const auto made = folder_ / "made", other = folder_ / "other";
      ASSERT_TRUE(save_document(window, made, recorder_.host) && save_document(plain, other, recorder_.host));
      if (bits > 8) EXPECT_EQ(resident_bytes(), before);  // of indexes somebody asks for the largest
      const auto bytes = testing::file_bytes(made);
      EXPECT_EQ(bytes, testing::file_bytes(other));
      for (const auto& file : files) {
        const auto source = testing::file_bytes(file);
        const auto chunks = gather_chunks(source, kPngSignature.size(), tag::IEND).chunks;
        const auto data = std::ranges::find(chunks, std::uint32_t{tag::IDAT}, &StreamChunk::tag)->data;
        EXPECT_FALSE(std::search(bytes.begin(), bytes.end(), data.begin(), data.end()) == bytes.end())
            << file;
      }
    }
  }
  gatheredBytes = room;
}

TEST_F(Wizard, APreviewShowsWhatIsBuiltAlsoOfFilesThatAreReadAgain) {
  const auto files = paths(sources());
  const std::uint64_t before = gatheredBytes;
  for (int choice = kWizardAsIs; choice <= kWizardDrawn; ++choice)
    for (const bool preserve : {false, true})
      for (const DocumentKind kind : {A, M, W}) {
        SCOPED_TRACE(std::to_string(choice) + (preserve ? " preserved " : " ") +
                     std::string(kind_row(kind).extensions.front()));
        const FieldValues given = values(choice, preserve, true);
        DocumentWindow window;
        gatheredBytes = choice % 2 == 0 ? 0 : before;
        ASSERT_TRUE(build_wizard(files, given, kind, window, recorder_.host));
        const WizardShown shown = wizard_shown(files, given, kind, recorder_.host);
        ASSERT_TRUE(shown);
        const FrameStream frames = canvas_frames(window);
        for (std::size_t i = 0; i < files.size(); ++i) {
          const Picture built = frames.frame(i).picture, seen = shown(files[i], i, frames.canvas);
          ASSERT_EQ(std::pair(seen.width(), seen.height()), std::pair(built.width(), built.height()));
          for (std::uint32_t y = 0; y < built.height(); ++y)
            for (std::uint32_t x = 0; x < built.width(); ++x) {
              const Colour a = PictureGetPixel(built, x, y), b = PictureGetPixel(seen, x, y);
              ASSERT_TRUE(a == b || (a | b) >> 24 == 0) << i << ": " << x << ", " << y;
            }
        }
      }
  gatheredBytes = before;
}

TEST_F(Wizard, PalettesOfExactlySoManyColorsKeepTheMaskBehindThem) {
  // Of 2, 16 and 128 colors, far apart: a table of 1, 4 and 8 bits has no room for one more in the first two.
  for (const auto& [count, bits] : {std::pair(2u, 4u), {16u, 8u}, {128u, 8u}}) {
    Palette palette{};
    for (std::uint32_t i = 0; i < count; ++i) {
      palette[3 * i] = static_cast<std::uint8_t>(20 + 32 * (i & 7));
      palette[3 * i + 1] = static_cast<std::uint8_t>(20 + 32 * (i >> 3 & 3));
      palette[3 * i + 2] = static_cast<std::uint8_t>(20 + 60 * (i >> 5));
    }
    Picture picture = PictureCreate(130, 1, &palette, 8);
    for (std::uint32_t x = 0; x < 129; ++x) PicturePutPixel(picture, x, 0, x % count);
    PicturePutPixel(picture, 129, 0, 200);
    std::vector<std::uint8_t> alphas(201, 255);
    alphas.back() = 0;
    const auto source = png("x.png", picture, alphas, alphas);
    DocumentWindow window;
    ASSERT_TRUE(build_wizard({source.path, source.path}, values(kWizardMatch, true, true), M, window,
                             recorder_.host));
    const ChunkRecord& record = window.list.record(frame_entries(window).back());
    EXPECT_EQ(record.image->paletteBytes, 3 * (count + 1));
    EXPECT_EQ(record.image->transBytes, count + 1);
    const Picture made = testing::images_of(window).back();
    EXPECT_EQ(made.bits(), bits);
    EXPECT_EQ(PictureGetPixel(made, 129, 0), count);
  }
}

TEST_F(Wizard, FilesThatCanNotBeReadAreAskedAboutAndAStopLeavesNothing) {
  auto files = paths(sources());
  write(folder_ / "empty.png", {});
  auto cut = testing::file_bytes(files[3]);
  cut.resize(40);
  write(folder_ / "cut.png", cut);
  files.insert(files.begin() + 2, {folder_ / "empty.png", folder_ / "gone.gif", folder_ / "cut.png"});
  for (const std::int64_t choice : {kWizardAsIs, kWizardMatch}) {
    std::size_t asked = 0;
    recorder_.host.ask = [&](const Message& message, bool) {
      EXPECT_EQ(message.id, StringId::CorruptedGraphicQuestion);
      ++asked;
      return Answer::Yes;
    };
    DocumentWindow window, none;
    ASSERT_TRUE(build_wizard(files, values(choice, true, true), M, window, recorder_.host));
    EXPECT_EQ(asked, 3u);
    EXPECT_EQ(frame_entries(window).size(), files.size() - 3);
    recorder_.host.ask = [](const Message&, bool) { return Answer::No; };
    EXPECT_FALSE(build_wizard(files, values(choice, true, true), M, none, recorder_.host));
    EXPECT_TRUE(recorder_.messages.empty());
    for (std::size_t patience = 0; patience < 8; ++patience) {
      std::size_t heard = 0;
      Recorder impatient;
      impatient.host.ask = nullptr;
      impatient.host.stop_requested = [&] { return heard++ >= patience; };
      EXPECT_FALSE(build_wizard(files, values(choice, true, true), M, none, impatient.host));
      EXPECT_TRUE(none.list.empty() && impatient.messages.empty()) << patience;
    }
  }
  DocumentWindow none;
  EXPECT_FALSE(
      build_wizard({files[2], files[0]}, values(kWizardFirst, false, true), A, none, recorder_.host));
  EXPECT_EQ(recorder_.messages.size(), 1u) << "the first file has no palette to give";
  recorder_.host.ask = nullptr;
  EXPECT_FALSE(build_wizard({files[2], files[3]}, values(kWizardAsIs, true, true), A, none, recorder_.host));
  EXPECT_EQ(recorder_.messages.size(), 2u) << "none is left";
  EXPECT_TRUE(none.list.empty());
}

}  // namespace
}  // namespace vellum
