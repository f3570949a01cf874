#ifndef TVERRORBASE_H
#define TVERRORBASE_H

#include <iosfwd>

// Small base for non-window classes that end the event loop on an error.
class TVErrorBase
{
public:
    TVErrorBase();
    virtual ~TVErrorBase();

    virtual void dump(std::ostream& out, int indent) const;

    // Leaves the event loop with value, or with the pending error's value
    // if value is negative; returns the same number.
    int on_error(int value);
};

#endif
