// The command line of the desktop program, and the main window's first place on the screen.
#pragma once

#include <QWidget>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vellum {

struct StartOptions {
  bool help = false, version = false;
  bool man = false;                           ///< the options for the manual page, which the build makes
  bool view = false;                          ///< the file opens in its viewer
  std::filesystem::path file;                 ///< to open; empty without one
  std::vector<std::filesystem::path> more{};  ///< that a file manager names behind it
  std::filesystem::path screenshot;   ///< where to write a picture of the window; empty: stay and work
  int show = 0;                       ///< number of the command whose window is in the picture; 0: none
  std::string press{};                ///< what the button says whose window is shown instead
  int wide = 1200, deep = 760;        ///< pixels of the window in the picture
  std::size_t row = 0;                ///< the row that it works on, from 1; 0: as the file was opened
  std::filesystem::path config;       ///< configuration file of this run; empty: the user's
  std::vector<std::string> settings;  ///< "Key=Value", for this run
  std::string error;                  ///< what is wrong with the command line; empty: nothing
};

/// `arguments` without the program's name. What is no option is one file name, its parts joined by a blank;
/// several names where each is a file that is there.
StartOptions parse_arguments(std::span<const char* const> arguments);

/// The path that a name on the command line means: "file://" addresses are decoded, double quotes go where
/// the name with them doesn't exist.
std::filesystem::path path_of_argument(const std::string& name);

/// The text of --help.
std::string usage_text();

/// The options as a part of a manual page.
std::string man_text();

/// Whether a desktop can be reached: a display is named, or the platform is (by variable or option).
bool desktop_named(std::span<const char* const> arguments);

/// Loads the configuration and sets what the command line sets. False, with the reason on standard error,
/// when that is no setting.
bool load_settings(const StartOptions& options);

/// Puts the window where it stood at the last exit, as far as it fits the screen, and shows it.
void show_main_window(QWidget& window);

/// Records where the window stands, for the next start.
void record_window_place(const QWidget& window);

}  // namespace vellum
