#include <random>
#include <ranges>
#include <stdexcept>

#include "disass/WindowTest.h"
#include "disass/modDISListing.h"

namespace {

using namespace modDISListing;
using modALLDisass::MemoryImage;
using namespace std::string_literals;

void Store(MemoryImage& abImage, int32_t lAddress, std::string_view sBytes) {
  for (const char bByte : sBytes) {
    abImage[static_cast<size_t>(lAddress)] = static_cast<uint8_t>(bByte);
    lAddress = AddrAdd(lAddress, 1);
  }
}

TEST(ListingLine, HasItsColumnsAndReadsBack) {
  const struct {
    int32_t lAddress;
    string sBytes, sLine, sInstruction;
    int32_t lShown;
  } atCase[] = {
      {0x8000, "!AB", "8000 21 41 42        LD HL,4241          ! A B ", "LD HL,4241", 3},
      {0xFFFF, "\0"s, "FFFF 00              NOP                 \0 "s, "NOP", 1},
      {0xFFFE, "\xC3\x34\x12", "FFFE C3 34 12        JP 1234             \xC3 4 \x12 ", "JP 1234",
       3},
      {0, "\xFD\xCB\x05\xC7", "0000 FD CB 05 C7     SET 0,(IY + 05),A   \xFD \xCB \x05 \xC7 ",
       "SET 0,(IY + 05),A", 4},
      {0xABC, "\xDD\xDD\xDD!4\x12",
       "0ABC DD DD DD 21 34 1* LD IX,1234        \xDD \xDD \xDD ! 4 \x12 ", "* LD IX,1234", 4},
  };
  MemoryImage abImage{};
  for (const auto& tCase : atCase) {
    Store(abImage, tCase.lAddress, tCase.sBytes);
    const auto [sLine, lLength] = BuildListingLine(abImage, tCase.lAddress);
    EXPECT_EQ(sLine, tCase.sLine);
    EXPECT_EQ(lLength, static_cast<int32_t>(tCase.sBytes.size())) << sLine;
    EXPECT_EQ(LineLength(sLine), lLength);
    EXPECT_EQ(LineAddress(sLine), tCase.lAddress);
    EXPECT_EQ(CountLineBytes(sLine), tCase.lShown);
    EXPECT_EQ(LineInstruction(sLine), tCase.sInstruction);
  }
  EXPECT_EQ(CountLineBytes(string(41, ' ')), 1);
  EXPECT_THROW(BuildListingLine(abImage, 0x10000), std::out_of_range);
  EXPECT_THROW(BuildListingLine(abImage, -1), std::out_of_range);
  abImage.fill(0xDD);
  EXPECT_EQ(BuildListingLine(abImage, 0x8000).lLength, 0x10000);
}

TEST(ListingChange, IsFoundAcrossTheTopOfMemory) {
  const struct {
    int32_t lLine, lLength, lChanged, lCount;
    bool bTouched;
  } atCase[] = {{0x8000, 1, 0x8000, 1, true},  {0x8000, 3, 0x8002, 4, true},
                {0x8000, 2, 0x8002, 4, false}, {0x8004, 1, 0x8000, 4, false},
                {0x8000, 4, 0x8000, 0, false}, {0, 1, 0xFFFE, 3, true},
                {1, 1, 0xFFFE, 3, false},      {0xFFFF, 2, 0, 1, true}};
  for (const auto& tCase : atCase) {
    EXPECT_EQ(LineTouchesChange(tCase.lLine, tCase.lLength, tCase.lChanged, tCase.lCount),
              tCase.bTouched)
        << tCase.lLine << ' ' << tCase.lChanged;
  }
  EXPECT_FALSE(IsAddrInChange(0x8000, 0x8000, -1));
}

/// One range over an image that random writes change, with a view that only hears of changes.
void EditAtRandom(int32_t lFirst, int32_t lLast, std::span<const uint8_t> abPool, int32_t lEdits) {
  std::mt19937 tRandom(static_cast<uint32_t>(lFirst + lLast + lEdits));
  const auto fnRandom = [&](int32_t lFrom, int32_t lTo) {
    return std::uniform_int_distribution(lFrom, lTo)(tRandom);
  };
  const auto fnByte = [&] {
    const auto lByte = static_cast<size_t>(fnRandom(0, static_cast<int32_t>(abPool.size())));
    return lByte < abPool.size() ? abPool[lByte] : static_cast<uint8_t>(fnRandom(0, 255));
  };
  MemoryImage abImage;
  std::ranges::generate(abImage, fnByte);
  Listing tListing;
  std::vector<string> asView;
  tListing.Clear(lFirst, lLast);
  for (int32_t lNext = lFirst; lNext <= lLast;) {
    auto [sLine, lLength] = BuildListingLine(abImage, lNext);
    asView.push_back(sLine);
    tListing.Append(std::move(sLine));
    lNext += lLength;
  }
  tListing.RebuildAddressMaps();
  ASSERT_EQ(ListingFault(tListing, abImage, lFirst, lLast), "");
  for (int32_t lEdit = 0; lEdit < lEdits; ++lEdit) {
    const int32_t lCount = fnRandom(1, 4);
    const int32_t lChanged =
        fnRandom(0, 3) == 0 ? fnRandom(0, 0xFFFF) : AddrAdd(fnRandom(lFirst - 6, lLast + 6), 0);
    for (int32_t lByte = 0; lByte < lCount; ++lByte) {
      abImage[static_cast<size_t>(AddrAdd(lChanged, lByte))] = fnByte();
    }
    for (const auto& tReplaced : tListing.RefreshChanged(abImage, lChanged, lCount)) {
      const auto itFirst = asView.begin() + tReplaced.lFirst;
      auto itNew = asView.insert(asView.erase(itFirst, itFirst + tReplaced.lRemoved),
                                 static_cast<size_t>(tReplaced.lInserted), "");
      for (int32_t lLine = 0; lLine < tReplaced.lInserted; ++lLine) {
        *itNew++ = tListing.Line(tReplaced.lFirst + lLine);
      }
    }
    ASSERT_EQ(ListingFault(tListing, abImage, lFirst, lLast), "")
        << "edit " << lEdit << " of " << lCount << " at " << Hex4(lChanged);
    ASSERT_TRUE(std::ranges::equal(asView, std::views::iota(0, tListing.LineCount()), {}, {},
                                   [&](int32_t lLine) { return tListing.Line(lLine); }))
        << "view after edit " << lEdit << " at " << Hex4(lChanged);
  }
}

TEST(ListingRefresh, EqualsAFreshListingAfterEveryEdit) {
  const std::vector<uint8_t> abPrefixes(300, 0xDD), abCode{0, 0x21, 0xCB, 0xED, 0xDD, 0xFD, 0x36};
  const struct {
    int32_t lFirst, lLast, lEdits;
    std::span<const uint8_t> abPool;
  } atCase[] = {{0x8000, 0x8040, 800, abCode},     {0x8000, 0x8000, 100, abCode},
                {0xFFC0, 0xFFFF, 800, abCode},     {0, 0x30, 600, abCode},
                {0xFFF0, 0xFFFF, 300, abPrefixes}, {0, 0xFFFF, 20, abPrefixes},
                {0, 0xFFFF, 20, abCode},           {0x4000, 0x4FFF, 100, abPrefixes}};
  for (const auto& tCase : atCase) {
    EditAtRandom(tCase.lFirst, tCase.lLast, tCase.abPool, tCase.lEdits);
  }
}

}  // namespace
