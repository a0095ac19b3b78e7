#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Environment.h"
#include "platform/TestProcess.h"

namespace {

using namespace platform;

// Folder names below are those in the test's folder, %U the user's number.
TEST(Environment, FoldersAreTheNamedOnesOrTheUsersOwn) {
  const struct {
    const char* sWhat;
    std::vector<std::pair<const char*, const char*>> asVariable;
    std::optional<std::string> sTemp, sData;
  } atCase[] = {
      {"named", {{"TEMP", "open"}, {"LOCALAPPDATA", "open"}}, "open", "open"},
      {"named but missing", {{"TEMP", "none"}, {"LOCALAPPDATA", "none"}}, "none", "none"},
      {"the user's by XDG",
       {{"XDG_RUNTIME_DIR", "private"}, {"XDG_DATA_HOME", "new/data"}},
       "private",
       "new/data"},
      {"XDG shared with a group",
       {{"XDG_RUNTIME_DIR", "group"}, {"XDG_DATA_HOME", "group"}, {"TMPDIR", "tmp"}},
       "tmp/varnel-%U",
       "group"},
      {"XDG open to all",
       {{"XDG_RUNTIME_DIR", "open"}, {"XDG_DATA_HOME", "open"}, {"TMPDIR", "tmp"}},
       "tmp/varnel-%U",
       std::nullopt},
      {"a link in place of the temporary folder",
       {{"TMPDIR", "linked"}, {"HOME", "home"}},
       std::nullopt,
       "home/.local/share"},
      {"a folder open to all in its place",
       {{"TMPDIR", "writable"}, {"HOME", "file"}},
       std::nullopt,
       std::nullopt},
  };
  for (const auto& tCase : atCase) {
    const test::TestFolder tFolder;
    const std::string sUser = "varnel-" + std::to_string(::geteuid());
    for (const auto& [sName, lMode] :
         std::vector<std::pair<std::string, mode_t>>{{"open", 0777},
                                                     {"private", 0700},
                                                     {"group", 0770},
                                                     {"tmp", 01777},
                                                     {"home", 0755},
                                                     {"linked", 0700},
                                                     {"writable", 0700},
                                                     {"writable/" + sUser, 0777}}) {
      std::filesystem::create_directory(tFolder.Path(sName));
      ASSERT_EQ(::chmod(tFolder.Path(sName).c_str(), lMode), 0);
    }
    std::filesystem::create_directory_symlink(tFolder.Path("private"),
                                              tFolder.Path("linked/" + sUser));
    test::WriteFile(tFolder.Path("file"), "");
    const auto fnPath = [&](std::optional<std::string> sName) {
      if (sName && sName->ends_with("varnel-%U")) sName->replace(sName->size() - 9, 9, sUser);
      return sName ? tFolder.Path(*sName) : sName;
    };
    EXPECT_TRUE(test::RunInChild([&] {
      for (const char* sName :
           {"TEMP", "LOCALAPPDATA", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "TMPDIR", "HOME"}) {
        ::unsetenv(sName);
      }
      for (const auto& [sName, sValue] : tCase.asVariable) {
        ::setenv(sName, tFolder.Path(sValue).c_str(), 1);
      }
      EXPECT_EQ(UserTempFolder(), fnPath(tCase.sTemp)) << tCase.sWhat;
      const auto sData = UserDataFolder();
      EXPECT_EQ(sData, fnPath(tCase.sData)) << tCase.sWhat;
      struct stat tStatus = {};
      if (tCase.sData == "new/data" && ::stat(sData->c_str(), &tStatus) == 0) {
        EXPECT_EQ(tStatus.st_mode & 0777U, 0700U);
      }
    })) << tCase.sWhat;
  }
}

TEST(Environment, FilesAreReadWholeOrWithAReason) {
  const test::TestFolder tFolder;
  const std::string sText("\xEF\0\r\n\x1A,", 6);
  test::WriteFile(tFolder.Path("text"), sText);
  ASSERT_EQ(::mkfifo(tFolder.Path("pipe").c_str(), 0600), 0);
  using enum FileText::Outcome;
  const struct {
    const char* sName;
    FileText::Outcome eOutcome;
    std::string sText;
  } atCase[] = {{"text", Read, sText},       {"none", Missing, ""},    {"text/below", Missing, ""},
                {"none/below", Missing, ""}, {"pipe", Unreadable, ""}, {"", Unreadable, ""}};
  for (const auto& tCase : atCase) {
    const FileText tRead = ReadFileText(tFolder.Path(tCase.sName));
    EXPECT_EQ(tRead.eOutcome, tCase.eOutcome) << tCase.sName;
    EXPECT_EQ(tRead.sText, tCase.sText) << tCase.sName;
  }
}

}  // namespace
