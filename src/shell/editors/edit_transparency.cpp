#include "shell/editors/edit_transparency.h"

#include <QFormLayout>
#include <QPushButton>
#include <QSlider>
#include <QSplitter>
#include <QVBoxLayout>

#include "base/text.h"
#include "core/edit/transparency_edit.h"
#include "core/model/frame_values.h"
#include "image/picture_operations.h"
#include "shell/editors/editor_pages.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/color_dialog.h"

namespace vellum {
namespace {

/// The picture at the caret, or the first one.
Picture shown_picture(const DocumentWindow& window) {
  const auto picture_at = [&](std::size_t i) {
    const ChunkRecord& record = window.list.record(i);
    return is_image_entry(window.document.kind, record.tag) ? picture_of(record) : Picture();
  };
  const auto caret = static_cast<std::size_t>(std::max(window.document.caret, 0));
  if (caret < window.list.size())
    if (Picture picture = picture_at(caret)) return picture;
  for (std::size_t i = 0; i < window.list.size(); ++i)
    if (Picture picture = picture_at(i)) return picture;
  return {};
}

struct TransparencyEditor {
  TransparencyEditor(QWidget* parent, TransparencyEdit edited, Picture image, Services& services);

  QWidget* make_page();
  QWidget* make_palette();
  QWidget* make_samples();
  void pick(QPoint pixel);
  void set_alpha(int alpha);
  void ask_color();
  void show_cells();
  void show_selection();
  void show_samples();
  void show_picture();

  TransparencyEdit edit;
  Picture source;
  QDialog dialog;
  PicturePanel* picture = nullptr;
  PaletteGrid* grid = nullptr;
  QSlider* slider = nullptr;
  QSpinBox* alpha = nullptr;
  QLabel* count = nullptr;
  QPushButton* color = nullptr;
  std::vector<QSpinBox*> fields;
  bool showing = false;
};

TransparencyEditor::TransparencyEditor(QWidget* parent, TransparencyEdit edited, Picture image,
                                       Services& services)
    : edit(std::move(edited)), source(std::move(image)), dialog(parent) {
  auto* pages = new QTabWidget(&dialog);
  pages->addTab(make_page(), QObject::tr("&Transparency"));
  pages->addTab(new RawPage(tag::tRNS, [this] { return std::optional(transparency_payload(edit)); }),
                QObject::tr("&Raw"));
  finish_editor(dialog, pages, tag::tRNS, services);
  edit.paletted() ? show_cells() : show_samples();
  if (grid) grid->setFocus();
}

QWidget* TransparencyEditor::make_page() {
  auto* page = new QWidget(&dialog);
  picture = new PicturePanel(page);
  picture->view().set_picking(true);
  picture->setToolTip(QObject::tr("Click on a color to choose it"));
  QObject::connect(&picture->view(), &PictureView::picked, &dialog, [this](QPoint pixel) { pick(pixel); });
  auto* row = new QHBoxLayout(page);
  row->setSpacing(style::kWideGap);
  row->addWidget(edit.paletted() ? make_palette() : make_samples());
  row->addWidget(picture, 1);
  return page;
}

QWidget* TransparencyEditor::make_palette() {
  auto* side = new QWidget(&dialog);
  PaletteGridForm form;
  form.many = true;
  form.swaps = false;
  grid = new PaletteGrid(form, side);
  QObject::connect(grid, &PaletteGrid::selection_changed, &dialog, [this] { show_selection(); });
  slider = new QSlider(Qt::Horizontal, side);
  alpha = new QSpinBox(side);
  alpha->setRange(0, 255);
  slider->setRange(0, 255);
  slider->setAccessibleName(QObject::tr("Alpha of the selected colors"));
  alpha->setAccessibleName(slider->accessibleName());
  QObject::connect(slider, &QSlider::valueChanged, &dialog, [this](int value) { set_alpha(value); });
  QObject::connect(alpha, &QSpinBox::valueChanged, &dialog, [this](int value) { set_alpha(value); });
  auto* label = new QLabel(QObject::tr("&Alpha"), side);
  label->setBuddy(slider);
  auto* level = new QHBoxLayout;
  level->addWidget(label);
  level->addWidget(slider, 1);
  level->addWidget(alpha);
  auto* opaque = new QPushButton(QObject::tr("All &opaque"), side);
  auto* clear = new QPushButton(QObject::tr("&Make this color transparent"), side);
  QObject::connect(clear, &QPushButton::clicked, &dialog, [this] { set_alpha(0); });
  QObject::connect(opaque, &QPushButton::clicked, &dialog, [this] {
    std::ranges::fill(edit.alphas, std::uint8_t{255});
    show_cells();
  });
  auto* buttons = new QHBoxLayout;
  for (QPushButton* button : {opaque, clear}) {
    button->setAutoDefault(false);
    buttons->addWidget(button);
  }
  count = new QLabel(side);
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  layout->addWidget(count);
  layout->addWidget(grid);
  layout->addLayout(level);
  layout->addLayout(buttons);
  layout->addStretch(1);
  return side;
}

QWidget* TransparencyEditor::make_samples() {
  auto* side = new QWidget(&dialog);
  auto* form = new QFormLayout(side);
  form->setContentsMargins(0, 0, 0, 0);
  static constexpr const char* kColors[] = {"&Red", "&Green", "&Blue"};
  const bool grey = edit.header.colorType == 0;
  for (std::size_t i = 0; i < (grey ? 1u : 3u); ++i) {
    auto* field = new QSpinBox(side);
    field->setRange(0, static_cast<int>(edit.most()));
    field->setMinimumWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("0000000000")));
    QObject::connect(field, &QSpinBox::valueChanged, &dialog, [this, i](int value) {
      if (showing) return;
      edit.samples[i] = static_cast<std::uint16_t>(value);
      show_samples();
    });
    form->addRow(grey ? QObject::tr("&Grey") : QObject::tr(kColors[i]), field);
    fields.push_back(field);
  }
  color = new QPushButton(grey ? QString() : QObject::tr("&Color..."), side);
  color->setAutoDefault(false);
  color->setEnabled(!grey);
  color->setAccessibleName(QObject::tr("Transparent color"));
  QObject::connect(color, &QPushButton::clicked, &dialog, [this] { ask_color(); });
  form->addRow(color);
  auto* hint = new QLabel(QObject::tr("Click on the picture to choose\nthe color that lets through."), side);
  hint->setForegroundRole(QPalette::PlaceholderText);
  form->addRow(hint);
  return side;
}

void TransparencyEditor::pick(QPoint pixel) {
  const Colour value = PictureGetPixel(source, pixel.x(), pixel.y());
  if (grid) {
    if (value < edit.alphas.size()) grid->set_current(static_cast<int>(value));
    return;
  }
  edit.samples = transparency_samples(edit, value);
  show_samples();
}

void TransparencyEditor::set_alpha(int value) {
  if (showing) return;
  for (const std::size_t cell : grid->selected()) edit.alphas[cell] = static_cast<std::uint8_t>(value);
  show_cells();
}

void TransparencyEditor::show_cells() {
  std::vector<PaletteCell> cells;
  for (std::size_t i = 0; i < edit.alphas.size(); ++i)
    cells.push_back(
        {QColor(edit.palette[3 * i], edit.palette[3 * i + 1], edit.palette[3 * i + 2], edit.alphas[i])});
  grid->set_cells(std::move(cells));
  const auto transparent = std::ranges::count_if(edit.alphas, [](std::uint8_t a) { return a < 255; });
  count->setText(
      to_qt(format_text(string_text(StringId::TransparentCount).data(), static_cast<unsigned>(transparent),
                        static_cast<unsigned>(edit.alphas.size()))));
  show_selection();
  show_picture();
}

void TransparencyEditor::show_selection() {
  const auto selected = grid->selected();
  for (QWidget* widget : {static_cast<QWidget*>(slider), static_cast<QWidget*>(alpha)})
    widget->setEnabled(!selected.empty());
  if (selected.empty() || grid->cells().empty()) return;
  showing = true;
  const int value = edit.alphas[selected.front()];
  slider->setValue(value);
  alpha->setValue(value);
  showing = false;
}

/// A sample of any depth as one of eight bits.
int eight_bits(std::uint32_t value, std::uint32_t most) { return static_cast<int>(value * 255 / most); }

void TransparencyEditor::ask_color() {
  const auto channel = [&](std::size_t i) {
    return static_cast<std::uint32_t>(eight_bits(edit.samples[i], edit.most()));
  };
  const auto chosen =
      ask_for_color(&dialog, {make_colour(channel(0), channel(1), channel(2)), source, {}, {}});
  if (!chosen) return;
  edit.samples = transparency_samples(edit, *chosen);
  show_samples();
}

void TransparencyEditor::show_samples() {
  showing = true;
  for (std::size_t i = 0; i < fields.size(); ++i) fields[i]->setValue(edit.samples[i]);
  showing = false;
  const auto channel = [&](std::size_t i) {
    return eight_bits(edit.samples[edit.header.colorType == 0 ? 0 : i], edit.most());
  };
  QPixmap swatch(32, 16);
  swatch.fill(QColor(channel(0), channel(1), channel(2)));
  color->setIcon(QIcon(swatch));
  color->setIconSize(swatch.size());
  show_picture();
}

void TransparencyEditor::show_picture() {
  if (!source) return;
  const auto payload = transparency_payload(edit);
  picture->set_picture(PictureWithTransparency(source, transparency_table(payload, edit.header)), source);
}

}  // namespace

Edited edit_transparency(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services) {
  std::string fault;
  auto edit = transparency_edit_of(window, index, fault);
  if (!edit) {
    tell(services, {}, fault);
    return Edited::Cancelled;
  }
  TransparencyEditor editor(parent, std::move(*edit), shown_picture(window), services);
  if (editor.dialog.exec() != QDialog::Accepted) return Edited::Cancelled;
  return apply_transparency(window, index, editor.edit) ? Edited::Changed : Edited::Same;
}

}  // namespace vellum
