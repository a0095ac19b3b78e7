#pragma once

#include <cstddef>
#include <functional>
#include <optional>
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

/// Lines in one text, as the file has them, so that a file of millions of lines takes no more room
/// than its size. A line is known by its place, the number of bytes in front of it; a change moves
/// the places of the lines behind it. Never without lines.
class IniLines {
 public:
  IniLines() = default;  ///< an empty store

  /// The lines of a file's text: every CR dropped, split at LF.
  explicit IniLines(std::string sFileText);

  /// A file's text of the lines: CR LF between them, none behind the last.
  const std::string& Text() const { return sText; }

  /// Whether these are the lines of a file without contents.
  bool IsEmptyStore() const { return sText.empty(); }

  /// Whether there is a line at the place that Next gave; the first is at 0.
  bool Has(std::size_t lAt) const { return lAt <= sText.size(); }
  std::string_view Line(std::size_t lAt) const;
  std::size_t Next(std::size_t lAt) const;

  /// Puts a line before the one at a place, or behind the last for any place beyond.
  /// @return the new line's place
  std::size_t Insert(std::size_t lAt, std::string_view sLine);

  /// Replaces the line at a place by another.
  void Replace(std::size_t lAt, std::string_view sLine);

  /// Removes the lines whose places meet a condition, which is asked from the first on and may look
  /// at those behind; of lines that all go an empty one is left.
  void RemoveIf(const std::function<bool(std::size_t lAt)>& fnIsUnwanted);

 private:
  std::string sText;
};

/// Which lines of the store this program has set since the store was loaded; all others are as
/// loaded, or section headers.
class IniLineStates {
 public:
  bool IsSetHere(std::size_t lAt) const;
  void NoteSet(std::size_t lAt);

  /// Follows a change of the lines: those at lAt and behind it move by so many bytes.
  void Move(std::size_t lAt, std::ptrdiff_t lBytes);

 private:
  std::vector<std::size_t> alSetHere;
};

/// A text without its leading and trailing blanks.
std::string_view IniTrim(std::string_view sText);

/// The name between the brackets of a section header, as it stands; none for any other line.
std::optional<std::string_view> IniParseSection(std::string_view sLine);

/// A key line's two sides, trimmed.
struct IniKey {
  std::string_view sKey;
  std::string_view sValue;
};

/// Key and value of a key line; none for comments, headers and whatever else has no key.
std::optional<IniKey> IniParseKey(std::string_view sLine);

/// Where a section lies: its header, and its lines from lFirst up to, not including, lEnd, each as
/// a place.
struct IniSection {
  std::size_t lHeader = 0;
  std::size_t lFirst = 0;
  std::size_t lEnd = 0;
};

/// The first section of a name, which may be given with blanks around it and in brackets.
std::optional<IniSection> IniFindSection(const IniLines& asLine, std::string_view sName);

/// The place of the first key line of a key within a section.
std::optional<std::size_t> IniFindKey(const IniLines& asLine, const IniSection& tSection,
                                      std::string_view sKey);

/// Adds a section's header at the end of the lines; an empty store's only line becomes it.
void IniAddSection(IniLines& asLine, std::string_view sSection);

/// Replaces the first line of a key in a section, or adds it at the section's end, or adds the
/// section with it at the end of the lines.
void IniFileSetKey(IniLines& asFileLine, std::string_view sSection, std::string_view sKey,
                   std::string_view sLine);

/// Applies the store's lines that were set here to a file's lines, each under its section.
void IniApplyChanges(const IniLines& asStoreLine, const IniLineStates& abState,
                     IniLines& asFileLine);

/// Removes every section header with no key line before the next header; what else followed it
/// becomes part of the section above.
void IniDropEmptySections(IniLines& asLine);

}  // namespace modAllIni
