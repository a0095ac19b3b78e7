#include <array>
#include <atomic>
#include <deque>

#include "config/modAllIni.h"
#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using test::ChildProcess;

constexpr int WRITERS = 13, KILLED_WRITERS = 4, FLUSHES = 200, STRANGERS_LINES = 120;

// What each writer has told before it may have been killed.
struct Progress {
  std::atomic<int> lSetting, lSaved;
};

// Where a writer keeps its count: in a section shared by all, and in one of its own.
std::array<std::array<std::string, 2>, 2> Keys(std::size_t lWriter) {
  const std::string sNumber = std::to_string(lWriter);
  return {{{"GENERAL", "window_" + sNumber + "_top"}, {"PROGRAM" + sNumber, "count"}}};
}

void Write(std::size_t lWriter, Progress& tProgress) {
  for (int iFlush = 1; iFlush <= FLUSHES; ++iFlush) {
    tProgress.lSetting = iFlush;
    for (const auto& [sSection, sKey] : Keys(lWriter)) {
      modAllIni::IniSetValue(sSection, sKey, std::to_string(iFlush));
    }
    // Among so many, all 50 attempts may find the file held; what was set waits for the next.
    for (bool bSaved = false; !bSaved;) bSaved = modAllIni::IniFlush();
    tProgress.lSaved = iFlush;
  }
}

// The lines that a program of another hand adds, which every merge must leave alone.
std::string StrangersLines(int iLine) {
  const std::string sNumber = std::to_string(iLine);
  return "\r\n; note = " + sNumber + "\r\n[FOREIGN" + sNumber + "]\r\nodd " + sNumber + " = [x]";
}

TEST(IniUnderFire, NoProgramLosesASetting) {
  const test::TestFolder tFolder;
  ::setenv("LOCALAPPDATA", tFolder.Path().c_str(), 1);
  std::filesystem::create_directory(tFolder.Path("VARNEL"));
  const std::string sPath = tFolder.Path("VARNEL/VARNEL.ini");
  auto& atProgress = test::Shared<std::array<Progress, WRITERS>>();
  std::deque<ChildProcess> atChild;
  for (std::size_t lWriter = 0; lWriter < WRITERS; ++lWriter) {
    atChild.emplace_back([&, lWriter] { Write(lWriter, atProgress[lWriter]); });
  }
  atChild.emplace_back([&] {
    for (int iLine = 0; iLine < STRANGERS_LINES; ::usleep(3000)) {
      const auto hFile = platform::OpenExclusiveFile(sPath);
      const auto sText = platform::ReadExclusiveFile(hFile);
      if (sText && platform::WriteExclusiveFile(hFile, *sText + StrangersLines(iLine))) ++iLine;
      platform::CloseSystemHandle(hFile);
    }
  });
  // Some hold the file for a while, or until they are killed; some writers are killed as well.
  for (std::size_t lRound = 0; lRound < 30; ++lRound) {
    const ChildProcess tHolder([&] {
      while (platform::OpenExclusiveFile(sPath) == 0) ::usleep(500);
      test::SleepUpTo(60000);
    });
    test::SleepUpTo(100000);
    if (lRound < KILLED_WRITERS) atChild[lRound].Kill();
  }
  for (std::size_t lChild = KILLED_WRITERS; lChild < atChild.size(); ++lChild) {
    EXPECT_TRUE(atChild[lChild].Succeeded());
  }
  EXPECT_TRUE(test::RunInChild([&] {
    for (std::size_t lWriter = 0; lWriter < WRITERS; ++lWriter) {
      const auto& [lSetting, lSaved] = atProgress[lWriter];
      EXPECT_TRUE(lWriter < KILLED_WRITERS || lSaved == FLUSHES);
      for (const auto& [sSection, sKey] : Keys(lWriter)) {
        // Killed between save and note, a writer may have saved one value more than it told.
        const int lFound = std::stoi(modAllIni::IniGetValue(sSection, sKey, "0"));
        EXPECT_TRUE(lFound == lSaved || lFound == lSetting) << sKey << " " << lFound;
      }
    }
  }));
  const std::string sText = test::ReadFile(sPath) + "\r\n";
  for (int iLine = 0; iLine < STRANGERS_LINES; ++iLine) {
    EXPECT_NE(sText.find(StrangersLines(iLine) + "\r\n"), std::string::npos) << iLine;
  }
  EXPECT_EQ(sText.find("[GENERAL]"), sText.rfind("[GENERAL]"));
}

}  // namespace
