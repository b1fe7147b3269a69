#include "core/model/document_notes.h"

#include <algorithm>

namespace vellum {
namespace {

// A damaged file of thousands of frames could tell as many.
constexpr std::size_t kMostNotes = 1000;

}  // namespace

void add_note(Document& document, std::string_view text) {
  std::vector<std::string>& notes = document.notes;
  if (notes.size() < kMostNotes && std::ranges::find(notes, text) == notes.end()) notes.emplace_back(text);
}

KeptNotes::KeptNotes(Document& document, Host& host) : host_(host), before_(host.note) {
  host.note = [&document, &host, before = before_](std::string_view text) {
    add_note(document, text);
    if (before)
      before(text);
    else
      host.set_status(text);
  };
}

}  // namespace vellum
