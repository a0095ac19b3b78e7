#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>

#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"
#include "platform/linux/NamedObject.h"

namespace {

using namespace platform;

std::string FileOf(std::string_view sKind, const std::string& sName) {
  return "/dev/shm" + NamedObject::FileName(sKind, sName);
}

bool HaveSmallMemory() {
  return ::unshare(CLONE_NEWNS) == 0 &&
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("tmpfs", "/dev/shm", "tmpfs", 0, "size=64k") == 0;
}

const test::ChildCode MAY_MOUNT([](const test::Arguments&) { EXPECT_TRUE(HaveSmallMemory()); });

const test::ChildCode ARE_REFUSED([](const test::Arguments&) {
  ASSERT_TRUE(HaveSmallMemory());
  const std::string sFile = FileOf("memory", "name");
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

TEST(NamedObjectsOnLinux, AreNotTouchedWhereTheyWereCut) {
  const std::string sName = test::UniqueName();
  const std::uint32_t hMemory = CreateNamedMemory(sName, 0x20000);
  std::uint8_t* const pView = MapNamedMemory(hMemory);
  EXPECT_EQ(NamedMemorySize(pView), 0x20000U);
  ASSERT_EQ(::truncate(FileOf("memory", sName).c_str(), 0x1FFFF), 0);
  EXPECT_EQ(NamedMemorySize(pView), 0U);
  ASSERT_EQ(::truncate(FileOf("memory", sName).c_str(), 0x100000000), 0);
  EXPECT_EQ(NamedMemorySize(pView), 0x20000U);
  EXPECT_EQ(MapNamedMemory(hMemory), nullptr) << "4 GB";
  EXPECT_EQ(LastSystemError(), static_cast<std::uint32_t>(EFBIG));
  UnmapNamedMemory(pView);
  CloseSystemHandle(hMemory);

  const std::uint32_t hEvent = CreateNamedEvent(sName);
  ASSERT_TRUE(SetNamedEvent(hEvent));
  ASSERT_EQ(::truncate(FileOf("event", sName).c_str(), 0), 0);
  EXPECT_FALSE(SetNamedEvent(hEvent) || WaitNamedEvent(hEvent) || ResetNamedEvent(hEvent));
  EXPECT_EQ(CreateNamedEvent(sName), 0U);
  CloseSystemHandle(hEvent);
}

}  // namespace
