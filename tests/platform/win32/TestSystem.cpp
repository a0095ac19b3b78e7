#include "platform/TestProcess.h"
#include "platform/win32/SystemHandles.h"

namespace test {

void KillProcess(std::uint32_t hProcess) {
  ::TerminateProcess(platform::win32::HandleOf<HANDLE>(hProcess), 9);
}

void SetEnvironment(const std::string& sName, const std::string& sValue) {
  ::SetEnvironmentVariableA(sName.c_str(), sValue.empty() ? nullptr : sValue.c_str());
}

bool GiveUpRights() { return true; }  // a file that is only to be read is so for everyone

void EndProcess(int lStatus) { ::ExitProcess(static_cast<UINT>(lStatus)); }

}  // namespace test
