#include "platform/TestProcess.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <optional>
#include <random>
#include <sstream>
#include <thread>
#include <utility>

#include "platform/Process.h"

namespace test {

namespace {

constexpr std::string_view CHILD = "--child";

std::string sThisProgram;

std::vector<ChildCode::Main>& AllCode() {
  static std::vector<ChildCode::Main> afnMain;
  return afnMain;
}

}  // namespace

ChildCode::ChildCode(Main fnMain) : lNumber(AllCode().size()) { AllCode().push_back(fnMain); }

ChildProcess::ChildProcess(const ChildCode& tCode, const Arguments& asArgument) {
  std::fflush(nullptr);
  Arguments asCommand = {sThisProgram, std::string(CHILD), tCode.Number()};
  asCommand.insert(asCommand.end(), asArgument.begin(), asArgument.end());
  std::string sError;
  // Wine was seen to fail with "Internal error" where the next start went well.
  for (int iAttempt = 0; hProcess == 0 && iAttempt < 3; ++iAttempt) {
    hProcess = platform::StartProcess(asCommand, sError);
  }
  EXPECT_NE(hProcess, 0U) << sError;
}

void ChildProcess::Kill() {
  if (hProcess != 0) KillProcess(hProcess);
  Succeeded();
}

bool ChildProcess::Succeeded() {
  if (hProcess == 0) return false;
  std::optional<std::int32_t> lStatus;
  while (!(lStatus = platform::ProcessStatus(hProcess))) SleepUpTo(500);
  hProcess = 0;
  return lStatus == 0;
}

void SleepUpTo(unsigned lMost) {
  static std::minstd_rand tRandom;
  std::this_thread::sleep_for(std::chrono::microseconds(tRandom() % lMost));
}

bool WaitUntil(const std::function<bool()>& fnTrue) {
  const auto tEnd = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  bool bTrue = false;
  while (!(bTrue = fnTrue()) && std::chrono::steady_clock::now() < tEnd) SleepUpTo(200);
  return bTrue;
}

std::string UniqueName() { return "varnel-test-" + std::to_string(std::random_device()()); }

TestFolder::TestFolder() {
  // Asked once: tests set TEMP to folders of their own.
  static const auto tRoot = std::filesystem::temp_directory_path();
  while (!std::filesystem::create_directory(tFolder = tRoot / UniqueName())) {
  }
}

std::string ReadFile(const std::string& sPath) {
  std::ostringstream tText;
  tText << std::ifstream(sPath, std::ios::binary).rdbuf();
  return std::move(tText).str();
}

void WriteFile(const std::string& sPath, std::string_view sText) {
  std::ofstream(sPath, std::ios::binary) << sText;
}

}  // namespace test

int main(int lArguments, char** apArgument) {
  testing::InitGoogleTest(&lArguments, apArgument);
  test::sThisProgram = *apArgument;
  const test::Arguments asArgument(apArgument + 1, apArgument + lArguments);
  if (asArgument.empty() || asArgument.front() != test::CHILD) return RUN_ALL_TESTS();
  test::AllCode().at(std::stoul(asArgument.at(1)))({asArgument.begin() + 2, asArgument.end()});
  std::fflush(nullptr);
  test::EndProcess(testing::Test::HasFailure() ? 1 : 0);
}
