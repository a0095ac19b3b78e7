#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "config/modAllIni.h"
#include "config/modAllIniLines.h"
#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using Clock = std::chrono::steady_clock;
using test::ChildProcess;

constexpr int WRITERS = 13;
constexpr int KILLED_WRITERS = 4;
constexpr int FLUSHES = 200;
constexpr int STRANGERS = 2;
constexpr int STRANGERS_LINES = 60;

// What every process has told before it may have been killed.
struct Progress {
  std::array<std::atomic<int>, WRITERS> alSetting = {};
  std::array<std::atomic<int>, WRITERS> alSaved = {};
  std::atomic<int> lLongestMilliseconds = 0;
  std::atomic<int> lFailedFlushes = 0;
};

std::string Key(int iWriter) { return "window_" + std::to_string(iWriter) + "_top"; }
std::string Section(int iWriter) { return "PROGRAM" + std::to_string(iWriter); }

// A program of the suite: sets its keys in a section shared by all and in one of its own.
void Write(int iWriter, Progress& tProgress) {
  for (int iFlush = 1; iFlush <= FLUSHES; ++iFlush) {
    tProgress.alSetting[static_cast<std::size_t>(iWriter)] = iFlush;
    modAllIni::IniSetValue("GENERAL", Key(iWriter), std::to_string(iFlush));
    modAllIni::IniSetValue(Section(iWriter), "count", std::to_string(iFlush));
    for (bool bSaved = false; !bSaved;) {
      const auto tStart = Clock::now();
      bSaved = modAllIni::IniFlush();
      const auto lTook = static_cast<int>((Clock::now() - tStart) / std::chrono::milliseconds(1));
      tProgress.lFailedFlushes += bSaved ? 0 : 1;
      int lLongest = tProgress.lLongestMilliseconds;
      while (lTook > lLongest &&
             !tProgress.lLongestMilliseconds.compare_exchange_weak(lLongest, lTook)) {
      }
    }
    tProgress.alSaved[static_cast<std::size_t>(iWriter)] = iFlush;
  }
}

// The lines that a program of another hand adds, which every merge must leave alone.
std::string StrangersLines(int iStranger, int iLine) {
  const std::string sNumber = std::to_string(iStranger) + "_" + std::to_string(iLine);
  return "\r\n; note = " + sNumber + "\r\n[FOREIGN" + sNumber + "]\r\nodd " + sNumber + " = [x]";
}

void WriteStrangersLines(int iStranger, const std::string& sPath) {
  for (int iLine = 0; iLine < STRANGERS_LINES; test::SleepMicroseconds(3000)) {
    const auto hFile = platform::OpenExclusiveFile(sPath);
    if (hFile == 0) continue;
    const auto sText = platform::ReadExclusiveFile(hFile);
    if (sText && platform::WriteExclusiveFile(hFile, *sText + StrangersLines(iStranger, iLine))) {
      ++iLine;
    }
    platform::CloseSystemHandle(hFile);
  }
}

TEST(IniUnderFire, NoProgramLosesASetting) {
  const test::TestFolder tFolder;
  ::setenv("LOCALAPPDATA", tFolder.Path().c_str(), 1);
  std::filesystem::create_directory(tFolder.Path("VARNEL"));
  const std::string sPath = tFolder.Path("VARNEL/VARNEL.ini");
  const test::Shared<Progress> tProgress;
  std::mt19937 tRandom(3);
  std::vector<ChildProcess> atWriter;
  std::vector<ChildProcess> atStranger;
  for (int iWriter = 0; iWriter < WRITERS; ++iWriter) {
    atWriter.emplace_back([&, iWriter] { Write(iWriter, *tProgress.operator->()); });
  }
  for (int iStranger = 0; iStranger < STRANGERS; ++iStranger) {
    atStranger.emplace_back([&, iStranger] { WriteStrangersLines(iStranger, sPath); });
  }
  // Some hold the file for a while, or until they are killed; some writers are killed as well.
  for (int iRound = 0; iRound < 30; ++iRound) {
    const auto lHeld = static_cast<long>(tRandom() % 60000);
    ChildProcess tHolder([&] {
      while (platform::OpenExclusiveFile(sPath) == 0) test::SleepMicroseconds(500);
      test::SleepMicroseconds(lHeld);
    });
    test::SleepMicroseconds(static_cast<long>(tRandom() % 100000));
    if (iRound < KILLED_WRITERS) atWriter[static_cast<std::size_t>(iRound)].Kill();
  }
  for (std::size_t lWriter = KILLED_WRITERS; lWriter < WRITERS; ++lWriter) {
    EXPECT_TRUE(atWriter[lWriter].Succeeded());
  }
  for (auto& tStranger : atStranger) EXPECT_TRUE(tStranger.Succeeded());

  const auto asLine = modAllIni::IniSplitText(test::ReadFile(sPath));
  EXPECT_TRUE(test::RunInChild([&] {
    for (int iWriter = 0; iWriter < WRITERS; ++iWriter) {
      const int lSaved = tProgress->alSaved[static_cast<std::size_t>(iWriter)];
      const int lSetting = tProgress->alSetting[static_cast<std::size_t>(iWriter)];
      EXPECT_TRUE(iWriter < KILLED_WRITERS || lSaved == FLUSHES);
      const std::vector<std::pair<std::string, std::string>> asKey = {{"GENERAL", Key(iWriter)},
                                                                      {Section(iWriter), "count"}};
      for (const auto& [sSection, sKey] : asKey) {
        // Killed between save and note, a writer may have saved one value more than it told.
        const int lFound = std::stoi("0" + modAllIni::IniGetValue(sSection, sKey, ""));
        EXPECT_TRUE(lFound == lSaved || lFound == lSetting) << sKey << " " << lFound;
      }
    }
  }));
  std::string sText = "\r\n";
  for (const auto& sLine : asLine) sText += sLine + "\r\n";
  for (int iStranger = 0; iStranger < STRANGERS; ++iStranger) {
    for (int iLine = 0; iLine < STRANGERS_LINES; ++iLine) {
      EXPECT_NE(sText.find(StrangersLines(iStranger, iLine).substr(2) + "\r\n"), std::string::npos);
    }
  }
  EXPECT_EQ(std::ranges::count(asLine, "[GENERAL]"), 1);
  std::cout << "longest save " << tProgress->lLongestMilliseconds << " ms, "
            << tProgress->lFailedFlushes << " saves given up\n";
}

}  // namespace
