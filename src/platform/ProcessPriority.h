#pragma once
// The process's scheduling priority, high or normal. Linux keeps a nice value per thread and a
// call for the process changes only the caller's, so a change goes to every thread there is now;
// threads made later take the value of the thread that makes them. The change is a shift, so a
// thread that runs below its neighbours on purpose stays below them, as threads keep their
// place within a priority class elsewhere.

namespace halvo {

class ProcessPriority {
  public:
    static constexpr int kHighShift = -5;

    // Moves every thread of the process by `shift` nice steps (negative is higher priority).
    // Returns the number of threads that refused: raising priority needs the privilege, and
    // without it a refusal is the normal case.
    static int Shift(int shift);
};

}  // namespace halvo
