// The other side of the stand-in's link, without a window: does what its arguments say, in order.

#include <array>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "link/modALLProcessEvents.h"
#include "link/modALLSharedMap.h"
#include "platform/Environment.h"
#include "platform/NamedEvent.h"

int main(int lArguments, char** apArgument) {
  using namespace modALLSharedMap;
  ReadConfigTempFile();
  auto& tClosed = modALLProcess::tProgramEvent[modALLProcess::PROGRAM_NUMBER];
  tClosed.hEvent = modALLProcess::CreateNamedEvent(tClosed.sName);
  modALLProcess::hShowAddrEvent =
      modALLProcess::CreateNamedEvent(modALLProcess::sShowAddrEventName);
  modALLProcess::hBreakpointEvent =
      modALLProcess::CreateNamedEvent(modALLProcess::sBreakpointEventName);
  if (!SharedMapOpen(RAM_BLOCK, false) || !SharedMapOpen(CONTROL_BLOCK, false)) return EXIT_FAILURE;

  for (int lIndex = 1; lIndex < lArguments; ++lIndex) {
    const std::string_view sWhat = apArgument[lIndex];
    const auto Next = [&] { return std::stoi(apArgument[++lIndex], nullptr, 16); };
    if (sWhat == "active") WriteControlField(ControlField::ActiveProgram, Next());
    if (sWhat == "ram") {
      const std::int32_t lAddress = Next();
      WriteRam(lAddress, std::array{static_cast<std::uint8_t>(Next())});
    }
    if (sWhat == "changed") SetRamChanged(0xFF);
    if (sWhat == "break") {
      WriteControlField(ControlField::BreakpointAddr, Next());
      modALLProcess::SignalEvent(modALLProcess::hBreakpointEvent);
    }
    if (sWhat == "up") {  // only signals from here on count
      platform::ResetNamedEvent(modALLProcess::hShowAddrEvent);
      std::cout << "up\n" << std::flush;
    }
    if (sWhat == "show") {
      while (!platform::WaitNamedEvent(modALLProcess::hShowAddrEvent)) {
        platform::SleepMilliseconds(1);
      }
      std::cout << "shown " << ReadControlField(ControlField::ShowAddr) << ' '
                << static_cast<int>(RamImage()[0]) << ' '
                << static_cast<int>(ProtectionMap()[0x8000]) << '\n'
                << std::flush;
    }
    if (sWhat == "seen") {  // the stand-in has taken notice of what was changed
      while (RamChanged() != 0) platform::SleepMilliseconds(1);
    }
    if (sWhat == "close") {
      WriteControlField(ControlField::ActiveProgram, 0);
      modALLProcess::SignalEvent(tClosed.hEvent);
    }
    if (sWhat == "status") return Next();
  }
  return EXIT_SUCCESS;
}
