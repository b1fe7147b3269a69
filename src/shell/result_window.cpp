#include "shell/result_window.h"

#include <QApplication>

namespace vellum {
namespace {

enum class Outcome { Made, Failed, Stopped };

Outcome run(DocumentWindow& copy, Host& host, const std::function<bool(DocumentWindow&, Host&)>& work) {
  const Progress progress(host, string_text(StringId::BuildingCaption));
  if (work(copy, host)) return Outcome::Made;
  return host.stopped() ? Outcome::Stopped : Outcome::Failed;
}

}  // namespace

bool show_result(MainWindow& main, DocumentFrame& source, StringId prefix,
                 const std::function<bool(DocumentWindow& copy, Host& host)>& work) try {
  Host& host = main.services().host;
  DocumentWindow copy = duplicate_document(source.content(), string_text(prefix));
  const Outcome outcome = run(copy, host, work);
  if (outcome == Outcome::Stopped) QApplication::beep();
  if (outcome == Outcome::Failed) host.show(StringId::ErrorAccessingChunk, {}, host.take_fault());
  if (outcome != Outcome::Made) return false;
  copy.document.dirty = true;
  DocumentFrame* frame = main.add_document(std::move(copy));
  if (frame) frame->size_to_content();
  return frame != nullptr;
} catch (const std::bad_alloc&) {
  main.services().host.show(StringId::MemoryError);
  return false;
}

}  // namespace vellum
