#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What varnel-emulator is asked for when it starts.
struct EmulatorOptions {
  /// Addresses from lFirst to lLast, both included.
  struct Range {
    std::int32_t lFirst;
    std::int32_t lLast;
  };

  struct File {
    std::string sPath;
    std::int32_t lAddress;
  };

  std::optional<std::int32_t> lShow;    ///< any 32-bit number; none: where the first file lies
  std::optional<std::int32_t> lSample;  ///< where the sample program is wanted
  std::vector<Range> atProtect;
  std::string sIcon;  ///< empty: none
  std::vector<File> atFile;
  bool bJoin = false;                  ///< where an emulator runs, only the program is wanted
  std::vector<std::string> asProgram;  ///< empty: none
};

/// "HEX-HEX", the second not below the first.
std::optional<EmulatorOptions::Range> ParseRange(std::string_view sText);

/// An address to be shown: up to FFFFFFFF, since a companion must bear any number in that field.
std::optional<std::int32_t> ParseShowAddress(std::string_view sText);

/// Reads the arguments behind the program's name.
/// @return false with the message in sError
bool ParseEmulatorOptions(const std::vector<std::string>& asArgument, EmulatorOptions& tOptions,
                          std::string& sError);
