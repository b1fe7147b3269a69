// Groups of values of the protection matrix, as a file keeps them: sections of an INI file, one a group.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/fields.h"

namespace vellum {

struct TileGroup {
  std::string name;
  FieldValues values;  ///< tile, least, start, imagePath, whole, cover
};

/// Lines of a file that is nothing of ours are damage: nothing then. At most a few thousand groups.
std::optional<std::vector<TileGroup>> parse_tile_groups(std::string_view text);
std::string tile_groups_text(const std::vector<TileGroup>& groups);
/// A name of one line, without brackets, that none of the groups has.
bool is_group_name(const std::vector<TileGroup>& groups, std::string_view name);

}  // namespace vellum
