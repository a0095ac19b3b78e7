#include "disass/WindowTest.h"
#include "windows/modALLProcessPlacement.h"

namespace {

using namespace modALLProcess;

TEST_F(WindowTest, PlacementIsReadFittedAndSaved) {
  const struct {
    const char* sKeys;
    platform::Size tScreen;
    double dTop, dLeft, dHeight, dWidth;
  } atCase[] = {
      {"", {20000, 15000}, 50, 9195, 8415, 6375},
      {"", {9194, 49}, 0, 9194 - 6375, 8415, 6375},
      {"", {5000, 10}, 0, 0, 8415, 6375},
      {"top=-100|left=30000|height=1|width=6000", {9194, 49}, -100, 30000, 1, 6000},
      {"top=12.5|left=abc|height=|width=99999999999", {20000, 15000}, 50, 9195, 8415, 6375},
      {"top=1|windowstate=2", {9194, 49}, 50, 9195, 8415, 6375},
      {"top=1|windowstate=3", {20000, 15000}, 1, 9195, 8415, 6375},
  };
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sKeys);
    string sIni = string("[GENERAL]|") + tCase.sKeys;
    for (size_t lAt = 0; (lAt = sIni.find('|')) != string::npos;) {
      sIni.replace(lAt, 1, "\r\nwindow_12_");
    }
    test::WriteFile(tFolder.Path("VARNEL/VARNEL.ini"), sIni);
    modAllIni::IniLoad();
    tToolkit.tScreen = tCase.tScreen;
    Form& frm = Load();
    EXPECT_EQ(frm.eState, platform::WindowState::Normal);
    EXPECT_EQ(std::tuple(frm.tPlace.dTop, frm.tPlace.dLeft, frm.tPlace.dHeight, frm.tPlace.dWidth),
              std::tuple(tCase.dTop, tCase.dLeft, tCase.dHeight, tCase.dWidth));
    frm.Unload();
  }
  EXPECT_FALSE(IsFormLoaded("frmDisass"));
}

}  // namespace
