#include "shell/window/lend.h"

#include "shell/window/main_window.h"

namespace vellum {

std::vector<LentDocument> open_documents(MainWindow& main) {
  std::vector<LentDocument> documents;
  for (DocumentFrame* frame : main.area().documents()) {
    const std::string name = frame->document().fileName.filename().string();
    LentDocument lent{"[ " + name + " ]", {frame->document(), frame->content().list, {}, {}}};
    for (int number = 2; std::ranges::find(documents, lent.name, &LentDocument::name) != documents.end();
         ++number)
      lent.name = "[ " + name + " (" + std::to_string(number) + ") ]";
    documents.push_back(std::move(lent));
  }
  return documents;
}

}  // namespace vellum
