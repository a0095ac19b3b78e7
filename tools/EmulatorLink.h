#pragma once

#include <cstdint>
#include <string>

/// The emulator's side of the link: what the real emulator sets up before it starts a companion.
/// The names of the objects, their handles and their views stand in modALLSharedMap and
/// modALLProcess, as they do in a companion.
class EmulatorLink {
 public:
  EmulatorLink() = default;
  EmulatorLink(const EmulatorLink&) = delete;
  EmulatorLink& operator=(const EmulatorLink&) = delete;
  ~EmulatorLink();  ///< takes the temp file and the icon away, then gives the objects back

  /// Makes this process the user's one stand-in, and creates the shared blocks, all zero, and the
  /// events. Objects that companions of a stand-in before still hold are taken over.
  /// @return false with the message in sError
  bool Open(std::string& sError);

  /// Writes the icon (where sIcon names one) and the configuration temp file; from here on
  /// companions can start.
  /// @return false with the message in sError
  bool Publish(const std::string& sIcon, std::string& sError);

  /// Whether Open failed since the emulator's side is taken, by an emulator or another stand-in.
  bool IsTaken() const { return bTaken; }

  /// Where the configuration temp file is.
  const std::string& TempFile() const { return sTempFile; }

 private:
  bool OpenBlocks(std::string& sError);
  bool OpenEvents(std::string& sError);

  std::uint32_t hLock = 0;
  bool bTaken = false;
  std::string sLockFile;
  std::string sTempFile;
  std::string sIconFile;
};
