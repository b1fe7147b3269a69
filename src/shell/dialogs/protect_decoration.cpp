// The protection matrix has a folder to browse for, and groups of values that a file keeps.
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QPushButton>

#include "base/file.h"
#include "base/text.h"
#include "configuration/config_file.h"
#include "configuration/shell_settings.h"
#include "operations/settings.h"
#include "operations/tile_groups.h"
#include "shell/dialogs/operation_decorations.h"
#include "shell/dialogs/operation_dialog.h"
#include "shell/forms/default_folders.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 20;

std::filesystem::path groups_file() {
  const std::string& named = settings::MatrixLibrary;
  return named.empty() ? config_path("vlmkit.mtx") : std::filesystem::path(named);
}

/// The groups, and the list and buttons over them. Lives as long as its row.
class Groups : public QWidget {
 public:
  explicit Groups(OperationDialog& dialog) : QWidget(&dialog), dialog_(dialog), list_(new QComboBox(this)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    list_->setObjectName(QStringLiteral("groups"));
    list_->setAccessibleName(QObject::tr("Groups"));
    list_->setMinimumContentsLength(12);
    row->addWidget(list_, 1);
    const auto add = [&](const QString& text, auto action, bool group) {
      auto* button = new QPushButton(text, this);
      button->setAutoDefault(false);
      QObject::connect(button, &QPushButton::clicked, this, action);
      row->addWidget(button);
      if (group) needGroup_.push_back(button);
    };
    add(
        QObject::tr("Ne&w"), [this] { add_group(); }, false);
    add(
        QObject::tr("Re&name"), [this] { rename(); }, true);
    add(
        QObject::tr("&Delete"), [this] { remove(); }, true);
    add(
        QObject::tr("&Save"), [this] { save(); }, true);
    load();
    fill(settings::MatrixTileIndex);
    QObject::connect(list_, &QComboBox::activated, this, [this](int index) { take(index); });
  }

 private:
  void load() {
    std::string reason;
    const auto bytes = read_file(groups_file(), reason, kMostBytes);
    if (!bytes) return;
    if (auto groups = parse_tile_groups({reinterpret_cast<const char*>(bytes->data()), bytes->size()})) {
      groups_ = std::move(*groups);
      return;
    }
    const auto backup = backup_path(groups_file());
    std::error_code error;
    replace_by_copy(groups_file(), backup, error);
    if (dialog_.host().message)
      dialog_.host().message(
          {StringId::GroupsDamaged, {}, filled(StringId::GroupsDamaged, {backup.string()}), {}, nullptr});
  }

  void fill(int index) {
    list_->clear();
    for (const TileGroup& group : groups_) list_->addItem(to_qt(group.name));
    list_->setCurrentIndex(std::min(index, list_->count() - 1));
    for (QPushButton* button : needGroup_) button->setEnabled(!groups_.empty());
    list_->setEnabled(!groups_.empty());
  }

  void take(int index) {
    if (index < 0) return;
    settings::MatrixTileIndex = index;
    const FieldValues& values = groups_[static_cast<std::size_t>(index)].values;
    for (const Field& field : dialog_.form().fields())
      if (const FieldValue* value = values.find(field.name)) dialog_.form().set_value(field.name, *value);
    dialog_.follow();
  }

  void store(int index) {
    fill(index);
    settings::MatrixTileIndex = std::max(list_->currentIndex(), 0);
    const std::string text = tile_groups_text(groups_);
    SafeFile file(groups_file());
    if (!file.write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}) || !file.commit())
      dialog_.host().show(StringId::ErrorWritingFile, {}, file.reason());
  }

  std::optional<std::string> ask_name(const QString& title, const QString& now) {
    bool fine = false;
    const std::string name =
        QInputDialog::getText(this, title, QObject::tr("Name"), QLineEdit::Normal, now, &fine)
            .trimmed()
            .toStdString();
    if (!fine) return std::nullopt;
    if (is_group_name(groups_, name)) return name;
    dialog_.host().show(StringId::NoGroupName);
    return std::nullopt;
  }

  void add_group() {
    const auto name = ask_name(QObject::tr("New group"), {});
    if (!name) return;
    groups_.push_back({*name, dialog_.values()});
    store(static_cast<int>(groups_.size()) - 1);
  }
  void rename() {
    const int index = list_->currentIndex();
    const auto name = ask_name(QObject::tr("Rename group"), list_->currentText());
    if (!name) return;
    groups_[static_cast<std::size_t>(index)].name = *name;
    store(index);
  }
  void remove() {
    groups_.erase(groups_.begin() + list_->currentIndex());
    store(0);
  }
  void save() {
    groups_[static_cast<std::size_t>(list_->currentIndex())].values = dialog_.values();
    store(list_->currentIndex());
  }

  OperationDialog& dialog_;
  QComboBox* list_;
  std::vector<QPushButton*> needGroup_;
  std::vector<TileGroup> groups_;
};

}  // namespace

void decorate_protect(OperationDialog& dialog) {
  Form& form = dialog.form();
  form.set_value("folder", usable_folder(settings::OpenExportPath).toStdString());
  auto* browse = new QPushButton(QObject::tr("&Browse..."), &dialog);
  browse->setAutoDefault(false);
  QObject::connect(browse, &QPushButton::clicked, &dialog, [&dialog, &form] {
    const QString folder = QFileDialog::getExistingDirectory(&dialog, QObject::tr("Folder of the tiles"),
                                                             to_qt(form.values().text("folder")));
    if (!folder.isEmpty()) form.set_value("folder", folder.toStdString());
  });
  form.add_row_behind("folder", {}, browse);
  form.add_row_behind({}, QObject::tr("Group"), new Groups(dialog));
  QObject::connect(&dialog, &QDialog::accepted, &dialog,
                   [&form] { settings::OpenExportPath = form.values().text("folder"); });
}

}  // namespace vellum
