// The choice of the program's look.
#pragma once

#include <QDialog>
#include <QListWidget>
#include <filesystem>
#include <span>

#include "base/host.h"
#include "shell/look/theme_look.h"

class QLabel;
class QPushButton;

namespace vellum {

/// A page of more themes; empty: there is none, and no link to it.
inline constexpr const char* kMoreThemes = "";

/// All themes with their samples. What is chosen is shown at once, OK keeps it.
class ThemeDialog : public QDialog {
  Q_OBJECT
 public:
  ThemeDialog(std::span<const std::filesystem::path> folders, Host& host, QWidget* parent = nullptr);

  /// The file of the chosen theme.
  std::string chosen() const;
  void choose(const std::string& file);

  void done(int result) override;

 private:
  void add_row(const QString& name, const std::string& file, const QImage& sample, const QString& reason);
  void follow_row();
  void configure();
  const Theme* theme_of_row() const;

  Host& host_;
  ThemesFound found_;
  ThemeInForce before_;
  QListWidget* list_;
  QLabel* note_;
  QPushButton* ok_ = nullptr;
  QPushButton* configure_ = nullptr;
};

/// Shows the themes of the program's folders. A choice is stored, and told where it waits for a restart.
void ask_for_theme(QWidget* parent, Host& host);

}  // namespace vellum
