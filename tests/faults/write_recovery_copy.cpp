// What the desktop's recovery does with a changed document, for tests from outside:
//   write_recovery_copy IN COPY
#include <cstdio>

#include "core/files/open_document.h"
#include "core/files/recovery_copy.h"

int main(int count, char** arguments) try {
  if (count != 3) return 2;
  vellum::DocumentWindow window;
  vellum::Host host;
  if (vellum::open_document(window, arguments[1], host) &&
      vellum::write_recovery_copy(window, arguments[2], 0, {}))
    return 0;
  std::fputs("the copy was not written\n", stderr);
  return 1;
} catch (const std::bad_alloc&) {
  std::fputs("memory is exhausted\n", stderr);
  return 1;
}
