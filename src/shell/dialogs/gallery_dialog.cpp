#include "shell/dialogs/gallery_dialog.h"

#include <QBoxLayout>
#include <QDesktopServices>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QUrl>

#include "base/file.h"
#include "base/text.h"
#include "configuration/config_file.h"
#include "exchange/settings.h"
#include "shell/dialogs/document_browser.h"
#include "shell/forms/default_folders.h"
#include "shell/look/style.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

constexpr const char* kItemsFile = "WebGalleryItems.txt";
constexpr std::uint64_t kMostBytes = std::uint64_t{16} << 20;
constexpr int kThumbnail = 64;
constexpr QSize kList(200, 200), kFirst(940, 640), kReport(560, 320);

const DocumentWindow& no_document() {
  static const DocumentWindow nothing;
  return nothing;
}

QStringList load_items() {
  std::string reason;
  const auto bytes = read_file(config_path(kItemsFile), reason, kMostBytes);
  QStringList files;
  if (!bytes) return files;
  for (const QByteArray& line :
       QByteArray(reinterpret_cast<const char*>(bytes->data()), static_cast<qsizetype>(bytes->size()))
           .split('\n'))
    if (const QString file = QString::fromUtf8(line); QFileInfo::exists(file)) files << file;
  return files;
}

/// Silent where it can't be written.
void store_items(const QStringList& files) {
  const QByteArray text = files.join(u'\n').toUtf8();
  SafeFile file(config_path(kItemsFile));
  if (file.write(
          {reinterpret_cast<const std::uint8_t*>(text.constData()), static_cast<std::size_t>(text.size())}))
    file.commit();
}

std::filesystem::path preview_folder() {
  const std::string& named = settings::WebGalleryPageTempPath;
  return named.empty() ? std::filesystem::temp_directory_path() / "vellumcraft-gallery"
                       : std::filesystem::path(named);
}

/// The list beside it stays where it is.
QScrollArea* scrolled(QWidget* form) {
  auto* area = new QScrollArea;
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidget(form);
  area->setMinimumWidth(form->sizeHint().width() + area->verticalScrollBar()->sizeHint().width());
  return area;
}

}  // namespace

GalleryDialog::GalleryDialog(Services& services, QWidget* parent)
    : ParameterDialog(kGallery, no_document(), {}, services, parent),
      browse([](const std::filesystem::path& page) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(path_text(page)));
      }),
      services_(services),
      thumbnails_(kThumbnail),
      items_(new ThumbnailList([this](const QString& path) { return thumbnails_.look(path); }, this)) {
  auto* outer = static_cast<QBoxLayout*>(layout());
  outer->removeWidget(&form());
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(make_list(), 1);
  row->addWidget(scrolled(&form()), 1);
  outer->insertLayout(0, row, 1);
  if (auto* tabs = form().findChild<QTabWidget*>()) {
    tabs->setCurrentIndex(settings::WebGalleryPageIndex);
    connect(tabs, &QTabWidget::currentChanged, this, [](int tab) { settings::WebGalleryPageIndex = tab; });
  }
  buttons().button(QDialogButtonBox::Ok)->setText(tr("&Build"));
  auto* look = buttons().addButton(tr("Pre&view"), QDialogButtonBox::ActionRole);
  look->setAutoDefault(false);
  needSome_ = {buttons().button(QDialogButtonBox::Ok), look};
  connect(look, &QPushButton::clicked, this, &GalleryDialog::preview);
  connect(&thumbnails_, &Thumbnails::made, items_, [this] { items_->refresh_looks(); });
  begin();
  resize(kFirst);
  items_->set_paths(load_items());
  settle_buttons();
}

GalleryDialog::~GalleryDialog() { store_items(items_->paths()); }

QWidget* GalleryDialog::make_list() {
  auto* side = new QWidget(this);
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  items_->setMinimumSize(kList);
  items_->set_takes_files(true);
  items_->setAccessibleName(tr("Items"));
  items_->set_hint(tr("Add pictures and animations, or drop them here"));
  layout->addWidget(items_, 1);
  auto* grid = new QGridLayout;
  const auto add = [&](const QString& text, auto action) {
    auto* button = new QPushButton(text, side);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    grid->addWidget(button, grid->count() / 2, grid->count() % 2);
  };
  add(tr("&Add..."), [this] {
    const QStringList files = browse_documents({.title = tr("Add to the gallery"),
                                                .button = tr("&Add"),
                                                .several = true,
                                                .openDocuments = false,
                                                .now = usable_folder(settings::WebGalleryPath) + u'/'},
                                               this);
    if (files.isEmpty()) return;
    settings::WebGalleryPath = QFileInfo(files.front()).path().toStdString();
    add_files(files);
  });
  add(tr("Re&move"), [this] { items_->remove_selected(); });
  add(tr("&Up"), [this] { move_by(-1); });
  add(tr("Do&wn"), [this] { move_by(1); });
  layout->addLayout(grid);
  connect(items_, &ThumbnailList::edited, this, &GalleryDialog::settle_buttons);
  connect(items_, &ThumbnailList::files_dropped, this, [this](int at, const QStringList& files) {
    items_->insert_paths(at, files);
    settle_buttons();
  });
  return side;
}

void GalleryDialog::add_files(const QStringList& files) {
  items_->insert_paths(static_cast<int>(items_->paths().size()), files);
  settle_buttons();
}

void GalleryDialog::move_by(int rows) {
  const auto selected = items_->selected_rows();
  if (selected.empty()) return;
  items_->move_selected(rows < 0 ? std::max(0, selected.front() - 1)
                                 : std::min(static_cast<int>(items_->paths().size()), selected.back() + 2));
}

void GalleryDialog::settle_buttons() {
  for (QPushButton* button : needSome_) button->setEnabled(!items_->paths().isEmpty());
}

bool GalleryDialog::build(const FieldValues& given) {
  std::vector<std::filesystem::path> files;
  for (const QString& file : items_->paths()) files.push_back(to_path(file));
  QDialog window(this);
  window.setWindowTitle(tr("Building the gallery"));
  auto* list = new QListWidget(&window);
  list->setMinimumSize(kReport);
  QVBoxLayout* layout = dialog_layout(window);
  layout->addWidget(list, 1);
  layout->addWidget(add_buttons(window, QDialogButtonBox::Close, QStringLiteral("WEBGALLERY")));
  const auto report = build_gallery(files, given, host(), [&](const BatchRow& row) {
    list->addItem(path_text(row.source) + u'\t' + shown(batch_word(row.result)) +
                  (row.reason.empty() ? QString() : QStringLiteral("  ") + to_qt(row.reason)));
  });
  if (!report) return false;
  const std::size_t errors = batch_errors(report->rows);
  list->addItem(to_qt(
      errors > 0 ? batch_error_line(errors)
                 : filled(StringId::GalleryBuilt, {count_text(StringId::OneItem, report->rows.size()),
                                                   count_text(StringId::OnePage, report->pages.size())})));
  if (errors > 0 || settings::WebGalleryCloseProgress == 0) window.exec();
  if (!report->pages.empty() && given.text("destination") == preview_folder().string())
    browse(report->pages.front());
  return errors == 0;
}

void GalleryDialog::preview() {
  FieldValues given = values();
  given.set("destination", preview_folder().string());
  if (const auto found = check_values(kGallery, given, no_document())) return form().show_fault(*found);
  build(given);
}

void GalleryDialog::accept() {
  if (items_->paths().isEmpty()) return host().show(StringId::NoGalleryItems);
  if (const auto found = fault()) {
    if (host().message) host().message({found->id, {}, found->text, {}, nullptr});
    return form().show_fault(*found);
  }
  keep_in_settings(form().fields(), values());
  if (build(values())) ParameterDialog::accept();
}

}  // namespace vellum
