#include "config/modAllIniLines.h"

#include <algorithm>

namespace modAllIni {

namespace {

constexpr std::string_view LINE_END = "\r\n";

}  // namespace

IniLines::IniLines(std::string sFileText) : sText(std::move(sFileText)) {
  // Most files have nothing but CR LF already, and are left as they are.
  std::size_t lPlain = 0;
  while (lPlain < sText.size()) {
    const std::size_t lNext = sText.find_first_of(LINE_END, lPlain);
    if (lNext == std::string::npos) return;
    if (sText.compare(lNext, LINE_END.size(), LINE_END) != 0) break;
    lPlain = lNext + LINE_END.size();
  }
  const auto itPlain = sText.begin() + static_cast<std::ptrdiff_t>(lPlain);
  sText.erase(std::remove(itPlain, sText.end(), '\r'), sText.end());
  std::size_t lFrom = sText.size();
  sText.resize(lFrom +
               static_cast<std::size_t>(std::count(
                   sText.begin() + static_cast<std::ptrdiff_t>(lPlain), sText.end(), '\n')));
  for (std::size_t lTo = sText.size(); lTo > lFrom;) {
    sText[--lTo] = sText[--lFrom];
    if (sText[lTo] == '\n') sText[--lTo] = '\r';
  }
}

std::string_view IniLines::Line(std::size_t lAt) const {
  const std::size_t lEnd = sText.find('\n', lAt);
  const std::size_t lLength = lEnd == std::string::npos ? lEnd : lEnd - 1 - lAt;
  return std::string_view(sText).substr(lAt, lLength);
}

std::size_t IniLines::Next(std::size_t lAt) const {
  const std::size_t lEnd = sText.find('\n', lAt);
  return lEnd == std::string::npos ? sText.size() + LINE_END.size() : lEnd + 1;
}

std::size_t IniLines::Insert(std::size_t lAt, std::string_view sLine) {
  if (!Has(lAt)) {
    sText.append(LINE_END).append(sLine);
    return sText.size() - sLine.size();
  }
  sText.insert(lAt, std::string(sLine).append(LINE_END));
  return lAt;
}

void IniLines::Replace(std::size_t lAt, std::string_view sLine) {
  sText.replace(lAt, Line(lAt).size(), sLine);
}

void IniLines::RemoveIf(const std::function<bool(std::size_t lAt)>& fnIsUnwanted) {
  std::size_t lKept = 0;  // bytes of the lines that stay, each with its end
  for (std::size_t lAt = 0; Has(lAt);) {
    const std::size_t lNext = Next(lAt);
    if (!fnIsUnwanted(lAt)) {
      const std::size_t lEnd = std::min(lNext, sText.size());
      if (lKept != lAt) {
        std::copy(sText.begin() + static_cast<std::ptrdiff_t>(lAt),
                  sText.begin() + static_cast<std::ptrdiff_t>(lEnd),
                  sText.begin() + static_cast<std::ptrdiff_t>(lKept));
      }
      lKept += lNext - lAt;
    }
    lAt = lNext;
  }
  sText.resize(lKept - std::min(lKept, LINE_END.size()));
}

bool IniLineStates::IsSetHere(std::size_t lAt) const {
  return std::ranges::find(alSetHere, lAt) != alSetHere.end();
}

void IniLineStates::NoteSet(std::size_t lAt) {
  if (!IsSetHere(lAt)) alSetHere.push_back(lAt);
}

void IniLineStates::Move(std::size_t lAt, std::ptrdiff_t lBytes) {
  for (std::size_t& lSet : alSetHere) {
    if (lSet >= lAt) lSet += static_cast<std::size_t>(lBytes);
  }
}

std::string_view IniTrim(std::string_view sText) {
  const auto lFirst = sText.find_first_not_of(' ');
  if (lFirst == std::string_view::npos) return {};
  return sText.substr(lFirst, sText.find_last_not_of(' ') - lFirst + 1);
}

std::optional<std::string_view> IniParseSection(std::string_view sLine) {
  const auto lFirst = sLine.find_first_not_of(' ');
  if (lFirst == std::string_view::npos || sLine[lFirst] != '[') return std::nullopt;
  const std::string_view sTrimmed = IniTrim(sLine);
  if (sTrimmed.size() < 3 || sTrimmed.back() != ']') return std::nullopt;
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

std::optional<IniSection> IniFindSection(const IniLines& asLine, std::string_view sName) {
  sName = IniTrim(sName);
  if (sName.size() >= 2 && sName.front() == '[' && sName.back() == ']') {
    sName = sName.substr(1, sName.size() - 2);
  }
  for (std::size_t lHeader = 0; asLine.Has(lHeader); lHeader = asLine.Next(lHeader)) {
    if (IniParseSection(asLine.Line(lHeader)) != sName) continue;
    const std::size_t lFirst = asLine.Next(lHeader);
    std::size_t lEnd = lFirst;
    while (asLine.Has(lEnd) && !IniParseSection(asLine.Line(lEnd))) lEnd = asLine.Next(lEnd);
    return IniSection{lHeader, lFirst, lEnd};
  }
  return std::nullopt;
}

std::optional<std::size_t> IniFindKey(const IniLines& asLine, const IniSection& tSection,
                                      std::string_view sKey) {
  for (std::size_t lAt = tSection.lFirst; lAt < tSection.lEnd; lAt = asLine.Next(lAt)) {
    const std::string_view sLine = asLine.Line(lAt);
    if (sLine.find(sKey) == std::string_view::npos) continue;
    const auto tKey = IniParseKey(sLine);
    if (tKey && tKey->sKey == sKey) return lAt;
  }
  return std::nullopt;
}

void IniAddSection(IniLines& asLine, std::string_view sSection) {
  const std::string sHeader = "[" + std::string(sSection) + "]";
  if (asLine.IsEmptyStore()) {
    asLine.Replace(0, sHeader);
  } else {
    asLine.Insert(std::string::npos, sHeader);
  }
}

void IniFileSetKey(IniLines& asFileLine, std::string_view sSection, std::string_view sKey,
                   std::string_view sLine) {
  const auto tSection = IniFindSection(asFileLine, sSection);
  if (!tSection) {
    IniAddSection(asFileLine, sSection);
    asFileLine.Insert(std::string::npos, sLine);
  } else if (const auto lLine = IniFindKey(asFileLine, *tSection, sKey)) {
    asFileLine.Replace(*lLine, sLine);
  } else {
    asFileLine.Insert(tSection->lEnd, sLine);
  }
}

void IniApplyChanges(const IniLines& asStoreLine, const IniLineStates& abState,
                     IniLines& asFileLine) {
  std::optional<std::string_view> sSection;
  for (std::size_t lAt = 0; asStoreLine.Has(lAt); lAt = asStoreLine.Next(lAt)) {
    const std::string_view sLine = asStoreLine.Line(lAt);
    if (const auto sHeader = IniParseSection(sLine)) {
      sSection = sHeader;
    } else if (sSection && abState.IsSetHere(lAt)) {
      const auto tKey = IniParseKey(sLine);
      if (tKey) IniFileSetKey(asFileLine, *sSection, tKey->sKey, sLine);
    }
  }
}

void IniDropEmptySections(IniLines& asLine) {
  asLine.RemoveIf([&asLine](std::size_t lAt) {
    if (!IniParseSection(asLine.Line(lAt))) return false;
    for (lAt = asLine.Next(lAt); asLine.Has(lAt); lAt = asLine.Next(lAt)) {
      if (IniParseKey(asLine.Line(lAt))) return false;
      if (IniParseSection(asLine.Line(lAt))) return true;
    }
    return true;
  });
}

}  // namespace modAllIni
