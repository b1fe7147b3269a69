#include "shell/dialogs/properties_dialog.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QPainter>
#include <QPointer>
#include <QThreadPool>

#include "base/file.h"
#include "base/text.h"
#include "configuration/shell_settings.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr int kLampSize = 12;
constexpr QRgb kLamps[] = {0xFF2E9E4F, 0xFFE0A800, 0xFFD23B3B};  // in the order of Light
constexpr int kSortedColumns[] = {0, 1, 3, 6, 7};                // in the order of FrameColumn
constexpr int kColorsColumn = 6;

struct LimitRow {
  const char* name;
  std::int64_t most;
  int& yellow;
  int& red;
};

std::array<LimitRow, 3> limit_rows() {
  using namespace settings;
  return {{{"dimension", 65535, PropertiesDimensionYellow, PropertiesDimensionRed},
           {"file", 1'048'576, PropertiesFileYellow, PropertiesFileRed},
           {"memory", 1'048'576, PropertiesMemYellow, PropertiesMemRed}}};
}

constexpr Field limit_field(const char* name, const char* label, std::int64_t most) {
  return {.name = name, .label = label, .least = 1, .most = most};
}

std::vector<Field> limit_fields() {
  return {limit_field("dimensionYellow", "Canvas side in pixels, yellow above", 65535),
          limit_field("dimensionRed", "Canvas side in pixels, red above", 65535),
          limit_field("fileYellow", "File in KB, yellow above", 1'048'576),
          limit_field("fileRed", "File in KB, red above", 1'048'576),
          limit_field("memoryYellow", "Memory in KB, yellow above", 1'048'576),
          limit_field("memoryRed", "Memory in KB, red above", 1'048'576),
          {.name = "measure", .label = "Find the file size by writing to memory", .type = FieldType::Flag}};
}

FieldValues limit_values() {
  FieldValues values;
  for (const LimitRow& row : limit_rows()) {
    values.set(std::string(row.name) + "Yellow", std::clamp<std::int64_t>(row.yellow, 1, row.most));
    values.set(std::string(row.name) + "Red", std::clamp<std::int64_t>(row.red, 1, row.most));
  }
  values.set("measure", std::int64_t{settings::PropertiesFileSizeEnable != 0});
  return values;
}

QPixmap lamp(Light light, double ratio) {
  QPixmap pixmap(QSize(kLampSize, kLampSize) * ratio);
  pixmap.setDevicePixelRatio(ratio);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor colour(kLamps[static_cast<std::size_t>(light)]);
  painter.setPen(colour.darker(140));
  painter.setBrush(colour);
  painter.drawEllipse(QRectF(1, 1, kLampSize - 2, kLampSize - 2));
  return pixmap;
}

QLabel* plain_label(const QString& text) {
  auto* label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  return label;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------
// the table of frames

void FramesModel::show(std::vector<FrameProperties> frames) {
  beginResetModel();
  frames_ = std::move(frames);
  endResetModel();
}

void FramesModel::order_by(FrameColumn column) {
  beginResetModel();
  sort_frames(frames_, column);
  endResetModel();
}

int FramesModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(frames_.size());
}

int FramesModel::columnCount(const QModelIndex&) const { return static_cast<int>(kFrameHeadings.size()); }

QVariant FramesModel::data(const QModelIndex& index, int role) const {
  const auto column = static_cast<std::size_t>(index.column());
  if (role == Qt::DisplayRole)
    return to_qt(frame_cells(frames_[static_cast<std::size_t>(index.row())])[column]);
  const bool words = column == 4 || column == 5;
  if (role == Qt::TextAlignmentRole)
    return QVariant(Qt::AlignVCenter | (words ? Qt::AlignLeft : Qt::AlignRight));
  return {};
}

QVariant FramesModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return shown(kFrameHeadings[static_cast<std::size_t>(section)]);
}

// ---------------------------------------------------------------------------------------------------------
// the dialog

PropertiesDialog::PropertiesDialog(DocumentWindow& window, Services& services, QWidget* parent)
    : QDialog(parent), window_(window), services_(services), properties_(animation_properties(window)) {
  setWindowTitle(tr("Properties"));
  setObjectName(QStringLiteral("PropertiesDialog"));
  tabs_ = new QTabWidget(this);
  limits_ = new Form(limit_fields(), limit_values());
  tabs_->addTab(make_values(), tr("&Values"));
  tabs_->addTab(make_frames(), tr("&Frames"));
  tabs_->addTab(make_limits(), tr("&Limits"));
  auto* layout = dialog_layout(*this);
  layout->addWidget(tabs_, 1);
  auto* buttons =
      add_buttons(*this, QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Reset,
                  QStringLiteral("PROPERTIES"));
  auto* copy_button = buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole);
  auto* save_button = buttons->addButton(tr("&Save..."), QDialogButtonBox::ActionRole);
  connect(copy_button, &QPushButton::clicked, this, &PropertiesDialog::copy);
  connect(save_button, &QPushButton::clicked, this, &PropertiesDialog::save);
  connect(buttons->button(QDialogButtonBox::Reset), &QPushButton::clicked, this, [this] {
    const PropertyLimits limits;
    const std::pair<const char*, int> shipped[] = {{"dimensionYellow", limits.dimensionYellow},
                                                   {"dimensionRed", limits.dimensionRed},
                                                   {"fileYellow", limits.fileYellow},
                                                   {"fileRed", limits.fileRed},
                                                   {"memoryYellow", limits.memoryYellow},
                                                   {"memoryRed", limits.memoryRed},
                                                   {"measure", 1}};
    for (const auto& [name, value] : shipped) limits_->set_value(name, std::int64_t{value});
  });
  layout->addWidget(buttons);
  resize(640, 460);
  if (settings::PropertiesFileSizeEnable != 0)
    start_measuring();
  else
    take_size(size_on_disk(window.document));
}

// What still writes has copies of its own, and ends by itself.
PropertiesDialog::~PropertiesDialog() {
  if (stopped_) *stopped_ = true;
}

QWidget* PropertiesDialog::make_values() {
  auto* page = new QWidget;
  auto* layout = new QVBoxLayout(page);
  values_ = new QGridLayout;
  values_->setHorizontalSpacing(style::kWideGap);
  values_->setVerticalSpacing(style::kGap);
  values_->setColumnStretch(2, 1);
  layout->addLayout(values_);
  auto* line = new QHBoxLayout;
  note_ = plain_label({});
  note_->setObjectName(QStringLiteral("sizeNote"));
  stop_ = new QPushButton(tr("S&top"));
  stop_->setObjectName(QStringLiteral("stop"));
  stop_->setAutoDefault(false);
  connect(stop_, &QPushButton::clicked, this, &PropertiesDialog::stop_measuring);
  line->addWidget(note_, 1);
  line->addWidget(stop_);
  layout->addLayout(line);
  layout->addStretch(1);
  return page;
}

void PropertiesDialog::fill_values() {
  while (QLayoutItem* item = values_->takeAt(0)) {
    delete item->widget();
    delete item;
  }
  int row = 0;
  for (const PropertyLine& line : property_lines(properties_, typed_limits())) {
    values_->addWidget(plain_label(shown(line.name) + u':'), row, 0, Qt::AlignTop);
    auto* value = plain_label(to_qt(line.value));
    value->setWordWrap(true);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    value->setAccessibleName(shown(line.name));
    values_->addWidget(value, row, 2);
    if (line.light) {
      const QString name = shown(kLightNames[static_cast<std::size_t>(*line.light)]);
      auto* light = new QLabel;
      light->setPixmap(lamp(*line.light, devicePixelRatioF()));
      light->setAccessibleName(name);
      light->setToolTip(name);
      light->setObjectName(QStringLiteral("light_") + to_qt(line.name));
      values_->addWidget(light, row, 1);
      value->setText(value->text() + QStringLiteral("  (%1)").arg(name));
    }
    ++row;
  }
}

QWidget* PropertiesDialog::make_frames() {
  model_ = new FramesModel(this);
  model_->show(properties_.frames);
  table_ = new QTableView;
  table_->setObjectName(QStringLiteral("frames"));
  table_->setAccessibleName(tr("Frames"));
  table_->setModel(model_);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setTabKeyNavigation(false);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(table_->fontMetrics().height() + style::kGap);
  table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  // Its numbers are the longest.
  table_->horizontalHeader()->setSectionResizeMode(kColorsColumn, QHeaderView::ResizeToContents);
  table_->horizontalHeader()->setSortIndicatorShown(true);
  connect(table_->horizontalHeader(), &QHeaderView::sectionClicked, this, &PropertiesDialog::sort_by);
  sort_by(kSortedColumns[static_cast<std::size_t>(frame_column(settings::PropertiesSort))]);
  connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex& now) { select_row(now.row()); });
  return table_;
}

/// A click on a heading that nothing is sorted by changes nothing.
void PropertiesDialog::sort_by(int column) {
  const auto at = std::ranges::find(kSortedColumns, column);
  const auto shown = at == std::end(kSortedColumns)
                         ? frame_column(settings::PropertiesSort)
                         : static_cast<FrameColumn>(at - std::begin(kSortedColumns));
  if (at != std::end(kSortedColumns)) {
    settings::PropertiesSort = static_cast<int>(shown);
    model_->order_by(shown);
  }
  table_->horizontalHeader()->setSortIndicator(kSortedColumns[static_cast<std::size_t>(shown)],
                                               Qt::AscendingOrder);
}

void PropertiesDialog::select_row(int row) {
  if (row < 0) return;
  const std::size_t entry = model_->frames()[static_cast<std::size_t>(row)].entry;
  if (entry >= window_.list.size()) return;
  window_.document.caret = static_cast<std::int32_t>(entry);
  window_.list.select_all(false);
  window_.list.select(entry, true);
}

QWidget* PropertiesDialog::make_limits() {
  connect(limits_, &Form::edited, this, &PropertiesDialog::fill_values);
  return limits_;
}

PropertyLimits PropertiesDialog::typed_limits() const {
  const FieldValues values = limits_->values();
  const auto number = [&values](const char* name) {
    return static_cast<int>(std::clamp<std::int64_t>(values.number(name), 1, 1'048'576));
  };
  return {number("dimensionYellow"), number("dimensionRed"), number("fileYellow"),
          number("fileRed"),         number("memoryYellow"), number("memoryRed")};
}

/// On a thread of its own, over copies that share the records, which nobody changes.
void PropertiesDialog::start_measuring() {
  measuring_ = true;
  note_->setText(tr("Finding the file size..."));
  fill_values();
  stopped_ = std::make_shared<std::atomic<bool>>(false);
  DocumentWindow copy;
  copy.document = window_.document;
  copy.list = window_.list;
  QThreadPool::globalInstance()->start([copy = std::move(copy), options = save_options(), stopped = stopped_,
                                        dialog = QPointer<PropertiesDialog>(this)] {
    Host host;
    host.stop_requested = [stopped] { return stopped->load(); };
    const auto size = size_when_written(copy, options, host);
    QMetaObject::invokeMethod(
        qApp,
        [dialog, size, stopped] {
          if (dialog && !stopped->load()) dialog->take_size(size);
        },
        Qt::QueuedConnection);
  });
}

void PropertiesDialog::stop_measuring() {
  *stopped_ = true;
  take_size(std::nullopt);
  note_->setText(tr("The file size was not found: stopped."));
}

void PropertiesDialog::take_size(std::optional<std::uint64_t> size) {
  measuring_ = false;
  properties_.fileSize = size;
  stop_->hide();
  note_->setText(size ? QString() : tr("The file size is not known."));
  fill_values();
}

QString PropertiesDialog::text() const {
  AnimationProperties shown = properties_;
  shown.frames = model_->frames();
  return to_qt(properties_text(shown, typed_limits()));
}

void PropertiesDialog::copy() { QApplication::clipboard()->setText(text()); }

void PropertiesDialog::save() {
  if (!services_.choose_file) return;
  const auto path = services_.choose_file(
      {tr("Save properties").toStdString(), tr("Text (*.txt);;JSON (*.json)").toStdString(),
       std::filesystem::path(properties_.name).stem().string() + "-properties.txt", true});
  if (!path) return;
  const bool json = equal_ignoring_case(path->extension().string(), ".json");
  const std::string written = json ? properties_json(properties_, typed_limits()) : text().toStdString();
  SafeFile file(*path);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(written.data());
  if (!file.write({bytes, written.size()}) || !file.commit())
    services_.host.show(StringId::FileNotWritten, StringId::ErrorWritingFile, file.reason());
}

void PropertiesDialog::accept() {
  const FieldValues values = limits_->values();
  auto fault = check_fields(limits_->fields(), values);
  for (const LimitRow& row : limit_rows()) {
    const std::string name = row.name;
    if (!fault && values.number(name + "Red") <= values.number(name + "Yellow"))
      fault = FieldFault{name + "Red", StringId::RedAboveYellow,
                         std::string(string_text(StringId::RedAboveYellow))};
  }
  if (fault) {
    if (services_.host.message) services_.host.message({fault->id, {}, fault->text, {}, nullptr});
    tabs_->setCurrentWidget(limits_);
    limits_->show_fault(*fault);
    return;
  }
  for (const LimitRow& row : limit_rows()) {
    row.yellow = static_cast<int>(values.number(std::string(row.name) + "Yellow"));
    row.red = static_cast<int>(values.number(std::string(row.name) + "Red"));
  }
  settings::PropertiesFileSizeEnable = values.number("measure") != 0;
  QDialog::accept();
}

}  // namespace vellum
