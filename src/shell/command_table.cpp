#include "shell/command_table.h"

#include <algorithm>

#include "shell/commands.h"

namespace vellum {
namespace {

using enum Need;
using enum ToolPlace;

constexpr DocumentKind kAnimations[] = {DocumentKind::MING, DocumentKind::APNG, DocumentKind::WEBP};

// clang-format off
const CommandRow kCommands[] = {
    // number, label, menu and group, need, kinds, toolbar place and group, icon, function
    {58, "&Open\tCtrl+0", Menu::File, 1, Nothing, {}, Button, 1, "open", open_command, nullptr},
    {57, "&Save\tCtrl+S", Menu::File, 2, Entries, {}, Button, 1, "save", nullptr, save_command},
    {104, "Save &as...", Menu::File, 2, Entries, {}, ToolPlace::None, 0, nullptr, nullptr, save_as_command},
    {106, "&Close", Menu::File, 3, Entries, {}, ToolPlace::None, 0, nullptr, nullptr, close_command},
    {109, "Close a&ll", Menu::File, 3, Entries, {}, ToolPlace::None, 0, nullptr, close_all_command, nullptr},
    {118, "P&roperties", Menu::File, 3, Entries, kAnimations, ToolPlace::None, 0, nullptr, nullptr, properties_command},
    {55, "E&xit", Menu::File, 4, Nothing, {}, ToolPlace::None, 0, nullptr, exit_command, nullptr},
    {123, "E&xit", Menu::None, 0, Nothing, {}, ToolPlace::None, 0, nullptr, exit_command, nullptr},

    {50, "&Select all\tCtrl+A", Menu::Edit, 1, Entries, {}, Button, 2, "select_all", nullptr, select_all_command},
    {51, "&Select none", Menu::Edit, 1, Selection, {}, Button, 2, "select_none", nullptr, select_none_command},

    {62, "M&anage", Menu::Edit, 8, Entries, kAnimations, ToolPlace::None, 0, nullptr, nullptr, manage_command},
    {307, "Image &Strip", Menu::Edit, 8, Entries, kAnimations, ToolPlace::None, 0, nullptr, nullptr, image_strip_command},

    {801, "&Cascade\tShift+F5", Menu::Window, 1, Entries, {}, Button, 3, "cascade", cascade_command, nullptr},
    {802, "&Tile\tShift+F4", Menu::Window, 1, Entries, {}, Button, 3, "tile", tile_command, nullptr},
    {803, "&Arrange Icons", Menu::Window, 1, Entries, {}, ToolPlace::None, 0, nullptr, arrange_icons_command, nullptr},
    {804, "&Duplicate\tCtrl+D", Menu::Window, 2, Entries, {}, Button, 3, "duplicate", nullptr, duplicate_command},

    {902, "&About...", Menu::Help, 1, Nothing, {}, ToolPlace::None, 0, nullptr, about_command, nullptr},

    {701, "Thumbnail size", Menu::None, 0, Entries, {}, DropDown, 4, nullptr, nullptr, scale_command},
};
// clang-format on

constexpr MenuRow kMenus[] = {
    {Menu::File, "&File"}, {Menu::Edit, "&Edit"}, {Menu::Window, "&Window"}, {Menu::Help, "&Help"}};

// Ctrl+P, Ctrl+I and Ctrl+E stay without an effect.
constexpr KeyRow kKeys[] = {
    {"Ctrl+O", 58}, {"Ctrl+S", 57}, {"Ctrl+A", 50}, {"Shift+F5", 801}, {"Shift+F4", 802}, {"Ctrl+F4", 106},
};

bool fits_kind(const CommandRow& row, DocumentKind kind) {
  return row.kinds.empty() || std::ranges::find(row.kinds, kind) != row.kinds.end();
}

}  // namespace

std::span<const CommandRow> command_table() { return kCommands; }
std::span<const MenuRow> menu_table() { return kMenus; }
std::span<const KeyRow> key_table() { return kKeys; }

const CommandRow* find_command(int number) {
  const auto row = std::ranges::find(kCommands, number, &CommandRow::number);
  return row == std::end(kCommands) ? nullptr : row;
}

bool command_enabled(const CommandRow& row, const CommandState& state) {
  if (row.run_on_document && !state.document) return false;
  if (row.need == Nothing && row.kinds.empty()) return true;
  if (state.entries == 0 || !fits_kind(row, state.kind)) return false;
  return row.need != Selection || state.selected > 0;
}

}  // namespace vellum
