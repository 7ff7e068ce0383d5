// Loaded before a program, makes functions of the C library fail as the environment says.
//
//   FAIL_ALLOCATION=N   the allocation with that number, from 0, fails
//   FAIL_READ=N         the read of a file with that number fails
//   INTERRUPT_READS=1   every second read is interrupted
//   SLEEP_IN_FSYNC=N    waits so many seconds before a file is written out
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace {

long Setting(const char* name) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::atol(text) : -1;
}

bool FailsNow() {
  static long left = Setting("FAIL_ALLOCATION");
  if (left < 0 || left-- != 0) return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) { return FailsNow() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return FailsNow() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  return FailsNow() ? nullptr : __libc_realloc(block, size);
}

int fsync(int file) {
  if (const long seconds = Setting("SLEEP_IN_FSYNC"); seconds > 0) {
    ::sleep(static_cast<unsigned>(seconds));
  }
  return static_cast<int>(::syscall(SYS_fsync, file));
}

ssize_t read(int file, void* buffer, std::size_t count) {
  static long left = Setting("FAIL_READ");
  static const bool interrupts = Setting("INTERRUPT_READS") > 0;
  static unsigned reads = 0;
  if (left == 0 || (interrupts && reads++ % 2 == 0)) {
    errno = left == 0 ? EIO : EINTR;
    left = -1;
    return -1;
  }
  if (left > 0) --left;
  return ::syscall(SYS_read, file, buffer, count);
}
}
