#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

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

TEST(AsmAssemble, ReadsEverySpellingOfALine) {
  struct {
    std::string sText;
    std::string_view sOutcome;
    std::int32_t lAddress = 0x1000;
  } const atCase[] = {{"", "Empty instruction"},
                      {"  ", "Empty instruction"},
                      {"\t\t", "Empty instruction"},
                      {" * ", "Empty instruction"},
                      {"\t*\t", "Empty instruction"},
                      {"  Nop  ", "00"},
                      {"\t nop\t", "00"},
                      {" \t*\t sll  b \t", "CB 30"},
                      {"* *NOP", "Wrong instruction: *NOP"},
                      {"ld   a , ( ix + 05 )", "DD 7E 05"},
                      {"LD\t(\tIX\t+ 0 5\t)\t,\tA", "DD 77 05"},
                      {"ldx a", "Wrong instruction: LDX"},
                      {"LD , A", "Wrong instruction: LD,A"},
                      {"RET\t", "C9"},
                      {"INC A\t", "Invalid INC/DEC operand"},
                      {"LD A,\t", "Invalid LD syntax"},
                      {"nop\0"s, "Wrong instruction: NOP\0"sv},
                      {"LD A,\0"s, "Invalid hex value: \0"sv},
                      {"\xE4\xC4 \xFF", "Wrong instruction: \xE4\xC4"},
                      {"LD A,\x80\xFF", "Invalid hex value: \x80\xFF"},
                      {"JR 0001", "18 00", 0xFFFF},
                      {"JR 0010", "18 1E", 0xFFF0},
                      {"DJNZ FFFE", "10 FC", 0x0000},
                      {"JR 8000", "Relative jump out of range", 0xFFFE}};
  for (const auto& tCase : atCase) {
    EXPECT_EQ(Outcome(tCase.sText, tCase.lAddress), tCase.sOutcome) << tCase.sText;
  }
}

// The plain forms are left to the round trip; these are spellings, readings and messages.
TEST(AsmAssemble, ReadsOrRejects) {
  ExpectOutcomes(R"(
    NOP 12 = 00; EXX AF = D9; LDIR = ED B0; OTDR ((,, = ED BB; MOV A,B = Wrong instruction: MOV;
    LDIRX = Wrong instruction: LDIRX; NOPNOPNOP = Wrong instruction: NOPNOPNOP;
    LD A,ff = 3E FF; LD A,100 = Hex value out of range: 100; LD A,#255 = 3E FF;
    LD A,#256 = Decimal value out of range: #256; LD A,# = Missing decimal value;
    LD C,#1a = Invalid decimal value: #1A; LD A,H = 7C; LD (H),A = Missing hex value;
    LD A,&H = Missing hex value; LD A,&H1F = 3E 1F; LD A,&H1FH = 3E 1F; LD A,1FH = 3E 1F;
    LD A,&H1GH = Invalid hex value: 1G; LD A,&HH = Missing hex value; LD A,BH = 3E 0B;
    LD HL,0FFFFH = 21 FF FF; LD HL,FFFFFFFFF = Hex value out of range: FFFFFFFFF;
    LD HL,00000000000000001234 = 21 34 12; LD HL,10000 = Hex value out of range: 10000;
    LD HL,#12345678901 = Decimal value out of range: #12345678901; LD HL,#65535 = 21 FF FF;
    LD HL,99999999999999999999G = Invalid hex value: 99999999999999999999G;
    LD A,-1 = Invalid hex value: -1; LD A,1 2 = Invalid hex value: 1 2;
    LD A,$12 = Invalid hex value: $12; LD A,0X12 = Invalid hex value: 0X12; LD HL,10B = 21 0B 01;
    LD HL,H&H = Invalid hex value: H&; LD A,HH = Invalid hex value: H;
    LD HL,# 1 = Invalid decimal value: # 1;
    LD = Invalid LD syntax; LD A = Invalid LD syntax; LD A, = Invalid LD syntax; LD A,B = 78;
    LD A,B,C = Invalid hex value: B,C; LD (HL),(HL) = LD (HL),(HL) is HALT; LD (HL),#10 = 36 0A;
    LD A,0B = 3E 0B; LD A,BC = 3E BC; LD BC,DE = 01 DE 00; LD HL,SP = Invalid hex value: SP;
    LD (1234),HL = 22 34 12; LD HL,(1234) = 2A 34 12; LD (1234),BC = ED 43 34 12;
    LD DE,(1234) = ED 5B 34 12; LD (BC),BC = ED 43 BC 00; LD BC,(HL) = Invalid hex value: HL;
    LD (HL),BC = Invalid hex value: HL; LD (C),A = 32 0C 00; LD A,(C) = 3A 0C 00;
    LD B,(1234) = Invalid hex value: (1234); LD HL,(HL) = Invalid hex value: HL;
    LD A,() = Missing numeric value; LD A,(12 = Invalid hex value: (12;
    LD (12)+(13),A = Invalid hex value: 12)+(13; LD (1234),B = LD syntax not supported yet;
    LD I,B = LD syntax not supported yet; LD (ZZ),A = Invalid hex value: ZZ;
    LD (10000),B = Hex value out of range: 10000; LD 1234,A = LD syntax not supported yet;
    LD IY,(1234) = FD 2A 34 12; LD IX,(BC) = DD 2A BC 00; LD IX,IY = Invalid hex value: IY;
    LD (HL),IY = Invalid hex value: HL; LD HL,IX = Invalid LD IX/IY syntax; LD IXH,IXL = DD 65;
    LD IXH,IYL = Invalid mixed IX/IY half registers; LD IYH,#300 = Decimal value out of range: #300;
    LD BC,IXL = Invalid LD IX/IY syntax; LD IXH,IX = Invalid hex value: IX;
    LD IXZ,A = Invalid LD IX/IY syntax; LD IXH,(IX+5) = Invalid hex value: (IX+5);
    LD (IX + 05),A = DD 77 05; LD (IY+7F),H = FD 74 7F; LD B,(IY+FF) = FD 46 FF;
    LD (IX+10),20 = DD 36 10 20; LD (IX+#5),&H6 = DD 36 05 06;
    LD (IX+5),(IX+6) = Invalid hex value: (IX+6); LD (IX+5),100 = Hex value out of range: 100;
    LD (IX+5),IXL = Invalid hex value: IXL; LD (IX+5),IY = Invalid hex value: IX+5;
    LD (IX+100),A = Hex value out of range: 100; LD (IX+),A = Missing numeric value;
    LD (IX),A = Invalid indexed operand: (IX); LD (IX-5),A = Invalid indexed operand: (IX-5);
    LD (IY - 3),A = Invalid indexed operand: (IY - 3);
    LD (I X-5),A = Invalid indexed operand: (I X-5); LD A,(I X+5) = DD 7E 05;
    LD A,(I X-5) = Invalid hex value: I X-5; LD A,(IX-5) = Invalid LD IX/IY syntax;
    LD A,(IX+100) = Invalid LD IX/IY syntax; LD HL,(IX+5) = Invalid LD indexed destination;
    LD (1234),(IX+5) = Invalid LD indexed destination; LD I,X = Invalid LD IX/IY syntax;
    LD A,(IXH) = Invalid LD IX/IY syntax; LD (HL),(IX + 34) = DD 76 34; LD (IX+34),(HL) = DD 76 34;
    LD IXH,H = DD 64; LD H,IXL = DD 65; LD IXH,(HL) = DD 66; LD (HL),IXH = DD 74;
    INC (IX) = Invalid INC/DEC IX/IY operand; DEC (IX+100) = Invalid INC/DEC IX/IY operand;
    INC I = Invalid INC/DEC operand; INC (I X-5) = Invalid INC/DEC operand;
    DEC = Invalid INC/DEC operand; DEC AF = Invalid INC/DEC operand; ADD IY,IY = FD 29;
    ADD IX,IY = Invalid ADD IX/IY operand; ADD IX,HL = Invalid ADD IX/IY operand;
    ADD HL,IX = Invalid ADD HL operand; ADD A,#10 = C6 0A; ADD B,C = Invalid ADD syntax;
    ADD B = Invalid ADD syntax; ADD = Invalid ADD syntax; ADD (IX+5),A = Invalid ADD syntax;
    ADD A,IX = Invalid ADD IX/IY operand; ADD A,B,C = Invalid ADD operand; ADC A,(IY+10) = FD 8E 10;
    ADC HL,IX = Invalid ADC HL operand; ADC IX,BC = Invalid ADC syntax; ADC = Invalid ADC syntax;
    ADC A,ZZ = Invalid ADC operand; SBC HL,AF = Invalid SBC HL operand;
    SBC B,1 = Invalid SBC syntax; SBC A,IY = Invalid SBC IX/IY operand; SUB B = 90;
    SUB (IX+05) = DD 96 05; SUB A,B = Invalid SUB operand; SUB = Invalid SUB operand;
    AND IX = Invalid AND IX/IY operand; XOR IYL,A = Invalid XOR IX/IY operand;
    OR (IX-1) = Invalid OR IX/IY operand; OR 100 = Invalid OR operand; CP 0 = FE 00;
    CP ZZ = Invalid CP operand;
    RL (IY+10),C = FD CB 10 11; RL C,(IY+10) = FD CB 10 11;
    RLC (IX+05),(HL) = Invalid RLC indexed destination;
    RLC (HL),(IX+5) = Invalid RLC indexed destination; RR ,(IX+5) = Wrong instruction: RR,(IX+5);
    RR (IX+5), = Invalid RR indexed destination; RR (IX+5),(IY+6) = Invalid RR indexed destination;
    RR B,(IX-6) = Invalid indexed operand: (IX-6); RR (IX+GG),B = Invalid hex value: GG;
    RR (IX+5),(IY-6) = Invalid indexed operand: (IY-6); RLC B,C = Invalid RLC syntax;
    RLC B,IX = Invalid RLC IX/IY operand; RLC ,B = Wrong instruction: RLC,B;
    RLC IX = Invalid RLC IX/IY operand; RLC (IX) = Invalid indexed operand: (IX);
    RLC (IX+100) = Hex value out of range: 100; RLC I = Invalid RLC operand;
    SRL = Invalid SRL operand; BIT 0,B,C = CB 40; RES #7,L = CB BD; SET 2,(IX+1),(HL) = DD CB 01 D6;
    SET 2,(IX+1),I = Invalid SET indexed destination;
    SET 2,(IX+1), = Invalid SET indexed destination; BIT 8,A = Hex value out of range: 8;
    BIT A,B = Hex value out of range: A; BIT 0 = Invalid BIT syntax; RES = Invalid RES syntax;
    BIT 0,I = Invalid BIT register; BIT 0,,B = Invalid BIT register;
    BIT 0,IX = Invalid BIT IX/IY operand; BIT 0,B,IX = CB 40;
    RES 0,(IX-1) = Invalid indexed operand: (IX-1); BIT X,(IX) = Invalid hex value: X;
    JP M,0 = FA 00 00; JP ( IX ) = DD E9; JP HL = Invalid hex value: HL; JP C = C3 0C 00;
    JP X,1234 = Invalid JP condition; JP Z, = Invalid hex value: Z,;
    JP (IX),5 = Invalid JP condition; JP = Missing numeric value;
    JP NZ,10000 = Hex value out of range: 10000; CALL 0 = CD 00 00; CALL = Missing numeric value;
    CALL Q,1 = Invalid CALL condition; CALL (HL) = Invalid hex value: (HL); JR 1000 = 18 FE;
    JR NZ,1010 = 20 0E; JR 0F82 = 18 80; JR 1081 = 18 7F; JR 1082 = Relative jump out of range;
    JR 0F81 = Relative jump out of range; JR 1100 = Relative jump out of range;
    JR PO,1000 = Invalid JR condition; JR M,1000 = Invalid JR condition; JR = Missing numeric value;
    JR Z,Q = Invalid hex value: Q; DJNZ 1000 = 10 FE; DJNZ = Missing numeric value;
    DJNZ NZ,1234 = Invalid hex value: NZ,1234; RET X = Invalid RET condition; RST 38 = FF;
    RST 08H = CF; RST #56 = FF; RST 56 = Invalid RST vector; RST 1 = Invalid RST vector;
    RST 40 = Invalid RST vector; RST 100 = Hex value out of range: 100; RST = Missing numeric value;
    PUSH SP = Invalid PUSH/POP operand; PUSH = Invalid PUSH/POP operand;
    PUSH IXH = Invalid PUSH/POP IX/IY operand; POP (IY+5) = Invalid PUSH/POP IX/IY operand;
    EX ( SP ) , HL = E3; EX HL,DE = Invalid EX syntax; EX AF,AF = Invalid EX syntax;
    EX = Invalid EX syntax; IN F,(C) = Invalid IN register; IN (HL),(C) = Invalid IN register;
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
  const std::string sLetters = fnMany('A');
  EXPECT_EQ(Outcome(fnMany(' ')), "Empty instruction");
  EXPECT_EQ(Outcome(fnMany('\t') + "NOP" + fnMany(' ')), "00");
  EXPECT_EQ(Outcome(fnMany('*')), "Wrong instruction: " + std::string(lMany - 1, '*'));
  EXPECT_EQ(Outcome(sLetters), "Wrong instruction: " + sLetters);
  EXPECT_EQ(Outcome("LD" + fnMany(' ') + "A" + fnMany('\t') + "," + fnMany('0') + "7"), "3E 07");
  EXPECT_EQ(Outcome("LD (IX" + fnMany(' ') + "+" + fnMany('0') + "5),#" + fnMany('0')),
            "DD 36 05 00");
  EXPECT_EQ(Outcome("SUB " + fnMany('9')), "Invalid SUB operand");
  EXPECT_EQ(Outcome("LD HL,#" + fnMany('9')), "Decimal value out of range: #" + fnMany('9'));
  EXPECT_EQ(Outcome("LD A," + fnMany('(')), "Invalid hex value: " + fnMany('('));
  EXPECT_EQ(Outcome("LD " + fnMany('(') + "5" + fnMany(')') + ",A"),
            "Invalid hex value: " + fnMany('(').substr(1) + "5" + fnMany(')').substr(1));
  EXPECT_EQ(Outcome("BIT 0" + fnMany(',')), "Invalid BIT register");
  EXPECT_EQ(Outcome("INC " + fnMany('I') + "X"), "Invalid INC/DEC IX/IY operand");
  std::string sPairs;
  for (std::size_t lPair = 0; lPair < lMany; ++lPair) sPairs += " ,";
  EXPECT_EQ(Outcome("JP Z" + sPairs), "Invalid hex value: " + std::string(lMany - 1, ','));
}

}  // namespace
