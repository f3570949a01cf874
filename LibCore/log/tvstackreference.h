#ifndef TVSTACKREFERENCE_H
#define TVSTACKREFERENCE_H

// TVStackReference: one edge of the call graph of a traced function, seen
// from that function: the name of the caller or callee, how many calls
// went along the edge and the seconds spent in them. A plain value.

#include <iosfwd>
#include <string>

class TVStackReference
{
public:
    TVStackReference();
    explicit TVStackReference(const std::string& name);
    virtual ~TVStackReference() = default;

    TVStackReference(const TVStackReference&) = default;
    TVStackReference& operator=(const TVStackReference&) = default;

    void set_defaults(bool constructing);

    // Adds calls that together took seconds.
    void add(int calls, double seconds);

    const std::string& get_name() const { return m_name; }
    int get_calls() const { return m_calls; }
    double get_spent() const { return m_spent; }
    // Seconds per call; 0 before the first call.
    double get_average() const;

    bool operator==(const TVStackReference& other) const;
    bool operator!=(const TVStackReference& other) const { return !(*this == other); }

    virtual void dump(std::ostream& out, int indent) const;

private:
    std::string m_name;
    int m_calls;
    double m_spent; // seconds
};

std::ostream& operator<<(std::ostream& out, const TVStackReference& reference);

#endif // TVSTACKREFERENCE_H
