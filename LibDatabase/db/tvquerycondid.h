#ifndef TVQUERYCONDID_H
#define TVQUERYCONDID_H

// An object id; -1 passes everything.
//
// Serial form: its own keys, then TVQueryCond's under "TVQueryCond".

#include "LibDatabase/db/tvquerycond.h"

#include <string>

class TVQueryCondId : public TVQueryCond
{
public:
    static const char* const C_QueryID; // "ID"

    TVQueryCondId();
    TVQueryCondId(const std::string& objects, int id, const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

private:
    int m_id = -1;
};

#endif // TVQUERYCONDID_H
