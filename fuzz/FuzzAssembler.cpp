#include <algorithm>
#include <array>
#include <cctype>
#include <utility>
#include <vector>

#include "../tests/z80/RoundTrip.h"
#include "FuzzInput.h"
#include "z80/modDISAsmEncoders.h"
#include "z80/modDISAsmOperands.h"

namespace {

/// The operand with its numbers, and names that could be numbers, as values: "(IX + 0A)" and
/// "(IX+# 10)" become "(IX+10)".
std::string Spelled(std::string_view sOperand) {
  std::string sResult;
  std::string sWord;
  for (const char bChar : std::string(sOperand) + '\n') {
    if (bChar == ' ') continue;
    if (std::isalnum(static_cast<unsigned char>(bChar)) != 0 || bChar == '#' || bChar == '&') {
      sWord += bChar;
      continue;
    }
    std::int32_t lValue = 0;
    std::string sIgnored;
    const bool bNumber = modDISAsm::AsmParseNumber(sWord, lValue, modDISAsm::MAX_WORD, sIgnored);
    sResult += bNumber ? std::to_string(lValue) : sWord;
    sWord.clear();
    if (bChar != '\n') sResult += bChar;
  }
  return sResult;
}

/// The mnemonic and the operands as the processor would tell them apart.
std::vector<std::string> Meaning(std::string_view sText) {
  std::string sRoom(sText);
  std::string_view sRest = modDISAsm::AsmNormalizeText(sText, sRoom);
  const std::size_t lBlank = std::min(sRest.find(' '), sRest.size());
  std::vector<std::string> asWord{std::string(sRest.substr(0, lBlank))};
  for (sRest.remove_prefix(lBlank); !sRest.empty();) {
    const std::size_t lComma = std::min(sRest.find(',', 1), sRest.size());
    asWord.push_back(Spelled(sRest.substr(1, lComma - 1)));
    sRest.remove_prefix(lComma);
  }
  const std::string& sMnemonic = asWord[0];
  const bool bBit = sMnemonic == "BIT" || sMnemonic == "RES" || sMnemonic == "SET";
  // A register behind a bit's plain target is not looked at, and (HL) behind an indexed one says
  // what is so without it.
  if (bBit && asWord.size() > 3 && (asWord[3] == "(HL)" || asWord[2].find('+') == asWord[2].npos))
    asWord.resize(3);
  if (bBit || asWord.size() != 3) return asWord;
  // A rotated byte and its copy are written in either order.
  if (sMnemonic[0] == 'R' || sMnemonic[0] == 'S') std::sort(asWord.begin() + 1, asWord.end());
  // Beside half an index register H and L are read as halves, too.
  for (const auto& [lHalf, lOther] : {std::pair(1, 2), std::pair(2, 1)}) {
    const std::string& sHalf = asWord[static_cast<std::size_t>(lHalf)];
    std::string& sOther = asWord[static_cast<std::size_t>(lOther)];
    if (sHalf.size() == 3 && sHalf[0] == 'I' && (sOther == "H" || sOther == "L"))
      sOther.insert(0, sHalf, 0, 2);
  }
  return asWord;
}

/// Two memory operands, or (HL) beside half an index register: accepted, but another instruction.
bool IsOpenPair(std::span<const std::uint8_t> abByte) {
  if (abByte[0] != 0xDD && abByte[0] != 0xFD) return false;
  const std::array<std::uint8_t, 4> abHalf{0x66, 0x6E, 0x74, 0x75};
  return abByte.size() == 3 ? abByte[1] == 0x76
                            : abByte.size() == 2 && std::ranges::count(abHalf, abByte[1]) != 0;
}

}  // namespace

// An address and a text. A rejected text leaves a message and no bytes; an accepted one leaves
// bytes that decode to the same instruction, whose text gives the same bytes once more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  static modALLDisass::MemoryImage abImage;
  std::span<const std::uint8_t> abInput(pData, lSize);
  const std::int32_t lAddress = TakeAddress(abInput);
  const std::string sText(abInput.begin(), abInput.end());
  modDISAsm::AsmBytes tBytes;
  std::string sError;
  if (!modDISAsm::AsmAssemble(sText, lAddress, tBytes, sError)) {
    Require(tBytes.iLength == 0 && !sError.empty(), "rejected with bytes or without a message");
    return 0;
  }
  Require(tBytes.iLength >= 1 && tBytes.iLength <= 4 && sError.empty(), "accepted with a message");
  if (IsOpenPair(tBytes.View())) return 0;

  PutBytes(abImage, lAddress, tBytes.abByte);
  const auto tDecoded = modALLDisass::DisassembleInstruction(abImage, lAddress);
  const std::string sBack(tDecoded.tText.View());
  Require(tDecoded.lLength == tBytes.iLength, "another length comes back: " + sBack);
  const auto asMeant = Meaning(sText);
  const auto asBack = Meaning(sBack);
  // Instructions without operands ignore what stands behind them.
  Require(asMeant == asBack || (asBack.size() == 1 && asMeant[0] == asBack[0]),
          sText + " came back as " + sBack);
  const std::string sFault = RoundTripFault(abImage, lAddress);
  Require(sFault.empty(), sFault);
  return 0;
}
