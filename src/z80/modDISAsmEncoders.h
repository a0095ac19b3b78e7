#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "z80/modDISAsm.h"

/// The encoders behind `AsmAssemble` and what they emit with. An encoder takes the operand text as
/// `AsmNormalizeText` leaves it and returns true after emitting, or false with a message; it emits
/// as its last step, so that rejected operands leave no bytes. The routines for IX and IY return
/// false with an empty message where no index register is involved.
namespace modDISAsm {

/// Where an encoder leaves what it found: an instruction or a message, both empty when it starts.
struct AsmOutput {
  AsmBytes& tBytes;
  std::string& sError;
};

/// Brings a typed text into the form that the encoders read: upper case (ASCII letters only), TABs
/// as blanks, a leading "*" dropped, no blank at either end, no two in a row and none that only
/// sets off a "," or a bracket.
/// @param abRoom  where the text is put; at least as long as sText
/// @return the part of abRoom that holds the text
std::string_view AsmNormalizeText(std::string_view sText, std::span<char> abRoom);

/// Make an instruction of the given byte values, each 0 to 255. Always true.
bool AsmEmit1(const AsmOutput& tOutput, std::int32_t lByte0);
bool AsmEmit2(const AsmOutput& tOutput, std::int32_t lByte0, std::int32_t lByte1);
bool AsmEmit3(const AsmOutput& tOutput, std::int32_t lByte0, std::int32_t lByte1,
              std::int32_t lByte2);
bool AsmEmit4(const AsmOutput& tOutput, std::int32_t lByte0, std::int32_t lByte1,
              std::int32_t lByte2, std::int32_t lByte3);

/// Emit an opcode, with or without a prefix, and the 8-bit number that sNumber spells; or fail with
/// the number's message.
bool AsmEmitWithByte(const AsmOutput& tOutput, std::int32_t lOpcode, std::string_view sNumber);
bool AsmEmitWithByte(const AsmOutput& tOutput, std::int32_t lPrefix, std::int32_t lOpcode,
                     std::string_view sNumber);

/// Emit an opcode, with or without a prefix, and the 16-bit number that sNumber spells, low byte
/// first; or fail with the number's message.
bool AsmEmitWithWord(const AsmOutput& tOutput, std::int32_t lOpcode, std::string_view sNumber);
bool AsmEmitWithWord(const AsmOutput& tOutput, std::int32_t lPrefix, std::int32_t lOpcode,
                     std::string_view sNumber);

/// Emits a relative jump to an absolute target, or fails with the number's message or
/// "Relative jump out of range".
/// @param lAddress  where the two-byte instruction will stand; the way wraps around at FFFFH
bool AsmRelativeJump(std::string_view sTarget, std::int32_t lAddress, std::int32_t lOpcode,
                     const AsmOutput& tOutput);

bool AsmEncodeLD(std::string_view sOperands, const AsmOutput& tOutput);

/// @param bIncrement  true for INC, false for DEC
bool AsmEncodeIncDec(std::string_view sOperand, bool bIncrement, const AsmOutput& tOutput);
bool AsmEncodeADD(std::string_view sOperands, const AsmOutput& tOutput);
bool AsmEncodeADC(std::string_view sOperands, const AsmOutput& tOutput);
bool AsmEncodeSBC(std::string_view sOperands, const AsmOutput& tOutput);

/// The 8-bit operand that the accumulator is combined with.
/// @param sName       the mnemonic for the messages
/// @param lBase       opcode of the form with register B
/// @param lImmediate  opcode of the form with a number
bool AsmEncodeALU(std::string_view sName, std::string_view sOperand, std::int32_t lBase,
                  std::int32_t lImmediate, const AsmOutput& tOutput);

/// @param lBase  opcode behind CBH of the form with register B
bool AsmEncodeShiftRotate(std::string_view sMnemonic, std::string_view sOperands,
                          std::int32_t lBase, const AsmOutput& tOutput);

/// @param lBase  opcode behind CBH of the form with bit 0 and register B
bool AsmEncodeBitOp(std::string_view sMnemonic, std::string_view sOperands, std::int32_t lBase,
                    const AsmOutput& tOutput);

bool AsmEncodeJP(std::string_view sOperands, const AsmOutput& tOutput);
bool AsmEncodeJR(std::string_view sOperands, std::int32_t lAddress, const AsmOutput& tOutput);
bool AsmEncodeDJNZ(std::string_view sOperand, std::int32_t lAddress, const AsmOutput& tOutput);
bool AsmEncodeCALL(std::string_view sOperands, const AsmOutput& tOutput);
bool AsmEncodeRET(std::string_view sOperand, const AsmOutput& tOutput);

/// @param bPush  true for PUSH, false for POP
bool AsmEncodePushPop(std::string_view sOperand, bool bPush, const AsmOutput& tOutput);
bool AsmEncodeEX(std::string_view sOperands, const AsmOutput& tOutput);
bool AsmEncodeRST(std::string_view sOperand, const AsmOutput& tOutput);
bool AsmEncodeIN(std::string_view sOperands, const AsmOutput& tOutput);
bool AsmEncodeOUT(std::string_view sOperands, const AsmOutput& tOutput);
bool AsmEncodeIM(std::string_view sOperand, const AsmOutput& tOutput);

}  // namespace modDISAsm
