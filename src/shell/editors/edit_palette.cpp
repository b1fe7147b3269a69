#include "shell/editors/edit_palette.h"

#include <QCheckBox>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/text.h"
#include "core/edit/palette_edit.h"
#include "shell/editors/editor_pages.h"
#include "shell/editors/select_palette.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/widgets/color_dialog.h"

namespace vellum {
namespace {

/// Pictures that a palette is computed from and colors are picked from: the one that has it, or all of the
/// document.
std::vector<Picture> pictures_of(const DocumentWindow& window, std::size_t index) {
  if (const Picture own = picture_of(window.list.record(index)); own) return {own};
  std::vector<Picture> pictures;
  for (std::size_t i = 0; i < window.list.size(); ++i) {
    const ChunkRecord& record = window.list.record(i);
    if (!is_image_entry(window.document.kind, record.tag)) continue;
    if (const Picture picture = picture_of(record)) pictures.push_back(picture);
  }
  return pictures;
}

struct PaletteEditor {
  PaletteEditor(QWidget* parent, const DocumentWindow& edited, std::size_t at, Services& using_services);

  QWidget* make_page();
  QLayout* make_buttons();
  QPushButton* button(QVBoxLayout* column, const QString& text, void (PaletteEditor::*work)());
  void sort(PaletteSort by);
  void add();
  void remove();
  void edit_color();
  void select_other();
  void load();
  void save() { save_palette_file(services, palette_colors(edit)); }
  void mark_unused();
  void remove_unused();
  void gradient();
  void reverse();
  void take(const PaletteColors& colors);
  void show();
  /// Shows why a step was refused, or what it made.
  void settle(const std::string& fault);
  std::vector<std::uint8_t> payload() const;

  const DocumentWindow& window;
  std::size_t index;
  Services& services;
  PaletteEdit edit;
  PaletteUsage usage;
  bool marking = false;
  QDialog dialog;
  PaletteGrid* grid;
  QLabel* count;
  QCheckBox* change;
  QPushButton *deleting, *blending;
};

PaletteEditor::PaletteEditor(QWidget* parent, const DocumentWindow& edited, std::size_t at,
                             Services& using_services)
    : window(edited),
      index(at),
      services(using_services),
      edit(*palette_edit_of(edited, at)),
      usage(palette_usage(edited, at)),
      dialog(parent) {
  auto* pages = new QTabWidget(&dialog);
  pages->addTab(make_page(), QObject::tr("&Colors"));
  pages->addTab(new RawPage(tag::PLTE, [this] { return std::optional(payload()); }), QObject::tr("Ra&w"));
  finish_editor(dialog, pages, tag::PLTE, services);
  show();
  grid->setFocus();
}

QWidget* PaletteEditor::make_page() {
  auto* page = new QWidget(&dialog);
  PaletteGridForm form;
  form.many = true;
  grid = new PaletteGrid(form, page);
  QObject::connect(grid, &PaletteGrid::activated, &dialog, [this] { edit_color(); });
  QObject::connect(grid, &PaletteGrid::swap_wanted, &dialog, [this](int a, int b) {
    palette_swap(edit, static_cast<std::size_t>(a), static_cast<std::size_t>(b));
    show();
  });
  QObject::connect(grid, &PaletteGrid::selection_changed, &dialog, [this] {
    deleting->setEnabled(!grid->selected().empty());
    blending->setEnabled(grid->selected().size() > 1);
  });
  count = new QLabel(page);
  change = new QCheckBox(QObject::tr("C&hange the colors of the images"), page);
  change->setChecked(true);
  change->setToolTip(QObject::tr("Off: the images keep their colors as far as the palette has them"));
  auto* left = new QVBoxLayout;
  left->addWidget(count);
  left->addWidget(grid);
  left->addWidget(change);
  left->addStretch(1);
  auto* row = new QHBoxLayout(page);
  row->setSpacing(style::kWideGap);
  row->addLayout(left);
  row->addLayout(make_buttons());
  return page;
}

QPushButton* PaletteEditor::button(QVBoxLayout* column, const QString& text, void (PaletteEditor::*work)()) {
  auto* made = new QPushButton(text, &dialog);
  made->setAutoDefault(false);
  QObject::connect(made, &QPushButton::clicked, &dialog, [this, work] { (this->*work)(); });
  column->addWidget(made);
  return made;
}

QLayout* PaletteEditor::make_buttons() {
  auto* column = new QVBoxLayout;
  column->setSpacing(style::kGap / 2);
  button(column, QObject::tr("&Edit..."), &PaletteEditor::edit_color);
  button(column, QObject::tr("&Add"), &PaletteEditor::add);
  deleting = button(column, QObject::tr("&Delete"), &PaletteEditor::remove);
  column->addSpacing(style::kGap);
  button(column, QObject::tr("Select &Palette..."), &PaletteEditor::select_other);
  button(column, QObject::tr("&Load..."), &PaletteEditor::load);
  button(column, QObject::tr("&Save..."), &PaletteEditor::save);
  column->addSpacing(style::kGap);
  auto* sorting = new QPushButton(QObject::tr("S&ort"), &dialog);
  sorting->setAutoDefault(false);
  auto* menu = new QMenu(sorting);
  menu->addAction(QObject::tr("By &luminance"), [this] { sort(PaletteSort::Luminance); });
  menu->addAction(QObject::tr("By &hue"), [this] { sort(PaletteSort::Hue); });
  menu->addAction(QObject::tr("By &use"), [this] { sort(PaletteSort::Use); });
  sorting->setMenu(menu);
  column->addWidget(sorting);
  blending = button(column, QObject::tr("&Gradient"), &PaletteEditor::gradient);
  button(column, QObject::tr("&Reverse"), &PaletteEditor::reverse);
  column->addSpacing(style::kGap);
  button(column, QObject::tr("&Unused"), &PaletteEditor::mark_unused)
      ->setToolTip(QObject::tr("Crosses out the colors that no pixel has"));
  button(column, QObject::tr("Re&move unused"), &PaletteEditor::remove_unused);
  column->addStretch(1);
  return column;
}

std::vector<std::uint8_t> PaletteEditor::payload() const {
  const PaletteColors colors = palette_colors(edit);
  return {colors.palette.begin(), colors.palette.begin() + 3 * static_cast<std::ptrdiff_t>(colors.count)};
}

void PaletteEditor::show() {
  std::vector<PaletteCell> cells;
  for (const PaletteEntry& entry : edit.entries)
    cells.push_back({QColor(entry.red, entry.green, entry.blue, entry.alpha)});
  if (marking)
    for (const std::size_t unused : palette_unused(edit, usage)) cells[unused].marked = true;
  grid->set_cells(std::move(cells));
  count->setText(QObject::tr("%1 of at most %2")
                     .arg(edit.entries.size())
                     .arg(to_qt(count_text(StringId::OneColor, edit.most))));
}

void PaletteEditor::settle(const std::string& fault) {
  if (!fault.empty()) tell(services, {}, fault);
  show();
}

void PaletteEditor::sort(PaletteSort by) {
  palette_sort(edit, by, usage);
  show();
}

void PaletteEditor::add() {
  const int at = grid->current() < 0 ? 0 : grid->current() + 1;
  settle(palette_add(edit, static_cast<std::size_t>(at), {}));
  grid->set_current(std::min(at, static_cast<int>(edit.entries.size()) - 1));
}

void PaletteEditor::remove() { settle(palette_delete(edit, grid->selected(), usage)); }

void PaletteEditor::edit_color() {
  if (grid->current() < 0) return;
  PaletteEntry& entry = edit.entries[static_cast<std::size_t>(grid->current())];
  const auto pictures = pictures_of(window, index);
  const auto color = ask_for_color(&dialog, {make_colour(entry.red, entry.green, entry.blue),
                                             pictures.empty() ? Picture() : pictures.front(),
                                             palette_colors(edit),
                                             {}});
  if (!color) return;
  entry.red = red_of(*color);
  entry.green = green_of(*color);
  entry.blue = blue_of(*color);
  show();
}

void PaletteEditor::take(const PaletteColors& colors) {
  if (palette_load(edit, colors))
    tell(services, StringId::PaletteCut,
         format_text(string_text(StringId::PaletteCut).data(), static_cast<unsigned>(edit.entries.size())));
  show();
}

void PaletteEditor::select_other() {
  const auto pictures = pictures_of(window, index);
  const auto colors = select_palette(
      &dialog, {pictures, pictures.empty() ? Picture() : pictures.front(), edit.most}, services);
  if (colors) take(*colors);
}

void PaletteEditor::load() {
  if (const auto colors = choose_palette_file(services)) take(*colors);
}

void PaletteEditor::mark_unused() {
  marking = !marking;
  show();
}

void PaletteEditor::remove_unused() {
  auto unused = palette_unused(edit, usage);
  // One color has to stay, whether it is used or not.
  if (unused.size() == edit.entries.size()) unused.erase(unused.begin());
  settle(palette_delete(edit, unused, usage));
}

void PaletteEditor::gradient() {
  const auto chosen = grid->selected();
  if (chosen.size() > 1) palette_gradient(edit, chosen.front(), chosen.back());
  show();
}

void PaletteEditor::reverse() {
  palette_reverse(edit);
  show();
}

}  // namespace

Edited edit_palette(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services) {
  if (!palette_edit_of(window, index)) {
    services.host.show(StringId::ErrorAccessingChunk);
    return Edited::Cancelled;
  }
  PaletteEditor editor(parent, window, index, services);
  if (editor.dialog.exec() != QDialog::Accepted) return Edited::Cancelled;
  return apply_palette(window, index, editor.edit, editor.change->isChecked()) ? Edited::Changed
                                                                               : Edited::Same;
}

}  // namespace vellum
