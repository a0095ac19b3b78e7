// Mouse and keys on the listing, the editor that follows its scrolling, breakpoints, saving.

#include "disass/WindowTest.h"
#include "platform/SavedFile.h"
#include "util/modALLUtilityDialogs.h"

namespace {

TEST_F(WindowTest, EditorFollowsScrolling) {
  Form &frm = Open(0xFF00), &frmOther = Open(0xFF00);
  Edit(frmOther, 0xFF05);
  const Control& txt = frm.ControlOf(TXT_ASM);
  Control& lst = frm.ControlOf(LST_DIS);
  tToolkit.fnListMessage = [&] { lst.lTop += 4; };
  for (const bool bFails : {false, true}) {
    tToolkit.bSubclassFails = bFails;
    tToolkit.TakeLog();
    Edit(frm, 0xFF08);
    frm.Key(DOWN);
    EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), "subclassed list"), bFails ? 0 : 1);
    // Only the timer follows what is no scroll message, and a list that cannot be subclassed.
    for (const auto& [uMsg, lRow] :
         {std::pair(0x115U, 5), {0x200U, bFails ? 1 : 5}, {0x20AU, -3}}) {
      EXPECT_EQ(tToolkit.SendToList(lst.WindowHandle(), uMsg), uMsg + 1);
      if (bFails) frm.Tick();
      EXPECT_EQ(txt.bVisible, lRow >= 0) << uMsg;
      EXPECT_TRUE(lRow < 0 || txt.tPlace.lTop == 1140 + 225 * lRow) << uMsg;
    }
    EXPECT_EQ(frm.pFocus, &lst);
    lst.lTop = 0;
  }
  tToolkit.bSubclassFails = false;
  EXPECT_EQ(tToolkit.colProp.size(), 1U);
  EXPECT_EQ(Editor(frmOther), "FF05 NOP");
}

TEST_F(WindowTest, GesturesOnTheListing) {
  Put(0xC000, "21 34 12 C9");
  Form& frm = Open();
  List(frm, "C000", "C008");
  Control& lst = frm.ControlOf(LST_DIS);
  const auto fnRow = [](int32_t lRow) { return 15 * (15.0 * lRow + 7); };
  const auto fnState = [&] { return Selected(frm) + ' ' + to_string(alControl[0]); };
  // Editor closed.
  frm.Click(LST_DIS, 2, 100, fnRow(7));
  frm.Click(LST_DIS, 2, 6100, fnRow(1));
  frm.Click(LST_DIS, 1, 100, fnRow(1));
  EXPECT_EQ(fnState(), "C000 0");
  lst.SetSelectedIndex(1);
  EXPECT_EQ(fnState(), "C003 12");
  tToolkit.TakeLog();
  tToolkit.fnDuring = [&] { frm.Tick(), frm.PickMenu(MNU_SET_BREAKPOINT); };
  frm.Click(LST_DIS, 2, 100, fnRow(0));
  EXPECT_EQ(tToolkit.TakeLog(), (std::vector<string>{"select in lstDis", "pop-up Disassembler"}));
  EXPECT_TRUE(alControl[3] == 0xC000 && platform::WaitNamedEvent(hBreakpoint));
  // The line under the menu is not the selected one any more.
  tToolkit.fnDuring = [&] { RequestShow(0xC004), frm.Tick(), frm.PickMenu(MNU_SET_BREAKPOINT); };
  frm.Click(LST_DIS, 2, 100, fnRow(0));
  EXPECT_EQ(Selected(frm) + (platform::WaitNamedEvent(hBreakpoint) ? " set" : ""), "C004");
  lst.SetSelectedIndex(0);
  frm.Type("a");
  EXPECT_EQ(Editor(frm), "");
  frm.Key(ENTER);
  EXPECT_EQ(Editor(frm), "C000 LD HL,1234");
  // Editor open.
  tToolkit.TakeLog();
  frm.Type("x");
  frm.Click(LST_DIS, 2, 100, fnRow(7));
  EXPECT_EQ(Editor(frm), "C000 X");
  frm.Click(LST_DIS, 2, 100, fnRow(1));
  EXPECT_EQ(Editor(frm), "C003 RET");
  lst.SetSelectedIndex(2);
  EXPECT_EQ(Editor(frm), "C004 NOP");
  EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), "pop-up Disassembler"), 0);
  // No line selected; and closed under the pop-up menu.
  frm.Key(ESC);
  lst.lSelected = -1;
  frm.Key(ENTER);
  frm.DoubleClick(LST_DIS, -1);
  frm.PickMenu(MNU_SET_BREAKPOINT);
  EXPECT_EQ(Editor(frm), "");
  EXPECT_FALSE(platform::WaitNamedEvent(hBreakpoint));
  tToolkit.fnDuring = [&] { frm.Unload(); };
  frm.Click(LST_DIS, 2, 100, fnRow(1));
}

TEST_F(WindowTest, SavesTheListing) {
  using enum platform::FileDialogResult::Outcome;
  const string sOld = tFolder.Path("old"), sNew = tFolder.Path("new"), sIn = tFolder.Path("in/x");
  const string sLines =
      "8000 0A              LD A,(BC)           \n \r\n"
      "8001 21 00 FF        LD HL,FF00          ! " +
      string(1, '\0') + " \xFF \r\n";
  const Box tSaved{"File saved", 64, "Varnel - Confirmation"},
      tAsked{sOld + "\r\n\r\nFile already exists. Do you confirm overwrite?", 33,
             "Varnel - Question"},
      tDialog{"Unexpected error. Err 5 : No printer", 16, "Varnel - Error"},
      tFolderGone{
          "Unable to save the file\r\n\r\n" + sIn + "\r\n\r\n" + platform::SaveFileWhole(sIn, ""),
          16, "Varnel - Error"};
  Form* pfrm = nullptr;
  const Action fnClose = [&] { pfrm->Unload(); }, fnList = [&] { List(*pfrm, "8001", "8003"); };
  const Action fnGoOn = [] {};
  const struct {
    platform::FileDialogResult::Outcome eOutcome;
    string sPath;
    Action fnDuring, fnDuringBox;
    int32_t lAnswer;
    std::vector<Box> atBox;
    string sContents;  // of that file afterwards
  } atCase[] = {{Chosen, sNew, fnGoOn, fnGoOn, OK, {tSaved}, sLines},
                {Chosen, sOld, fnGoOn, fnGoOn, OK, {tAsked, tSaved}, sLines},
                {Chosen, sOld, fnGoOn, fnGoOn, CANCEL, {tAsked}, "old"},
                {Chosen, sNew, fnList, fnGoOn, OK, {tSaved}, sLines.substr(45)},
                {Chosen, sOld, fnClose, fnGoOn, OK, {}, "old"},
                {Chosen, sOld, fnGoOn, fnClose, OK, {tAsked}, "old"},
                {Cancelled, sOld, fnGoOn, fnGoOn, OK, {}, "old"},
                {Failed, sOld, fnGoOn, fnGoOn, OK, {tDialog}, "old"},
                {Chosen, sIn, fnGoOn, fnGoOn, OK, {tFolderGone}, ""}};
  Put(0x8000, "0A 21 00 FF");
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(tCase.sPath + tCase.sContents);
    pfrm = &Open();
    List(*pfrm, "8000", "8003");
    test::WriteFile(sOld, "old");
    tToolkit.tChosen = {tCase.eOutcome, tCase.sPath, 5, "No printer"};
    tToolkit.fnDuring = tCase.fnDuring;
    for (size_t lBox = 0; lBox < tCase.atBox.size(); ++lBox) {
      tToolkit.Answer(tCase.lAnswer, tCase.fnDuringBox);
    }
    pfrm->PickMenu(MNU_SAVE);
    EXPECT_EQ(tToolkit.sDialogAsked,
              "save Text files (*.txt)|*.txt|All files (*.*)|*.* 1 2052 32767 ");
    EXPECT_EQ(tToolkit.TakeBoxes(), tCase.atBox);
    EXPECT_EQ(test::ReadFile(tCase.sPath), tCase.sContents);
    if (!pfrm->bGone) pfrm->Unload();
    std::filesystem::remove(sNew);
  }
}

TEST_F(WindowTest, IconsLoadEachOnItsOwn) {
  Form& frm = Load();
  EXPECT_FALSE(modALLUtility::SetFormIcon(&frm) || modALLUtility::SetFormIcon(nullptr));
  test::WriteFile(modALLUtility::IconFilePath(), "");
  for (const uint32_t hBad : {1U, 2U}) {
    tToolkit.TakeLog();
    tToolkit.hBadIcon = hBad;
    EXPECT_TRUE(modALLUtility::SetFormIcon(&frm));
    EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), hBad == 1 ? "icon 1 is 2" : "icon 0 is 1"), 1);
  }
}

}  // namespace
