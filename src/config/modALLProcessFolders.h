#pragma once

#include <string>

/// The two folders of the suite. Paths carry no trailing separator. Nothing is cached: a folder
/// that vanished is made again when it is asked for.
namespace modALLProcess {

/// The folder of the lasting settings: VARNEL under the user's data folder, made when missing.
/// Throws RuntimeError 75 when there is nothing under that path and it cannot be made, or when a
/// folder stands there that another user owns or can write, or could have led there by a link.
std::string LocalAppFolder();

/// The folder through which the emulator hands files to its companions: VARNEL under the user's
/// temporary folder. Made, and fails, as LocalAppFolder.
std::string TempFolder();

}  // namespace modALLProcess
