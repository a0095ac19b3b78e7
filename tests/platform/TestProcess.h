#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

/// What tests between real processes need.
namespace test {

/// Memory that a test shares with the processes that it forks.
template <typename State>
class Shared {
 public:
  Shared()
      : pState(new (::mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE,
                           MAP_SHARED | MAP_ANONYMOUS, -1, 0)) State()) {}
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  ~Shared() { ::munmap(pState, sizeof(State)); }
  State* operator->() const { return pState; }

 private:
  State* pState;
};

/// A forked process. It fails when an expectation in it does; when it has run it ends as the
/// program does, by quick_exit.
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
  ChildProcess(ChildProcess&& tOther) noexcept : lProcess(std::exchange(tOther.lProcess, -1)) {}
  ChildProcess& operator=(ChildProcess&&) = delete;
  ~ChildProcess() { Kill(); }

  void Kill() {
    if (lProcess <= 0) return;
    ::kill(lProcess, SIGKILL);
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

inline void SleepMicroseconds(long lMicroseconds) {
  std::this_thread::sleep_for(std::chrono::microseconds(lMicroseconds));
}

/// Waits until something is true; gives up after 20 seconds.
inline bool WaitUntil(const std::function<bool()>& fnTrue) {
  for (int iTry = 0; iTry < 200000 && !fnTrue(); ++iTry) SleepMicroseconds(100);
  return fnTrue();
}

/// A folder of the test's own, removed with all that is in it.
class TestFolder {
 public:
  TestFolder() {
    // Asked once: tests set TEMP to folders of their own.
    static const auto tRoot = std::filesystem::temp_directory_path();
    std::string sTemplate = tRoot / "varnel-test-XXXXXX";
    sFolder = ::mkdtemp(sTemplate.data());
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder() { std::filesystem::remove_all(sFolder); }
  std::string Path(std::string_view sName = "") const {
    return sName.empty() ? sFolder : sFolder + "/" + std::string(sName);
  }

 private:
  std::string sFolder;
};

inline std::string ReadFile(const std::string& sPath) {
  std::ifstream tFile(sPath, std::ios::binary);
  std::ostringstream tText;
  tText << tFile.rdbuf();
  return std::move(tText).str();
}

inline void WriteFile(const std::string& sPath, std::string_view sText) {
  std::ofstream(sPath, std::ios::binary) << sText;
}

}  // namespace test
