#include "shell/command_table.h"

#include <algorithm>

#include "core/tags.h"
#include "shell/commands.h"

namespace vellum {
namespace {

using enum Need;
using enum ToolPlace;

constexpr DocumentKind kStill[] = {DocumentKind::PING};
constexpr DocumentKind kMng[] = {DocumentKind::MING};
constexpr DocumentKind kWebp[] = {DocumentKind::WEBP};
constexpr DocumentKind kPngs[] = {DocumentKind::PING, DocumentKind::APNG};
constexpr DocumentKind kPngsAndMng[] = {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING};
constexpr DocumentKind kAnimations[] = {DocumentKind::MING, DocumentKind::APNG, DocumentKind::WEBP};

// clang-format off
const CommandRow kCommands[] = {
    // number, label, menu and group, need, kinds, toolbar place and group, icon, function
    {101, "&PNG (still image)", Menu::New, 1, Nothing, {}, ToolPlace::None, 0, nullptr, new_command<DocumentKind::PING>, nullptr},
    {102, "&Animated PNG (animation)", Menu::New, 1, Nothing, {}, ToolPlace::None, 0, nullptr, new_command<DocumentKind::APNG>, nullptr},
    {114, "&MNG (animaton)", Menu::New, 1, Nothing, {}, ToolPlace::None, 0, nullptr, new_command<DocumentKind::MING>, nullptr},
    {105, "&WebP (animaton)", Menu::New, 1, Nothing, {}, ToolPlace::None, 0, nullptr, new_command<DocumentKind::WEBP>, nullptr},
    {58, "&Open\tCtrl+0", Menu::File, 1, Nothing, {}, Button, 1, "open", open_command, nullptr},
    {57, "&Save\tCtrl+S", Menu::File, 2, Entries, {}, Button, 1, "save", nullptr, save_command},
    {104, "Save &as...", Menu::File, 2, Entries, {}, ToolPlace::None, 0, nullptr, nullptr, save_as_command},
    {106, "&Close", Menu::File, 3, Entries, {}, ToolPlace::None, 0, nullptr, nullptr, close_command},
    {109, "Close a&ll", Menu::File, 3, Entries, {}, ToolPlace::None, 0, nullptr, close_all_command, nullptr},
    {118, "P&roperties", Menu::File, 3, Entries, kAnimations, ToolPlace::None, 0, nullptr, nullptr, properties_command},
    {55, "E&xit", Menu::File, 4, Nothing, {}, ToolPlace::None, 0, nullptr, exit_command, nullptr},
    {123, "E&xit", Menu::None, 0, Nothing, {}, ToolPlace::None, 0, nullptr, exit_command, nullptr},

    {204, "&Undo\tCtrl+Z (Alt+Backspace)", Menu::Edit, 1, Undo, {}, Button, 2, "undo", nullptr, undo_command},
    {201, "Cu&t\tCtrl+X (Shift+Del)", Menu::Edit, 2, Selection, {}, Button, 2, "cut", nullptr, cut_command},
    {202, "&Copy\tCtrl+C (Ctrl+Ins)", Menu::Edit, 2, Selection, {}, Button, 2, "copy", nullptr, copy_command},
    {203, "&Paste\tCtrl+V (Shift+Ins)", Menu::Edit, 2, Clipboard, {}, Button, 2, "paste", nullptr, paste_command},
    {50, "&Select all\tCtrl+A", Menu::Edit, 3, Entries, {}, Button, 4, "select_all", nullptr, select_all_command},
    {51, "&Select none", Menu::Edit, 3, Selection, {}, Button, 4, "select_none", nullptr, select_none_command},

    {1050, "&Background (BACK)", Menu::InsertMng, 1, Entries, kMng, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::BACK>},
    {1055, "&Image", Menu::InsertMng, 1, Entries, kMng, ToolPlace::None, 0, nullptr, nullptr, insert_images_command},
    {1053, "&Loop (LOOP)", Menu::InsertMng, 1, Entries, kMng, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::LOOP>},
    {1054, "Loop &end (ENDL)", Menu::InsertMng, 1, Entries, kMng, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::ENDL>},
    {1056, "&Termination (TERM)", Menu::InsertMng, 1, Entries, kMng, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::TERM>},
    {1022, "&Background (BKGD)", Menu::InsertPng, 1, Entries, kStill, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::bKGD>},
    {1025, "&Compressed text (ZTXT)", Menu::InsertPng, 1, Entries, kPngsAndMng, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::zTXt>},
    {1027, "&Gamma (GAMA)", Menu::InsertPng, 1, Entries, kPngs, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::gAMA>},
    {1020, "I&mage (IDAT)", Menu::InsertPng, 1, Entries, kStill, ToolPlace::None, 0, nullptr, nullptr, insert_images_command},
    {1021, "&Palette (PLTE)", Menu::InsertPng, 1, Entries, kStill, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::PLTE>},
    {1024, "T&ext (TEXT)", Menu::InsertPng, 1, Entries, kPngsAndMng, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::tEXt>},
    {1023, "&Time (TIME)", Menu::InsertPng, 1, Entries, kPngsAndMng, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::tIME>},
    {1026, "T&ransparency (TRNS)", Menu::InsertPng, 1, Entries, kPngs, ToolPlace::None, 0, nullptr, nullptr, insert_command<tag::tRNS>},
    {1060, "Image (&WEBP IDAT)", Menu::InsertWebp, 1, Entries, kWebp, ToolPlace::None, 0, nullptr, nullptr, insert_images_command},
    {60, "Insert", Menu::None, 0, Entries, {}, Button, 3, "insert", nullptr, insert_popup_command},
    {61, "&Delete chunk", Menu::Edit, 5, Selection, {}, Button, 3, "delete", nullptr, delete_command},
    {205, "&Edit chunk...\tEnter", Menu::Edit, 6, Entries, {}, ToolPlace::None, 0, nullptr, nullptr, edit_command},
    {206, "M&ove up\tAlt+Up", Menu::Edit, 6, Entries, {}, ToolPlace::None, 0, nullptr, nullptr, move_up_command},
    {207, "Mo&ve down\tAlt+Down", Menu::Edit, 6, Entries, {}, ToolPlace::None, 0, nullptr, nullptr, move_down_command},

    {62, "M&anage", Menu::Edit, 8, Entries, kAnimations, ToolPlace::None, 0, nullptr, nullptr, manage_command},
    {307, "Image &Strip", Menu::Edit, 8, Entries, kAnimations, ToolPlace::None, 0, nullptr, nullptr, image_strip_command},

    {56, "&View\tCtrl+W", Menu::Edit, 9, Entries, {}, Button, 3, "view", nullptr, view_command},

    {801, "&Cascade\tShift+F5", Menu::Window, 1, Entries, {}, Button, 5, "cascade", cascade_command, nullptr},
    {802, "&Tile\tShift+F4", Menu::Window, 1, Entries, {}, Button, 5, "tile", tile_command, nullptr},
    {803, "&Arrange Icons", Menu::Window, 1, Entries, {}, ToolPlace::None, 0, nullptr, arrange_icons_command, nullptr},
    {804, "&Duplicate\tCtrl+D", Menu::Window, 2, Entries, {}, Button, 5, "duplicate", nullptr, duplicate_command},

    {902, "&About...", Menu::Help, 1, Nothing, {}, ToolPlace::None, 0, nullptr, about_command, nullptr},

    {701, "Thumbnail size", Menu::None, 0, Entries, {}, DropDown, 6, nullptr, nullptr, scale_command},
};
// clang-format on

constexpr MenuRow kMenus[] = {{Menu::File, "&File"},
                              {Menu::New, "&New", Menu::File, 1, "new"},
                              {Menu::Edit, "&Edit"},
                              {Menu::InsertMng, "Insert (&MNG)", Menu::Edit, 4},
                              {Menu::InsertPng, "Insert (P&NG)", Menu::Edit, 4},
                              {Menu::InsertWebp, "Insert (&WebP)", Menu::Edit, 4},
                              {Menu::Window, "&Window"},
                              {Menu::Help, "&Help"}};

// Ctrl+P, Ctrl+I and Ctrl+E stay without an effect.
constexpr KeyRow kKeys[] = {
    {"Ctrl+O", 58},     {"Ctrl+S", 57},    {"Ctrl+Z", 204},   {"Ctrl+X", 201},
    {"Shift+Del", 201}, {"Ctrl+C", 202},   {"Ctrl+Ins", 202}, {"Ctrl+V", 203},
    {"Shift+Ins", 203}, {"Ctrl+A", 50},    {"Del", 61},       {"Alt+Up", 206},
    {"Alt+Down", 207},  {"Shift+F5", 801}, {"Shift+F4", 802}, {"Ctrl+F4", 106},
    {"Ctrl+W", 56},     {"Ctrl+Shift+W", 56},
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
  switch (row.need) {
    case Selection:
      return state.selected > 0;
    case Undo:
      return state.undo;
    case Clipboard:
      return state.paste;
    default:
      return true;
  }
}

}  // namespace vellum
