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
/// these bytes; those around it are prefixes, which would change it if they were read.
constexpr std::string_view CASES[] = {
    // operands, and the unprefixed opcodes that break a pattern
    "00 = NOP", "76 = HALT", "08 = EX AF,AF'", "01 34 12 = LD BC,1234", "22 CD AB = LD (ABCD),HL",
    "3A 00 40 = LD A,(4000)", "06 AB = LD B,AB", "D3 FE = OUT (FE),A", "DB 1F = IN A,(1F)",
    "C6 05 = ADD A,05", "D6 05 = SUB 05", "90 = SUB B", "9E = SBC A,(HL)", "FF = RST 38H",
    "C7 = RST 00H", "E9 = JP (HL)", "F1 = POP AF", "31 0F 00 = LD SP,000F",
    // relative jumps and instructions over the end of memory
    "4000: 18 34 = JR 4036", "4000: 10 FE = DJNZ 4000", "4000: 18 7E = JR 4080",
    "4000: 18 7F = JR 4081", "4000: 18 80 = JR 3F82", "FFFF: 18 05 = JR 0006",
    "0000: 28 F0 = JR Z,FFF2", "FFFE: 18 00 = JR 0000", "FFFE: 01 34 12 = LD BC,1234",
    "FFFF: DD CB 05 46 = BIT 0,(IX + 05)", "FFFD: ED 4B 34 12 = LD BC,(1234)",
    // CB
    "CB 00 = RLC B", "CB 36 = * SLL (HL)", "CB 3F = SRL A", "CB 46 = BIT 0,(HL)",
    "CB 86 = RES 0,(HL)", "CB FF = SET 7,A",
    // ED
    "ED 70 = * IN (C)", "ED 78 = IN A,(C)", "ED 71 = * OUT (C),0", "ED 79 = OUT (C),A",
    "ED 43 34 12 = LD (1234),BC", "ED 62 = SBC HL,HL", "ED 7B 00 80 = LD SP,(8000)",
    "ED 63 34 12 = * LD (1234),HL", "ED 6B 34 12 = * LD HL,(1234)", "ED 44 = NEG", "ED 4C = * NEG",
    "ED 4D = RETI", "ED 45 = RETN", "ED 55 = * RETN", "ED 5D = * RETN", "ED 46 = IM 0",
    "ED 4E = * IM 0", "ED 66 = * IM 0", "ED 76 = * IM 1", "ED 5E = IM 2", "ED 7E = * IM 2",
    "ED 57 = LD A,I", "ED 6F = RLD", "ED 77 = * NOP", "ED 7F = * NOP", "ED A4 = * NOP",
    "ED BB = OTDR", "ED 00 = * NOP", "ED ED = * NOP", "ED DD = * NOP", "ED FF = * NOP",
    // DD and FD
    "DD 09 = ADD IX,BC", "FD 29 = ADD IY,IY", "DD 21 34 12 = LD IX,1234",
    "FD 22 34 12 = LD (1234),IY", "DD 2A 34 12 = LD IX,(1234)", "DD 7E 05 = LD A,(IX + 05)",
    "FD 7E FB = LD A,(IY + FB)", "FD 7E 80 = LD A,(IY + 80)", "DD 36 05 99 = LD (IX + 05),99",
    "DD 66 05 = LD H,(IX + 05)", "DD 74 05 = LD (IX + 05),H", "DD 44 = * LD B,IXH",
    "DD 65 = * LD IXH,IXL", "FD 6F = * LD IYL,A", "DD 26 12 = * LD IXH,12", "DD 84 = * ADD A,IXH",
    "DD 96 05 = SUB (IX + 05)", "DD E3 = EX (SP),IX", "DD E9 = JP (IX)", "FD F9 = LD SP,IY",
    "DD E1 = POP IX", "DD CB 05 06 = RLC (IX + 05)", "DD CB 05 00 = RLC B,(IX + 05)",
    "DD CB 05 36 = * SLL (IX + 05)", "DD CB 05 47 = * BIT 0,(IX + 05),A",
    "DD CB 05 86 = RES 0,(IX + 05)", "FD CB 85 C7 = SET 0,(IY + 85),A",
    // prefixes without effect
    "DD 00 = * NOP", "DD 78 = * LD A,B", "DD 01 34 12 = * LD BC,1234", "DD EB = * EX DE,HL",
    "DD C3 34 12 = * JP 1234", "DD 76 = * HALT", "4000: DD 18 34 = * JR 4037",
    "4000: DD 10 FE = * DJNZ 4001", "DD DD 00 = * NOP", "DD DD DD DD 00 = * NOP",
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

TEST(DisassembleInstruction, KeepsTheTextFormatForEveryOpcode) {
  VisitEveryForm([](const EveryForm& tForm) {
    MemoryImage abImage{};
    PutBytes(abImage, 1, tForm.abByte);
    const auto tInstruction = DisassembleInstruction(abImage, 1);
    const std::string sText(tInstruction.tText.View());
    SCOPED_TRACE(sText);
    EXPECT_TRUE(tInstruction.lLength >= 1 && tInstruction.lLength <= 4);
    EXPECT_EQ(sText.find_first_of("abcdefghijklmnopqrstuvwxyz"), std::string::npos);
    EXPECT_FALSE(sText.empty() || sText.front() == ' ' || sText.back() == ' ');
    EXPECT_EQ(sText.find('*', 1), std::string::npos);

    // A prefix before a prefix adds one byte and the mark, and nothing else.
    const std::uint8_t bFirst = abImage[1];
    if (bFirst != 0xDD && bFirst != 0xED && bFirst != 0xFD) return;
    abImage[0] = 0xFD;
    const auto tLonger = DisassembleInstruction(abImage, 0);
    EXPECT_EQ(tLonger.tText.View(), sText.starts_with("* ") ? sText : "* " + sText);
    EXPECT_EQ(tLonger.lLength, tInstruction.lLength + 1);
  });
}

}  // namespace
