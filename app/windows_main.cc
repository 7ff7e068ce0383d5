// Starts the program, which is in a library of its own: a program that links the engine directly
// makes the system show a dialog box when the engine is missing, before any of its code runs. This
// file depends on the system alone.
#include <windows.h>

#include <cstdio>

namespace {

// Each depends on those above it.
constexpr const char* kLibraries[] = {"libwinpthread-1.dll", "libgcc_s_seh-1.dll",
                                      "libstdc++-6.dll", "orvane.dll", "epgshell.dll"};

int Complain(const char* what, DWORD error) {
  auto inserted = reinterpret_cast<DWORD_PTR>(what);
  char text[1024] = "";
  DWORD length =
      ::FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ARGUMENT_ARRAY, nullptr, error,
                       0, text, sizeof text, reinterpret_cast<va_list*>(&inserted));
  while (length > 0 && static_cast<unsigned char>(text[length - 1]) <= ' ') text[--length] = '\0';
  std::fprintf(stderr, "epgshell: cannot load %s: %s (%lu)\n", what, text, error);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  HMODULE library = nullptr;
  // The system looks beside this program first.
  for (const char* const name : kLibraries) {
    library = ::LoadLibraryA(name);
    if (library == nullptr) return Complain(name, ::GetLastError());
  }
  const auto function = reinterpret_cast<void*>(::GetProcAddress(library, "RunEpgshell"));
  if (function == nullptr) return Complain("RunEpgshell", ::GetLastError());
  return reinterpret_cast<int (*)(int, char**)>(function)(argc, argv);
}
