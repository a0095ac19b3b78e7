#include <gtest/gtest.h>

#include "util/modALLUtilityAddress.h"

namespace {

using modALLUtility::AddrAdd;
using modALLUtility::Hex4;

TEST(AddrAdd, WrapsInBothDirections) {
  EXPECT_EQ(AddrAdd(0xFFFF, 1), 0);
  EXPECT_EQ(AddrAdd(0, -1), 0xFFFF);
  EXPECT_EQ(AddrAdd(0x1234, 0x80, true), 0x11B4);
  EXPECT_EQ(AddrAdd(0x10, 0x1FF, true), 0x0F);
  EXPECT_EQ(AddrAdd(0x8000, 0x7F, true), 0x807F);
  EXPECT_EQ(AddrAdd(0x7FFFFFFF, 1), 0);
}

TEST(Hex4, PadsToFourDigitsAndNeverCuts) {
  EXPECT_EQ(Hex4(0xABC), "0ABC");
  EXPECT_EQ(Hex4(0x12345), "12345");
  EXPECT_EQ(Hex4(-1), "FFFFFFFF");
}

}  // namespace
