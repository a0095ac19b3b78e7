#include "util/modALLUtilityOptions.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace modALLUtility {

namespace {

// Bytes of the UTF-8 character that a text begins with; 0 when it begins with none, or with a
// control character.
std::size_t PrintableLength(std::string_view sText) {
  struct Form {
    std::uint8_t bFirst, bLast;
    std::uint32_t lLength, lLowest;
  };
  constexpr Form atForm[] = {{0x00, 0x7F, 1, 0x20},
                             {0xC2, 0xDF, 2, 0xA0},
                             {0xE0, 0xEF, 3, 0x800},
                             {0xF0, 0xF4, 4, 0x10000}};
  const auto bLead = static_cast<std::uint8_t>(sText.front());
  const auto* const pForm = std::ranges::find_if(
      atForm, [bLead](const Form& tForm) { return bLead >= tForm.bFirst && bLead <= tForm.bLast; });
  if (pForm == std::end(atForm) || pForm->lLength > sText.size()) return 0;
  std::uint32_t lCode = bLead - (pForm->lLength == 1 ? 0U : pForm->bFirst & 0xF0U);
  for (const char bNext : sText.substr(1, pForm->lLength - 1)) {
    const auto bCode = static_cast<std::uint8_t>(bNext);
    if ((bCode & 0xC0U) != 0x80) return 0;
    lCode = lCode << 6U | (bCode & 0x3FU);
  }
  return lCode >= pForm->lLowest && lCode != 0x7F ? pForm->lLength : 0;
}

}  // namespace

std::optional<std::string> ProgramInformation(std::span<const std::string> asArgument,
                                              std::string_view sProgram, std::string_view sHelp) {
  const auto fnAsked = [&](std::string_view sOption) {
    return std::ranges::find(asArgument, sOption) != asArgument.end();
  };
  if (fnAsked("--help") || fnAsked("-h")) return std::string(sHelp);
  if (fnAsked("--version")) return std::string(sProgram) + " " VARNEL_VERSION "\n";
  return std::nullopt;
}

std::string Printable(std::string_view sText) {
  std::string sPrintable;
  while (!sText.empty()) {
    const std::size_t lLength = PrintableLength(sText);
    sPrintable += lLength != 0 ? sText.substr(0, lLength) : "?";
    sText.remove_prefix(std::max<std::size_t>(lLength, 1));
  }
  return sPrintable;
}

}  // namespace modALLUtility
