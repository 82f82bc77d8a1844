#pragma once
// The message boxes of the windows: a notice with an OK, and a question with Yes and No. The
// GUI shows them as modal boxes; tests script the operator's answers.

#include <string_view>

#include "app/Notifier.h"

namespace halvo {

class OperatorPrompts : public Notifier {
  public:
    // True for Yes.
    virtual bool AskYesNo(std::string_view title, std::string_view text) = 0;
};

}  // namespace halvo
