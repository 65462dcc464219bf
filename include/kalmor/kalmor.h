#pragma once

// The whole public interface: the host database a design is read through, the user interface
// the export talks to, the two entry points, display-property text, the encoding of the host's
// texts, errors and version.

#include "kalmor/dbo.h"
#include "kalmor/dbo_state.h"
#include "kalmor/display_text.h"
#include "kalmor/errors.h"
#include "kalmor/export.h"
#include "kalmor/host_text.h"
#include "kalmor/types.h"
#include "kalmor/user_interface.h"
#include "kalmor/version.h"
