#ifndef TVSIGNAL_H
#define TVSIGNAL_H

// TVSignal: the base of the three signal shapes. A signal has no state;
// its identity is its address, so a sender holds its signals as members
// and a copy of a signal (a new address) is a different signal: a
// connection never follows a copy. Signals of one object are told apart
// the same way.

#include <iosfwd>

class TVSignal
{
public:
    TVSignal() = default;
    TVSignal(const TVSignal&) = default;
    TVSignal& operator=(const TVSignal&) = default;
    virtual ~TVSignal() = default;

    virtual void dump(std::ostream& out, int indent) const;

    // Signals hold no value, so any two compare equal; identity is the address.
    bool operator==(const TVSignal&) const { return true; }
};

#endif // TVSIGNAL_H
