// The question of a batch run about a file that stands where a result goes.
#pragma once

#include <QDialog>

#include "batch/batch_run.h"
#include "shell/services/services.h"

class QCheckBox;
class QDialogButtonBox;
class QLineEdit;
class QRadioButton;

namespace vellum {

class OverwritePrompt : public QDialog {
  Q_OBJECT
 public:
  /// `result`: what would be written; may be null.
  OverwritePrompt(const std::filesystem::path& target, const Picture& result, Services& services,
                  QWidget* parent);

  /// Cancel where the window was closed without an answer.
  OverwriteChoice choice() const;
  void choose(OverwriteAnswer answer);

  void accept() override;

 private:
  QWidget* make_pictures(const Picture& result);
  void make_answers(QLayout& layout);
  void follow_answer();
  OverwriteAnswer answer() const;
  std::filesystem::path new_path() const;

  std::filesystem::path target_;
  Services& services_;
  std::vector<std::pair<OverwriteAnswer, QRadioButton*>> answers_;
  QLineEdit* name_;
  QCheckBox* rest_;
  QDialogButtonBox* buttons_;
};

}  // namespace vellum
