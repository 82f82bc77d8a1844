#pragma once

#include <memory>
#include <string>

#include "status/Beeper.h"
#include "system/HeadlessRunner.h"

namespace halvo {

// The alert tones written to a WAV file (--alarm-file); null for none, the sound system then.
std::unique_ptr<Beeper> AlarmFileBeeper(const std::string& file);

// Runs the windowless program until its duration ends or Ctrl-C / SIGTERM arrives, then the
// normal ending with save. Returns the exit code.
int RunHeadless(const HeadlessOptions& options);

}  // namespace halvo
