#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "../tests/z80/AllocationCount.h"
#include "../tests/z80/RoundTrip.h"
#include "z80/modALLDisass.h"
#include "z80/modDISAsm.h"

// The assembler over every form that the decoder prints, each once: "per_instruction" is the mean
// time for one of them, "allocations" how often one of them asked for memory.

namespace {

constexpr std::int32_t ADDRESS = 0x4000;

std::vector<std::string> EveryText() {
  modALLDisass::MemoryImage abImage{};
  std::set<std::string> colText;
  VisitEveryForm([&](EveryForm tForm) {
    for (const std::size_t lOperand : tForm.alOperand) {
      if (lOperand < tForm.abByte.size()) tForm.abByte[lOperand] = 0x5A;
    }
    std::ranges::copy(tForm.abByte, abImage.begin() + ADDRESS);
    colText.emplace(modALLDisass::DisassembleInstruction(abImage, ADDRESS).tText.View());
  });
  return {colText.begin(), colText.end()};
}

void AssembleEveryForm(benchmark::State& tState) {
  const std::vector<std::string> asText = EveryText();
  modDISAsm::AsmBytes tBytes;
  std::string sError;
  std::int64_t lRejected = 0;
  const std::int64_t lAllocationsBefore = lAllocations;
  for ([[maybe_unused]] auto tPass : tState) {
    for (const std::string& sText : asText) {
      lRejected += modDISAsm::AsmAssemble(sText, ADDRESS, tBytes, sError) ? 0 : 1;
      benchmark::DoNotOptimize(tBytes);
    }
  }
  const std::int64_t lAllocated = lAllocations - lAllocationsBefore;
  if (lRejected != 0) tState.SkipWithError("a text of the decoder was rejected");
  const auto dTexts = static_cast<double>(asText.size());
  tState.counters["forms"] = dTexts;
  tState.counters["per_instruction"] = benchmark::Counter(
      dTexts, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  tState.counters["allocations"] = static_cast<double>(lAllocated);
}

BENCHMARK(AssembleEveryForm);

}  // namespace
