#include "platform/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace platform {

namespace {

bool Print(std::FILE* pStream, const std::string& sText) {
  return std::fputs(sText.c_str(), pStream) >= 0 && std::fflush(pStream) == 0;
}

}  // namespace

void SecureStandardStreams() {
  // A path opened for nothing can neither be read nor written. A started program is to have the
  // numbers taken as well, so nothing is closed on exec.
  int hOpened = -1;
  do {
    hOpened = ::open("/", O_PATH);
  } while (hOpened >= 0 && hOpened <= STDERR_FILENO);
  if (hOpened >= 0) ::close(hOpened);
}

// POSIX knows no other streams than binary ones.
void SetBinaryStandardStreams() {}

bool IsOutputTerminal() { return ::isatty(STDOUT_FILENO) == 1; }

bool PrintOutput(const std::string& sText) { return Print(stdout, sText); }

bool PrintError(const std::string& sText) { return Print(stderr, sText); }

}  // namespace platform
