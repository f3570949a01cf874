#ifndef TVDBSCRIPTCACHE_H
#define TVDBSCRIPTCACHE_H

// TVDBScriptCache: the results of the "$=(...)" expressions of one
// variable's text, by their place in the text. An expression is evaluated
// again only when its text at that place has changed, so a value that
// depends on the clock keeps its first result until its inputs change.
// A plain value: copying a variable copies its cache. Every cache of a
// thread evaluates in one shared engine, each expression in a context of
// its own.

#include <string>
#include <vector>

class TVDBScriptCache
{
public:
    void set_defaults(bool constructing);
    // The result of expression, the index-th of its text: the stored one
    // when the same text was evaluated there last, else a fresh
    // evaluation's (an exception's text on failure). Needs a
    // QCoreApplication; without one the result says so.
    std::string evaluate(const std::string& expression, int index);
    int size() const { return static_cast<int>(m_entries.size()); }

private:
    struct Entry
    {
        std::string m_expression;
        std::string m_result;
        bool m_set = false;
    };
    std::vector<Entry> m_entries;
};

#endif // TVDBSCRIPTCACHE_H
