#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "config/modAllIni.h"
#include "config/modAllIniLines.h"
#include "disass/RecordingToolkit.h"
#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using namespace std::string_literals;
using modAllIni::IniFlush;
using modAllIni::IniGetValue;
using modAllIni::IniSetValue;
using test::RunInChild;

// Each use of the store runs in a process of its own, whose store is fresh.
class Ini : public testing::Test {
 protected:
  Ini() {
    ::setenv("LOCALAPPDATA", tFolder.Path().c_str(), 1);
    std::filesystem::create_directory(tFolder.Path("VARNEL"));
  }

  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("VARNEL/VARNEL.ini");
};

TEST_F(Ini, ValuesAreThoseOfTheFirstKeyInTheFirstSection) {
  test::WriteFile(sPath,
                  "early=1\n[A]\r\r\n key =  v v \nk=a=b\n;c=1\n#d=1\n=e\nKEY=upper\nkey=second\n"
                  " [ B ] \nk=b\n[]\n[x\nn=\0\xFF\n  [C]  \nempty=\n[A]\nlate=1\n[[D]]\nk=d"s);
  const std::array<std::array<const char*, 3>, 18> asCase = {{{"A", "key", "v v"},
                                                              {" [A] ", " key ", "v v"},
                                                              {"A", "k", "a=b"},
                                                              {"A", "KEY", "upper"},
                                                              {"A", "Key", "default"},
                                                              {"a", "key", "default"},
                                                              {"A", ";c", "default"},
                                                              {"A", "c", "default"},
                                                              {"A", "#d", "default"},
                                                              {"A", "", "default"},
                                                              {"A", "late", "default"},
                                                              {"A", "early", "default"},
                                                              {"", "early", "default"},
                                                              {"B", "k", "default"},
                                                              {"[ B ]", "k", "b"},
                                                              {"x", "n", "default"},
                                                              {"C", "empty", ""},
                                                              {"[[D]]", "k", "d"}}};
  EXPECT_TRUE(RunInChild([&] {
    for (const auto& [sSection, sKey, sValue] : asCase) {
      EXPECT_EQ(IniGetValue(sSection, sKey, " default "), sValue) << sSection << " " << sKey;
    }
  }));
}

TEST_F(Ini, ASaveMergesWhatWasSetHereIntoWhatTheFileHolds) {
  struct Case {
    const char* sWhat;
    std::optional<std::string> sLoaded;  // the file as this program loads it; none: not loaded
    std::vector<std::array<const char*, 3>> asSet;
    std::optional<std::string> sMeanwhile;  // what another program has made of it
    std::string sSaved;
  };
  const std::vector<Case> atCase = {
      {"a missing file", {}, {{"A", "k", "1"}}, {}, "[A]\r\nk=1"},
      {"an empty file", "", {{"A", "k", "1"}, {"B", "k", "2"}}, {}, "[A]\r\nk=1\r\n[B]\r\nk=2"},
      {"line ends and texts stay",
       "x\r\n\n[A]\nq = 1 \n",
       {{" A ", " k ", " 1 "}},
       {},
       "x\r\n\r\n[A]\r\nq = 1 \r\n\r\nk=1"},
      {"in place, and at the section's end",
       "[A]\r\nk = 0\r\nk=5\r\n[B]\r\nb=1",
       {{"A", "k", "1"}, {"A", "new", "2"}},
       {},
       "[A]\r\nk=1\r\nk=5\r\nnew=2\r\n[B]\r\nb=1"},
      {"the same text again",
       "[A]\r\nk=1",
       {{"A", "k", "1"}, {"A", "k", "1"}},
       "[A]\r\nk=2",
       "[A]\r\nk=1"},
      {"last value set", "[A]\r\nk=1", {{"A", "k", "2"}, {"A", "k", "3"}}, {}, "[A]\r\nk=3"},
      {"another's key stays, one's own wins",
       "[A]\r\nk=1\r\nq=1",
       {{"A", "k", "2"}},
       "; hi\r\n[A]\r\nq=9\r\n[C]\r\nc=1",
       "; hi\r\n[A]\r\nq=9\r\nk=2\r\n[C]\r\nc=1"},
      {"another emptied the file", "[A]\r\nk=1\r\nq=1", {{"A", "k", "2"}}, "", "[A]\r\nk=2"},
      {"another wrote before the first load",
       {},
       {{"A", "k", "2"}},
       "[A]\nq=1\nk=1",
       "[A]\r\nq=1\r\nk=2"},
      {"sections without keys go, their comments stay",
       "[E]\r\n;c\r\n[A]\r\nk=1\r\n[F]\r\n[G]\r\n",
       {{"A", "k", "2"}},
       {},
       ";c\r\n[A]\r\nk=2\r\n"},
      {"comments around the keys",
       "[B]\r\n;b\r\nb=1\r\n;c",
       {{"A", "k", "2"}},
       {},
       "[B]\r\n;b\r\nb=1\r\n;c\r\n[A]\r\nk=2"},
      {"8-bit text and character 0",
       std::string("[\xC4]\r\n\0\xFF=1", 9),
       {{"\xC4", "\xE4", "\xF6"}},
       {},
       std::string("[\xC4]\r\n\0\xFF=1\r\n\xE4=\xF6", 14)},
      {"nothing set", "[E]\n", {{"", "k", "1"}, {"A", "  ", "1"}}, {}, "[E]\n"},
      {"a key above all sections", "k=1\r\n[A]\r\nk=1", {{"A", "k", "2"}}, {}, "k=1\r\n[A]\r\nk=2"},
  };
  for (const Case& tCase : atCase) {
    std::filesystem::remove(sPath);
    if (tCase.sLoaded) test::WriteFile(sPath, *tCase.sLoaded);
    EXPECT_TRUE(RunInChild([&] {
      EXPECT_TRUE(!tCase.sLoaded || modAllIni::IniLoad());
      for (const auto& [sSection, sKey, sValue] : tCase.asSet) {
        EXPECT_TRUE(IniSetValue(sSection, sKey, sValue));
      }
      if (tCase.sMeanwhile) test::WriteFile(sPath, *tCase.sMeanwhile);
      EXPECT_TRUE(IniFlush());
      const std::string sAgain = test::ReadFile(sPath);
      EXPECT_EQ(sAgain, tCase.sSaved);
      // The save has loaded the file anew and left nothing to save.
      test::WriteFile(sPath, "other");
      EXPECT_TRUE(IniFlush());
      EXPECT_EQ(test::ReadFile(sPath), "other");
    })) << tCase.sWhat;
  }
}

TEST(IniLines, NothingLeftIsAnEmptyStore) {
  modAllIni::IniLines asLine = {"[A]", "[B]"};
  modAllIni::IniDropEmptySections(asLine);
  EXPECT_EQ(asLine, modAllIni::IniLines{""});
}

TEST_F(Ini, AFileThatCannotBeHadCostsOneMessageAndNoSetting) {
  const std::string sText = "[A]\r\nk=1\r\n[GENERAL]\r\ntheirs=1";
  EXPECT_TRUE(RunInChild([&] {
    recording::Toolkit tToolkit;
    test::WriteFile(sPath, sText);
    const auto hHeld = platform::OpenExclusiveFile(sPath);
    tToolkit.Answer(1, [] { EXPECT_EQ(IniGetValue("A", "k", "nested"), "nested"); });
    const auto tStart = std::chrono::steady_clock::now();
    for (int iKey = 0; iKey < 78; ++iKey) EXPECT_EQ(IniGetValue("A", "k", " d "), "d");
    EXPECT_GE(std::chrono::steady_clock::now() - tStart, std::chrono::milliseconds(2500));
    const std::vector<recording::Box> atExpected = {
        {"Unable to load configuration file", 48, "Varnel - Error"}};
    EXPECT_EQ(tToolkit.TakeBoxes(), atExpected);
    IniSetValue("GENERAL", "ours", "2");
    EXPECT_EQ(IniGetValue("GENERAL", "ours", "d"), "2");
    EXPECT_FALSE(IniFlush());
    EXPECT_EQ(test::ReadFile(sPath), sText);
    platform::CloseSystemHandle(hHeld);
    EXPECT_TRUE(IniFlush());
    EXPECT_EQ(test::ReadFile(sPath), sText + "\r\nours=2");
    EXPECT_EQ(IniGetValue("A", "k", "d"), "1");
  }));
  // With a window active already, that window goes and the program ends.
  EXPECT_TRUE(RunInChild([&] {
    recording::Toolkit tToolkit;
    const auto pForm = std::make_shared<recording::Form>(tToolkit, platform::FormDesign{}, nullptr);
    tToolkit.pActive = pForm.get();
    pForm->bClosing = true;
    platform::OpenExclusiveFile(sPath);
    tToolkit.Answer(1);
    EXPECT_THROW(IniGetValue("A", "k", "d"), recording::ProgramEnded);
  }));
}

TEST_F(Ini, WhatIsNoWritableFileGivesTheDefaults) {
  std::filesystem::create_directories(tFolder.Path("folder/VARNEL/VARNEL.ini"));
  std::filesystem::create_directories(tFolder.Path("read-only/VARNEL"));
  std::filesystem::create_directories(tFolder.Path("file"));
  test::WriteFile(tFolder.Path("read-only/VARNEL/VARNEL.ini"), "[A]\nk=1");
  test::WriteFile(tFolder.Path("file/VARNEL"), "[A]\nk=1");
  ASSERT_EQ(::chmod(tFolder.Path("read-only/VARNEL/VARNEL.ini").c_str(), 0444), 0);
  ASSERT_EQ(::chmod(tFolder.Path().c_str(), 0755), 0);
  std::vector<test::ChildProcess> atChild;
  for (const char* sWhat : {"folder", "read-only", "file", "missing"}) {
    atChild.emplace_back([&] {
      // Root may write anything.
      ASSERT_TRUE(::geteuid() != 0 || ::seteuid(65534) == 0);
      ::setenv("LOCALAPPDATA", tFolder.Path(sWhat).c_str(), 1);
      recording::Toolkit tToolkit;
      tToolkit.Answer(1);
      EXPECT_EQ(IniGetValue("A", "k", "d"), "d") << sWhat;
      EXPECT_EQ(IniGetValue("A", "k", "d"), "d") << sWhat;
      EXPECT_EQ(tToolkit.TakeBoxes().size(), 1U) << sWhat;
    });
  }
  for (auto& tChild : atChild) EXPECT_TRUE(tChild.Succeeded());
}

TEST_F(Ini, HugeFilesAreSavedWhole) {
  std::string sSections;
  std::string sKeptSections;
  for (int iLine = 0; iLine < 100000; ++iLine) {
    sSections += "[]\r\n[s]\r\n;";
    sKeptSections += "[]\r\n;";
  }
  std::string sLines;
  while (sLines.size() < 20'000'000) sLines += std::string(98, 'x') + "\r\n";
  sLines += "k=" + std::string(80'000'000, ' ') + "[";
  for (const auto& [sText, sKept] :
       {std::pair(sSections, sKeptSections), std::pair(sLines, sLines)}) {
    test::WriteFile(sPath, sText);
    EXPECT_TRUE(RunInChild([] {
      EXPECT_EQ(IniGetValue("A", "k", "d"), "d");
      IniSetValue("A", "k", "1");
      EXPECT_TRUE(IniFlush());
    }));
    EXPECT_TRUE(test::ReadFile(sPath) == sKept + "\r\n[A]\r\nk=1");
  }
}

}  // namespace
