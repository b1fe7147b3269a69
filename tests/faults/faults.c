// Preloaded into a program, fails one of its calls to the system, or writes down what it does to files.
//
//   VELLUM_FAULT=KIND:N   the Nth call of a kind fails; "N+" that one and all behind it. Kinds: open, read,
//   write,
//                         fsync, rename, close, mmap, malloc
//   VELLUM_FAULT_ERRNO    with this number instead of the kind's own
//   VELLUM_FAULT_COUNTS   a file that gets "KIND CALLS" for each kind when the program ends
//   VELLUM_FAULT_TRACE    a file that gets a line for everything that changes files below VELLUM_FAULT_FOLDER
//
// Calls count from main on, and none of the three standard streams. Whoever closes a file has closed it even
// where that fails; a write that fails has written half of its bytes.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

enum Kind { kOpen, kRead, kWrite, kFsync, kRename, kClose, kMmap, kMalloc, kKinds };
static const char* const kNames[kKinds] = {"open",   "read",  "write", "fsync",
                                           "rename", "close", "mmap",  "malloc"};
static const int kErrors[kKinds] = {EMFILE, EIO, ENOSPC, EIO, EIO, EIO, ENOMEM, ENOMEM};

static atomic_long calls[kKinds];
static atomic_int started;
static int failing = -1, onwards, error_number;
static long nth;
static int trace = -1;
static char folder[PATH_MAX];

// What glibc calls its own; asking for them by name would need memory.
extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);
extern void* __libc_memalign(size_t, size_t);

#define REAL(name)               \
  static __typeof__(&name) real; \
  if (!real) real = (__typeof__(&name))dlsym(RTLD_NEXT, #name)

static int fails(enum Kind kind) {
  if (!started) return 0;
  const long call = ++calls[kind];
  if (failing != (int)kind || call < nth || (call > nth && !onwards)) return 0;
  errno = error_number ? error_number : kErrors[kind];
  return 1;
}

// --- what is written down: paths are told below the folder, data as hexadecimal digits ---

static void tell(const char* text, size_t length) {
  static ssize_t (*real)(int, const void*, size_t);
  if (!real) real = (ssize_t(*)(int, const void*, size_t))dlsym(RTLD_NEXT, "write");
  while (length > 0) {
    const ssize_t put = real(trace, text, length);
    if (put <= 0) return;
    text += put;
    length -= (size_t)put;
  }
}

static int is_inside(const char* path) {
  const size_t length = strlen(folder);
  return trace >= 0 && strncmp(path, folder, length) == 0 && (path[length] == '/' || path[length] == 0);
}

static void tell_paths(const char* what, const char* path, const char* other) {
  char line[3 * PATH_MAX];
  const int saved = errno;
  const char* below = path + strlen(folder) + (path[strlen(folder)] == '/');
  const int length = snprintf(line, sizeof line, "%s\t%s\t%s\n", what, below,
                              other ? other + strlen(folder) + (other[strlen(folder)] == '/') : "");
  if (length > 0) tell(line, (size_t)length);
  errno = saved;
}

static int path_of(int descriptor, char* path) {
  char link[64];
  snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(link, path, PATH_MAX - 1);
  if (length < 0) return 0;
  path[length] = 0;
  return is_inside(path);
}

/// `at`: where the bytes stand in the file.
static void tell_data(int descriptor, const unsigned char* bytes, size_t count, off_t at) {
  char path[PATH_MAX];
  if (trace < 0 || !path_of(descriptor, path)) return;
  char* line = __libc_malloc(2 * count + PATH_MAX + 64);
  if (!line) return;
  size_t length = (size_t)sprintf(line, "write\t%s\t%lld\t", path + strlen(folder) + 1, (long long)at);
  for (size_t i = 0; i < count; ++i) length += (size_t)sprintf(line + length, "%02x", bytes[i]);
  line[length++] = '\n';
  tell(line, length);
  free(line);
}

// --- the calls ---

static int opens(int (*real)(const char*, int, ...), const char* path, int flags, mode_t mode) {
  if (fails(kOpen)) return -1;
  const int descriptor = real(path, flags, mode);
  char full[PATH_MAX];
  if (descriptor >= 0 && trace >= 0 && (flags & (O_CREAT | O_TRUNC)) && path_of(descriptor, full))
    tell_paths(flags & O_TRUNC ? "truncate" : "create", full, NULL);
  return descriptor;
}

#define OPENS(name)                                                               \
  int name(const char* path, int flags, ...) {                                    \
    va_list more;                                                                 \
    va_start(more, flags);                                                        \
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(more, mode_t) : 0; \
    va_end(more);                                                                 \
    REAL(name);                                                                   \
    return opens((int (*)(const char*, int, ...))real, path, flags, mode);        \
  }
OPENS(open)
OPENS(open64)

// What the compiler makes of calls whose sizes or flags it knows.
int __open_2(const char* path, int flags) { return open(path, flags); }
int __open64_2(const char* path, int flags) { return open64(path, flags); }

#define MAKES(name)                                                                                   \
  int name(char* pattern, int flags) {                                                                \
    REAL(name);                                                                                       \
    if (fails(kOpen)) return -1;                                                                      \
    const int descriptor = real(pattern, flags);                                                      \
    char full[PATH_MAX];                                                                              \
    if (descriptor >= 0 && trace >= 0 && path_of(descriptor, full)) tell_paths("create", full, NULL); \
    return descriptor;                                                                                \
  }
MAKES(mkostemp)
MAKES(mkostemp64)

ssize_t read(int descriptor, void* bytes, size_t count) {
  REAL(read);
  return descriptor > 2 && fails(kRead) ? -1 : real(descriptor, bytes, count);
}

ssize_t __read_chk(int descriptor, void* bytes, size_t count, size_t room) {
  return count > room ? -1 : read(descriptor, bytes, count);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
  REAL(write);
  if (descriptor <= 2) return real(descriptor, bytes, count);
  if (fails(kWrite)) {
    const int error = errno;
    const ssize_t half = real(descriptor, bytes, count / 2);
    errno = error;
    return half < 0 ? half : -1;
  }
  const ssize_t put = real(descriptor, bytes, count);
  if (put > 0) tell_data(descriptor, bytes, (size_t)put, lseek(descriptor, 0, SEEK_CUR) - (off_t)put);
  return put;
}

#define WRITES_AT(name)                                                               \
  ssize_t name(int descriptor, const void* bytes, size_t count, __off_t at) {         \
    REAL(name);                                                                       \
    if (fails(kWrite)) {                                                              \
      const int error = errno;                                                        \
      const ssize_t half = real(descriptor, bytes, count / 2, at);                    \
      errno = error;                                                                  \
      return half < 0 ? half : -1;                                                    \
    }                                                                                 \
    const ssize_t put = real(descriptor, bytes, count, at);                           \
    if (put > 0) tell_data(descriptor, (const unsigned char*)bytes, (size_t)put, at); \
    return put;                                                                       \
  }
WRITES_AT(pwrite)
WRITES_AT(pwrite64)

#define SYNCS(name)                                                              \
  int name(int descriptor) {                                                     \
    REAL(name);                                                                  \
    if (fails(kFsync)) return -1;                                                \
    char path[PATH_MAX];                                                         \
    if (trace >= 0 && path_of(descriptor, path)) tell_paths("sync", path, NULL); \
    return real(descriptor);                                                     \
  }
SYNCS(fsync)
SYNCS(fdatasync)

int rename(const char* from, const char* to) {
  REAL(rename);
  if (fails(kRename)) return -1;
  const int result = real(from, to);
  if (result == 0 && is_inside(from) && is_inside(to)) tell_paths("rename", from, to);
  return result;
}

int unlink(const char* path) {
  REAL(unlink);
  const int result = real(path);
  if (result == 0 && is_inside(path)) tell_paths("unlink", path, NULL);
  return result;
}

int close(int descriptor) {
  REAL(close);
  if (descriptor <= 2 || !fails(kClose)) return real(descriptor);
  const int error = errno;
  real(descriptor);
  errno = error;
  return -1;
}

#define MAPS(name)                                                                               \
  void* name(void* at, size_t length, int protection, int flags, int descriptor, off_t offset) { \
    REAL(name);                                                                                  \
    return fails(kMmap) ? MAP_FAILED : real(at, length, protection, flags, descriptor, offset);  \
  }
MAPS(mmap)
MAPS(mmap64)

void* malloc(size_t size) { return fails(kMalloc) ? NULL : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return fails(kMalloc) ? NULL : __libc_calloc(count, size); }
void* realloc(void* block, size_t size) { return fails(kMalloc) ? NULL : __libc_realloc(block, size); }
void* aligned_alloc(size_t alignment, size_t size) {
  return fails(kMalloc) ? NULL : __libc_memalign(alignment, size);
}
int posix_memalign(void** block, size_t alignment, size_t size) {
  if (fails(kMalloc)) return ENOMEM;
  *block = __libc_memalign(alignment, size);
  return *block ? 0 : ENOMEM;
}

// --- beginning and end ---

static void read_order(void) {
  const char* fault = getenv("VELLUM_FAULT");
  const char* colon = fault ? strchr(fault, ':') : NULL;
  for (int kind = 0; colon && kind < kKinds; ++kind)
    if (strlen(kNames[kind]) == (size_t)(colon - fault) &&
        strncmp(fault, kNames[kind], (size_t)(colon - fault)) == 0)
      failing = kind;
  if (colon) {
    nth = atol(colon + 1);
    onwards = strchr(colon, '+') != NULL;
  }
  const char* number = getenv("VELLUM_FAULT_ERRNO");
  error_number = number ? atoi(number) : 0;
  const char* path = getenv("VELLUM_FAULT_TRACE");
  const char* below = getenv("VELLUM_FAULT_FOLDER");
  if (path && below && realpath(below, folder))
    trace = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

__attribute__((destructor)) static void write_counts(void) {
  started = 0;
  const char* path = getenv("VELLUM_FAULT_COUNTS");
  FILE* file = path ? fopen(path, "w") : NULL;
  for (int kind = 0; file && kind < kKinds; ++kind) fprintf(file, "%s %ld\n", kNames[kind], calls[kind]);
  if (file) fclose(file);
}

static int (*real_main)(int, char**, char**);
static int counted_main(int count, char** arguments, char** environment) {
  read_order();
  started = 1;
  return real_main(count, arguments, environment);
}

typedef int (*Start)(int (*)(int, char**, char**), int, char**, void (*)(void), void (*)(void),
                     void (*)(void), void*);
int __libc_start_main(int (*main_function)(int, char**, char**), int count, char** arguments,
                      void (*init)(void), void (*fini)(void), void (*rtld_fini)(void), void* stack_end) {
  real_main = main_function;
  const Start real = (Start)dlsym(RTLD_NEXT, "__libc_start_main");
  return real(counted_main, count, arguments, init, fini, rtld_fini, stack_end);
}
