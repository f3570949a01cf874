#ifndef TVOBJECTINDEXENTRY_H
#define TVOBJECTINDEXENTRY_H

// One class of the class index: its id, the name under which it stands in
// streams, and its factory.

#include <cstdio>
#include <string>

class TVObject;

// The factory every registrable class has as its static create_tvobject.
// With source null it news a default instance into out; otherwise it news a
// copy of source, which must be of the class (else TVErrC_DynamicCast).
// The caller owns what comes back in out.
using TVObjectCreateFn = int (*)(TVObject*& out, const TVObject* source);

class TVObjectIndexEntry
{
public:
    TVObjectIndexEntry(int id, const std::string& name, TVObjectCreateFn createFn);
    TVObjectIndexEntry(const TVObjectIndexEntry&) = default;
    TVObjectIndexEntry& operator=(const TVObjectIndexEntry&) = default;
    virtual ~TVObjectIndexEntry() = default;

    virtual void print(FILE* out, int indent) const;

    int get_id() const { return m_id; }
    const std::string& get_name() const { return m_name; }
    TVObjectCreateFn get_create_fn() const { return m_createFn; }
    void set_functions(TVObjectCreateFn createFn) { m_createFn = createFn; }

private:
    int m_id;
    std::string m_name;
    TVObjectCreateFn m_createFn;
};

#endif // TVOBJECTINDEXENTRY_H
