#include "LibObject/core/tvid.h"

#include "LibCore/textstr/tvtextstr.h"
#include "LibCore/log/tvdump.h"

#include <QLine>
#include <istream>
#include <ostream>
#include <tuple>
#include <vector>

const TVId TVId::C_Empty;

void TVId::set_defaults(bool)
{
    m_id = -1;
    m_seq = -1;
    m_group = -1;
}

void TVId::set(int id, int seq, int group)
{
    m_id = id;
    m_seq = seq;
    m_group = group;
}

bool TVId::operator==(const TVId& other) const
{
    return m_id == other.m_id && m_seq == other.m_seq && m_group == other.m_group;
}

bool TVId::operator<(const TVId& other) const
{
    return std::tie(m_id, m_seq, m_group) < std::tie(other.m_id, other.m_seq, other.m_group);
}

bool TVId::compare(const TVId& other) const
{
    if (m_id != other.m_id)
        return false;
    // -1 (any negative) on either side matches everything in that part.
    if (m_seq >= 0 && other.m_seq >= 0 && m_seq != other.m_seq)
        return false;
    if (m_group >= 0 && other.m_group >= 0 && m_group != other.m_group)
        return false;
    return true;
}

std::string TVId::to_string() const
{
    std::string out = std::to_string(m_id);
    out += '/';
    out += std::to_string(m_seq);
    out += '/';
    out += std::to_string(m_group);
    out += '/';
    return out;
}

TVId TVId::from_string(const std::string& text)
{
    TVId out;
    std::vector<std::string> parts = tv_tokenise(text, '/');
    if (parts.size() > 0)
        out.m_id = tv_string_to_int(parts[0], -1);
    if (parts.size() > 1)
        out.m_seq = tv_string_to_int(parts[1], -1);
    if (parts.size() > 2)
        out.m_group = tv_string_to_int(parts[2], -1);
    return out;
}

QLine TVId::to_qline() const
{
    return QLine(m_id, m_seq, m_group, 0);
}

void TVId::from_qline(const QLine& line)
{
    set(line.x1(), line.y1(), line.x2());
}

void TVId::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVIdSeq\n"
        << pad << "    m_id = " << m_id << '\n'
        << pad << "    m_seq = " << m_seq << '\n'
        << pad << "    m_group = " << m_group << '\n';
}

std::ostream& operator<<(std::ostream& out, const TVId& value)
{
    return out << value.to_string();
}

std::istream& operator>>(std::istream& in, TVId& value)
{
    std::string piece[3];
    int part = 0;
    bool any = false;
    std::streambuf* buf = in.rdbuf();
    while (buf != nullptr) {
        int c = buf->sbumpc();
        if (c == std::char_traits<char>::eof()) {
            in.setstate(any ? std::ios::eofbit : std::ios::eofbit | std::ios::failbit);
            break;
        }
        any = true;
        if (c == '\n')
            break;
        if (c == '/') {
            if (++part == 3)
                break;
            continue;
        }
        piece[part] += static_cast<char>(c);
    }
    if (piece[0].empty() && piece[1].empty() && piece[2].empty()) {
        value.set(-1, -1, -1);
        return in;
    }
    value.set(tv_string_to_int(piece[0], -1), tv_string_to_int(piece[1], -1),
              tv_string_to_int(piece[2], -1));
    return in;
}
