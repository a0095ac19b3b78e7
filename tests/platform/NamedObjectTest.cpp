#include <atomic>
#include <deque>

#include "platform/Environment.h"
#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"

namespace {

using namespace platform;
using test::Arguments;
using test::RunInChild;

const bool bLinux = PATH_SEPARATOR == '/';
constexpr std::uint32_t SIZE = 4096;

class NamedObjects : public testing::Test {
 protected:
  void TearDown() override {
    if (!bLinux) return;
    for (const auto& tEntry : std::filesystem::directory_iterator("/dev/shm")) {
      EXPECT_EQ(tEntry.path().string().find(sName), std::string::npos) << "left: " << tEntry;
    }
  }
  const std::string sName = test::UniqueName();
};

void Forget(std::uint32_t hMemory, std::uint8_t* pView) {
  CloseSystemHandle(hMemory);
  UnmapNamedMemory(pView);
}

const test::ChildCode FIND([](const Arguments& asName) {
  for (std::uint8_t bNumber = 0; const auto& sName : asName) {
    EXPECT_EQ(*MapNamedMemory(OpenNamedMemory(sName)), ++bNumber) << sName;
  }
});

TEST_F(NamedObjects, AreFoundByAnyNameFromAnotherProcess) {
  Arguments asName = {"", " ", ",a b", "%41", "A", "a", "\xE9", "\xFF"};
  if (bLinux) {  // longer than a file's name, and with what Windows takes for a folder
    const std::string sLong(300, '\\');
    for (const auto& sEnd : {"\\x/y", "/.."}) asName.emplace_back(sEnd);
    for (const auto& sEnd : {sLong + "1", sLong + "2", sLong + sLong}) asName.push_back(sEnd);
  }
  std::vector<std::pair<std::uint32_t, std::uint8_t*>> atMemory;
  for (auto& sEach : asName) {
    sEach.insert(0, sName);
    const auto hMemory = CreateNamedMemory(sEach, 9);
    atMemory.emplace_back(hMemory, MapNamedMemory(hMemory));
    EXPECT_EQ(std::exchange(*atMemory.back().second, static_cast<std::uint8_t>(atMemory.size())),
              0);
  }
  if (!bLinux) asName.resize(6);  // a Windows command line is not of bytes
  EXPECT_TRUE(RunInChild(FIND, asName));
  for (const auto& [hMemory, pView] : atMemory) Forget(hMemory, pView);
  for (const auto& sRefused : {std::string(), sName + '\0', std::string(40000, 'n')}) {
    EXPECT_EQ(CreateNamedMemory(sRefused, 16) + CreateNamedEvent(sRefused), 0U);
  }
}

TEST_F(NamedObjects, LiveFromTheFirstOpeningToTheLastClose) {
  EXPECT_EQ(OpenNamedMemory(sName) + CreateNamedMemory(sName, 0), 0U);
  const auto hFirst = CreateNamedMemory(sName, 5000);
  auto* const pFirst = MapNamedMemory(hFirst);
  // A second opening, of whatever size, is the same memory and keeps it alive.
  const auto hSecond = CreateNamedMemory(sName, 100000);
  auto* const pSecond = MapNamedMemory(hSecond);
  EXPECT_EQ(NamedMemorySize(pSecond), bLinux ? 5000U : 8192U);
  for (const auto hClosed : {hFirst, hFirst}) CloseSystemHandle(hClosed);
  EXPECT_EQ(MapNamedMemory(hFirst), nullptr);
  EXPECT_EQ(pSecond[4999] = 7, pFirst[4999]);
  for (auto* const pUnmapped : {pSecond, pSecond}) UnmapNamedMemory(pUnmapped);
  EXPECT_EQ(NamedMemorySize(pSecond), 0U);
  const auto hThird = OpenNamedMemory(sName);
  EXPECT_NE(hThird, 0U);
  for (const auto hClosed : {hSecond, hThird}) CloseSystemHandle(hClosed);
  // After the last close a view is still good. It does not keep the name, except on Windows itself,
  // unlike Wine.
  const auto hKept = OpenNamedMemory(sName);
  EXPECT_TRUE(hKept == 0 || !bLinux);
  EXPECT_EQ(pFirst[4999], 7);
  Forget(hKept, bLinux ? nullptr : pFirst);
  const auto hNew = CreateNamedMemory(sName, 5000), hEvent = CreateNamedEvent(sName + "event");
  auto* const pNew = MapNamedMemory(hNew);
  EXPECT_EQ(pNew[4999], 0);
  EXPECT_EQ(MapNamedMemory(hEvent), nullptr) << "kinds mixed";
  CloseSystemHandle(hEvent);
  Forget(hNew, pNew);
  if (bLinux) UnmapNamedMemory(pFirst);
}

const test::ChildCode USE([](const Arguments& asName) {
  const test::Shared<std::atomic<int>> lStage(asName[1]);
  *lStage = 1;
  std::fill_n(MapNamedMemory(CreateNamedMemory(asName[0], SIZE)), SIZE, std::uint8_t{0xEE});
  SetNamedEvent(CreateNamedEvent(asName[0] + "event"));
  *lStage = 2;
  test::WaitUntil([] { return false; });
});

const test::ChildCode EXPECT_BYTE([](const Arguments& asName) {
  const auto* const pView = MapNamedMemory(OpenNamedMemory(asName[0]));
  EXPECT_EQ(std::count(pView, pView + SIZE, std::stoi(asName[1])), SIZE);
});

TEST_F(NamedObjects, AreNotPoisonedByKilledProcesses) {
  const auto fnUseAndDie = [&](int iStage) {
    const test::Shared<std::atomic<int>> lStage(sName + "stage");
    const test::ChildProcess tUser(USE, {sName, sName + "stage"});
    ASSERT_TRUE(test::WaitUntil([&] { return *lStage >= iStage; }));
    test::SleepUpTo(600);
  };
  for (int iRound = 0; iRound < 30; ++iRound) {
    // Killed at any moment, the only user leaves nothing that the next one would see ...
    fnUseAndDie(iRound % 3 == 0 ? 2 : 1);
    EXPECT_TRUE(iRound % 2 == 0 || OpenNamedMemory(sName) == 0);
    const auto hMemory = CreateNamedMemory(sName, SIZE), hEvent = CreateNamedEvent(sName + "event");
    auto* const pView = MapNamedMemory(hMemory);
    EXPECT_EQ(std::count(pView, pView + SIZE, 0), SIZE);
    EXPECT_FALSE(WaitNamedEvent(hEvent));
    CloseSystemHandle(hEvent);
    // ... and a second user takes nothing from the first.
    fnUseAndDie(1);
    std::fill_n(pView, SIZE, std::uint8_t{7});
    EXPECT_TRUE(RunInChild(EXPECT_BYTE, {sName, "7"}));
    Forget(hMemory, pView);
    EXPECT_EQ(OpenNamedMemory(sName), 0U);
  }
  // The first opening of any object clears up after processes that nobody followed.
  fnUseAndDie(2);
  CloseSystemHandle(CreateNamedEvent(sName + "other"));
}

struct Storm {
  std::atomic<std::uint64_t> lInUse;  // which life of the object (high half) and by how many (low)
  std::atomic<std::uint32_t> lLives;
};

const test::ChildCode STORM([](const Arguments& asName) {
  const test::Shared<Storm> tStorm(asName[1]);
  const bool bCreate = asName[2] == "create";
  for (int iRound = 0; iRound < 1500; ++iRound) {
    const auto hMemory = bCreate ? CreateNamedMemory(asName[0], 64) : OpenNamedMemory(asName[0]);
    if (hMemory == 0 && !bCreate) continue;
    auto* const pView = MapNamedMemory(hMemory);
    ASSERT_NE(pView, nullptr) << LastSystemError();
    auto* const plWord = reinterpret_cast<std::atomic<std::uint32_t>*>(pView);
    const bool bZero = plWord[1] == 0;
    std::uint32_t lLife = 0;
    const std::uint32_t lNewLife = ++tStorm->lLives;
    const bool bNew = plWord[0].compare_exchange_strong(lLife, lNewLife);
    if (bNew) lLife = lNewLife;
    ASSERT_TRUE(bZero || !bNew) << "a new object is not zero";
    for (std::uint64_t lOld = tStorm->lInUse, lNext = 0; lNext == 0;) {
      const bool bNobody = (lOld & 0xFFFFFFFFU) == 0;
      ASSERT_TRUE(bNobody || lOld >> 32U == lLife) << "two objects of one name";
      lNext = bNobody ? (std::uint64_t{lLife} << 32U) + 1 : lOld + 1;
      if (!tStorm->lInUse.compare_exchange_weak(lOld, lNext)) lNext = 0;
    }
    plWord[1] = 1;
    if (iRound % 4 == 0) test::SleepUpTo(100);
    --tStorm->lInUse;
    Forget(hMemory, pView);
  }
});

TEST_F(NamedObjects, AreOneOfANameAtATimeInAStorm) {
  const test::Shared<Storm> tStorm(sName + "storm");
  std::deque<test::ChildProcess> atChild;
  for (const auto& sKind : {"create", "create", "open", "create", "open", "create"}) {
    atChild.emplace_back(STORM, Arguments{sName, sName + "storm", sKind});
  }
  for (auto& tChild : atChild) EXPECT_TRUE(tChild.Succeeded());
}

const test::ChildCode SIGNAL_TWICE([](const Arguments& asName) {
  for (int iTime = 0; iTime < 2; ++iTime) EXPECT_TRUE(SetNamedEvent(CreateNamedEvent(asName[0])));
});

TEST_F(NamedObjects, AreEventsThatSaturate) {
  const auto hEvent = CreateNamedEvent(sName);
  EXPECT_FALSE(WaitNamedEvent(hEvent));
  EXPECT_TRUE(RunInChild(SIGNAL_TWICE, {sName}));
  const auto hSame = CreateNamedEvent(sName);
  EXPECT_TRUE(WaitNamedEvent(hSame) && !WaitNamedEvent(hEvent));
  EXPECT_TRUE(SetNamedEvent(hEvent) && ResetNamedEvent(hSame) && !WaitNamedEvent(hEvent));
  EXPECT_FALSE(SetNamedEvent(0) || ResetNamedEvent(0) || WaitNamedEvent(0));
  for (const auto hClosed : {hEvent, hSame}) CloseSystemHandle(hClosed);
}

}  // namespace
