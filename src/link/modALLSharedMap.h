#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "util/modALLUtilityAddress.h"

/// The emulator's shared memory blocks, and the file that tells their names.
///
/// A block is used at whatever size its creator gave it. What a smaller one lacks reads as zeros,
/// and writes to it are dropped; the same holds while a block is not mapped.
namespace modALLSharedMap {

inline constexpr std::size_t SHARED_MAP_COUNT = 7;

/// Sizes in bytes of blocks that have to be created here.
inline constexpr std::array<std::uint32_t, SHARED_MAP_COUNT> SHARED_MAP_SIZE = {
    0x20000, 512, 0x4000, 512, 512, 0x30020, 16};

/// The block with the RAM image, one byte per Z80 address, and behind it the write-protection map,
/// one byte per Z80 address, not 0 where protected.
inline constexpr std::int16_t RAM_BLOCK = 0;
inline constexpr std::size_t PROTECTION_MAP_OFFSET = 0x10000;

/// The block through which emulator and companions tell each other what is going on.
inline constexpr std::int16_t CONTROL_BLOCK = 4;

/// System-wide names of the blocks, by index.
inline std::array<std::string, SHARED_MAP_COUNT> sSharedMapName;

/// Handles of the blocks, by index; 0: not open.
inline std::array<std::uint32_t, SHARED_MAP_COUNT> hSharedMap = {};

/// Views of the blocks, by index; nullptr: never mapped. A closed block's keeps its old value, so
/// it is a view only where the handle is not 0.
inline std::array<std::uint8_t*, SHARED_MAP_COUNT> lSharedMapBase = {};

/// The number in the icon file's name.
inline std::int32_t lIconNumber = 0;

/// A value of the configuration temp file that this program does not use.
inline std::string sSpareText;

/// Opens the block of sSharedMapName(iIndex), or creates it with zeros, and maps it. Shows its own
/// message on failure.
/// @param iIndex     0 to 6; throws modALLProcess::RuntimeError 9 for any other
/// @param bZeroFill  sets the block's bytes to 0, as many as the table of sizes has for it
/// @return true only when this call mapped the block; false without a message when it was mapped
bool SharedMapOpen(std::int16_t iIndex, bool bZeroFill);

/// Unmaps a block and closes its handle; does nothing when it is not mapped.
/// @param iIndex  as for SharedMapOpen
void SharedMapClose(std::int16_t iIndex);

/// Reads VARNEL.tmp in the temporary folder into the names above and those of the events. On any
/// failure shows a message and ends the program.
void ReadConfigTempFile();

/// The RAM image in the RAM block, as far as the block has it.
std::span<std::uint8_t> RamImage();

/// The write-protection map in the RAM block, as far as the block has it.
std::span<std::uint8_t> ProtectionMap();

/// Takes a snapshot of the RAM image.
void CopyRamImage(std::span<std::uint8_t, modALLUtility::ADDRESS_SPACE> abTarget);

/// Takes a snapshot of the write-protection map.
void CopyProtectionMap(std::span<std::uint8_t, modALLUtility::ADDRESS_SPACE> abTarget);

/// Reads bytes of the RAM image from an address on, from FFFFH on to 0000H; 0 where the block has
/// none.
void ReadRam(std::int32_t lAddr, std::span<std::uint8_t> abTarget);

/// Writes bytes into the RAM image from an address on, from FFFFH on to 0000H.
void WriteRam(std::int32_t lAddr, std::span<const std::uint8_t> abBytes);

/// The 32-bit fields of the control block, by their offsets.
enum class ControlField : std::uint8_t {
  ActiveProgram = 0,    ///< program number of the companion that the user last worked in
  ShowAddr = 8,         ///< the address that the emulator wants to be shown
  BreakpointAddr = 12,  ///< the address of the breakpoint just set
};

std::int32_t ReadControlField(ControlField eField);

/// Writes a field in one piece, after everything written before.
void WriteControlField(ControlField eField, std::int32_t lValue);

/// The control block's flag that a companion wrote into the RAM image: FFH set, 0 not.
std::uint8_t RamChanged();

/// Writes the flag, after everything written before.
void SetRamChanged(std::uint8_t bValue);

}  // namespace modALLSharedMap
