// epgcache: listings for the guide plug-in out of any XMLTV guides.

#include <libxml/xmlmemory.h>
#include <unicode/uclean.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "tools/epgcache/check.h"
#include "tools/epgcache/make_listings.h"
#include "tools/epgcache/options.h"
#include "tools/epgcache/output_file.h"

namespace {

// ICU and libxml2 do not survive every failed allocation.
void* Allocate(std::size_t bytes) {
  void* const block = std::malloc(bytes);
  if (block == nullptr) epgcache::EndWithoutMemory();
  return block;
}
void* Reallocate(void* old, std::size_t bytes) {
  void* const block = std::realloc(old, bytes);
  if (block == nullptr) epgcache::EndWithoutMemory();
  return block;
}
char* Duplicate(const char* text) {
  const std::size_t bytes = std::strlen(text) + 1;
  return static_cast<char*>(std::memcpy(Allocate(bytes), text, bytes));
}

void EndWithoutMemoryFromNowOn() {
  std::set_terminate(epgcache::EndWithoutMemory);
  UErrorCode error = U_ZERO_ERROR;
  u_setMemoryFunctions(
      nullptr, [](const void*, std::size_t bytes) { return Allocate(bytes); },
      [](const void*, void* old, std::size_t bytes) { return Reallocate(old, bytes); },
      [](const void*, void* block) { std::free(block); }, &error);
  xmlMemSetup(std::free, Allocate, Reallocate, Duplicate);
}

// The libraries' own static objects allocate, so this comes before them.
[[gnu::section(".preinit_array"),
  gnu::used]] void (*const before_all)() = EndWithoutMemoryFromNowOn;

}  // namespace

int main(int count, char** arguments) {
  try {
    epgcache::HandleSignals();
    const epgcache::CommandLine line = epgcache::ReadCommandLine(count, arguments);
    if (!line.options) return line.status;
    if (line.options->check) return epgcache::CheckFile(*line.options);
    return epgcache::MakeListings(*line.options);
  } catch (const std::bad_alloc&) {
    std::fputs("epgcache: out of memory\n", stderr);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "epgcache: %s\n", failure.what());
  }
  return 1;
}
