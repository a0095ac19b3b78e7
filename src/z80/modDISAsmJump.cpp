#include <array>
#include <span>

#include "util/modALLUtilityAddress.h"
#include "z80/modDISAsmEncoders.h"
#include "z80/modDISAsmOperands.h"

namespace modDISAsm {

namespace {

/// NZ, Z, NC and C, the conditions that JR has as well.
constexpr std::int16_t RELATIVE_CONDITIONS = 4;

/// A form whose whole operand text is fixed; without prefix where that is 0.
struct FixedForm {
  std::string_view sOperands;
  std::int32_t lPrefix, lOpcode;
};

constexpr std::array<FixedForm, 3> JP_FORMS{
    {{"(IX)", 0xDD, 0xE9}, {"(IY)", 0xFD, 0xE9}, {"(HL)", 0, 0xE9}}};

constexpr std::array<FixedForm, 5> EX_FORMS{{{"AF,AF'", 0, 0x08},
                                             {"DE,HL", 0, 0xEB},
                                             {"(SP),HL", 0, 0xE3},
                                             {"(SP),IX", 0xDD, 0xE3},
                                             {"(SP),IY", 0xFD, 0xE3}}};

/// Emits the form that the operand text is, if it is one; leaves no message.
bool EncodeFixedForm(std::span<const FixedForm> atForm, std::string_view sOperands,
                     const AsmOutput& tOutput) {
  for (const FixedForm& tForm : atForm) {
    if (sOperands != tForm.sOperands) continue;
    return tForm.lPrefix == 0 ? AsmEmit1(tOutput, tForm.lOpcode)
                              : AsmEmit2(tOutput, tForm.lPrefix, tForm.lOpcode);
  }
  return false;
}

/// A jump or call to an absolute address.
/// @param lAlways       opcode of the form without a condition
/// @param lConditional  opcode of the form with condition NZ
bool EncodeAbsolute(std::string_view sName, std::string_view sOperands, std::int32_t lAlways,
                    std::int32_t lConditional, const AsmOutput& tOutput) {
  std::string_view sCondition;
  std::string_view sTarget;
  if (!AsmSplitOperands(sOperands, sCondition, sTarget)) {
    return AsmEmitWithWord(tOutput, lAlways, sOperands);
  }
  const std::int16_t iCondition = AsmConditionIndex(sCondition);
  if (iCondition < 0) return AsmFail(tOutput.sError, {"Invalid ", sName, " condition"});
  return AsmEmitWithWord(tOutput, lConditional + 8 * iCondition, sTarget);
}

bool AsmEncodePushPopIndex(std::string_view sOperand, bool bPush, const AsmOutput& tOutput) {
  std::uint8_t bPrefix = 0;
  if (AsmIsIndexRegister(sOperand, bPrefix)) {
    return AsmEmit2(tOutput, bPrefix, bPush ? 0xE5 : 0xE1);
  }
  if (AsmMentionsIndex(sOperand)) {
    return AsmFail(tOutput.sError, {"Invalid PUSH/POP IX/IY operand"});
  }
  return false;
}

}  // namespace

bool AsmRelativeJump(std::string_view sTarget, std::int32_t lAddress, std::int32_t lOpcode,
                     const AsmOutput& tOutput) {
  std::int32_t lTarget = 0;
  if (!AsmParseNumber(sTarget, lTarget, MAX_WORD, tOutput.sError)) return false;
  const std::int32_t lBase = modALLUtility::AddrAdd(lAddress, 2);
  const auto iDisplacement = static_cast<std::int16_t>(modALLUtility::AddrAdd(lTarget, -lBase));
  if (iDisplacement < -128 || iDisplacement > 127) {
    return AsmFail(tOutput.sError, {"Relative jump out of range"});
  }
  return AsmEmit2(tOutput, lOpcode, iDisplacement & 0xFF);
}

bool AsmEncodeJP(std::string_view sOperands, const AsmOutput& tOutput) {
  return EncodeFixedForm(JP_FORMS, sOperands, tOutput) ||
         EncodeAbsolute("JP", sOperands, 0xC3, 0xC2, tOutput);
}

bool AsmEncodeJR(std::string_view sOperands, std::int32_t lAddress, const AsmOutput& tOutput) {
  std::string_view sCondition;
  std::string_view sTarget;
  if (!AsmSplitOperands(sOperands, sCondition, sTarget)) {
    return AsmRelativeJump(sOperands, lAddress, 0x18, tOutput);
  }
  const std::int16_t iCondition = AsmConditionIndex(sCondition);
  if (iCondition < 0 || iCondition >= RELATIVE_CONDITIONS) {
    return AsmFail(tOutput.sError, {"Invalid JR condition"});
  }
  return AsmRelativeJump(sTarget, lAddress, 0x20 + 8 * iCondition, tOutput);
}

bool AsmEncodeDJNZ(std::string_view sOperand, std::int32_t lAddress, const AsmOutput& tOutput) {
  return AsmRelativeJump(sOperand, lAddress, 0x10, tOutput);
}

bool AsmEncodeCALL(std::string_view sOperands, const AsmOutput& tOutput) {
  return EncodeAbsolute("CALL", sOperands, 0xCD, 0xC4, tOutput);
}

bool AsmEncodeRET(std::string_view sOperand, const AsmOutput& tOutput) {
  if (sOperand.empty()) return AsmEmit1(tOutput, 0xC9);
  const std::int16_t iCondition = AsmConditionIndex(sOperand);
  if (iCondition < 0) return AsmFail(tOutput.sError, {"Invalid RET condition"});
  return AsmEmit1(tOutput, 0xC0 + 8 * iCondition);
}

bool AsmEncodeRST(std::string_view sOperand, const AsmOutput& tOutput) {
  std::int32_t lVector = 0;
  if (!AsmParseNumber(sOperand, lVector, MAX_BYTE, tOutput.sError)) return false;
  if (lVector % 8 != 0 || lVector > 0x38) return AsmFail(tOutput.sError, {"Invalid RST vector"});
  return AsmEmit1(tOutput, 0xC7 + lVector);
}

bool AsmEncodePushPop(std::string_view sOperand, bool bPush, const AsmOutput& tOutput) {
  if (AsmEncodePushPopIndex(sOperand, bPush, tOutput)) return true;
  if (!tOutput.sError.empty()) return false;
  const std::int16_t iPair = AsmStackPairIndex(sOperand);
  if (iPair < 0) return AsmFail(tOutput.sError, {"Invalid PUSH/POP operand"});
  return AsmEmit1(tOutput, 16 * iPair + (bPush ? 0xC5 : 0xC1));
}

bool AsmEncodeEX(std::string_view sOperands, const AsmOutput& tOutput) {
  return EncodeFixedForm(EX_FORMS, sOperands, tOutput) ||
         AsmFail(tOutput.sError, {"Invalid EX syntax"});
}

bool AsmEncodeIN(std::string_view sOperands, const AsmOutput& tOutput) {
  if (sOperands == "(C)") return AsmEmit2(tOutput, 0xED, 0x70);
  std::string_view sFirst;
  std::string_view sSecond;
  if (!AsmSplitOperands(sOperands, sFirst, sSecond)) {
    return AsmFail(tOutput.sError, {"Invalid IN syntax"});
  }
  if (sSecond == "(C)") {
    const std::int16_t iRegister = AsmRegIndex(sFirst);
    if (iRegister < 0 || iRegister == MEMORY_HL) {
      return AsmFail(tOutput.sError, {"Invalid IN register"});
    }
    return AsmEmit2(tOutput, 0xED, 0x40 + 8 * iRegister);
  }
  if (sFirst != "A") {
    return AsmFail(tOutput.sError, {"Only IN A,(nn) or IN r,(C) are supported"});
  }
  if (!AsmIsBracketed(sSecond)) return AsmFail(tOutput.sError, {"Invalid IN port"});
  return AsmEmitWithByte(tOutput, 0xDB, AsmInnerText(sSecond));
}

bool AsmEncodeOUT(std::string_view sOperands, const AsmOutput& tOutput) {
  std::string_view sFirst;
  std::string_view sSecond;
  if (!AsmSplitOperands(sOperands, sFirst, sSecond)) {
    return AsmFail(tOutput.sError, {"Invalid OUT syntax"});
  }
  if (sFirst == "(C)") {
    if (sSecond == "0") return AsmEmit2(tOutput, 0xED, 0x71);
    const std::int16_t iRegister = AsmRegIndex(sSecond);
    if (iRegister < 0 || iRegister == MEMORY_HL) {
      return AsmFail(tOutput.sError, {"Invalid OUT register"});
    }
    return AsmEmit2(tOutput, 0xED, 0x41 + 8 * iRegister);
  }
  if (sSecond != "A") {
    return AsmFail(tOutput.sError, {"Only OUT (nn),A or OUT (C),r are supported"});
  }
  if (!AsmIsBracketed(sFirst)) return AsmFail(tOutput.sError, {"Invalid OUT port"});
  return AsmEmitWithByte(tOutput, 0xD3, AsmInnerText(sFirst));
}

bool AsmEncodeIM(std::string_view sOperand, const AsmOutput& tOutput) {
  std::int32_t lMode = 0;
  if (!AsmParseNumber(sOperand, lMode, 2, tOutput.sError)) return false;
  constexpr std::array<std::int32_t, 3> alMode{0x46, 0x56, 0x5E};
  return AsmEmit2(tOutput, 0xED, alMode[static_cast<std::size_t>(lMode)]);
}

}  // namespace modDISAsm
