#include "base/huge_pages.h"

#include <sys/mman.h>

#include <cstdint>

namespace vellum {

void wish_for_huge_pages(void* memory, std::size_t bytes) {
  constexpr std::uintptr_t kPage = 4096;
  constexpr std::size_t kWorthwhile = std::size_t{4} << 20;
  if (bytes < kWorthwhile) return;
  const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + kPage - 1) / kPage * kPage;
  const auto end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) / kPage * kPage;
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

}  // namespace vellum
