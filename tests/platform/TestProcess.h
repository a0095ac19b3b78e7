#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <utility>

/// What tests between real processes need.
namespace test {

/// Memory, zero at first, that a test shares with the processes that it forks from then on.
template <typename State>
State& Shared() {
  constexpr int FLAGS = MAP_SHARED | MAP_ANONYMOUS;
  return *new (::mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, FLAGS, -1, 0)) State();
}

/// A forked process. It fails when an expectation in it does; when it has run it ends as the
/// program does, by quick_exit. It is killed when it is still there at its end of scope.
class ChildProcess {
 public:
  explicit ChildProcess(const std::function<void()>& fnMain) {
    std::fflush(nullptr);
    lProcess = ::fork();
    if (lProcess != 0) return;
    fnMain();
    std::fflush(nullptr);
    std::quick_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() { Kill(); }

  void Kill() {
    if (lProcess > 0) ::kill(lProcess, SIGKILL);
    Succeeded();
  }
  bool Succeeded() {
    int iStatus = -1;
    if (lProcess > 0) ::waitpid(std::exchange(lProcess, -1), &iStatus, 0);
    return iStatus == 0;
  }

 private:
  pid_t lProcess = -1;
};

inline bool RunInChild(const std::function<void()>& fnMain) {
  return ChildProcess(fnMain).Succeeded();
}

/// Sleeps for a random time, in microseconds.
inline void SleepUpTo(unsigned lMost) {
  static std::minstd_rand tRandom;
  ::usleep(static_cast<useconds_t>(tRandom() % lMost));
}

/// Waits until something is true; gives up after 20 seconds.
inline bool WaitUntil(const std::function<bool()>& fnTrue) {
  for (int iTry = 0; iTry < 200000 && !fnTrue(); ++iTry) ::usleep(100);
  return fnTrue();
}

/// A folder of the test's own, removed with all that is in it.
class TestFolder {
 public:
  TestFolder() {
    // Asked once: tests set TEMP to folders of their own.
    static const auto tRoot = std::filesystem::temp_directory_path();
    sFolder = tRoot / "varnel-test-XXXXXX";
    if (::mkdtemp(sFolder.data()) == nullptr) throw std::runtime_error("no folder for the test");
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder() { std::filesystem::remove_all(sFolder); }
  std::string Path(const std::string& sName = "") const {
    return sName.empty() ? sFolder : sFolder + "/" + sName;
  }

 private:
  std::string sFolder;
};

inline std::string ReadFile(const std::string& sPath) {
  std::ostringstream tText;
  tText << std::ifstream(sPath, std::ios::binary).rdbuf();
  return std::move(tText).str();
}

inline void WriteFile(const std::string& sPath, std::string_view sText) {
  std::ofstream(sPath, std::ios::binary) << sText;
}

}  // namespace test
