#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "RoundTrip.h"
#include "util/modALLUtilityAddress.h"
#include "z80/modALLDisass.h"

namespace {

using modALLDisass::DisassembleInstruction;
using modALLDisass::MemoryImage;
using modALLUtility::AddrAdd;

static_assert(std::is_trivially_copyable_v<modALLDisass::Instruction>);

/// "address: bytes = text", the address 0 where it is not given. The instruction must take exactly
/// these bytes; those around it are prefixes, which would change it if they were read. The judges
/// know the plain forms; these are what they leave out or see otherwise.
constexpr std::string_view CASES[] = {
    // relative jumps and instructions over the end of memory
    "4000: 10 FE = DJNZ 4000", "4000: 18 7F = JR 4081", "4000: 18 80 = JR 3F82",
    "FFFF: 18 05 = JR 0006", "0000: 28 F0 = JR Z,FFF2", "FFFE: 18 00 = JR 0000",
    "FFFE: 01 34 12 = LD BC,1234", "FFFF: DD CB 05 46 = BIT 0,(IX + 05)",
    "FFFD: ED 4B 34 12 = LD BC,(1234)",
    // undocumented, or other bytes for the same
    "CB 36 = * SLL (HL)", "ED 70 = * IN (C)", "ED 71 = * OUT (C),0", "ED 63 34 12 = * LD (1234),HL",
    "ED 4C = * NEG", "ED 5D = * RETN", "ED 66 = * IM 0", "ED 7F = * NOP", "ED DD = * NOP",
    "DD 65 = * LD IXH,IXL", "DD CB 05 00 = RLC B,(IX + 05)", "DD CB 05 36 = * SLL (IX + 05)",
    "DD CB 05 47 = * BIT 0,(IX + 05),A", "FD CB 85 C7 = SET 0,(IY + 85),A",
    // prefixes without effect
    "DD 00 = * NOP", "DD 01 34 12 = * LD BC,1234", "DD EB = * EX DE,HL", "DD 76 = * HALT",
    "4000: DD 18 34 = * JR 4037", "4000: DD 10 FE = * DJNZ 4001", "DD DD DD DD 00 = * NOP",
    "DD FD DD FD 21 34 12 = * LD IY,1234", "FD DD 21 34 12 = * LD IX,1234",
    "DD DD CB 05 46 = * BIT 0,(IX + 05)", "DD ED 43 34 12 = * LD (1234),BC", "DD ED 44 = * NEG",
    "FD ED 70 = * IN (C)", "FFFF: DD DD 18 FE = * JR 0001"};

TEST(DisassembleInstruction, DecodesTextAndLength) {
  for (const std::string_view sCase : CASES) {
    const std::size_t lColon = sCase.find(':');
    const bool bAddress = lColon != std::string_view::npos;
    std::istringstream tCase(std::string(sCase.substr(bAddress ? lColon + 1 : 0)));
    tCase >> std::hex;
    const auto lAddress = bAddress ? std::stoi(std::string(sCase), nullptr, 16) : 0;
    MemoryImage abImage;
    abImage.fill(0xDD);
    std::vector<std::uint8_t> abByte;
    for (std::uint32_t lByte = 0; tCase >> lByte;) {
      abByte.push_back(static_cast<std::uint8_t>(lByte));
    }
    PutBytes(abImage, lAddress, abByte);
    const auto tInstruction = DisassembleInstruction(abImage, lAddress);
    EXPECT_EQ(tInstruction.tText.View(), sCase.substr(sCase.find('=') + 2)) << sCase;
    EXPECT_EQ(tInstruction.lLength, std::ssize(abByte)) << sCase;
  }
}

TEST(DisassembleInstruction, FollowsPrefixRunsOfAnyLength) {
  struct {
    std::int32_t lAddress, lPrefixes;
    std::string_view sText;
    std::int32_t lLength;
  } const atCase[] = {{0, 40000, "* LD IX,1234", 40003},
                      {0xFFF0, 40000, "* LD IX,1234", 40003},
                      {0, 32766, "* LD IX,1234", 32769},
                      {5, 65535, "* LD IX,DDDD", 65538},  // the operand is the run's own start
                      {0, 65536, "* NOP", 65536},
                      {0x8000, 65536, "* NOP", 65536}};
  for (const auto& tCase : atCase) {
    MemoryImage abImage{};
    const std::vector<std::uint8_t> abPrefix(static_cast<std::size_t>(tCase.lPrefixes), 0xDD);
    PutBytes(abImage, AddrAdd(tCase.lAddress, tCase.lPrefixes),
             std::array<std::uint8_t, 3>{0x21, 0x34, 0x12});
    PutBytes(abImage, tCase.lAddress, abPrefix);
    const auto tInstruction = DisassembleInstruction(abImage, tCase.lAddress);
    EXPECT_EQ(tInstruction.tText.View(), tCase.sText) << tCase.lPrefixes;
    EXPECT_EQ(tInstruction.lLength, tCase.lLength) << tCase.lPrefixes;
  }
}

}  // namespace
