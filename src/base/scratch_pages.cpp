#include "base/scratch_pages.h"

#include <sys/mman.h>

#include <algorithm>

namespace vellum {
namespace {

/// Step in which memory is given back: large against the cost of the system call.
constexpr std::size_t kReleaseStep = std::size_t{4} << 20;

/// Below this size huge pages would mostly be padding.
constexpr std::size_t kWorthHugePages = std::size_t{4} << 20;

}  // namespace

ScratchPages::ScratchPages(std::size_t size) {
  void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (size == 0 || memory == MAP_FAILED) return;
  data_ = static_cast<std::uint8_t*>(memory);
  size_ = size;
  // A wish, for far fewer page faults; nothing happens where the system does not grant it.
  if (size >= kWorthHugePages) madvise(memory, size, MADV_HUGEPAGE);
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

void ScratchPages::release(std::size_t offset, std::size_t bytes) {
  constexpr std::size_t kPage = 4096;
  const std::size_t begin = (offset + kPage - 1) / kPage * kPage;
  const std::size_t end = (offset + bytes) / kPage * kPage;
  if (begin < end) madvise(data_ + begin, end - begin, MADV_DONTNEED);
}

}  // namespace vellum
