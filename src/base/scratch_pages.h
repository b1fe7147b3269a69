// ScratchPages: a large working buffer whose memory is given back page by page while it is used up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vellum {

/// Anonymous memory from the system, zero when first touched. Used where a stage produces many bytes that the
/// next one consumes from the front: releasing what was consumed keeps one copy in memory and not two.
class ScratchPages {
 public:
  /// At least `size` bytes; empty when memory is exhausted.
  explicit ScratchPages(std::size_t size);
  ~ScratchPages();
  ScratchPages(const ScratchPages&) = delete;
  ScratchPages& operator=(const ScratchPages&) = delete;

  explicit operator bool() const { return data_ != nullptr; }
  std::span<std::uint8_t> bytes() const { return {data_, size_}; }
  /// The bytes in front of `offset` are not needed any more. Cheap to call often: it acts in large steps.
  void release_before(std::size_t offset);
  /// The whole pages inside this range are not needed any more; they would read as zeros again.
  void release(std::size_t offset, std::size_t bytes);

 private:
  std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t released_ = 0;
};

}  // namespace vellum
