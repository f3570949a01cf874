#ifndef TVSRLVALUE_H
#define TVSRLVALUE_H

// TVSrlValue<T>: binds one value member, written with operator<< and read
// with operator>> (text and char as told in tvsrl.h; a bool is 0 or 1).
//
// With a default, a value equal to it is not written and a read that finds
// nothing puts it back; without one, the value is always written and a
// read that finds nothing leaves the member as it is. A precision above 0
// writes the value in fixed notation with that many decimals.

#include "LibCore/error/tverror.h"
#include "LibCore/log/tvdump.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvduration.h"
#include "LibObject/core/tvid.h"
#include "LibObject/object/tvsrl.h"

#include <iomanip>
#include <ostream>
#include <string>

inline bool tv_srl_parse(std::string_view text, TVDate& value)
{
    return tv_date_from_digits(text, value);
}

inline bool tv_srl_format(std::string& out, const TVDate& value, int)
{
    tv_date_append(out, value);
    return true;
}

template <class T>
class TVSrlValue : public TVSrl
{
public:
    explicit TVSrlValue(T& member) : m_member(&member), m_default(), m_hasDefault(false) {}
    TVSrlValue(T& member, const T& defaultValue, int precision = -1)
        : m_member(&member), m_default(defaultValue), m_hasDefault(true), m_precision(precision)
    {
    }

    void dump(std::ostream& out, int indent) const override
    {
        TVSrl::dump(out, indent);
        const std::string pad = TVDump::indent_string(indent);
        out << pad << "    value = " << *m_member << '\n';
        if (m_hasDefault)
            out << pad << "    default = " << m_default << '\n';
    }

    bool is_default() const override { return m_hasDefault && *m_member == m_default; }

    void set_default() override
    {
        if (m_hasDefault)
            *m_member = m_default;
    }

    int read(std::istream& in) override
    {
        tv_srl_extract(in, *m_member);
        return TVErrC_ok;
    }

    bool read_text(std::string_view text) override { return tv_srl_parse(text, *m_member); }

    bool write_text(std::string& out, int) const override
    {
        return tv_srl_format(out, *m_member, m_precision);
    }

    int write(std::ostream& out, int) const override
    {
        if (m_precision > 0)
            out << std::fixed << std::setprecision(m_precision);
        tv_srl_insert(out, *m_member);
        return TVErrC_ok;
    }

private:
    T* m_member;
    T m_default;
    bool m_hasDefault;
    int m_precision = -1;
};

extern template class TVSrlValue<int>;
extern template class TVSrlValue<long>;
extern template class TVSrlValue<bool>;
extern template class TVSrlValue<char>;
extern template class TVSrlValue<double>;
extern template class TVSrlValue<std::string>;
extern template class TVSrlValue<TVId>;
extern template class TVSrlValue<TVDate>;
extern template class TVSrlValue<TVDuration>;

#endif // TVSRLVALUE_H
