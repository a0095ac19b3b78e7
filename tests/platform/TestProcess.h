#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/NamedMemory.h"

/// What tests between real processes need.
namespace test {

using Arguments = std::vector<std::string>;

/// Code that tests run in processes of their own, for which the test program starts itself. All of
/// it stands at namespace scope, where every start of the program finds it.
class ChildCode {
 public:
  using Main = void (*)(const Arguments& asArgument);
  explicit ChildCode(Main fnMain);
  std::string Number() const { return std::to_string(lNumber); }

 private:
  std::size_t lNumber;
};

/// A process that runs such code. It fails when an expectation in it does; when it has run it ends
/// as the program does, without the ends of static objects. It is killed when it is still there at
/// its end of scope.
class ChildProcess {
 public:
  explicit ChildProcess(const ChildCode& tCode, const Arguments& asArgument = {});
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess() { Kill(); }
  void Kill();
  bool Succeeded();  ///< waits for its end

 private:
  std::uint32_t hProcess = 0;
};

inline bool RunInChild(const ChildCode& tCode, const Arguments& asArgument = {}) {
  return ChildProcess(tCode, asArgument).Succeeded();
}

/// Memory, zero at first, that a test shares with its processes by a name.
template <typename State>
class Shared {
 public:
  explicit Shared(const std::string& sName)
      : hMemory(platform::CreateNamedMemory(sName, sizeof(State))),
        pState(reinterpret_cast<State*>(platform::MapNamedMemory(hMemory))) {}
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  ~Shared() {
    platform::UnmapNamedMemory(reinterpret_cast<std::uint8_t*>(pState));
    platform::CloseSystemHandle(hMemory);
  }
  State& operator*() const { return *pState; }
  State* operator->() const { return pState; }

 private:
  std::uint32_t hMemory;
  State* pState;
};

/// Sleeps for a random time, in microseconds.
void SleepUpTo(unsigned lMost);

/// Waits until something is true; gives up after 20 seconds.
bool WaitUntil(const std::function<bool()>& fnTrue);

/// A name that no other test has.
std::string UniqueName();

/// A folder of the test's own, removed with all that is in it.
class TestFolder {
 public:
  TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder() { std::filesystem::remove_all(tFolder); }
  std::string Path(const std::string& sName = "") const {
    return (sName.empty() ? tFolder : tFolder / sName).string();
  }

 private:
  std::filesystem::path tFolder;
};

std::string ReadFile(const std::string& sPath);
void WriteFile(const std::string& sPath, std::string_view sText);

// Of these each system has its own.

/// Ends a started process at once.
void KillProcess(std::uint32_t hProcess);

/// Sets an environment variable of this process and of those that it starts; empty: takes it away.
void SetEnvironment(const std::string& sName, const std::string& sValue);

/// From now on this process may write only what any user may; false when that cannot be had.
bool GiveUpRights();

/// Ends this process as the program ends itself.
[[noreturn]] void EndProcess(int lStatus);

}  // namespace test
