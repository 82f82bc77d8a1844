#pragma once
// What the system asks of a part it runs: its settings in at every load, out at every save, a
// start (where it attaches to the buses and the line sink, so its place on them follows the fixed
// start order) and a stop (where it lets go of them again). The outputs and other parts added
// after the core register as one of these; the system then keeps only their order.

#include <string_view>

namespace halvo {

class SystemModule {
  public:
    virtual ~SystemModule() = default;
    virtual std::string_view Name() const = 0;
    virtual void Load() {}
    virtual void Save() {}
    virtual void Start() {}
    // Called once, in the reverse of the start order, while the buses still run.
    virtual void Stop() {}
};

}  // namespace halvo
