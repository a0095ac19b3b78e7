#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace modALLSharedMap {

/// The values of the configuration temp file, in the file's order.
inline constexpr std::size_t CONFIG_VALUES = 25;

struct ConfigValues {
  std::int32_t lIconNumber = 0;                       ///< value 1
  std::array<std::string, CONFIG_VALUES - 1> asText;  ///< values 2 to 25
};

/// Reads the configuration temp file's text.
///
/// Values are separated by commas, line ends, or both in turn; a line end is CR LF, LF or CR.
/// Blanks before a value are skipped. A value that begins with a double quote runs to the next one,
/// whatever lies between; what follows it up to the separator is ignored. An unquoted value loses
/// its trailing blanks, as they are nothing that anyone sees in the file. What follows the last
/// value is ignored.
///
/// Throws modALLProcess::RuntimeError 62 when the text ends before the last value begins or within
/// its quotes, and 13 when the first value is no decimal integer of 32 bits.
ConfigValues ParseConfigText(std::string_view sText);

}  // namespace modALLSharedMap
