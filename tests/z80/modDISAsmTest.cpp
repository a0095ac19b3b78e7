#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "util/modALLUtilityAddress.h"
#include "z80/modDISAsm.h"

namespace {

using namespace std::literals;

/// The bytes in hexadecimal, or the message; whatever the outputs held before must not show.
std::string Outcome(std::string_view sText, std::int32_t lAddress = 0x1000) {
  modDISAsm::AsmBytes tBytes{{1, 2, 3, 4}, 4};
  std::string sError = "what the last one said";
  const bool bMade = modDISAsm::AsmAssemble(sText, lAddress, tBytes, sError);
  EXPECT_EQ(bMade, sError.empty()) << sText;
  EXPECT_EQ(bMade, tBytes.iLength > 0) << sText;
  for (const std::uint8_t bByte : tBytes.View()) {
    if (!sError.empty()) sError += ' ';
    sError += modALLUtility::Hex4(bByte).substr(2);
  }
  return sError;
}

TEST(AsmAssemble, TakesBlanksTabsAndAnyByte) {
  const std::pair<std::string_view, std::string_view> atCase[] = {
      {"", "Empty instruction"},
      {" \t* ", "Empty instruction"},
      {"\t nop\t", "00"},
      {" \t*\t sll  b \t", "CB 30"},
      {"LD\t(\tIX\t+ 0 5\t)\t,\tA", "DD 77 05"},
      {"INC A\t", "3C"},
      {"CP D\t \t", "BA"},  // and not the number D
      {"LD A,\0"sv, "Invalid hex value: \0"sv},
      {"\xE4\xC4 \xFF", "Wrong instruction: \xE4\xC4"},
  };
  for (const auto& [sText, sOutcome] : atCase) EXPECT_EQ(Outcome(sText), sOutcome) << sText;
  EXPECT_EQ(Outcome("JR 0010", 0xFFF0), "18 1E");
  EXPECT_EQ(Outcome("DJNZ FFFE", 0x0000), "10 FC");
  EXPECT_EQ(Outcome("JR 8000", 0xFFFE), "Relative jump out of range");
}

// The plain forms are left to the round trip; these are spellings, readings and messages.
TEST(AsmAssemble, ReadsOrRejects) {
  std::istringstream tTable(R"(
    NOP 12 = 00; EXX AF = D9; MOV A,B = Wrong instruction: MOV;
    NOPNOPNOP = Wrong instruction: NOPNOPNOP; LD A,100 = Hex value out of range: 100;
    LD A,#256 = Decimal value out of range: #256; LD A,# = Missing decimal value;
    LD C,#1a = Invalid decimal value: #1A; LD A,H = 7C; LD (H),A = Missing hex value;
    LD A,&H = Missing hex value; LD A,&H1FH = 3E 1F; LD A,&H1GH = Invalid hex value: 1G;
    LD A,BH = 3E 0B; LD HL,0FFFFH = 21 FF FF; LD HL,00000000000000001234 = 21 34 12;
    LD HL,FFFFFFFFF = Hex value out of range: FFFFFFFFF; LD HL,#65535 = 21 FF FF;
    LD HL,#12345678901 = Decimal value out of range: #12345678901;
    LD HL,99999999999999999999G = Invalid hex value: 99999999999999999999G;
    LD A,1 2 = Invalid hex value: 1 2; LD HL,10B = 21 0B 01; LD HL,H&H = Invalid hex value: H&;
    LD HL,# 1 = Invalid decimal value: # 1; LD = Invalid LD syntax; LD A, = Invalid LD syntax;
    LD A,B,C = Invalid hex value: B,C; LD (HL),(HL) = LD (HL),(HL) is HALT; LD A,BC = 3E BC;
    LD BC,DE = 01 DE 00; LD HL,SP = Invalid hex value: SP; LD (1234),HL = 22 34 12;
    LD HL,(1234) = 2A 34 12; LD (HL),BC = Invalid hex value: HL; LD (C),A = 32 0C 00;
    LD A,(C) = 3A 0C 00; LD B,(1234) = Invalid hex value: (1234); LD A,() = Missing numeric value;
    LD HL,(HL) = Invalid hex value: HL; LD A,(12 = Invalid hex value: (12;
    LD (12)+(13),A = Invalid hex value: 12)+(13; LD (1234),B = LD syntax not supported yet;
    LD (10000),B = Hex value out of range: 10000; LD 1234,A = LD syntax not supported yet;
    LD IX,(BC) = DD 2A BC 00; LD IX,IY = Invalid hex value: IY; LD HL,IX = Invalid LD IX/IY syntax;
    LD IXH,IYL = Invalid mixed IX/IY half registers; LD IYH,#300 = Decimal value out of range: #300;
    LD IXH,(IX+5) = Invalid hex value: (IX+5); LD B,(IY+FF) = FD 46 FF;
    LD (IX+#5),&H6 = DD 36 05 06; LD (IX+5),(IX+6) = Invalid hex value: (IX+6);
    LD (IX+5),100 = Hex value out of range: 100; LD (IX+5),IY = Invalid hex value: IX+5;
    LD (IX+100),A = Hex value out of range: 100; LD (IX+),A = Missing numeric value;
    LD (IX),A = Invalid indexed operand: (IX); LD (IY - 3),A = Invalid indexed operand: (IY - 3);
    LD (I X-5),A = Invalid indexed operand: (I X-5); LD A,(I X-5) = Invalid hex value: I X-5;
    LD A,(IX-5) = Invalid LD IX/IY syntax; LD HL,(IX+5) = Invalid LD indexed destination;
    LD (HL),(IX + 34) = DD 76 34; LD (IX+34),(HL) = DD 76 34; LD IXH,H = DD 64;
    LD IXH,(HL) = DD 66; LD (HL),IXH = DD 74; LD I,X = Invalid LD IX/IY syntax;
    LD (IX+5),IXH = Invalid hex value: IX; INC (I X-5) = Invalid INC/DEC operand;
    INC (IX) = Invalid INC/DEC IX/IY operand; LDIR X = ED B0;
    DEC (IX+100) = Invalid INC/DEC IX/IY operand; INC I = Invalid INC/DEC operand;
    ADD IX,IY = Invalid ADD IX/IY operand; ADD HL,IX = Invalid ADD HL operand; ADD A,#10 = C6 0A;
    ADD B,C = Invalid ADD syntax; ADD = Invalid ADD syntax; ADD A,B,C = Invalid ADD operand;
    ADC HL,IX = Invalid ADC HL operand; ADC IX,BC = Invalid ADC syntax; ADC = Invalid ADC syntax;
    SBC A,IY = Invalid SBC IX/IY operand; SUB = Invalid SUB operand; CP ZZ = Invalid CP operand;
    AND IX = Invalid AND IX/IY operand; RL (IY+10),C = FD CB 10 11; RL C,(IY+10) = FD CB 10 11;
    RLC (IX+5),(HL) = Invalid RLC indexed destination; RR ,(IX+5) = Wrong instruction: RR,(IX+5);
    RLC (HL),(IX+5) = Invalid RLC indexed destination;
    RR (IX+5), = Invalid RR indexed destination; RR (IX+5),(IY+6) = Invalid RR indexed destination;
    RR B,(IX-6) = Invalid indexed operand: (IX-6); RR (IX+GG),B = Invalid hex value: GG;
    RLC B,IX = Invalid RLC IX/IY operand; RLC IX = Invalid RLC IX/IY operand;
    SRL = Invalid SRL operand; RLC B,C = Invalid RLC syntax; BIT 0,B,C = CB 40; RES #7,L = CB BD;
    SET 2,(IX+1),(HL) = DD CB 01 D6; SET 2,(IX+1),I = Invalid SET indexed destination;
    BIT 8,A = Hex value out of range: 8; BIT 0 = Invalid BIT syntax; BIT 0,I = Invalid BIT register;
    BIT 0,,B = Invalid BIT register; BIT 0,IX = Invalid BIT IX/IY operand; BIT 0,B,IX = CB 40;
    RES 0,(IX-1) = Invalid indexed operand: (IX-1); BIT X,(IX) = Invalid hex value: X;
    JP M,0 = FA 00 00; JP ( IX ) = DD E9; JP HL = Invalid hex value: HL; JP C = C3 0C 00;
    JP X,1234 = Invalid JP condition; JP Z, = Invalid hex value: Z,; JP = Missing numeric value;
    JP (IX),5 = Invalid JP condition; CALL Q,1 = Invalid CALL condition; JR 1000 = 18 FE;
    JR 0F82 = 18 80; JR 1081 = 18 7F; JR 1082 = Relative jump out of range; RST 38 = FF;
    JR 0F81 = Relative jump out of range; JR PO,1000 = Invalid JR condition;
    DJNZ NZ,1234 = Invalid hex value: NZ,1234; RET X = Invalid RET condition; RST #56 = FF;
    RST 40 = Invalid RST vector; RST 1 = Invalid RST vector; PUSH SP = Invalid PUSH/POP operand;
    PUSH IXH = Invalid PUSH/POP IX/IY operand; EX ( SP ) , HL = E3; EX HL,DE = Invalid EX syntax;
    EX AF,AF = Invalid EX syntax; IN F,(C) = Invalid IN register; IN = Invalid IN syntax;
    IN (HL),(C) = Invalid IN register; RST 100 = Hex value out of range: 100;
    IN B,5 = Only IN A,(nn) or IN r,(C) are supported; IN A,12 = Invalid IN port;
    IN B,(12) = Only IN A,(nn) or IN r,(C) are supported;
    OUT (C),00 = Invalid OUT register; OUT (C),(HL) = Invalid OUT register;
    OUT (12),B = Only OUT (nn),A or OUT (C),r are supported; OUT 12,A = Invalid OUT port;
    OUT (C) = Invalid OUT syntax; IN A,(100) = Hex value out of range: 100; IM #1 = ED 56;
    IM 3 = Hex value out of range: 3;)");
  std::string sCase;
  while (std::getline(tTable >> std::ws, sCase, ';')) {
    const std::size_t lEquals = sCase.find(" = ");
    ASSERT_NE(lEquals, std::string::npos) << sCase;
    EXPECT_EQ(Outcome(sCase.substr(0, lEquals)), sCase.substr(lEquals + 3)) << sCase;
  }
}

TEST(AsmAssemble, TakesTextsOfAnyLength) {
  const auto fnMany = [](char bChar) { return std::string(1000000, bChar); };
  EXPECT_EQ(Outcome(fnMany('\t') + "NOP" + fnMany(' ')), "00");
  EXPECT_EQ(Outcome(fnMany('*')), "Wrong instruction: " + fnMany('*').substr(1));
  EXPECT_EQ(Outcome("LD (IX" + fnMany(' ') + "+" + fnMany('0') + "5),#" + fnMany('0')),
            "DD 36 05 00");
  EXPECT_EQ(Outcome("LD " + fnMany('(') + "5" + fnMany(')') + ",A"),
            "Invalid hex value: " + fnMany('(').substr(1) + "5" + fnMany(')').substr(1));
  EXPECT_EQ(Outcome("INC " + fnMany('I') + "X"), "Invalid INC/DEC IX/IY operand");
  std::string sPairs;
  for (int lPair = 0; lPair < 1000000; ++lPair) sPairs += " ,";
  EXPECT_EQ(Outcome("JP Z" + sPairs), "Invalid hex value: " + fnMany(',').substr(1));
}

}  // namespace
