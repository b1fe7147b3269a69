// Draws what a Look says: rounded grounds with smooth edges, and the sample of the list.
#include "look.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

std::uint32_t color(int role) { return kLook.colors[static_cast<std::size_t>(role)]; }

/// `share` of the way from one color to another.
std::uint32_t between(std::uint32_t from, std::uint32_t to, double share) {
  std::uint32_t mixed = 0;
  for (const int shift : {16, 8, 0}) {
    const double a = from >> shift & 255, b = to >> shift & 255;
    mixed |= static_cast<std::uint32_t>(std::lround(a + (b - a) * share)) << shift;
  }
  return mixed;
}

/// In pixels of the layout.
struct Box {
  double x, y, width, height;
};

/// A ground that changes from top to bottom, and its edge.
struct Ground {
  std::uint32_t top, bottom, edge;
  double line = 0;  ///< thickness of the edge
  double radius = 0;
};

bool good(const VellumPixels* pixels) {
  return pixels && pixels->size >= sizeof *pixels && pixels->words && pixels->width > 0 &&
         pixels->height > 0 && pixels->stride >= pixels->width * 4;
}

/// Lays a color over a word.
void lay(std::uint32_t& word, std::uint32_t rgb, double share) {
  std::uint32_t laid = 0;
  for (const int shift : {24, 16, 8, 0}) {
    const double over = shift == 24 ? 255 : rgb >> shift & 255;
    const double now = word >> shift & 255;
    laid |= static_cast<std::uint32_t>(std::lround(over * share + now * (1 - share))) << shift;
  }
  word = laid;
}

/// How far a place lies inside of a rounded box; below 0 outside.
double depth(double x, double y, const Box& box, double radius) {
  const double dx = std::abs(x - box.x - box.width / 2) - box.width / 2 + radius;
  const double dy = std::abs(y - box.y - box.height / 2) - box.height / 2 + radius;
  const double beyond = std::hypot(std::max(dx, 0.0), std::max(dy, 0.0));
  return radius - beyond - std::min(std::max(dx, dy), 0.0);
}

void fill(const VellumPixels& pixels, const Box& box, const Ground& ground) {
  const double s = pixels.scale > 0 ? pixels.scale : 1;
  const Box on{box.x * s, box.y * s, box.width * s, box.height * s};
  const double radius = std::min({ground.radius * s, on.width / 2, on.height / 2}), line = ground.line * s;
  for (int y = std::max(0, static_cast<int>(on.y)); y < std::min<double>(pixels.height, on.y + on.height);
       ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(reinterpret_cast<char*>(pixels.words) +
                                                 static_cast<std::ptrdiff_t>(y) * pixels.stride);
    const std::uint32_t inside = between(ground.top, ground.bottom, (y + 0.5 - on.y) / on.height);
    for (int x = std::max(0, static_cast<int>(on.x)); x < std::min<double>(pixels.width, on.x + on.width);
         ++x) {
      const double in = depth(x + 0.5, y + 0.5, on, radius);
      const double covered = std::clamp(in + 0.5, 0.0, 1.0);
      const double core = line > 0 ? std::clamp(in - line + 0.5, 0.0, 1.0) : 1;
      if (covered > 0) lay(row[x], between(ground.edge, inside, core), covered);
    }
  }
}

Box whole(const VellumPixels& pixels) {
  const double s = pixels.scale > 0 ? pixels.scale : 1;
  return {0, 0, pixels.width / s, pixels.height / s};
}

Ground button_ground(std::uint32_t state) {
  const bool primary = (state & VELLUM_STATE_DEFAULT) && !(state & VELLUM_STATE_DISABLED);
  const std::uint32_t accent = color(VELLUM_COLOR_ACCENT);
  std::uint32_t ground = color(primary ? VELLUM_COLOR_ACCENT : VELLUM_COLOR_BUTTON);
  std::uint32_t edge = primary ? between(accent, 0x000000, 0.18) : color(VELLUM_COLOR_EDGE);
  // A text must stay readable, so a ground that carries it moves little.
  if (state & VELLUM_STATE_DISABLED) ground = between(ground, color(VELLUM_COLOR_WINDOW), 0.6);
  if (state & VELLUM_STATE_HOT)
    ground = between(ground, primary ? 0x000000u : accent, primary ? 0.06 : kLook.light / 2);
  if (state & (VELLUM_STATE_PRESSED | VELLUM_STATE_CHECKED)) ground = between(ground, 0x000000, 0.12);
  if (state & VELLUM_STATE_DISABLED) edge = between(edge, color(VELLUM_COLOR_WINDOW), 0.5);
  if (state & VELLUM_STATE_HOT && !primary) edge = between(edge, accent, 0.6);
  double line = kLook.edge;
  if (state & VELLUM_STATE_FOCUSED) {
    edge = primary ? color(VELLUM_COLOR_TEXT) : accent;
    line = std::max(2.0, kLook.edge + 1);
  }
  const double relief = state & VELLUM_STATE_PRESSED ? 0 : kLook.relief;
  return {between(ground, 0xFFFFFF, primary ? 0 : relief), between(ground, 0x000000, relief / 2), edge, line,
          kLook.radius};
}

/// Tools lie flat on their bar until something happens to them.
uint32_t draw_flat(const VellumPixels* pixels, std::uint32_t state) {
  if (!good(pixels)) return 0;
  const bool down = state & (VELLUM_STATE_PRESSED | VELLUM_STATE_CHECKED);
  const bool seen = down || state & (VELLUM_STATE_HOT | VELLUM_STATE_FOCUSED);
  if (!seen || state & VELLUM_STATE_DISABLED) return 1;
  const std::uint32_t accent = color(VELLUM_COLOR_ACCENT);
  const std::uint32_t ground = between(kLook.barBottom, accent, down ? kLook.light * 1.8 : kLook.light);
  const bool focused = state & VELLUM_STATE_FOCUSED;
  Box box = whole(*pixels);
  box = {box.x + 1, box.y + 1, box.width - 2, box.height - 2};
  fill(*pixels, box,
       {ground, ground, focused ? accent : between(ground, accent, 0.35), focused ? 2.0 : kLook.edge,
        kLook.radius});
  return 1;
}

uint32_t draw_button(const VellumPixels* pixels, std::uint32_t state) {
  if (!good(pixels)) return 0;
  fill(*pixels, whole(*pixels), button_ground(state));
  return 1;
}

void draw_bar(const VellumPixels& pixels, const Box& box) {
  fill(pixels, box, {kLook.barTop, kLook.barBottom, 0});
  const std::uint32_t edge = color(VELLUM_COLOR_EDGE);
  fill(pixels, {box.x, box.y + box.height - 1, box.width, 1}, {edge, edge, edge});
}

void draw_sample(const VellumPixels& pixels) {
  const Box all = whole(pixels);
  const auto plain = [&](const Box& box, std::uint32_t rgb, double radius) {
    fill(pixels, box, {rgb, rgb, rgb, 0, radius});
  };
  const std::uint32_t edge = color(VELLUM_COLOR_EDGE), text = color(VELLUM_COLOR_TEXT);
  const double bar = all.height * 0.2, pad = all.height * 0.06, line = all.height * 0.035;
  plain(all, color(VELLUM_COLOR_WINDOW), 0);
  draw_bar(pixels, {0, 0, all.width, bar});
  for (int i = 0; i < 5; ++i)
    plain({pad + i * bar * 0.8, bar * 0.28, bar * 0.44, bar * 0.44},
          i == 1 ? color(VELLUM_COLOR_ACCENT) : text, 2);
  const Box list{pad, bar + pad, all.width * 0.56, all.height - bar - 2 * pad};
  const std::uint32_t field = color(VELLUM_COLOR_FIELD);
  fill(pixels, list, {field, field, edge, kLook.edge, kLook.radius});
  for (int i = 0; i < 5; ++i) {
    const double y = list.y + list.height * (0.08 + i * 0.18);
    const bool chosen = i == 1;
    if (chosen)
      plain({list.x + 2, y - line, list.width - 4, line * 3}, color(VELLUM_COLOR_HIGHLIGHT),
            kLook.radius / 2);
    plain({list.x + 8, y, list.width * (0.4 + (i * 7 % 5) * 0.08), line},
          color(chosen ? VELLUM_COLOR_HIGHLIGHT_TEXT : VELLUM_COLOR_FIELD_TEXT), 1);
  }
  const double x = list.x + list.width + pad, wide = all.width - x - pad, high = all.height * 0.15;
  for (int i = 0; i < 2; ++i) {
    plain({x, list.y + 4 + i * line * 2.4, wide * (i == 0 ? 1 : 0.7), line},
          color(i == 0 ? VELLUM_COLOR_TEXT : VELLUM_COLOR_SECONDARY_TEXT), 1);
    const Box button{x, all.height - pad - (2 - i) * (high + pad * 0.7) + pad * 0.7, wide, high};
    fill(pixels, button, button_ground(i == 0 ? VELLUM_STATE_DEFAULT : 0));
    plain({button.x + wide * 0.3, button.y + high / 2 - line / 2, wide * 0.4, line},
          color(i == 0 ? VELLUM_COLOR_ACCENT_TEXT : VELLUM_COLOR_BUTTON_TEXT), 1);
  }
  fill(pixels, {0, 0, all.width, 1}, {edge, edge, edge});
  fill(pixels, {0, all.height - 1, all.width, 1}, {edge, edge, edge});
  fill(pixels, {0, 0, 1, all.height}, {edge, edge, edge});
  fill(pixels, {all.width - 1, 0, 1, all.height}, {edge, edge, edge});
}

}  // namespace

extern "C" {

uint32_t THEMEInit(uint32_t version) { return version == VELLUM_THEME_VERSION ? 1 : 0; }

void THEMEDeInit(void) {}

uint32_t THEMEGetBitmap(const VellumPixels* pixels) {
  if (!good(pixels)) return 0;
  draw_sample(*pixels);
  return 1;
}

uint32_t THEMEGetSupport(void) {
  return VELLUM_SUPPORT_BUTTON | VELLUM_SUPPORT_SMALL_BUTTON | VELLUM_SUPPORT_TOOL | VELLUM_SUPPORT_TOOLBAR;
}

uint32_t THEMEDrawButton(const VellumPixels* pixels, uint32_t state, const char*) {
  return draw_button(pixels, state);
}

uint32_t THEMEDrawSmallButton(const VellumPixels* pixels, uint32_t state, const char*) {
  return draw_button(pixels, state & ~static_cast<uint32_t>(VELLUM_STATE_DEFAULT));
}

uint32_t THEMEDrawTool(const VellumPixels* pixels, uint32_t state, uint32_t) {
  return draw_flat(pixels, state);
}

uint32_t THEMEDrawToolbarBackground(const VellumPixels* pixels) {
  if (!good(pixels)) return 0;
  draw_bar(*pixels, whole(*pixels));
  return 1;
}

int32_t THEMEGetMetric(uint32_t number) {
  static constexpr int32_t sizes[] = {42, 84, 30, 28, 6, 17, 6};
  return number < sizeof sizes / sizeof *sizes ? sizes[number] : 0;
}

uint32_t THEMEGetColor(uint32_t number, uint32_t* rgb) {
  if (number >= VELLUM_COLOR_COUNT || !rgb) return 0;
  *rgb = kLook.colors[number];
  return 1;
}

}  // extern "C"
