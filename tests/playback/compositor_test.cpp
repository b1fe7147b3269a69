// Canvases: against a plain second implementation, pixel by pixel, on made-up animations of every kind; and
// against outside players on real ones.
#include "playback/compositor.h"

#include <cmath>
#include <random>
#include <sstream>

#include "base/byte_order.h"
#include "core/build/convert_records.h"
#include "core/files/open_document.h"
#include "core/model/frame_values.h"
#include "core/model/framing.h"
#include "core/model/played_frames.h"
#include "core/settings.h"
#include "image/lanes.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/settings_guard.h"

namespace vellum {
namespace {

using testing::record_of;
using testing::Recorder;

constexpr std::uint32_t kWide = 23, kHigh = 17;
constexpr Colour kBackground = 0x3070C0;

class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}
  std::uint32_t operator()(std::uint32_t below) { return static_cast<std::uint32_t>(engine_()) % below; }

 private:
  std::minstd_rand engine_;
};

Picture random_picture(Dice& dice, std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  Palette palette;
  for (auto& value : palette) value = static_cast<std::uint8_t>(dice(256));
  Picture picture = PictureCreate(width, height, &palette, bits);
  constexpr Colour kAlphas[] = {0, 0xFF000000, 0x80000000, 0x01000000};
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x)
      PicturePutPixel(picture, x, y, bits == 32 ? dice(1 << 24) | kAlphas[dice(4)] : dice(1 << 24));
  return picture;
}

ChunkRecord random_frame(Dice& dice, DocumentKind kind, bool first) {
  constexpr std::uint32_t kBits[] = {1, 4, 8, 24, 32};
  const std::uint32_t bits = kind == DocumentKind::WEBP ? 24 + 8 * dice(2) : kBits[dice(5)];
  const bool whole = dice(3) == 0 || first;
  const std::uint32_t width = whole ? kWide : 1 + dice(kWide), height = whole ? kHigh : 1 + dice(kHigh);
  const std::uint32_t x = whole ? 0 : dice(12), y = whole ? 0 : dice(12);
  ChunkRecord record;
  record.data = random_picture(dice, width, height, bits).handle();
  record.width = width;
  record.height = height;
  record.bitDepth = static_cast<std::uint8_t>(std::min(bits, 8u));
  record.colorType = bits == 32 ? 6 : bits == 24 ? 2 : 3;
  if (kind == DocumentKind::APNG) {
    record.tag = tag::IDAT;
    record.frameControl = {0,
                           width,
                           height,
                           x,
                           y,
                           1,
                           10,
                           static_cast<std::uint8_t>(dice(3)),
                           static_cast<std::uint8_t>(dice(2))};
  } else if (kind == DocumentKind::WEBP) {
    record.tag = tag::WEBI;
    record.webpImage = {width, height, x, y, 10, bits, dice(2), 6};
  } else {
    record.tag = tag::PNGI;
    EmbeddedImage& image = record.image.edit();
    record.flags = CRF_IHDR | CRF_IDAT | CRF_DEFI | (dice(2) ? CRF_FRAM : 0u);
    image.defiBytes = 12;
    image.defiBlock.xLocation = static_cast<std::int32_t>(to_file_order(x - 6));
    image.defiBlock.yLocation = static_cast<std::int32_t>(to_file_order(y - 6));
    image.framBlock.framingMode = static_cast<std::uint8_t>(dice(5));
    if (record.colorType == 3 && dice(2)) {
      image.transBytes = 2;
      image.trans[0] = 0;
      image.trans[1] = 100;
    }
  }
  return record;
}

DocumentWindow random_animation(DocumentKind kind, unsigned seed, std::size_t frames) {
  Dice dice(seed);
  DocumentWindow window;
  window.document.kind = kind;
  ChunkRecord header;
  header.tag = kind == DocumentKind::APNG ? tag::IHDR : kind == DocumentKind::MING ? tag::MHDR : tag::WEBH;
  header.width = header.frameWidth = header.webpHeader.canvasWidth = kWide;
  header.height = header.frameHeight = header.webpHeader.canvasHeight = kHigh;
  header.bitDepth = 8;
  header.colorType = 3;
  header.webpHeader.backgroundColor = kBackground;
  header.ticksPerSecond = 100;
  header.webpHeader.loopCount = 1;
  chunk_list_append(window.list, window.document, header);
  if (kind == DocumentKind::APNG && seed % 2)
    chunk_list_append(window.list, window.document, record_of(tag::tRNS, std::string("\0\x80", 2)));
  for (std::size_t i = 0; i < frames; ++i)
    chunk_list_append(window.list, window.document, random_frame(dice, kind, i == 0));
  return window;
}

// ------------------------------------------------------------------------------------- the plain
// implementation

using Pixel = std::array<double, 3>;
using Canvas = std::vector<Pixel>;

Pixel levels(Colour colour) {
  return {double(colour & 255), double(colour >> 8 & 255), double(colour >> 16 & 255)};
}

/// Straight alpha over an opaque ground, exactly; by the classic rules each product is truncated.
Pixel blended(const Pixel& source, const Pixel& ground, std::uint32_t alpha, bool classic) {
  Pixel result;
  for (std::size_t c = 0; c < 3; ++c) {
    const double over = source[c] * alpha / 255, under = ground[c] * (255 - alpha) / 255;
    result[c] = classic ? std::floor(over) + std::floor(under) : over + under;
  }
  return result;
}

struct PlainFrame {
  const ChunkRecord& record;
  Picture picture;
  std::int32_t x, y;
  std::uint32_t dispose;  ///< in an MNG 1: its framing mode clears

  std::pair<Pixel, std::uint32_t> pixel(std::uint32_t px, std::uint32_t py,
                                        std::span<const std::uint8_t> trans) const {
    const Colour value = PictureGetPixel(picture, px, py);
    if (picture.bits() == 32) return {levels(value), value >> 24};
    if (picture.bits() == 24) return {levels(value), 255};
    Palette palette;
    PictureGetPalette(picture, palette);
    const Colour colour = make_colour(palette[3 * value], palette[3 * value + 1], palette[3 * value + 2]);
    return {levels(colour), value < trans.size() ? trans[value] : 255u};
  }
  /// Laid on what is there, and not on the background.
  bool on_canvas(DocumentKind kind, bool classic) const {
    if (kind == DocumentKind::WEBP) return false;
    if (kind == DocumentKind::MING) return !classic || picture.bits() < 32;
    return record.frameControl.blend == 1 || (classic && picture.bits() < 32);
  }
};

PlainFrame plain_frame(const ChunkRecord& record, DocumentKind kind) {
  const Picture picture = picture_of(record);
  if (kind == DocumentKind::APNG)
    return {record, picture, static_cast<std::int32_t>(record.frameControl.xOffset),
            static_cast<std::int32_t>(record.frameControl.yOffset), record.frameControl.dispose};
  if (kind == DocumentKind::WEBP)
    return {record, picture, static_cast<std::int32_t>(record.webpImage.xOffset),
            static_cast<std::int32_t>(record.webpImage.yOffset), record.webpImage.dispose};
  const std::uint8_t mode = record.image->framBlock.framingMode;
  return {record, picture, from_file_order(record.image->defiBlock.xLocation),
          from_file_order(record.image->defiBlock.yLocation),
          (record.flags & CRF_FRAM) && mode >= 3 ? 1u : 0u};
}

std::vector<Canvas> plain_canvases(const DocumentWindow& window, Colour ground) {
  const DocumentKind kind = window.document.kind;
  const bool classic = settings::ClassicPlayback != 0;
  const std::size_t at = chunk_find_first(window.list, tag::tRNS);
  const Pixel background = levels(ground);
  Canvas canvas(kWide * kHigh, background), under;
  std::vector<Canvas> canvases;
  std::optional<PlainFrame> last;
  const auto each = [&](const PlainFrame& frame, auto&& use) {
    for (std::uint32_t y = 0; y < frame.picture.height(); ++y)
      for (std::uint32_t x = 0; x < frame.picture.width(); ++x) {
        const std::int64_t cx = std::int64_t{frame.x} + x, cy = std::int64_t{frame.y} + y;
        if (cx >= 0 && cy >= 0 && cx < kWide && cy < kHigh)
          use(static_cast<std::size_t>(cy * kWide + cx), x, y);
      }
  };
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    if (!is_image_entry(kind, window.list.record(i).tag)) continue;
    const PlainFrame frame = plain_frame(window.list.record(i), kind);
    const bool behind = classic || kind != DocumentKind::MING;
    if (last && last->dispose == 1 && behind)
      each(*last, [&](std::size_t c, std::uint32_t, std::uint32_t) { canvas[c] = background; });
    if (last && last->dispose == 2)
      each(*last, [&](std::size_t c, std::uint32_t, std::uint32_t) { canvas[c] = under[c]; });
    if ((frame.dispose == 1 && !behind) || (kind == DocumentKind::WEBP && !classic))
      canvas.assign(canvas.size(), background);
    under = canvas;
    std::span<const std::uint8_t> trans;
    if (kind == DocumentKind::MING)
      trans = std::span(frame.record.image->trans).first(frame.record.image->transBytes);
    else if (at != kNoEntry)
      trans = raw_payload(window.list.record(at));
    each(frame, [&](std::size_t c, std::uint32_t x, std::uint32_t y) {
      const auto [colour, alpha] = frame.pixel(x, y, trans);
      canvas[c] = blended(colour, frame.on_canvas(kind, classic) ? canvas[c] : background, alpha, classic);
    });
    canvases.push_back(canvas);
    last.emplace(frame);
  }
  return canvases;
}

/// Equal by the classic rules; by the others rounded, with what 80 frames lose in 256ths of a level.
bool equal(const Picture& picture, const Canvas& canvas) {
  if (!picture || picture.width() != kWide || picture.height() != kHigh || picture.bits() != 24) return false;
  const double most = settings::ClassicPlayback != 0 ? 0 : 0.85;
  for (std::uint32_t y = 0; y < kHigh; ++y)
    for (std::uint32_t x = 0; x < kWide; ++x) {
      const Pixel got = levels(PictureGetPixel(picture, x, y));
      for (std::size_t c = 0; c < 3; ++c)
        if (std::abs(got[c] - canvas[y * kWide + x][c]) > most) return false;
    }
  return true;
}

constexpr DocumentKind kKinds[] = {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP};

TEST(Compositor, CanvasesAreThoseOfTheRulesWhateverIsKept) {
  const testing::SettingsGuard guard;
  for (const DocumentKind kind : kKinds)
    for (unsigned seed = 1; seed <= 12; ++seed) {
      settings::ClassicPlayback = seed / 2 % 2;
      without_avx2 = seed % 3 == 0;
      const DocumentWindow window = random_animation(kind, seed, 80);
      const Colour background = kind == DocumentKind::WEBP ? kBackground : 0xFFFFFF;
      const auto expected = plain_canvases(window, background);
      for (const std::uint64_t kept : {std::uint64_t{1} << 30, std::uint64_t{20'000}, std::uint64_t{0}}) {
        Compositor compositor(window.list, window.document, kept);
        for (std::size_t i = 0; i < expected.size(); ++i) {
          const auto frame = compositor.next();
          ASSERT_TRUE(frame && equal(frame->picture, expected[i]))
              << kind_letters(kind) << " seed " << seed << " frame " << i << " kept " << kept << " classic "
              << settings::ClassicPlayback;
        }
        // Steps back, and a second round, show what was shown before.
        for (std::size_t back = 1; back < 50; ++back) {
          compositor.step_back();
          const auto frame = compositor.next();
          ASSERT_TRUE(frame && equal(frame->picture, expected[expected.size() - 1 - back])) << back;
        }
        compositor.rewind();
        for (std::size_t i = 0; i < expected.size(); ++i)
          ASSERT_TRUE(equal(compositor.next()->picture, expected[i])) << "again " << i;
      }
    }
  without_avx2 = false;
}

/// What changed since the last canvas is all that is made straight anew.
TEST(Compositor, StraightCanvasesAreTheWholeCanvasMadeStraight) {
  for (const DocumentKind kind : kKinds)
    for (unsigned seed = 1; seed <= 12; ++seed) {
      const DocumentWindow window = random_animation(kind, seed, 80);
      const ViewValues values = view_values(window.list, window.document, {Ground::Kind::Clear});
      StraightCanvases canvases(window);
      CanvasState state;
      for (std::size_t i = 0; i < window.list.size(); ++i) {
        const ChunkRecord& record = window.list.record(i);
        if (!is_image_entry(kind, record.tag)) continue;
        ASSERT_TRUE(compose_frame(state, values, record));
        ASSERT_TRUE(std::ranges::equal(canvases.next(record).handle().bytes(),
                                       straight_picture(state.canvas).handle().bytes()))
            << kind_letters(kind) << " seed " << seed << " entry " << i;
      }
    }
}

/// Going anywhere shows what playing would have shown there, whatever was composed before.
TEST(Compositor, GoesToAnyFrame) {
  for (const DocumentKind kind : kKinds) {
    const DocumentWindow window = random_animation(kind, 5, 80);
    const auto expected = plain_canvases(window, kind == DocumentKind::WEBP ? kBackground : 0xFFFFFF);
    for (const std::uint64_t kept : {std::uint64_t{1} << 30, std::uint64_t{0}}) {
      Compositor compositor(window.list, window.document, kept);
      Dice dice(3);
      for (int i = 0; i < 30; ++i) {
        const std::uint32_t to = dice(80);
        int left = static_cast<int>(dice(90));
        if (!compositor.prepare(to, [&] { return left-- > 0; })) continue;
        compositor.go_to(to);
        const auto frame = compositor.next();
        ASSERT_TRUE(frame && frame->ordinal == to && equal(frame->picture, expected[to])) << to;
      }
    }
  }
}

/// Whatever is edited, what the view before had composed is taken as far as it is true, and no further.
TEST(Compositor, AViewOfAnEditedDocumentTakesWhatIsStillTrue) {
  constexpr std::uint32_t kStep = 8;  // frames between two states that are kept
  for (const DocumentKind kind : kKinds)
    for (const std::uint64_t kept : {std::uint64_t{1} << 30, std::uint64_t{20'000}}) {
      Dice dice(7);
      DocumentWindow window = random_animation(kind, 3, 40);
      ChunkList& list = window.list;
      Compositor::Heritage left;
      // Shows a frame, and says how many were composed for it.
      const auto view = [&](std::uint32_t to) {
        Compositor compositor(list, window.document, kept), anew(list, window.document);
        compositor.follow_edits(std::move(left));
        const auto shows = [&](std::uint32_t at) {
          EXPECT_TRUE(std::ranges::equal(compositor.frame(at).picture.handle().bytes(),
                                         anew.frame(at).picture.handle().bytes()))
              << kind_letters(kind) << ' ' << at << " kept " << kept;
          return compositor.composed();
        };
        const std::uint64_t composed = shows(to);
        shows(dice(to + 1));
        left = compositor.leave();
        return composed;
      };
      // Edits a frame, and says from which one on another canvas may come.
      const auto change = [&](std::uint32_t frame) {
        const std::size_t entry = list.size() - chunk_count_images(list, kind) + frame;
        ChunkRecord record = list.record(entry);
        switch (dice(5)) {
          case 0:
            set_frame_delay(record, kind, 100, 1230 + dice(100));
            chunk_list_put(list, entry, record);
            return kind == DocumentKind::MING ? frame : UINT32_MAX;
          case 1:
            list.remove(entry);
            return frame;
          case 2:
            list.insert(entry, list.entry(entry).record);
            return frame;
          case 3:
            list.insert(entry, make_entry(window.document, random_frame(dice, kind, false)));
            return frame;
          default:
            chunk_list_put(list, entry, random_frame(dice, kind, false));
            return frame;
        }
      };
      view(39);
      bool whole = true;
      for (int i = 0; i < 60; ++i) {
        const std::uint32_t from = change(dice(static_cast<std::uint32_t>(chunk_count_images(list, kind))));
        const auto frames = static_cast<std::uint32_t>(chunk_count_images(list, kind));
        const std::uint64_t composed = view(dice(3) == 0 ? dice(frames) : frames - 1);
        if (whole) EXPECT_LE(composed, frames - std::min(from, frames) + 2 * kStep) << i;
        whole = !left.visits.empty() && left.visits.size() == frames;
      }
    }
}

/// On no ground a canvas laid over a color is, but for rounding twice, what was composed on that color.
TEST(Compositor, ClearCanvasesLaidOverAColorAreThoseOfThatColor) {
  constexpr Colour kGround = 0x20C040;
  for (const DocumentKind kind : kKinds) {
    const DocumentWindow window = random_animation(kind, 4, 25);
    Compositor clear(window.list, window.document), solid(window.list, window.document);
    // Half the way on the document's own color, then over to another in the middle.
    for (int i = 0; i < 12; ++i) clear.next(), solid.next();
    clear.set_ground({Ground::Kind::Clear, 0});
    solid.set_ground({Ground::Kind::Solid, kGround});
    for (std::uint32_t i = 12; i < 25; ++i) {
      const auto over = clear.next(), on = solid.next();
      ASSERT_TRUE(over && on && over->picture.bits() == 32 && over->ordinal == i);
      for (std::uint32_t y = 0; y < kHigh; ++y)
        for (std::uint32_t x = 0; x < kWide; ++x) {
          const Colour pixel = PictureGetPixel(over->picture, x, y),
                       whole = PictureGetPixel(on->picture, x, y);
          for (int shift = 0; shift < 24; shift += 8) {
            const double laid = double(pixel >> shift & 255) +
                                double(kGround >> shift & 255) * (255 - double(pixel >> 24)) / 255;
            ASSERT_NEAR(laid, double(whole >> shift & 255), 1.6) << kind_letters(kind) << ' ' << i;
          }
        }
    }
  }
}

/// The largest difference of a channel where both pictures are.
int farthest(const Picture& a, const Picture& b) {
  int most = a && b && a.bits() == b.bits() ? 0 : 256;
  for (std::uint32_t y = 0; most < 256 && y < std::min(a.height(), b.height()); ++y) {
    const std::uint8_t *first = a.row(y), *second = b.row(y);
    for (std::size_t x = 0; x < a.bits() / 8 * std::size_t{std::min(a.width(), b.width())}; ++x)
      most = std::max(most, std::abs(int{first[x]} - second[x]));
  }
  return most;
}

/// The same on the document's ground and on none; one after the other, as the document is played.
int farthest(const DocumentWindow& from, const DocumentWindow& to) {
  int most = 0;
  // A paletted PNG is played on the default background, whatever the source says.
  const bool same_ground =
      document_background(from.list, from.document) == document_background(to.list, to.document);
  for (const Ground::Kind ground : {Ground::Kind::Document, Ground::Kind::Clear}) {
    if (ground == Ground::Kind::Document && !same_ground && to.list.record(0).colorType == 3) continue;
    Compositor source(from.list, from.document), converted(to.list, to.document);
    source.set_ground({ground});
    converted.set_ground({ground});
    const auto entries = played_frames(from).entries;
    if (converted.frames() != entries.size()) return 256;
    for (std::uint32_t i = 0; i < entries.size(); ++i) {
      const std::size_t entry = entries[i];
      std::uint32_t ordinal = 0;
      for (std::size_t at = 0; at < entry; ++at)
        ordinal += is_image_entry(from.document.kind, from.list.record(at).tag);
      most = std::max(most, farthest(source.frame(ordinal).picture, converted.frame(i).picture));
    }
  }
  return most;
}

TEST(Compositor, AConvertedDocumentPlaysAsItsSource) {
  const testing::SettingsGuard guard;
  Recorder recorder;
  for (const int classic : {0, 1})
    for (const DocumentKind kind : kKinds)
      for (const DocumentKind other : kKinds)
        for (unsigned seed = 1; seed <= 6 && other != kind; ++seed) {
          settings::ClassicPlayback = classic;
          const DocumentWindow window = random_animation(kind, seed, 12);
          DocumentWindow converted;
          ASSERT_TRUE(convert_document(window, converted, other, recorder.host));
          // Classic products lose up to two levels a frame, and a conversion none.
          EXPECT_LE(farthest(window, converted), classic ? 24 : 1)
              << kind_letters(kind) << " to " << kind_letters(other) << " seed " << seed << " classic "
              << classic;
        }
}

/// All real animations; VELLUM_ALL takes the large ones too.
TEST(Compositor, ConvertedRealAnimationsPlayAsTheirSources) {
  VELLUM_NEEDS_CORPUS();
  const std::uint64_t most = std::getenv("VELLUM_ALL") ? UINT64_MAX : 3'000'000;
  std::size_t compared = 0;
  for (const auto& row : testing::corpus_rows({"apng", "mng", "webp"})) {
    Recorder recorder;
    DocumentWindow window;
    if (!open_document(window, testing::corpus_file(row), recorder.host) ||
        !is_animation(window.document.kind))
      continue;
    const Extent canvas = document_size(window.list, window.document);
    const std::size_t frames = played_frames(window).entries.size();
    if (frames == 0 || std::uint64_t{canvas.width} * canvas.height * frames > most) continue;
    for (const DocumentKind kind : kKinds) {
      if (kind == window.document.kind) continue;
      DocumentWindow converted;
      ASSERT_TRUE(convert_document(window, converted, kind, recorder.host))
          << row.at("path") << recorder.host.take_fault();
      EXPECT_LE(farthest(window, converted), 1) << row.at("path") << " to " << kind_letters(kind);
      ++compared;
    }
  }
  std::printf("%zu conversions of real animations compared\n", compared);
  EXPECT_GT(compared, 100u);
}

TEST(Compositor, NumbersFramesAndTheirTimes) {
  DocumentWindow window = random_animation(DocumentKind::APNG, 3, 3);
  const std::uint16_t delays[][2] = {{0, 0}, {1, 3}, {161, 5}};
  for (std::size_t i = 0; i < 3; ++i) {
    ChunkRecord record;
    chunk_list_get(window.list, i + 2, record);
    record.frameControl.delayNum = delays[i][0];
    record.frameControl.delayDen = delays[i][1];
    chunk_list_put(window.list, i + 2, record);
  }
  Compositor compositor(window.list, window.document);
  std::string text;
  while (const auto frame = compositor.next())
    text += std::to_string(frame->entry) + ' ' + std::to_string(frame->ordinal) + ' ' +
            std::to_string(frame->start) + ' ' + std::to_string(frame->delay) + '\n';
  EXPECT_EQ(text, "2 0 0 10\n3 1 10 334\n4 2 344 32200\n");
}

TEST(Compositor, AFrameWithoutAPictureKeepsNobodyWaiting) {
  DocumentWindow window = random_animation(DocumentKind::WEBP, 5, 3);
  ChunkRecord record;
  chunk_list_get(window.list, 2, record);
  record.data = {};
  chunk_list_put(window.list, 2, record);
  Compositor compositor(window.list, window.document);
  EXPECT_TRUE(compositor.next()->picture);
  EXPECT_FALSE(compositor.next()->picture);
  EXPECT_TRUE(compositor.next()->picture);
  EXPECT_FALSE(compositor.next());
}

// --------------------------------------------------------------------------------------------- outside
// players

/// Real files whose canvases differ on purpose, by the rule that makes the difference.
const std::map<std::string, const char*> kOtherRules = {
    {"mng/klf-wait_anim.mng", "SHOW is passed over"},
    {"mng/qt-dutch.mng", "MAGN and MOVE are passed over"},
    {"mng/gen-im-page-offsets.mng", "a framing mode that clears is told in FRAM alone"},
    {"mng/gen-im-16bit-gray.mng", "the other player applies gAMA"},
    {"mng/gen-gm-varying-delays-loop1.mng", "the other player applies gAMA"},
    {"mng/gen-gm-mixed-types-delay20-loop0.mng", "the other player applies gAMA"},
    {"mng/gen-gm-interlaced.mng", "the other player applies gAMA"},
    {"mng/gen-gm-dispose-previous.mng", "the other player applies gAMA"},
    {"mng/gen-gm-dispose-background.mng", "the other player applies gAMA"},
    {"mng/gen-gm-delay0.mng", "the other player applies gAMA"},
    {"mng/gen-gm-2frames-delay10-loop3.mng", "the other player applies gAMA"},
};

/// The same for canvases that are not opaque.
const std::map<std::string, const char*> kOtherMeans = {
    {"mng/gen-gm-background-red.mng", "the other player applies gAMA"},
    {"mng/gen-im-dispose-Background.mng", "a FRAM that another one follows without an image clears nothing"},
};

bool is_rounded(const testing::TableRow& frame) {
  return frame.at("note").find("partial-alpha") != std::string::npos;
}

bool is_exact(const testing::TableRow& frame) {
  return frame.at("mean_rgba_premultiplied").ends_with(",255.00") && !is_rounded(frame);
}

TEST(Compositor, OpaqueCanvasesOfRealFilesAreThoseOfOtherPlayers) {
  VELLUM_NEEDS_CORPUS();
  std::size_t compared = 0;
  for (const auto& row : testing::corpus_rows({"apng", "webp", "mng"})) {
    const std::string& path = row.at("path");
    const auto frames = testing::corpus_frames(path);
    Recorder recorder;
    DocumentWindow window;
    if (frames.empty() || kOtherRules.contains(path) ||
        !open_document(window, testing::corpus_file(row), recorder.host))
      continue;
    Compositor compositor(window.list, window.document);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const auto frame = compositor.next();
      ASSERT_TRUE(frame) << path << " frame " << i;
      if (!is_exact(frames[i])) continue;
      const auto pixels = testing::rgba_of(window, frame->picture);
      EXPECT_EQ(testing::md5_of(pixels.data(), pixels.size()), frames[i].at("rgba_md5")) << path << ' ' << i;
      ++compared;
    }
  }
  EXPECT_GT(compared, 400u);
}

/// Means of red, green, blue (multiplied by alpha) and alpha.
std::array<double, 4> means_of(const Picture& picture) {
  std::array<double, 4> means{};
  for (std::uint32_t y = 0; y < picture.height(); ++y)
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
      const Colour pixel = PictureGetPixel(picture, x, y);
      for (std::size_t c = 0; c < 4; ++c) means[c] += pixel >> 8 * c & 255;
    }
  for (double& mean : means) mean /= static_cast<double>(picture.width()) * picture.height();
  return means;
}

/// Canvases that let something through, composed on no ground: on the average what the other players have.
TEST(Compositor, ClearCanvasesOfRealFilesHaveTheMeansOfOtherPlayers) {
  VELLUM_NEEDS_CORPUS();
  std::size_t compared = 0;
  for (const auto& row : testing::corpus_rows({"apng", "webp", "mng"})) {
    const std::string& path = row.at("path");
    const auto frames = testing::corpus_frames(path);
    Recorder recorder;
    DocumentWindow window;
    if (std::ranges::all_of(frames, is_exact) || kOtherRules.contains(path) || kOtherMeans.contains(path) ||
        !open_document(window, testing::corpus_file(row), recorder.host))
      continue;
    Compositor compositor(window.list, window.document);
    compositor.set_ground({Ground::Kind::Clear, 0});
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const auto frame = compositor.next();
      ASSERT_TRUE(frame && frame->picture.bits() == 32) << path << " frame " << i;
      if (is_exact(frames[i])) continue;
      std::istringstream expected(frames[i].at("mean_rgba_premultiplied"));
      const auto means = means_of(frame->picture);
      for (const double mean : means) {
        double other = 0;
        expected >> other;
        expected.ignore();
        EXPECT_NEAR(mean, other, is_rounded(frames[i]) ? 1.5 : 1.0) << path << ' ' << i;
      }
      ++compared;
    }
  }
  EXPECT_GT(compared, 100u);
}

}  // namespace
}  // namespace vellum
