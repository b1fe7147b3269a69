// Shared libraries that are loaded when something of them is called for the first time: each one costs every
// start of a program that is linked with it.
#pragma once

#include <atomic>
#include <span>
#include <vector>

namespace vellum {

class LateLibraries {
 public:
  /// Loads them, with those that they want. They stay.
  explicit LateLibraries(std::span<const char* const> files);
  /// Whether all are there.
  bool complete() const;
  /// A function of one of them; null where there is none of this name.
  void* find(const char* name) const;

 private:
  std::vector<void*> handles_;
};

/// A function of such libraries, to be declared under its own name inside a namespace, where calls find it in
/// front of what a header of the library declares. `kFind` tells where it is, at the first call.
template <class Function, void* (*kFind)(const char* name)>
struct LateFunction;
template <class Result, class... Arguments, void* (*kFind)(const char* name)>
struct LateFunction<Result(Arguments...), kFind> {
  const char* name;
  std::atomic<Result (*)(Arguments...)> found{nullptr};

  Result operator()(Arguments... arguments) {
    auto* function = found.load(std::memory_order_relaxed);
    if (!function) {
      function = reinterpret_cast<Result (*)(Arguments...)>(kFind(name));
      found.store(function, std::memory_order_relaxed);
    }
    return function(arguments...);
  }
};

#define VELLUM_LATE_FUNCTION(find, name) \
  inline constinit LateFunction<decltype(::name), find> name { #name }

}  // namespace vellum
