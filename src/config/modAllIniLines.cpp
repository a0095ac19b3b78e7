#include "config/modAllIniLines.h"

#include <algorithm>
#include <utility>

namespace modAllIni {

std::string_view IniTrim(std::string_view sText) {
  const auto lFirst = sText.find_first_not_of(' ');
  if (lFirst == std::string_view::npos) return {};
  return sText.substr(lFirst, sText.find_last_not_of(' ') - lFirst + 1);
}

IniLines IniSplitText(std::string_view sText) {
  IniLines asLine;
  for (bool bMore = true; bMore;) {
    const auto lEnd = sText.find('\n');
    bMore = lEnd != std::string_view::npos;
    std::string& sLine = asLine.emplace_back(sText.substr(0, lEnd));
    std::erase(sLine, '\r');
    if (bMore) sText.remove_prefix(lEnd + 1);
  }
  return asLine;
}

std::string IniJoinLines(const IniLines& asLine) {
  std::size_t lSize = 0;
  for (const auto& sLine : asLine) lSize += sLine.size() + 2;
  std::string sText;
  sText.reserve(lSize);
  for (const auto& sLine : asLine) {
    if (&sLine != &asLine.front()) sText += "\r\n";
    sText += sLine;
  }
  return sText;
}

std::optional<std::string_view> IniParseSection(std::string_view sLine) {
  const std::string_view sTrimmed = IniTrim(sLine);
  if (sTrimmed.size() < 3 || sTrimmed.front() != '[' || sTrimmed.back() != ']') return std::nullopt;
  return sTrimmed.substr(1, sTrimmed.size() - 2);
}

std::optional<IniKey> IniParseKey(std::string_view sLine) {
  const std::string_view sTrimmed = IniTrim(sLine);
  if (sTrimmed.empty() ||
      std::string_view("[;#").find(sTrimmed.front()) != std::string_view::npos) {
    return std::nullopt;
  }
  const auto lEquals = sTrimmed.find('=');
  if (lEquals == std::string_view::npos || lEquals == 0) return std::nullopt;
  // The line is trimmed, so what stands before the first "=" is not all blanks.
  return IniKey{IniTrim(sTrimmed.substr(0, lEquals)), IniTrim(sTrimmed.substr(lEquals + 1))};
}

std::optional<IniSection> IniFindSection(std::span<const std::string> asLine,
                                         std::string_view sName) {
  sName = IniTrim(sName);
  if (sName.size() >= 2 && sName.front() == '[' && sName.back() == ']') {
    sName = sName.substr(1, sName.size() - 2);
  }
  for (std::size_t lHeader = 0; lHeader < asLine.size(); ++lHeader) {
    if (IniParseSection(asLine[lHeader]) != sName) continue;
    std::size_t lEnd = lHeader + 1;
    while (lEnd < asLine.size() && !IniParseSection(asLine[lEnd])) ++lEnd;
    return IniSection{lHeader, lHeader + 1, lEnd};
  }
  return std::nullopt;
}

std::optional<std::size_t> IniFindKey(std::span<const std::string> asLine,
                                      const IniSection& tSection, std::string_view sKey) {
  for (std::size_t lLine = tSection.lFirst; lLine < tSection.lEnd; ++lLine) {
    const auto tKey = IniParseKey(asLine[lLine]);
    if (tKey && tKey->sKey == sKey) return lLine;
  }
  return std::nullopt;
}

bool IniIsEmptyStore(std::span<const std::string> asLine) {
  return asLine.size() == 1 && asLine.front().empty();
}

void IniInsertLine(IniLines& asLine, std::size_t lAt, std::string sText) {
  const auto tPlace = asLine.begin() + static_cast<std::ptrdiff_t>(std::min(lAt, asLine.size()));
  asLine.insert(tPlace, std::move(sText));
}

void IniFileSetKey(IniLines& asFileLine, std::string_view sSection, std::string_view sKey,
                   std::string_view sLine) {
  if (const auto tSection = IniFindSection(asFileLine, sSection)) {
    if (const auto lLine = IniFindKey(asFileLine, *tSection, sKey)) {
      asFileLine[*lLine] = sLine;
    } else {
      IniInsertLine(asFileLine, tSection->lEnd, std::string(sLine));
    }
    return;
  }
  if (IniIsEmptyStore(asFileLine)) asFileLine.clear();
  asFileLine.push_back("[" + std::string(sSection) + "]");
  asFileLine.emplace_back(sLine);
}

void IniApplyChanges(std::span<const std::string> asStoreLine,
                     std::span<const std::uint8_t> abState, IniLines& asFileLine) {
  std::optional<std::string_view> sSection;
  for (std::size_t lLine = 0; lLine < asStoreLine.size(); ++lLine) {
    if (const auto sHeader = IniParseSection(asStoreLine[lLine])) {
      sSection = sHeader;
    } else if (sSection && abState[lLine] == LINE_SET_HERE) {
      const auto tKey = IniParseKey(asStoreLine[lLine]);
      if (tKey) IniFileSetKey(asFileLine, *sSection, tKey->sKey, asStoreLine[lLine]);
    }
  }
}

void IniDropEmptySections(IniLines& asLine) {
  // Kept lines move up to the back, so that a file of nothing but headers takes no longer than any.
  bool bKeySeen = false;
  std::size_t lKept = asLine.size();
  for (std::size_t lLine = asLine.size(); lLine-- > 0;) {
    const bool bHeader = IniParseSection(asLine[lLine]).has_value();
    if (!bHeader || bKeySeen) {
      --lKept;
      if (lKept != lLine) asLine[lKept] = std::move(asLine[lLine]);
    }
    bKeySeen = !bHeader && (bKeySeen || IniParseKey(asLine[lKept]));
  }
  asLine.erase(asLine.begin(), asLine.begin() + static_cast<std::ptrdiff_t>(lKept));
  if (asLine.empty()) asLine.emplace_back();
}

}  // namespace modAllIni
