#include "tools/SampleProgram.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <vector>

#include "util/modALLUtilityAddress.h"
#include "z80/modDISAsm.h"

namespace SampleProgram {

namespace {

/// A line of the program: an instruction, "<label>" standing for the label's address, or bytes.
struct SourceLine {
  std::string_view sLabel;
  std::string_view sText;
  std::string_view sBytes = {};  ///< where there is no text
};

using namespace std::string_view_literals;

constexpr SourceLine PROGRAM[] = {
    // Fills a buffer, adds it up, and goes on to whatever else the processor can do.
    {"start", "DI"},
    {"", "IM 1"},
    {"", "LD SP,0000"},
    {"", "CALL <fill>"},
    {"", "CALL <sum>"},
    {"", "LD (<total>),HL"},
    {"", "CALL <decide>"},
    {"", "CALL <rotate>"},
    {"", "CALL <index>"},
    {"", "CALL <swap>"},
    {"", "CALL <words>"},
    {"", "CALL <ports>"},
    {"", "CALL <search>"},
    {"", "CALL <undocumented>"},
    {"idle", "EI"},
    {"", "HALT"},
    {"", "JR <idle>"},
    // Loads and block moves.
    {"fill", "LD HL,<buffer>"},
    {"", "LD D,H"},
    {"", "LD E,L"},
    {"", "INC DE"},
    {"", "LD BC,000F"},
    {"", "LD (HL),2A"},
    {"", "LDIR"},
    {"", "LD A,(DE)"},
    {"", "LD (<total>),A"},
    {"", "LDDR"},
    {"", "RET"},
    // A loop, and 8-bit sums.
    {"sum", "LD B,10"},
    {"", "LD DE,<buffer>"},
    {"", "LD HL,0000"},
    {"sum1", "LD A,(DE)"},
    {"", "ADD A,L"},
    {"", "LD L,A"},
    {"", "ADC A,H"},
    {"", "SUB L"},
    {"", "LD H,A"},
    {"", "INC DE"},
    {"", "DJNZ <sum1>"},
    {"", "RET"},
    // Logic, flags and every kind of condition.
    {"decide", "LD A,(<total>)"},
    {"", "AND 0F"},
    {"", "OR B"},
    {"", "XOR (HL)"},
    {"", "CP 2A"},
    {"", "JP Z,<adjust>"},
    {"", "JR NC,<adjust>"},
    {"", "CALL PO,<complement>"},
    {"", "RET M"},
    {"adjust", "DAA"},
    {"", "NEG"},
    {"", "SBC A,01"},
    {"complement", "CPL"},
    {"", "SCF"},
    {"", "CCF"},
    {"", "RET"},
    // Rotates, shifts and single bits.
    {"rotate", "RLCA"},
    {"", "RRA"},
    {"", "RLC B"},
    {"", "RR (HL)"},
    {"", "SLA C"},
    {"", "SRA D"},
    {"", "SRL E"},
    {"", "RLD"},
    {"", "RRD"},
    {"", "BIT 7,A"},
    {"", "SET 0,(HL)"},
    {"", "RES 6,B"},
    {"", "RET"},
    // The index registers.
    {"index", "LD IX,<buffer>"},
    {"", "LD IY,(<total>)"},
    {"", "LD (IX + 05),3C"},
    {"", "LD A,(IX + 05)"},
    {"", "ADD A,(IY + FE)"},
    {"", "DEC (IX + 00)"},
    {"", "SET 3,(IX + 01)"},
    {"", "RL (IY + 02)"},
    {"", "ADD IX,DE"},
    {"", "PUSH IY"},
    {"", "POP IX"},
    {"", "JP (IX)"},
    // Exchanges and the stack.
    {"swap", "PUSH AF"},
    {"", "EX AF,AF'"},
    {"", "EXX"},
    {"", "EX DE,HL"},
    {"", "EX (SP),HL"},
    {"", "LD SP,HL"},
    {"", "POP AF"},
    {"", "RST 38H"},
    {"", "RET"},
    // 16-bit arithmetic and the registers that only few instructions reach.
    {"words", "ADD HL,BC"},
    {"", "ADC HL,DE"},
    {"", "SBC HL,SP"},
    {"", "DEC BC"},
    {"", "LD (<total>),BC"},
    {"", "LD I,A"},
    {"", "LD A,R"},
    {"", "RETI"},
    // Input and output.
    {"ports", "IN A,(A8)"},
    {"", "OUT (98),A"},
    {"", "IN E,(C)"},
    {"", "OUT (C),D"},
    {"", "INI"},
    {"", "OTIR"},
    {"", "RETN"},
    // Block search.
    {"search", "LD HL,<text>"},
    {"", "LD A,20"},
    {"", "CPIR"},
    {"", "JP (HL)"},
    // What the makers never described, behind the mark.
    {"undocumented", "LD IXH,A"},
    {"", "ADD A,IYL"},
    {"", "SLL B"},
    {"", "IN (C)"},
    {"", "OUT (C),0"},
    {"", "RLC B,(IX + 05)"},
    {"", "SET 7,(IY + 01),A"},
    {"", "", "\xED\x63\x34\x12"sv},  // a second way to LD (1234),HL
    {"", "", "\xED\x4C"sv},          // ... and to NEG
    {"", "", "\xDD\x00"sv},          // a prefix without effect
    {"", "RET"},
    // Data: the listing shows it as characters, too.
    {"text", "", "VARNEL sample"sv},
    {"total", "", "\0\0"sv},
    {"buffer", "", "0123456789ABCDEF"sv},
};

using LabelTable = std::map<std::string_view, std::int32_t>;

// A label that comes later counts as lHere, which any instruction can reach: no instruction's
// length depends on the address.
std::string WithAddresses(std::string_view sText, const LabelTable& colAddress,
                          std::int32_t lHere) {
  const std::size_t lOpen = sText.find('<');
  if (lOpen == std::string_view::npos) return std::string(sText);
  const std::size_t lClose = sText.find('>', lOpen);
  const auto tFound = colAddress.find(sText.substr(lOpen + 1, lClose - lOpen - 1));
  const std::int32_t lAddress = tFound == colAddress.end() ? lHere : tFound->second;
  return std::string(sText.substr(0, lOpen)) + modALLUtility::Hex4(lAddress) +
         std::string(sText.substr(lClose + 1));
}

}  // namespace

std::optional<std::int32_t> LoadSample(std::int32_t lAddress,
                                       std::span<std::uint8_t, 65536> abImage,
                                       std::string& sError) {
  LabelTable colAddress;
  std::vector<std::uint8_t> abProgram;
  for (const bool bKnown : {false, true}) {
    abProgram.clear();
    for (const SourceLine& tLine : PROGRAM) {
      const std::int32_t lHere =
          modALLUtility::AddrAdd(lAddress, static_cast<std::int32_t>(abProgram.size()));
      if (!tLine.sLabel.empty()) colAddress[tLine.sLabel] = lHere;
      abProgram.insert(abProgram.end(), tLine.sBytes.begin(), tLine.sBytes.end());
      if (tLine.sText.empty()) continue;
      modDISAsm::AsmBytes tBytes;
      std::string sRejected;
      const std::string sText = WithAddresses(tLine.sText, colAddress, lHere);
      if (!modDISAsm::AsmAssemble(sText, lHere, tBytes, sRejected) && bKnown) {
        sError = "sample program: " + sText;
        sError.append(": ").append(sRejected);
        return std::nullopt;
      }
      abProgram.insert(abProgram.end(), tBytes.View().begin(), tBytes.View().end());
    }
  }
  const auto abTarget = abImage.subspan(static_cast<std::size_t>(lAddress));
  if (abProgram.size() > abTarget.size()) {
    sError = "the sample program goes past FFFF when loaded at " + modALLUtility::Hex4(lAddress);
    return std::nullopt;
  }
  std::ranges::copy(abProgram, abTarget.begin());
  return static_cast<std::int32_t>(abProgram.size());
}

}  // namespace SampleProgram
