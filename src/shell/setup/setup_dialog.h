// Setup: the settings of the program on three pages.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QTabWidget>
#include <string>
#include <vector>

#include "base/host.h"
#include "shell/forms/setting_page.h"
#include "shell/setup/paint_search_box.h"

namespace vellum {

class SetupDialog : public QDialog {
  Q_OBJECT
 public:
  explicit SetupDialog(QWidget* parent = nullptr, Host host = {});

  /// Puts the defaults of every page into its fields.
  void set_all_defaults();
  /// After OK: whether something was changed that works only after a restart.
  bool needs_restart() const { return restart_; }

  void done(int result) override;

 private:
  void add_files_buttons(SettingPage& page);
  void add_display_buttons(SettingPage& page);
  void add_language(SettingPage& page);

  Host host_;
  QTabWidget* tabs_;
  std::vector<SettingPage*> pages_;
  PaintChoice paint_;
  std::string codec_;
  QComboBox* language_ = nullptr;
  bool restart_ = false;
};

/// Shows Setup, with the defaults in its fields if `defaults`. Whether the program has to be restarted, which
/// the user was told then.
bool edit_settings(QWidget* parent, bool defaults, Host& host);

}  // namespace vellum
