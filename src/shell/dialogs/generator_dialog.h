// The dialog of any generator: its fields, the picture that it works on, a preview that plays, Test.
#pragma once

#include "generators/generator.h"
#include "shell/dialogs/motion_preview.h"
#include "shell/dialogs/parameter_dialog.h"

namespace vellum {

class GeneratorDialog : public ParameterDialog {
  Q_OBJECT
 public:
  /// The generator's last picture is read where it is still there.
  GeneratorDialog(const Generator& generator, Services& services, QWidget* parent);

  const GeneratorInputs& inputs() const { return inputs_; }
  MotionPreview& preview() { return *preview_; }
  void take_picture(Picture picture, const QString& name);
  void follow() override;
  void accept() override;

  /// What Test does with values that were checked.
  std::function<void(const FieldValues& values)> test;

 private:
  void add_source();
  void add_test();
  void select();
  void paste();
  void show_source(const QString& name);
  bool has_inputs() const;

  const Generator& generator_;
  Services& services_;
  GeneratorInputs inputs_, reduced_;
  QLabel* name_ = nullptr;
  MotionPreview* preview_;
};

}  // namespace vellum
