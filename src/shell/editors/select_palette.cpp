#include "shell/editors/select_palette.h"

#include <QCheckBox>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "base/text.h"
#include "core/settings.h"
#include "image/builtin_palette.h"
#include "image/load_palette.h"
#include "image/palette_from_pictures.h"
#include "image/picture_operations.h"
#include "image/to_colors.h"
#include "operations/settings.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/file_dialogs.h"
#include "shell/widgets/color_dialog.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

enum Source { kQuantize = -1, kPaletteFile = -2, kImageFile = -3 };

/// The choices in their order; `id`: a built-in palette, or a Source.
constexpr struct {
  StringId text;
  int id;
} kChoices[] = {{StringId::BuiltInPalette2, 0},
                {StringId::BuiltInPalette16, 1},
                {StringId::BuiltInPalette32, 2},
                {StringId::BuiltInPalette64, 3},
                {StringId::BuiltInPalette128, 4},
                {StringId::BuiltInPalette256, 6},
                {StringId::BuiltInPalette216, 5},
                {StringId::BuiltInPalette256Grey, 7},
                {StringId::QuantizeFromImage, kQuantize},
                {StringId::LoadFromCmpFile, kPaletteFile},
                {StringId::SelectFromImageFile, kImageFile}};

constexpr QSize kPreview(288, 200);
constexpr PaletteGridForm kGrid{.columns = 16, .rows = 16, .cell = 18, .frames = false};

int row_of(int id) {
  const auto row = std::ranges::find(kChoices, id, [](const auto& choice) { return choice.id; });
  return row == std::end(kChoices) ? row_of(5) : static_cast<int>(row - std::begin(kChoices));
}

PaletteColors built_in(int id) {
  PaletteColors colors;
  colors.count = std::min(BuiltInPalette(&colors.palette, nullptr, id), 256u);
  return colors;
}

/// How a palette is computed, as boxes.
struct MethodRow {
  const char* label;
  int& setting;
};
constexpr MethodRow kMethods[] = {{"&Dark colors first", settings::WidePaletteSorted},
                                  {"Count at &15 bits", settings::WidePaletteQ15},
                                  {"For dra&wings", settings::WidePaletteSketch}};

/// The palette's extensions with small and capital letters, as a file dialog takes them.
QString palette_filters(bool saving) {
  QStringList filters;
  for (const PaletteForm& form : palette_forms()) {
    const QString extension = to_qt(form.extension);
    filters << QStringLiteral("%1 (*.%2 *.%3)").arg(shown(form.name), extension, extension.toUpper());
  }
  if (!saving) filters.prepend(QObject::tr("Palettes (*.cmp *.CMP *.gpl *.GPL *.pal *.PAL *.act *.ACT)"));
  if (!saving) filters << QObject::tr("All files (*)");
  return filters.join(QStringLiteral(";;"));
}

std::optional<std::filesystem::path> choose(Services& services, const FileChoice& choice) {
  return services.choose_file ? services.choose_file(choice) : std::nullopt;
}

/// The picture as it looks in these colors, with an entry more for what is transparent.
QImage matched(const Picture& picture, const PaletteColors& colors) {
  GivenColors given{colors.palette, colors.count};
  if (picture.bits() == 32 && given.count < 256) {
    given.alpha.assign(++given.count, 255);
    given.alpha.back() = 0;
  }
  const Picture indexed = to_colors(picture, given, false);
  return image_of_picture(given.alpha.empty() ? indexed : PictureWithTransparency(indexed, given.alpha));
}

struct PaletteChooser {
  PaletteChooser(QWidget* parent, const SelectPaletteRequest& asked, Services& using_services);
  QWidget* make_choices();
  QWidget* make_preview();
  void choose_row(int row);
  void show();
  void browse();
  PaletteMethod method() const {
    const bool holes =
        std::ranges::any_of(request.pictures, [](const Picture& p) { return p && p.bits() == 32; });
    return {.fifteenBits = methods[1]->isChecked(),
            .sketch = methods[2]->isChecked(),
            .sorted = methods[0]->isChecked(),
            .holes = holes};
  }
  PaletteColors computed();
  int id() const { return kChoices[std::max(list->currentRow(), 0)].id; }

  const SelectPaletteRequest& request;
  Services& services;
  QDialog dialog;
  QListWidget* list;
  QSpinBox* size;
  std::array<QCheckBox*, std::size(kMethods)> methods;
  QPushButton* file;
  QPushButton* ok;
  PaletteGrid* grid;
  QLabel* count;
  QLabel* picture;
  Picture source;  ///< of the preview
  PaletteColors colors;
  std::optional<Superpalette> counted;  ///< kept between the steps of the size
  PaletteMethod countedBy;
};

PaletteChooser::PaletteChooser(QWidget* parent, const SelectPaletteRequest& asked, Services& using_services)
    : request(asked), services(using_services), dialog(parent) {
  dialog.setWindowTitle(QObject::tr("Select Palette"));
  if (request.preview) {
    const QSize whole(static_cast<int>(request.preview.width()), static_cast<int>(request.preview.height()));
    const bool fits = whole.width() <= kPreview.width() && whole.height() <= kPreview.height();
    source = picture_of_image(scaled_image(
        request.preview, fits ? whole : whole.scaled(kPreview, Qt::KeepAspectRatio).expandedTo({1, 1})));
  }
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(make_choices());
  row->addWidget(make_preview());
  QDialogButtonBox* buttons =
      add_buttons(dialog, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("PALETTE"));
  ok = buttons->button(QDialogButtonBox::Ok);
  QVBoxLayout* layout = dialog_layout(dialog);
  layout->addLayout(row, 1);
  layout->addWidget(buttons);
  QObject::connect(list, &QListWidget::currentRowChanged, &dialog, [this](int now) { choose_row(now); });
  QObject::connect(size, &QSpinBox::valueChanged, &dialog, [this] { choose_row(list->currentRow()); });
  for (QCheckBox* box : methods)
    QObject::connect(box, &QCheckBox::toggled, &dialog, [this] { choose_row(list->currentRow()); });
  QObject::connect(file, &QPushButton::clicked, &dialog, [this] { browse(); });
  list->setCurrentRow(row_of(request.quantize ? kQuantize : settings::DefaultPalette));
}

QWidget* PaletteChooser::make_choices() {
  auto* side = new QWidget(&dialog);
  list = new QListWidget(side);
  list->setAccessibleName(QObject::tr("Palettes"));
  for (const auto& choice : kChoices) list->addItem(text_of(choice.text));
  if (request.pictures.empty()) list->item(row_of(kQuantize))->setFlags(Qt::NoItemFlags);
  list->setMinimumSize(list->sizeHintForColumn(0) + 2 * style::kWideGap,
                       static_cast<int>(std::size(kChoices)) * list->sizeHintForRow(0) + style::kGap);
  size = new QSpinBox(side);
  size->setRange(2, 256);
  size->setValue(std::clamp(settings::WidePaletteSize, 2, 256));
  file = new QPushButton(QObject::tr("Choose &file..."), side);
  file->setAutoDefault(false);
  auto* form = new QFormLayout;
  form->addRow(QObject::tr("&Colors to compute"), size);
  for (std::size_t i = 0; i < methods.size(); ++i) {
    methods[i] = new QCheckBox(QObject::tr(kMethods[i].label), side);
    methods[i]->setChecked(kMethods[i].setting != 0);
    form->addRow(methods[i]);
  }
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  layout->addWidget(list, 1);
  layout->addLayout(form);
  layout->addWidget(file);
  return side;
}

QWidget* PaletteChooser::make_preview() {
  auto* side = new QWidget(&dialog);
  count = new QLabel(side);
  grid = new PaletteGrid(kGrid, side);
  picture = new QLabel(side);
  picture->setAlignment(Qt::AlignCenter);
  picture->setMinimumSize(source ? kPreview : QSize());
  picture->setAccessibleName(QObject::tr("Preview"));
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  layout->addWidget(count);
  layout->addWidget(grid);
  layout->addWidget(picture, 1);
  return side;
}

PaletteColors PaletteChooser::computed() {
  if (!counted || countedBy != method()) {
    countedBy = method();
    Host nobody;
    std::vector<Picture> given;
    std::ranges::copy_if(request.pictures, std::back_inserter(given),
                         [](const Picture& p) { return bool(p); });
    counted = gather_colors(
        given.size(), [&](std::size_t i) { return given[i]; }, nobody, countedBy);
  }
  const std::uint32_t most = std::min(static_cast<std::uint32_t>(size->value()), request.most);
  return counted ? counted->colors(most) : PaletteColors();
}

void PaletteChooser::choose_row(int) {
  size->setEnabled(id() == kQuantize);
  for (QCheckBox* box : methods) box->setEnabled(id() == kQuantize);
  file->setEnabled(id() == kPaletteFile || id() == kImageFile);
  colors = {};
  if (id() >= 0) colors = built_in(id());
  if (id() == kQuantize) colors = computed();
  const std::filesystem::path kept(settings::ColourTableFile);
  std::string reason;
  if (id() == kPaletteFile && !kept.empty())
    if (const auto read = read_palette_file(kept, reason)) colors = *read;
  show();
}

void PaletteChooser::browse() {
  const bool picture_file = id() == kImageFile;
  const QString filters = picture_file ? picture_filters(true) : palette_filters(false);
  const auto path = choose(services, {QObject::tr("Select Palette").toStdString(), filters.toStdString(),
                                      settings::ColourTableFile, false});
  if (!path) return;
  const auto read = load_palette(*path, services.host);
  if (!read) return;
  colors = *read;
  if (!picture_file) settings::ColourTableFile = path->string();
  show();
}

void PaletteChooser::show() {
  grid->set_cells(palette_cells(colors));
  QString text = to_qt(count_text(StringId::OneColor, colors.count));
  if (colors.count > request.most) text += QObject::tr(", of which the first %1 fit").arg(request.most);
  count->setText(colors.count == 0 ? QObject::tr("Choose a file") : text);
  ok->setEnabled(colors.count > 0);
  if (!source) return;
  picture->setPixmap(
      QPixmap::fromImage(colors.count == 0 ? image_of_picture(source) : matched(source, colors)));
}

}  // namespace

std::optional<PaletteColors> choose_palette_file(Services& services) {
  const auto path =
      choose(services, {QObject::tr("Load palette").toStdString(), palette_filters(false).toStdString(),
                        settings::ColourTableFile, false});
  if (!path) return std::nullopt;
  auto colors = load_palette(*path, services.host);
  if (colors) settings::ColourTableFile = path->string();
  return colors;
}

void save_palette_file(Services& services, const PaletteColors& colors) {
  const auto path = choose(services, {QObject::tr("Save palette").toStdString(),
                                      palette_filters(true).toStdString(), settings::ColourTableFile, true});
  std::string reason;
  if (!path || write_palette_file(*path, colors, reason)) return;
  services.host.show(StringId::ErrorWritingFile, {}, reason);
}

std::optional<PaletteColors> select_palette(QWidget* parent, const SelectPaletteRequest& request,
                                            Services& services) {
  PaletteChooser chooser(parent, request, services);
  if (chooser.dialog.exec() != QDialog::Accepted || chooser.colors.count == 0) return std::nullopt;
  if (chooser.id() == kQuantize) {
    settings::WidePaletteSize = chooser.size->value();
    for (std::size_t i = 0; i < std::size(kMethods); ++i)
      kMethods[i].setting = chooser.methods[i]->isChecked() ? 1 : 0;
  }
  return chooser.colors;
}

}  // namespace vellum
