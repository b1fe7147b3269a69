#include "base/late_library.h"

#include <dlfcn.h>

#include <algorithm>

namespace vellum {

LateLibraries::LateLibraries(std::span<const char* const> files) {
  for (const char* file : files) handles_.push_back(dlopen(file, RTLD_NOW));
}

bool LateLibraries::complete() const {
  return std::ranges::all_of(handles_, [](void* handle) { return handle != nullptr; });
}

void* LateLibraries::find(const char* name) const {
  for (void* handle : handles_)
    if (void* function = handle ? dlsym(handle, name) : nullptr) return function;
  return nullptr;
}

}  // namespace vellum
