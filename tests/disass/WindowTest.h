#pragma once

#include <array>
#include <cstdlib>

#include "config/modAllIni.h"
#include "disass/RecordingToolkit.h"
#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"
#include "link/modALLSharedMap.h"
#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"

using namespace frmDisassDesign;  // NOLINT(google-build-using-namespace): the numbers are its use
using modALLDisass::abMemoryImage;
using modALLUtility::AddrAdd;
using modALLUtility::ADDRESS_SPACE;
using modALLUtility::Hex4;
using recording::Action;
using recording::Box;
using recording::Control;
using recording::Form;
using std::int16_t, std::int32_t, std::uint32_t, std::uint8_t, std::size_t, std::string;

inline constexpr int16_t ENTER = 13, ESC = 27, UP = 38, DOWN = 40;
inline constexpr int32_t OK = 1, CANCEL = 2, YES = 6, NO = 7;

/// Empty when a listing of lFirst to lLast and its tables, up to lMargin addresses around it, are
/// those of a fresh listing of an image, else what differs first.
inline string ListingFault(const modDISListing::Listing& tListing, modALLDisass::ImageView abImage,
                           int32_t lFirst, int32_t lLast, int32_t lMargin = ADDRESS_SPACE) {
  int32_t lLine = 0, lNext = std::max(lFirst - lMargin, 0);  // lNext: whose entries are unchecked
  const auto fnTables = [&](int32_t lEnd, int32_t lIndex, int32_t lStart) {
    for (; lNext < lEnd; ++lNext) {
      if (tListing.LineIndex(lNext) != lIndex || tListing.IsLineStart(lNext) != (lNext == lStart)) {
        return "tables at " + Hex4(lNext);
      }
    }
    return string{};
  };
  for (int32_t lAddress = lFirst; lAddress <= lLast; ++lLine) {
    const auto [sLine, lLength] = modDISListing::BuildListingLine(abImage, lAddress);
    if (lLine >= tListing.LineCount() || tListing.Line(lLine) != sLine) {
      return "line " + std::to_string(lLine) + ", not " + sLine.substr(0, 60);
    }
    string sFault = fnTables(lAddress, 0, -1);
    const int32_t lEnd = std::min(lAddress + std::min(lLength, 4), ADDRESS_SPACE);
    if (sFault.empty()) sFault = fnTables(lEnd, lLine, lAddress);
    if (!sFault.empty()) return sFault;
    lAddress += lLength;
  }
  return lLine == tListing.LineCount() ? fnTables(std::min(lLast + lMargin, ADDRESS_SPACE), 0, -1)
                                       : "lines too many";
}

/// Windows on a link whose other side the test plays.
class WindowTest : public testing::Test {
 protected:
  WindowTest() {
    setenv("TEMP", tFolder.Path().c_str(), 1);
    setenv("LOCALAPPDATA", tFolder.Path().c_str(), 1);
    for (size_t lValue = 1; lValue < asValue.size(); ++lValue) {
      asValue[lValue] = tFolder.Path("object," + std::to_string(lValue));
    }
    hRam = platform::CreateNamedMemory(asValue[1], 0x20000);
    hControl = platform::CreateNamedMemory(asValue[5], 512);
    abRam = platform::MapNamedMemory(hRam);
    alControl = reinterpret_cast<uint32_t*>(platform::MapNamedMemory(hControl));
    hProgram = platform::CreateNamedEvent(asValue[21]);
    hShow = platform::CreateNamedEvent(asValue[22]);
    hBreakpoint = platform::CreateNamedEvent(asValue[23]);
    WriteConfig();
    modAllIni::IniLoad();
  }
  ~WindowTest() override {
    while (!tToolkit.apForm.empty()) tToolkit.apForm.back()->Unload();
    platform::UnmapNamedMemory(abRam);
    platform::UnmapNamedMemory(reinterpret_cast<uint8_t*>(alControl));
    for (const auto hObject : {hRam, hControl, hProgram, hShow, hBreakpoint}) {
      platform::CloseSystemHandle(hObject);
    }
    unsetenv("TEMP");  // the next test's folder is not to lie in this one's
  }

  void WriteConfig(size_t lValues = 25) {
    string sText = asValue[0];
    for (size_t lValue = 1; lValue < lValues; ++lValue) sText += ",\"" + asValue[lValue] + '"';
    std::filesystem::create_directory(tFolder.Path("VARNEL"));
    test::WriteFile(tFolder.Path("VARNEL/VARNEL.tmp"), sText);
  }
  void Put(int32_t lAddress, const string& sBytes) {
    for (size_t lAt = 0; lAt < sBytes.size(); lAt += 3) {
      abRam[lAddress] = static_cast<uint8_t>(std::stoi(sBytes.substr(lAt, 2), nullptr, 16));
      lAddress = AddrAdd(lAddress, 1);
    }
  }
  string Dump(int32_t lAddress, int32_t lCount) const {
    string sText;
    for (; lCount > 0; --lCount, lAddress = AddrAdd(lAddress, 1)) {
      sText += Hex4(abRam[lAddress]).substr(2) + (lCount > 1 ? " " : "");
    }
    return sText;
  }
  void RequestShow(uint32_t lAddress) {
    alControl[2] = lAddress;
    platform::SetNamedEvent(hShow);
  }

  Form& Load(bool bDebug = false) {
    return static_cast<Form&>(frmDisass::LoadNew(bDebug)->WindowForm());
  }
  Form& Open(uint32_t lAddress = 0xFF00) {
    alControl[2] = lAddress;
    Form& frm = Load();
    frm.Show();
    return frm;
  }
  /// Lists a range as the user does.
  static void List(Form& frm, std::string_view sStart, std::string_view sEnd) {
    frm.SetFocus();
    frm.MoveFocus(&frm.ControlOf(TXT_START));
    frm.Type(sStart);
    frm.MoveFocus(&frm.ControlOf(TXT_END));
    frm.Type(sEnd);
    frm.MoveFocus(&frm.ControlOf(LST_DIS));
  }
  static frmDisass& Logic(Form& frm) { return static_cast<frmDisass&>(*frm.pLogic); }
  static const modDISListing::Listing& Lines(Form& frm) { return Logic(frm).LinesAndMaps(); }
  static string Field(Form& frm, int16_t iControl) { return frm.ControlOf(iControl).sText; }
  /// The selected line's address, "" for none.
  static string Selected(Form& frm) {
    const Control& lst = frm.ControlOf(LST_DIS);
    return lst.lSelected < 0 ? "" : lst.asShown[static_cast<size_t>(lst.lSelected)].substr(0, 4);
  }
  static void EditLine(Form& frm, int32_t lAddress) {
    frm.DoubleClick(LST_DIS, Lines(frm).LineIndex(lAddress));
  }
  /// What the editor is on and shows, "" when it is closed.
  static string Editor(Form& frm) {
    return frm.ControlOf(TXT_ASM).bVisible ? Selected(frm) + ' ' + Field(frm, TXT_ASM) : "";
  }

  /// The listing, its tables, the list's view, the fields, the decoder's image and the memory tell
  /// one story, and the window takes input.
  void ExpectSound(Form& frm, int32_t lMargin = ADDRESS_SPACE) {
    const auto fnNumber = [&](int16_t iField) {
      return modDISListing::LineAddress(Field(frm, iField));
    };
    EXPECT_EQ(
        ListingFault(Lines(frm), abMemoryImage, fnNumber(TXT_START), fnNumber(TXT_END), lMargin),
        "");
    EXPECT_TRUE(std::equal(abMemoryImage.begin(), abMemoryImage.end(), abRam));
    const Control& lst = frm.ControlOf(LST_DIS);
    EXPECT_EQ(lst.Lines(), Lines(frm).LineCount());
    for (int32_t lLine = 0; const string& sShown : lst.asShown)
      ASSERT_EQ(sShown, Lines(frm).Line(lLine++));
    for (const int16_t iInput : {TXT_START, TXT_END, CMD_DISASS}) {
      EXPECT_NE(frm.ControlOf(iInput).bEnabled, frm.ControlOf(TXT_ASM).bVisible) << iInput;
    }
    EXPECT_TRUE(lst.bVisible && frm.bTimer);
  }
  bool RamChanged() const { return (alControl[1] >> 16 & 0xFF) == 0xFF; }

  const test::TestFolder tFolder;
  std::array<string, 25> asValue{"7"};
  uint32_t hRam = 0, hControl = 0, hProgram = 0, hShow = 0, hBreakpoint = 0;
  uint8_t* abRam = nullptr;
  uint32_t* alControl = nullptr;  ///< 0: active program, 2: show address, 3: breakpoint
  recording::Toolkit tToolkit;
};
