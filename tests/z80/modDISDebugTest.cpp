#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "z80/modDISDebug.h"

namespace {

using modDISDebug::CheckImages;
using modDISDebug::DebugNormalizeText;

TEST(CheckImages, CountsTheOutcomes) {
  // Checked, supported, unsupported, mismatch, opcode mismatch, opcode ignored; the zeros around
  // the bytes are NOPs. The image must come out as it went in.
  struct {
    std::string_view sWhat;
    std::size_t lAddress;
    std::vector<std::uint8_t> abBytes;
    std::array<std::int32_t, 6> alExpected;
  } const atCase[] = {
      {"a longer code than needed", 16, {0xED, 0x63, 0x34, 0x12}, {65533, 65533, 0, 0, 0, 1}},
      {"another code of the same length", 16, {0xED, 0x4C}, {65535, 65535, 0, 0, 0, 1}},
      {"a prefix without effect", 16, {0xDD, 0x00}, {65535, 65535, 0, 0, 0, 1}},
      {"a jump too far behind a prefix", 16, {0xFD, 0x18, 0x7F}, {65534, 65533, 1, 0, 0, 0}},
      {"longer code over the end", 0xFFFE, {0xDD, 0xDD}, {65535, 65535, 0, 0, 0, 1}},
  };
  for (const auto& tCase : atCase) {
    modALLDisass::MemoryImage abImage{};
    std::ranges::copy(tCase.abBytes, abImage.begin() + tCase.lAddress);
    auto abWork = abImage;
    const auto tCount = CheckImages(abImage, abWork, [] { return true; });
    const std::array<std::int32_t, 6> alCount{tCount.lChecked,        tCount.lSupported,
                                              tCount.lUnsupported,    tCount.lMismatch,
                                              tCount.lOpcodeMismatch, tCount.lOpcodeIgnored};
    EXPECT_EQ(alCount, tCase.alExpected) << tCase.sWhat;
    EXPECT_EQ(abWork, abImage) << tCase.sWhat;
  }
}

TEST(DebugNormalizeText, ComparesWithoutMarkCaseAndBlanks) {
  EXPECT_EQ(DebugNormalizeText("  * bit   0 , ( ix  + 05 ) ,b "), "BIT 0,(IX+05),B");
  EXPECT_EQ(DebugNormalizeText("* * LD A,( IY - 3 )"), "* LD A,(IY-3)");
  EXPECT_FALSE(modDISDebug::DebugIsMarked("NOP"));
}

}  // namespace
