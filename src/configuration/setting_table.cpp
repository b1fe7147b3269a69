#include "configuration/setting_table.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "core/settings.h"

namespace vellum {
namespace {

const SettingRow kSettings[] = {
    {"APNGIncludeTextChunks", &settings::APNGIncludeTextChunks, nullptr},
    {"APNGOpen", &settings::APNGOpen, nullptr},
    {"AutoUpdateTime", &settings::AutoUpdateTime, nullptr},
    {"CreateBackups", &settings::CreateBackups, nullptr},
    {"DefaultBackgroundColour", &settings::DefaultBackgroundColour, nullptr},
    {"DefaultDepth", &settings::DefaultDepth, nullptr},
    {"DefaultPalette", &settings::DefaultPalette, nullptr},
    {"DefaultViewMode", &settings::DefaultViewMode, nullptr},
    {"DefaultWidth", &settings::DefaultWidth, nullptr},
    {"ForRent", nullptr, &settings::ForRent},
    {"ImageJpegExifOrientation", &settings::ImageJpegExifOrientation, nullptr},
    {"PngCompression", &settings::PngCompression, nullptr},
    {"WarnBadFileCRC", &settings::WarnBadFileCRC, nullptr},
    {"WEBPLossless", &settings::WEBPLossless, nullptr},
    {"WEBPQualityFactor", &settings::WEBPQualityFactor, nullptr},
};

constexpr std::size_t kTextLimit = 260;

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

std::span<const SettingRow> setting_table() { return kSettings; }

bool set_setting(std::string_view assignment, std::string& reason) {
  const auto parting = assignment.find('=');
  const std::string_view key = trimmed(assignment.substr(0, parting));
  const auto row = std::ranges::find(kSettings, key, &SettingRow::name);
  if (parting == std::string_view::npos || row == std::end(kSettings)) {
    reason = parting == std::string_view::npos ? "a setting is given as Key=Value"
                                               : "there is no setting \"" + std::string(key) + '"';
    return false;
  }
  const std::string_view value = trimmed(assignment.substr(parting + 1));
  if (row->text) {
    *row->text = cut_utf8(std::string(value), kTextLimit);
    return true;
  }
  // Negative numbers are stored in their unsigned form.
  long long number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error != std::errc{} || end != value.data() + value.size()) {
    reason = std::string(key) + " must be a whole number";
    return false;
  }
  *row->number = static_cast<int>(static_cast<unsigned>(number));
  return true;
}

}  // namespace vellum
