#ifndef TVQUERYCONDSPEC_H
#define TVQUERYCONDSPEC_H

// The object's spec is this one or derives from it; with the qualifier
// "Exact" set, only the spec of this very name.
//
// Serial form: its own keys, then TVQueryCond's under "TVQueryCond".

#include "LibDatabase/db/tvquerycond.h"

#include <string>

class TVQueryCondSpec : public TVQueryCond
{
public:
    static const char* const C_QuerySpec; // "ObjectSpec"
    static const char* const C_QualExact; // "Exact"

    TVQueryCondSpec();
    TVQueryCondSpec(const std::string& objects, const std::string& spec,
                    const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

private:
    std::string m_spec;
};

#endif // TVQUERYCONDSPEC_H
