#include "image/drawing_library.h"

#include <stdexcept>
#include <string>

namespace vellum {

void* drawing_function(const char* name) {
  // It brings the others.
  static constexpr const char* kFiles[] = {"libpangocairo-1.0.so.0"};
  static const LateLibraries loaded(kFiles);
  if (void* function = loaded.find(name)) return function;
  throw std::runtime_error(std::string(kFiles[0]) + " is not there, or has no " + name);
}

}  // namespace vellum
