#include "exchange/as_animated_png.h"

#include "core/files/save_document.h"
#include "operations/convert_kind.h"

namespace vellum {

bool write_as_animated_png(const DocumentWindow& window, const Sink& sink, Host& host) {
  DocumentWindow made{window.document, window.list, {}};
  const DocumentKind kind = window.document.kind;
  const bool is_png = kind == DocumentKind::APNG || kind == DocumentKind::PING;
  if (!is_png) {
    made = {};
    made.document.fileName = window.document.fileName;
    if (!convert_kind(window, made, {DocumentKind::APNG, false}, host)) return false;
  }
  return write_document(made, made.document.kind, sink, save_options(), host) == WriteResult::Done;
}

}  // namespace vellum
