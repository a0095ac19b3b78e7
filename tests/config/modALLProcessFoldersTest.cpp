#include <gtest/gtest.h>

#include <filesystem>

#include "config/modALLProcessError.h"
#include "config/modALLProcessFolders.h"
#include "platform/TestProcess.h"

namespace {

TEST(Folders, AreMadeOneLevelDeepWhenMissing) {
  const test::TestFolder tFolder;
  ::setenv("TEMP", tFolder.Path().c_str(), 1);
  ::setenv("LOCALAPPDATA", tFolder.Path("none").c_str(), 1);
  EXPECT_EQ(modALLProcess::TempFolder(), tFolder.Path("VARNEL"));
  EXPECT_TRUE(std::filesystem::is_directory(tFolder.Path("VARNEL")));
  EXPECT_EQ(modALLProcess::TempFolder(), tFolder.Path("VARNEL"));
  try {
    FAIL() << modALLProcess::LocalAppFolder();
  } catch (const modALLProcess::RuntimeError& tError) {
    EXPECT_EQ(tError.Number(), 75);
  }
  // A plain file in its place is left there; whoever opens files below it will find out.
  std::filesystem::create_directory(tFolder.Path("none"));
  test::WriteFile(tFolder.Path("none/VARNEL"), "file");
  EXPECT_EQ(modALLProcess::LocalAppFolder(), tFolder.Path("none/VARNEL"));
  EXPECT_EQ(test::ReadFile(tFolder.Path("none/VARNEL")), "file");
}

}  // namespace
