// Address fields, showing an address, and what may happen in the middle of a listing.

#include "disass/WindowTest.h"

namespace {

TEST_F(WindowTest, ShowsAnAddress) {
  const struct {
    const char *sStart, *sEnd;  // listed before, of 3-byte instructions from 0000 on
    bool bForce;
    int32_t lAddress;
    uint32_t lAsked;  // by the emulator, for a negative address
    const char *sStartThen, *sEndThen, *sSelected;
    int32_t lTop;
    bool bRebuilt;
  } atCase[] = {
      {"8001", "9000", false, 0x8301, 0, "8001", "9000", "8301", 243,
       false},                                                              // the middle: 256 - 13
      {"8001", "9000", false, 0x8302, 0, "8302", "A302", "8302", 0, true},  // inside an instruction
      {"8001", "9000", false, 0x9001, 0, "9001", "B001", "9001", 0, true},
      {"8001", "9000", false, -1, 0xFF00, "FF00", "FFFF", "FF00", 0, true},
      {"8001", "9000", true, -1, 0x8302, "8001", "9000", "8301", 243, true},
      {"8001", "9000", true, 0x7000, 0, "8001", "9000", "8001", 0, true},
      {"8001", "9000", false, 0x10000, 0, "8001", "9000", "8001", 0, false},
      {"8001", "9000", false, -1, 0xFFFFFFFF, "8001", "9000", "8001", 0, false},
      {"8001", "9000", true, -1, 0x80000000, "8001", "9000", "8001", 0, true},
      {"8001", "9000", false, -5, 0x7FFFFFFF, "8001", "9000", "8001", 0, false},
      {"FFFE", "FFFF", true, 0xFFFF, 0, "FFFE", "FFFF", "FFFF", 0, true},
      {"8001", "8001", true, 0, 0, "8001", "8001", "8001", 0, true},
      {"0000", "FFFF", false, 0xFFFF, 0, "0000", "FFFF", "FFFF", 0x10000 / 3 + 1 - 27, false},
  };
  Form& frm = Open();
  Control& lst = frm.ControlOf(LST_DIS);
  for (int32_t lAddress = 0; lAddress < 0xFFFF; lAddress += 3) Put(lAddress, "21 41 42");
  for (const auto& tCase : atCase) {
    alControl[2] = 0;
    List(frm, tCase.sStart, tCase.sEnd);
    alControl[2] = tCase.lAsked;
    tToolkit.TakeLog();
    Logic(frm).position(tCase.bForce, tCase.lAddress);
    const auto asLog = tToolkit.TakeLog();
    SCOPED_TRACE(string(tCase.sStart) + ' ' + Hex4(tCase.lAddress) + ' ' + Hex4(tCase.bForce));
    EXPECT_EQ(Field(frm, TXT_START), tCase.sStartThen);
    EXPECT_EQ(Field(frm, TXT_END), tCase.sEndThen);
    EXPECT_EQ(Selected(frm), tCase.sSelected);
    EXPECT_EQ(lst.lTop, tCase.lTop);
    EXPECT_EQ(std::ranges::count(asLog, "fill lstDis"), tCase.bRebuilt ? 1 : 0);
    EXPECT_EQ(frm.pFocus, &lst);
    ExpectSound(frm);
  }
  // A view of one line, and a list that does not tell its lines' height: the form's "A" serves.
  List(frm, "8001", "9000");
  lst.tPlace.lHeight = 440;
  Logic(frm).position(false, 0x8301);
  EXPECT_EQ(lst.lTop, 256);
  lst.tPlace.lHeight = 6255;
  lst.lItemPixels = 0;
  Logic(frm).position(false, 0x8301);
  EXPECT_EQ(lst.lTop, 256 - 6);
  EXPECT_EQ(alControl[0], 0U) << "no user was at work";
}

TEST_F(WindowTest, AddressFieldsTakeWhatIsAnAddress) {
  const struct {
    const char *sStart, *sEnd;  // typed; "=" in front: pasted
    const char *sEndProposed, *sStartThen, *sEndThen;
    bool bListed;
  } atCase[] = {{"c0", "c1", "20C0", "00C0", "00C1", true},
                {"F000", "", "FFFF", "F000", "0000", false},
                {"", "g0 -\x03\r.3", "2000", "0000", "0003", true},
                {"8000", "7FFF", "A000", "8000", "7FFF", false},
                {"12345", "12345", "3234", "1234", "1234", true},
                {"=+1", "=9 00", "2000", "0000", "2000", false},
                {"8000", "=zzzz", "A000", "8000", "2000", false}};
  for (const auto& tCase : atCase) {
    SCOPED_TRACE(string(tCase.sStart) + " to " + tCase.sEnd);
    Form& frm = Open(0);
    const auto fnEnter = [&](int16_t iField, std::string_view sText) {
      Control& txt = frm.ControlOf(iField);
      frm.MoveFocus(&txt);
      EXPECT_TRUE(txt.bAllSelected);
      if (sText.starts_with("=")) return txt.SetText(sText.substr(1));
      txt.sText.clear();
      frm.Type(sText);
    };
    fnEnter(TXT_START, tCase.sStart);
    tToolkit.TakeLog();
    frm.MoveFocus(&frm.ControlOf(TXT_END));
    EXPECT_EQ(Field(frm, TXT_END), tCase.sEndProposed);
    fnEnter(TXT_END, tCase.sEnd);
    const string sFault = "Start address > End address";
    const bool bFault = std::string_view(tCase.sStartThen) > tCase.sEndThen && tCase.sEnd[0] != '=';
    if (bFault) tToolkit.Answer(OK);
    frm.MoveFocus(&frm.ControlOf(CHK_LONG));
    EXPECT_EQ(tToolkit.TakeBoxes(),
              bFault ? (std::vector<Box>{{sFault, 48, "Varnel - Error"}}) : std::vector<Box>{});
    EXPECT_EQ(std::ranges::count(tToolkit.TakeLog(), "fill lstDis"), tCase.bListed ? 1 : 0);
    EXPECT_EQ(Field(frm, TXT_START), tCase.sStartThen);
    EXPECT_EQ(Field(frm, TXT_END), tCase.sEndThen);
    if (bFault) {
      EXPECT_EQ(frm.pFocus, &frm.ControlOf(TXT_START));
      frm.Press(CMD_DISASS);  // leaves the start field: nothing is listed but the new start's range
      EXPECT_EQ(Lines(frm).LineCount(), 0);
    }
    if (tCase.bListed) ExpectSound(frm);
    frm.Unload();
  }
  // Closed over the message; and left while it is disabled under the editor.
  Form& frmClosed = Open();
  tToolkit.Answer(OK, [&] { frmClosed.Unload(); });
  List(frmClosed, "8000", "7FFF");
  Form& frm = Open();
  EditLine(frm, 0xFF05);
  frm.ControlOf(TXT_START).sText = "12";
  frm.Deliver(&platform::FormEvents::LostFocus, int16_t{TXT_START});
  EXPECT_EQ(Field(frm, TXT_START), "12");
}

TEST_F(WindowTest, ListingSurvivesWhateverHappensMeanwhile) {
  const auto fnWrite = [&](Form& frmOther) {
    EditLine(frmOther, 0x2010);
    frmOther.Type("RST 38H");
    frmOther.Key(ENTER);
    frmOther.Key(ESC);
  };
  const struct {
    const char* sWhat;
    std::function<void(Form& frm, Form& frmOther)> fnEvent;
    bool bClosed = false;
  } atCase[] = {
      {"write from another window", [&](Form&, Form& frmOther) { fnWrite(frmOther); }},
      {"another window's whole listing",
       [&](Form&, Form& frmOther) {
         Put(0x1FFE, "21 22 23 C3 34 12");
         frmOther.Press(CMD_DISASS);
       }},
      {"the same twice, in one another",
       [&](Form& frm, Form& frmOther) {
         tToolkit.AtDoEvents(7, [&] { frm.Press(CMD_DISASS), Put(0x1000, "3E"); });
         List(frmOther, "1F00", "20FF");
         frmOther.Press(CMD_DISASS);
         fnWrite(frmOther);
       }},
      {"a new window", [](Form& frm, Form&) { frm.PickMenu(MNU_WINDOW_OPEN); }},
      {"a new window that is closed while it lists",
       [&](Form& frm, Form&) {
         tToolkit.AtDoEvents(9, [&] { tToolkit.apForm.back()->Unload(); });
         frm.PickMenu(MNU_WINDOW_OPEN);
       }},
      {"a new window, and closing while it lists",
       [&](Form& frm, Form&) {
         tToolkit.AtDoEvents(9, [&] { frm.Unload(); });
         frm.PickMenu(MNU_WINDOW_OPEN);
       },
       true},
      {"everything that a user can click",
       [](Form& frm, Form&) {
         for (int iTime = 0; iTime < 10; ++iTime) frm.Press(CMD_DISASS);
         frm.PickMenu(MNU_SAVE);
         frm.PickMenu(MNU_SET_BREAKPOINT);
         frm.DoubleClick(LST_DIS, 0);
         frm.Key(ENTER);
         frm.RightClick(LST_DIS, 300, 300);
         frm.Press(TXT_END);
         frm.Press(CHK_LONG);
         Logic(frm).position(false, 0x7000);
       }},
      {"resizing to nothing", [](Form& frm, Form&) { frm.SetHeight(0), frm.SetWidth(0); }},
      {"a late first activation and a tick",
       [&](Form& frm, Form&) {
         RequestShow(0x4000);
         frm.Deliver(&platform::FormEvents::Activate);
         frm.Tick();
         platform::WaitNamedEvent(hShow);
       }},
      {"closing", [](Form& frm, Form&) { frm.Unload(); }, true},
      {"closing all", [](Form& frm, Form& frmOther) { frm.Unload(), frmOther.Unload(); }, true},
  };
  for (const bool bFirstListing : {false, true}) {
    for (const auto& tCase : atCase) {
      SCOPED_TRACE(tCase.sWhat + string(bFirstListing ? ", shown before it was active" : ""));
      for (int32_t lAddress = 0; lAddress < 0xFF00; ++lAddress) {
        abRam[lAddress] = static_cast<uint8_t>(lAddress * lAddress >> 5);
      }
      alControl[2] = 0x2000;
      Form& frm = Load();
      if (!bFirstListing) {
        frm.Show();
        List(frm, "0000", "3FFF");
      }
      Form& frmOther = Open(0x2000);
      tToolkit.AtDoEvents(2100, [&] { tCase.fnEvent(frm, frmOther); });
      if (bFirstListing) {
        platform::SetNamedEvent(hShow);
        frm.Tick();
      } else {
        frm.Press(CMD_DISASS);
      }
      EXPECT_EQ(frm.bGone, tCase.bClosed);
      for (const auto& pForm : std::vector(tToolkit.apForm)) {
        ExpectSound(*pForm);
        pForm->Unload();
      }
    }
  }
}

}  // namespace
