#include "exchange/gif_canvas.h"

#include "image/picture_rows.h"

namespace vellum::gif {

Canvas sharp_canvas(const Picture& picture, std::uint32_t threshold) {
  Canvas canvas{picture.width(), picture.height(), {}};
  canvas.pixels.resize(std::size_t{canvas.width} * canvas.height);
  for_each_row(canvas.height, picture.stride(), [&](std::uint32_t y) {
    const std::uint8_t* from = picture.row(y);
    Pixel* to = canvas.row(y);
    for (std::uint32_t x = 0; x < canvas.width; ++x, from += 4)
      to[x] = from[3] <= threshold
                  ? 0
                  : 0xFF000000u | Pixel{from[2]} << 16 | Pixel{from[1]} << 8 | Pixel{from[0]};
  });
  return canvas;
}

}  // namespace vellum::gif
