#include "operations/tile_groups.h"

#include <algorithm>

#include "base/text.h"

namespace vellum {
namespace {

constexpr std::size_t kMostText = std::size_t{4} << 20, kMostGroups = 4096, kMostName = 260;

struct GroupKey {
  std::string_view key;
  Field field;
};
constexpr GroupKey kKeys[] = {
    {"TileSize", {.name = "tile", .least = 16, .most = 1024, .initial = 128}},
    {"TileMinimum", {.name = "least", .least = 1, .most = 512, .initial = 16}},
    {"CountStart", {.name = "start", .most = 99999, .initial = 1}},
    {"ImagePath", {.name = "imagePath", .type = FieldType::Text, .most = 260}},
    {"WriteHeader", {.name = "whole", .type = FieldType::Flag, .most = 1, .initial = 1}},
    {"DefaultTile", {.name = "cover", .type = FieldType::Text}},
};

bool is_line(std::string_view text) {
  return is_utf8(text) && std::ranges::none_of(text, [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

bool take_value(TileGroup& group, std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string_view key = trimmed(line.substr(0, equals));
  const auto row =
      std::ranges::find_if(kKeys, [&](const GroupKey& k) { return equal_ignoring_case(k.key, key); });
  if (row == std::end(kKeys)) return false;
  const FieldValue value = parse_field_value(row->field, trimmed(line.substr(equals + 1)));
  if (check_field(row->field, value)) return false;
  group.values.set(row->field.name, value);
  return true;
}

}  // namespace

std::optional<std::vector<TileGroup>> parse_tile_groups(std::string_view text) {
  std::vector<TileGroup> groups;
  if (text.size() > kMostText) return std::nullopt;
  while (!text.empty()) {
    const std::string_view line = trimmed(take_line(text));
    if (line.empty() || line.front() == ';') continue;
    if (!is_line(line)) return std::nullopt;
    if (line.front() != '[') {
      if (groups.empty() || !take_value(groups.back(), line)) return std::nullopt;
      continue;
    }
    const std::string_view name = line.back() == ']' ? trimmed(line.substr(1, line.size() - 2)) : "";
    if (groups.size() == kMostGroups || !is_group_name(groups, name)) return std::nullopt;
    TileGroup group{std::string(name), {}};
    for (const GroupKey& key : kKeys) group.values.set(key.field.name, initial_value(key.field));
    groups.push_back(std::move(group));
  }
  return groups;
}

std::string tile_groups_text(const std::vector<TileGroup>& groups) {
  std::string text;
  for (const TileGroup& group : groups) {
    text += (text.empty() ? "[" : "\n[") + group.name + "]\n";
    for (const GroupKey& key : kKeys) {
      const FieldValue* value = group.values.find(key.field.name);
      const auto* number = value ? std::get_if<std::int64_t>(value) : nullptr;
      text += std::string(key.key) + "=" +
              (number  ? std::to_string(*number)
               : value ? field_value_text(key.field, *value)
                       : "") +
              "\n";
    }
  }
  return text;
}

bool is_group_name(const std::vector<TileGroup>& groups, std::string_view name) {
  return !name.empty() && name.size() <= kMostName && is_line(name) && trimmed(name) == name &&
         name.find_first_of("[]") == std::string_view::npos &&
         std::ranges::none_of(groups,
                              [&](const TileGroup& group) { return equal_ignoring_case(group.name, name); });
}

}  // namespace vellum
