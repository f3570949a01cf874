#ifndef TVQUERYCONDTEXT_H
#define TVQUERYCONDTEXT_H

// The value is exactly this text.
//
// Serial form: its own keys, then TVQueryCond's under "TVQueryCond".

#include "LibDatabase/db/tvquerycond.h"

#include <string>

class TVQueryCondText : public TVQueryCond
{
public:
    TVQueryCondText();
    TVQueryCondText(const std::string& objects, const std::string& field, const std::string& text,
                    const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

private:
    std::string m_text;
};

#endif // TVQUERYCONDTEXT_H
