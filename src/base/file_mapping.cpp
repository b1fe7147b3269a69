#include "base/file_mapping.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <mutex>

namespace vellum {
namespace {

/// A mapping that the signal handler knows. Only atomics: a handler takes no locks.
struct Watch {
  std::atomic<bool> taken = false;
  std::atomic<std::uintptr_t> begin = 0, end = 0;
  std::atomic<bool> damaged = false;
};

constexpr std::size_t kMostWatched = 256;
std::array<Watch, kMostWatched> watches;
struct sigaction handler_before {};

const std::uintptr_t kPage = static_cast<std::uintptr_t>(std::max(sysconf(_SC_PAGESIZE), 1L));

/// A page of a mapping that can't be read becomes a page of zeros. All other faults are as they were.
void on_bus_error(int signal, siginfo_t* info, void* context) {
  const auto at = reinterpret_cast<std::uintptr_t>(info->si_addr);
  for (Watch& watch : watches) {
    if (at < watch.begin || at >= watch.end) continue;
    void* page = static_cast<char*>(info->si_addr) - at % kPage;
    if (mmap(page, kPage, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == MAP_FAILED) break;
    watch.damaged = true;
    return;
  }
  if (handler_before.sa_flags & SA_SIGINFO) {
    handler_before.sa_sigaction(signal, info, context);
  } else if (handler_before.sa_handler != SIG_DFL && handler_before.sa_handler != SIG_IGN) {
    handler_before.sa_handler(signal);
  } else {
    ::signal(signal, SIG_DFL);  // the access that failed is tried again, and ends the program
  }
}

void install_handler() {
  static std::once_flag once;
  std::call_once(once, [] {
    struct sigaction action {};
    action.sa_sigaction = on_bus_error;
    action.sa_flags = SA_SIGINFO | SA_RESTART | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    sigaction(SIGBUS, &action, &handler_before);
  });
}

/// Has the system read the beginning of a file from the disk at once, while the caller goes on: pages of a
/// mapping come in small steps otherwise, each of which is waited for.
void read_ahead(int descriptor) {
  constexpr off_t kMost = off_t{256} << 20;
  posix_fadvise(descriptor, 0, kMost, POSIX_FADV_WILLNEED);
}

/// The number of a watch that is free; -1 where there is none.
int take_watch() {
  for (std::size_t i = 0; i < watches.size(); ++i)
    if (!watches[i].taken.exchange(true)) return static_cast<int>(i);
  return -1;
}

}  // namespace

std::shared_ptr<const FileMapping> FileMapping::of(int descriptor) {
  const std::shared_ptr<FileMapping> mapping(new FileMapping);
  if (fstat(descriptor, &mapping->status_) != 0 || mapping->status_.st_size <= 0) return nullptr;
  mapping->descriptor_ = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
  mapping->watch_ = take_watch();
  if (mapping->descriptor_ < 0 || mapping->watch_ < 0) return nullptr;
  const auto size = static_cast<std::size_t>(mapping->status_.st_size);
  read_ahead(mapping->descriptor_);
  void* memory = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, mapping->descriptor_, 0);
  if (memory == MAP_FAILED) return nullptr;
  mapping->bytes_ = {static_cast<const std::uint8_t*>(memory), size};
  install_handler();
  Watch& watch = watches[static_cast<std::size_t>(mapping->watch_)];
  watch.damaged = false;
  watch.begin = reinterpret_cast<std::uintptr_t>(memory);
  watch.end = watch.begin + (size + kPage - 1) / kPage * kPage;
  return mapping;
}

FileMapping::~FileMapping() {
  if (watch_ >= 0) {
    Watch& watch = watches[static_cast<std::size_t>(watch_)];
    watch.end = watch.begin = 0;
    watch.taken = false;
  }
  if (!bytes_.empty()) munmap(const_cast<std::uint8_t*>(bytes_.data()), bytes_.size());
  if (descriptor_ >= 0) close(descriptor_);
}

bool FileMapping::intact() const {
  struct stat now {};
  return !watches[static_cast<std::size_t>(watch_)].damaged && fstat(descriptor_, &now) == 0 &&
         now.st_size == status_.st_size && now.st_mtim.tv_sec == status_.st_mtim.tv_sec &&
         now.st_mtim.tv_nsec == status_.st_mtim.tv_nsec;
}

}  // namespace vellum
