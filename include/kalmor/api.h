#pragma once

// KALMOR_API marks what the shared library exports: the classes and functions of these public
// headers. Everything else is built hidden, so that no internal name or template instance
// becomes part of the library's interface.

#if defined(__GNUC__) || defined(__clang__)
#define KALMOR_API __attribute__((visibility("default")))
#else
#define KALMOR_API
#endif
