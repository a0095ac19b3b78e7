#include "platform/Process.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/win32/SystemHandles.h"

namespace platform {

namespace {

using win32::OwnedHandle;

// 128 plus the signals' numbers: SIGINT, the C library's SIGBREAK, SIGHUP and SIGTERM.
constexpr std::int32_t STATUS_CTRL_C = 130;
constexpr std::int32_t STATUS_CTRL_BREAK = 149;
constexpr std::int32_t STATUS_CLOSED = 129;
constexpr std::int32_t STATUS_SHUTDOWN = 143;

std::atomic<std::int32_t> lEndStatus = 0;

/// Reads standard input on a thread of its own, since Windows cannot wait for a pipe, a file and a
/// console alike.
class InputReader {
 public:
  /// Never destroyed: its thread waits for input until the process ends.
  static InputReader& The() {
    static auto& tReader = *new InputReader;
    return tReader;
  }

  std::optional<std::string> Take(std::uint32_t lMilliseconds) {
    std::unique_lock tLock(tMutex);
    if (!bStarted) {
      bStarted = true;
      std::thread([this] { ReadAll(); }).detach();
    }
    tChanged.wait_for(tLock, std::chrono::milliseconds(lMilliseconds),
                      [this] { return !sArrived.empty() || bInputEnded || lEndStatus != 0; });
    if (sArrived.empty() && bInputEnded) return std::nullopt;
    tChanged.notify_all();
    return std::exchange(sArrived, {});
  }

  void Wake() {
    const std::lock_guard tLock(tMutex);
    tChanged.notify_all();
  }

 private:
  void ReadAll() {
    const HANDLE hInput = ::GetStdHandle(STD_INPUT_HANDLE);
    for (;;) {
      std::array<char, 4096> abBuffer{};
      DWORD lRead = 0;
      ::SetLastError(NO_ERROR);
      const bool bRead = ::ReadFile(hInput, abBuffer.data(), abBuffer.size(), &lRead, nullptr) != 0;
      // Ctrl+C ends a read from the console, but not the input.
      if (lRead == 0 && ::GetLastError() == ERROR_OPERATION_ABORTED) continue;
      std::unique_lock tLock(tMutex);
      bInputEnded = !bRead || lRead == 0;
      if (!bInputEnded) sArrived.assign(abBuffer.data(), lRead);
      tChanged.notify_all();
      if (bInputEnded) return;
      // What was not asked for yet stays in the pipe.
      tChanged.wait(tLock, [this] { return sArrived.empty(); });
    }
  }

  std::mutex tMutex;
  std::condition_variable tChanged;
  std::string sArrived;
  bool bStarted = false;
  bool bInputEnded = false;
};

BOOL WINAPI NoteEndRequest(DWORD lRequest) {
  switch (lRequest) {
    case CTRL_C_EVENT:
      lEndStatus = STATUS_CTRL_C;
      break;
    case CTRL_BREAK_EVENT:
      lEndStatus = STATUS_CTRL_BREAK;
      break;
    case CTRL_CLOSE_EVENT:
      lEndStatus = STATUS_CLOSED;
      break;
    default:
      lEndStatus = STATUS_SHUTDOWN;
      break;
  }
  InputReader::The().Wake();
  // The system ends the process as soon as this returns, except after a key: it must go on until
  // the program has ended by itself, or the system's patience of some seconds.
  if (lRequest != CTRL_C_EVENT && lRequest != CTRL_BREAK_EVENT) ::Sleep(INFINITE);
  return TRUE;
}

/// An argument as CommandLineToArgvW and the C library read it back: quoted where it must be, with
/// the backslashes doubled that stand before a quote.
std::string Quoted(const std::string& sArgument) {
  if (!sArgument.empty() && sArgument.find_first_of(" \t\"") == std::string::npos) {
    return sArgument;
  }
  std::string sQuoted = "\"";
  std::size_t lBackslashes = 0;
  for (const char bCharacter : sArgument) {
    if (bCharacter == '"') sQuoted.append(lBackslashes + 1, '\\');
    lBackslashes = bCharacter == '\\' ? lBackslashes + 1 : 0;
    sQuoted += bCharacter;
  }
  return sQuoted.append(lBackslashes, '\\') + '"';
}

}  // namespace

void CatchEndRequests() { ::SetConsoleCtrlHandler(NoteEndRequest, TRUE); }

std::optional<std::int32_t> EndRequested() {
  const std::int32_t lStatus = lEndStatus;
  if (lStatus == 0) return std::nullopt;
  return lStatus;
}

std::uint32_t StartProcess(const std::vector<std::string>& asCommand, std::string& sError) {
  std::string sCommandLine;
  for (const std::string& sArgument : asCommand) {
    sCommandLine += (sCommandLine.empty() ? "" : " ") + Quoted(sArgument);
  }
  SECURITY_ATTRIBUTES tInherited = {sizeof(tInherited), nullptr, TRUE};
  const OwnedHandle hEmpty =
      win32::Owned(::CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                 &tInherited, OPEN_EXISTING, 0, nullptr));
  STARTUPINFOA tStart = {};
  tStart.cb = sizeof(tStart);
  tStart.dwFlags = STARTF_USESTDHANDLES;
  tStart.hStdInput = hEmpty.get();
  tStart.hStdOutput = ::GetStdHandle(STD_OUTPUT_HANDLE);
  tStart.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION tProcess = {};
  if (::CreateProcessA(nullptr, sCommandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &tStart, &tProcess) == 0) {
    sError = win32::ErrorText(::GetLastError());
    return 0;
  }
  ::CloseHandle(tProcess.hThread);
  return win32::NumberOf(tProcess.hProcess);
}

std::optional<std::int32_t> ProcessStatus(std::uint32_t hNumber) {
  const auto hProcess = win32::HandleOf<HANDLE>(hNumber);
  DWORD lStatus = 0;
  if (::WaitForSingleObject(hProcess, 0) != WAIT_OBJECT_0 ||
      ::GetExitCodeProcess(hProcess, &lStatus) == 0) {
    return std::nullopt;
  }
  CloseSystemHandle(hNumber);
  return static_cast<std::int32_t>(lStatus);
}

std::optional<std::string> ReadStandardInput(std::uint32_t lMilliseconds) {
  return InputReader::The().Take(lMilliseconds);
}

}  // namespace platform
