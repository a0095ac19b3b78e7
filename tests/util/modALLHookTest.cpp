#include "disass/RecordingToolkit.h"
#include "util/modALLHook.h"
#include "util/modALLUtilityAddress.h"

namespace {

using namespace modALLHook;

struct Target : ActivityTarget {
  void do_UserActivity() override {
    ++lCalls;
    if (fnMouseProc != nullptr) fnMouseProc(0, 0x201, 0);  // a press that is retrieved meanwhile
  }
  int lCalls = 0;
  platform::MouseProc fnMouseProc = nullptr;
};

TEST(ActivityHook, ReportsPressesToTheLatestWindowAndPassesAllOn) {
  recording::Toolkit tToolkit;
  const auto frmFirst = std::make_shared<Target>();
  auto frmSecond = std::make_shared<Target>();
  InstallActivityHook(frmFirst);
  std::string sCounted;
  for (std::int32_t lMsg = 0; lMsg < 0x400; ++lMsg) {
    const int lBefore = frmFirst->lCalls;
    EXPECT_EQ(tToolkit.fnMouseProc(3, static_cast<std::uintptr_t>(lMsg), 5), 77 + 3 + lMsg + 5);
    EXPECT_EQ(frmFirst->lCalls, lBefore) << "only peeked at";
    EXPECT_EQ(tToolkit.fnMouseProc(0, static_cast<std::uintptr_t>(lMsg), 5), 77 + 0 + lMsg + 5);
    if (frmFirst->lCalls > lBefore) sCounted += modALLUtility::Hex4(lMsg).substr(1) + ' ';
  }
  EXPECT_EQ(sCounted, "0A1 0A3 0A4 0A6 0A7 0A9 0AB 0AD 201 203 204 206 207 209 20B 20D ");
  EXPECT_EQ(frmFirst->lCalls, 16);
  frmSecond->fnMouseProc = tToolkit.fnMouseProc;
  InstallActivityHook(frmSecond);
  tToolkit.fnMouseProc(0, 0x204, 0);
  EXPECT_EQ(frmFirst->lCalls * 100 + frmSecond->lCalls, 1601);
  // A press that comes before the next window's activation is reported by the one that closed.
  const Target& frmClosed = *frmSecond;
  frmSecond.reset();
  tToolkit.fnMouseProc(0, 0x201, 0);
  EXPECT_EQ(frmClosed.lCalls, 2);
  RemoveActivityHook();
  RemoveActivityHook();
  EXPECT_EQ(tToolkit.TakeLog(), (std::vector<std::string>{"hook on", "hook off"}));
}

}  // namespace
