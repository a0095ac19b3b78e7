#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>

#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using namespace platform;
using test::ReadFile;
using test::RunInChild;

class ExclusiveFile : public testing::Test {
 protected:
  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("a file");
};

TEST_F(ExclusiveFile, IsHeldByOneOpeningAmongAllProcesses) {
  test::WriteFile(sPath, "old");
  const uid_t lOwner = ::geteuid() == 0 ? 65534 : ::geteuid();
  ASSERT_TRUE(::chmod(sPath.c_str(), 0640) == 0 && ::chown(sPath.c_str(), lOwner, ~gid_t{0}) == 0);
  std::filesystem::create_symlink("a file", sPath + "'s link");
  const auto hFile = OpenExclusiveFile(sPath + "'s link");
  // Replacing the contents replaces the file, but lets nobody in; link, owner and mode stay.
  for (const std::string& sText : {std::string("text"), std::string("\0\r\n\xFF", 4), {}}) {
    EXPECT_EQ(OpenExclusiveFile(sPath), 0U);
    EXPECT_TRUE(RunInChild([&] { EXPECT_EQ(OpenExclusiveFile(sPath), 0U); }));
    EXPECT_TRUE(WriteExclusiveFile(hFile, sText) && ReadExclusiveFile(hFile) == sText);
    EXPECT_EQ(ReadFile(sPath), sText);
  }
  struct stat tStatus = {};
  ASSERT_EQ(::stat((sPath + "'s link").c_str(), &tStatus), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(sPath + "'s link"));
  EXPECT_TRUE((tStatus.st_mode & 07777U) == 0640U && tStatus.st_uid == lOwner);
  CloseSystemHandle(hFile);
  EXPECT_TRUE(!ReadExclusiveFile(hFile) && !WriteExclusiveFile(hFile, "x"));
  auto& bHeld = test::Shared<std::atomic<bool>>();
  test::ChildProcess tHolder([&] { bHeld = OpenExclusiveFile(sPath) != 0, ::pause(); });
  ASSERT_TRUE(test::WaitUntil([&] { return bHeld.load(); }));
  EXPECT_EQ(OpenExclusiveFile(sPath), 0U);
  tHolder.Kill();
  EXPECT_NE(OpenExclusiveFile(sPath), 0U);
}

TEST_F(ExclusiveFile, HasTheOldOrTheNewTextWhateverHappens) {
  const std::string sOld(300000, 'o');
  const std::string sNew(200000, 'n');
  for (int iRound = 0; iRound < 60; ++iRound) {
    test::WriteFile(sPath, sOld);
    {
      const test::ChildProcess tKilled([&] { WriteExclusiveFile(OpenExclusiveFile(sPath), sNew); });
      test::SleepUpTo(4000);
    }
    const std::string sFound = ReadFile(sPath);
    ASSERT_TRUE(sFound == sOld || sFound == sNew) << sFound.size();
  }
  EXPECT_TRUE(RunInChild([&] {  // a full disk
    test::WriteFile(sPath, sOld);
    std::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit tLimit = {8192, 8192};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tLimit), 0);
    EXPECT_FALSE(WriteExclusiveFile(OpenExclusiveFile(sPath), sNew));
  }));
  EXPECT_EQ(ReadFile(sPath), sOld);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tFolder.Path()), {}), 1);
  // An editor that knows nothing of the lock writes the file, or puts its own in place.
  for (const std::string sEdited : {"edited", "edited again"}) {
    const auto hFile = OpenExclusiveFile(sPath);
    EXPECT_TRUE(ReadExclusiveFile(hFile));
    test::WriteFile(sEdited == "edited" ? sPath : tFolder.Path(sEdited), sEdited);
    if (sEdited != "edited") std::filesystem::rename(tFolder.Path(sEdited), sPath);
    EXPECT_FALSE(WriteExclusiveFile(hFile, "new"));
    EXPECT_EQ(ReadFile(sPath), sEdited);
    CloseSystemHandle(hFile);
  }
}

}  // namespace
