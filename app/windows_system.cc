#include "app/system.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <string_view>

#include "text/entry_text.h"

namespace shell {

namespace {

// The console's settings at the start, to be restored.
UINT code_page = 0;
DWORD output_mode = 0;

HANDLE Output() { return ::GetStdHandle(STD_OUTPUT_HANDLE); }

bool IsConsole(DWORD stream) {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(stream), &mode) != 0;
}

void SetConsoleBack() {
  if (output_mode != 0) ::SetConsoleMode(Output(), output_mode);
  if (code_page != 0) ::SetConsoleOutputCP(code_page);
}

// A normal exit would destroy static objects while a load still uses them.
BOOL WINAPI EndAtOnce(DWORD /*event*/) {
  SetConsoleBack();
  ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(STATUS_CONTROL_C_EXIT));
  return TRUE;
}

int WINAPI WriteBox(HWND /*owner*/, const char* text, const char* caption, UINT /*style*/) {
  const std::string entry = EntryText(BoxPrefix(caption), text, ErrorsAreShown());
  std::fwrite(entry.data(), 1, entry.size(), stderr);
  return IDOK;
}

// The slot of a loaded module through which it calls a function of another, or null.
void** FindImport(char* module, std::string_view function) {
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
  const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
  const IMAGE_DATA_DIRECTORY& directory =
      headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  if (directory.Size == 0) return nullptr;
  auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(module + directory.VirtualAddress);
  for (; library->FirstThunk != 0; ++library) {
    if (library->OriginalFirstThunk == 0) continue;
    const auto* name = reinterpret_cast<IMAGE_THUNK_DATA*>(module + library->OriginalFirstThunk);
    auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(module + library->FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++slot) {
      if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
      const auto* const by_name =
          reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(module + name->u1.AddressOfData);
      if (function == by_name->Name) return reinterpret_cast<void**>(&slot->u1.Function);
    }
  }
  return nullptr;
}

}  // namespace

Streams::Streams() {
  for (std::FILE* const stream : {stdin, stdout, stderr}) ::_setmode(::_fileno(stream), _O_BINARY);
  // For an empty drive, fail to open the file instead of showing a dialog box.
  ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  if (!ResultsAreShown() && !ErrorsAreShown()) return;
  code_page = ::GetConsoleOutputCP();
  ::SetConsoleOutputCP(CP_UTF8);
  if (::GetConsoleMode(Output(), &output_mode) != 0) {
    ::SetConsoleMode(Output(), output_mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
  ::SetConsoleCtrlHandler(&EndAtOnce, TRUE);
}

Streams::~Streams() {
  std::fflush(stdout);
  SetConsoleBack();
}

bool ErrorsAreShown() { return IsConsole(STD_ERROR_HANDLE); }
bool ResultsAreShown() { return IsConsole(STD_OUTPUT_HANDLE); }

int TerminalColumns() {
  CONSOLE_SCREEN_BUFFER_INFO screen = {};
  if (::GetConsoleScreenBufferInfo(Output(), &screen) == 0) return 0;
  // What is written into the last column moves some consoles to the next line.
  return screen.srWindow.Right - screen.srWindow.Left;
}

bool TerminalTakesColours() {
  DWORD mode = 0;
  return ::GetConsoleMode(Output(), &mode) != 0 && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

// As the console has been set to.
bool TerminalTakesUtf8() { return ResultsAreShown(); }

std::string ProgramPath() {
  char path[32'768];
  const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
  return length < sizeof path ? std::string(path, length) : std::string();
}

void ShowBoxesAsText(const std::string& plugin_path) {
  const HMODULE module = ::GetModuleHandleA(plugin_path.c_str());
  void** const slot =
      module != nullptr ? FindImport(reinterpret_cast<char*>(module), "MessageBoxA") : nullptr;
  DWORD protection = 0;
  if (slot == nullptr || ::VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection) == 0) {
    return;
  }
  *slot = reinterpret_cast<void*>(&WriteBox);
  ::VirtualProtect(slot, sizeof *slot, protection, &protection);
}

}  // namespace shell
