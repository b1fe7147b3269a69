// A form: fields as labelled controls on one page or several.
#pragma once

#include <QFormLayout>
#include <QLabel>
#include <QTabWidget>
#include <map>

#include "shell/forms/form_controls.h"

namespace vellum {

class Form : public QWidget {
  Q_OBJECT
 public:
  /// Texts and tables of the fields live as long as the form.
  Form(std::vector<Field> fields, const FieldValues& values, QWidget* parent = nullptr);

  std::span<const Field> fields() const { return fields_; }
  /// What is typed now, unread texts included.
  FieldValues values() const;
  void set_value(std::string_view name, const FieldValue& value);
  /// All of them as they were at first.
  void reset();

  bool has(std::string_view name) const;
  /// What takes the keyboard for a field; null without it.
  QWidget* input(std::string_view name) const;
  /// Offers these choices in a list; the chosen one stays where it is among them.
  void set_choices(std::string_view name, std::span<const FieldChoice> choices);

  /// How a path is looked for, in place of the dialog of files: gets the one that is typed, and gives an
  /// empty text where it is to stay.
  void set_browser(std::string_view name, std::function<QString(const QString& now)> browse);

  /// Puts a row behind that of a field (at the end of the first page for a field that isn't there).
  void add_row_behind(std::string_view name, const QString& label, QWidget* widget);
  void add_page(const QString& title, QWidget* page);
  /// A line of text below the fields of the first page.
  void add_note(const QString& text);

  /// Brings a page up that was added.
  void show_page(QWidget* page);
  /// Fits a place that may be narrower than the fields would like: labels go above them.
  void set_narrow();

  /// Brings the field's page up, focuses it and selects what is wrong there.
  void show_fault(const FieldFault& fault);

 signals:
  void edited(const QString& name);

 private:
  struct Placed {
    FormControl control;
    QLabel* label = nullptr;
    QFormLayout* page = nullptr;
  };
  QFormLayout* page_of(const Field& field);
  void add_field(const Field& field);
  void show_tabs();
  void update_enabled();
  const Placed* find(std::string_view name) const;

  std::vector<Field> fields_;
  FieldValues first_;
  std::vector<Placed> placed_;
  std::vector<std::pair<QString, QWidget*>> pages_;
  std::map<QFormLayout*, QString> usedLetters_;
  QTabWidget* tabs_ = nullptr;
  bool setting_ = false;
};

}  // namespace vellum
