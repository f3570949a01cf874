#ifndef TVID_H
#define TVID_H

// TVId: a three-part reference (id, sequence, group) to something stored.
//
// A plain value: copyable, no class-index entry, written as text in the form
// "id/seq/group/" (trailing slash included). -1 in every part is the empty
// id (TVId::C_Empty). A negative part acts as a wildcard for compare(), but
// ==, != and < are exact and lexicographic over (id, seq, group).

#include <cstdint>
#include <iosfwd>
#include <string>

class QLine;

class TVId
{
public:
    // Constant-initialised (the constructors are constexpr), so other
    // files' static initialisers may use it.
    static const TVId C_Empty;

    constexpr TVId() = default;
    constexpr TVId(int id, int seq, int group) : m_id(id), m_seq(seq), m_group(group) {}
    virtual ~TVId() = default;

    TVId(const TVId&) = default;
    TVId& operator=(const TVId&) = default;

    void set_defaults(bool init = true);

    int32_t get_id() const { return m_id; }
    int32_t get_seq() const { return m_seq; }
    int32_t get_group() const { return m_group; }
    void set_id(int id) { m_id = id; }
    void set_seq(int seq) { m_seq = seq; }
    void set_group(int group) { m_group = group; }
    void set(int id, int seq, int group);

    bool operator==(const TVId& other) const;
    // Compares m_id only; lets callers test an id against a bare number.
    bool operator==(int id) const { return m_id == id; }
    bool operator!=(const TVId& other) const { return !(*this == other); }
    bool operator<(const TVId& other) const;

    // True when the ids are equal and seq and group agree wherever both sides
    // are non-negative. Not an equivalence: -1 matches anything.
    bool compare(const TVId& other) const;

    std::string to_string() const;
    // Starts from the empty id and fills as many parts as "/"-separated
    // tokens are present, so "7/" gives 7/-1/-1/.
    static TVId from_string(const std::string& text);

    // Packs the three parts into a QLine (x1 id, y1 seq, x2 group, y2 0) so
    // that an id can ride in Qt item data. Callers include <QLine>.
    QLine to_qline() const;
    void from_qline(const QLine& line);

    void dump(std::ostream& out, int indent) const;

private:
    int32_t m_id = -1;
    int32_t m_seq = -1;
    int32_t m_group = -1;
};

// Writes "id/seq/group/".
std::ostream& operator<<(std::ostream& out, const TVId& value);
// Reads up to the third "/", a line feed or end of stream; three empty
// pieces give the empty id.
std::istream& operator>>(std::istream& in, TVId& value);

#endif // TVID_H
