#include "base/limits.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>

#include "base/settings.h"
#include "base/translation.h"

namespace vellum {
namespace {

constexpr std::uint64_t kUnknown = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kMostMegabytes = 1 << 20;
/// Below this nobody asks the system: it takes longer than making the picture.
constexpr std::uint64_t kWorthAsking = std::uint64_t{16} << 20;

constexpr const char* kTooMuchMemory =
    "it would take more than half of the memory that is free (the setting MaximumDecodedMegabytes lifts "
    "this)";
constexpr const char* kTooManyMegabytes = "it would take more memory than MaximumDecodedMegabytes allows";
constexpr const char* kImplausible =
    "it asks for more than 1000 times its size (the setting MaximumDecodedMegabytes lifts this)";

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The number behind `name` in a file of the system, or its first one for an empty name.
std::uint64_t system_number(const char* path, const char* name) {
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "re"));
  char line[128];
  while (file && std::fgets(line, sizeof line, file.get())) {
    const std::size_t length = std::strlen(name);
    unsigned long long number = 0;
    if (std::strncmp(line, name, length) == 0)
      return std::sscanf(line + length, "%llu", &number) == 1 ? number : kUnknown;
  }
  return kUnknown;
}

/// Of the machine, and of a container that has less.
std::uint64_t free_memory() {
  const std::uint64_t kilobytes = system_number("/proc/meminfo", "MemAvailable:");
  const std::uint64_t machine = kilobytes == kUnknown ? kUnknown : kilobytes << 10;
  const std::uint64_t most = system_number("/sys/fs/cgroup/memory.max", "");
  const std::uint64_t used = system_number("/sys/fs/cgroup/memory.current", "");
  if (most == kUnknown || used == kUnknown) return machine;
  return std::min(machine, most > used ? most - used : 0);
}

std::uint64_t lifted_to() {
  const auto megabytes = static_cast<std::uint64_t>(std::max(settings::MaximumDecodedMegabytes, 0));
  return std::min(megabytes, kMostMegabytes) << 20;
}

}  // namespace

std::uint64_t maximum_decoded_bytes() {
  if (const std::uint64_t lifted = lifted_to()) return lifted;
  const std::uint64_t free = free_memory();
  return free == kUnknown ? kMaximumPictureBytes : free / 2;
}

const char* memory_fault(std::uint64_t bytes) {
  const std::uint64_t lifted = lifted_to();
  if (bytes <= kWorthAsking && lifted == 0) return nullptr;
  if (bytes <= maximum_decoded_bytes()) return nullptr;
  return translated(lifted != 0 ? kTooManyMegabytes : kTooMuchMemory);
}

const char* decoding_fault(std::uint64_t bytes, std::uint64_t file_bytes) {
  if (bytes > kUnquestionedBytes && bytes / kMaximumExpansion > file_bytes && lifted_to() == 0)
    return translated(kImplausible);
  return memory_fault(bytes);
}

}  // namespace vellum
