#include "platform/StandardStreams.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "platform/win32/SystemHandles.h"

namespace platform {

namespace {

bool Print(DWORD lStream, const std::string& sText, UINT lIcon) {
  const HANDLE hStream = ::GetStdHandle(lStream);
  if (hStream == nullptr || hStream == INVALID_HANDLE_VALUE) {
    ::MessageBoxA(nullptr, sText.c_str(), "Varnel Disassembler/Assembler",
                  MB_OK | MB_SETFOREGROUND | lIcon);
    return true;
  }
  DWORD lWritten = 0;
  return ::WriteFile(hStream, sText.data(), static_cast<DWORD>(sText.size()), &lWritten, nullptr) !=
             0 &&
         lWritten == sText.size();
}

}  // namespace

// A handle is never given again for a stream: those stand in a list of their own.
void SecureStandardStreams() {}

void SetBinaryStandardStreams() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
}

bool IsOutputTerminal() {
  DWORD lMode = 0;
  return ::GetConsoleMode(::GetStdHandle(STD_OUTPUT_HANDLE), &lMode) != 0;
}

bool PrintOutput(const std::string& sText) {
  return Print(STD_OUTPUT_HANDLE, sText, MB_ICONINFORMATION);
}

bool PrintError(const std::string& sText) { return Print(STD_ERROR_HANDLE, sText, MB_ICONERROR); }

}  // namespace platform
