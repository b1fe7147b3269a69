// A dialog over the parameters of a row: its fields, its last values, what they will do.
#pragma once

#include "operations/parameters.h"
#include "shell/forms/form_dialog.h"
#include "shell/forms/parameter_state.h"
#include "shell/services/services.h"

namespace vellum {

class ParameterDialog : public FormDialog {
  Q_OBJECT
 public:
  /// Row and window outlive the dialog. Fields beside those of the row stand behind them, with their initial
  /// values; fields with a value in `asked` are not shown. Settings, state file and history keep the values
  /// at OK. Call `begin` once all is in place.
  ParameterDialog(const Parameters& parameters, const DocumentWindow& window, const std::vector<Field>& more,
                  Services& services, QWidget* parent, const FieldValues& asked = {});

  const DocumentWindow& window() const { return window_; }
  /// Takes the values of the state file and listens to the form.
  void begin();
  /// Those that were asked before, and those of the form.
  FieldValues values() const;
  /// What is wrong with them first.
  std::optional<FieldFault> fault() const;
  Host& host() { return services_.host; }
  /// Works out anew what follows from the values; for values that were put in without a person's hand.
  virtual void follow();
  /// The text whose earlier ones a file keeps; the file gets it.
  std::string kept_text() const;
  void keep_text() const;

 private:
  ParameterDialog(const Parameters& parameters, const DocumentWindow& window, Services& services,
                  QWidget* parent, const std::vector<Field>& fields, const FieldValues& asked);
  void add_history();
  void add_texts();
  bool keep();

  const Parameters& parameters_;
  const DocumentWindow& window_;
  Services& services_;
  FieldValues asked_;
  QLabel* note_ = nullptr;
};

}  // namespace vellum
