#include "shell/window/result_window.h"

#include <QApplication>

namespace vellum {

bool show_result(MainWindow& main, DocumentFrame& source, StringId prefix,
                 const std::function<bool(DocumentWindow& copy, Host& host)>& work) try {
  Host& host = main.services().host;
  DocumentWindow copy = duplicate_document(source.content(), string_text(prefix));
  if (!work(copy, host)) {
    if (host.stopped()) QApplication::beep();
    return false;
  }
  copy.document.dirty = true;
  DocumentFrame* frame = main.add_document(std::move(copy));
  if (frame) frame->size_to_content();
  return frame != nullptr;
} catch (const std::bad_alloc&) {
  main.services().host.show(StringId::MemoryError);
  return false;
}

}  // namespace vellum
