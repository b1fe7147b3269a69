#include "shell/editors/field_editor.h"

#include <QPlainTextEdit>
#include <QPushButton>

#include "core/chunks/chunk_reading.h"
#include "core/chunks/chunk_tip.h"
#include "core/files/png_reading.h"
#include "operations/convert_colors.h"
#include "operations/frame_pictures.h"
#include "operations/reconstruct.h"
#include "shell/editors/editor_pages.h"
#include "shell/editors/select_palette.h"
#include "shell/look/text.h"

namespace vellum {
namespace {

/// Whether the user wants what the values convert; the form goes back to the old color type where not.
bool may_convert(Editing& editing, const FieldValues& values) {
  if (!converts_images(editing.window, editing.index, values)) return true;
  const auto id = StringId::ColorTypeQuestion;
  const Message message{id, {}, std::string(string_text(id)), {}, nullptr};
  Host& host = editing.services.host;
  if (!host.ask || host.ask(message, false) == Answer::Yes) return true;
  const FieldValues before = read_chunk_fields(editing.window, editing.index);
  for (const char* name : {"colorType", "bitDepth"}) editing.form.set_value(name, *before.find(name));
  return false;
}

/// The palette of images that get one, by the user's choice; empty when the user cancelled.
std::optional<PaletteColors> palette_for(Editing& editing, std::uint32_t most) {
  // An entry is kept for what is transparent.
  if (has_transparency(editing.window)) --most;
  SelectPaletteRequest request{.pictures = {}, .preview = {}, .most = most};
  for (const HeldPicture& held : shown_pictures(editing.window)) request.pictures.push_back(held.picture());
  if (!request.pictures.empty()) request.preview = request.pictures.front();
  return select_palette(&editing.owner, request, editing.services);
}

/// Converts the images first, so that only the other fields are left to be applied. Nothing when the user
/// cancelled.
std::optional<Applied> convert_first(Editing& editing, const FieldValues& values) {
  if (!converts_images(editing.window, editing.index, values)) return Applied::Same;
  PngHeader wanted = png_header_of(editing.window.list.record(editing.index));
  wanted.colorType = static_cast<std::uint8_t>(values.number("colorType"));
  wanted.bitDepth = static_cast<std::uint8_t>(values.number("bitDepth"));
  ColorConversion conversion = header_conversion(wanted);
  if (wanted.colorType == 3) {
    const auto palette = palette_for(editing, conversion.most);
    if (!palette) return std::nullopt;
    conversion.palette = *palette;
  }
  const bool good = convert_colors(editing.window, conversion, editing.services.host);
  return good ? Applied::Changed : Applied::Failed;
}

}  // namespace

bool apply_edited(Editing& editing, const FieldValues& values, bool& changed) {
  if (!may_convert(editing, values)) return false;
  Host& host = editing.services.host;
  const auto converted = convert_first(editing, values);
  if (!converted) return false;
  const Applied applied = *converted == Applied::Failed
                              ? Applied::Failed
                              : apply_chunk_fields(editing.window, editing.index, values, host);
  if (applied == Applied::Failed) host.show(StringId::ErrorAccessingChunk, {}, host.take_fault());
  changed = applied == Applied::Changed || converted == Applied::Changed;
  return applied != Applied::Failed;
}

QPlainTextEdit* make_details() {
  auto* text = new QPlainTextEdit;
  text->setReadOnly(true);
  text->setTabChangesFocus(true);
  text->setAccessibleName(QObject::tr("Details"));
  return text;
}

QString details_text(const DocumentWindow& window, std::size_t index) {
  const ChunkRecord& record = window.list.record(index);
  return to_qt(reading_text(chunk_reading(record.tag, raw_payload(record), window.document.kind)));
}

namespace {

/// Where the bytes are read but not all of it are fields.
void add_details(Editing& editing) {
  if (!has_chunk_reading(editing.window.list.record(editing.index).tag, editing.window.document.kind)) return;
  QPlainTextEdit* text = make_details();
  text->setPlainText(details_text(editing.window, editing.index));
  editing.form.add_page(QObject::tr("Details"), text);
}

void add_note(Editing& editing) {
  const std::string note = chunk_note(editing.window, editing.index);
  if (!note.empty()) editing.form.add_note(to_qt(note));
  add_details(editing);
  editing.form.add_page(QObject::tr("Raw"), make_raw_page(&editing.form, editing.window, editing.index));
}

}  // namespace

Edited open_field_editor(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services,
                         Decorate decorate) {
  const ChunkTag tag = window.list.record(index).tag;
  std::vector<Field> fields = chunk_fields(window, index);
  const bool is_end = tag == tag::IEND || tag == tag::MEND;
  if (fields.empty() && !is_end) {
    services.host.show(StringId::ErrorAccessingChunk);
    return Edited::Cancelled;
  }
  const FieldValues values = read_chunk_fields(window, index);
  FormDialog dialog(editor_title(tag), chunk_topic(tag), std::move(fields), values, services.host, parent);
  Editing editing{dialog, dialog.form(), window, index, services};
  bool changed = false;
  dialog.check = [&](const FieldValues& typed) { return check_chunk_fields(window, index, typed); };
  dialog.repair = repair_chunk_fields;
  dialog.apply = [&](const FieldValues& typed) { return is_end || apply_edited(editing, typed, changed); };
  if (decorate) decorate(editing);
  add_note(editing);
  if (is_end)
    for (const auto button : {QDialogButtonBox::Cancel, QDialogButtonBox::Reset})
      dialog.buttons().button(button)->hide();
  dialog.adjustSize();
  if (dialog.exec() != QDialog::Accepted) return Edited::Cancelled;
  return changed ? Edited::Changed : Edited::Same;
}

void link_fields(Form& form, std::initializer_list<const char*> names, std::function<void()> follow) {
  QStringList watched;
  for (const char* name : names) watched << QLatin1String(name);
  QObject::connect(&form, &Form::edited, &form, [&form, watched, follow](const QString& name) {
    if (!watched.contains(name) || form.property(kFollowing).toBool()) return;
    form.setProperty(kFollowing, true);
    follow();
    form.setProperty(kFollowing, false);
  });
}

}  // namespace vellum
