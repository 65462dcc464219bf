#pragma once

// What a call throws, for the tests of errors: the exception of the expected type, or nothing
// when the call returns. Any other exception escapes and fails the test with its own words.

#include <optional>
#include <string>
#include <utility>

namespace kalmor::test {

template <typename Error, typename Call>
std::optional<Error> Thrown(Call&& call) {
  try {
    std::forward<Call>(call)();
  } catch (const Error& error) {
    return error;
  }
  return std::nullopt;
}

// The message of the Error `call` throws, or "(nothing thrown)".
template <typename Error, typename Call>
std::string ThrownMessage(Call&& call) {
  const std::optional<Error> error = Thrown<Error>(std::forward<Call>(call));
  return error ? error->what() : "(nothing thrown)";
}

}  // namespace kalmor::test
