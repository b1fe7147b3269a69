#include "shell/editors/chunk_editor.h"

#include <algorithm>

#include "core/chunks/chunk_fields.h"
#include "core/edit/edit_closing.h"
#include "shell/editors/edit_image.h"
#include "shell/editors/edit_palette.h"
#include "shell/editors/edit_transparency.h"
#include "shell/editors/edit_unknown.h"
#include "shell/editors/field_editor.h"

namespace vellum {
namespace {

struct EditorRow {
  DocumentKind kind;  ///< None: every kind that has the tag
  ChunkTag tag;
  OpenEditor open;
  Decorate decorate = nullptr;
};

template <Decorate Add>
constexpr EditorRow fields(DocumentKind kind, ChunkTag tag) {
  return {kind, tag, open_fields<Add>, Add};
}

constexpr DocumentKind kAny = DocumentKind::None;

/// The first row that fits counts.
constexpr EditorRow kEditors[] = {
    // Opaque streams of an MNG bring chunks of a PNG along as raw bytes.
    {DocumentKind::MING, tag::IHDR, edit_unknown},
    {DocumentKind::MING, tag::IEND, edit_unknown},
    {DocumentKind::MING, tag::PLTE, edit_unknown},
    {DocumentKind::MING, tag::bKGD, edit_unknown},
    {DocumentKind::MING, tag::tRNS, edit_unknown},
    fields<decorate_header>(kAny, tag::IHDR),
    fields<decorate_mng_header>(DocumentKind::MING, tag::MHDR),
    fields<nullptr>(DocumentKind::APNG, tag::acTL),
    fields<decorate_frame_control>(DocumentKind::APNG, tag::fcTL),
    fields<decorate_text>(kAny, tag::tEXt),
    fields<decorate_text>(kAny, tag::zTXt),
    fields<decorate_text>(kAny, tag::iTXt),
    fields<decorate_time>(kAny, tag::tIME),
    fields<decorate_gamma>(kAny, tag::gAMA),
    fields<decorate_samples>(kAny, tag::bKGD),
    {kAny, tag::tRNS, edit_transparency},
    fields<nullptr>(kAny, tag::pHYs),
    fields<nullptr>(kAny, tag::sRGB),
    fields<nullptr>(kAny, tag::cHRM),
    fields<nullptr>(kAny, tag::cICP),
    fields<nullptr>(kAny, tag::mDCV),
    fields<nullptr>(kAny, tag::cLLI),
    fields<decorate_profile>(kAny, tag::iCCP),
    fields<nullptr>(kAny, tag::sBIT),
    fields<nullptr>(kAny, tag::hIST),
    fields<nullptr>(kAny, tag::sPLT),
    fields<nullptr>(kAny, tag::eXIf),
    {kAny, tag::PLTE, edit_palette},
    fields<decorate_samples>(DocumentKind::MING, tag::BACK),
    fields<nullptr>(DocumentKind::MING, tag::TERM),
    fields<nullptr>(DocumentKind::MING, tag::LOOP),
    fields<nullptr>(DocumentKind::MING, tag::ENDL),
    fields<nullptr>(DocumentKind::MING, tag::FRAM),
    fields<nullptr>(DocumentKind::MING, tag::DEFI),
    fields<nullptr>(DocumentKind::MING, tag::MOVE),
    fields<nullptr>(DocumentKind::MING, tag::SHOW),
    fields<nullptr>(DocumentKind::WEBP, tag::WEBH),
    fields<nullptr>(kAny, tag::IEND),
    fields<nullptr>(DocumentKind::MING, tag::MEND),
};

const EditorRow* find_row(DocumentKind kind, ChunkTag tag) {
  const auto row = std::ranges::find_if(kEditors, [=](const EditorRow& editor) {
    return editor.tag == tag && (editor.kind == kAny || editor.kind == kind);
  });
  return row == std::end(kEditors) ? nullptr : row;
}

}  // namespace

OpenEditor find_editor(DocumentKind kind, ChunkTag tag) {
  if (const EditorRow* row = find_row(kind, tag)) return row->open;
  return is_image_entry(kind, tag) ? edit_image : edit_unknown;
}

bool has_own_editor(ChunkTag tag) {
  static constexpr ChunkTag images[] = {tag::IDAT, tag::fdAT, tag::PNGI, tag::WEBI};
  const auto knows = [tag](const EditorRow& row) { return row.tag == tag && row.open != edit_unknown; };
  return std::ranges::find(images, tag) != std::end(images) || std::ranges::any_of(kEditors, knows);
}

OpenEditor find_editor(const DocumentWindow& window, std::size_t index) {
  const ChunkTag tag = window.list.record(index).tag;
  const OpenEditor open = find_editor(window.document.kind, tag);
  const bool image = is_image_entry(window.document.kind, tag);
  const bool has_values = image || tag == tag::IEND || tag == tag::MEND || tag == tag::PLTE ||
                          tag == tag::tRNS || !chunk_fields(window, index).empty();
  return has_values ? open : edit_unknown;
}

Decorate find_decorate(const DocumentWindow& window, std::size_t index) {
  if (chunk_fields(window, index).empty()) return nullptr;
  const ChunkTag tag = window.list.record(index).tag;
  if (const EditorRow* row = find_row(window.document.kind, tag)) return row->decorate;
  return is_image_entry(window.document.kind, tag) ? decorate_frame_control : nullptr;
}

void close_entry_edit(DocumentWindow& window, ChunkTag tag) {
  const DocumentKind kind = window.document.kind;
  // What the header of an MNG counts may have changed with these.
  finish_edit(window, is_counted(kind, tag) || (kind == DocumentKind::MING && tag == tag::FRAM));
}

}  // namespace vellum
