#include <array>
#include <atomic>
#include <deque>

#include "config/modAllIni.h"
#include "disass/RecordingToolkit.h"
#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using test::Arguments;
using test::ChildCode;
using test::ChildProcess;

constexpr int WRITERS = 13, KILLED_WRITERS = 4, FLUSHES = 200, STRANGERS_LINES = 120;

// What each writer has told before it may have been killed.
struct Progress {
  std::atomic<int> lSetting, lSaved;
};
using AllProgress = std::array<Progress, WRITERS>;

// Where a writer keeps its count: in a section shared by all, and in one of its own.
std::array<std::array<std::string, 2>, 2> Keys(std::size_t lWriter) {
  const std::string sNumber = std::to_string(lWriter);
  return {{{"GENERAL", "window_" + sNumber + "_top"}, {"PROGRAM" + sNumber, "count"}}};
}

const ChildCode WRITE([](const Arguments& asArgument) {
  const recording::Toolkit tToolkit;
  const test::Shared<AllProgress> atProgress(asArgument[0]);
  const std::size_t lWriter = std::stoul(asArgument[1]);
  for (int iFlush = 1; iFlush <= FLUSHES; ++iFlush) {
    (*atProgress)[lWriter].lSetting = iFlush;
    for (const auto& [sSection, sKey] : Keys(lWriter)) {
      modAllIni::IniSetValue(sSection, sKey, std::to_string(iFlush));
    }
    // Among so many, all 50 attempts may find the file held; what was set waits for the next.
    for (bool bSaved = false; !bSaved;) bSaved = modAllIni::IniFlush();
    (*atProgress)[lWriter].lSaved = iFlush;
  }
});

// The lines that a program of another hand adds, which every merge must leave alone.
std::string StrangersLines(int iLine) {
  const std::string sNumber = std::to_string(iLine);
  return "\r\n; note = " + sNumber + "\r\n[FOREIGN" + sNumber + "]\r\nodd " + sNumber + " = [x]";
}

const ChildCode ADD_LINES([](const Arguments& asPath) {
  for (int iLine = 0; iLine < STRANGERS_LINES; test::SleepUpTo(6000)) {
    const auto hFile = platform::OpenExclusiveFile(asPath[0]);
    const auto sText = platform::ReadExclusiveFile(hFile);
    if (sText && platform::WriteExclusiveFile(hFile, *sText + StrangersLines(iLine))) ++iLine;
    platform::CloseSystemHandle(hFile);
  }
});

const ChildCode HOLD([](const Arguments& asPath) {
  while (platform::OpenExclusiveFile(asPath[0]) == 0) test::SleepUpTo(1000);
  test::SleepUpTo(60000);
});

TEST(IniUnderFire, NoProgramLosesASetting) {
  const test::TestFolder tFolder;
  test::SetEnvironment("LOCALAPPDATA", tFolder.Path());
  std::filesystem::create_directory(tFolder.Path("VARNEL"));
  const std::string sPath = tFolder.Path("VARNEL/VARNEL.ini"), sProgress = test::UniqueName();
  const test::Shared<AllProgress> atProgress(sProgress);
  std::deque<ChildProcess> atChild;
  for (std::size_t lWriter = 0; lWriter < WRITERS; ++lWriter) {
    atChild.emplace_back(WRITE, Arguments{sProgress, std::to_string(lWriter)});
  }
  atChild.emplace_back(ADD_LINES, Arguments{sPath});
  // Some hold the file for a while, or until they are killed; some writers are killed as well.
  for (std::size_t lRound = 0; lRound < 30; ++lRound) {
    const ChildProcess tHolder(HOLD, {sPath});
    test::SleepUpTo(100000);
    if (lRound < KILLED_WRITERS) {
      test::WaitUntil([&] { return (*atProgress)[lRound].lSetting > 0; });
      atChild[lRound].Kill();
    }
  }
  for (std::size_t lChild = KILLED_WRITERS; lChild < atChild.size(); ++lChild) {
    EXPECT_TRUE(atChild[lChild].Succeeded());
  }
  ASSERT_TRUE(modAllIni::IniLoad());
  for (std::size_t lWriter = 0; lWriter < WRITERS; ++lWriter) {
    const auto& [lSetting, lSaved] = (*atProgress)[lWriter];
    EXPECT_TRUE(lWriter < KILLED_WRITERS || lSaved == FLUSHES);
    for (const auto& [sSection, sKey] : Keys(lWriter)) {
      // Killed between save and note, a writer may have saved one value more than it told.
      const int lFound = std::stoi(modAllIni::IniGetValue(sSection, sKey, "0"));
      EXPECT_TRUE(lFound == lSaved || lFound == lSetting) << sKey << " " << lFound;
    }
  }
  const std::string sText = test::ReadFile(sPath) + "\r\n";
  for (int iLine = 0; iLine < STRANGERS_LINES; ++iLine) {
    EXPECT_NE(sText.find(StrangersLines(iLine) + "\r\n"), std::string::npos) << iLine;
  }
  EXPECT_EQ(sText.find("[GENERAL]"), sText.rfind("[GENERAL]"));
}

}  // namespace
