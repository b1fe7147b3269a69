#include "shell/editors/chunk_editor.h"

#include <algorithm>

#include "core/chunks/chunk_fields.h"
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
};

constexpr DocumentKind kAny = DocumentKind::None;

/// The first row that fits counts.
constexpr EditorRow kEditors[] = {
    // Opaque streams of an MNG bring chunks of a PNG along as raw bytes.
    {DocumentKind::MING, tag::IHDR, edit_unknown},
    {DocumentKind::MING, tag::IEND, edit_unknown},
    {DocumentKind::MING, tag::PLTE, edit_unknown},
    {DocumentKind::MING, tag::bKGD, edit_unknown},
    {DocumentKind::MING, tag::tRNS, edit_unknown},
    {kAny, tag::IHDR, open_fields<decorate_header>},
    {DocumentKind::MING, tag::MHDR, open_fields<decorate_mng_header>},
    {DocumentKind::APNG, tag::acTL, open_fields<nullptr>},
    {DocumentKind::APNG, tag::fcTL, open_fields<decorate_frame_control>},
    {kAny, tag::tEXt, open_fields<decorate_text>},
    {kAny, tag::zTXt, open_fields<decorate_text>},
    {kAny, tag::iTXt, open_fields<decorate_text>},
    {kAny, tag::tIME, open_fields<decorate_time>},
    {kAny, tag::gAMA, open_fields<decorate_gamma>},
    {kAny, tag::bKGD, open_fields<decorate_samples>},
    {kAny, tag::tRNS, edit_transparency},
    {kAny, tag::pHYs, open_fields<nullptr>},
    {kAny, tag::sRGB, open_fields<nullptr>},
    {kAny, tag::cHRM, open_fields<nullptr>},
    {kAny, tag::cICP, open_fields<nullptr>},
    {kAny, tag::mDCV, open_fields<nullptr>},
    {kAny, tag::cLLI, open_fields<nullptr>},
    {kAny, tag::iCCP, open_fields<decorate_profile>},
    {kAny, tag::sBIT, open_fields<nullptr>},
    {kAny, tag::hIST, open_fields<nullptr>},
    {kAny, tag::sPLT, open_fields<nullptr>},
    {kAny, tag::eXIf, open_fields<nullptr>},
    {kAny, tag::PLTE, edit_palette},
    {DocumentKind::MING, tag::BACK, open_fields<decorate_samples>},
    {DocumentKind::MING, tag::TERM, open_fields<nullptr>},
    {DocumentKind::MING, tag::LOOP, open_fields<nullptr>},
    {DocumentKind::MING, tag::ENDL, open_fields<nullptr>},
    {DocumentKind::MING, tag::FRAM, open_fields<nullptr>},
    {DocumentKind::MING, tag::DEFI, open_fields<nullptr>},
    {DocumentKind::MING, tag::MOVE, open_fields<nullptr>},
    {DocumentKind::MING, tag::SHOW, open_fields<nullptr>},
    {DocumentKind::WEBP, tag::WEBH, open_fields<nullptr>},
    {kAny, tag::IEND, open_fields<nullptr>},
    {DocumentKind::MING, tag::MEND, open_fields<nullptr>},
};

}  // namespace

OpenEditor find_editor(DocumentKind kind, ChunkTag tag) {
  const auto row = std::ranges::find_if(kEditors, [=](const EditorRow& editor) {
    return editor.tag == tag && (editor.kind == kAny || editor.kind == kind);
  });
  if (row != std::end(kEditors)) return row->open;
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

}  // namespace vellum
