#include "dsp/graph/GraphModule.h"

#include "core/MessageProcessor.h"

namespace halvo {

void GraphModule::Join() {
    if (joined_) return;
    joined_ = true;
    context_.dataBus.Attach(&taker_);
}

void GraphModule::Leave() {
    if (!joined_) return;
    joined_ = false;
    context_.dataBus.Detach(&taker_);
}

}  // namespace halvo
