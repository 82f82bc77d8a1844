#pragma once
// The program's extensions in the order they were switched on. Nothing is ever removed, a null
// entry is passed over, and every walk goes from the first to the last. The names of the calls
// made are kept, in order, for the start-up log and for tests.

#include <string>
#include <vector>

namespace halvo {

class HalvoExtension;

class ExtensionList {
  public:
    void RegisterExtension(HalvoExtension* extension);

    void ReadSettings();
    void WriteSettings();
    void StartPhase(int phase);

    std::vector<std::string> Names() const;
    const std::vector<std::string>& Trace() const { return trace_; }

  private:
    template <typename Call>
    void Walk(const std::string& what, Call call);

    std::vector<HalvoExtension*> list_;
    std::vector<std::string> trace_;
};

}  // namespace halvo
