#ifndef TVTAGVALUE_H
#define TVTAGVALUE_H

// TVTagValue: a map from tag to value, both byte strings. A value.
// A tag that isn't present gives the caller's default; a present tag whose
// value is empty also gives the default for the number forms (the numbers
// are read with atoi / atof, so other text gives 0).

#include <iosfwd>
#include <map>
#include <string>

class TVTagValue
{
public:
    using const_iterator = std::map<std::string, std::string>::const_iterator;

    TVTagValue() = default;
    virtual ~TVTagValue() = default;

    TVTagValue(const TVTagValue&) = default;
    TVTagValue& operator=(const TVTagValue&) = default;

    void set(const std::string& tag, const std::string& value);
    bool has(const std::string& tag) const { return m_value.count(tag) != 0; }
    // False if the tag wasn't there.
    bool remove(const std::string& tag) { return m_value.erase(tag) != 0; }
    void clear() { m_value.clear(); }
    int size() const { return static_cast<int>(m_value.size()); }

    std::string get_string(const std::string& tag, const std::string& defaultValue) const;
    int get_int(const std::string& tag, int defaultValue) const;
    double get_double(const std::string& tag, double defaultValue) const;

    bool operator==(const TVTagValue& other) const { return m_value == other.m_value; }
    bool operator!=(const TVTagValue& other) const { return !(*this == other); }

    const_iterator begin() const { return m_value.begin(); }
    const_iterator end() const { return m_value.end(); }

    void dump(std::ostream& out, int indent) const;

private:
    std::map<std::string, std::string> m_value;
};

#endif // TVTAGVALUE_H
