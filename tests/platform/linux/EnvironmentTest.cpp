#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "platform/Environment.h"
#include "platform/TestProcess.h"

namespace {

TEST(Environment, FoldersAreTheNamedOnesOrTheUsersOwn) {
  const test::TestFolder tFolder;
  ::umask(0);
  const std::string sUser = "varnel-" + std::to_string(::geteuid());
  // Names of folders, and what comes of variables with them.
  for (const auto& [sName, lMode] : {std::pair<std::string, mode_t>("open", 0777),
                                     {"own", 0700},
                                     {"group", 0770},
                                     {"bad", 01777},
                                     {"bad/" + sUser, 0777},
                                     {"tmp", 01777},
                                     {"linked", 0700}}) {
    ASSERT_EQ(::mkdir(tFolder.Path(sName).c_str(), lMode), 0);
  }
  std::filesystem::create_directory_symlink("../own", tFolder.Path("linked/" + sUser));
  const std::array<std::string, 6> asCase[] = {
      {"TEMP", "open", "open", "LOCALAPPDATA", "none", "none"},
      {"XDG_RUNTIME_DIR", "own", "own", "XDG_DATA_HOME", "new/data", "new/data"},
      {"XDG_RUNTIME_DIR", "group", "tmp/" + sUser, "XDG_DATA_HOME", "group", "group"},
      {"XDG_RUNTIME_DIR", "open", "tmp/" + sUser, "XDG_DATA_HOME", "open", ""},
      {"TMPDIR", "linked", "", "HOME", "own", "own/.local/share"},
      {"TMPDIR", "bad", "", "HOME", "group", "group/.local/share"},
  };
  for (const auto& asOne : asCase) {
    ::clearenv();
    ::setenv("TMPDIR", tFolder.Path("tmp").c_str(), 1);
    ::setenv(asOne[0].c_str(), tFolder.Path(asOne[1]).c_str(), 1);
    ::setenv(asOne[3].c_str(), tFolder.Path(asOne[4]).c_str(), 1);
    EXPECT_EQ(platform::UserTempFolder().value_or(tFolder.Path()), tFolder.Path(asOne[2]));
    EXPECT_EQ(platform::UserDataFolder().value_or(tFolder.Path()), tFolder.Path(asOne[5]));
  }
}

TEST(Environment, FoldersAreShutToOthersOrRefused) {
  const test::TestFolder tFolder;
  constexpr uid_t NOBODY = 65534;
  const struct {
    std::string sFolder;
    mode_t lMode;
    uid_t lOwner;
    bool bSecured;
    mode_t lModeAfter;
  } atCase[] = {
      {"own", 0700, ::geteuid(), true, 0700},
      {"readable", 0775, ::geteuid(), true, 0700},
      {"writable", 0757, ::geteuid(), false, 0757},
      {"another's", 0700, NOBODY, false, 0700},
  };
  for (const auto& tCase : atCase) {
    const std::string sPath = tFolder.Path(tCase.sFolder);
    ASSERT_TRUE(::mkdir(sPath.c_str(), 0700) == 0 && ::chmod(sPath.c_str(), tCase.lMode) == 0 &&
                ::chown(sPath.c_str(), tCase.lOwner, ~gid_t{0}) == 0);
    EXPECT_EQ(platform::SecureFolder(sPath), tCase.bSecured) << sPath;
    struct stat tStatus = {};
    ASSERT_EQ(::stat(sPath.c_str(), &tStatus), 0);
    EXPECT_EQ(tStatus.st_mode & 0777U, tCase.lModeAfter) << sPath;
  }
  // A link is the user's own only where nobody else could have put it.
  ASSERT_EQ(::mkdir(tFolder.Path("tmp").c_str(), 0700), 0);
  ASSERT_EQ(::chmod(tFolder.Path("tmp").c_str(), 01777), 0);
  std::filesystem::create_directory_symlink("own", tFolder.Path("link"));
  std::filesystem::create_directory_symlink("../own", tFolder.Path("tmp/link"));
  EXPECT_TRUE(platform::SecureFolder(tFolder.Path("link")));
  EXPECT_FALSE(platform::SecureFolder(tFolder.Path("tmp/link")));
}

}  // namespace
