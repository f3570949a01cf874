#ifndef TVEXTERNALDBMERGE_H
#define TVEXTERNALDBMERGE_H

// TVExternalDBMerge: for one peer host of a link, the write time of that
// host's file that this database last took in. Serial form: "host",
// "write", then TVObject's under "TVObject".

#include "LibDate/core/tvdate.h"
#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <string>

class TVExternalDBMerge : public TVObject
{
public:
    TVExternalDBMerge();
    TVExternalDBMerge(const std::string& host, const TVDate& write);
    TVExternalDBMerge(const TVExternalDBMerge& other);
    TVExternalDBMerge& operator=(const TVExternalDBMerge& other);
    ~TVExternalDBMerge() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    bool operator==(const TVExternalDBMerge& other) const;
    void set_defaults(bool constructing);

    std::string m_host;
    TVDate m_write;
};

#endif // TVEXTERNALDBMERGE_H
