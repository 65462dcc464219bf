#pragma once

// What kalmor does when it is interrupted (SIGINT) or asked to stop (SIGTERM): the file it was
// writing is removed, unless it is a page file that was already complete, a line says what
// was finished, and the process exits with 128 plus the signal's number (130, 143).

#include <string>

namespace kalmor::cli {

void InstallInterruptionHandlers();

// The file being written from now on, and the lines to print should the process be stopped
// while it is being written (`ifIncomplete`, after the file is removed) or after it was
// completed (`ifComplete`: only a page file can be seen to be complete, by its last record).
struct OutputInProgress {
  std::string path;
  bool isPageFile = false;
  std::string ifIncomplete;
  std::string ifComplete;
};
void BeginOutput(const OutputInProgress& output);
// No file is being written any more: an interruption only says so.
void EndOutput();

// Ends the tracking of outputs when it leaves its scope, also by an exception: a file whose
// write failed is kept as the failure left it.
class OutputTracking {
 public:
  OutputTracking() = default;
  ~OutputTracking() { EndOutput(); }
  OutputTracking(const OutputTracking&) = delete;
  OutputTracking& operator=(const OutputTracking&) = delete;
};

}  // namespace kalmor::cli
