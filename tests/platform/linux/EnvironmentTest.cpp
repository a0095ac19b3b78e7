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

}  // namespace
