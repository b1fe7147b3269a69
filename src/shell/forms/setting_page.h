// A page of settings: rows that name a setting and say how it is shown become controls, and what the user
// changed there goes back to the settings.
#pragma once

#include <QFormLayout>
#include <QGridLayout>
#include <QWidget>
#include <optional>
#include <span>
#include <vector>

#include "configuration/setting_table.h"
#include "shell/forms/form_controls.h"

namespace vellum {

/// One setting. Tables live as long as the program.
struct SettingField {
  Field field;  ///< its name is the setting's key, its label stands as it is
  std::optional<std::int64_t> pageDefault =
      {};                        ///< where "Defaults" puts in another value than a first run has
  bool restart = false;          ///< works when the program starts the next time
  const char* browse = nullptr;  ///< of a path: what the button beside it says
};

class SettingPage : public QWidget {
  Q_OBJECT
 public:
  /// Flags stand in `columns` columns, read downwards, everything else below them in its own order, in at
  /// most as many. A value out of its range is shown as the nearest one in it.
  SettingPage(std::span<const SettingField> rows, int columns, QWidget* parent = nullptr);

  /// A row of buttons below the fields.
  void add_buttons(std::initializer_list<QWidget*> buttons);

  void set_defaults();
  /// Stores what the user changed, as it is now, held to its range; what can't be read stays as it was.
  /// Whether something changed that works only after a restart.
  bool store();

 private:
  struct Placed {
    const SettingField* row;
    const SettingRow* setting;
    FormControl control;
    bool touched = false;
  };
  void place_flags(const std::vector<Placed*>& flags, int columns);
  void place_values(const std::vector<Placed*>& values, int most_columns);
  void show_values();
  void hold_to_range(Placed& placed);

  std::vector<Placed> placed_;
  bool filling_ = false;
};

}  // namespace vellum
