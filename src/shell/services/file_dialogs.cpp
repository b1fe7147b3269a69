#include "shell/services/file_dialogs.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QRegularExpression>
#include <QStandardPaths>

#include "configuration/config_file.h"
#include "configuration/shell_settings.h"
#include "core/model/kind_table.h"
#include "exchange/importer.h"
#include "image/graphic_file.h"
#include "shell/forms/default_folders.h"
#include "shell/forms/parameter_state.h"
#include "shell/look/text.h"
#include "shell/services/file_preview.h"
#include "shell/services/saving.h"

namespace vellum {
namespace {

QString patterns(std::string_view name) {
  const QString extension = to_qt(name);
  return QStringLiteral("*.%1 *.%2").arg(extension, extension.toUpper());
}

QStringList patterns_of(std::span<const std::string_view> extensions) {
  QStringList all;
  for (const std::string_view extension : extensions) all << patterns(extension.substr(1));
  return all;
}

/// The files that people tell apart: kinds of one name share a filter.
struct Format {
  std::string_view name;
  QStringList patterns;
};

Format format_of(DocumentKind kind) {
  Format format{kind_row(kind).name, {}};
  for (const KindRow& row : kind_table()) {
    if (row.name != format.name) continue;
    for (const std::string_view extension : row.extensions)
      if (const QString pattern = patterns(extension.substr(1)); !format.patterns.contains(pattern))
        format.patterns << pattern;
  }
  return format;
}

QString filter_of(const Format& format) {
  return QStringLiteral("%1 (%2)").arg(shown(format.name), format.patterns.join(u' '));
}

/// A folder that is there: the dialog takes another one's name for a file.
QString pictures_folder() {
  const QString last = to_qt(settings::OpenImportPath);
  if (!last.isEmpty() && QFileInfo(last).isDir()) return last;
  const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
  return QFileInfo(pictures).isDir() ? pictures : QDir::homePath();
}
QString start_folder() { return usable_folder(settings::OpenPath); }

std::filesystem::path remember_folder(const QString& name) {
  std::filesystem::path path = to_path(name);
  settings::OpenPath = path.parent_path().string();
  return path;
}

int number_of_filter(const QStringList& filters, const QString& chosen) {
  return static_cast<int>(std::max<qsizetype>(filters.indexOf(chosen), 0));
}

/// Shows the dialog with the filter of this number; the chosen files, none when the user cancelled.
QStringList ask_with_preview(QFileDialog& dialog, const QStringList& filters, int& filter) {
  dialog.setNameFilters(filters);
  dialog.selectNameFilter(filters.value(filter, filters.front()));
  add_file_preview(dialog);
  if (dialog.exec() != QDialog::Accepted) return {};
  filter = number_of_filter(filters, dialog.selectedNameFilter());
  return dialog.selectedFiles();
}

/// "*.mp4 *.MP4": the first extension of a filter.
QString suffix_of(const QString& filter) {
  static const QRegularExpression pattern(QStringLiteral("\\*\\.([^ )]+)"));
  return pattern.match(filter).captured(1);
}

/// A dialog of files with a form below the list, whose values must be in order.
class FieldsFileDialog : public QFileDialog {
 public:
  FieldsFileDialog(QWidget* parent, const FileChoice& choice, const QString& folder)
      : QFileDialog(parent, shown(choice.title), folder), choice_(choice) {
    setOption(QFileDialog::DontUseNativeDialog);
    setFileMode(choice.saving ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    setAcceptMode(choice.saving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    setNameFilters(to_qt(choice.filters).split(QStringLiteral(";;")));
    setDefaultSuffix(path_text(choice.name.extension()));
    std::vector<Field> fields = fields_for(*choice.parameters, *choice.window);
    std::erase_if(fields, [&](const Field& field) {
      return choice.filterField && field.name == std::string_view(choice.filterField);
    });
    form_ = new Form(std::move(fields), *choice.values, this);
    name_controls(*form_);
    note_ = new QLabel(this);
    if (auto* grid = qobject_cast<QGridLayout*>(layout())) {
      grid->addWidget(form_, grid->rowCount(), 0, 1, grid->columnCount());
      grid->addWidget(note_, grid->rowCount(), 0, 1, grid->columnCount());
    }
    if (choice.saving) selectFile(path_text(choice.name.filename()));
    settle_filter();
    connect(this, &QFileDialog::filterSelected, this, [this](const QString& filter) { take_filter(filter); });
    connect(form_, &Form::edited, this, [this] { show_note(); });
    const auto rows = state_rows(*choice.parameters);
    if (!rows.empty()) restore_dialog_state(*this, rows, config_path(choice.parameters->stateFile));
    show_note();
  }

  void accept() override {
    const FieldValues values = typed();
    const auto fault = check_values(*choice_.parameters, values, *choice_.window);
    if (fault) {
      QMessageBox::warning(this, windowTitle(), to_qt(fault->text));
      return form_->show_fault(*fault);
    }
    QFileDialog::accept();
    if (result() != QDialog::Accepted) return;
    *choice_.values = values;
    const auto rows = state_rows(*choice_.parameters);
    if (!rows.empty()) store_dialog_state(*this, rows, config_path(choice_.parameters->stateFile));
  }

 private:
  /// The values of the form, and the number of the filter.
  FieldValues typed() const {
    FieldValues values = form_->values();
    if (choice_.filterField)
      values.set(choice_.filterField, std::int64_t{number_of_filter(nameFilters(), selectedNameFilter())});
    return values;
  }
  void settle_filter() {
    const QStringList filters = nameFilters();
    qsizetype number = filter_of_name(filters.join(QStringLiteral(";;")), choice_.name);
    if (choice_.filterField) number = choice_.values->number(choice_.filterField);
    if (filters.size() < 2 || number >= filters.size()) return;
    selectNameFilter(filters[number]);
    take_filter(filters[number]);
  }
  void take_filter(const QString& filter) {
    const QString suffix = suffix_of(filter);
    if (choice_.saving && nameFilters().size() > 1 && !suffix.isEmpty()) {
      setDefaultSuffix(suffix);
      // A name that is typed already gets the extension of the format.
      if (auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit")); name && !name->text().isEmpty())
        name->setText(QFileInfo(name->text()).completeBaseName() + u'.' + suffix);
    }
    show_note();
  }
  void show_note() {
    const auto note = choice_.parameters->note;
    const FieldValues values = typed();
    const bool fine = note && !check_values(*choice_.parameters, values, *choice_.window);
    note_->setText(fine ? to_qt(note(values, *choice_.window)) : QString());
    note_->setVisible(!note_->text().isEmpty());
  }

  const FileChoice& choice_;
  Form* form_;
  QLabel* note_;
};

/// Files that are saved have the first extension of their kind.
QString save_filter(DocumentKind kind) {
  const KindRow& row = kind_row(kind);
  return filter_of({row.name, {patterns(row.extensions.front().substr(1))}});
}

}  // namespace

QString open_filters() {
  QStringList all, single;
  for (const DocumentKind kind : {DocumentKind::PING, DocumentKind::MING, DocumentKind::WEBP}) {
    const Format format = format_of(kind);
    all << format.patterns;
    single << filter_of(format);
  }
  for (const Importer* importer : importer_table()) {
    if (importer->fromFile) continue;
    const QStringList own = patterns_of(importer->extensions);
    all << own;
    single << filter_of({importer->filter, own});
  }
  single.prepend(QObject::tr("All formats (%1)").arg(all.join(u' ')));
  return single.join(QStringLiteral(";;"));
}

QString file_filter(std::string_view name, std::span<const std::string_view> extensions) {
  return filter_of({name, patterns_of(extensions)});
}

std::optional<std::filesystem::path> ask_for_open(QWidget* parent) {
  const QStringList filters = open_filters().split(QStringLiteral(";;"));
  QFileDialog dialog(parent, QObject::tr("Open"), start_folder());
  dialog.setFileMode(QFileDialog::ExistingFile);
  const QStringList names = ask_with_preview(dialog, filters, settings::OpenFilterIndex);
  if (names.isEmpty()) return std::nullopt;
  return remember_folder(names.front());
}

std::optional<std::filesystem::path> ask_for_save(QWidget* parent, const SaveChoice& choice) {
  const QString filter = save_filter(choice.kind);
  QString offered = path_text(choice.name);
  if (!choice.name.is_absolute()) offered = start_folder() + u'/' + offered;
  for (;;) {
    const QString name = QFileDialog::getSaveFileName(parent, QObject::tr("Save as"), offered, filter);
    if (name.isEmpty()) return std::nullopt;
    const auto path = to_path(name);
    const auto forced = with_kind_extension(path, choice.kind);
    std::error_code error;
    if (forced == path || !std::filesystem::exists(forced, error)) return remember_folder(path_text(forced));
    // The dialog has asked about another name than the one that would be written over.
    offered = path_text(forced);
  }
}

std::optional<std::filesystem::path> ask_for_file(QWidget* parent, const FileChoice& choice) {
  // A dialog that asks is in front of the window.
  if (QWidget* dialog = QApplication::activeModalWidget()) parent = dialog;
  std::string& folder = choice.saving ? settings::OpenExportPath : settings::OpenImportPath;
  const std::filesystem::path start = to_path(usable_folder(folder)) / choice.name;
  if (choice.parameters && !choice.parameters->fields.empty()) {
    FieldsFileDialog dialog(parent, choice, path_text(start.parent_path()));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    const std::filesystem::path chosen = to_path(dialog.selectedFiles().front());
    folder = chosen.parent_path().string();
    return chosen;
  }
  const QString title = shown(choice.title), offered = path_text(start), filters = to_qt(choice.filters);
  const QStringList single = filters.split(QStringLiteral(";;"));
  const int wanted = choice.filter   ? *choice.filter
                     : choice.saving ? filter_of_name(filters, choice.name)
                                     : 0;
  QString filter = single.value(wanted, single.front());
  const QString name = choice.saving ? QFileDialog::getSaveFileName(parent, title, offered, filters, &filter)
                                     : QFileDialog::getOpenFileName(parent, title, offered, filters, &filter);
  if (name.isEmpty()) return std::nullopt;
  if (choice.filter) *choice.filter = number_of_filter(single, filter);
  folder = to_path(name).parent_path().string();
  return to_path(name);
}

QString picture_filters(bool reading) {
  QStringList all, single;
  for (const GraphicFileModule& module : graphic_file_modules()) {
    all << patterns(module.extension);
    single << QStringLiteral("%1 (%2)").arg(shown(module.name), patterns(module.extension));
  }
  if (!reading) return single.join(QStringLiteral(";;"));
  single.prepend(QObject::tr("All pictures (%1)").arg(all.join(u' ')));
  return single.join(QStringLiteral(";;"));
}

int filter_of_name(const QString& filters, const std::filesystem::path& name) {
  const QString pattern = u'*' + path_text(name.extension());
  const QStringList single = filters.split(QStringLiteral(";;"));
  for (qsizetype i = 0; i < single.size() && pattern.size() > 1; ++i) {
    const QStringList words = single[i].split(QRegularExpression(QStringLiteral("[ ()]+")));
    if (words.contains(pattern)) return static_cast<int>(i);
  }
  return 0;
}

std::vector<std::filesystem::path> ask_for_pictures(QWidget* parent, bool several) {
  const QStringList filters = picture_filters(true).split(QStringLiteral(";;"));
  QFileDialog dialog(parent, several ? QObject::tr("Insert images") : QObject::tr("Insert image"),
                     pictures_folder());
  dialog.setFileMode(several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
  QStringList names = ask_with_preview(dialog, filters, settings::ImageFileOpenIndex);
  names.sort();
  std::vector<std::filesystem::path> files;
  for (const QString& name : names) files.push_back(to_path(name));
  if (!files.empty()) settings::OpenImportPath = files.front().parent_path().string();
  return files;
}

}  // namespace vellum
