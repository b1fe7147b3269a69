// The widgets that fields become.
#pragma once

#include <QPushButton>
#include <functional>

#include "base/fields.h"

namespace vellum {

/// One field on the screen. What it holds is read and set as a value of the field.
struct FormControl {
  Field field;
  QWidget* row = nullptr;    ///< what stands beside the label
  QWidget* input = nullptr;  ///< what takes the keyboard; part of `row` or all of it
  bool ownLabel = false;     ///< the control shows the label itself
  bool tall = false;         ///< takes what height there is
  std::function<FieldValue()> get;
  std::function<void(const FieldValue&)> set;
  QPushButton* browse = nullptr;  ///< of a path
};

/// Makes the control for a field; `edited` is called whenever its value changes.
FormControl make_control(const Field& field, QWidget* parent, const std::function<void()>& edited);

}  // namespace vellum
