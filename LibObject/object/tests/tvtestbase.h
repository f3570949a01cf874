#ifndef TVTESTBASE_H
#define TVTESTBASE_H

// A registrable class of the tests, and the base of TVTestItem: its
// members stand in a derived object's lines under the prefix "TVTestBase".
//
//   "K"  int, default 0, found by suffix too (the class may be renamed)
//   "N"  text, left out when empty

#include "LibObject/object/tvobject.h"

#include <string>

class TVTestBase : public TVObject
{
public:
    TVTestBase();
    TVTestBase(const TVTestBase& other) = default;
    TVTestBase& operator=(const TVTestBase& other) = default;
    ~TVTestBase() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;

    int m_key = 0;
    std::string m_name;
};

#endif // TVTESTBASE_H
