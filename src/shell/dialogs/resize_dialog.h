// Resize: by factor or by size, with a preview and the sizes that were used before.
#pragma once

#include <QComboBox>

#include "operations/resize_animation.h"
#include "shell/dialogs/change_preview.h"
#include "shell/forms/form_dialog.h"
#include "shell/services/services.h"

namespace vellum {

class ResizeDialog : public FormDialog {
  Q_OBJECT
 public:
  ResizeDialog(const DocumentWindow& window, Services& services, QWidget* parent = nullptr);

  /// What is typed; sides of 0 where that can't be read.
  ResizeAnimation resize() const;
  ChangePreview& preview() { return *preview_; }

 private:
  void make_presets();
  void take_preset(const QString& text);
  /// The other side follows where the proportions stay.
  void follow(const QString& name);
  void set_pair(const char* first, std::int64_t x, const char* second, std::int64_t y);
  bool store(const FieldValues& values);
  Picture changed(const Picture& frame) const;

  const DocumentWindow& window_;
  Extent canvas_;
  QComboBox* presets_ = nullptr;
  ChangePreview* preview_ = nullptr;
  std::vector<std::string> history_;
  bool following_ = false;
};

}  // namespace vellum
