// The dialog of any generator: its fields, the picture or the list of pictures that it works on, a preview
// that plays, Test.
#pragma once

#include <QBoxLayout>

#include "generators/generator.h"
#include "shell/dialogs/motion_preview.h"
#include "shell/dialogs/parameter_dialog.h"
#include "shell/dialogs/picture_list.h"

namespace vellum {

class GeneratorDialog : public ParameterDialog {
  Q_OBJECT
 public:
  /// For documents of this kind. The generator's last picture is read where it is still there, and its list
  /// unless the dialog begins afresh.
  GeneratorDialog(const Generator& generator, DocumentKind kind, bool fresh, Services& services,
                  QWidget* parent);

  GeneratorInputs inputs() const;
  /// The values of the form; a seed that the time would say is the one that the preview shows.
  FieldValues settled() const;
  MotionPreview& preview() { return *preview_; }
  /// Of a generator that takes several; else null.
  PictureList* pictures() { return pictures_; }
  void take_picture(const Picture& picture, const QString& name);
  void follow() override;
  void accept() override;

  /// What Test does with values that were checked.
  std::function<void(const FieldValues& values)> test;

 private:
  void add_source();
  void add_pictures(QBoxLayout& row, bool fresh);
  void add_test();
  void select();
  void paste();
  void show_source(const QString& name);
  bool has_inputs() const;

  const Generator& generator_;
  Services& services_;
  GeneratorInputs inputs_, reduced_;
  std::int64_t seed_;
  QLabel* name_ = nullptr;
  PictureList* pictures_ = nullptr;
  MotionPreview* preview_;
};

}  // namespace vellum
