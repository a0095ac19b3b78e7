#include "disass/RecordingToolkit.h"
#include "util/modALLHook.h"

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
  InstallActivityHook(nullptr);
  EXPECT_EQ(tToolkit.fnMouseProc, nullptr);
  InstallActivityHook(frmFirst);
  std::vector<std::uint32_t> auCounted;
  for (std::uint32_t uMsg = 0; uMsg < 0x400; ++uMsg) {
    const int lBefore = frmFirst->lCalls;
    EXPECT_EQ(tToolkit.fnMouseProc(0, uMsg, 5), 77 + 5 + static_cast<std::intptr_t>(uMsg));
    EXPECT_EQ(tToolkit.fnMouseProc(3, uMsg, 5), 77 + 8 + static_cast<std::intptr_t>(uMsg));
    if (frmFirst->lCalls > lBefore) auCounted.push_back(uMsg);
  }
  EXPECT_EQ(auCounted,
            (std::vector<std::uint32_t>{0xA1, 0xA3, 0xA4, 0xA6, 0xA7, 0xA9, 0xAB, 0xAD, 0x201,
                                        0x203, 0x204, 0x206, 0x207, 0x209, 0x20B, 0x20D}));
  EXPECT_EQ(frmFirst->lCalls, 16);
  frmSecond->fnMouseProc = tToolkit.fnMouseProc;
  InstallActivityHook(frmSecond);
  for (int iTime = 0; iTime < 2; ++iTime) tToolkit.fnMouseProc(0, 0x204, 0);
  EXPECT_EQ(frmSecond->lCalls, 2);
  EXPECT_EQ(frmFirst->lCalls, 16);
  frmSecond.reset();
  tToolkit.fnMouseProc(0, 0x201, 0);
  RemoveActivityHook();
  RemoveActivityHook();
  EXPECT_EQ(tToolkit.TakeLog(), (std::vector<std::string>{"hook on", "hook off"}));
}

}  // namespace
