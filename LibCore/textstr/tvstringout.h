#ifndef TVSTRINGOUT_H
#define TVSTRINGOUT_H

// TVStringOut: an output stream that appends to a string of its own. A
// whole database is written through one before it goes to disk or to a
// link: the string grows as strings do, and take() hands it over without
// the copy that std::ostringstream::str() makes.

#include <ostream>
#include <streambuf>
#include <string>

class TVStringOut : public std::ostream
{
public:
    TVStringOut();
    TVStringOut(const TVStringOut&) = delete;
    TVStringOut& operator=(const TVStringOut&) = delete;

    const std::string& text() const { return m_buffer.m_text; }
    // The text so far; the stream is empty after.
    std::string take();

private:
    struct Buffer : std::streambuf {
        int_type overflow(int_type c) override;
        std::streamsize xsputn(const char* s, std::streamsize n) override;
        std::string m_text;
    };
    Buffer m_buffer;
};

#endif // TVSTRINGOUT_H
