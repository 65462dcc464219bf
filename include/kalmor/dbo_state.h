#pragma once

#include <cstdint>

namespace kalmor {

// The host database's status object: every database call fills it in. The export creates one
// per walk and rarely looks at it; host failures mostly show as null results.
class DboState {
 public:
  enum Code : int32_t { kOK = 0, kFailed = 1 };

  DboState() = default;
  explicit DboState(Code code) : code_(code) {}

  bool OK() const { return code_ == kOK; }
  Code GetCode() const { return code_; }
  void SetOK() { code_ = kOK; }
  void SetFailed() { code_ = kFailed; }

 private:
  Code code_ = kOK;
};

}  // namespace kalmor
