// The editor that a chunk's fields make by themselves, and what some tags add to it.
#pragma once

#include "core/chunks/chunk_fields.h"
#include "shell/editors/chunk_editor.h"
#include "shell/forms/form_dialog.h"

class QPlainTextEdit;

namespace vellum {

/// A form of a chunk's fields that is being set up, in a dialog or elsewhere.
struct Editing {
  QWidget& owner;  ///< what it stands in: dialogs that it opens lie over this
  Form& form;
  DocumentWindow& window;
  std::size_t index;
  Services& services;
};

/// What a tag adds to its form; null: nothing.
using Decorate = void (*)(Editing& editing);
/// What the editor of an entry adds.
Decorate find_decorate(const DocumentWindow& window, std::size_t index);

/// Puts checked values into the entry, as OK does: the user is asked where they convert images. False where
/// nothing was taken, after a message or by the user's choice; `changed` says whether anything differs now.
bool apply_edited(Editing& editing, const FieldValues& values, bool& changed);

/// What else the bytes of an entry say, for tags that have a reading.
QPlainTextEdit* make_details();
QString details_text(const DocumentWindow& window, std::size_t index);

/// Cancelled, after a message, where the payload is not laid out as fields.
Edited open_field_editor(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services,
                         Decorate decorate);

template <Decorate Add>
Edited open_fields(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services) {
  return open_field_editor(parent, window, index, services, Add);
}

void decorate_header(Editing& editing);         // IHDR
void decorate_mng_header(Editing& editing);     // MHDR
void decorate_frame_control(Editing& editing);  // fcTL, images
void decorate_text(Editing& editing);           // tEXt, zTXt, iTXt
void decorate_time(Editing& editing);           // tIME
void decorate_gamma(Editing& editing);          // gAMA
void decorate_profile(Editing& editing);        // iCCP
void decorate_samples(Editing& editing);        // bKGD, tRNS, BACK

/// Two fields (or groups of them) that tell the same thing: `follow` runs when the user edits one of `names`,
/// and what it sets makes nothing else follow.
void link_fields(Form& form, std::initializer_list<const char*> names, std::function<void()> follow);

/// The property of a form that is true while such a field is set, or all fields are: then nothing follows.
inline constexpr const char* kFollowing = "following";

/// "bitDepth" offers what the chosen "colorType" allows. A depth that isn't offered stays until the color
/// type changes.
void offer_depths_of_color_type(Form& form, DocumentKind kind);

/// Keeps "rate" and "delayNum", "delayDen" of a frame's form telling the same delay.
void link_frame_rate(Form& form);

}  // namespace vellum
