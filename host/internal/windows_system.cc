#include <windows.h>

#include <algorithm>
#include <cstddef>

#include "host/internal/system.h"

namespace ORVANE::SYSTEM {

namespace {

HANDLE HandleOf(FILEHANDLE file) { return reinterpret_cast<HANDLE>(file); }

// The system's text for an error with a file.
std::string ErrorText(const std::string& path, DWORD error) {
  auto inserted = reinterpret_cast<DWORD_PTR>(path.c_str());
  char text[1024];
  DWORD length =
      ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ARGUMENT_ARRAY, nullptr, error,
                       0, text, sizeof text, reinterpret_cast<va_list*>(&inserted));
  while (length > 0 && static_cast<unsigned char>(text[length - 1]) <= ' ') --length;
  const std::string number = " (" + std::to_string(error) + ")";
  return path + ": " + (length != 0 ? std::string(text, length) : "error") + number;
}

// The first of the libraries that a library's file needs and that cannot be loaded, or empty.
std::string FindLacking(const char* path) {
  // Mapped, but neither are its imports loaded nor does any of it run.
  const HMODULE library = ::LoadLibraryExA(path, nullptr, DONT_RESOLVE_DLL_REFERENCES);
  if (library == nullptr) return {};
  const auto* const base = reinterpret_cast<const char*>(library);
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  const auto* import =
      reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
  std::string lacking;
  for (; directory.Size != 0 && import->Name != 0 && lacking.empty(); ++import) {
    const char* const name = base + import->Name;
    const HMODULE needed = ::LoadLibraryExA(name, nullptr, DONT_RESOLVE_DLL_REFERENCES);
    if (needed == nullptr) lacking = ErrorText(name, ::GetLastError());
    if (needed != nullptr) ::FreeLibrary(needed);
  }
  ::FreeLibrary(library);
  return lacking;
}

}  // namespace

void* OpenLibrary(const char* path, std::string& error) {
  // The caller reports the error; the system must not show a dialog box.
  DWORD mode = 0;
  ::SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &mode);
  // Its own dependencies are searched for beside it, too.
  const HMODULE library = ::LoadLibraryExA(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (library == nullptr) {
    error = ErrorText(path, ::GetLastError());
    if (const std::string lacking = FindLacking(path); !lacking.empty()) {
      error = std::string(path) + " needs " + lacking;
    }
  }
  ::SetThreadErrorMode(mode, nullptr);
  return library;
}

void (*FindFunction(void* library, const char* name))() {
  return reinterpret_cast<void (*)()>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

void CloseLibrary(void* library) { ::FreeLibrary(static_cast<HMODULE>(library)); }

FILEHANDLE OpenFile(const char* name) {
  const HANDLE file = ::CreateFileA(name, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (file == INVALID_HANDLE_VALUE) return kNoFile;
  if (::GetFileType(file) == FILE_TYPE_DISK) return reinterpret_cast<FILEHANDLE>(file);
  ::CloseHandle(file);
  return kNoFile;
}

int ReadFile(FILEHANDLE file, void* buffer, int count) {
  DWORD done = 0;
  if (::ReadFile(HandleOf(file), buffer, static_cast<DWORD>(count), &done, nullptr) == 0) return 0;
  return static_cast<int>(done);
}

std::int64_t SeekFile(FILEHANDLE file, std::int64_t offset, ORIGIN from) {
  const DWORD method = from == ORIGIN::End       ? FILE_END
                       : from == ORIGIN::Current ? FILE_CURRENT
                                                 : FILE_BEGIN;
  LARGE_INTEGER distance = {};
  LARGE_INTEGER reached = {};
  distance.QuadPart = offset;
  const bool done = ::SetFilePointerEx(HandleOf(file), distance, &reached, method) != 0;
  return done ? reached.QuadPart : -1;
}

void CloseFile(FILEHANDLE file) { ::CloseHandle(HandleOf(file)); }

}  // namespace ORVANE::SYSTEM
