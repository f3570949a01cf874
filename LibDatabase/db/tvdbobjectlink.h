#ifndef TVDBOBJECTLINK_H
#define TVDBOBJECTLINK_H

// TVDBObjectLink: a tagged reference from one stored object to another by
// id. Stream form "tag:id:" ("REF:1234:"); a tag holds no ":" or line end.

#include <iosfwd>
#include <string>

class TVDBObjectLink
{
public:
    TVDBObjectLink() = default;
    TVDBObjectLink(int id, const std::string& tag) : m_id(id), m_tag(tag) {}
    TVDBObjectLink(const TVDBObjectLink&) = default;
    TVDBObjectLink& operator=(const TVDBObjectLink&) = default;
    virtual ~TVDBObjectLink() = default;

    bool operator==(const TVDBObjectLink& other) const
    {
        return m_id == other.m_id && m_tag == other.m_tag;
    }
    bool operator!=(const TVDBObjectLink& other) const { return !(*this == other); }

    virtual void dump(std::ostream& out, int indent) const;

    int m_id = -1; // the target's id
    std::string m_tag;
};

std::ostream& operator<<(std::ostream& out, const TVDBObjectLink& link);
// Reads up to a line end; an empty or bad id gives -1.
std::istream& operator>>(std::istream& in, TVDBObjectLink& link);

#endif // TVDBOBJECTLINK_H
