#ifndef TVTESTNOTE_H
#define TVTESTNOTE_H

// A registrable class of the tests whose members have no default, so both
// are always written:
//
//   "w"  int without a default
//   "x"  text, written even when empty

#include "LibObject/object/tvobject.h"

#include <string>

class TVTestNote : public TVObject
{
public:
    TVTestNote();
    TVTestNote(const TVTestNote& other) = default;
    TVTestNote& operator=(const TVTestNote& other) = default;
    ~TVTestNote() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;

    int m_weight = 0;
    std::string m_text;
};

#endif // TVTESTNOTE_H
