// Notes on a document: what reading, writing or an edit changed, left out or found missing. They stay until
// someone has dismissed them.
#pragma once

#include "base/host.h"
#include "core/model/document.h"

namespace vellum {

/// Adds a note, once: one that is there already is not repeated.
void add_note(Document& document, std::string_view text);

/// For as long as it lives, notes that the host is told go to the document too.
class KeptNotes {
 public:
  KeptNotes(Document& document, Host& host);
  ~KeptNotes() { host_.note = std::move(before_); }
  KeptNotes(const KeptNotes&) = delete;
  KeptNotes& operator=(const KeptNotes&) = delete;

 private:
  Host& host_;
  std::function<void(std::string_view)> before_;
};

}  // namespace vellum
