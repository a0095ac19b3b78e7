#include "platform/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include "platform/linux/EndSignals.h"

namespace platform {

namespace {

constexpr std::int32_t SIGNAL_STATUS = 128;

volatile std::sig_atomic_t lCaughtSignal = 0;

void NoteSignal(int lSignal) { lCaughtSignal = lSignal; }

void Handle(int lSignal, void (*fnHandler)(int)) {
  struct sigaction tAction = {};
  tAction.sa_handler = fnHandler;
  sigaction(lSignal, &tAction, nullptr);
}

}  // namespace

void CatchEndRequests() {
  HandleEndSignals(NoteSignal, 0);  // no SA_RESTART: poll must come back
  Handle(SIGQUIT, NoteSignal);
  Handle(SIGPIPE, SIG_IGN);
  Handle(SIGCHLD, SIG_DFL);  // where it is inherited as ignored, no child's status is kept
}

std::optional<std::int32_t> EndRequested() {
  const std::int32_t lSignal = lCaughtSignal;
  if (lSignal == 0) return std::nullopt;
  return SIGNAL_STATUS + lSignal;
}

std::uint32_t StartProcess(const std::vector<std::string>& asCommand, std::string& sError) {
  std::vector<std::string> asArgument = asCommand;  // argv is not const
  std::vector<char*> apArgument;
  apArgument.reserve(asArgument.size() + 1);
  for (std::string& sArgument : asArgument) apArgument.push_back(sArgument.data());
  apArgument.push_back(nullptr);

  posix_spawn_file_actions_t tActions;
  posix_spawnattr_t tAttributes;
  posix_spawn_file_actions_init(&tActions);
  posix_spawnattr_init(&tAttributes);
  posix_spawn_file_actions_addopen(&tActions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  // An ignored signal stays ignored in a new program, a caught one does not.
  sigset_t tDefault;
  sigemptyset(&tDefault);
  sigaddset(&tDefault, SIGPIPE);
  posix_spawnattr_setsigdefault(&tAttributes, &tDefault);
  posix_spawnattr_setflags(&tAttributes, POSIX_SPAWN_SETSIGDEF);
  pid_t hProcess = 0;
  const int lError = posix_spawnp(&hProcess, apArgument.front(), &tActions, &tAttributes,
                                  apArgument.data(), environ);
  posix_spawnattr_destroy(&tAttributes);
  posix_spawn_file_actions_destroy(&tActions);
  if (lError != 0) {
    sError = std::generic_category().message(lError);
    return 0;
  }
  return static_cast<std::uint32_t>(hProcess);
}

std::optional<std::int32_t> ProcessStatus(std::uint32_t hProcess) {
  int lStatus = 0;
  if (waitpid(static_cast<pid_t>(hProcess), &lStatus, WNOHANG) <= 0) return std::nullopt;
  return WIFSIGNALED(lStatus) ? SIGNAL_STATUS + WTERMSIG(lStatus) : WEXITSTATUS(lStatus);
}

std::optional<std::string> ReadStandardInput(std::uint32_t lMilliseconds) {
  // A program in the background of a terminal is stopped when it reads what is typed to others.
  const pid_t hForeground = tcgetpgrp(STDIN_FILENO);
  if (hForeground != -1 && hForeground != getpgrp()) {
    poll(nullptr, 0, static_cast<int>(lMilliseconds));
    return "";
  }
  struct pollfd tInput = {STDIN_FILENO, POLLIN, 0};
  if (poll(&tInput, 1, static_cast<int>(lMilliseconds)) <= 0) return "";
  std::array<char, 4096> abBuffer{};
  const ssize_t lRead = read(STDIN_FILENO, abBuffer.data(), abBuffer.size());
  if (lRead > 0) return std::string(abBuffer.data(), static_cast<std::size_t>(lRead));
  if (lRead < 0 && (errno == EINTR || errno == EAGAIN)) return "";
  return std::nullopt;
}

}  // namespace platform
