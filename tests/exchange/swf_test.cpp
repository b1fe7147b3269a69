// SWF files, played by a reader of its own; inline pages, whose data is the exported file; printed pages.
#include <gtest/gtest.h>
#include <zlib.h>

#include <fstream>

#include "base/byte_order.h"
#include "core/files/save_document.h"
#include "core/model/frame_values.h"
#include "core/model/record_picture.h"
#include "exchange/as_animated_png.h"
#include "exchange/exporter.h"
#include "exchange/print_pages.h"
#include "exchange/swf_writer.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "operations/frames.h"
#include "support/corpus.h"
#include "support/documents.h"
#include "support/judge.h"

namespace vellum {
namespace {

using testing::Recorder;
using Bytes = std::vector<std::uint8_t>;

Bytes inflated(std::span<const std::uint8_t> packed, std::size_t room) {
  Bytes out(room);
  uLongf length = room;
  if (uncompress(out.data(), &length, packed.data(), packed.size()) != Z_OK) return {};
  out.resize(length);
  return out;
}

/// Bits of a byte string, the highest first.
struct Bits {
  std::span<const std::uint8_t> bytes;
  std::size_t at = 0;
  std::uint32_t take(unsigned count) {
    std::uint32_t value = 0;
    for (; count-- > 0; ++at) value = value << 1 | (bytes[at / 8] >> (7 - at % 8) & 1);
    return value;
  }
};

struct SwfPlay {
  std::uint32_t width = 0, height = 0, rate256 = 0, frames = 0, shown = 0, stops = 0;
  std::vector<Picture> canvases;  ///< premultiplied, at each frame that begins with something new
};

/// Bitmaps over each other, by depth.
SwfPlay play(const Bytes& file) {
  SwfPlay made;
  const Bytes body = inflated(std::span(file).subspan(8), read_le32(file.data() + 4));
  EXPECT_EQ(body.size() + 8, read_le32(file.data() + 4));
  Bits head{body};
  const unsigned bits = head.take(5);
  head.take(bits), made.width = head.take(bits) / 20, head.take(bits), made.height = head.take(bits) / 20;
  std::size_t at = (head.at + 7) / 8;
  made.rate256 = read_le16(&body[at]), made.frames = read_le16(&body[at + 2]);
  std::map<std::uint32_t, Picture> bitmaps;
  struct Placed {
    std::uint32_t bitmap, x, y;
  };
  std::map<std::uint32_t, Placed> placed;
  bool changed = false;
  for (at += 4; at + 2 <= body.size();) {
    const std::uint32_t tag = read_le16(&body[at]) >> 6;
    std::size_t length = read_le16(&body[at]) & 63;
    at += 2;
    if (length == 63) length = read_le32(&body[at]), at += 4;
    const auto data = std::span(body).subspan(at, length);
    at += length;
    if (tag == 12) ++made.stops;
    if (tag == 36) {
      const std::uint32_t format = data[2], width = read_le16(&data[3]), height = read_le16(&data[5]);
      const std::size_t colors = format == 3 ? data[7] + 1u : 0,
                        stride = format == 3 ? (width + 3) / 4 * 4 : 4 * width;
      const Bytes rows = inflated(data.subspan(format == 3 ? 8 : 7), 4 * colors + stride * height);
      EXPECT_EQ(rows.size(), 4 * colors + stride * height);
      Picture picture = PictureCreateAlpha(width, height);
      for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) {
          const std::uint8_t* p = format == 3 ? &rows[4 * std::size_t{rows[4 * colors + y * stride + x]}]
                                              : &rows[y * stride + 4 * x];
          PicturePutPixel(
              picture, x, y,
              format == 3 ? make_colour(p[0], p[1], p[2], p[3]) : make_colour(p[1], p[2], p[3], p[0]));
        }
      bitmaps[read_le16(&data[0])] = picture;
    } else if (tag == 26) {
      Bits matrix{data.subspan(5)};
      EXPECT_EQ(matrix.take(2), 0u);
      const unsigned size = matrix.take(5);
      const std::uint32_t x = matrix.take(size) / 20, y = matrix.take(size) / 20;
      placed[read_le16(&data[1])] = {read_le16(&data[3]) - 1u, x, y};
      changed = true;
    } else if (tag == 28) {
      placed.erase(read_le16(&data[0]));
    } else if (tag == 1) {
      ++made.shown;
      if (!std::exchange(changed, false)) continue;
      Picture canvas = PictureCreateAlpha(made.width, made.height);
      for (const auto& [depth, object] : placed) {
        const Picture& bitmap = bitmaps[object.bitmap];
        for (std::uint32_t y = 0; y < bitmap.height(); ++y)
          for (std::uint32_t x = 0; x < bitmap.width(); ++x)
            if (const Colour color = PictureGetPixel(bitmap, x, y); alpha_of(color) > 0)
              PicturePutPixel(canvas, object.x + x, object.y + y, color);
      }
      made.canvases.push_back(canvas);
    }
  }
  return made;
}

TEST(Swf, PlaysTheCanvases) {
  testing::ScratchFolder folder;
  const Exporter& exporter = *find_exporter("swf");
  for (const DocumentKind kind : kAnimatedKinds)
    for (const std::uint8_t color_type : {2, 6})
      for (const std::int64_t crush : {0, 1}) {
        SCOPED_TRACE(std::string(testing::kFileNames.at(kind)) + std::to_string(color_type) +
                     std::to_string(crush));
        const DocumentWindow source = testing::small_document(kind, 4, color_type);
        FieldValues values = initial_values(exporter.parameters.fields);
        values.set("crush", crush), values.set("html", std::int64_t{0});
        Recorder recorder;
        const auto path = folder / "a.swf";
        ASSERT_TRUE(export_document(exporter, source, values, path, recorder.host));
        const SwfPlay played = play(testing::file_bytes(path));
        EXPECT_EQ(played.shown, played.frames);
        EXPECT_EQ(played.stops, GetIterations(source.list, source.document) == 1 ? 1u : 0u);
        const FrameStream wanted = canvas_frames(source);
        ASSERT_EQ(played.canvases.size(), 4u);
        double seconds = 0;
        for (std::size_t i = 0; i < 4; ++i) {
          const StreamedFrame frame = wanted.frame(i);
          seconds += frame.delay / 1000.0;
          for (int p = 0; p < 24; ++p) {
            const Colour is = PictureGetPixel(played.canvases[i], p % 6, p / 6),
                         was = PictureGetPixel(frame.picture, p % 6, p / 6);
            const auto times = [&](std::uint32_t c) { return (c * alpha_of(was) + 127) / 255; };
            ASSERT_EQ(
                is, make_colour(times(red_of(was)), times(green_of(was)), times(blue_of(was)), alpha_of(was)))
                << i << " " << p;
          }
        }
        EXPECT_NEAR(played.frames * 256.0 / played.rate256, seconds, 0.01);
      }
  // The judge knows no packed files of more than one buffer, so it gets the same without packing.
  const auto file = testing::file_bytes(folder / "a.swf");
  const Bytes body = inflated(std::span(file).subspan(8), read_le32(file.data() + 4));
  std::ofstream plain(folder / "plain.swf", std::ios::binary);
  plain.write("FWS\x06", 4)
      .write(reinterpret_cast<const char*>(file.data() + 4), 4)
      .write(reinterpret_cast<const char*>(body.data()), static_cast<std::streamsize>(body.size()));
  plain.close();
  const auto told =
      testing::run_tool({"ffprobe", "-v", "error", "-count_packets", "-show_entries",
                         "stream=width,height,nb_read_packets", "-of", "csv=p=0", folder / "plain.swf"});
  if (!told.there) GTEST_SKIP() << "no ffprobe";
  EXPECT_EQ(told.output.substr(0, 5), "6,4,4");
}

TEST(Swf, HasTheSamplesOfItsSound) {
  testing::ScratchFolder folder;
  for (const char* name : {"a.wav", "a.mp3"}) {
    const auto path = folder / name;
    if (testing::run_tool({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=d=0.5:r=44100", path})
            .status != 0)
      GTEST_SKIP() << "no ffmpeg";
    const SwfBytes tags = swf_sound(testing::file_bytes(path), 9);
    ASSERT_GT(tags.size(), 20u);
    EXPECT_EQ(tags[8] >> 2 & 3, 3) << "44100 a second";
    EXPECT_NEAR(read_le32(&tags[9]), 22050, 4000) << name;
  }
  for (const Bytes& none : {Bytes{}, Bytes{'R', 'I', 'F', 'F'}, Bytes(200, 0xFF)})
    EXPECT_TRUE(swf_sound(none, 1).empty());
}

TEST(InlinePage, HoldsTheBytesOfTheFileAndPleasesTidy) {
  testing::ScratchFolder folder;
  const Exporter& exporter = *find_exporter("ilg");
  const DocumentWindow source = testing::small_document(DocumentKind::MING, 3, 6);
  Bytes wanted;
  Recorder recorder;
  ASSERT_TRUE(write_as_animated_png(source, memory_sink(wanted), recorder.host));
  std::ofstream(folder / "wanted.png", std::ios::binary)
      .write(reinterpret_cast<const char*>(wanted.data()), static_cast<std::streamsize>(wanted.size()));
  EXPECT_EQ(testing::objections(folder / "wanted.png"), "");
  const auto coded = testing::run_tool({"base64", "-w", "0", folder / "wanted.png"}).output;
  for (const std::int64_t form : {0, 1, 2}) {
    FieldValues values = initial_values(exporter.parameters.fields);
    values.set("form", form), values.set("title", std::string("<\"&\x01\xFF")),
        values.set("alternate", std::string("a \"b\" <c>"));
    const auto path =
        folder / ("page" + std::string(exporter.formats[static_cast<std::size_t>(form)].extension));
    ASSERT_TRUE(export_document(exporter, source, values, path, recorder.host));
    const std::string text = testing::file_text(path);
    EXPECT_NE(text.find("data:image/png;base64," + coded + "\""), std::string::npos);
    if (form != 2) EXPECT_NE(text.find("alt=\"a &quot;b&quot; &lt;c&gt;\""), std::string::npos);
    const auto tidy = form == 0 ? testing::run_tool({"tidy", "-q", "-e", path}) : testing::ToolResult{};
    if (tidy.there) EXPECT_EQ(tidy.status, 0) << tidy.output;
  }
}

TEST(Print, PutsEachFrameOnceOnItsPageAndNothingBeyondIt) {
  const Exporter& exporter = *find_exporter("print");
  const DocumentWindow source = testing::small_document(DocumentKind::APNG, 30, 2);
  for (const std::int64_t layout : {0, 1})
    for (const std::int64_t columns : {0, 1, 3, 20})
      for (const std::int64_t dpi : {72, 1200})
        for (const char* frames : {"", "2,5-9"}) {
          FieldValues values = initial_values(exporter.parameters.fields);
          values.set("layout", layout), values.set("columns", columns), values.set("dpi", dpi),
              values.set("frames", std::string(frames));
          const PrintPaper paper = print_paper(values);
          std::vector<std::size_t> seen;
          for (const PrintedPage& page : print_pages(values, source, paper)) {
            EXPECT_TRUE(layout == 0 || page.frames.size() == 1);
            for (const PrintedFrame& frame : page.frames) {
              seen.push_back(frame.frame);
              EXPECT_GT(frame.width, 0);
              EXPECT_NEAR(frame.width / frame.height, 1.5, 0.01);
              EXPECT_LE(frame.width, 6 * 72.0 / static_cast<double>(dpi) + 0.01);
              EXPECT_TRUE(frame.x >= 35 && frame.y >= 35 && frame.x + frame.width <= paper.width - 35 &&
                          frame.y + frame.height <= paper.height - 35);
            }
            for (const PrintedText& text : page.texts)
              EXPECT_TRUE(text.y + text.points <= paper.height - 30 && text.x + text.width <= paper.width);
          }
          EXPECT_EQ(seen, *frames ? (std::vector<std::size_t>{1, 4, 5, 6, 7, 8}) : all_frames(30));
        }
}

TEST(Print, ThePdfShowsThePixels) {
  testing::ScratchFolder folder;
  const Exporter& exporter = *find_exporter("print");
  const DocumentWindow source = testing::small_document(DocumentKind::APNG, 2, 2);
  FieldValues values = initial_values(exporter.parameters.fields);
  values.set("dpi", std::int64_t{72}), values.set("layout", std::int64_t{1});
  Recorder recorder;
  ASSERT_TRUE(export_document(exporter, source, values, folder / "a.pdf", recorder.host));
  const auto told = testing::run_tool({"pdfimages", "-png", folder / "a.pdf", folder / "image"});
  if (!told.there) GTEST_SKIP() << "no pdfimages";
  const FrameStream canvases = canvas_frames(source);
  for (std::size_t i = 0; i < 2; ++i) {
    const Picture is =
        read_graphic_file((folder / ("image-00" + std::to_string(i) + ".png")).string()).picture;
    ASSERT_TRUE(is);
    for (int p = 0; p < 24; ++p)
      EXPECT_EQ(PictureGetPixel(is, p % 6, p / 6) & 0xFFFFFF,
                PictureGetPixel(canvases.frame(i).picture, p % 6, p / 6) & 0xFFFFFF);
  }
}

}  // namespace
}  // namespace vellum
