#pragma once

// What the kalmor process puts right before it opens any file.

namespace kalmor::cli {

// Opens /dev/null on any of the descriptors 0, 1 and 2 that is closed, so that no file the
// command opens takes the place of standard output and receives its messages; ignores the
// file-size-limit signal, so that a write beyond the limit fails as a write error that names
// the file; and raises the soft limit of open descriptors to the hard one, since a design
// export keeps every page file open until it reports completion. False when a standard
// descriptor is closed and cannot be filled: nothing may be opened then.
bool PrepareProcess();

}  // namespace kalmor::cli
