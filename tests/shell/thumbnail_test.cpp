#include "shell/list/thumbnail.h"

#include "shell/list/row_painter.h"
#include "shell/look/picture_image.h"
#include "shell_fixture.h"

namespace vellum::testing {
namespace {

QRgb pixel_of(const Picture& picture, int x, int y) {
  Colour colour = PictureGetPixelOpaque(picture, x, y);
  if (picture.bits() > 8) return qRgba(red_of(colour), green_of(colour), blue_of(colour), alpha_of(colour));
  Palette palette{};
  PictureGetPalette(picture, palette);
  const std::uint8_t* entry = palette.data() + 3 * colour;
  return qRgb(entry[0], entry[1], entry[2]);
}

TEST(PictureImage, ShowsEveryPixelOfEveryDepthUpright) {
  for (const std::uint32_t bits : {1u, 4u, 8u, 24u, 32u})
    for (const std::uint32_t width : {1u, 7u, 8u, 13u}) {
      const Picture picture = sample_picture(width, 5, bits);
      const QImage image = scaled_image(picture, QSize(static_cast<int>(width), 5));
      const QImage doubled = scaled_image(picture, QSize(static_cast<int>(width) * 2, 10));
      for (int y = 0; y < 5; ++y)
        for (int x = 0; x < static_cast<int>(width); ++x) {
          ASSERT_EQ(image.pixel(x, y), pixel_of(picture, x, y)) << bits << " bits, " << x << ", " << y;
          ASSERT_EQ(doubled.pixel(2 * x + 1, 2 * y + 1), pixel_of(picture, x, y)) << bits << " bits, doubled";
        }
    }
}

TEST(PictureImage, NothingComesOfNothing) {
  EXPECT_TRUE(upside_down_image({}).isNull());
  EXPECT_TRUE(scaled_image(sample_picture(4, 4, 24), QSize(0, 3)).isNull());
}

TEST(ThumbnailPlace, IsCenteredScaledAndMovedByTheOffset) {
  const ThumbnailPlace place = thumbnail_place(QRect(0, 100, 300, 200), {200, 120}, {50, 40}, {20, -10}, 50);
  EXPECT_EQ(place.canvas, QRect(4 + (300 - 100 - 8) / 2, 128, 100, 60));
  EXPECT_EQ(place.frame, QRect(place.canvas.topLeft() + QPoint(10, -5), QSize(25, 20)));
}

std::shared_ptr<const ChunkRecord> record_with(const Picture& picture) {
  auto record = std::make_shared<ChunkRecord>();
  record->tag = tag::IDAT;
  record->data = picture.handle();
  return record;
}

TEST(ThumbnailCache, StaysWithinItsBoundAndTellsRecordsApart) {
  ThumbnailCache cache(10 * 20 * 20 * 4);
  std::vector<std::shared_ptr<const ChunkRecord>> records;
  for (int i = 0; i < 30; ++i) records.push_back(record_with(sample_picture(20, 20, 32)));
  for (const auto& record : records) EXPECT_FALSE(cache.get(record, {20, 20}).isNull());
  EXPECT_LE(cache.bytes(), 10 * 20 * 20 * 4);
  EXPECT_EQ(cache.made(), 30u);
  cache.get(records.back(), {20, 20});
  EXPECT_EQ(cache.made(), 30u);
  cache.get(records.back(), {10, 10});
  EXPECT_EQ(cache.made(), 31u);
  EXPECT_TRUE(cache.get(std::make_shared<const ChunkRecord>(), {5, 5}).isNull());
}

/// One row of a list drawn into a picture of its own.
struct Drawn {
  DocumentWindow window;
  double ratio = 1.0;
  style::RowColours plain{Qt::white, Qt::black, Qt::gray, Qt::gray};
  style::RowColours selected{Qt::darkBlue, Qt::white, Qt::lightGray, Qt::lightGray};

  QImage row(std::size_t index) {
    const QRect rect(0, 0, 120, window.list.entry(index).height);
    QImage image((QSizeF(rect.size()) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    ThumbnailCache cache;
    paint_row({painter, window, cache, document_size(window.list, window.document), make_colour(255, 255, 0),
               plain, selected, Qt::red},
              index, rect);
    return image;
  }
};

TEST(RowPainter, ShowsCheckersBehindTransparencyAndFillsTheCanvasBehindSmallFrames) {
  Drawn drawn{animated_document(2, 60, 40)};
  ChunkRecord frame = drawn.window.list.record(3);
  frame.data = PictureCreateAlpha(20, 10).handle();
  frame.frameControl = {1, 20, 10, 30, 25, 0, 0, 0, 0};
  chunk_list_put(drawn.window.list, 3, frame);
  const QRect canvas(4 + (120 - 60 - 8) / 2, 28, 60, 40);
  const QPoint on_canvas = canvas.topLeft() + QPoint(3, 3), on_frame = canvas.topLeft() + QPoint(31, 26);

  QImage image = drawn.row(3);
  EXPECT_EQ(image.pixelColor(on_canvas), QColor(255, 255, 0));
  EXPECT_EQ(image.pixelColor(on_frame), QColor(Qt::white));
  EXPECT_NE(image.pixelColor(on_frame + QPoint(6, 0)), QColor(Qt::white)) << "the next of the checkers";
  EXPECT_EQ(image.pixelColor(canvas.topLeft() + QPoint(-1, -1)), QColor(Qt::white));

  drawn.window.list.select(3, true);
  image = drawn.row(3);
  EXPECT_EQ(image.pixelColor(on_canvas), QColor(255, 255, 0));
  EXPECT_NE(image.pixelColor(on_frame), QColor(Qt::darkBlue));
  EXPECT_EQ(image.pixelColor(2, 2), QColor(Qt::darkBlue));
}

TEST(RowPainter, ThumbnailsAreSharpOnDenseScreens) {
  Drawn drawn{still_document(40, 30), 2.0};
  const Picture picture = picture_of(drawn.window.list.record(1));
  const QImage image = drawn.row(1);
  const QPoint corner = QPoint(4 + (120 - 40 - 8) / 2, 28) * 2;
  for (int y = 0; y < 60; ++y)
    for (int x = 0; x < 80; ++x)
      ASSERT_EQ(image.pixel(corner + QPoint(x, y)), pixel_of(picture, x / 2, y / 2)) << x << ", " << y;
}

TEST(Style, WhatIsWrittenOnAColorCanBeRead) {
  const QColor grounds[] = {Qt::white, Qt::black, QColor(48, 140, 198), QColor(128, 128, 128),
                            QColor(250, 220, 90)};
  for (const QColor& ground : grounds)
    for (const QColor& wanted : grounds)
      EXPECT_GE(style::contrast(style::readable_on(wanted, ground), ground), 4.5)
          << wanted.name().toStdString() << " on " << ground.name().toStdString();
  QPalette reddish;
  reddish.setColor(QPalette::Active, QPalette::Highlight, QColor(200, 80, 40));
  EXPECT_EQ(style::bracket_colour(reddish), QColor(Qt::blue));
  reddish.setColor(QPalette::Active, QPalette::Highlight, QColor(90, 90, 90));
  EXPECT_EQ(style::bracket_colour(reddish), QColor(Qt::red));
}

}  // namespace
}  // namespace vellum::testing
