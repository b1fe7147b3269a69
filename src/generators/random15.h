// Random numbers of 15 bits that are the same on every machine.
#pragma once

#include <cstdint>

namespace vellum {

class Random15 {
 public:
  explicit Random15(std::uint32_t seed) : state_(seed) {}

  /// 0 to 32767.
  std::uint32_t next() {
    state_ = state_ * kFactor + kTerm;
    return state_ >> 16 & 0x7FFF;
  }
  /// As so many calls of `next`, in a time that grows with their number of digits: squares of one step are
  /// two steps, four, and so on.
  void skip(std::uint64_t numbers) {
    std::uint32_t factor = kFactor, term = kTerm;
    for (; numbers != 0; numbers >>= 1) {
      if (numbers & 1) state_ = state_ * factor + term;
      term *= factor + 1;
      factor *= factor;
    }
  }

 private:
  static constexpr std::uint32_t kFactor = 214013, kTerm = 2531011;
  std::uint32_t state_;
};

}  // namespace vellum
