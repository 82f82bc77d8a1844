#pragma once
// Which controls are usable, by one word of 64 enable bits: each registered control carries a
// mask and is enabled while its mask meets the bits. One change of a bit thus enables or
// disables every control that depends on it, in every page, without any page being told.
// One table belongs to the window side of the program and is handed to every page.

#include <QPointer>
#include <QWidget>
#include <cstdint>
#include <vector>

namespace halvo {

class EnableTable {
  public:
    // The control takes its state from the current bits at once.
    void Register(QWidget* control, std::uint64_t mask);
    std::uint64_t Bits() const { return bits_; }
    void SetBits(std::uint64_t bits);
    void SetBit(int bit, bool on);
    std::size_t Size() const { return entries_.size(); }

  private:
    struct Entry {
        QPointer<QWidget> control;
        std::uint64_t mask = 0;
        int applied = -1;  // last state set: -1 none yet, 0 disabled, 1 enabled
    };
    void Apply(Entry& e);

    std::vector<Entry> entries_;
    std::uint64_t bits_ = 0;
};

}  // namespace halvo
