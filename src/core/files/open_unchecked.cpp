#include "core/files/open_unchecked.h"

#include "core/files/open_document.h"

namespace vellum {

bool open_unchecked(DocumentWindow& window, const std::filesystem::path& path, UncheckedImages& unchecked,
                    const Host& host) {
  bool told = false;
  Host listener;
  listener.message = [&](const Message&) { told = true; };
  listener.ask = [&](const Message&, bool) {
    told = true;
    return Answer::Cancel;
  };
  listener.choose = [&](Choice&) {
    told = true;
    return false;
  };
  listener.note = [&](std::string_view) { told = true; };
  listener.stop_requested = host.stop_requested;
  return open_document(window, path, listener, &unchecked) && !told;
}

}  // namespace vellum
