#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "platform/ExclusiveFile.h"
#include "platform/TestProcess.h"

namespace {

using namespace platform;
using test::ReadFile;

const std::string sOld(300000, 'o');
const std::string sNew(200000, 'n');

const test::ChildCode WRITE([](const test::Arguments& asPath) {
  const auto hFile = OpenExclusiveFile(asPath[0]);
  test::WriteFile(asPath[0] + ".held", "");
  WriteExclusiveFile(hFile, sNew);
});

const test::ChildCode WRITE_ON_A_FULL_DISK([](const test::Arguments& asPath) {
  std::signal(SIGXFSZ, SIG_IGN);
  const struct rlimit tLimit = {8192, 8192};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tLimit), 0);
  EXPECT_FALSE(WriteExclusiveFile(OpenExclusiveFile(asPath[0]), sNew));
});

TEST(ExclusiveFileOnLinux, IsReplacedInOneStepAndStaysTheSameFileToOthers) {
  const test::TestFolder tFolder;
  const std::string sPath = tFolder.Path("a file"), sHeld = sPath + ".held";
  const std::string sOthers = sPath + ".new";
  test::WriteFile(sOthers, "the user's");
  for (int iRound = 0; iRound < 60; ++iRound) {
    test::WriteFile(sPath, sOld);
    {
      const test::ChildProcess tKilled(WRITE, {sPath});
      ASSERT_TRUE(test::WaitUntil([&] { return std::filesystem::remove(sHeld); }));
      test::SleepUpTo(2000);
    }
    const std::string sFound = ReadFile(sPath);
    ASSERT_TRUE(sFound == sOld || sFound == sNew) << sFound.size();
  }
  test::WriteFile(sPath, sOld);
  EXPECT_TRUE(test::RunInChild(WRITE_ON_A_FULL_DISK, {sPath}));
  EXPECT_EQ(ReadFile(sPath), sOld);
  // Of the killed ones nothing is left, and what is not theirs still is.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tFolder.Path()), {}), 2);
  EXPECT_EQ(ReadFile(sOthers), "the user's");
  // Link, owner and mode stay.
  const uid_t lOwner = ::geteuid() == 0 ? 65534 : ::geteuid();
  ASSERT_TRUE(::chmod(sPath.c_str(), 0640) == 0 && ::chown(sPath.c_str(), lOwner, ~gid_t{0}) == 0);
  std::filesystem::create_symlink("a file", sPath + "'s link");
  auto hFile = OpenExclusiveFile(sPath + "'s link");
  EXPECT_TRUE(WriteExclusiveFile(hFile, sNew) && OpenExclusiveFile(sPath) == 0);
  CloseSystemHandle(hFile);
  struct stat tStatus = {};
  ASSERT_EQ(::stat((sPath + "'s link").c_str(), &tStatus), 0);
  EXPECT_TRUE(std::filesystem::is_symlink(sPath + "'s link") && ReadFile(sPath) == sNew);
  EXPECT_TRUE((tStatus.st_mode & 07777U) == 0640U && tStatus.st_uid == lOwner);
  // Others could lock what they can read.
  ASSERT_TRUE(::chown(sPath.c_str(), ::geteuid(), ~gid_t{0}) == 0);
  CloseSystemHandle(OpenExclusiveFile(sPath));
  ASSERT_EQ(::stat(sPath.c_str(), &tStatus), 0);
  EXPECT_EQ(tStatus.st_mode & 07777U, 0600U);
  // An editor that knows nothing of the lock writes the file, or puts its own in place.
  for (const std::string sEdited : {"edited", "edited again"}) {
    hFile = OpenExclusiveFile(sPath);
    EXPECT_TRUE(ReadExclusiveFile(hFile));
    test::WriteFile(sEdited == "edited" ? sPath : tFolder.Path(sEdited), sEdited);
    if (sEdited != "edited") std::filesystem::rename(tFolder.Path(sEdited), sPath);
    EXPECT_FALSE(WriteExclusiveFile(hFile, "new"));
    EXPECT_EQ(ReadFile(sPath), sEdited);
    CloseSystemHandle(hFile);
  }
}

}  // namespace
