#pragma once

#include "system/HeadlessRunner.h"

namespace halvo {

// Runs the windowless program until its duration ends or Ctrl-C / SIGTERM arrives, then the
// normal ending with save. Returns the exit code.
int RunHeadless(const HeadlessOptions& options);

}  // namespace halvo
