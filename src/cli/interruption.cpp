#include "cli/interruption.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <string_view>

#include "dxf/skeleton.h"

namespace kalmor::cli {
namespace {

// The handler may only read what is complete: the output being described is filled in the
// slot not in use, then the slot in use is switched with one store.
OutputInProgress g_slots[2];
volatile std::sig_atomic_t g_current = -1;  // -1: nothing being written

void WriteAll(std::string_view text) {
  while (!text.empty()) {
    const ssize_t n = ::write(STDERR_FILENO, text.data(), text.size());
    if (n <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(n));
  }
}

// Whether the file ends with the page end record; only async-signal-safe calls.
bool IsCompletePageFile(const char* path) {
  const int fd = ::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) {
    return false;
  }
  char tail[kDxfFileEnd.size()];
  const auto size = static_cast<off_t>(sizeof tail);
  const bool complete = ::lseek(fd, -size, SEEK_END) >= 0 &&
                        ::read(fd, tail, sizeof tail) == size &&
                        std::memcmp(tail, kDxfFileEnd.data(), sizeof tail) == 0;
  ::close(fd);
  return complete;
}

extern "C" void OnInterruption(int signal) {
  const int current = g_current;
  if (current < 0) {
    WriteAll("kalmor: interrupted\n");
  } else {
    const OutputInProgress& output = g_slots[current];
    if (output.isPageFile && IsCompletePageFile(output.path.c_str())) {
      WriteAll(output.ifComplete);
    } else {
      ::unlink(output.path.c_str());
      WriteAll(output.ifIncomplete);
    }
  }
  ::_exit(128 + signal);
}

}  // namespace

void InstallInterruptionHandlers() {
  struct sigaction action {};
  action.sa_handler = &OnInterruption;
  sigemptyset(&action.sa_mask);
  // Either signal arriving while the other is handled waits: one report, one exit.
  sigaddset(&action.sa_mask, SIGINT);
  sigaddset(&action.sa_mask, SIGTERM);
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
}

void BeginOutput(const OutputInProgress& output) {
  const int next = g_current == 0 ? 1 : 0;
  g_slots[next] = output;
  std::atomic_signal_fence(std::memory_order_release);
  g_current = next;
}

void EndOutput() {
  g_current = -1;
}

}  // namespace kalmor::cli
