#pragma once

/// The signals by which users, shells and the system ask a program to end.
namespace platform {

/// Has a handler called for SIGINT, SIGTERM and, unless it is ignored as under nohup, SIGHUP.
/// @param lFlags  those of sigaction(2)
void HandleEndSignals(void (*fnHandler)(int), int lFlags);

/// From now on the first of these signals does not end the program but is kept for it. A second one
/// ends it at once, as if none were caught; but what comes within a quarter of a second is part of
/// the first: a terminal that closes brings SIGHUP from the shell and again from the system, and
/// service managers send SIGTERM and SIGHUP.
/// @return a descriptor that can be read once the first signal has come, open to the program's end;
///         -1 when the system has none left, and a signal ends the program as ever
int CatchFirstEndSignal();

}  // namespace platform
