#include "shell/widgets/color_dialog.h"

#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include "configuration/config_file.h"
#include "configuration/history.h"
#include "configuration/shell_settings.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/dialog_frame.h"

namespace vellum {
namespace {

constexpr std::string_view kHistoryName = "ColorHistory.txt";
constexpr int kSwatch = 18;
constexpr PaletteGridForm kPair{.columns = 2, .rows = 1, .cell = 40, .frames = false};
constexpr PaletteGridForm kRecent{.columns = 8, .rows = 2, .cell = 22, .places = true, .frames = false};
constexpr PaletteGridForm kSwatches{.columns = 16, .rows = 16, .cell = kSwatch};

QString hex_of(const QColor& color) { return color.name().mid(1).toUpper(); }

std::vector<PaletteCell> recent_cells(const std::vector<std::string>& recent) {
  std::vector<PaletteCell> cells;
  for (const std::string& text : recent)
    if (const QColor color(to_qt(text)); color.isValid()) cells.push_back({color});
  return cells;
}

QVBoxLayout* column(QWidget* page) {
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(style::kGap, style::kGap, style::kGap, style::kGap);
  layout->setSpacing(style::kGap);
  return layout;
}

QDialogButtonBox* ok_and_cancel(QDialog& dialog) {
  return add_buttons(dialog, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, QStringLiteral("COLOR"));
}

QString title_of(const ColorRequest& request) {
  return request.title.isEmpty() ? QObject::tr("Color") : request.title;
}

}  // namespace

QColor qt_color(Colour color) { return {red_of(color), green_of(color), blue_of(color)}; }

Colour colour_of(const QColor& color) {
  return make_colour(static_cast<std::uint32_t>(color.red()), static_cast<std::uint32_t>(color.green()),
                     static_cast<std::uint32_t>(color.blue()));
}

std::vector<PaletteCell> palette_cells(const PaletteColors& colors) {
  std::vector<PaletteCell> cells;
  for (std::size_t i = 0; i < colors.count; ++i)
    cells.push_back({QColor(colors.palette[3 * i], colors.palette[3 * i + 1], colors.palette[3 * i + 2])});
  return cells;
}

ColorDialog::ColorDialog(const ColorRequest& request, QWidget* parent)
    : QDialog(parent),
      color_(qt_color(request.color)),
      before_(color_),
      recent_(load_history(config_path(kHistoryName), HistoryKind::Colors)) {
  setWindowTitle(title_of(request));
  auto* side = new QVBoxLayout;
  side->setSpacing(style::kWideGap);
  side->addWidget(make_numbers());
  side->addWidget(make_recent());
  side->addStretch(1);
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(make_pages(request), 1);
  row->addLayout(side);
  QVBoxLayout* layout = dialog_layout(*this);
  layout->addLayout(row, 1);
  layout->addWidget(ok_and_cancel(*this));
  hsb_ = hsb_of(color_, {});
  show_color(FromElsewhere);
  plane_->setFocus();
}

QWidget* ColorDialog::make_pages(const ColorRequest& request) {
  auto* pages = new QTabWidget(this);
  plane_ = new ColorPlane(pages);
  connect(plane_, &ColorPlane::mixed, this, [this](const HsbColor& mixed) {
    hsb_ = mixed;
    color_ = mixed.color();
    show_color(FromPlane);
  });
  pages->addTab(plane_, tr("&Mix"));
  if (request.palette.count > 0) {
    auto* page = new QWidget(pages);
    auto* swatches = new PaletteGrid(kSwatches, page);
    swatches->set_cells(palette_cells(request.palette));
    connect(swatches, &PaletteGrid::chosen, this, [this, swatches](int cell) {
      set_color(swatches->cells()[static_cast<std::size_t>(cell)].color);
    });
    connect(swatches, &PaletteGrid::activated, this, &ColorDialog::accept);
    column(page)->addWidget(swatches, 0, Qt::AlignCenter);
    pages->addTab(page, tr("&Palette"));
  }
  if (request.picture) {
    auto* panel = new PicturePanel(pages);
    panel->set_picture(request.picture);
    panel->view().set_picking(true);
    panel->setContentsMargins(style::kGap, style::kGap, style::kGap, style::kGap);
    connect(&panel->view(), &PictureView::picked, this,
            [this, panel](QPoint pixel) { set_color(panel->view().pixel_color(pixel)); });
    pages->addTab(panel, tr("P&icture"));
  }
  return pages;
}

QSpinBox* ColorDialog::number(const char* name, int most, const QString& suffix) {
  auto* box = new QSpinBox(this);
  box->setRange(0, most);
  box->setSuffix(suffix);
  box->setAccessibleName(tr(name).remove(u'&'));
  box->setAlignment(Qt::AlignRight);
  return box;
}

QWidget* ColorDialog::make_numbers() {
  auto* page = new QWidget(this);
  auto* form = new QFormLayout(page);
  form->setContentsMargins(0, 0, 0, 0);
  form->setSpacing(style::kGap / 2);
  static constexpr const char* kRgb[] = {"&Red", "&Green", "&Blue"};
  for (std::size_t i = 0; i < 3; ++i) {
    rgb_[i] = number(kRgb[i], 255);
    form->addRow(tr(kRgb[i]), rgb_[i]);
    connect(rgb_[i], &QSpinBox::valueChanged, this, &ColorDialog::read_numbers);
  }
  static constexpr struct {
    const char* label;
    int most;
    const char* suffix;
  } kHsb[] = {{"&Hue", 359, "\u00B0"}, {"&Saturation", 100, " %"}, {"Brigh&tness", 100, " %"}};
  for (std::size_t i = 0; i < 3; ++i) {
    hsbFields_[i] = number(kHsb[i].label, kHsb[i].most, QString::fromUtf8(kHsb[i].suffix));
    form->addRow(tr(kHsb[i].label), hsbFields_[i]);
    connect(hsbFields_[i], &QSpinBox::valueChanged, this, &ColorDialog::read_hsb);
  }
  hex_ = new QLineEdit(this);
  hex_->setObjectName(QStringLiteral("hexadecimal"));
  hex_->setValidator(
      new QRegularExpressionValidator(QRegularExpression(QStringLiteral("#?[0-9A-Fa-f]{0,6}")), hex_));
  connect(hex_, &QLineEdit::textEdited, this, [this](QString text) {
    if (text.startsWith(u'#')) text.remove(0, 1);
    if (text.size() != 6) return;
    color_ = QColor(u'#' + text);
    hsb_ = hsb_of(color_, hsb_);
    show_color(FromHex);
  });
  form->addRow(tr("He&xadecimal"), hex_);
  return page;
}

QWidget* ColorDialog::make_recent() {
  auto* page = new QWidget(this);
  auto* layout = new QVBoxLayout(page);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap / 2);
  shown_ = new PaletteGrid(kPair, page);
  shown_->setAccessibleName(tr("Color before and now"));
  shown_->setFocusPolicy(Qt::NoFocus);
  last_ = new PaletteGrid(kPair, page);
  last_->setAccessibleName(tr("Last two colors"));
  recentGrid_ = new PaletteGrid(kRecent, page);
  recentGrid_->setAccessibleName(tr("Recent colors"));
  recentGrid_->set_cells(recent_cells(recent_));
  for (PaletteGrid* grid : {shown_, last_, recentGrid_})
    connect(grid, &PaletteGrid::chosen, this,
            [this, grid](int cell) { set_color(grid->cells()[static_cast<std::size_t>(cell)].color); });
  auto* swap = new QPushButton(tr("S&wap"), page);
  swap->setAutoDefault(false);
  connect(swap, &QPushButton::clicked, this, &ColorDialog::swap_last);
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(style::kWideGap);
  grid->addWidget(new QLabel(tr("Before and now"), page), 0, 0);
  grid->addWidget(new QLabel(tr("Last two"), page), 0, 1, 1, 2);
  grid->addWidget(shown_, 1, 0);
  grid->addWidget(last_, 1, 1);
  grid->addWidget(swap, 1, 2);
  layout->addLayout(grid);
  layout->addSpacing(style::kGap);
  layout->addWidget(new QLabel(tr("Recent colors"), page));
  layout->addWidget(recentGrid_);
  show_last();
  return page;
}

void ColorDialog::set_color(const QColor& color) {
  color_ = QColor(color.red(), color.green(), color.blue());
  hsb_ = hsb_of(color_, hsb_);
  show_color(FromElsewhere);
}

void ColorDialog::show_color(Source source) {
  showing_ = true;
  const int rgb[] = {color_.red(), color_.green(), color_.blue()};
  const int hsb[] = {hsb_.hue, hsb_.saturation, hsb_.brightness};
  for (std::size_t i = 0; i < 3; ++i) {
    rgb_[i]->setValue(rgb[i]);
    hsbFields_[i]->setValue(hsb[i]);
  }
  if (source != FromHex) hex_->setText(hex_of(color_));
  plane_->set_color(hsb_);
  shown_->set_cells({{before_}, {color_}});
  showing_ = false;
}

void ColorDialog::read_numbers() {
  if (showing_) return;
  color_ = QColor(rgb_[0]->value(), rgb_[1]->value(), rgb_[2]->value());
  hsb_ = hsb_of(color_, hsb_);
  show_color(FromNumbers);
}

void ColorDialog::read_hsb() {
  if (showing_) return;
  hsb_ = {hsbFields_[0]->value(), hsbFields_[1]->value(), hsbFields_[2]->value()};
  color_ = hsb_.color();
  show_color(FromNumbers);
}

void ColorDialog::show_last() {
  last_->set_cells({{qt_color(static_cast<Colour>(settings::ForeColour))},
                    {qt_color(static_cast<Colour>(settings::BackColour))}});
}

void ColorDialog::swap_last() {
  std::swap(settings::ForeColour, settings::BackColour);
  show_last();
  set_color(qt_color(static_cast<Colour>(settings::ForeColour)));
}

void ColorDialog::accept() {
  const int chosen = static_cast<int>(colour_of(color_));
  if (chosen != settings::ForeColour) settings::BackColour = std::exchange(settings::ForeColour, chosen);
  keep_in_history(config_path(kHistoryName), color_.name().toStdString(), HistoryKind::Colors);
  QDialog::accept();
}

std::optional<Colour> ask_for_color(QWidget* parent, const ColorRequest& request) {
  ColorDialog dialog(request, parent);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return colour_of(dialog.color());
}

std::optional<std::uint32_t> ask_for_palette_index(QWidget* parent, const ColorRequest& request,
                                                   std::uint32_t index) {
  QDialog dialog(parent);
  dialog.setWindowTitle(title_of(request));
  auto* swatches = new PaletteGrid(PaletteGridForm{}, &dialog);
  swatches->set_cells(palette_cells(request.palette));
  swatches->set_current(static_cast<int>(index));
  QObject::connect(swatches, &PaletteGrid::activated, &dialog, &QDialog::accept);
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(swatches, 0, Qt::AlignTop);
  if (request.picture && request.picture.bits() <= 8) {
    auto* panel = new PicturePanel(&dialog);
    panel->set_picture(request.picture);
    panel->view().set_picking(true);
    QObject::connect(&panel->view(), &PictureView::picked, swatches, [panel, swatches](QPoint pixel) {
      swatches->set_current(static_cast<int>(PictureGetPixel(panel->view().picture(), pixel.x(), pixel.y())));
    });
    row->addWidget(panel, 1);
  }
  QVBoxLayout* layout = dialog_layout(dialog);
  layout->addLayout(row, 1);
  layout->addWidget(ok_and_cancel(dialog));
  swatches->setFocus();
  if (dialog.exec() != QDialog::Accepted || swatches->current() < 0) return std::nullopt;
  return static_cast<std::uint32_t>(swatches->current());
}

}  // namespace vellum
