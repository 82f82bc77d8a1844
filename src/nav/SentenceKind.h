#pragma once
// The sentence kinds the parser knows, in the order it tests them, and its result.

#include <cstdint>
#include <string_view>

namespace halvo {

enum class SentenceKind : std::uint8_t {
    None = 0,
    GLL,
    GGA,
    ZDA,
    VTG,
    GXY,
    GGU,
    EVT,
    EMA,
    HDG,
    RMC,
    RMA,
    OSD,
    MTW,
    HDT,
    DPT,
    DBT,
    TWC,
    PSIMSSB,
    PSIMSNS,
    ATITUD,
    POSITI,
    LOGDVL,
    SPEED_,
    DEPIN_,
    TIME__,
};

// "GLL", "PSIMSSB", "ATITUD" ... and "" for None.
std::string_view SentenceKindName(SentenceKind kind);

// What the dispatcher made of a sentence: which parser took it (None when no name matched) and
// whether that parser accepted it. Only an accepted sentence changes the fix.
struct SentenceResult {
    SentenceKind kind = SentenceKind::None;
    bool accepted = false;
    explicit operator bool() const { return accepted; }
};

}  // namespace halvo
