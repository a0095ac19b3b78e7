#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "util/modALLUtilityAddress.h"
#include "z80/modDISAsm.h"
#include "z80/modDISAsmOperands.h"

namespace {

using namespace std::literals;

/// The bytes in hexadecimal, or the message; whatever the outputs held before must not show.
std::string Outcome(std::string_view sText, std::int32_t lAddress = 0x1000) {
  modDISAsm::AsmBytes tBytes{{1, 2, 3, 4}, 4};
  std::string sError = "what the last one said";
  std::string sOutcome;
  if (modDISAsm::AsmAssemble(sText, lAddress, tBytes, sError)) {
    for (const std::uint8_t bByte : tBytes.View()) {
      if (!sOutcome.empty()) sOutcome += ' ';
      sOutcome += modALLUtility::HexDigit(bByte / 16U);
      sOutcome += modALLUtility::HexDigit(bByte);
    }
    EXPECT_EQ(sError, "");
    return sOutcome;
  }
  EXPECT_EQ(tBytes.iLength, 0) << sText;
  EXPECT_TRUE(tBytes.View().empty()) << sText;
  EXPECT_NE(sError, "") << sText;
  return sError;
}

/// Every case of a table "text = outcome; text = outcome; ..." at address 1000H.
void ExpectOutcomes(std::string_view sTable) {
  for (std::size_t lEnd = sTable.find(';'); lEnd != std::string_view::npos;
       sTable.remove_prefix(lEnd + 1), lEnd = sTable.find(';')) {
    const std::string_view sCase = sTable.substr(0, lEnd);
    const std::size_t lEquals = sCase.find(" = ");
    const std::size_t lStart = sCase.find_first_not_of(" \n");
    ASSERT_LT(lStart, lEquals) << sCase;
    const std::string_view sText = sCase.substr(lStart, lEquals - lStart);
    EXPECT_EQ(Outcome(sText), sCase.substr(lEquals + 3)) << sText;
  }
  EXPECT_EQ(sTable, "");
}

TEST(AsmAssemble, TakesBlanksTabsAndAnyByte) {
  const std::pair<std::string_view, std::string_view> atCase[] = {
      {"", "Empty instruction"},
      {"\t\t", "Empty instruction"},
      {" \t* ", "Empty instruction"},
      {"\t nop\t", "00"},
      {" \t*\t sll  b \t", "CB 30"},
      {"LD\t(\tIX\t+ 0 5\t)\t,\tA", "DD 77 05"},
      {"INC A\t", "Invalid INC/DEC operand"},
      {"LD A,\t", "Invalid LD syntax"},
      {"nop\0"sv, "Wrong instruction: NOP\0"sv},
      {"LD A,\0"sv, "Invalid hex value: \0"sv},
      {"\xE4\xC4 \xFF", "Wrong instruction: \xE4\xC4"},
  };
  for (const auto& [sText, sOutcome] : atCase) EXPECT_EQ(Outcome(sText), sOutcome) << sText;
  EXPECT_EQ(Outcome("JR 0001", 0xFFFF), "18 00");
  EXPECT_EQ(Outcome("JR 0010", 0xFFF0), "18 1E");
  EXPECT_EQ(Outcome("DJNZ FFFE", 0x0000), "10 FC");
  EXPECT_EQ(Outcome("JR 8000", 0xFFFE), "Relative jump out of range");
}

// The plain forms are left to the round trip; these are spellings, readings and messages.
TEST(AsmAssemble, ReadsOrRejects) {
  ExpectOutcomes(R"(
    NOP 12 = 00; EXX AF = D9; OTDR ((,, = ED BB; MOV A,B = Wrong instruction: MOV;
    NOPNOPNOP = Wrong instruction: NOPNOPNOP; LD A,100 = Hex value out of range: 100;
    LD A,#256 = Decimal value out of range: #256; LD A,# = Missing decimal value;
    LD C,#1a = Invalid decimal value: #1A; LD A,H = 7C; LD (H),A = Missing hex value;
    LD A,&H = Missing hex value; LD A,&H1F = 3E 1F; LD A,&H1FH = 3E 1F;
    LD A,&H1GH = Invalid hex value: 1G; LD A,&HH = Missing hex value; LD A,BH = 3E 0B;
    LD HL,0FFFFH = 21 FF FF; LD HL,FFFFFFFFF = Hex value out of range: FFFFFFFFF;
    LD HL,00000000000000001234 = 21 34 12;
    LD HL,#12345678901 = Decimal value out of range: #12345678901; LD HL,#65535 = 21 FF FF;
    LD HL,99999999999999999999G = Invalid hex value: 99999999999999999999G;
    LD A,-1 = Invalid hex value: -1; LD A,1 2 = Invalid hex value: 1 2;
    LD A,$12 = Invalid hex value: $12; LD HL,10B = 21 0B 01; LD HL,H&H = Invalid hex value: H&;
    LD A,HH = Invalid hex value: H; LD HL,# 1 = Invalid decimal value: # 1; LD = Invalid LD syntax;
    LD A = Invalid LD syntax; LD A, = Invalid LD syntax; LD A,B = 78;
    LD A,B,C = Invalid hex value: B,C; LD (HL),(HL) = LD (HL),(HL) is HALT; LD (HL),#10 = 36 0A;
    LD A,0B = 3E 0B; LD A,BC = 3E BC; LD BC,DE = 01 DE 00; LD HL,SP = Invalid hex value: SP;
    LD (1234),HL = 22 34 12; LD HL,(1234) = 2A 34 12; LD BC,(HL) = Invalid hex value: HL;
    LD (HL),BC = Invalid hex value: HL; LD (C),A = 32 0C 00; LD A,(C) = 3A 0C 00;
    LD B,(1234) = Invalid hex value: (1234); LD HL,(HL) = Invalid hex value: HL;
    LD A,() = Missing numeric value; LD A,(12 = Invalid hex value: (12;
    LD (12)+(13),A = Invalid hex value: 12)+(13; LD (1234),B = LD syntax not supported yet;
    LD I,B = LD syntax not supported yet; LD (ZZ),A = Invalid hex value: ZZ;
    LD (10000),B = Hex value out of range: 10000; LD 1234,A = LD syntax not supported yet;
    LD IX,(BC) = DD 2A BC 00; LD IX,IY = Invalid hex value: IY; LD HL,IX = Invalid LD IX/IY syntax;
    LD IXH,IYL = Invalid mixed IX/IY half registers; LD IYH,#300 = Decimal value out of range: #300;
    LD IXH,IX = Invalid hex value: IX; LD IXZ,A = Invalid LD IX/IY syntax;
    LD IXH,(IX+5) = Invalid hex value: (IX+5); LD B,(IY+FF) = FD 46 FF; LD (IX+10),20 = DD 36 10 20;
    LD (IX+#5),&H6 = DD 36 05 06; LD (IX+5),(IX+6) = Invalid hex value: (IX+6);
    LD (IX+5),100 = Hex value out of range: 100; LD (IX+5),IY = Invalid hex value: IX+5;
    LD (IX+100),A = Hex value out of range: 100; LD (IX+),A = Missing numeric value;
    LD (IX),A = Invalid indexed operand: (IX); LD (IX-5),A = Invalid indexed operand: (IX-5);
    LD (IY - 3),A = Invalid indexed operand: (IY - 3);
    LD (I X-5),A = Invalid indexed operand: (I X-5); LD A,(I X-5) = Invalid hex value: I X-5;
    LD A,(IX-5) = Invalid LD IX/IY syntax; LD A,(IX+100) = Invalid LD IX/IY syntax;
    LD HL,(IX+5) = Invalid LD indexed destination;
    LD (1234),(IX+5) = Invalid LD indexed destination; LD I,X = Invalid LD IX/IY syntax;
    LD (HL),(IX + 34) = DD 76 34; LD (IX+34),(HL) = DD 76 34; LD IXH,H = DD 64; LD H,IXL = DD 65;
    LD IXH,(HL) = DD 66; LD (HL),IXH = DD 74; INC (IX) = Invalid INC/DEC IX/IY operand;
    DEC (IX+100) = Invalid INC/DEC IX/IY operand; INC I = Invalid INC/DEC operand;
    INC (I X-5) = Invalid INC/DEC operand; DEC = Invalid INC/DEC operand; ADD IY,IY = FD 29;
    ADD IX,IY = Invalid ADD IX/IY operand; ADD IX,HL = Invalid ADD IX/IY operand;
    ADD HL,IX = Invalid ADD HL operand; ADD A,#10 = C6 0A; ADD B,C = Invalid ADD syntax;
    ADD = Invalid ADD syntax; ADD (IX+5),A = Invalid ADD syntax; ADD A,B,C = Invalid ADD operand;
    ADC HL,IX = Invalid ADC HL operand; ADC IX,BC = Invalid ADC syntax; ADC = Invalid ADC syntax;
    ADC A,ZZ = Invalid ADC operand; SBC HL,AF = Invalid SBC HL operand;
    SBC A,IY = Invalid SBC IX/IY operand; SUB A,B = Invalid SUB operand; SUB = Invalid SUB operand;
    AND IX = Invalid AND IX/IY operand; XOR IYL,A = Invalid XOR IX/IY operand;
    OR (IX-1) = Invalid OR IX/IY operand; CP ZZ = Invalid CP operand; RL (IY+10),C = FD CB 10 11;
    RL C,(IY+10) = FD CB 10 11; RLC (IX+05),(HL) = Invalid RLC indexed destination;
    RLC (HL),(IX+5) = Invalid RLC indexed destination; RR ,(IX+5) = Wrong instruction: RR,(IX+5);
    RR (IX+5), = Invalid RR indexed destination; RR (IX+5),(IY+6) = Invalid RR indexed destination;
    RR B,(IX-6) = Invalid indexed operand: (IX-6); RR (IX+GG),B = Invalid hex value: GG;
    RR (IX+5),(IY-6) = Invalid indexed operand: (IY-6); RLC B,IX = Invalid RLC IX/IY operand;
    RLC ,B = Wrong instruction: RLC,B; RLC IX = Invalid RLC IX/IY operand;
    RLC (IX) = Invalid indexed operand: (IX); RLC I = Invalid RLC operand;
    SRL = Invalid SRL operand; BIT 0,B,C = CB 40; RES #7,L = CB BD; SET 2,(IX+1),(HL) = DD CB 01 D6;
    SET 2,(IX+1),I = Invalid SET indexed destination;
    SET 2,(IX+1), = Invalid SET indexed destination; BIT 8,A = Hex value out of range: 8;
    BIT 0 = Invalid BIT syntax; RES = Invalid RES syntax; BIT 0,I = Invalid BIT register;
    BIT 0,,B = Invalid BIT register; BIT 0,IX = Invalid BIT IX/IY operand; BIT 0,B,IX = CB 40;
    RES 0,(IX-1) = Invalid indexed operand: (IX-1); BIT X,(IX) = Invalid hex value: X;
    RLC B,C = Invalid RLC syntax; SBC B,1 = Invalid SBC syntax; RLC (HL), = Invalid RLC syntax;
    JP M,0 = FA 00 00; JP ( IX ) = DD E9; JP HL = Invalid hex value: HL; JP C = C3 0C 00;
    JP X,1234 = Invalid JP condition; JP Z, = Invalid hex value: Z,;
    JP (IX),5 = Invalid JP condition; JP = Missing numeric value; CALL 0 = CD 00 00;
    CALL = Missing numeric value; CALL Q,1 = Invalid CALL condition; JR 1000 = 18 FE;
    JR NZ,1010 = 20 0E; JR 0F82 = 18 80; JR 1081 = 18 7F; JR 1082 = Relative jump out of range;
    JR 0F81 = Relative jump out of range; JR PO,1000 = Invalid JR condition;
    JR = Missing numeric value; DJNZ 1000 = 10 FE; DJNZ = Missing numeric value;
    DJNZ NZ,1234 = Invalid hex value: NZ,1234; RET X = Invalid RET condition; RST 38 = FF;
    RST 08H = CF; RST #56 = FF; RST 56 = Invalid RST vector; RST 40 = Invalid RST vector;
    RST 1 = Invalid RST vector; RST 100 = Hex value out of range: 100; RST = Missing numeric value;
    PUSH SP = Invalid PUSH/POP operand; PUSH = Invalid PUSH/POP operand;
    PUSH IXH = Invalid PUSH/POP IX/IY operand; EX ( SP ) , HL = E3; EX HL,DE = Invalid EX syntax;
    EX AF,AF = Invalid EX syntax; EX = Invalid EX syntax; IN F,(C) = Invalid IN register;
    IN B,(12) = Only IN A,(nn) or IN r,(C) are supported; IN A,12 = Invalid IN port;
    IN A,(100) = Hex value out of range: 100; IN = Invalid IN syntax; OUT (C),0 = ED 71;
    OUT (C),00 = Invalid OUT register; OUT (C),(HL) = Invalid OUT register;
    OUT (C) = Invalid OUT syntax; OUT (12),B = Only OUT (nn),A or OUT (C),r are supported;
    OUT 12,A = Invalid OUT port; OUT (ZZ),A = Invalid hex value: ZZ; OUT = Invalid OUT syntax;
    IM #1 = ED 56; IM 3 = Hex value out of range: 3; IM = Missing numeric value;)");
}

TEST(AsmParseNumber, ReadsEitherCase) {
  std::int32_t lValue = 0;
  std::string sError;
  EXPECT_TRUE(modDISAsm::AsmParseNumber(" &hffh ", lValue, 255, sError));
  EXPECT_EQ(lValue, 255);
  EXPECT_FALSE(modDISAsm::AsmParseNumber("fgh", lValue, 255, sError));
  EXPECT_EQ(sError, "Invalid hex value: FG");
}

TEST(AsmAssemble, TakesTextsOfAnyLength) {
  const std::size_t lMany = 1000000;
  const auto fnMany = [](char bChar) { return std::string(lMany, bChar); };
  EXPECT_EQ(Outcome(fnMany(' ')), "Empty instruction");
  EXPECT_EQ(Outcome(fnMany('\t') + "NOP" + fnMany(' ')), "00");
  EXPECT_EQ(Outcome(fnMany('*')), "Wrong instruction: " + std::string(lMany - 1, '*'));
  EXPECT_EQ(Outcome("LD" + fnMany(' ') + "A" + fnMany('\t') + "," + fnMany('0') + "7"), "3E 07");
  EXPECT_EQ(Outcome("LD (IX" + fnMany(' ') + "+" + fnMany('0') + "5),#" + fnMany('0')),
            "DD 36 05 00");
  EXPECT_EQ(Outcome("LD HL,#" + fnMany('9')), "Decimal value out of range: #" + fnMany('9'));
  EXPECT_EQ(Outcome("LD " + fnMany('(') + "5" + fnMany(')') + ",A"),
            "Invalid hex value: " + fnMany('(').substr(1) + "5" + fnMany(')').substr(1));
  EXPECT_EQ(Outcome("BIT 0" + fnMany(',')), "Invalid BIT register");
  EXPECT_EQ(Outcome("INC " + fnMany('I') + "X"), "Invalid INC/DEC IX/IY operand");
  std::string sPairs;
  for (std::size_t lPair = 0; lPair < lMany; ++lPair) sPairs += " ,";
  EXPECT_EQ(Outcome("JP Z" + sPairs), "Invalid hex value: " + std::string(lMany - 1, ','));
}

}  // namespace
