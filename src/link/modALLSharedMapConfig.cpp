#include "link/modALLSharedMapConfig.h"

#include <algorithm>
#include <charconv>

#include "config/modALLProcessError.h"

namespace modALLSharedMap {

namespace {

using modALLProcess::RuntimeError;

// Takes the text up to a place off its front.
std::string_view TakeFront(std::string_view& sText, std::size_t lCharacters) {
  const std::string_view sFront = sText.substr(0, lCharacters);
  sText.remove_prefix(sFront.size());
  return sFront;
}

// Takes the next value and its separator off the front of a text.
std::string_view TakeValue(std::string_view& sText) {
  TakeFront(sText, sText.find_first_not_of(' '));
  if (sText.empty()) throw RuntimeError(62, "Input past end of file");
  std::string_view sValue;
  if (sText.front() == '"') {
    sText.remove_prefix(1);
    const auto lQuote = sText.find('"');
    if (lQuote == std::string_view::npos) throw RuntimeError(62, "Input past end of file");
    sValue = TakeFront(sText, lQuote);
    TakeFront(sText, sText.find_first_of(",\r\n"));
  } else {
    sValue = TakeFront(sText, sText.find_first_of(",\r\n"));
    sValue = sValue.substr(0, sValue.find_last_not_of(' ') + 1);
  }
  TakeFront(sText, sText.starts_with("\r\n") ? 2 : 1);
  return sValue;
}

}  // namespace

ConfigValues ParseConfigText(std::string_view sText) {
  ConfigValues tValues;
  const std::string_view sNumber = TakeValue(sText);
  const char* const pEnd = sNumber.data() + sNumber.size();
  const auto tParsed = std::from_chars(sNumber.data(), pEnd, tValues.lIconNumber);
  if (tParsed.ec != std::errc() || tParsed.ptr != pEnd) throw RuntimeError(13, "Type mismatch");
  for (auto& sValue : tValues.asText) sValue = TakeValue(sText);
  return tValues;
}

}  // namespace modALLSharedMap
