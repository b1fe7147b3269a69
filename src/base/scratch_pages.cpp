#include "base/scratch_pages.h"

#include <sys/mman.h>

#include "base/huge_pages.h"

namespace vellum {
namespace {

/// Step in which memory is given back: large against the cost of the system call.
constexpr std::size_t kReleaseStep = std::size_t{4} << 20;

}  // namespace

ScratchPages::ScratchPages(std::size_t size) {
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (size == 0 || memory == MAP_FAILED) return;
  data_ = static_cast<std::uint8_t*>(memory);
  size_ = size;
  wish_for_huge_pages(memory, size);
}

ScratchPages::~ScratchPages() {
  if (data_) munmap(data_, size_);
}

void ScratchPages::release_before(std::size_t offset) {
  if (offset < released_ + kReleaseStep) return;
  const std::size_t end = offset / kReleaseStep * kReleaseStep;
  madvise(data_ + released_, end - released_, MADV_DONTNEED);
  released_ = end;
}

}  // namespace vellum
