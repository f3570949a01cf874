#ifndef TVQUERYCONDDATE_H
#define TVQUERYCONDDATE_H

// A date expression (TVDateUtils::read_date) not before (min) or not
// after the condition's date. A value or date that won't read fails.
//
// Serial form: its own keys, then TVQueryCond's under "TVQueryCond".

#include "LibDatabase/db/tvquerycond.h"
#include "LibDate/core/tvdate.h"

#include <string>

class TVQueryCondDate : public TVQueryCond
{
public:
    TVQueryCondDate();
    // date is a date expression, read now (so "today" is the day of the parse).
    TVQueryCondDate(const std::string& objects, const std::string& field,
                    const std::string& date, bool min, const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;
    const TVDate& get_date() const { return m_date; }

private:
    TVDate m_date;
    bool m_min = true;
};

#endif // TVQUERYCONDDATE_H
