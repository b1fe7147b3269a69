// A sample plugin in C++: slow clouds of color, seamless.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

#include "vellum_plugin.h"

namespace {

constexpr int kWidth = 160, kHeight = 120, kFrames = 32, kRow = kWidth * 3;
constexpr double kTurn = 6.283185307179586;

void put(char* text, std::string_view value) { std::memcpy(text, value.data(), value.size()); }

std::uint8_t light(double wave) {
  return static_cast<std::uint8_t>(std::clamp(127.5 + 127.5 * wave, 0.0, 255.0));
}

/// Waves whose phases come back to where they were after all frames.
void draw(std::uint8_t* rows, int frame) {
  const double phase = kTurn * frame / kFrames;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) {
      const double u = x / 24.0, v = y / 18.0;
      const double cloud = std::sin(u + phase) + std::sin(v - phase) + std::sin((u + v) / 2 + 2 * phase);
      std::uint8_t* pixel = rows + y * kRow + 3 * x;
      pixel[0] = light(std::sin(cloud));
      pixel[1] = light(std::sin(cloud + kTurn / 3));
      pixel[2] = light(std::sin(cloud + kTurn * 2 / 3));
    }
}

}  // namespace

std::uint32_t PLUGIN15GetPluginParams(VellumPluginParams* params, std::uint32_t) {
  if (params->size != sizeof *params || params->version != VELLUM_PLUGIN_VERSION) return 0;
  put(params->name, "Plasma");
  put(params->description, "Slow clouds of color");
  return 1;
}

std::uint32_t PLUGIN15DoBuild(void*, VellumBuild* build, std::uint32_t) {
  if (build->size != sizeof *build || build->version != VELLUM_PLUGIN_VERSION) return 0;
  std::vector<std::uint8_t> block(sizeof(VellumPicture) + std::size_t{kRow} * kHeight);
  const VellumPicture picture{static_cast<std::uint32_t>(block.size() - 4), 40, kWidth, kHeight, 1, 24, {}};
  std::memcpy(block.data(), &picture, sizeof picture);
  VellumContext context{sizeof context, kWidth, kHeight, kFrames, 0, kFrames, 0};
  if (!build->callback(&context, VELLUM_BEGIN, nullptr, nullptr)) return 0;
  for (std::uint32_t i = 0; i < kFrames; ++i) {
    const VellumFrame frame{i, 50, 0, 0, -1, 0, 0, 0};
    draw(block.data() + sizeof picture, static_cast<int>(i));
    if (!build->callback(&context, VELLUM_ADD_FRAME, block.data(), &frame)) return 0;
  }
  return build->callback(&context, VELLUM_END, nullptr, nullptr);
}
