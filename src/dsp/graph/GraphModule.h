#pragma once
// The graph page's part of the running program: its settings (section `Graph0`, loaded and saved
// with the displays), the taker, and the sonar map the taker counts channels by. The taker joins
// the data bus when the page is first shown and leaves it when the page goes or the program ends.

#include <memory>

#include "app/ModuleContext.h"
#include "app/SystemModule.h"
#include "dsp/graph/GraphSettings.h"
#include "dsp/graph/GraphTaker.h"

namespace halvo {

class SonarChannelMapIF;

class GraphModule final : public SystemModule {
  public:
    GraphModule(ModuleContext context, const SonarChannelMapIF* sonars)
        : context_(std::move(context)), settings_(context_.coordinator), taker_(sonars) {}
    ~GraphModule() override { Stop(); }

    std::string_view Name() const override { return "graph"; }
    void Load() override { settings_.Load(); }
    void Save() override { settings_.Save(); }
    void Stop() override { Leave(); }

    GraphSettings& Settings() { return settings_; }
    GraphTaker& Taker() { return taker_; }
    // Joins the data bus once; behind every observer already there.
    void Join();
    void Leave();
    bool Joined() const { return joined_; }

  private:
    ModuleContext context_;
    GraphSettings settings_;
    GraphTaker taker_;
    bool joined_ = false;
};

}  // namespace halvo
