/* A sample plugin in C: rings that run outwards, on a palette of 256 colors. */
#include "vellum_plugin.h"

#include <stdlib.h>
#include <string.h>

enum { kSide = 128, kFrames = 16, kTable = 256 * 4 };

VELLUM_EXPORT uint32_t PLUGIN15GetPluginParams(VellumPluginParams* params, uint32_t reserved) {
  (void)reserved;
  if (params->size != sizeof *params || params->version != VELLUM_PLUGIN_VERSION) return 0;
  strcpy(params->name, "Rings");
  strcpy(params->description, "Rings that run outwards");
  return 1;
}

static void draw(uint8_t* rows, int frame) {
  int x, y;
  for (y = 0; y < kSide; ++y)
    for (x = 0; x < kSide; ++x) {
      const int dx = 2 * x - kSide + 1, dy = 2 * y - kSide + 1;
      /* The square of the distance makes rings that become narrower. */
      const int ring = (dx * dx + dy * dy) / 64 - frame * (256 / kFrames);
      rows[y * kSide + x] = (uint8_t)(ring & 255);
    }
}

VELLUM_EXPORT uint32_t PLUGIN15DoBuild(void* window, VellumBuild* build, uint32_t reserved) {
  const uint32_t bytes = 40 + kTable + kSide * kSide;
  VellumContext context = {sizeof context, kSide, kSide, kFrames, 0, kFrames, 0};
  VellumPicture* picture;
  uint8_t* table;
  int i, good;
  (void)window;
  (void)reserved;
  if (build->size != sizeof *build || build->version != VELLUM_PLUGIN_VERSION) return 0;
  picture = calloc(1, sizeof picture->bytes + bytes);
  if (!picture) return 0;
  picture->bytes = bytes;
  picture->header_size = 40;
  picture->width = picture->height = kSide;
  picture->planes = 1;
  picture->bits = 8;
  table = (uint8_t*)(picture + 1);
  for (i = 0; i < 256; ++i) {
    const int light = i < 128 ? 2 * i : 511 - 2 * i;
    table[4 * i] = 255;
    table[4 * i + 1] = (uint8_t)(64 + light / 2);
    table[4 * i + 2] = (uint8_t)light;
  }
  good = build->callback(&context, VELLUM_BEGIN, 0, 0) != 0;
  for (i = 0; good && i < kFrames; ++i) {
    VellumFrame frame = {0, 60, 0, 0, -1, 0, 0, 0};
    frame.index = (uint32_t)i;
    draw(table + kTable, i);
    good = build->callback(&context, VELLUM_ADD_FRAME, picture, &frame) != 0;
  }
  good = good && build->callback(&context, VELLUM_END, 0, 0) != 0;
  free(picture);
  return (uint32_t)good;
}
