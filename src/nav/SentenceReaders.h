#pragma once
// The field parsers of the sentences, one per kind. Each takes the fields behind the sentence's
// name and the fix to fill; it returns whether the sentence was accepted. All but GLL and GGA
// fill a local copy and store it only when accepted; those two write each field as it passes.

#include <cstdint>

#include "core/TimeValue.h"
#include "nav/FieldScanner.h"
#include "nav/NavigationFix.h"

namespace halvo {

// `time` is the reading's time; its seconds become the record's stamp.
bool ReadGll(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadGga(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadZda(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadVtg(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadGxy(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadGgu(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadEvt(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadEma(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadHdg(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadRmc(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadRma(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadOsd(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadMtw(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadHdt(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadDpt(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadDbt(FieldCursor f, NavigationFix& fix, TimeValue time);

bool ReadTwc(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadPsimssb(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadPsimsns(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadAtitud(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadPositi(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadLogdvl(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadSpeed(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadDepin(FieldCursor f, NavigationFix& fix, TimeValue time);
bool ReadTime(FieldCursor f, NavigationFix& fix, TimeValue time);

// The ZDA year rule: 1990..2100 as is, 90..499 plus 1900, 0..89 plus 2000; false otherwise.
bool ZdaYear(int raw, int& year);

// Field helpers shared by both files of parsers.
namespace fields {

// A field to read when present: Absent (missing or empty), Bad (text the format cannot read or
// a value outside its limits) or Good.
enum class Read { Absent, Bad, Good };

Read Double(FieldCursor& f, double& out, double lo, double hi);
Read Float(FieldCursor& f, float& out);
Read Int(FieldCursor& f, int& out, int width, int lo, int hi);
Read Char(FieldCursor& f, char& out, const char* allowed = nullptr);
// "%2d%2d%f" with hour 0..24, minute 0..60, second 0..60 (or "%2i%2i%f" without limits).
Read Clock(FieldCursor& f, std::int32_t& hour, std::int32_t& minute, float& second,
           bool vendor = false);

inline bool Good(Read r) {
    return r == Read::Good;
}
inline bool Usable(Read r) {
    return r != Read::Bad;
}

// Stores a forwarded value with its time.
inline void Forward(TimedValue& v, double value, TimeValue time) {
    v.value = value;
    v.time = time;
    v.seen = true;
}

}  // namespace fields

}  // namespace halvo
