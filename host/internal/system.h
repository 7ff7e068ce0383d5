// What the engine asks of the operating system. One source file implements it for each family of
// systems.
//
// Units: counts and offsets are bytes.
#pragma once

#include <cstdint>
#include <string>

namespace ORVANE::SYSTEM {

// A library as the engine loads plug-ins. Null when it cannot be loaded; `error` then says which
// file and why.
void* OpenLibrary(const char* path, std::string& error);
// Null when the library has no such function.
void (*FindFunction(void* library, const char* name))();
void CloseLibrary(void* library);

// A file opened for reading. Only regular files can be opened, and opening never waits.
using FILEHANDLE = std::intptr_t;
inline constexpr FILEHANDLE kNoFile = -1;
FILEHANDLE OpenFile(const char* name);
// The bytes read; 0 at the end, and where reading fails.
int ReadFile(FILEHANDLE file, void* buffer, int count);
enum class ORIGIN { Start, Current, End };
// The new offset from the start, or -1.
std::int64_t SeekFile(FILEHANDLE file, std::int64_t offset, ORIGIN from);
void CloseFile(FILEHANDLE file);

}  // namespace ORVANE::SYSTEM
