#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "host/internal/system.h"

namespace ORVANE::SYSTEM {

void* OpenLibrary(const char* path, std::string& error) {
  void* const library = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) error = ::dlerror();
  return library;
}

void (*FindFunction(void* library, const char* name))() {
  return reinterpret_cast<void (*)()>(::dlsym(library, name));
}

void CloseLibrary(void* library) { ::dlclose(library); }

FILEHANDLE OpenFile(const char* name) {
  // Without O_NONBLOCK the open itself would wait for a pipe's writer.
  const int file = ::open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return kNoFile;
  struct stat status = {};
  if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)) return file;
  ::close(file);
  return kNoFile;
}

int ReadFile(FILEHANDLE file, void* buffer, int count) {
  ssize_t result = 0;
  do {
    result = ::read(static_cast<int>(file), buffer, static_cast<std::size_t>(count));
  } while (result < 0 && errno == EINTR);
  return static_cast<int>(std::max<ssize_t>(result, 0));
}

std::int64_t SeekFile(FILEHANDLE file, std::int64_t offset, ORIGIN from) {
  const int whence = from == ORIGIN::End ? SEEK_END : from == ORIGIN::Current ? SEEK_CUR : SEEK_SET;
  return ::lseek(static_cast<int>(file), offset, whence);
}

void CloseFile(FILEHANDLE file) { ::close(static_cast<int>(file)); }

}  // namespace ORVANE::SYSTEM
