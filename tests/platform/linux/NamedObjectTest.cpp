#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>

#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"
#include "platform/linux/NamedObject.h"

namespace {

using namespace platform;

bool HaveSmallMemory() {
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("tmpfs", "/dev/shm", "tmpfs", 0, "size=64k") == 0;
}

const test::ChildCode MAY_MOUNT([](const test::Arguments&) { EXPECT_TRUE(HaveSmallMemory()); });

const test::ChildCode ARE_REFUSED([](const test::Arguments&) {
  ASSERT_TRUE(HaveSmallMemory());
  const std::string sFile = "/dev/shm" + NamedObject::FileName("memory", "name");
  test::WriteFile(sFile, "trap");
  ASSERT_EQ(::chown(sFile.c_str(), 65534, 65534), 0);
  EXPECT_EQ(OpenNamedMemory("name") + CreateNamedMemory("name", 16), 0U);
  EXPECT_EQ(test::ReadFile(sFile), "trap");
  EXPECT_EQ(CreateNamedMemory("big", 0x20000), 0U);
  EXPECT_EQ(LastSystemError(), static_cast<std::uint32_t>(ENOSPC));
});

TEST(NamedObjectsOnLinux, AreRefusedWhenAnotherUsersOrTooBig) {
  if (!test::RunInChild(MAY_MOUNT)) GTEST_SKIP() << "no right to mount";
  EXPECT_TRUE(test::RunInChild(ARE_REFUSED));
}

}  // namespace
