#include "kalmor/user_interface.h"

namespace kalmor {
namespace {

SilentUserInterface g_silent;
UserInterface* g_current = &g_silent;

}  // namespace

UserInterface& CurrentUserInterface() {
  return *g_current;
}

ScopedUserInterface::ScopedUserInterface(UserInterface& ui) : previous_(g_current) {
  g_current = &ui;
}

ScopedUserInterface::~ScopedUserInterface() {
  g_current = previous_;
}

}  // namespace kalmor
