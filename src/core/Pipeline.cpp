#include "core/Pipeline.h"

#include <iterator>

namespace halvo {

void Pipeline::Attach(MessageObserver* observer) {
    if (observer) observers_.push_back(observer);
}

void Pipeline::Detach(MessageObserver* observer) {
    for (auto it = observers_.begin(); it != observers_.end(); ++it) {
        if (*it != observer) continue;
        if (walking_ > 0) {
            *it = nullptr;
            needPurge_ = true;
        } else {
            observers_.erase(it);
        }
        return;
    }
}

std::vector<MessageObserver*> Pipeline::Observers() const {
    std::vector<MessageObserver*> out;
    for (MessageObserver* o : observers_) {
        if (o) out.push_back(o);
    }
    return out;
}

void Pipeline::Walk(Stage stage, SonarMessage* message, int source, std::uint32_t extra) {
    ++walking_;
    for (auto it = observers_.begin(); it != observers_.end();) {
        if (stopped_.load()) break;
        auto next = std::next(it);
        if (MessageObserver* o = *it) (o->*stage)(message, source, extra);
        it = next;
    }
    if (--walking_ == 0 && needPurge_) {
        observers_.remove(nullptr);
        needPurge_ = false;
    }
}

void Pipeline::Dispatch(SonarMessage& message, int source, std::uint32_t extra) {
    Walk(&MessageObserver::PreviewMessage, message ? &message : nullptr, source, extra);
    if (message) {
        if (arrival_) arrival_(message, source);
        if (SonarMessage normalised = Normalise(message, utcNow_)) message = std::move(normalised);
        if (message && gate_ && !gate_(message, source)) return;
    }
    SonarMessage* p = message ? &message : nullptr;
    Walk(&MessageObserver::ProcessMessage, p, source, extra);
    Walk(&MessageObserver::DeliverMessage, p, source, extra);
}

}  // namespace halvo
