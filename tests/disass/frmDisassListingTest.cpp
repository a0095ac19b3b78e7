// Address fields, showing an address, and what may happen in the middle of a listing.

#include "disass/WindowTest.h"

namespace {

TEST_F(WindowTest, ShowsAnAddress) {
  constexpr int32_t ASKED = -1;  // lAddress: the one that the emulator asks for
  const struct {
    const char *sStart, *sEnd;  // listed before, three bytes a line from 0000 on
    bool bForce;
    int32_t lAddress;
    uint32_t lAsked;
    const char *sStartThen, *sEndThen, *sSelected;
    int32_t lTop;
    bool bListed;
  } atCase[] = {
      {"8001", "9000", false, 0x8301, 0, "8001", "9000", "8301", 256 - 13, false},
      {"8001", "9000", false, 0x8302, 0, "8302", "A302", "8302", 0, true},  // inside a line
      {"8001", "9000", false, ASKED, 0xFF00, "FF00", "FFFF", "FF00", 0, true},
      {"8001", "9000", true, ASKED, 0x8302, "8001", "9000", "8301", 256 - 13, true},
      {"8001", "9000", true, 0x7000, 0, "8001", "9000", "8001", 0, true},
      {"8001", "9000", false, ASKED, 0xFFFFFFFF, "8001", "9000", "8001", 0, false},
      {"8001", "9000", true, ASKED, 0x80000000, "8001", "9000", "8001", 0, true},
      {"8001", "9000", false, ASKED, 0x7FFFFFFF, "8001", "9000", "8001", 0, false},
      {"8001", "8001", true, 0, 0, "8001", "8001", "8001", 0, true},
      {"0000", "FFFF", false, 0xFFFF, 0, "0000", "FFFF", "FFFF", 0x10000 / 3 + 1 - 27, false},
  };
  Form& frm = Open();
  Control& lst = frm.ControlOf(LST_DIS);
  for (int32_t lAddress = 0; lAddress < 0xFFFF; lAddress += 3) Put(lAddress, "21 41 42");
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(string(tCase.sStart) + ' ' + Hex4(tCase.lAddress) + (tCase.bForce ? " !" : ""));
    alControl[2] = 0;
    List(frm, tCase.sStart, tCase.sEnd);
    alControl[2] = tCase.lAsked;
    tToolkit.TakeLog();
    Logic(frm).position(tCase.bForce, tCase.lAddress);
    EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), "fill lstDis"), tCase.bListed ? 1 : 0);
    EXPECT_EQ(Field(frm, TXT_START) + Field(frm, TXT_END),
              string(tCase.sStartThen) + tCase.sEndThen);
    EXPECT_EQ(Selected(frm), tCase.sSelected);
    EXPECT_TRUE(lst.lTop == tCase.lTop && frm.pFocus == &lst) << lst.lTop;
    ExpectSound(frm);
  }
  EXPECT_EQ(Field(Open(0x18000), TXT_END), "2000") << "nothing listed yet: from 0000 on";
  // A listed line below a start that was entered since.
  frm.GoTo(TXT_START);
  frm.Type("8500");
  frm.GoTo(CHK_LONG);
  Logic(frm).position(false, 0x8301);
  EXPECT_EQ(Field(frm, TXT_START), "8301");
}

TEST_F(WindowTest, AddressFieldsTakeWhatIsAnAddress) {
  const struct {
    const char *sStart, *sEnd;  // typed; "=" in front: pasted
    const char *sProposed, *sStartThen, *sEndThen;
  } atCase[] = {
      {"c0", "c1", "20C0", "00C0", "00C1"},         {"F000", "", "FFFF", "F000", "0000"},
      {"", "g0 -\x03\r.3", "2000", "0000", "0003"}, {"8000", "7FFF", "A000", "8000", "7FFF"},
      {"=+1", "=9 00", "2000", "0000", "2000"},     {"8000", "=zzzz", "A000", "8000", "2000"}};
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(string(tCase.sStart) + " to " + tCase.sEnd);
    const bool bFault = string_view(tCase.sStartThen) > tCase.sEndThen && *tCase.sEnd != '=';
    Form& frm = Open(0);
    if (bFault) tToolkit.Answer(OK);
    for (const auto& [iField, sText] :
         {std::pair(TXT_START, tCase.sStart), {TXT_END, tCase.sEnd}}) {
      Control& txt = frm.ControlOf(iField);
      frm.GoTo(iField);
      EXPECT_TRUE(iField == TXT_START || txt.sText == tCase.sProposed) << txt.sText;
      txt.SetText(*sText == '=' ? sText + 1 : "");
      if (*sText != '=') frm.Type(sText);
    }
    frm.GoTo(CHK_LONG);
    const Box tFault{"Start address > End address", 48, "Varnel - Error"};
    EXPECT_EQ(tToolkit.TakeBoxes(), std::vector<Box>(bFault ? 1 : 0, tFault));
    EXPECT_EQ(Field(frm, TXT_START) + Field(frm, TXT_END),
              string(tCase.sStartThen) + tCase.sEndThen);
    EXPECT_EQ(frm.pFocus == &frm.ControlOf(TXT_START), bFault);
    frm.Press(CMD_DISASS);
    if (!bFault) ExpectSound(frm);
    frm.Unload();
  }
  // Closed over the message; and a field that is left while it is disabled under the editor.
  Form &frmClosed = Open(), &frm = Open();
  tToolkit.Answer(OK, [&] { frmClosed.Unload(); });
  List(frmClosed, "8000", "7FFF");
  Edit(frm, 0xFF05);
  for (const int16_t iField : {TXT_START, TXT_END}) {
    frm.ControlOf(iField).sText = "12";
    frm.Deliver(&FormEvents::LostFocus, iField);
    EXPECT_EQ(Field(frm, iField) + Editor(frm), "12FF05 NOP");
  }
}

TEST_F(WindowTest, ListingSurvivesWhateverHappensMeanwhile) {
  Form *pfrm = nullptr, *pfrmOther = nullptr;
  const auto fnWrite = [&] {
    Edit(*pfrmOther, 0xFF10, "RST 38H");
    pfrmOther->Key(ENTER);
    pfrmOther->Key(ESC);
  };
  const auto fnOpenAnd = [&](const Action& fnThen) {
    return [&, fnThen] {
      tToolkit.AtDoEvents(9, fnThen);
      pfrm->PickMenu(MNU_WINDOW_OPEN);
    };
  };
  const auto fnUse = [&] {
    for (int iTime = 0; iTime < 10; ++iTime) pfrm->Press(CMD_DISASS);
    for (const int16_t iMenu : {MNU_SAVE, MNU_SET_BREAKPOINT}) pfrm->PickMenu(iMenu);
    for (const int16_t iControl : {TXT_START, TXT_END, CHK_LONG}) pfrm->Press(iControl);
    pfrm->DoubleClick(LST_DIS, 0);
    pfrm->Click(LST_DIS, 2, 300, 300);
    pfrm->Key(ENTER);
    EXPECT_EQ(tToolkit.sDialogAsked, "") << "half a listing is not to be saved";
    Logic(*pfrm).position(false, 0x7000);
  };
  const auto fnList = [&] {
    Put(0xF000, "21 22 23 C3 34 12");
    List(*pfrmOther, "F001", "F0FF");
    pfrmOther->Press(CMD_DISASS);
  };
  const auto fnActivate = [&] {
    RequestShow(0x4000);
    pfrm->Deliver(&FormEvents::Activate);
    pfrm->Tick();
    EXPECT_TRUE(platform::WaitNamedEvent(hShow)) << "taken in the middle of a listing";
  };
  const auto fnClose = [&] { pfrm->Unload(); };
  const struct {
    const char* sWhat;
    Action fnEvent;
    bool bClosed = false;
  } atCase[] = {
      {"a write from another window", fnWrite},
      {"another window's whole listing", fnList},
      {"the same in another's", [&] { tToolkit.AtDoEvents(7, fnUse), fnList(), fnWrite(); }},
      {"a new window", fnOpenAnd([] {})},
      {"a new window, closed", fnOpenAnd([&] { tToolkit.apForm.back()->Unload(); })},
      {"a new window, and closing", fnOpenAnd(fnClose), true},
      {"everything that a user can click", fnUse},
      {"resizing to nothing", [&] { pfrm->SetHeight(0), pfrm->SetWidth(0); }},
      {"a late first activation", fnActivate},
      {"closing", fnClose, true},
      {"closing both", [&] { pfrm->Unload(), pfrmOther->Unload(); }, true},
  };
  for (const bool bNeverActive : {false, true}) {
    for (const auto& tCase : atCase) {
      SCOPED_TRACE(tCase.sWhat + string(bNeverActive ? ", before the window was active" : ""));
      for (int32_t lAt = 0; lAt < 0xFF00; ++lAt) abRam[lAt] = static_cast<uint8_t>(lAt * 77 >> 5);
      pfrm = bNeverActive ? &Load() : &Open(0xF800);
      pfrmOther = &Open();
      tToolkit.AtDoEvents(100, tCase.fnEvent);
      if (bNeverActive) RequestShow(0xF800);
      pfrm->Tick();
      pfrm->Press(CMD_DISASS);
      EXPECT_EQ(pfrm->bGone, tCase.bClosed);
      for (const auto& pForm : std::vector(tToolkit.apForm)) {
        ExpectSound(*pForm);
        pForm->Unload();
      }
    }
  }
}

}  // namespace
