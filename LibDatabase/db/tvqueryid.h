#ifndef TVQUERYID_H
#define TVQUERYID_H

// TVQueryId: the objects behind one row of a query's result, in the order
// of the query's conditions, so that a window can go from a row to its
// objects. Rows that a summary adds carry one negative id (never an
// object's). A query without conditions gives one row with no ids.
//
// Serial form: "i", one id per entry, then TVObject's under "TVObject".

#include "LibObject/core/tvid.h"
#include "LibObject/object/tvobject.h"

#include <vector>

class TVQueryId : public TVObject
{
public:
    TVQueryId();
    explicit TVQueryId(const std::vector<TVId>& ids);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;

    const std::vector<TVId>& get_ids() const { return m_ids; }
    // The first object's id; -1 for a row without objects.
    int first_id() const { return m_ids.empty() ? -1 : m_ids.front().get_id(); }

private:
    std::vector<TVId> m_ids;
};

#endif // TVQUERYID_H
