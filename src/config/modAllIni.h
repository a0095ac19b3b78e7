#pragma once

#include <string>
#include <string_view>

/// The settings file that the suite's programs share, VARNEL.ini in the local application folder.
///
/// Each program keeps the lines in memory and changes them there. Saving reads the file again and
/// applies only what this program has set, so that what others wrote meanwhile stays. The file is
/// held, alone, only for the moment of a load or a save; another program's hold is waited out for
/// up to 50 attempts 50 ms apart.
namespace modAllIni {

/// The value of a key in a section, as of the last load plus what was set here; the default,
/// trimmed, where section or key is missing. The first call loads the file. When that fails, the
/// user is told once and this program goes on with the defaults, without trying again before the
/// next save; only when one of its windows is active already, that window is unloaded and the
/// program ends.
std::string IniGetValue(std::string_view sSection, std::string_view sKey,
                        std::string_view sDefault);

/// Sets a key in memory. An empty section or key is ignored.
/// @return true, always
bool IniSetValue(std::string_view sSection, std::string_view sKey, std::string_view sValue);

/// Writes what was set here into the file and loads it anew.
/// @return false when that failed; what was set stays set for another attempt
bool IniFlush();

/// Reads the file into memory, in place of what is there and was set.
/// @return false when that failed; memory is as it was then
bool IniLoad();

}  // namespace modAllIni
