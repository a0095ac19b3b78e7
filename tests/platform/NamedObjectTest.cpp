#include <sched.h>
#include <sys/mount.h>

#include <atomic>
#include <cerrno>
#include <deque>

#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"
#include "platform/linux/NamedObject.h"

namespace {

using namespace platform;
using test::RunInChild;

// The test process itself opens nothing: its children shall start as new programs do.
class NamedObjects : public testing::Test {
 protected:
  void TearDown() override {
    for (const auto& tEntry : std::filesystem::directory_iterator("/dev/shm")) {
      EXPECT_EQ(tEntry.path().string().find(sName), std::string::npos) << "left: " << tEntry;
    }
  }
  const std::string sName = "test" + std::to_string(::getpid());
};

TEST_F(NamedObjects, AreFoundByAnyNameFromAnotherProcess) {
  const std::string sLong(300, '\\'),
      asEnd[] = {"",  " ", ",a b", "\\x/y",     "/..",       "%41",
                 "A", "a", "\xFF", sLong + "1", sLong + "2", sLong + sLong};
  EXPECT_TRUE(RunInChild([&] {
    std::uint8_t bLast = 0;
    for (const auto& sEnd : asEnd) {
      EXPECT_EQ(std::exchange(*MapNamedMemory(CreateNamedMemory(sName + sEnd, 9)), ++bLast), 0);
    }
    EXPECT_TRUE(RunInChild([&, bNumber = 0]() mutable {
      for (const auto& sEnd : asEnd) {
        EXPECT_EQ(*MapNamedMemory(OpenNamedMemory(sName + sEnd)), ++bNumber) << sEnd;
      }
    }));
    for (const auto& sRefused : {std::string(), sName + '\0', std::string(40000, 'n')}) {
      EXPECT_EQ(CreateNamedMemory(sRefused, 16) + CreateNamedEvent(sRefused), 0U);
    }
  }));
}

TEST_F(NamedObjects, LiveFromTheFirstOpeningToTheLastClose) {
  EXPECT_TRUE(RunInChild([&] {
    EXPECT_EQ(OpenNamedMemory(sName) + CreateNamedMemory(sName, 0), 0U);
    const auto hFirst = CreateNamedMemory(sName, 5000);
    auto* const pFirst = MapNamedMemory(hFirst);
    // A second opening, of whatever size, is the same memory and keeps it alive.
    const auto hSecond = CreateNamedMemory(sName, 100000);
    auto* const pSecond = MapNamedMemory(hSecond);
    EXPECT_EQ(NamedMemorySize(pSecond), 5000U);
    for (const auto hClosed : {hFirst, hFirst}) CloseSystemHandle(hClosed);
    EXPECT_EQ(MapNamedMemory(hFirst), nullptr);
    EXPECT_EQ(pSecond[4999] = 7, pFirst[4999]);
    for (auto* const pUnmapped : {pSecond, pSecond}) UnmapNamedMemory(pUnmapped);
    EXPECT_EQ(NamedMemorySize(pSecond), 0U);
    EXPECT_TRUE(RunInChild([] {}));  // its end is no close, though it has the same openings
    const auto hThird = OpenNamedMemory(sName);
    EXPECT_NE(hThird, 0U);
    for (const auto hClosed : {hSecond, hThird}) CloseSystemHandle(hClosed);
    // After the last close the view is still good, and the name leads to a new block of zeros.
    EXPECT_EQ(OpenNamedMemory(sName), 0U);
    EXPECT_EQ(MapNamedMemory(CreateNamedMemory(sName, 5000))[4999], 0);
    EXPECT_EQ(pFirst[4999], 7);
    EXPECT_TRUE(MapNamedMemory(CreateNamedEvent(sName)) == nullptr) << "kinds mixed";
  }));
}

TEST_F(NamedObjects, AreNotPoisonedByKilledProcesses) {
  const auto fnUseAndDie = [&](int iStage) {
    auto& lStage = test::Shared<std::atomic<int>>();
    test::ChildProcess tUser([&] {
      lStage = 1;
      std::fill_n(MapNamedMemory(CreateNamedMemory(sName, 4096)), 4096, std::uint8_t{0xEE});
      SetNamedEvent(CreateNamedEvent(sName));
      lStage = 2;
      ::pause();
    });
    ASSERT_TRUE(test::WaitUntil([&] { return lStage >= iStage; }));
    test::SleepUpTo(600);
  };
  EXPECT_TRUE(RunInChild([&] {
    CreateNamedEvent(sName + "running");
    for (int iRound = 0; iRound < 100; ++iRound) {
      // Killed at any moment, the only user leaves nothing that the next one would see ...
      fnUseAndDie(1);
      EXPECT_TRUE(iRound % 2 == 0 || OpenNamedMemory(sName) == 0);
      const auto hMemory = CreateNamedMemory(sName, 4096);
      auto* const pView = MapNamedMemory(hMemory);
      EXPECT_EQ(std::count(pView, pView + 4096, 0), 4096);
      const auto hEvent = CreateNamedEvent(sName);
      EXPECT_FALSE(WaitNamedEvent(hEvent));
      CloseSystemHandle(hEvent);
      // ... and a second user takes nothing from the first.
      fnUseAndDie(1);
      EXPECT_TRUE(RunInChild([&] {
        EXPECT_TRUE(std::equal(pView, pView + 4096, MapNamedMemory(OpenNamedMemory(sName))));
      }));
      CloseSystemHandle(hMemory);
      UnmapNamedMemory(pView);
      EXPECT_EQ(OpenNamedMemory(sName), 0U);
    }
  }));
  // The first opening of any object clears up after processes that nobody followed.
  fnUseAndDie(2);
  EXPECT_TRUE(RunInChild([&] { CreateNamedEvent(sName + "other"); }));
}

TEST_F(NamedObjects, AreOneOfANameAtATimeInAStorm) {
  // Which life of the object is in use (high half) and by how many (low half).
  auto& lInUse = test::Shared<std::atomic<std::uint64_t>>();
  auto& lLives = test::Shared<std::atomic<std::uint32_t>>();
  const auto fnStorm = [&](bool bCreate) {
    for (int iRound = 0; iRound < 1500; ++iRound) {
      const auto hMemory = bCreate ? CreateNamedMemory(sName, 64) : OpenNamedMemory(sName);
      if (hMemory == 0 && !bCreate) continue;
      auto* const pView = MapNamedMemory(hMemory);
      ASSERT_NE(pView, nullptr) << LastSystemError();
      auto* const plWord = reinterpret_cast<std::atomic<std::uint32_t>*>(pView);
      const bool bZero = plWord[1] == 0;
      std::uint32_t lLife = 0;
      const std::uint32_t lNewLife = ++lLives;
      const bool bNew = plWord[0].compare_exchange_strong(lLife, lNewLife);
      if (bNew) lLife = lNewLife;
      ASSERT_TRUE(bZero || !bNew) << "a new object is not zero";
      for (std::uint64_t lOld = lInUse, lNext = 0; lNext == 0;) {
        const bool bNobody = (lOld & 0xFFFFFFFFU) == 0;
        ASSERT_TRUE(bNobody || lOld >> 32U == lLife) << "two objects of one name";
        lNext = bNobody ? (std::uint64_t{lLife} << 32U) + 1 : lOld + 1;
        if (!lInUse.compare_exchange_weak(lOld, lNext)) lNext = 0;
      }
      plWord[1] = 1;
      if (iRound % 4 == 0) test::SleepUpTo(100);
      --lInUse;
      CloseSystemHandle(hMemory);
      UnmapNamedMemory(pView);
    }
  };
  std::deque<test::ChildProcess> atChild;
  for (const bool bCreate : {true, true, false, true, false, true}) {
    atChild.emplace_back([&, bCreate] { fnStorm(bCreate); });
  }
  for (auto& tChild : atChild) EXPECT_TRUE(tChild.Succeeded());
}

TEST_F(NamedObjects, AreRefusedWhenAnotherUsersOrTooBig) {
  const auto fnSmallMemory = [] {
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", "/dev/shm", "tmpfs", 0, "size=64k") == 0;
  };
  if (!RunInChild([&] { EXPECT_TRUE(fnSmallMemory()); })) GTEST_SKIP() << "no right to mount";
  EXPECT_TRUE(RunInChild([&] {
    ASSERT_TRUE(fnSmallMemory());
    const std::string sFile = "/dev/shm" + NamedObject::FileName("memory", sName);
    test::WriteFile(sFile, "trap");
    ASSERT_EQ(::chown(sFile.c_str(), 65534, 65534), 0);
    EXPECT_EQ(OpenNamedMemory(sName) + CreateNamedMemory(sName, 16), 0U);
    EXPECT_EQ(test::ReadFile(sFile), "trap");
    EXPECT_EQ(CreateNamedMemory(sName + "big", 0x20000), 0U);
    EXPECT_EQ(LastSystemError(), static_cast<std::uint32_t>(ENOSPC));
  }));
}

TEST_F(NamedObjects, AreEventsThatSaturate) {
  EXPECT_TRUE(RunInChild([&] {
    const auto hEvent = CreateNamedEvent(sName);
    EXPECT_FALSE(WaitNamedEvent(hEvent));
    EXPECT_TRUE(RunInChild([&] {
      EXPECT_TRUE(SetNamedEvent(CreateNamedEvent(sName)) && SetNamedEvent(CreateNamedEvent(sName)));
    }));
    const auto hSame = CreateNamedEvent(sName);
    EXPECT_TRUE(WaitNamedEvent(hSame) && !WaitNamedEvent(hEvent));
    EXPECT_TRUE(SetNamedEvent(hEvent) && ResetNamedEvent(hSame) && !WaitNamedEvent(hEvent));
    EXPECT_FALSE(SetNamedEvent(0) || ResetNamedEvent(0) || WaitNamedEvent(0));
  }));
}

}  // namespace
