#pragma once

// A user interface that keeps what it is shown: the dialogs it is asked, the progress of a design
// export, and its messages, each with the state of the page files when it came.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <vector>

#include "kalmor/user_interface.h"
#include "support/paths.h"

namespace kalmor::test {

class RecordingUserInterface final : public UserInterface {
 public:
  struct Message {
    std::string caption;
    std::string text;
    unsigned style = 0;
    std::vector<std::string> bytes;  // of each of `files`, then of `watched`
    int held = 0;                    // how many of those a second writer could not lock
  };

  void MessageBox(std::string_view caption, std::string_view text, unsigned style) override {
    Message message{std::string(caption), std::string(text), style, {}, 0};
    std::vector<std::string> paths = files;
    if (!watched.empty()) {
      paths.push_back(watched);
    }
    for (const std::string& path : paths) {
      message.bytes.push_back(ReadFileBytes(path));
      const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
      message.held += fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) != 0 ? 1 : 0;
      close(fd);
    }
    messages.push_back(message);
  }
  std::optional<std::string> SaveFileDialog(const SaveFileDialogSettings& settings) override {
    dialogs.push_back(settings);
    return answer;
  }
  bool AppendToSessionLog(std::string_view) override { return false; }
  bool WantsExportProgress() const override { return true; }
  void ShowExportProgress(const ExportProgress& shown) override {
    progress.push_back(shown);
    files.push_back(shown.fileName);
  }

  std::vector<Message> messages;
  std::vector<SaveFileDialogSettings> dialogs;
  std::optional<std::string> answer;  // of the save dialog
  std::vector<ExportProgress> progress;
  std::vector<std::string> files;  // announced by the progress
  std::string watched;             // one more file to look at
};

}  // namespace kalmor::test
