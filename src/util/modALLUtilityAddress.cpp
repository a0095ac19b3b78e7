#include "util/modALLUtilityAddress.h"

namespace modALLUtility {

std::string Hex4(std::int32_t lValue) {
  auto lRest = static_cast<std::uint32_t>(lValue);
  std::string sDigits;
  while (lRest != 0 || sDigits.size() < 4) {
    sDigits.insert(sDigits.begin(), HexDigit(lRest));
    lRest >>= 4U;
  }
  return sDigits;
}

}  // namespace modALLUtility
