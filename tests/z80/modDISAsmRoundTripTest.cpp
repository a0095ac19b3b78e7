#include <gtest/gtest.h>

#include "AllocationCount.h"
#include "RoundTrip.h"

namespace {

TEST(RoundTrip, EveryOpcodeBehindEveryPrefix) {
  static modALLDisass::MemoryImage abImage;
  constexpr std::array<std::uint8_t, 8> OPERANDS{0x00, 0x7F, 0x80, 0xFF, 0x12, 0x34, 0xBC, 0xDE};
  for (const std::int32_t lAddress : {0x0000, 0x7FFF, 0xFFFE}) {
    for (std::size_t lPair = 0; lPair < OPERANDS.size() * OPERANDS.size(); ++lPair) {
      VisitEveryForm([&](EveryForm tForm) {
        tForm.abByte[tForm.alOperand[1]] = OPERANDS[lPair % OPERANDS.size()];
        tForm.abByte[tForm.alOperand[0]] = OPERANDS[lPair / OPERANDS.size()];
        PutBytes(abImage, lAddress, tForm.abByte);
        EXPECT_EQ(RoundTripFault(abImage, lAddress), "");
      });
    }
  }
}

TEST(AsmAssemble, AsksForNoMemory) {
  modALLDisass::MemoryImage abImage{};
  modDISAsm::AsmBytes tBytes;
  std::string sError;
  VisitEveryForm([&](const EveryForm& tForm) {
    PutBytes(abImage, 0, tForm.abByte);
    const auto tDecoded = modALLDisass::DisassembleInstruction(abImage, 0);
    const std::int64_t lBefore = lAllocations;
    EXPECT_TRUE(modDISAsm::AsmAssemble(tDecoded.tText.View(), 0, tBytes, sError)) << sError;
    EXPECT_EQ(lAllocations, lBefore) << tDecoded.tText.View();
  });
}

}  // namespace
