#include <sys/stat.h>
#include <unistd.h>

#include "platform/Environment.h"
#include "platform/SavedFile.h"
#include "platform/TestProcess.h"

namespace {

using platform::SaveFileWhole;

// As a user who may write the file, but neither replace it nor make another in its folder.
const test::ChildCode SAVE_IN_A_CLOSED_FOLDER([](const test::Arguments& asFolder) {
  const std::string sFile = asFolder[0] + "/open", sNewFile = asFolder[0] + "/new";
  ASSERT_TRUE(test::GiveUpRights());
  EXPECT_EQ(SaveFileWhole(sFile, "new"), "");
  EXPECT_NE(SaveFileWhole(sNewFile, "new"), "");
});

TEST(SavedFileOnLinux, IsWrittenWhereAPlainWriteWouldBe) {
  const test::TestFolder tFolder;
  const std::string sFile = tFolder.Path("open");
  test::WriteFile(sFile, "old and longer");
  test::WriteFile(tFolder.Path(".varnel-Killed"), "of a killed program");
  ASSERT_TRUE(::chmod(sFile.c_str(), 0666) == 0 && ::chmod(tFolder.Path().c_str(), 0555) == 0);
  EXPECT_TRUE(test::RunInChild(SAVE_IN_A_CLOSED_FOLDER, {tFolder.Path()}));
  ASSERT_EQ(::chmod(tFolder.Path().c_str(), 0755), 0);
  EXPECT_EQ(test::ReadFile(sFile), "new");
  // A name of the greatest length, and a link to a file that is yet to be made.
  for (const std::string& sName : {std::string(255, 'n'), std::string("link")}) {
    const std::string sPath = tFolder.Path(sName);
    if (sName == "link") std::filesystem::create_symlink("made", sPath);
    EXPECT_EQ(SaveFileWhole(sPath, "text"), "");
    EXPECT_EQ(test::ReadFile(sPath), "text");
  }
  EXPECT_EQ(test::ReadFile(tFolder.Path("made")), "text");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tFolder.Path()), {}), 4);
}

constexpr uid_t NOBODY = 65534;

// As a user before whom the folder is shut.
const test::ChildCode LOOK_INTO_A_SHUT_FOLDER([](const test::Arguments& asFolder) {
  ASSERT_TRUE(test::GiveUpRights());
  EXPECT_TRUE(platform::PathExists(asFolder[0] + "/shut/file"));
  EXPECT_FALSE(platform::PathExists(asFolder[0] + "/missing/file"));
});

TEST(SavedFileOnLinux, IsNotLedAstrayByAnotherUsersLink) {
  const test::TestFolder tFolder;
  ASSERT_EQ(::chmod(tFolder.Path().c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(tFolder.Path("shut").c_str(), 0700), 0);
  EXPECT_TRUE(test::RunInChild(LOOK_INTO_A_SHUT_FOLDER, {tFolder.Path()}));

  std::filesystem::create_directory(tFolder.Path("tmp"));
  ASSERT_EQ(::chmod(tFolder.Path("tmp").c_str(), 01777), 0);
  const std::string sVictim = tFolder.Path("victim");
  const std::string sFileLink = tFolder.Path("tmp/file");
  const std::string sFolderLink = tFolder.Path("tmp/folder");
  std::filesystem::create_symlink(sVictim, sFileLink);
  std::filesystem::create_symlink("..", sFolderLink);
  for (const std::string& sPath : {sFileLink, sFolderLink + "/victim"}) {
    for (const uid_t lOwner : {NOBODY, ::geteuid()}) {
      ASSERT_EQ(::lchown(sFileLink.c_str(), lOwner, lOwner), 0);
      ASSERT_EQ(::lchown(sFolderLink.c_str(), lOwner, lOwner), 0);
      test::WriteFile(sVictim, "old");
      const bool bOwn = lOwner != NOBODY;
      EXPECT_EQ(SaveFileWhole(sPath, "new").empty(), bOwn) << sPath;
      EXPECT_EQ(test::ReadFile(sVictim), bOwn ? "new" : "old") << sPath;
    }
  }
}

}  // namespace
