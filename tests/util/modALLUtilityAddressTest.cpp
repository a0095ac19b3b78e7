#include <gtest/gtest.h>

#include <cstdint>

#include "util/modALLUtilityAddress.h"

namespace {

using modALLUtility::AddrAdd;
using modALLUtility::Hex4;

TEST(AddrAdd, WrapsInBothDirections) {
  struct {
    std::int32_t lBase, lOffset;
    bool bSigned;
    std::int32_t lExpected;
  } const atCase[] = {
      {0xFFFF, 1, false, 0},
      {0, 0xFE, true, 0xFFFE},
      {0x1234, 0x80, true, 0x11B4},
      {0, -1, false, 0xFFFF},
      {0x10, 0x1FF, true, 0x0F},
      {0x8000, 0x7F, true, 0x807F},
      {0xFFFF, 0x10000, false, 0xFFFF},
      {0x7FFFFFFF, 1, false, 0x0000},
  };
  for (const auto& tCase : atCase) {
    EXPECT_EQ(AddrAdd(tCase.lBase, tCase.lOffset, tCase.bSigned), tCase.lExpected)
        << tCase.lBase << " + " << tCase.lOffset;
  }
}

TEST(Hex4, PadsToFourDigitsAndNeverCuts) {
  EXPECT_EQ(Hex4(0), "0000");
  EXPECT_EQ(Hex4(0xABC), "0ABC");
  EXPECT_EQ(Hex4(0xFFFF), "FFFF");
  EXPECT_EQ(Hex4(0x12345), "12345");
  EXPECT_EQ(Hex4(-1), "FFFFFFFF");
}

}  // namespace
