// The window's life: start-up and shutdown in their order, several windows, resizing, self-check.

#include "disass/WindowTest.h"
#include "link/modALLProcessEvents.h"
#include "platform/Environment.h"

namespace {

using namespace modALLProcess;
using Log = std::vector<string>;

/// Open windows, events and blocks.
string LinkState() {
  const auto lEvents =
      (tProgramEvent[12].hEvent != 0) + (hShowAddrEvent != 0) + (hBreakpointEvent != 0);
  const auto lBlocks = 7 - std::ranges::count(modALLSharedMap::hSharedMap, 0U);
  return to_string(modALLForms::WindowCount()) + to_string(lEvents) + to_string(lBlocks);
}

TEST_F(WindowTest, FirstWindowStartsAndEndsInOrder) {
  const string sIni = tFolder.Path("VARNEL/VARNEL.ini");
  test::WriteFile(tFolder.Path("VARNEL/wnd_form_icon_7.ico"), "");
  test::WriteFile(sIni, "[GENERAL]\r\nwindow_12_top=-30");
  modAllIni::IniLoad();
  platform::SetNamedEvent(hShow);  // a request from before the start does not count
  Form& frm = Load();
  EXPECT_EQ(tToolkit.TakeLog(),
            (Log{"top 50", "left 9195", "height 8415", "width 6375", "hide cmdDebug", "top -30",
                 "left 9195", "height 8415", "width 6375", "state 0", "state 0",
                 "load wnd_form_icon_7.ico 24x16", "icon 0 is 1", "load wnd_form_icon_7.ico 32x48",
                 "icon 1 is 2", "timer on", "hide txtAsm", "hook on"}));
  frm.Tick();
  EXPECT_EQ(frm.ControlOf(LST_DIS).Lines(), 0);
  Put(0xFFFE, "C3 34");  // one instruction over the top of memory
  alControl[2] = 0xFFFE;
  frm.Show();
  EXPECT_EQ(tToolkit.TakeLog(),
            (Log{"state 0", "disable txtStart", "disable txtEnd", "timer off", "disable cmdDisass",
                 "hourglass", "clear lstDis", "hide lstDis", "fill lstDis", "show lstDis",
                 "pointer", "enable cmdDisass", "select in lstDis", "enable txtStart",
                 "enable txtEnd", "focus lstDis", "timer on"}));
  ExpectSound(frm);
  EXPECT_EQ(modAllIni::IniGetValue("GENERAL", "window_12_width", "none"), "none");
  EXPECT_EQ(modAllIni::IniGetValue("GENERAL", "window_12_windowstate", "none"), "0");
  Edit(frm, 0xFFFF);
  tToolkit.TakeLog();
  frm.tPlace = {122.5, -123.5, 123.5, 6375};
  frm.Unload();
  EXPECT_EQ(tToolkit.TakeLog(), (Log{"clear lstDis", "hook off"}));
  EXPECT_EQ(LinkState() + to_string(alControl[0]), "0000");
  EXPECT_TRUE(platform::WaitNamedEvent(hProgram));
  EXPECT_FALSE(platform::WaitNamedEvent(hShow) || platform::WaitNamedEvent(hBreakpoint));
  EXPECT_EQ(test::ReadFile(sIni),
            "[GENERAL]\r\nwindow_12_top=122\r\nwindow_12_windowstate=0\r\nwindow_12_left=-124\r\n"
            "window_12_height=124\r\nwindow_12_width=6375");
}

TEST_F(WindowTest, StartUpThatCannotLinkEndsTheProgram) {
  const string sReading = "Unable to read configuration temp file\r\n\r\nError: ";
  // EINVAL, ERROR_INVALID_NAME
  const string sNoName = string("CreateFileMapping failed - LastError: ") +
                         (platform::PATH_SEPARATOR == '/' ? "16" : "7B");
  const struct {
    size_t lValues,
        lChanged;  // how many the temp file has, 0: no file; which of them is changed ...
    const char* sChanged;
    string sMessage, sState;  // ... and how far the start-up gets
  } atCase[] = {{0, 24, "", sReading + "53 - File not found", "000"},
                {25, 0, "seven", sReading + "13 - Type mismatch", "000"},
                {25, 21, "", "CreateEvent failed", "100"},
                {25, 23, "", "CreateEvent failed", "120"},
                {25, 1, "", sNoName, "130"},
                {25, 5, "", sNoName, "131"}};
  const auto asGood = asValue;
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sMessage);
    asValue = asGood;
    asValue[tCase.lChanged] = tCase.sChanged;
    WriteConfig(tCase.lValues);
    if (tCase.lValues == 0) std::filesystem::remove(tFolder.Path("VARNEL/VARNEL.tmp"));
    tToolkit.Answer(OK);
    EXPECT_THROW(Load(), int32_t);
    EXPECT_EQ(tToolkit.TakeBoxes(), (std::vector<Box>{{tCase.sMessage, 16, "Varnel - Error"}}));
    EXPECT_EQ(LinkState(), tCase.sState);
    tToolkit.apForm.back()->Unload();
  }
}

TEST_F(WindowTest, ListFillsTheWindow) {
  Form& frm = Open();
  const TwipsRect& tList = frm.ControlOf(LST_DIS).tPlace;
  const struct {
    platform::WindowState eState;
    int32_t lWidth, lHeight, lWidthThen, lListWidth, lListHeight;
  } atCase[] = {{platform::WindowState::Normal, 9000, 8415, 6375, 6015, 6255},
                {platform::WindowState::Normal, 0, 0, 0, 0, 0},
                {platform::WindowState::Maximized, 20000, 15000, 20000, 19640, 12840},
                {platform::WindowState::Minimized, 700, 300, 700, 19640, 12840}};
  for (const auto& [eState, lWidth, lHeight, lWidthThen, lListWidth, lListHeight] : atCase) {
    frm.eState = eState;
    frm.SetHeight(lHeight);
    frm.SetWidth(lWidth);
    EXPECT_EQ(std::tuple(frm.tPlace.dWidth, tList.lWidth, tList.lHeight),
              std::tuple(lWidthThen, lListWidth, lListHeight));
  }
}

TEST_F(WindowTest, SelfCheckCountsAndEndsWithItsWindow) {
  Put(0, "ED 63 34 12 DD 00");  // other bytes for the same text
  const Box tSummary{
      "Assembler debug completed.\r\nChecked: 65532\r\nSupported: 65532\r\n"
      "Unsupported: 0\r\nMismatch: 0\r\nOpcode mismatch: 0\r\nOpcode ignored: 2",
      64, "Varnel - Assembler Debug"};
  for (const bool bClosed : {false, true}) {
    Form& frm = Load(true);
    frm.Show();
    tToolkit.AtDoEvents(1, [&] {
      EXPECT_FALSE(frm.ControlOf(CMD_DEBUG).bEnabled);
      if (bClosed) frm.Unload();
    });
    tToolkit.AtDoEvents(2, [&] { EXPECT_FALSE(bClosed) << "it goes on without its window"; });
    if (!bClosed) tToolkit.Answer(OK);
    frm.Press(CMD_DEBUG);
    EXPECT_TRUE(bClosed || frm.ControlOf(CMD_DEBUG).bEnabled);
    EXPECT_EQ(tToolkit.TakeBoxes(), std::vector<Box>(bClosed ? 0 : 1, tSummary));
    EXPECT_EQ(Dump(0, 7), "ED 63 34 12 DD 00 00");
  }
}

}  // namespace
