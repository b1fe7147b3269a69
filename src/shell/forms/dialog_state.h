// What the controls of a dialog held, kept in a text file and given back the next time.
#pragma once

#include <QDialog>
#include <filesystem>
#include <span>

namespace vellum {

/// Of a list's item: the text that the file has for it, where what is shown is in the person's language.
inline constexpr int kSourceRole = Qt::UserRole + 100;

/// A row of a dialog's table. Numbers, not names, tell controls apart in the file.
struct DialogStateRow {
  int id = 0;
  const char* tag = "";            ///< four letters, see dialog_state.cpp
  const char* control = "";        ///< the object name of the widget; empty for a plain value
  std::uint32_t* value = nullptr;  ///< of a plain value
  int members = 1;   ///< of a radio group: buttons CONTROL_0, CONTROL_1, ..., numbered upward from `id`
  int decimals = 0;  ///< of a floating value
};

/// Silent where the file can't be written. Rows whose control isn't in the dialog are left out.
void store_dialog_state(const QDialog& dialog, std::span<const DialogStateRow> rows,
                        const std::filesystem::path& file);

/// Sets what the file has for these rows; lines of other controls, or of another kind, are passed over.
void restore_dialog_state(QDialog& dialog, std::span<const DialogStateRow> rows,
                          const std::filesystem::path& file);

}  // namespace vellum
