#include "cli/process_setup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

namespace kalmor::cli {

bool PrepareProcess() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    // open() takes the lowest free descriptor, which is `fd`.
    if (::fcntl(fd, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != fd) {
      return false;
    }
  }
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit descriptors{};
  if (::getrlimit(RLIMIT_NOFILE, &descriptors) == 0 &&
      descriptors.rlim_cur < descriptors.rlim_max) {
    descriptors.rlim_cur = descriptors.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &descriptors);
  }
  return true;
}

}  // namespace kalmor::cli
