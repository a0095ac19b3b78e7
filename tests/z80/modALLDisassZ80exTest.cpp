#include <gtest/gtest.h>
#include <z80ex/z80ex_dasm.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "RoundTrip.h"
#include "z80/modALLDisass.h"

namespace {

using modALLDisass::MemoryImage;

using Judged = std::pair<std::string, std::int32_t>;  // text and length

/// libz80ex's opinion in our spelling, without mark: it marks only its "NOP*".
Judged AskZ80ex(MemoryImage& abImage) {
  const auto fnRead = [](Z80EX_WORD iAddress, void* pImage) -> Z80EX_BYTE {
    return (*static_cast<MemoryImage*>(pImage))[iAddress];
  };
  std::array<char, 64> acText{};
  int lStates = 0;
  int lStatesTaken = 0;
  const int lLength =
      z80ex_dasm(acText.data(), acText.size(), 0, &lStates, &lStatesTaken, fnRead, 0, &abImage);
  std::string sText = acText.data();
  constexpr std::pair<std::string_view, std::string_view> asSpelling[] = {
      {"FFFFFF", ""},  // it extends the displacement's sign to 32 bits
      {"IX+#", "IX + "},    {"IY+#", "IY + "},    {"#", ""},
      {"RST 0x", "RST "},   {"JP HL", "JP (HL)"}, {"JP IX", "JP (IX)"},
      {"JP IY", "JP (IY)"}, {"IN_F", "IN"},       {"LD_", "LD "},
      {"_", ","},           {"NOP*", "NOP"}};
  for (const auto& [sTheirs, sOurs] : asSpelling) {
    const std::size_t lAt = sText.find(sTheirs);
    if (lAt != std::string::npos) sText.replace(lAt, sTheirs.size(), sOurs);
  }
  if (sText.starts_with("RST")) sText += 'H';
  // "LD B,RLC (IX + 05)" and "LD B,SET 0,(IX + 05)"
  if (sText.starts_with("LD ") && sText[4] == ',' && sText.find("(I", 6) != std::string::npos) {
    const std::string sCopy = sText.substr(3, 1);
    sText.erase(0, 5);
    if (sText.starts_with("RES") || sText.starts_with("SET")) {
      sText += "," + sCopy;
    } else {
      sText.insert(sText.find(' ') + 1, sCopy + ",");
    }
  }
  return {sText, lLength};
}

/// What it must say where we say sOurs: with its own ways, which are not ours.
Judged Expected(const MemoryImage& abImage, std::string sOurs, std::int32_t lLength) {
  const auto [b0, b1, b3] = std::tuple(abImage[0], abImage[1], abImage[3]);
  const bool bIndexed = b0 == 0xDD || b0 == 0xFD;
  if (bIndexed && b1 == 0xCB) {  // counts the operation byte twice, names no register behind BIT
    if (b3 >= 0x40 && b3 < 0x80 && (b3 & 7U) != 6) sOurs.resize(sOurs.size() - 2);
    return {sOurs, lLength + 1};
  }
  // takes these copies of RETN as RETI
  if (b0 == 0xED && (b1 == 0x5D || b1 == 0x6D || b1 == 0x7D)) return {"RETI", lLength};
  // lets a prefix before a prefix stand alone
  if (bIndexed && (b1 == 0xDD || b1 == 0xED || b1 == 0xFD)) return {"NOP", 1};
  return {sOurs, lLength};
}

TEST(DisassembleInstruction, AgreesWithLibz80exButForItsOwnWays) {
  for (const auto& [bFirst, bSecond] : {std::pair<std::uint8_t, std::uint8_t>{0x05, 0x9A},
                                        {0x85, 0x12}}) {  // a displacement of either sign
    VisitEveryForm([&, bFirst = bFirst, bSecond = bSecond](const EveryForm& tForm) {
      MemoryImage abImage{};
      PutBytes(abImage, 0, tForm.abByte);
      abImage.at(tForm.alOperand[1]) = bSecond;
      abImage.at(tForm.alOperand[0]) = bFirst;
      const auto tOurs = modALLDisass::DisassembleInstruction(abImage, 0);
      const std::string sOurs(tOurs.tText.View());
      const std::string sUnmarked = sOurs.substr(sOurs.starts_with("* ") ? 2 : 0);
      EXPECT_EQ(AskZ80ex(abImage), Expected(abImage, sUnmarked, tOurs.lLength)) << sOurs;
    });
  }
}

}  // namespace
