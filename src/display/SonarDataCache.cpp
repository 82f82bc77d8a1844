#include "display/SonarDataCache.h"

namespace halvo {

SonarDataCache::SonarDataCache(int capacity) {
    Resize(capacity);
}

void SonarDataCache::Add(SharedLine line) {
    ++total_;
    if (slots_.empty()) return;
    slots_[static_cast<std::size_t>(head_)] = std::move(line);
    head_ = (head_ + 1) % Capacity();
}

const SonarDataCacheElement* SonarDataCache::Get(int age) const {
    const int capacity = Capacity();
    if (age >= capacity - kGuardSlots || capacity == 0) return nullptr;
    int index = (head_ - age + capacity - 1) % capacity;
    if (index < 0) index = 0;
    return slots_[static_cast<std::size_t>(index)].get();
}

void SonarDataCache::Resize(int n) {
    slots_.clear();
    slots_.resize(static_cast<std::size_t>(n > 0 ? n : 0));
    head_ = 0;
}

}  // namespace halvo
