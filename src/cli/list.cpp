#include <cstdio>

#include "cli/command.h"
#include "cli/document_json.h"
#include "core/files/open_document.h"
#include "core/model/chunk_description.h"

namespace vellum::cli {
namespace {

struct ListOptions {
  std::string file;
  bool json = false;
};

/// The rows as the window draws them, the text in a column of its own.
void print_rows(const ChunkList& list) {
  std::size_t widest = 0;
  for (std::size_t i = 0; i < list.size(); ++i)
    widest = std::max(widest, row_text(i, list.record(i).description).label.size());
  for (std::size_t i = 0; i < list.size(); ++i) {
    const RowText row = row_text(i, list.record(i).description);
    std::printf("%-*s %s\n", static_cast<int>(widest), row.label.c_str(), row.text.c_str());
  }
}

int run_list(const ListOptions& options, Host& host) {
  DocumentWindow window;
  if (!open_document(window, options.file, host)) return kFailed;
  if (options.json)
    std::puts(document_json(window).c_str());
  else
    print_rows(window.list);
  return std::fflush(stdout) == 0 ? kDone : kFailed;
}

}  // namespace

Run prepare_list(CLI::App& app) {
  const auto options = std::make_shared<ListOptions>();
  app.add_option("FILE", options->file, "A PNG, animated PNG, MNG or WebP")->required();
  app.add_flag("--json", options->json, "All that is known of each entry, as JSON");
  return [options](Host& host) { return run_list(*options, host); };
}

}  // namespace vellum::cli
