#include "tools/EmulatorOptions.h"

#include "tools/ToolInput.h"

namespace {

std::optional<std::int32_t> ParseAddress(std::string_view sText) {
  const auto lValue = ToolInput::ParseHex(sText);
  if (!lValue) return std::nullopt;
  return static_cast<std::int32_t>(*lValue);
}

// A file's name may have an "@" itself; the last one counts.
std::optional<EmulatorOptions::File> ParseFile(const std::string& sArgument) {
  const std::size_t lAt = sArgument.rfind('@');
  if (lAt == std::string::npos) return EmulatorOptions::File{sArgument, 0};
  const auto lAddress = ParseAddress(std::string_view(sArgument).substr(lAt + 1));
  if (!lAddress) return std::nullopt;
  return EmulatorOptions::File{sArgument.substr(0, lAt), *lAddress};
}

/// Takes an option's value; false when it is none or there is no such option.
bool TakeOption(const std::string& sOption, const std::string& sValue, EmulatorOptions& tOptions) {
  if (sOption == "--icon") {
    tOptions.sIcon = sValue;
    return !sValue.empty();
  }
  if (sOption == "--show") return (tOptions.lShow = ParseShowAddress(sValue)).has_value();
  if (sOption == "--sample") return (tOptions.lSample = ParseAddress(sValue)).has_value();
  const auto tRange = ParseRange(sValue);
  if (tRange) tOptions.atProtect.push_back(*tRange);
  return tRange && sOption == "--protect";
}

}  // namespace

std::optional<EmulatorOptions::Range> ParseRange(std::string_view sText) {
  const std::size_t lDash = sText.find('-');
  if (lDash == std::string_view::npos) return std::nullopt;
  const auto lFirst = ParseAddress(sText.substr(0, lDash));
  const auto lLast = ParseAddress(sText.substr(lDash + 1));
  if (!lFirst || !lLast || *lLast < *lFirst) return std::nullopt;
  return EmulatorOptions::Range{*lFirst, *lLast};
}

std::optional<std::int32_t> ParseShowAddress(std::string_view sText) {
  const auto lValue = ToolInput::ParseHex(sText, 0xFFFFFFFF);
  if (!lValue) return std::nullopt;
  return static_cast<std::int32_t>(*lValue);
}

bool ParseEmulatorOptions(const std::vector<std::string>& asArgument, EmulatorOptions& tOptions,
                          std::string& sError) {
  for (std::size_t lIndex = 0; lIndex < asArgument.size(); ++lIndex) {
    const std::string& sArgument = asArgument[lIndex];
    const bool bLast = lIndex + 1 == asArgument.size();
    if (sArgument == "--") {
      tOptions.asProgram.assign(asArgument.begin() + static_cast<std::ptrdiff_t>(lIndex) + 1,
                                asArgument.end());
      if (bLast) sError = "no program behind --";
      return !bLast;
    }
    if (sArgument == "--join") {
      tOptions.bJoin = true;
    } else if (sArgument.starts_with('-')) {
      if (bLast || !TakeOption(sArgument, asArgument[++lIndex], tOptions)) {
        sError = "no such option, or not with this value: " + sArgument +
                 (bLast ? "" : " " + asArgument[lIndex]);
        return false;
      }
    } else if (const auto tFile = ParseFile(sArgument)) {
      tOptions.atFile.push_back(*tFile);
    } else {
      sError = "no hexadecimal address from 0 to FFFF behind the last @: " + sArgument;
      return false;
    }
  }
  if (tOptions.bJoin) sError = "--join needs a program behind --";
  return !tOptions.bJoin;
}
