#include "platform/StandardStreams.h"

#include <cstdio>

namespace platform {

namespace {

bool Print(std::FILE* pStream, const std::string& sText) {
  return std::fputs(sText.c_str(), pStream) >= 0 && std::fflush(pStream) == 0;
}

}  // namespace

// POSIX knows no other streams than binary ones.
void SetBinaryStandardStreams() {}

bool PrintOutput(const std::string& sText) { return Print(stdout, sText); }

bool PrintError(const std::string& sText) { return Print(stderr, sText); }

}  // namespace platform
