#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <random>
#include <string>

#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using namespace platform;
using test::ChildProcess;
using test::RunInChild;

TEST(ExclusiveFile, IsHeldByOneOpeningAmongAllProcesses) {
  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("a file");
  struct State {
    std::atomic<bool> bHeld = false;
  };
  const test::Shared<State> tState;
  const auto hFile = OpenExclusiveFile(sPath);
  ASSERT_NE(hFile, 0U);
  const auto fnNobodyElse = [&] {
    return OpenExclusiveFile(sPath) == 0 &&
           RunInChild([&] { EXPECT_EQ(OpenExclusiveFile(sPath), 0U); });
  };
  EXPECT_TRUE(fnNobodyElse());
  // Replacing the contents replaces the file, but lets nobody in.
  EXPECT_TRUE(WriteExclusiveFile(hFile, "text"));
  EXPECT_TRUE(fnNobodyElse());
  EXPECT_EQ(ReadExclusiveFile(hFile), "text");
  EXPECT_TRUE(WriteExclusiveFile(hFile, std::string("\0\r\n\xFF", 4)));
  EXPECT_EQ(test::ReadFile(sPath), std::string("\0\r\n\xFF", 4));
  EXPECT_TRUE(WriteExclusiveFile(hFile, ""));
  CloseSystemHandle(hFile);
  EXPECT_EQ(ReadExclusiveFile(hFile), std::nullopt);
  EXPECT_FALSE(WriteExclusiveFile(hFile, "x"));
  EXPECT_EQ(test::ReadFile(sPath), "");
  // A killed holder holds no longer.
  ChildProcess tHolder([&] {
    tState->bHeld = OpenExclusiveFile(sPath) != 0;
    ::pause();
  });
  ASSERT_TRUE(test::WaitUntil([&] { return tState->bHeld.load(); }));
  EXPECT_EQ(OpenExclusiveFile(sPath), 0U);
  tHolder.Kill();
  const auto hAgain = OpenExclusiveFile(sPath);
  EXPECT_NE(hAgain, 0U);
  CloseSystemHandle(hAgain);
}

TEST(ExclusiveFile, AKilledWriterLeavesTheOldOrTheNewText) {
  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("file");
  const std::string sOld(300000, 'o');
  const std::string sNew(200000, 'n');
  std::mt19937 tRandom(2);
  int iNew = 0;
  for (int iRound = 0; iRound < 60; ++iRound) {
    test::WriteFile(sPath, sOld);
    ChildProcess tWriter([&] { WriteExclusiveFile(OpenExclusiveFile(sPath), sNew); });
    test::SleepMicroseconds(static_cast<long>(tRandom() % 4000));
    tWriter.Kill();
    const std::string sFound = test::ReadFile(sPath);
    ASSERT_TRUE(sFound == sOld || sFound == sNew) << sFound.size();
    iNew += sFound == sNew ? 1 : 0;
  }
  EXPECT_GT(iNew, 0);
  // What killed writers left beside the file goes with the next save.
  const auto hFile = OpenExclusiveFile(sPath);
  EXPECT_TRUE(WriteExclusiveFile(hFile, sNew));
  CloseSystemHandle(hFile);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tFolder.Path()), {}), 1);
}

TEST(ExclusiveFile, AFailedWriteKeepsTheOldText) {
  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("file");
  test::WriteFile(sPath, "old");
  EXPECT_TRUE(RunInChild([&] {  // a full disk
    std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit tLimit = {8192, 8192};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tLimit), 0);
    EXPECT_FALSE(WriteExclusiveFile(OpenExclusiveFile(sPath), std::string(100000, 'n')));
  }));
  EXPECT_EQ(test::ReadFile(sPath), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tFolder.Path()), {}), 1);
  // An editor that knows nothing of the lock put its own file in place.
  const auto hFile = OpenExclusiveFile(sPath);
  test::WriteFile(tFolder.Path("edited"), "edited");
  std::filesystem::rename(tFolder.Path("edited"), sPath);
  EXPECT_FALSE(WriteExclusiveFile(hFile, "new"));
  CloseSystemHandle(hFile);
  EXPECT_EQ(test::ReadFile(sPath), "edited");
}

TEST(ExclusiveFile, ReplacingKeepsLinkModeAndOwner) {
  const test::TestFolder tFolder;
  const std::string sTarget = tFolder.Path("target");
  const std::string sLink = tFolder.Path("link");
  test::WriteFile(sTarget, "old");
  std::filesystem::create_symlink("target", sLink);
  ASSERT_EQ(::chmod(sTarget.c_str(), 0640), 0);
  const uid_t lOwner = ::geteuid() == 0 ? 65534 : ::geteuid();
  ASSERT_EQ(::chown(sTarget.c_str(), lOwner, static_cast<gid_t>(-1)), 0);
  const auto hFile = OpenExclusiveFile(sLink);
  EXPECT_EQ(OpenExclusiveFile(sTarget), 0U);
  EXPECT_TRUE(WriteExclusiveFile(hFile, "new"));
  CloseSystemHandle(hFile);
  struct stat tStatus = {};
  ASSERT_EQ(::stat(sTarget.c_str(), &tStatus), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(sLink));
  EXPECT_EQ(tStatus.st_mode & 07777U, 0640U);
  EXPECT_EQ(tStatus.st_uid, lOwner);
  EXPECT_EQ(test::ReadFile(sTarget), "new");
}

TEST(ExclusiveFile, WhatCannotBeWrittenIsNotOpened) {
  const test::TestFolder tFolder;
  std::filesystem::create_directory(tFolder.Path("folder"));
  ASSERT_EQ(::mkfifo(tFolder.Path("pipe").c_str(), 0600), 0);
  test::WriteFile(tFolder.Path("read-only"), "");
  ASSERT_EQ(::chmod(tFolder.Path("read-only").c_str(), 0444), 0);
  ASSERT_EQ(::chmod(tFolder.Path().c_str(), 0755), 0);
  EXPECT_TRUE(RunInChild([&] {
    // Root may write anything.
    ASSERT_TRUE(::geteuid() != 0 || ::seteuid(65534) == 0);
    for (const char* sName : {"folder", "pipe", "read-only", "missing/file", "new"}) {
      EXPECT_EQ(OpenExclusiveFile(tFolder.Path(sName)), 0U) << sName;
    }
  }));
}

}  // namespace
