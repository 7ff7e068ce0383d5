// Replaces the C library's allocation functions in this program: a failed allocation ends it, with
// a message, wherever it happens. Some of the libraries do not survive one.
#include <dlfcn.h>

#include <cstddef>

#include "tools/epgcache/write/output_file.h"

namespace {

// The next function of that name after this file's.
template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

void* OrEnd(void* block, std::size_t bytes) {
  if (block == nullptr && bytes != 0) epgcache::EndWithoutMemory();
  return block;
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {
void* malloc(std::size_t bytes) {
  static const auto next = Next<void* (*)(std::size_t)>("malloc");
  return OrEnd(next(bytes), bytes);
}

void* calloc(std::size_t count, std::size_t bytes) {
  static const auto next = Next<void* (*)(std::size_t, std::size_t)>("calloc");
  return OrEnd(next(count, bytes), count);
}

void* realloc(void* block, std::size_t bytes) {
  static const auto next = Next<void* (*)(void*, std::size_t)>("realloc");
  return OrEnd(next(block, bytes), bytes);
}
}
#pragma GCC visibility pop
