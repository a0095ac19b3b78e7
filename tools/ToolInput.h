#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Numbers and files, as both console programs take them from their users.
namespace ToolInput {

/// A number of hexadecimal digits and nothing else.
/// @return 0 to lHighest; none for any other text
std::optional<std::uint32_t> ParseHex(std::string_view sText, std::uint32_t lHighest = 0xFFFF);

/// "sWhat: why", with the reason of the system call that has just failed where there is one.
std::string SystemMessage(const std::string& sWhat);

/// Reads all of a stream to an address of an image, which keeps what it had where none is read.
/// @param sName  names the input in messages
/// @return bytes read, 1 or more; none, with the message in sError and the image as it was, when
///         the input is empty, goes past FFFF or cannot be read
std::optional<std::int32_t> LoadStream(std::istream& tInput, const std::string& sName,
                                       std::int32_t lAddress,
                                       std::span<std::uint8_t, 65536> abImage, std::string& sError);

/// LoadStream of a file.
std::optional<std::int32_t> LoadFile(const std::string& sPath, std::int32_t lAddress,
                                     std::span<std::uint8_t, 65536> abImage, std::string& sError);

/// Writes a file. A plain file that exists is replaced whole and keeps its permissions, or stays as
/// it was; devices and pipes are written to.
/// @return false with the message in sError
bool WriteFile(const std::string& sPath, std::string_view sContents, std::string& sError);

}  // namespace ToolInput
