#pragma once

#include <string>

#include "input/shown_text.h"  // names in complaints: Abbreviated, Quoted

namespace kalmor::model::detail {

// A complaint about a design document: where (a JSON pointer) and what.
struct DocumentFault {
  std::string pointer;
  std::string message;
};

}  // namespace kalmor::model::detail
