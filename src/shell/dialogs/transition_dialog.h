// The dialog of transitions: the list of images, what holds for all of them, a preview that plays, Test.
#pragma once

#include "generators/generator.h"
#include "shell/dialogs/motion_preview.h"
#include "shell/dialogs/parameter_dialog.h"
#include "shell/dialogs/picture_list.h"

namespace vellum {

class TransitionDialog : public ParameterDialog {
  Q_OBJECT
 public:
  /// `kind` of the documents that are made; only an MNG leaves a choice of colors. `fresh`: with the initial
  /// values and an empty list, else with those that were kept.
  TransitionDialog(const Generator& generator, DocumentKind kind, bool fresh, Services& services,
                   QWidget* parent);

  GeneratorInputs inputs() const;
  /// Those of the form, the numbers of the effects, and the seed of this opening: what Test shows is what OK
  /// makes.
  FieldValues all_values() const;
  PictureList& pictures() { return *pictures_; }
  MotionPreview& preview() { return *preview_; }

  void follow() override;
  void accept() override;
  void edit_numbers();
  void override_row(int row);

  /// What Test does with values that were checked.
  std::function<void()> test;
  /// What OK does; false keeps the dialog open.
  std::function<bool()> build;

 private:
  void lay_out();
  void add_buttons();
  void show_preview();

  const Generator& generator_;
  Services& services_;
  DocumentKind kind_;
  FieldValues numbers_;
  PictureList* pictures_;
  MotionPreview* preview_;
  QPushButton* test_ = nullptr;
};

}  // namespace vellum
