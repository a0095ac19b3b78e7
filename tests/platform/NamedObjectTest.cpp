#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"
#include "platform/linux/NamedObject.h"

// The test process itself opens nothing: its children shall start as new programs do.
namespace {

using namespace platform;
using test::ChildProcess;
using test::RunInChild;
using test::Shared;
using test::WaitUntil;

const std::string sThisRun = "test" + std::to_string(::getpid()) + "_";

// A name that no other run of the tests has.
std::string TestName(std::string_view sWhat) { return sThisRun + std::string(sWhat); }

// What is left in the system of objects whose names contain a text without odd characters.
std::vector<std::string> Leftovers(const std::string& sName) {
  std::vector<std::string> asFound;
  for (const auto& tEntry : std::filesystem::directory_iterator("/dev/shm")) {
    const std::string sFile = tEntry.path().filename();
    if (sFile.find(sName) != std::string::npos) asFound.push_back(sFile);
  }
  return asFound;
}

TEST(NamedMemory, AnyNameIsFoundByAnotherProcessAndNoOther) {
  const std::string sBase = TestName("name");
  const std::string sLong(300, '\\');
  const std::vector<std::string> asName = {
      sBase,          sBase + " ",         sBase + ",a b",      "Local\\" + sBase + "\\x/y",
      sBase + "/..",  sBase + "%41",       sBase + "A",         sBase + "a",
      sBase + "\xFF", sBase + sLong + "1", sBase + sLong + "2", sBase + std::string(5000, 'n')};
  EXPECT_TRUE(RunInChild([&] {
    for (std::size_t lName = 0; lName < asName.size(); ++lName) {
      auto* const pView = MapNamedMemory(CreateNamedMemory(asName[lName], 16));
      ASSERT_NE(pView, nullptr) << asName[lName];
      EXPECT_EQ(*pView, 0) << asName[lName];
      *pView = static_cast<std::uint8_t>(lName + 1);
    }
    EXPECT_TRUE(RunInChild([&] {
      for (std::size_t lName = 0; lName < asName.size(); ++lName) {
        const auto* const pView = MapNamedMemory(OpenNamedMemory(asName[lName]));
        ASSERT_NE(pView, nullptr) << asName[lName];
        EXPECT_EQ(*pView, lName + 1) << asName[lName];
      }
    }));
    for (const auto& sRefused : {std::string(), sBase + '\0', std::string(40000, 'n')}) {
      EXPECT_EQ(CreateNamedMemory(sRefused, 16), 0U);
      EXPECT_EQ(LastSystemError(), static_cast<std::uint32_t>(EINVAL));
      EXPECT_EQ(CreateNamedEvent(sRefused), 0U);
    }
  }));
  EXPECT_EQ(Leftovers(sBase), std::vector<std::string>());
}

TEST(NamedMemory, LivesFromTheFirstOpeningToTheLastClose) {
  EXPECT_TRUE(RunInChild([] {
    const std::string sName = TestName("life");
    EXPECT_EQ(OpenNamedMemory(sName), 0U);
    EXPECT_EQ(CreateNamedMemory(sName, 0), 0U);
    const auto hFirst = CreateNamedMemory(sName, 5000);
    auto* const pFirst = MapNamedMemory(hFirst);
    EXPECT_EQ(NamedMemorySize(pFirst), 5000U);
    pFirst[4999] = 7;
    // A second opening, of whatever size, is the same memory and keeps it alive.
    const auto hSecond = CreateNamedMemory(sName, 100000);
    auto* const pSecond = MapNamedMemory(hSecond);
    EXPECT_EQ(NamedMemorySize(pSecond), 5000U);
    CloseSystemHandle(hFirst);
    CloseSystemHandle(hFirst);
    EXPECT_EQ(MapNamedMemory(hFirst), nullptr);
    EXPECT_EQ(pSecond[4999], 7);
    UnmapNamedMemory(pSecond);
    EXPECT_EQ(NamedMemorySize(pSecond), 0U);
    UnmapNamedMemory(pSecond);
    // The end of a forked process, which has the same openings, is no close.
    EXPECT_TRUE(RunInChild([] {}));
    const auto hThird = OpenNamedMemory(sName);
    EXPECT_NE(hThird, 0U);
    CloseSystemHandle(hSecond);
    CloseSystemHandle(hThird);
    // After the last close the view is still good, and the name leads to a new block of zeros.
    EXPECT_EQ(OpenNamedMemory(sName), 0U);
    EXPECT_EQ(pFirst[4999], 7);
    const auto* const pNew = MapNamedMemory(CreateNamedMemory(sName, 200));
    EXPECT_EQ(NamedMemorySize(pNew), 200U);
    EXPECT_EQ(pNew[199], 0);
    // Kinds of objects do not mix.
    const auto hEvent = CreateNamedEvent(sName);
    EXPECT_EQ(MapNamedMemory(hEvent), nullptr);
    EXPECT_FALSE(SetNamedEvent(hEvent + 1));
  }));
  EXPECT_EQ(Leftovers(TestName("life")), std::vector<std::string>());
}

TEST(NamedMemory, AKilledProcessPoisonsNothing) {
  struct State {
    std::atomic<int> lReady = 0;
  };
  std::mt19937 tRandom(1);
  const std::string sName = TestName("kill");
  const auto fnUse = [&](std::uint32_t hMemory) {
    auto* const pView = MapNamedMemory(hMemory);
    for (int iByte = 0; iByte < 4096; ++iByte) pView[iByte] = 0xEE;
    SetNamedEvent(CreateNamedEvent(sName));
  };
  // Killed at any moment of its start, the only user leaves nothing that the next one would see,
  // which has been running all along.
  ASSERT_TRUE(RunInChild([&] {
    CreateNamedEvent(TestName("first"));
    for (int iRound = 0; iRound < 100; ++iRound) {
      Shared<State> tState;
      ChildProcess tOwner([&] {
        tState->lReady = 1;
        fnUse(CreateNamedMemory(sName, 4096));
        ::pause();
      });
      ASSERT_TRUE(WaitUntil([&] { return tState->lReady == 1; }));
      test::SleepMicroseconds(static_cast<long>(tRandom() % 600));
      tOwner.Kill();
      EXPECT_TRUE(iRound % 2 == 0 || OpenNamedMemory(sName) == 0);
      const auto hMemory = CreateNamedMemory(sName, 4096);
      auto* const pView = MapNamedMemory(hMemory);
      ASSERT_NE(pView, nullptr);
      EXPECT_EQ(std::string(pView, pView + 4096), std::string(4096, '\0'));
      UnmapNamedMemory(pView);
      CloseSystemHandle(hMemory);
      const auto hEvent = CreateNamedEvent(sName);
      EXPECT_FALSE(WaitNamedEvent(hEvent));
      CloseSystemHandle(hEvent);
    }
  }));
  // A killed second user takes nothing from the first.
  ASSERT_TRUE(RunInChild([&] {
    const auto hOwner = CreateNamedMemory(sName, 8192);
    auto* const pView = MapNamedMemory(hOwner);
    pView[8191] = 1;
    for (int iRound = 0; iRound < 100; ++iRound) {
      ChildProcess tUser([&] { fnUse(OpenNamedMemory(sName)), ::pause(); });
      test::SleepMicroseconds(static_cast<long>(tRandom() % 1500));
      tUser.Kill();
      ASSERT_TRUE(RunInChild([&] {
        const auto* const pSame = MapNamedMemory(OpenNamedMemory(sName));
        ASSERT_NE(pSame, nullptr);
        EXPECT_EQ(pSame[8191], 1);
      }));
    }
    CloseSystemHandle(hOwner);
    EXPECT_EQ(OpenNamedMemory(sName), 0U);
  }));
  // The first opening of any object clears up after processes that nobody followed.
  {
    Shared<State> tState;
    ChildProcess tOwner([&] {
      fnUse(CreateNamedMemory(sName, 4096));
      tState->lReady = 1;
      ::pause();
    });
    ASSERT_TRUE(WaitUntil([&] { return tState->lReady == 1; }));
  }
  ASSERT_TRUE(RunInChild([] { CreateNamedEvent(TestName("other")); }));
  EXPECT_EQ(Leftovers(sThisRun), std::vector<std::string>());
}

TEST(NamedMemory, AStormOfOpeningAndClosingSeesOneObjectAtATime) {
  constexpr int PROCESSES = 6;
  constexpr int ROUNDS = 1500;
  // Which life of the object is in use (high half) and by how many (low half).
  struct State {
    std::atomic<std::uint64_t> lInUse = 0;
    std::atomic<std::uint32_t> lLives = 0;
  };
  Shared<State> tState;
  const std::string sName = TestName("storm");
  const auto fnStorm = [&](unsigned iSeed) {
    std::mt19937 tRandom(iSeed);
    for (int iRound = 0; iRound < ROUNDS; ++iRound) {
      const auto hMemory = iSeed % 3 == 0 ? OpenNamedMemory(sName) : CreateNamedMemory(sName, 64);
      if (hMemory == 0 && iSeed % 3 == 0) continue;
      auto* const pView = MapNamedMemory(hMemory);
      ASSERT_NE(pView, nullptr) << LastSystemError();
      auto* const plWord = reinterpret_cast<std::atomic<std::uint32_t>*>(pView);
      const std::uint32_t lUsedBefore = plWord[1];
      std::uint32_t lLife = 0;
      const std::uint32_t lNewLife = ++tState->lLives;
      if (plWord[0].compare_exchange_strong(lLife, lNewLife)) {
        ASSERT_EQ(lUsedBefore, 0U) << "a new object is not zero";
        lLife = lNewLife;
      }
      std::uint64_t lInUse = tState->lInUse;
      std::uint64_t lNext = 0;
      do {
        const bool bNobody = (lInUse & 0xFFFFFFFFU) == 0;
        ASSERT_TRUE(bNobody || lInUse >> 32U == lLife) << "two objects of one name";
        lNext = bNobody ? (std::uint64_t{lLife} << 32U) + 1 : lInUse + 1;
      } while (!tState->lInUse.compare_exchange_weak(lInUse, lNext));
      plWord[1] = 1;
      if (tRandom() % 4 == 0) test::SleepMicroseconds(50);
      --tState->lInUse;
      CloseSystemHandle(hMemory);
      UnmapNamedMemory(pView);
    }
  };
  std::vector<ChildProcess> atChild;
  for (unsigned iSeed = 1; iSeed <= PROCESSES; ++iSeed) {
    atChild.emplace_back([&fnStorm, iSeed] { fnStorm(iSeed); });
  }
  for (auto& tChild : atChild) EXPECT_TRUE(tChild.Succeeded());
  EXPECT_EQ(Leftovers(sName), std::vector<std::string>());
  EXPECT_GT(tState->lLives.load(), 100U);
}

TEST(NamedMemory, AnotherUsersObjectIsRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can make another user's object";
  const std::string sName = TestName("refused");
  const std::string sFile = "/dev/shm" + NamedObject::FileName("memory", sName);
  test::WriteFile(sFile, "trap");
  ASSERT_EQ(::chown(sFile.c_str(), 65534, 65534), 0);
  EXPECT_TRUE(RunInChild([&] {
    EXPECT_EQ(OpenNamedMemory(sName), 0U);
    EXPECT_EQ(CreateNamedMemory(sName, 16), 0U);
  }));
  EXPECT_TRUE(std::filesystem::remove(sFile));
}

TEST(NamedMemory, MemoryThatHasRunOutIsToldAtOnce) {
  const auto fnSmallMemory = [] {
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", "/dev/shm", "tmpfs", 0, "size=64k") == 0;
  };
  if (!RunInChild([&] { EXPECT_TRUE(fnSmallMemory()); })) GTEST_SKIP() << "no right to mount";
  EXPECT_TRUE(RunInChild([&] {
    ASSERT_TRUE(fnSmallMemory());
    EXPECT_EQ(CreateNamedMemory("big", 0x20000), 0U);
    EXPECT_EQ(LastSystemError(), static_cast<std::uint32_t>(ENOSPC));
    EXPECT_NE(CreateNamedMemory("big", 512), 0U);
  }));
}

TEST(NamedEvent, IsAutomaticAndSaturates) {
  EXPECT_TRUE(RunInChild([] {
    const std::string sName = TestName("event");
    const auto hEvent = CreateNamedEvent(sName);
    EXPECT_FALSE(WaitNamedEvent(hEvent));
    EXPECT_TRUE(RunInChild([&] {
      const auto hSame = CreateNamedEvent(sName);
      for (int iSignal = 0; iSignal < 5; ++iSignal) EXPECT_TRUE(SetNamedEvent(hSame));
    }));
    const auto hSame = CreateNamedEvent(sName);
    EXPECT_TRUE(WaitNamedEvent(hSame));
    EXPECT_FALSE(WaitNamedEvent(hEvent));
    SetNamedEvent(hEvent);
    EXPECT_TRUE(ResetNamedEvent(hSame));
    EXPECT_FALSE(WaitNamedEvent(hEvent));
    EXPECT_FALSE(SetNamedEvent(0) || ResetNamedEvent(0) || WaitNamedEvent(0));
  }));
}

TEST(NamedEvent, EverySignalGoesToOneWaiter) {
  constexpr int SIGNALS = 2000;
  struct State {
    std::atomic<int> lReady = 0;
    std::atomic<int> lTaken = 0;
    std::atomic<bool> bEnd = false;
  };
  Shared<State> tState;
  const std::string sName = TestName("waiters");
  std::vector<ChildProcess> atWaiter;
  for (int iWaiter = 0; iWaiter < 3; ++iWaiter) {
    atWaiter.emplace_back([&] {
      const auto hEvent = CreateNamedEvent(sName);
      ++tState->lReady;
      while (!tState->bEnd) {
        if (WaitNamedEvent(hEvent)) ++tState->lTaken;
      }
    });
  }
  ASSERT_TRUE(WaitUntil([&] { return tState->lReady == 3; }));
  EXPECT_TRUE(RunInChild([&] {
    const auto hEvent = CreateNamedEvent(sName);
    for (int iSignal = 1; iSignal <= SIGNALS; ++iSignal) {
      SetNamedEvent(hEvent);
      ASSERT_TRUE(WaitUntil([&] { return tState->lTaken >= iSignal; }));
    }
  }));
  tState->bEnd = true;
  for (auto& tWaiter : atWaiter) EXPECT_TRUE(tWaiter.Succeeded());
  EXPECT_EQ(tState->lTaken, SIGNALS);
}

}  // namespace
