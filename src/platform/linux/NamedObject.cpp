#include "platform/linux/NamedObject.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

namespace platform {

namespace {

constexpr off_t SETUP_BYTE = 0;
constexpr off_t IN_USE_BYTE = 1;

constexpr std::size_t MAX_NAME = 32767;
// Leaves room for the hash and what stands in front in a file name of 255 bytes.
constexpr std::size_t MAX_ESCAPED = 160;

constexpr const char* SHARED_MEMORY_FOLDER = "/dev/shm";

std::string FileNamePrefix() { return "varnel-" + std::to_string(::geteuid()) + "-"; }

void AppendHex(std::string& sText, std::uint64_t lValue, int lDigits) {
  for (int lShift = 4 * (lDigits - 1); lShift >= 0; lShift -= 4) {
    sText += "0123456789abcdef"[(lValue >> static_cast<unsigned>(lShift)) & 0xFU];
  }
}

// FNV-1a with 64 bits; over a text and over the same text backwards it gives two unlike numbers.
template <typename Iterator>
std::uint64_t Hash(Iterator itFirst, Iterator itEnd) {
  std::uint64_t lHash = 0xCBF29CE484222325U;
  for (; itFirst != itEnd; ++itFirst) {
    lHash = (lHash ^ static_cast<unsigned char>(*itFirst)) * 0x100000001B3U;
  }
  return lHash;
}

bool IsOwn(const FileDescriptor& tFile) {
  const auto tStatus = tFile.Status();
  return tStatus && S_ISREG(tStatus->st_mode) && tStatus->st_uid == ::geteuid();
}

bool LockSetup(const FileDescriptor& tFile) {
  return tFile.Lock(F_OFD_SETLKW, F_WRLCK, SETUP_BYTE, 1);
}

// Makes a file nothing but lSize zeros, with its memory set aside: a write into a sparse file
// would kill the writer when the memory has run out.
int Clear(const FileDescriptor& tFile, std::uint32_t lSize) {
  if (::ftruncate(tFile.Get(), 0) != 0) return errno;
  int lError = EINTR;
  while (lError == EINTR) {
    lError = ::posix_fallocate(tFile.Get(), 0, static_cast<off_t>(lSize));
  }
  return lError;
}

// Removes this user's objects that no process uses.
void RemoveStaleObjects() {
  std::error_code tIgnored;
  for (std::filesystem::directory_iterator tEntry(SHARED_MEMORY_FOLDER, tIgnored), tEnd;
       tEntry != tEnd; tEntry.increment(tIgnored)) {
    const std::string sName = tEntry->path().filename();
    if (!sName.starts_with(FileNamePrefix())) continue;
    const FileDescriptor tFile(::shm_open(sName.c_str(), O_RDWR, 0));
    // Whoever has the set-up lock is opening or closing the object, and will do right by it.
    if (IsOwn(tFile) && tFile.Lock(F_OFD_SETLK, F_WRLCK, SETUP_BYTE, 1) && tFile.HasName() &&
        !tFile.LockedElsewhere(IN_USE_BYTE)) {
      ::shm_unlink(sName.c_str());
    }
  }
}

FileDescriptor Failed(int lError) {
  SetLastSystemError(lError);
  return {};
}

}  // namespace

std::string NamedObject::FileName(std::string_view sKind, std::string_view sName) {
  if (sName.empty() || sName.size() > MAX_NAME || sName.find('\0') != std::string_view::npos) {
    return {};
  }
  std::string sEscaped;
  for (const char bCharacter : sName) {
    const bool bPlain = (bCharacter >= '0' && bCharacter <= '9') ||
                        (bCharacter >= 'A' && bCharacter <= 'Z') ||
                        (bCharacter >= 'a' && bCharacter <= 'z') || bCharacter == '_';
    if (bPlain) {
      sEscaped += bCharacter;
    } else {
      sEscaped += '%';
      AppendHex(sEscaped, static_cast<unsigned char>(bCharacter), 2);
    }
  }
  if (sEscaped.size() > MAX_ESCAPED) {
    sEscaped.resize(MAX_ESCAPED);
    sEscaped += '~';
    AppendHex(sEscaped, Hash(sName.begin(), sName.end()), 16);
    AppendHex(sEscaped, Hash(sName.rbegin(), sName.rend()), 16);
  }
  return "/" + FileNamePrefix() + std::string(sKind) + "-" + sEscaped;
}

FileDescriptor NamedObject::Open(const std::string& sFileName, std::uint32_t lSize) {
  static const bool bSwept = (RemoveStaleObjects(), true);
  static_cast<void>(bSwept);
  if (sFileName.empty()) return Failed(EINVAL);
  const bool bCreate = lSize != 0;
  for (;;) {
    // shm_open itself sets close-on-exec and refuses symbolic links.
    FileDescriptor tFile(::shm_open(sFileName.c_str(), O_RDWR | (bCreate ? O_CREAT : 0), 0600));
    if (!tFile.IsOpen()) return Failed(errno);
    if (!IsOwn(tFile)) return Failed(EACCES);
    if (!LockSetup(tFile)) return Failed(errno);
    // Its last user may have removed the file between opening and lock; the name is free then.
    if (!tFile.HasName()) continue;
    if (!tFile.LockedElsewhere(IN_USE_BYTE)) {
      const int lError = bCreate ? Clear(tFile, lSize) : ENOENT;
      if (lError != 0) {
        ::shm_unlink(sFileName.c_str());
        return Failed(lError);
      }
    }
    if (!tFile.Lock(F_OFD_SETLK, F_RDLCK, IN_USE_BYTE, 1) ||
        !tFile.Lock(F_OFD_SETLK, F_UNLCK, SETUP_BYTE, 1)) {
      return Failed(errno);
    }
    return tFile;
  }
}

NamedObject::NamedObject(FileDescriptor tOpened, std::string sFileNameOpened)
    : tFile(std::move(tOpened)), sFileName(std::move(sFileNameOpened)), lProcess(::getpid()) {}

NamedObject::~NamedObject() {
  // A forked process has its parent's opening, locks and all, and must not judge by them.
  if (::getpid() != lProcess) return;
  if (LockSetup(tFile) && tFile.HasName() && !tFile.LockedElsewhere(IN_USE_BYTE)) {
    ::shm_unlink(sFileName.c_str());
  }
  // Closing alone would not do: a view keeps the opening, and so its locks, alive.
  tFile.Lock(F_OFD_SETLK, F_UNLCK, SETUP_BYTE, IN_USE_BYTE - SETUP_BYTE + 1);
}

std::size_t NamedObject::Size() const {
  const auto tStatus = tFile.Status();
  return tStatus ? static_cast<std::size_t>(tStatus->st_size) : 0;
}

std::uint8_t* NamedObject::Map(std::size_t lBytes) const {
  void* const pView = ::mmap(nullptr, lBytes, PROT_READ | PROT_WRITE, MAP_SHARED, tFile.Get(), 0);
  if (pView == MAP_FAILED) {
    SetLastSystemError(errno);
    return nullptr;
  }
  return static_cast<std::uint8_t*>(pView);
}

}  // namespace platform
