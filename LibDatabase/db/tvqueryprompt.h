#ifndef TVQUERYPROMPT_H
#define TVQUERYPROMPT_H

// TVQueryPrompt: a value that a query asks for before it runs. Its title
// names it in the query's text as "$<Title>"; the value starts as the
// default the text gave. A caller hands in a value with supply_value,
// which waits until pop_supplied takes it over (TVQuery::supply_prompts).
//
// Serial form: "Title", "Value", then TVObject's under "TVObject". A
// supplied value that was never taken is not stored.

#include "LibObject/object/tvobject.h"

#include <string>

class TVQueryPrompt : public TVObject
{
public:
    TVQueryPrompt();
    TVQueryPrompt(const std::string& title, const std::string& value);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;

    const std::string& get_title() const { return m_title; }
    const std::string& get_value() const { return m_value; }
    void set_value(const std::string& value) { m_value = value; }
    void supply_value(const std::string& value) { m_supplied = value; m_hasSupplied = true; }
    // Moves a supplied value into the value; nothing when none waits.
    void pop_supplied();

private:
    std::string m_title;
    std::string m_value;
    std::string m_supplied;
    bool m_hasSupplied = false;
};

#endif // TVQUERYPROMPT_H
