#include "z80/modDISAsm.h"

#include <algorithm>

#include "z80/modDISAsmEncoders.h"
#include "z80/modDISAsmOperands.h"

namespace modDISAsm {

namespace {

enum class Encoder {
  OneByte,
  ExtendedByte,
  Ld,
  IncDec,
  Add,
  Adc,
  Sbc,
  Alu,
  ShiftRotate,
  BitOp,
  Jp,
  Jr,
  Djnz,
  Call,
  Ret,
  PushPop,
  Ex,
  Rst,
  In,
  Out,
  Im,
};

/// What a mnemonic leads to: an encoder and the arguments that the mnemonic fixes.
struct Dispatch {
  std::string_view sMnemonic;
  Encoder eEncoder;
  std::int32_t lFirst = 0;
  std::int32_t lSecond = 0;

  [[nodiscard]] constexpr std::uint64_t Key() const { return AsmTextKey(sMnemonic); }
};

constexpr auto DISPATCH_TABLE = [] {
  using enum Encoder;
  auto atRow = std::to_array<Dispatch>({
      // Without operands.
      {"NOP", OneByte, 0x00},
      {"RLCA", OneByte, 0x07},
      {"RRCA", OneByte, 0x0F},
      {"RLA", OneByte, 0x17},
      {"RRA", OneByte, 0x1F},
      {"DAA", OneByte, 0x27},
      {"CPL", OneByte, 0x2F},
      {"SCF", OneByte, 0x37},
      {"CCF", OneByte, 0x3F},
      {"HALT", OneByte, 0x76},
      {"EXX", OneByte, 0xD9},
      {"DI", OneByte, 0xF3},
      {"EI", OneByte, 0xFB},
      // Without operands, behind EDH.
      {"NEG", ExtendedByte, 0x44},
      {"RETN", ExtendedByte, 0x45},
      {"RETI", ExtendedByte, 0x4D},
      {"RRD", ExtendedByte, 0x67},
      {"RLD", ExtendedByte, 0x6F},
      {"LDI", ExtendedByte, 0xA0},
      {"CPI", ExtendedByte, 0xA1},
      {"INI", ExtendedByte, 0xA2},
      {"OUTI", ExtendedByte, 0xA3},
      {"LDD", ExtendedByte, 0xA8},
      {"CPD", ExtendedByte, 0xA9},
      {"IND", ExtendedByte, 0xAA},
      {"OUTD", ExtendedByte, 0xAB},
      {"LDIR", ExtendedByte, 0xB0},
      {"CPIR", ExtendedByte, 0xB1},
      {"INIR", ExtendedByte, 0xB2},
      {"OTIR", ExtendedByte, 0xB3},
      {"LDDR", ExtendedByte, 0xB8},
      {"CPDR", ExtendedByte, 0xB9},
      {"INDR", ExtendedByte, 0xBA},
      {"OTDR", ExtendedByte, 0xBB},
      // With operands.
      {"LD", Ld},
      {"INC", IncDec, true},
      {"DEC", IncDec, false},
      {"ADD", Add},
      {"ADC", Adc},
      {"SBC", Sbc},
      {"SUB", Alu, 0x90, 0xD6},
      {"AND", Alu, 0xA0, 0xE6},
      {"XOR", Alu, 0xA8, 0xEE},
      {"OR", Alu, 0xB0, 0xF6},
      {"CP", Alu, 0xB8, 0xFE},
      {"RLC", ShiftRotate, 0x00},
      {"RRC", ShiftRotate, 0x08},
      {"RL", ShiftRotate, 0x10},
      {"RR", ShiftRotate, 0x18},
      {"SLA", ShiftRotate, 0x20},
      {"SRA", ShiftRotate, 0x28},
      {"SLL", ShiftRotate, 0x30},
      {"SRL", ShiftRotate, 0x38},
      {"BIT", BitOp, 0x40},
      {"RES", BitOp, 0x80},
      {"SET", BitOp, 0xC0},
      {"JP", Jp},
      {"JR", Jr},
      {"DJNZ", Djnz},
      {"CALL", Call},
      {"RET", Ret},
      {"PUSH", PushPop, true},
      {"POP", PushPop, false},
      {"EX", Ex},
      {"RST", Rst},
      {"IN", In},
      {"OUT", Out},
      {"IM", Im},
  });
  std::ranges::sort(atRow, {}, &Dispatch::Key);
  return atRow;
}();

/// The sort keys by themselves, which the search runs over.
constexpr auto DISPATCH_KEYS = [] {
  std::array<std::uint64_t, DISPATCH_TABLE.size()> alKey{};
  std::ranges::transform(DISPATCH_TABLE, alKey.begin(), &Dispatch::Key);
  return alKey;
}();

constexpr bool IsBlankOrTab(char bChar) { return bChar == ' ' || bChar == '\t'; }

bool Encode(const Dispatch& tDispatch, std::string_view sOperands, std::int32_t lAddress,
            const AsmOutput& tOutput) {
  switch (tDispatch.eEncoder) {
    case Encoder::OneByte:
      return AsmEmit1(tOutput, tDispatch.lFirst);
    case Encoder::ExtendedByte:
      return AsmEmit2(tOutput, 0xED, tDispatch.lFirst);
    case Encoder::Ld:
      return AsmEncodeLD(sOperands, tOutput);
    case Encoder::IncDec:
      return AsmEncodeIncDec(sOperands, tDispatch.lFirst != 0, tOutput);
    case Encoder::Add:
      return AsmEncodeADD(sOperands, tOutput);
    case Encoder::Adc:
      return AsmEncodeADC(sOperands, tOutput);
    case Encoder::Sbc:
      return AsmEncodeSBC(sOperands, tOutput);
    case Encoder::Alu:
      return AsmEncodeALU(tDispatch.sMnemonic, sOperands, tDispatch.lFirst, tDispatch.lSecond,
                          tOutput);
    case Encoder::ShiftRotate:
      return AsmEncodeShiftRotate(tDispatch.sMnemonic, sOperands, tDispatch.lFirst, tOutput);
    case Encoder::BitOp:
      return AsmEncodeBitOp(tDispatch.sMnemonic, sOperands, tDispatch.lFirst, tOutput);
    case Encoder::Jp:
      return AsmEncodeJP(sOperands, tOutput);
    case Encoder::Jr:
      return AsmEncodeJR(sOperands, lAddress, tOutput);
    case Encoder::Djnz:
      return AsmEncodeDJNZ(sOperands, lAddress, tOutput);
    case Encoder::Call:
      return AsmEncodeCALL(sOperands, tOutput);
    case Encoder::Ret:
      return AsmEncodeRET(sOperands, tOutput);
    case Encoder::PushPop:
      return AsmEncodePushPop(sOperands, tDispatch.lFirst != 0, tOutput);
    case Encoder::Ex:
      return AsmEncodeEX(sOperands, tOutput);
    case Encoder::Rst:
      return AsmEncodeRST(sOperands, tOutput);
    case Encoder::In:
      return AsmEncodeIN(sOperands, tOutput);
    case Encoder::Out:
      return AsmEncodeOUT(sOperands, tOutput);
    case Encoder::Im:
      return AsmEncodeIM(sOperands, tOutput);
  }
  return false;
}

bool Emit(AsmBytes& tBytes, std::int16_t iLength, const std::array<std::int32_t, 4>& alByte) {
  tBytes.iLength = iLength;
  std::ranges::transform(alByte, tBytes.abByte.begin(),
                         [](std::int32_t lByte) { return static_cast<std::uint8_t>(lByte); });
  return true;
}

}  // namespace

std::string_view AsmNormalizeText(std::string_view sText, std::span<char> abRoom) {
  const auto fnTrim = [&sText] {
    while (!sText.empty() && IsBlankOrTab(sText.front())) sText.remove_prefix(1);
    while (!sText.empty() && IsBlankOrTab(sText.back())) sText.remove_suffix(1);
  };
  fnTrim();
  if (sText.starts_with('*')) {
    sText.remove_prefix(1);
    fnTrim();
  }
  std::size_t lLength = 0;
  bool bBlank = false;
  const auto fnPutBlank = [&](char bNext) {
    const char bLast = abRoom[lLength - 1];
    if (bLast != ',' && bLast != '(' && bNext != ',' && bNext != ')') abRoom[lLength++] = ' ';
  };
  for (const char bChar : sText) {
    if (IsBlankOrTab(bChar)) {
      bBlank = true;
      continue;
    }
    if (bBlank) fnPutBlank(bChar);
    bBlank = false;
    abRoom[lLength++] = AsmUpperCase(bChar);
  }
  return {abRoom.data(), lLength};
}

bool AsmAssemble(std::string_view sText, std::int32_t lAddress, AsmBytes& tBytes,
                 std::string& sError) {
  tBytes = {};
  sError.clear();
  TextRoom tRoom(sText.size());
  const std::string_view sNormal = AsmNormalizeText(sText, tRoom.Room());
  if (sNormal.empty()) return AsmFail(sError, {"Empty instruction"});

  const std::size_t lBlank = sNormal.find(' ');
  const std::string_view sMnemonic = sNormal.substr(0, lBlank);
  const std::string_view sOperands =
      lBlank == std::string_view::npos ? std::string_view() : sNormal.substr(lBlank + 1);

  const std::uint64_t lKey = AsmTextKey(sMnemonic);
  const auto itKey = std::ranges::lower_bound(DISPATCH_KEYS, lKey);
  if (itKey == DISPATCH_KEYS.end() || *itKey != lKey) {
    return AsmFail(sError, {"Wrong instruction: ", sMnemonic});
  }
  const auto lRow = static_cast<std::size_t>(itKey - DISPATCH_KEYS.begin());
  return Encode(DISPATCH_TABLE[lRow], sOperands, lAddress, {tBytes, sError});
}

bool AsmEmit1(const AsmOutput& tOutput, std::int32_t lByte0) {
  return Emit(tOutput.tBytes, 1, {lByte0});
}

bool AsmEmit2(const AsmOutput& tOutput, std::int32_t lByte0, std::int32_t lByte1) {
  return Emit(tOutput.tBytes, 2, {lByte0, lByte1});
}

bool AsmEmit3(const AsmOutput& tOutput, std::int32_t lByte0, std::int32_t lByte1,
              std::int32_t lByte2) {
  return Emit(tOutput.tBytes, 3, {lByte0, lByte1, lByte2});
}

bool AsmEmit4(const AsmOutput& tOutput, std::int32_t lByte0, std::int32_t lByte1,
              std::int32_t lByte2, std::int32_t lByte3) {
  return Emit(tOutput.tBytes, 4, {lByte0, lByte1, lByte2, lByte3});
}

bool AsmEmitWithByte(const AsmOutput& tOutput, std::int32_t lOpcode, std::string_view sNumber) {
  std::int32_t lValue = 0;
  return AsmParseNumber(sNumber, lValue, MAX_BYTE, tOutput.sError) &&
         AsmEmit2(tOutput, lOpcode, lValue);
}

bool AsmEmitWithByte(const AsmOutput& tOutput, std::int32_t lPrefix, std::int32_t lOpcode,
                     std::string_view sNumber) {
  std::int32_t lValue = 0;
  return AsmParseNumber(sNumber, lValue, MAX_BYTE, tOutput.sError) &&
         AsmEmit3(tOutput, lPrefix, lOpcode, lValue);
}

bool AsmEmitWithWord(const AsmOutput& tOutput, std::int32_t lOpcode, std::string_view sNumber) {
  std::int32_t lValue = 0;
  return AsmParseNumber(sNumber, lValue, MAX_WORD, tOutput.sError) &&
         AsmEmit3(tOutput, lOpcode, lValue % 256, lValue / 256);
}

bool AsmEmitWithWord(const AsmOutput& tOutput, std::int32_t lPrefix, std::int32_t lOpcode,
                     std::string_view sNumber) {
  std::int32_t lValue = 0;
  return AsmParseNumber(sNumber, lValue, MAX_WORD, tOutput.sError) &&
         AsmEmit4(tOutput, lPrefix, lOpcode, lValue % 256, lValue / 256);
}

}  // namespace modDISAsm
