// The window's life: start-up and shutdown in their order, several windows, resizing, self-check.

#include <algorithm>

#include "disass/WindowTest.h"
#include "link/modALLProcessEvents.h"

namespace {

using namespace modALLProcess;

/// Open windows, events and blocks.
string LinkState() {
  const auto lEvents =
      (tProgramEvent[12].hEvent != 0) + (hShowAddrEvent != 0) + (hBreakpointEvent != 0);
  const auto lBlocks =
      std::ranges::count_if(modALLSharedMap::hSharedMap, [](uint32_t hMap) { return hMap != 0; });
  return " " + std::to_string(modALLForms::WindowCount()) + std::to_string(lEvents) +
         std::to_string(lBlocks);
}

TEST_F(WindowTest, FirstWindowStartsAndEndsInOrder) {
  using Log = std::vector<string>;
  test::WriteFile(tFolder.Path("VARNEL/wnd_form_icon_7.ico"), "");
  test::WriteFile(tFolder.Path("VARNEL/VARNEL.ini"), "[GENERAL]\r\nwindow_12_top=-30");
  modAllIni::IniLoad();
  platform::SetNamedEvent(hShow);  // a request from before the start does not count
  tToolkit.fnProbe = LinkState;
  Form& frm = Load();
  EXPECT_EQ(
      tToolkit.TakeLog(),
      (Log{"top 50 000", "left 9195 000", "height 8415 000", "width 6375 000", "hide cmdDebug 000",
           "top -30 000", "left 9195 000", "height 8415 000", "width 6375 000", "state 0 000",
           "state 0 000", "load wnd_form_icon_7.ico 24x16 000", "icon 0 is 1 000",
           "load wnd_form_icon_7.ico 32x48 000", "icon 1 is 2 000", "timer on 132",
           "hide txtAsm 132", "hook on 132"}));
  frm.Tick();
  EXPECT_EQ(frm.ControlOf(LST_DIS).Lines(), 0);
  Put(0xFFFE, "C3 34");  // one instruction over the top of memory
  alControl[2] = 0xFFFE;
  frm.Show();
  EXPECT_EQ(tToolkit.TakeLog(),
            (Log{"place asked 132", "state 0 132", "place asked 132", "disable txtStart 132",
                 "disable txtEnd 132", "timer off 132", "disable cmdDisass 132", "hourglass 132",
                 "clear lstDis 132", "hide lstDis 132", "fill lstDis 132", "show lstDis 132",
                 "pointer 132", "enable cmdDisass 132", "select in lstDis 132",
                 "enable txtStart 132", "enable txtEnd 132", "focus lstDis 132", "timer on 132"}));
  ExpectSound(frm);
  EXPECT_EQ(modAllIni::IniGetValue("GENERAL", "window_12_width", "none"), "none");
  EXPECT_EQ(modAllIni::IniGetValue("GENERAL", "window_12_windowstate", "none"), "0");
  EditLine(frm, 0xFFFF);
  EXPECT_EQ(alControl[0], 12U);
  tToolkit.TakeLog();
  tToolkit.fnProbe = [&] { return LinkState() + ' ' + std::to_string(alControl[0]); };
  frm.tPlace = {122.5, -123.5, 123.5, 6375};
  frm.Unload();
  EXPECT_EQ(tToolkit.TakeLog(), (Log{"plain list 132 12", "hook off 032 12", "place asked 000 0"}));
  EXPECT_TRUE(platform::WaitNamedEvent(hProgram));
  EXPECT_FALSE(platform::WaitNamedEvent(hShow) || platform::WaitNamedEvent(hBreakpoint));
  EXPECT_EQ(test::ReadFile(tFolder.Path("VARNEL/VARNEL.ini")),
            "[GENERAL]\r\nwindow_12_top=122\r\nwindow_12_windowstate=0\r\nwindow_12_left=-124\r\n"
            "window_12_height=124\r\nwindow_12_width=6375");
}

TEST_F(WindowTest, StartUpThatCannotLinkEndsTheProgram) {
  const string sReading = "Unable to read configuration temp file\r\n\r\nError: ";
  const struct {
    size_t lValues;   // how many the temp file has; 0: no file
    size_t lChanged;  // which of them is changed ...
    string sChanged;
    string sMessage, sState;  // ... and how far the start-up got
  } atCase[] = {
      {0, 24, "", sReading + "53 - File not found", " 000"},
      {24, 24, "", sReading + "62 - Input past end of file", " 000"},
      {25, 0, "seven", sReading + "13 - Type mismatch", " 000"},
      {25, 21, "", "CreateEvent failed", " 100"},
      {25, 22, "", "CreateEvent failed", " 110"},
      {25, 23, "", "CreateEvent failed", " 120"},
      {25, 1, "", "CreateFileMapping failed - LastError: 16", " 130"},
      {25, 5, "", "CreateFileMapping failed - LastError: 16", " 131"},
  };
  const auto asGood = asValue;
  for (const auto& tCase : atCase) {
    asValue = asGood;
    asValue[tCase.lChanged] = tCase.sChanged;
    WriteConfig(tCase.lValues);
    if (tCase.lValues == 0) std::filesystem::remove(tFolder.Path("VARNEL/VARNEL.tmp"));
    tToolkit.Answer(OK);
    try {
      Load();
      ADD_FAILURE() << "goes on after " << tCase.sMessage;
    } catch (const recording::ProgramEnded& tEnded) {
      EXPECT_NE(tEnded.lStatus, 0);
    }
    EXPECT_EQ(tToolkit.TakeBoxes(), (std::vector<Box>{{tCase.sMessage, 16, "Varnel - Error"}}));
    EXPECT_EQ(LinkState(), tCase.sState) << tCase.sMessage;
    EXPECT_EQ(test::ReadFile(tFolder.Path("VARNEL/VARNEL.ini")), "");
    tToolkit.apForm.back()->Unload();
    std::filesystem::remove(tFolder.Path("VARNEL/VARNEL.ini"));
  }
}

TEST_F(WindowTest, SixteenWindowsShareTheLinkAndTheLowestAnswers) {
  std::vector<Form*> afrm{&Open(0x100)};
  const auto hEvents = std::tuple(tProgramEvent[12].hEvent, hShowAddrEvent, hBreakpointEvent);
  while (afrm.size() < 16) {
    afrm.back()->PickMenu(MNU_WINDOW_OPEN);
    afrm.push_back(tToolkit.apForm.back().get());
    EXPECT_EQ(afrm.back()->tPlace.dTop, 50 + 300.0 * static_cast<double>(afrm.size() - 1));
    EXPECT_EQ(afrm.back()->tPlace.dLeft, afrm.back()->tPlace.dTop + 9145);
  }
  EXPECT_EQ(hEvents, std::tuple(tProgramEvent[12].hEvent, hShowAddrEvent, hBreakpointEvent));
  // One more, on either road.
  tToolkit.Answer(OK);
  tToolkit.Answer(OK);
  afrm[3]->PickMenu(MNU_WINDOW_OPEN);
  Load();
  EXPECT_EQ(tToolkit.TakeBoxes(),
            (std::vector<Box>{{"Unable to open a new window", 48, "Varnel - Error"},
                              {"Maximum number of windows reached", 48, "Varnel - Error"}}));
  EXPECT_EQ(tToolkit.apForm.size(), 16U);
  EXPECT_TRUE(tToolkit.apGone.back()->bGone && !tToolkit.apGone.back()->bTimer);
  EXPECT_NE(test::ReadFile(tFolder.Path("VARNEL/VARNEL.ini")).find("window_12_top=50"),
            string::npos);
  // One request moves one window, the one in the lowest slot.
  RequestShow(0x4000);
  for (size_t lForm = afrm.size(); lForm-- > 0;) afrm[lForm]->Tick();
  EXPECT_EQ(Field(*afrm[0], TXT_START) + Field(*afrm[1], TXT_START), "40000100");
  afrm[0]->Unload();
  EXPECT_EQ(LinkState(), " 1532");
  EXPECT_FALSE(platform::WaitNamedEvent(hProgram));
  RequestShow(0x5000);
  for (size_t lForm = afrm.size(); lForm-- > 1;) afrm[lForm]->Tick();
  EXPECT_EQ(Field(*afrm[1], TXT_START) + Field(*afrm[2], TXT_START), "50000100");
  // One typed instruction reaches all of them, and one of them is closed while it asks.
  EditLine(*afrm[5], 0x110);
  afrm[5]->Type("RST 38H");
  afrm[5]->Key(ENTER);
  for (size_t lForm = 2; lForm < afrm.size(); ++lForm) ExpectSound(*afrm[lForm]);
  EditLine(*afrm[9], 0x120);
  afrm[9]->Type("LD A,5");
  tToolkit.Answer(YES, [&] {
    while (!tToolkit.apForm.empty()) tToolkit.apForm[tToolkit.apForm.size() / 2]->Unload();
  });
  afrm[9]->Key(ENTER);
  EXPECT_EQ(Dump(0x110, 1) + Dump(0x120, 2), "FF00 00");
  EXPECT_EQ(LinkState(), " 000");
}

TEST_F(WindowTest, ListFillsTheWindow) {
  using platform::WindowState;
  Form& frm = Open();
  const struct {
    WindowState eState;
    double dWidth, dHeight, dWidthThen;
    int32_t lListWidth, lListHeight;
  } atCase[] = {{WindowState::Normal, 9000, 8415, 6375, 6015, 6255},
                {WindowState::Normal, 3000, 5000, 3000, 2640, 2840},
                {WindowState::Normal, 0, 0, 0, 0, 0},
                {WindowState::Maximized, 20000, 15000, 20000, 19640, 12840},
                {WindowState::Minimized, 700, 300, 700, 19640, 12840}};
  for (const auto& tCase : atCase) {
    EditLine(frm, 0xFF03);
    frm.eState = tCase.eState;
    frm.SetHeight(tCase.dHeight);
    frm.SetWidth(tCase.dWidth);
    EXPECT_EQ(frm.tPlace.dWidth, tCase.dWidthThen);
    EXPECT_EQ(frm.ControlOf(LST_DIS).tPlace.lWidth, tCase.lListWidth);
    EXPECT_EQ(frm.ControlOf(LST_DIS).tPlace.lHeight, tCase.lListHeight);
    EXPECT_EQ(Editor(frm), "");
    EXPECT_EQ(frm.pFocus, &frm.ControlOf(LST_DIS));
  }
}

TEST_F(WindowTest, SelfCheckCountsAndEndsWithItsWindow) {
  Put(0, "ED 63 34 12 DD 00");  // other bytes for the same text
  for (const bool bClosed : {false, true}) {
    Form& frm = Load(true);
    frm.Show();
    EXPECT_TRUE(frm.ControlOf(CMD_DEBUG).bVisible);
    tToolkit.AtDoEvents(1, [&] {
      EXPECT_FALSE(frm.ControlOf(CMD_DEBUG).bEnabled);
      frm.Tick();
      if (bClosed) frm.Unload();
    });
    if (!bClosed) tToolkit.Answer(OK);
    frm.Press(CMD_DEBUG);
    EXPECT_TRUE(bClosed || frm.ControlOf(CMD_DEBUG).bEnabled);
    EXPECT_EQ(tToolkit.TakeBoxes(),
              bClosed ? std::vector<Box>{}
                      : (std::vector<Box>{{"Assembler debug completed.\r\nChecked: 65532\r\n"
                                           "Supported: 65532\r\nUnsupported: 0\r\nMismatch: 0\r\n"
                                           "Opcode mismatch: 0\r\nOpcode ignored: 2",
                                           64, "Varnel - Assembler Debug"}}));
    EXPECT_EQ(Dump(0, 7), "ED 63 34 12 DD 00 00");
  }
}

}  // namespace
