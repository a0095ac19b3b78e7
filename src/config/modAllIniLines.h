#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The lines of an INI file: reading them from text and back, finding sections and keys, and the
/// merge of one program's changes into the lines that another may have written meanwhile.
///
/// Lines are 8-bit text in which every byte stands for itself, character 0 included. A blank is the
/// space character. A file without contents is an empty store: one line of empty text. Names of
/// sections and keys compare byte for byte.
namespace modAllIni {

using IniLines = std::vector<std::string>;

/// How a line of the store came to be.
inline constexpr std::uint8_t LINE_AS_LOADED = 0;
inline constexpr std::uint8_t LINE_SET_HERE = 1;

/// A text without its leading and trailing blanks.
std::string_view IniTrim(std::string_view sText);

/// The lines of a file's text: every CR dropped, split at LF. Never without lines.
IniLines IniSplitText(std::string_view sText);

/// A file's text of lines: CR LF between them, none behind the last.
std::string IniJoinLines(const IniLines& asLine);

/// The name between the brackets of a section header, as it stands; none for any other line.
std::optional<std::string_view> IniParseSection(std::string_view sLine);

/// A key line's two sides, trimmed.
struct IniKey {
  std::string_view sKey;
  std::string_view sValue;
};

/// Key and value of a key line; none for comments, headers and whatever else has no key.
std::optional<IniKey> IniParseKey(std::string_view sLine);

/// Where a section lies: its header, and its lines from lFirst up to, not including, lEnd.
struct IniSection {
  std::size_t lHeader = 0;
  std::size_t lFirst = 0;
  std::size_t lEnd = 0;
};

/// The first section of a name, which may be given with blanks around it and in brackets.
std::optional<IniSection> IniFindSection(std::span<const std::string> asLine,
                                         std::string_view sName);

/// The index of the first key line of a key within a section.
std::optional<std::size_t> IniFindKey(std::span<const std::string> asLine,
                                      const IniSection& tSection, std::string_view sKey);

/// Whether lines are those of a file without contents.
bool IniIsEmptyStore(std::span<const std::string> asLine);

/// Puts a line before the one of an index, or behind the last for any index beyond.
void IniInsertLine(IniLines& asLine, std::size_t lAt, std::string sText);

/// Replaces the first line of a key in a section, or adds it at the section's end, or adds the
/// section with it at the end of the lines.
void IniFileSetKey(IniLines& asFileLine, std::string_view sSection, std::string_view sKey,
                   std::string_view sLine);

/// Applies the store's lines that were set here to a file's lines, each under its section.
/// @param abState  of each store line LINE_AS_LOADED or LINE_SET_HERE
void IniApplyChanges(std::span<const std::string> asStoreLine,
                     std::span<const std::uint8_t> abState, IniLines& asFileLine);

/// Removes every section header with no key line before the next header; what else followed it
/// becomes part of the section above.
void IniDropEmptySections(IniLines& asLine);

}  // namespace modAllIni
