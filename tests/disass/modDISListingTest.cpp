#include <random>
#include <stdexcept>

#include "disass/WindowTest.h"
#include "disass/modDISListing.h"

namespace {

using namespace modDISListing;
using namespace std::string_literals;

TEST(ListingLine, HasItsColumnsAndReadsBack) {
  const struct {
    int32_t lAddress, lLength, lShown;
    string sBytes, sColumns;  // up to the instruction, which starts in column 22
    const char* sInstruction;
  } atCase[] = {
      {0x8000, 3, 3, "!AB", "8000 21 41 42        ", "LD HL,4241"},
      {0xFFFF, 1, 1, "\0"s, "FFFF 00              ", "NOP"},
      {0xFFFE, 3, 3, "\xC3\x34\x12", "FFFE C3 34 12        ", "JP 1234"},
      {0, 4, 4, "\xFD\xCB\x05\xC7", "0000 FD CB 05 C7     ", "SET 0,(IY + 05),A"},
      {0xABC, 6, 4, "\xDD\xDD\xDD!4\x12", "0ABC DD DD DD 21 34 1", "* LD IX,1234"},
  };
  MemoryImage abImage{};
  for (const auto& tCase : atCase) {
    string sExpected = tCase.sColumns + tCase.sInstruction;
    sExpected.resize(41, ' ');
    for (int32_t lAt = tCase.lAddress; const char bByte : tCase.sBytes) {
      abImage[static_cast<size_t>(lAt++ & 0xFFFF)] = static_cast<uint8_t>(bByte);
      sExpected += {bByte, ' '};
    }
    const auto [sLine, lLength] = BuildListingLine(abImage, tCase.lAddress);
    EXPECT_EQ(sLine, sExpected);
    EXPECT_EQ(std::tuple(lLength, LineLength(sLine), CountLineBytes(sLine), LineAddress(sLine)),
              std::tuple(tCase.lLength, tCase.lLength, tCase.lShown, tCase.lAddress));
    EXPECT_EQ(LineInstruction(sLine), tCase.sInstruction);
  }
  EXPECT_EQ(CountLineBytes(string(41, ' ')), 1);
  EXPECT_THROW(BuildListingLine(abImage, 0x10000), std::out_of_range);
  abImage.fill(0xDD);
  EXPECT_EQ(BuildListingLine(abImage, 0x8000).lLength, 0x10000);
}

/// Random writes under one range.
void EditAtRandom(int32_t lFirst, int32_t lLast, string_view sPool, int32_t lEdits) {
  std::mt19937 tRandom(static_cast<uint32_t>(lFirst + lLast));
  const auto fnByte = [&] {
    const size_t lByte = tRandom() % (sPool.size() + 1);
    return static_cast<uint8_t>(lByte < sPool.size() ? static_cast<uint8_t>(sPool[lByte])
                                                     : tRandom());
  };
  MemoryImage abImage;
  std::ranges::generate(abImage, fnByte);
  Listing tListing;
  tListing.Clear(lFirst, lLast);
  for (int32_t lNext = lFirst; lNext <= lLast;) {
    const auto [sLine, lLength] = BuildListingLine(abImage, lNext);
    tListing.Append(sLine);
    lNext += lLength;
  }
  tListing.RebuildAddressMaps();
  ASSERT_EQ(ListingFault(tListing, abImage, lFirst, lLast), "");
  for (int32_t lEdit = 0; lEdit < lEdits; ++lEdit) {
    const auto lCount = static_cast<int32_t>(tRandom() % 4 + 1);
    const auto lNear = static_cast<int32_t>(tRandom() % static_cast<uint32_t>(lLast - lFirst + 13));
    const int32_t lChanged = AddrAdd(lFirst - 6, lNear);
    for (int32_t lByte = 0; lByte < lCount; ++lByte) {
      abImage[static_cast<size_t>(AddrAdd(lChanged, lByte))] = fnByte();
    }
    tListing.RefreshChanged(abImage, lChanged, lCount);
    const int32_t lMargin = lEdit % 100 == 0 ? ADDRESS_SPACE : 16;
    const string sFault = ListingFault(tListing, abImage, lFirst, lLast, lMargin);
    ASSERT_EQ(sFault, "") << "edit " << lEdit << " of " << lCount << " at " << Hex4(lChanged);
  }
}

TEST(ListingRefresh, EqualsAFreshListingAfterEveryEdit) {
  const string sPrefixes(300, '\xDD'), sCode = "\0\x21\xCB\xED\xDD\xFD\x36"s;
  EditAtRandom(0x8000, 0x8040, sCode, 3000);
  EditAtRandom(0x8000, 0x8000, sCode, 300);
  EditAtRandom(0xFFC0, 0xFFFF, sCode, 3000);
  EditAtRandom(0, 0x30, sCode, 1000);
  EditAtRandom(0xFFF0, 0xFFFF, sPrefixes, 500);
  EditAtRandom(0x4000, 0x4FFF, sPrefixes, 200);
  EditAtRandom(0, 0xFFFF, sPrefixes, 20);
  EditAtRandom(0, 0xFFFF, sCode, 20);
}

}  // namespace
