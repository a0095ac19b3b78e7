#pragma once

#include <cstdint>
#include <stdexcept>

namespace modALLProcess {

/// An error with a number, which messages show in decimal before the description. Numbers and
/// descriptions are the suite's common ones: 9, 13, 53, 62, 75 as file and table errors always had,
/// and 80040001H up for errors of the suite's own.
class RuntimeError : public std::runtime_error {
 public:
  RuntimeError(std::int32_t lErrorNumber, const char* sDescription)
      : std::runtime_error(sDescription), lNumber(lErrorNumber) {}

  std::int32_t Number() const { return lNumber; }

 private:
  std::int32_t lNumber;
};

}  // namespace modALLProcess
