#include "shell/window/command_table.h"

#include <algorithm>

#include "core/model/tags.h"
#include "core/settings.h"
#include "exchange/movie.h"
#include "shell/window/commands.h"
#include "shell/window/main_window.h"

namespace vellum {
namespace {

using enum Need;

constexpr DocumentKind kStill[] = {DocumentKind::PING};
constexpr DocumentKind kMng[] = {DocumentKind::MING};
constexpr DocumentKind kWebp[] = {DocumentKind::WEBP};
constexpr DocumentKind kPngs[] = {DocumentKind::PING, DocumentKind::APNG};
constexpr DocumentKind kApngAndMng[] = {DocumentKind::APNG, DocumentKind::MING};
constexpr DocumentKind kApngAndWebp[] = {DocumentKind::APNG, DocumentKind::WEBP};
constexpr DocumentKind kMngAndWebp[] = {DocumentKind::MING, DocumentKind::WEBP};
constexpr DocumentKind kPngsAndMng[] = {DocumentKind::PING, DocumentKind::APNG, DocumentKind::MING};
constexpr DocumentKind kAnimations[] = {DocumentKind::MING, DocumentKind::APNG, DocumentKind::WEBP};

void full_screen_command(MainWindow& main) { main.setWindowState(main.windowState() ^ Qt::WindowFullScreen); }

/// Of the kind that new animations are.
void new_animation_command(MainWindow& main) {
  constexpr DocumentKind kKinds[] = {DocumentKind::APNG, DocumentKind::MING, DocumentKind::WEBP};
  new_document_command(main, kKinds[std::clamp(settings::DefaultAnimationType, 0, 2)]);
}

// clang-format off
const CommandRow kCommands[] = {
    // number, label, menu and group, need, kinds, icon, function
    {101, "&PNG (still image)", Menu::New, 1, Nothing, {}, nullptr, new_command<DocumentKind::PING>},
    {102, "&Animated PNG (animation)", Menu::New, 1, Nothing, {}, nullptr, new_command<DocumentKind::APNG>},
    {114, "&MNG (animaton)", Menu::New, 1, Nothing, {}, nullptr, new_command<DocumentKind::MING>},
    {105, "&WebP (animaton)", Menu::New, 1, Nothing, {}, nullptr, new_command<DocumentKind::WEBP>},
    {58, "&Open\tCtrl+0", Menu::File, 1, Nothing, {}, "open", open_command},
    {57, "&Save\tCtrl+S", Menu::File, 2, Entries, {}, "save", save_command},
    {104, "Save &as...", Menu::File, 2, Entries, {}, nullptr, save_as_command},
    {106, "&Close", Menu::File, 3, Entries, {}, "close", close_command},
    {109, "Close a&ll", Menu::File, 3, Entries, {}, nullptr, close_all_command},
    {59, "Animation &Wizard...\tCtrl+T", Menu::File, 4, Nothing, {}, "wizard", wizard_command},
    {117, "Com&bine", Menu::File, 4, Nothing, {}, "combine", combine_command},
    {403, "Fa&vorites", Menu::File, 4, Nothing, {}, "favorites", favorites_command},
    {119, "Pr&int", Menu::File, 5, Entries, kAnimations, "print", print_command},
    {118, "P&roperties", Menu::File, 5, Entries, kAnimations, "properties", properties_command},
    {840, "Chec&k document\tShift+F7", Menu::File, 5, Entries, {}, nullptr, check_command},
    {54, "Set&up", Menu::File, 5, Nothing, {}, "setup", setup_command},
    {111, "Su&percompress", Menu::File, 6, Entries, kApngAndMng, "supercompress", supercompress_command},
    {121, "Export to &ANI", Menu::File, 7, Entries, kAnimations, "export", export_command<121>},
    {122, "Export to &GIF", Menu::File, 7, Entries, kAnimations, "export", export_command<122>},
    {116, "Export to &ILG", Menu::File, 7, Entries, kAnimations, "export", export_command<116>},
    {112, "Export to &Movie", Menu::File, 7, Entries, {}, "export", export_command<112>},
    {115, "Export to SW&F", Menu::File, 7, Entries, kAnimations, "export", export_command<115>},
    {120, "Import from &ANI", Menu::File, 8, Nothing, {}, "import", import_command<120>},
    {110, "Import from &Movie", Menu::File, 8, Nothing, {}, "import", import_movie_command},
    {113, "&Preview Movie", Menu::File, 8, Nothing, {}, "movie", preview_movie_command},
    {55, "E&xit", Menu::File, 9, Nothing, {}, nullptr, exit_command},
    {123, "E&xit", Menu::None, 0, Nothing, {}, nullptr, exit_command},

    {204, "&Undo\tCtrl+Z (Alt+Backspace)", Menu::Edit, 1, Undo, {}, "undo", undo_command},
    {208, "&Redo\tCtrl+Y", Menu::Edit, 1, Redo, {}, "redo", redo_command},
    {201, "Cu&t\tCtrl+X (Shift+Del)", Menu::Edit, 2, Selection, {}, "cut", cut_command},
    {202, "&Copy\tCtrl+C (Ctrl+Ins)", Menu::Edit, 2, Selection, {}, "copy", copy_command},
    {203, "&Paste\tCtrl+V (Shift+Ins)", Menu::Edit, 2, Entries, {}, "paste", paste_command},
    {50, "&Select all\tCtrl+A", Menu::Edit, 3, Entries, {}, "select_all", select_all_command},
    {51, "&Select none", Menu::Edit, 3, Selection, {}, "select_none", select_none_command},
    {210, "&Find...\tCtrl+F", Menu::Edit, 3, Entries, {}, nullptr, find_text_command},
    {211, "Find ne&xt\tF3", Menu::Edit, 3, Entries, {}, nullptr, find_next_command},
    {212, "Find &backwards\tShift+F3", Menu::Edit, 3, Entries, {}, nullptr, find_backwards_command},
    {1050, "&Background (BACK)", Menu::InsertMng, 1, Entries, kMng, nullptr, insert_command<tag::BACK>},
    {1055, "&Image", Menu::InsertMng, 1, Entries, kMng, nullptr, insert_images_command},
    {1053, "&Loop (LOOP)", Menu::InsertMng, 1, Entries, kMng, nullptr, insert_command<tag::LOOP>},
    {1054, "Loop &end (ENDL)", Menu::InsertMng, 1, Entries, kMng, nullptr, insert_command<tag::ENDL>},
    {1056, "&Termination (TERM)", Menu::InsertMng, 1, Entries, kMng, nullptr, insert_command<tag::TERM>},
    {1022, "&Background (BKGD)", Menu::InsertPng, 1, Entries, kStill, nullptr, insert_command<tag::bKGD>},
    {1025, "&Compressed text (ZTXT)", Menu::InsertPng, 1, Entries, kPngsAndMng, nullptr, insert_command<tag::zTXt>},
    {1027, "&Gamma (GAMA)", Menu::InsertPng, 1, Entries, kPngs, nullptr, insert_command<tag::gAMA>},
    {1020, "I&mage (IDAT)", Menu::InsertPng, 1, Entries, kStill, nullptr, insert_images_command},
    {1021, "&Palette (PLTE)", Menu::InsertPng, 1, Entries, kStill, nullptr, insert_command<tag::PLTE>},
    {1024, "T&ext (TEXT)", Menu::InsertPng, 1, Entries, kPngsAndMng, nullptr, insert_command<tag::tEXt>},
    {1023, "&Time (TIME)", Menu::InsertPng, 1, Entries, kPngsAndMng, nullptr, insert_command<tag::tIME>},
    {1026, "T&ransparency (TRNS)", Menu::InsertPng, 1, Entries, kPngs, nullptr, insert_command<tag::tRNS>},
    {1070, "&Other chunk...", Menu::InsertPng, 2, Entries, kPngs, nullptr, insert_other_command},
    {1072, "&Other chunk...", Menu::InsertWebp, 2, Entries, kWebp, nullptr, insert_other_command},
    {1071, "&Other chunk...", Menu::InsertMng, 2, Entries, kMng, nullptr, insert_other_command},
    {1060, "Image (&WEBP IDAT)", Menu::InsertWebp, 1, Entries, kWebp, nullptr, insert_images_command},
    {60, "Insert", Menu::None, 0, Entries, {}, "insert", insert_popup_command},
    {61, "&Delete chunk", Menu::Edit, 5, Selection, {}, "delete", delete_command},
    {205, "&Edit chunk...\tEnter", Menu::Edit, 6, Entries, {}, nullptr, edit_command},
    {206, "M&ove up\tAlt+Up", Menu::Edit, 6, Entries, {}, nullptr, move_up_command},
    {207, "Mo&ve down\tAlt+Down", Menu::Edit, 6, Entries, {}, nullptr, move_down_command},
    {209, "Dism&iss notes", Menu::Edit, 7, Notes, {}, nullptr, dismiss_notes_command},

    {250, "&Banner", Menu::Create, 1, Nothing, {}, nullptr, generator_command<250>},
    {257, "B&utton", Menu::Create, 1, Nothing, {}, nullptr, generator_command<257>},
    {273, "Photo stac&k", Menu::Create, 1, Nothing, {}, nullptr, generator_command<273>},
    {253, "&LED Signs", Menu::Create, 1, Nothing, {}, nullptr, generator_command<253>},
    {271, "&Status panel", Menu::Create, 1, Nothing, {}, nullptr, generator_command<271>},
    {252, "&Spin", Menu::Create, 1, Nothing, {}, nullptr, generator_command<252>},
    {272, "Thr&obbers", Menu::Create, 1, Nothing, {}, nullptr, generator_command<272>},
    {251, "T&ransition", Menu::Create, 1, Nothing, {}, nullptr, transition_command},
    {275, "Web &gallery", Menu::Create, 1, Nothing, {}, nullptr, gallery_command},
    {304, "&Merge\tCtrl+M", Menu::Animation, 2, Entries, kAnimations, "merge", operation_command<304>},
    {330, "Ad&just", Menu::Animation, 2, Entries, kAnimations, "adjust", operation_command<330>},
    {270, "Animation to PNG", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<270>},
    {328, "Ca&ption", Menu::Animation, 2, Entries, kAnimations, "caption", operation_command<328>},
    {311, "Color and &Balance", Menu::Animation, 2, Entries, kAnimations, "color", operation_command<311>},
    {258, "&Black and white", Menu::Convert, 1, Entries, kAnimations, nullptr, operation_command<258>},
    {259, "&Grey scale", Menu::Convert, 1, Entries, kAnimations, nullptr, operation_command<259>},
    {260, "&Palette color", Menu::Convert, 1, Entries, kApngAndMng, nullptr, operation_command<260>},
    {261, "&True color", Menu::Convert, 1, Entries, kApngAndMng, nullptr, operation_command<261>},
    {262, "True color with &alpha", Menu::Convert, 1, Entries, kApngAndMng, nullptr, operation_command<262>},
    {263, "Animated PNG", Menu::Convert, 2, Entries, kMngAndWebp, nullptr, operation_command<263>},
    {264, "MNG", Menu::Convert, 2, Entries, kApngAndWebp, nullptr, operation_command<264>},
    {265, "WebP", Menu::Convert, 2, Entries, kApngAndMng, nullptr, operation_command<265>},
    {309, "Cr&op", Menu::Animation, 2, Entries, kAnimations, "crop", operation_command<309>},
    {322, "&Depopulate", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<322>},
    {312, "Extra&ct", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<312>},
    {308, "&Flip and Rotate", Menu::Animation, 2, Entries, kAnimations, "rotate", operation_command<308>},
    {324, "F&rame", Menu::Animation, 2, Entries, kAnimations, "frame", operation_command<324>},
    {332, "Graphic Matrix", Menu::Animation, 2, Nothing, {}, nullptr, generator_command<332>},
    {62, "M&anage", Menu::Animation, 2, Entries, kAnimations, "manage", manage_command},
    {317, "Overla&y", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<317>},
    {315, "Protection Matri&x", Menu::Animation, 2, Entries, kStill, nullptr, operation_command<315>},
    {316, "Reconstr&uct", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<316>},
    {310, "Resi&ze", Menu::Animation, 2, Entries, kAnimations, "resize", operation_command<310>},
    {314, "Rev&erse", Menu::Animation, 2, Entries, kAnimations, "reverse", operation_command<314>},
    {319, "S&hadow", Menu::Animation, 2, Entries, kApngAndMng, nullptr, operation_command<319>},
    {274, "Social media", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<274>},
    {326, "Text Overlay", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<326>},
    {323, "&Tile", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<323>},
    {329, "Titles and Credits", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<329>},
    {325, "Trim", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<325>},
    {318, "U&nderlay", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<318>},
    {327, "&Watermark", Menu::Animation, 2, Entries, kAnimations, nullptr, operation_command<327>},
    {307, "Image &Strip", Menu::Animation, 3, Entries, kAnimations, "strip", image_strip_command},
    {56, "&View\tCtrl+W", Menu::Animation, 3, Entries, {}, "view", view_command},
    {331, "Batch processor", Menu::Animation, 4, Nothing, {}, "batch", batch_command},

    {124, "Export image", Menu::None, 0, Entries, kAnimations, nullptr, export_image_command},
    {320, "Move to", Menu::None, 0, Entries, kAnimations, nullptr, operation_command<320>},
    {321, "Copy to", Menu::None, 0, Entries, kAnimations, nullptr, operation_command<321>},
    {401, "Pin to favorites", Menu::None, 0, Entries, {}, nullptr, pin_command},
    {402, "Unpin from favorites", Menu::None, 0, Entries, {}, nullptr, unpin_command},
    {313, "Not implemented", Menu::None, 0, Selection, {}, nullptr, not_implemented_command},

    {801, "&Cascade\tShift+F5", Menu::Window, 1, Entries, {}, "cascade", cascade_command},
    {802, "&Tile\tShift+F4", Menu::Window, 1, Entries, {}, "tile", tile_command},
    {803, "&Arrange Icons", Menu::Window, 1, Entries, {}, nullptr, arrange_icons_command},
    {804, "&Duplicate\tCtrl+D", Menu::Window, 2, Entries, {}, "duplicate", duplicate_command},
    {805, "Ne&xt\tCtrl+F6", Menu::Window, 2, Entries, {}, nullptr, next_window_command},
    {806, "Pre&vious\tCtrl+Shift+F6", Menu::Window, 2, Entries, {}, nullptr, previous_window_command},
    {821, "&Preview\tF7", Menu::View, 1, Nothing, {}, "play", dock_command<821>},
    {822, "&Film strip\tF8", Menu::View, 1, Nothing, {}, "strip", dock_command<822>},
    {823, "&Inspector\tF9", Menu::View, 1, Nothing, {}, "properties", dock_command<823>},
    {824, "&Check\tShift+F9", Menu::View, 1, Nothing, {}, nullptr, dock_command<824>},
    {807, "Next &pane\tF6", Menu::View, 2, Nothing, {}, nullptr, next_pane_command},
    {808, "F&ull screen\tF11", Menu::View, 3, Nothing, {}, nullptr, full_screen_command},

    {52, "&Contents", Menu::Help, 1, Nothing, {}, "help", contents_command},
    {902, "&About...", Menu::Help, 1, Nothing, {}, "about", about_command},
    {903, "&System information", Menu::Help, 1, Nothing, {}, nullptr, system_information_command},
    {136, "&Tip of the day", Menu::Help, 2, Nothing, {}, "tip", tip_command},
    {2903, "Tarnwick on the &Web", Menu::Help, 3, Nothing, {}, "web", web_page_command<2903>},
    {2904, "Tarnwick &Blog", Menu::Help, 3, Nothing, {}, "web", web_page_command<2904>},
    {2905, "Tarnwick Supp&ort", Menu::Help, 3, Nothing, {}, "web", web_page_command<2905>},
    {2907, "Welcome wi&zard", Menu::Help, 4, Nothing, {}, nullptr, welcome_command},

    {809, "New animation", Menu::None, 0, Nothing, {}, nullptr, new_animation_command},
    {701, "Thumbnail size", Menu::None, 0, Entries, {}, nullptr, scale_command},
};
// clang-format on

// The fourth of the bar is the one that lists the open documents.
constexpr MenuRow kMenus[] = {{Menu::File, "&File"},
                              {Menu::New, "&New", Menu::File, 1, "new"},
                              {Menu::Recent, "Recent &files", Menu::File, 1, "recent", 58},
                              {Menu::Edit, "&Edit"},
                              {Menu::InsertMng, "Insert (&MNG)", Menu::Edit, 4},
                              {Menu::InsertPng, "Insert (P&NG)", Menu::Edit, 4},
                              {Menu::InsertWebp, "Insert (&WebP)", Menu::Edit, 4},
                              {Menu::Animation, "&Animation"},
                              {Menu::Create, "&Create", Menu::Animation, 1},
                              {Menu::Convert, "Con&vert", Menu::Animation, 2},
                              {Menu::Window, "&Window"},
                              {Menu::View, "&View", Menu::Window, 3},
                              {Menu::Help, "&Help"}};

constexpr ToolRow kTools[] = {{1, 58}, {1, 57}, {2, 204}, {2, 208}, {2, 201}, {2, 202}, {2, 203},
                              {3, 60}, {3, 61}, {4, 56},  {4, 59},  {4, 111}, {4, 331}, {5, kScaleCommand}};

// Ctrl+P, Ctrl+I and Ctrl+E stay without an effect.
// clang-format off
constexpr KeyRow kKeys[] = {
    {"Ctrl+O", 58},     {"Ctrl+S", 57},   {"Ctrl+W", 56},    {"Ctrl+Shift+W", 56},  {"Ctrl+T", 59},
    {"Ctrl+M", 304},    {"Ctrl+Z", 204},  {"Ctrl+Y", 208},   {"Ctrl+Shift+Z", 208}, {"Ctrl+X", 201},
    {"Shift+Del", 201}, {"Ctrl+C", 202},  {"Ctrl+Ins", 202}, {"Ctrl+V", 203},       {"Shift+Ins", 203},
    {"Ctrl+A", 50},     {"Del", 61},      {"Alt+Up", 206},   {"Alt+Down", 207},     {"Shift+F5", 801},
    {"Shift+F4", 802},  {"Ctrl+F4", 106}, {"F1", 52},
    {"Ctrl+F6", 805}, {"Ctrl+Shift+F6", 806}, {"Ctrl+Tab", 805}, {"Ctrl+Shift+Tab", 806},
    {"Ctrl+PgDown", 805}, {"Ctrl+PgUp", 806}, {"F6", 807}, {"F7", 821}, {"F8", 822}, {"F9", 823},
    {"Shift+F7", 840}, {"Shift+F9", 824}, {"Ctrl+F", 210}, {"F3", 211}, {"Shift+F3", 212},
    {"Ctrl+N", 809}, {"Ctrl+Shift+S", 104}, {"Ctrl+Q", 55}, {"F11", 808},
};
// clang-format on

bool fits_kind(const CommandRow& row, DocumentKind kind) {
  return row.kinds.empty() || std::ranges::find(row.kinds, kind) != row.kinds.end();
}

}  // namespace

std::span<const CommandRow> command_table() {
  // Commands of what this program was built without are not there.
  static const std::vector<CommandRow> rows = [] {
    std::vector<CommandRow> all(std::begin(kCommands), std::end(kCommands));
    constexpr int kMovies[] = {110, 112, 113};
    if (!movies_built())
      std::erase_if(all, [&](const CommandRow& row) { return std::ranges::count(kMovies, row.number) > 0; });
    return all;
  }();
  return rows;
}
std::span<const MenuRow> menu_table() { return kMenus; }
std::span<const ToolRow> tool_table() { return kTools; }
std::span<const KeyRow> key_table() { return kKeys; }

const CommandRow* find_command(int number) {
  const auto rows = command_table();
  const auto row = std::ranges::find(rows, number, &CommandRow::number);
  return row == rows.end() ? nullptr : &*row;
}

bool command_enabled(const CommandRow& row, const CommandState& state) {
  if (!row.run || (row.run.on_document && !state.document)) return false;
  if (row.need == Undo) return state.undo;
  if (row.need == Redo) return state.redo;
  if (row.need == Notes) return state.notes;
  if (row.need == Nothing && row.kinds.empty()) return true;
  if (state.entries == 0 || !fits_kind(row, state.kind)) return false;
  return row.need != Selection || state.selected > 0;
}

}  // namespace vellum
