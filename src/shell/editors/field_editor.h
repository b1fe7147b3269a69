// The editor that a chunk's fields make by themselves, and what some tags add to it.
#pragma once

#include "core/chunks/chunk_fields.h"
#include "shell/editors/chunk_editor.h"
#include "shell/forms/form_dialog.h"

namespace vellum {

/// An editor that is being set up.
struct Editing {
  FormDialog& dialog;
  Form& form;
  DocumentWindow& window;
  std::size_t index;
  Services& services;
};

/// What a tag adds to its form; null: nothing.
using Decorate = void (*)(Editing& editing);

/// Cancelled, after a message, where the payload is not laid out as fields.
Edited open_field_editor(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services,
                         Decorate decorate);

template <Decorate Add>
Edited open_fields(QWidget* parent, DocumentWindow& window, std::size_t index, Services& services) {
  return open_field_editor(parent, window, index, services, Add);
}

void decorate_header(Editing& editing);         // IHDR
void decorate_mng_header(Editing& editing);     // MHDR
void decorate_frame_control(Editing& editing);  // fcTL
void decorate_text(Editing& editing);           // tEXt, zTXt, iTXt
void decorate_time(Editing& editing);           // tIME
void decorate_gamma(Editing& editing);          // gAMA
void decorate_profile(Editing& editing);        // iCCP
void decorate_samples(Editing& editing);        // bKGD, tRNS, BACK

/// Two fields (or groups of them) that tell the same thing: `follow` runs when the user edits one of `names`,
/// and what it sets makes nothing else follow.
void link_fields(Form& form, std::initializer_list<const char*> names, std::function<void()> follow);

/// "bitDepth" offers what the chosen "colorType" allows. A depth that isn't offered stays until the color
/// type changes.
void offer_depths_of_color_type(Form& form, DocumentKind kind);

/// Keeps "rate" and "delayNum", "delayDen" of a frame's form telling the same delay.
void link_frame_rate(Form& form);

}  // namespace vellum
