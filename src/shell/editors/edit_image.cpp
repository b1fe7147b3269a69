#include "shell/editors/edit_image.h"

#include <QApplication>
#include <QClipboard>
#include <QGridLayout>
#include <QInputDialog>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/text.h"
#include "configuration/shell_settings.h"
#include "core/chunks/chunk_tip.h"
#include "core/edit/frame_scene.h"
#include "core/edit/image_edit.h"
#include "core/model/frame_values.h"
#include "core/settings.h"
#include "image/graphic_file.h"
#include "image/picture_operations.h"
#include "image/resample.h"
#include "shell/editors/edit_palette.h"
#include "shell/editors/edit_transparency.h"
#include "shell/editors/editor_pages.h"
#include "shell/editors/field_editor.h"
#include "shell/editors/frame_stage.h"
#include "shell/look/picture_image.h"
#include "shell/look/style.h"
#include "shell/look/text.h"
#include "shell/services/file_dialogs.h"
#include "shell/services/paint.h"
#include "shell/widgets/color_dialog.h"

namespace vellum {
namespace {

constexpr QSize kOpeningSize(940, 580);
constexpr int kButtonsInRow = 3;

/// Everything is done to a copy of the document, which costs a list; OK makes it the document.
struct ImageEditor {
  ImageEditor(QWidget* parent, DocumentWindow& window, std::size_t edited, Services& answers);

  QWidget* make_picture_part();
  void add_buttons(QGridLayout* grid);
  void lay_out();
  void show_form();
  void show_picture();
  void show_state();
  void follow_place();
  void move_by(QPoint pixels);
  void step(bool forwards);
  /// The place that is typed; the entry's own where its form has none.
  FrameOffset typed_place() const;
  bool placeable() const;

  const ChunkRecord& record() const { return scratch.list.record(index); }
  Picture picture() const { return picture_of(record()); }
  DocumentKind kind() const { return scratch.document.kind; }
  /// The entry that holds the image's colors or transparency; kNoEntry for none.
  std::size_t palette_entry() const;
  std::size_t transparency_entry() const;

  void take(const Picture& other, std::optional<PaletteChoice> choice = std::nullopt);
  void replace();
  void export_picture();
  void copy();
  void paste();
  void paint();
  void edit_colors();
  void edit_alphas();
  void alpha_from_color();
  void remove_alpha();
  void set_alpha();
  void resize_to_canvas();
  void pad_to_canvas();

  Services& services;
  DocumentWindow scratch;
  std::size_t index;
  FormDialog dialog;
  FrameStage* stage = nullptr;
  Extent canvasBefore;  ///< the canvas as it was when the editor was opened
  QPushButton *paletteButton = nullptr, *transparencyButton = nullptr, *alphaButton = nullptr,
              *fitButton = nullptr, *pasteButton = nullptr;
  std::int32_t shift = 0;  ///< of the entries, by those that came in front of them
  bool changed = false;
};

/// What becomes of colors that a picture brings back and the palette lacks. The frames of an animated PNG
/// share theirs, so there they can't stay as they are.
std::optional<PaletteChoice> painted_colors(DocumentKind kind) {
  if (settings::PaintColorManagement == 1) return PaletteChoice::Remap;
  if (settings::PaintColorManagement == 2) return PaletteChoice::Dither;
  if (kind == DocumentKind::APNG) return std::nullopt;
  return kind == DocumentKind::MING ? PaletteChoice::Local : PaletteChoice::Replace;
}

DocumentWindow copy_of(const DocumentWindow& window, std::size_t index) {
  DocumentWindow copy{window.document, window.list, {}};
  copy.document.caret = static_cast<std::int32_t>(index);
  return copy;
}

ImageEditor::ImageEditor(QWidget* parent, DocumentWindow& window, std::size_t edited, Services& answers)
    : services(answers),
      scratch(copy_of(window, edited)),
      index(edited),
      dialog(editor_title(window.list.record(edited).tag), chunk_topic(window.list.record(edited).tag),
             chunk_fields(scratch, edited), read_chunk_fields(scratch, edited), answers.host, parent),
      canvasBefore(document_size(window.list, window.document)) {
  lay_out();
  dialog.check = [this](const FieldValues& typed) { return check_chunk_fields(scratch, index, typed); };
  dialog.repair = repair_chunk_fields;
  dialog.apply = [this](const FieldValues& typed) {
    if (dialog.form().fields().empty()) return true;
    const Applied applied = apply_chunk_fields(scratch, index, typed, services.host);
    if (applied == Applied::Failed)
      services.host.show(StringId::ErrorAccessingChunk, {}, services.host.take_fault());
    changed = changed || applied == Applied::Changed;
    return applied != Applied::Failed;
  };
  QObject::connect(QApplication::clipboard(), &QClipboard::dataChanged, &dialog, [this] { show_state(); });
  show_form();
  show_picture();
}

/// What belongs to the entry whose fields the form has.
void ImageEditor::show_form() {
  Form& form = dialog.form();
  if (form.has("rate")) link_frame_rate(form);
  const bool has_fields = !form.fields().empty();
  form.setVisible(has_fields);
  dialog.buttons().button(QDialogButtonBox::Reset)->setVisible(has_fields);
  if (const std::string note = chunk_note(scratch, index); !note.empty()) form.add_note(to_qt(note));
  QObject::connect(&form, &Form::edited, &dialog, [this] { follow_place(); });
}

void ImageEditor::lay_out() {
  auto* outer = static_cast<QVBoxLayout*>(dialog.layout());
  outer->removeWidget(&dialog.form());
  auto* row = new QHBoxLayout;
  row->setSpacing(style::kWideGap);
  row->addWidget(make_picture_part(), 1);
  row->addWidget(&dialog.form());
  outer->insertLayout(0, row, 1);
}

QWidget* ImageEditor::make_picture_part() {
  auto* part = new QWidget(&dialog);
  stage = new FrameStage(part);
  QObject::connect(stage, &FrameStage::moved, &dialog, [this](QPoint pixels) { move_by(pixels); });
  QObject::connect(stage, &FrameStage::step_wanted, &dialog, [this](bool forwards) { step(forwards); });
  auto* grid = new QGridLayout;
  grid->setSpacing(style::kGap);
  add_buttons(grid);
  auto* layout = new QVBoxLayout(part);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(style::kGap);
  layout->addWidget(stage, 1);
  layout->addLayout(grid);
  return part;
}

void ImageEditor::add_buttons(QGridLayout* grid) {
  int place = 0;
  const auto add = [&](const char* text, const char* name) {
    auto* button = new QPushButton(QObject::tr(text), &dialog);
    button->setAutoDefault(false);
    button->setObjectName(QLatin1String(name));
    grid->addWidget(button, place / kButtonsInRow, place % kButtonsInRow);
    ++place;
    return button;
  };
  const auto does = [&](QPushButton* button, void (ImageEditor::*work)()) {
    QObject::connect(button, &QPushButton::clicked, &dialog, [this, work] { (this->*work)(); });
    return button;
  };
  const auto offers = [&](QPushButton* button,
                          std::initializer_list<std::pair<const char*, void (ImageEditor::*)()>> items) {
    auto* menu = new QMenu(button);
    for (const auto& [text, work] : items)
      QObject::connect(menu->addAction(QObject::tr(text)), &QAction::triggered, &dialog,
                       [this, w = work] { (this->*w)(); });
    button->setMenu(menu);
    return button;
  };
  does(add("&Replace...", "replace"), &ImageEditor::replace);
  does(add("E&xport...", "export"), &ImageEditor::export_picture);
  does(add("&Copy", "copy"), &ImageEditor::copy);
  pasteButton = does(add("P&aste", "paste"), &ImageEditor::paste);
  does(add("Pai&nt...", "paint"), &ImageEditor::paint);
  paletteButton = does(add("Pa&lette...", "palette"), &ImageEditor::edit_colors);
  transparencyButton = does(add("&Transparency...", "transparency"), &ImageEditor::edit_alphas);
  alphaButton = offers(add("Alp&ha", "alpha"), {{"From a &color...", &ImageEditor::alpha_from_color},
                                                {"&Remove...", &ImageEditor::remove_alpha},
                                                {"&Set...", &ImageEditor::set_alpha}});
  fitButton = offers(add("&Fit", "fit"), {{"&Resize to the canvas", &ImageEditor::resize_to_canvas},
                                          {"&Pad to the canvas", &ImageEditor::pad_to_canvas}});
}

std::size_t ImageEditor::palette_entry() const {
  if (!picture() || picture().bits() > 8) return kNoEntry;
  return kind() == DocumentKind::MING ? index : chunk_find_first(scratch.list, tag::PLTE);
}

std::size_t ImageEditor::transparency_entry() const {
  if (!picture() || picture().bits() > 8) return kNoEntry;
  return kind() == DocumentKind::MING ? index : chunk_find_first(scratch.list, tag::tRNS);
}

FrameOffset ImageEditor::typed_place() const {
  const Form& form = dialog.form();
  const FieldValues values = form.values();
  const bool has =
      form.has("x") && form.has("y") && (!form.has("hasPosition") || values.number("hasPosition"));
  if (!has) return GetFrameOffset(record(), kind());
  return {static_cast<std::int32_t>(values.number("x")), static_cast<std::int32_t>(values.number("y"))};
}

bool ImageEditor::placeable() const {
  const Field* x = find_field(dialog.form().fields(), "x");
  return x && !x->locked;
}

void ImageEditor::show_picture() {
  stage->show_frame(scratch, index, typed_place(), placeable());
  show_state();
  follow_place();
}

/// The picture goes with the typed place, and what that makes of the canvas is told.
void ImageEditor::follow_place() {
  if (!is_animation(kind())) return;
  const FrameOffset place = typed_place();
  stage->move_frame(place);
  const Extent wanted = canvas_with_frame_at(scratch, index, place);
  const bool larger = wanted.width > canvasBefore.width || wanted.height > canvasBefore.height;
  const bool smaller = wanted.width < canvasBefore.width || wanted.height < canvasBefore.height;
  if (!larger && !smaller) return stage->tell({});
  const StringId told = larger && smaller ? StringId::CanvasChanges
                        : larger          ? StringId::CanvasGrows
                                          : StringId::CanvasShrinks;
  std::string note = format_text(string_text(told).data(), wanted.width, wanted.height, canvasBefore.width,
                                 canvasBefore.height);
  if (larger && pads_first_image(scratch, wanted))
    note.append(" ").append(string_text(StringId::FirstImageGrows));
  stage->tell(to_qt(note));
}

void ImageEditor::move_by(QPoint pixels) {
  Form& form = dialog.form();
  if (!placeable()) return;
  const FrameOffset place = typed_place();
  if (form.has("hasPosition")) form.set_value("hasPosition", std::int64_t{1});
  const auto put = [&](const char* name, std::int64_t value) {
    const Field* field = find_field(form.fields(), name);
    form.set_value(name, std::clamp(value, field->least, field->most));
  };
  put("x", std::int64_t{place.x} + pixels.x());
  put("y", std::int64_t{place.y} + pixels.y());
  follow_place();
}

/// What was typed goes into the frame that is left.
void ImageEditor::step(bool forwards) {
  const std::size_t next = neighbour_image(scratch, index, forwards);
  if (next == kNoEntry || !dialog.apply_now()) return;
  index = next;
  dialog.setWindowTitle(editor_title(record().tag));
  dialog.replace_form(chunk_fields(scratch, index), read_chunk_fields(scratch, index));
  show_form();
  show_picture();
}

void ImageEditor::show_state() {
  const bool indexed = picture() && picture().bits() <= 8;
  paletteButton->setEnabled(palette_entry() != kNoEntry);
  transparencyButton->setEnabled(transparency_entry() != kNoEntry);
  alphaButton->setEnabled(picture() && !indexed);
  const Extent canvas = document_size(scratch.list, scratch.document);
  fitButton->setEnabled(picture() &&
                        (canvas.width != picture().width() || canvas.height != picture().height()));
  pasteButton->setEnabled(!QApplication::clipboard()->image().isNull());
}

/// The image becomes this picture, fitted to the document.
void ImageEditor::take(const Picture& other, std::optional<PaletteChoice> choice) {
  const std::size_t before = index;
  const Replaced replaced = replace_image(scratch, index, other, services.host, choice);
  shift += static_cast<std::int32_t>(index) - static_cast<std::int32_t>(before);
  if (replaced == Replaced::Failed) return services.host.show(StringId::AllocationError);
  changed = changed || replaced == Replaced::Done;
  show_picture();
}

void ImageEditor::replace() {
  if (!services.choose_file) return;
  int& filter = picture().colours() > 0 ? settings::ImportFilterIndex : settings::ImportFilterIndex24;
  const auto path = services.choose_file(
      {QObject::tr("Replace image").toStdString(), picture_filters(true).toStdString(), {}, false, &filter});
  if (!path) return;
  if (const Picture other = read_picture_file(*path, services.host)) take(other);
}

void ImageEditor::export_picture() {
  if (!services.choose_file) return;
  const auto path = services.choose_file(
      {QObject::tr("Export image").toStdString(), picture_filters(false).toStdString(), "picture.png", true});
  if (path && !GraphicFileWrite(path->string(), picture()))
    services.host.show(StringId::ErrorWritingFile, {}, path->string());
}

void ImageEditor::copy() {
  QApplication::clipboard()->setImage(image_of_picture(stage->own()));
  show_state();
}

void ImageEditor::paste() {
  if (const Picture other = picture_of_image(QApplication::clipboard()->image())) take(other);
}

void ImageEditor::paint() {
  // With its transparency, whether a color's or a palette's.
  if (const auto painted = paint_elsewhere(&dialog, stage->own(), services))
    take(*painted, painted_colors(kind()));
}

void ImageEditor::edit_colors() {
  if (edit_palette(&dialog, scratch, palette_entry(), services) != Edited::Changed) return;
  changed = true;
  show_picture();
}

void ImageEditor::edit_alphas() {
  if (edit_transparency(&dialog, scratch, transparency_entry(), services) != Edited::Changed) return;
  changed = true;
  show_picture();
}

void ImageEditor::alpha_from_color() {
  const auto color = ask_for_color(&dialog, {.color = static_cast<Colour>(settings::BackColour) & 0xFFFFFF,
                                             .picture = picture(),
                                             .palette = {},
                                             .title = QObject::tr("The color that becomes transparent")});
  if (color) take(with_color_transparent(picture(), *color));
}

void ImageEditor::remove_alpha() {
  const auto ground = ask_for_color(&dialog, {.color = document_background(scratch.list, scratch.document),
                                              .picture = {},
                                              .palette = {},
                                              .title = QObject::tr("The color behind the image")});
  if (ground) take(PictureFlatten(picture(), *ground));
}

void ImageEditor::set_alpha() {
  bool accepted = false;
  const int level =
      QInputDialog::getInt(&dialog, QObject::tr("Set alpha"), QObject::tr("Alpha (0 to 255):"),
                           std::clamp(settings::InitialAlphaLevel, 0, 255), 0, 255, 1, &accepted);
  if (accepted) take(with_alpha_level(picture(), static_cast<std::uint8_t>(level)));
}

void ImageEditor::resize_to_canvas() {
  const Extent canvas = document_size(scratch.list, scratch.document);
  take(PictureResample(picture(), canvas.width, canvas.height, ResampleFilter::Automatic));
}

void ImageEditor::pad_to_canvas() {
  const Colour ground =
      picture().bits() > 8 ? document_background(scratch.list, scratch.document) : Colour{0};
  take(padded_to(picture(), document_size(scratch.list, scratch.document), ground));
}

}  // namespace

Edited edit_image(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services) {
  ImageEditor editor(parent, window, index, services);
  editor.dialog.resize(editor.dialog.sizeHint().expandedTo(kOpeningSize));
  if (editor.dialog.exec() != QDialog::Accepted) return Edited::Cancelled;
  if (!editor.changed) return Edited::Same;
  if (!fill_grown_canvas(editor.scratch, editor.index, editor.canvasBefore)) {
    services.host.show(StringId::AllocationError);
    return Edited::Cancelled;
  }
  const std::int32_t caret = window.document.caret;
  window.document.caret = caret >= static_cast<std::int32_t>(index) ? caret + editor.shift : caret;
  window.document.defaultImage = editor.scratch.document.defaultImage;
  window.document.PartialRedraw = true;
  window.list = editor.scratch.list;
  return Edited::Changed;
}

}  // namespace vellum
