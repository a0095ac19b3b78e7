#pragma once

#include <array>
#include <cstdlib>
#include <random>

#include "config/modAllIni.h"
#include "disass/RecordingToolkit.h"
#include "disass/frmDisass.h"
#include "disass/frmDisassDesign.h"
#include "link/modALLSharedMap.h"
#include "platform/NamedEvent.h"
#include "platform/NamedMemory.h"
#include "platform/TestProcess.h"
#include "z80/modDISAsm.h"

using namespace frmDisassDesign;  // NOLINT(google-build-using-namespace): the numbers are its use
using namespace recording;        // NOLINT(google-build-using-namespace): likewise
using modALLDisass::abMemoryImage;
using modALLDisass::MemoryImage;
using modALLUtility::AddrAdd;
using modALLUtility::ADDRESS_SPACE;
using modALLUtility::Hex4;

inline constexpr int16_t ENTER = 13, ESC = 27, UP = 38, DOWN = 40;
inline constexpr int32_t OK = 1, CANCEL = 2, YES = 6, NO = 7;

/// Empty when a listing of lFirst to lLast and its tables, up to lMargin addresses around it, are
/// those of a fresh listing of an image, else what differs first.
inline string ListingFault(const modDISListing::Listing& tListing, modALLDisass::ImageView abImage,
                           int32_t lFirst, int32_t lLast, int32_t lMargin = ADDRESS_SPACE) {
  int32_t lLine = 0, lNext = std::max(lFirst - lMargin, 0);  // lNext: whose entries are unchecked
  const auto fnTables = [&](int32_t lEnd, int32_t lIndex, int32_t lStart) {
    while (lNext < lEnd && tListing.LineIndex(lNext) == lIndex &&
           tListing.IsLineStart(lNext) == (lNext == lStart)) {
      ++lNext;
    }
    return lNext >= lEnd;
  };
  for (int32_t lAddress = lFirst; lAddress <= lLast; ++lLine) {
    const auto [sLine, lLength] = modDISListing::BuildListingLine(abImage, lAddress);
    const int32_t lEnd = std::min(lAddress + std::min(lLength, 4), ADDRESS_SPACE);
    if (lLine >= tListing.LineCount() || tListing.Line(lLine) != sLine) return "not " + sLine;
    if (!fnTables(lAddress, 0, -1) || !fnTables(lEnd, lLine, lAddress)) return "tables, " + sLine;
    lAddress += lLength;
  }
  const bool bTables = fnTables(std::min(lLast + lMargin, ADDRESS_SPACE), 0, -1);
  return lLine != tListing.LineCount() ? "too many lines" : bTables ? "" : "tables behind the end";
}

/// Windows on a link whose other side the test plays.
class WindowTest : public testing::Test {
 public:
  ~WindowTest() override {
    while (!tToolkit.apForm.empty()) tToolkit.apForm.back()->Unload();
    platform::UnmapNamedMemory(abRam);
    platform::UnmapNamedMemory(reinterpret_cast<uint8_t*>(alControl));
    for (const auto hEach : ahObject) platform::CloseSystemHandle(hEach);
    test::SetEnvironment("TEMP", "");  // the next test's folder is not to lie in this one's
  }

 protected:
  WindowTest() {
    test::SetEnvironment("TEMP", tFolder.Path());
    test::SetEnvironment("LOCALAPPDATA", tFolder.Path());
    for (size_t lValue = 1; lValue < asValue.size(); ++lValue) {
      asValue[lValue] = test::UniqueName() + ", an object";
    }
    ahObject = {platform::CreateNamedMemory(asValue[1], 0x20000),
                platform::CreateNamedMemory(asValue[5], 512),
                platform::CreateNamedEvent(asValue[21]), platform::CreateNamedEvent(asValue[22]),
                platform::CreateNamedEvent(asValue[23])};
    abRam = platform::MapNamedMemory(ahObject[0]);
    alControl = reinterpret_cast<uint32_t*>(platform::MapNamedMemory(ahObject[1]));
    std::filesystem::create_directory(tFolder.Path("VARNEL"));
    WriteConfig();
    modAllIni::IniLoad();
  }
  void WriteConfig(size_t lValues = 25) {
    string sText = asValue[0];
    for (size_t lValue = 1; lValue < lValues; ++lValue) sText += ",\"" + asValue[lValue] + '"';
    test::WriteFile(tFolder.Path("VARNEL/VARNEL.tmp"), sText);
  }
  void Put(int32_t lAddress, const string& sBytes) {
    for (size_t lAt = 0; lAt < sBytes.size(); lAt += 3, lAddress = AddrAdd(lAddress, 1)) {
      abRam[lAddress] = static_cast<uint8_t>(std::stoi(sBytes.substr(lAt, 2), nullptr, 16));
    }
  }
  string Dump(int32_t lAddress, size_t lCount) const {
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
  bool RamChanged() const { return (alControl[1] >> 16 & 0xFF) == 0xFF; }

  static Form& Load(bool bDebug = false) {
    return static_cast<Form&>(frmDisass::LoadNew(bDebug)->WindowForm());
  }
  Form& Open(uint32_t lAddress = 0xFF00) {
    alControl[2] = lAddress;
    Form& frm = Load();
    frm.Show();
    return frm;
  }
  /// Lists a range as the user does.
  static void List(Form& frm, string_view sStart, string_view sEnd) {
    if (frm.GoTo(TXT_START)) frm.Type(sStart);
    if (frm.GoTo(TXT_END)) frm.Type(sEnd);
    frm.GoTo(LST_DIS);
  }
  static frmDisass& Logic(Form& frm) { return static_cast<frmDisass&>(*frm.pLogic); }
  static const modDISListing::Listing& Lines(Form& frm) { return Logic(frm).LinesAndMaps(); }
  static string Field(Form& frm, int16_t iControl) { return frm.ControlOf(iControl).sText; }
  /// The selected line's address, "" for none.
  static string Selected(Form& frm) {
    const int32_t lLine = frm.ControlOf(LST_DIS).lSelected;
    return lLine < 0 ? "" : string(Lines(frm).Line(lLine).substr(0, 4));
  }
  static void Edit(Form& frm, int32_t lAddress, const char* sTyped = "") {
    frm.DoubleClick(LST_DIS, Lines(frm).LineIndex(lAddress));
    frm.Type(sTyped);
  }
  /// What the editor is on and shows, "" when it is closed.
  static string Editor(Form& frm) {
    return frm.ControlOf(TXT_ASM).bVisible ? Selected(frm) + ' ' + Field(frm, TXT_ASM) : "";
  }
  /// The listing, its tables, the list's view, the fields, the decoder's image and the memory tell
  /// one story, and the window takes input.
  void ExpectSound(Form& frm, int32_t lMargin = ADDRESS_SPACE) {
    const int32_t lFirst = modDISListing::LineAddress(Field(frm, TXT_START));
    const int32_t lLast = modDISListing::LineAddress(Field(frm, TXT_END));
    EXPECT_EQ(ListingFault(Lines(frm), abMemoryImage, lFirst, lLast, lMargin), "");
    EXPECT_TRUE(std::equal(abMemoryImage.begin(), abMemoryImage.end(), abRam));
    const Control &lst = frm.ControlOf(LST_DIS), &txt = frm.ControlOf(TXT_ASM);
    EXPECT_EQ(lst.Lines(), Lines(frm).LineCount());
    for (int32_t lLine = 0; const string& sShown : lst.asShown) {
      ASSERT_EQ(sShown, Lines(frm).Line(lLine++));
    }
    for (const int16_t iInput : {TXT_START, TXT_END, CMD_DISASS}) {
      EXPECT_NE(frm.ControlOf(iInput).bEnabled, txt.bVisible) << iInput;
    }
    EXPECT_TRUE(lst.bVisible && frm.bTimer);
    EXPECT_TRUE(!txt.bVisible || txt.tPlace.lTop == 1140 + 225 * (lst.lSelected - lst.lTop));
  }

  const test::TestFolder tFolder;
  std::array<string, 25> asValue{"7"};
  std::array<uint32_t, 5> ahObject{};
  const uint32_t &hProgram = ahObject[2], &hShow = ahObject[3], &hBreakpoint = ahObject[4];
  uint8_t* abRam = nullptr;
  uint32_t* alControl = nullptr;  ///< 0: active program, 2: show address, 3: breakpoint
  Toolkit tToolkit;
};

/// Random memory under windows, and random instructions to type into them.
class RandomTyping : public WindowTest {
 protected:
  RandomTyping() { Fill(4); }
  /// Prefixes and what is often behind them, but for one byte in lOdd; above 100 one prefix alone.
  void Fill(uint32_t lOdd) {
    for (int32_t lByte = 0; lByte < 0x10000; ++lByte) {
      abRam[lByte] = Random(lOdd) == 0
                         ? Random(256)
                         : std::array<uint8_t, 3>{0xDD, 0x21, 0xCB}[Random(lOdd > 100 ? 1 : 3)];
      abRam[0x10000 + lByte] = Random(20) == 0;
    }
  }
  uint8_t Random(uint32_t lBelow) { return static_cast<uint8_t>(tRandom() % lBelow); }
  /// Some instruction that assembles, and the bytes to be written when it is typed over sLine.
  std::pair<string, std::vector<uint8_t>> Invent(string_view sLine) {
    const int32_t lAddress = modDISListing::LineAddress(sLine);
    modDISAsm::AsmBytes tBytes;
    string sText, sError;
    do {
      MemoryImage abImage{};
      for (int32_t lByte = 0; lByte < 4; ++lByte) {
        abImage[static_cast<size_t>(AddrAdd(lAddress, lByte))] = Random(256);
      }
      sText = modALLDisass::DisassembleInstruction(abImage, lAddress).tText.View();
    } while (!modDISAsm::AsmAssemble(sText, lAddress, tBytes, sError));
    std::vector<uint8_t> abWritten(tBytes.View().begin(), tBytes.View().end());
    const auto lCurrent = static_cast<size_t>(modDISListing::CountLineBytes(sLine));
    abWritten.resize(std::max(abWritten.size(), lCurrent));
    return {sText, abWritten};
  }
  std::mt19937 tRandom{7};
};
