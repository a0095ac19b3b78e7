#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What a console program needs to serve commands, a program that it started and a wish to end, all
/// from one thread.
namespace platform {

/// From now on a request to end (Linux: SIGINT, SIGQUIT, SIGTERM, and SIGHUP unless it was ignored;
/// Windows: Ctrl+C, Ctrl+Break, a closed console) no longer ends the program but is remembered, and
/// output that nobody reads any more is an error of the write.
void CatchEndRequests();

/// The exit status by which a shell tells of such an end (128 plus the signal's number: 130 for
/// Ctrl+C), once one was requested.
std::optional<std::int32_t> EndRequested();

/// Starts a program without waiting for it, with an empty standard input and this program's output
/// streams.
/// @param asCommand  the program, found as a shell finds it, and its arguments; not empty
/// @return a number for ProcessStatus, or 0 with the reason in sError
std::uint32_t StartProcess(const std::vector<std::string>& asCommand, std::string& sError);

/// The exit status of a started program as a shell gives it (128 plus the signal's number when a
/// signal ended it); none while it runs. Not to be asked again once it was given.
std::optional<std::int32_t> ProcessStatus(std::uint32_t hProcess);

/// Waits for standard input.
/// @param lMilliseconds  how long at most; an end request cuts the wait short
/// @return what has arrived, empty when nothing did; none when the input has ended
std::optional<std::string> ReadStandardInput(std::uint32_t lMilliseconds);

}  // namespace platform
