#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "platform/TestProcess.h"

namespace test {

void KillProcess(std::uint32_t hProcess) { ::kill(static_cast<pid_t>(hProcess), SIGKILL); }

void SetEnvironment(const std::string& sName, const std::string& sValue) {
  sValue.empty() ? ::unsetenv(sName.c_str()) : ::setenv(sName.c_str(), sValue.c_str(), 1);
}

bool GiveUpRights() { return ::geteuid() != 0 || ::seteuid(65534) == 0; }

void EndProcess(int lStatus) { std::quick_exit(lStatus); }

}  // namespace test
