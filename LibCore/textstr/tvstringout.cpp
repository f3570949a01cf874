#include "LibCore/textstr/tvstringout.h"

#include <utility>

TVStringOut::TVStringOut() : std::ostream(nullptr)
{
    rdbuf(&m_buffer);
}

std::string TVStringOut::take()
{
    std::string text = std::move(m_buffer.m_text);
    m_buffer.m_text.clear();
    return text;
}

TVStringOut::Buffer::int_type TVStringOut::Buffer::overflow(int_type c)
{
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    m_text += traits_type::to_char_type(c);
    return c;
}

std::streamsize TVStringOut::Buffer::xsputn(const char* s, std::streamsize n)
{
    m_text.append(s, static_cast<size_t>(n));
    return n;
}
