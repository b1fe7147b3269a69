#include "shell/window/start_up.h"

#include <QGuiApplication>
#include <QScreen>
#include <QUrl>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "base/roff.h"
#include "base/text.h"
#include "configuration/config_file.h"
#include "configuration/setting_values.h"
#include "configuration/shell_settings.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/saving.h"

namespace vellum {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAddress = "file://";
constexpr std::string_view kViewSwitch = "/V";
constexpr int kMostPixels = 10000;  // of a picture, a side

struct OptionRow {
  std::string_view name;
  const char* value;  ///< what follows the name; null: nothing
  const char* help;   ///< null: for the build alone
  void (*apply)(StartOptions&, const char* value);
};

constexpr OptionRow kOptions[] = {
    {"--help", nullptr, "show this text", [](StartOptions& o, const char*) { o.help = true; }},
    {"--man", nullptr, nullptr, [](StartOptions& o, const char*) { o.man = true; }},
    {"--version", nullptr, "show the version", [](StartOptions& o, const char*) { o.version = true; }},
    {"--view", nullptr, "show FILE in its viewer, as a \"/V\" behind its name does",
     [](StartOptions& o, const char*) { o.view = true; }},
    {"--screenshot", "OUT.png", "write a picture of the window with FILE open, and end",
     [](StartOptions& o, const char* value) { o.screenshot = value; }},
    {"--show", "COMMAND[@ROW]", "with --screenshot: the window of this command, by its number",
     [](StartOptions& o, const char* value) {
       if (std::sscanf(value, "%d@%zu", &o.show, &o.row) < 1 || o.show <= 0)
         o.error = translated("--show needs a number of a command");
     }},
    {"--press", "BUTTON", "with --show: the window that this button of it opens",
     [](StartOptions& o, const char* value) { o.press = value; }},
    {"--size", "WIDTHxHEIGHT", "with --screenshot: the size of the main window",
     [](StartOptions& o, const char* value) {
       if (std::sscanf(value, "%dx%d", &o.wide, &o.deep) != 2 || std::min(o.wide, o.deep) < 1 ||
           std::max(o.wide, o.deep) > kMostPixels)
         o.error = translated("--size needs a width and a height in pixels");
     }},
    {"--config", "FILE", "the configuration file of this run",
     [](StartOptions& o, const char* value) { o.config = value; }},
    {"--set", "Key=Value", "a setting for this run, never written",
     [](StartOptions& o, const char* value) { o.settings.emplace_back(value); }},
};

bool exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

/// Takes a "/V" off the end of a name: one that stands behind a known extension, and is not part of a path.
bool take_view_switch(std::string& name) {
  if (!name.ends_with(kViewSwitch) || exists(name)) return false;
  const std::string rest =
      name.substr(0, name.find_last_not_of(' ', name.size() - kViewSwitch.size() - 1) + 1);
  const std::string extension = fs::path(rest).extension().string();
  if (!is_document_extension(extension)) return false;
  name = rest;
  return true;
}

bool is_set(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value;
}

/// The screen that holds the middle of the stored place, else the one that the window would come to.
QRect screen_of_stored_place(const QWidget& window) {
  const auto middle = [](int a, int b) { return static_cast<int>((std::int64_t{a} + b) / 2); };
  const QPoint point(middle(settings::StickyWindowLeft, settings::StickyWindowRight),
                     middle(settings::StickyWindowTop, settings::StickyWindowBottom));
  const QScreen* screen = QGuiApplication::screenAt(point);
  return (screen ? screen : window.screen())->availableGeometry();
}

/// The edges of the window's inside that were stored at the last exit: so setting and reading them agree,
/// whatever the frame measures. Held to the least size and to the screen; empty while one is unset.
QRect stored_place(const QRect& screen) {
  const int edges[] = {settings::StickyWindowLeft, settings::StickyWindowTop, settings::StickyWindowRight,
                       settings::StickyWindowBottom};
  if (std::ranges::find(edges, settings::kUnsetEdge) != std::end(edges)) return {};
  // The file may hold any numbers: differences don't fit an int.
  const auto hold = [](std::int64_t value, int least, int most) {
    return static_cast<int>(std::clamp<std::int64_t>(value, std::min(least, most), most));
  };
  const QSize size(hold(std::int64_t{edges[2]} - edges[0], style::kLeastWindowWidth, screen.width()),
                   hold(std::int64_t{edges[3]} - edges[1], style::kLeastWindowHeight, screen.height()));
  const QPoint corner(hold(edges[0], screen.left(), screen.left() + screen.width() - size.width()),
                      hold(edges[1], screen.top(), screen.top() + screen.height() - size.height()));
  return {corner, size};
}

/// The files that the names mean: all of them where each is there, else one whose name has blanks.
void take_names(const std::vector<std::string>& names, StartOptions& options) {
  std::vector<fs::path> files;
  for (const std::string& name : names) files.push_back(path_of_argument(name));
  if (files.size() > 1 && std::ranges::all_of(files, [](const fs::path& file) { return (exists)(file); })) {
    options.file = files.front();
    options.more.assign(files.begin() + 1, files.end());
    return;
  }
  std::string name;
  for (const std::string& part : names) name += (name.empty() ? "" : " ") + part;
  if (take_view_switch(name)) options.view = true;
  if (!name.empty()) options.file = path_of_argument(name);
}

}  // namespace

StartOptions parse_arguments(std::span<const char* const> arguments) {
  StartOptions options;
  std::vector<std::string> names;
  bool only_names = false;
  for (std::size_t i = 0; i < arguments.size() && options.error.empty(); ++i) {
    const std::string_view argument = arguments[i];
    const auto row = std::ranges::find(kOptions, argument, &OptionRow::name);
    if (!only_names && argument == "--") {
      only_names = true;
    } else if (only_names || !argument.starts_with("--")) {
      names.emplace_back(argument);
    } else if (row == std::end(kOptions)) {
      options.error = translated("unknown option ") + std::string(argument);
    } else if (row->value && i + 1 == arguments.size()) {
      options.error = std::string(argument) + translated(" needs a value: ") + row->value;
    } else {
      row->apply(options, row->value ? arguments[++i] : nullptr);
    }
  }
  take_names(names, options);
  return options;
}

fs::path path_of_argument(const std::string& name) {
  if (exists(name)) return name;
  if (name.starts_with(kAddress)) {
    const QUrl url(to_qt(name));
    if (url.isLocalFile() && url.host().isEmpty()) return to_path(url.toLocalFile());
  }
  std::string unquoted = name;
  std::erase(unquoted, '"');
  return unquoted;
}

std::string usage_text() {
  std::string text = translated(
      "Usage: vellumcraft [OPTION]... [FILE...]\n\nOpens PNG, animated PNG, MNG or WebP files.\n\n");
  for (const OptionRow& row : kOptions) {
    if (!row.help) continue;
    std::string left(row.name);
    if (row.value) left.append(" ").append(row.value);
    text += format_text("  %-24s%s\n", left.c_str(), translated(row.help));
  }
  return text;
}

std::string man_text() {
  std::string text;
  for (const OptionRow& row : kOptions)
    if (row.help) text += roff_item(row.name, row.value ? row.value : "", row.help);
  return text;
}

bool desktop_named(std::span<const char* const> arguments) {
  if (is_set("DISPLAY") || is_set("WAYLAND_DISPLAY") || is_set("QT_QPA_PLATFORM")) return true;
  return std::ranges::any_of(arguments, [](std::string_view argument) {
    return argument == "-platform" || argument == "--platform" || argument.starts_with("-platform=") ||
           argument.starts_with("--platform=");
  });
}

bool load_settings(const StartOptions& options) {
  config_open(options.config);
  settings::ApplicationPath = to_path(QCoreApplication::applicationDirPath()).string();
  for (const std::string& assignment : options.settings) {
    std::string reason;
    if (set_setting_for_run(assignment, reason)) continue;
    std::fprintf(stderr, "vellumcraft: --set %s: %s\n", assignment.c_str(), reason.c_str());
    return false;
  }
  return true;
}

void show_main_window(QWidget& window) {
  const QRect screen = screen_of_stored_place(window);
  window.setMinimumSize(std::min(style::kLeastWindowWidth, screen.width()),
                        std::min(style::kLeastWindowHeight, screen.height()));
  const QRect place = stored_place(screen);
  if (place.isValid()) {
    window.setGeometry(place);
  } else {
    window.resize(screen.size() * 4 / 5);
    window.move(screen.center() - window.rect().center());
  }
  settings::StartMaximized != 0 ? window.showMaximized() : window.show();
}

void record_window_place(const QWidget& window) {
  settings::StartMaximized = window.isMaximized() ? 1 : 0;
  const QRect place = window.normalGeometry();
  if (!place.isValid()) return;
  settings::StickyWindowLeft = place.left();
  settings::StickyWindowTop = place.top();
  settings::StickyWindowRight = place.left() + place.width();
  settings::StickyWindowBottom = place.top() + place.height();
}

}  // namespace vellum
