#ifndef TVREUSEDSTREAM_H
#define TVREUSEDSTREAM_H

#include <cstddef>
#include <ios>
#include <memory>
#include <string>
#include <vector>

// A string stream is costly to make (it builds its locale's facets), and a
// member's value is read and written through one: each depth of nesting
// reuses its own, set back to a fresh stream's state. Nested objects read
// and write their members inside a member's read or write, hence depths.
template <class Stream>
class TVReusedStream
{
public:
    TVReusedStream() : m_depth(depth()++)
    {
        std::vector<std::unique_ptr<Stream>>& all = pool();
        if (all.size() <= m_depth)
            all.push_back(std::make_unique<Stream>());
        Stream& stream = *all[m_depth];
        stream.str(std::string());
        stream.clear();
        stream.flags(std::ios_base::skipws | std::ios_base::dec);
        stream.precision(6);
        stream.width(0);
        stream.fill(' ');
    }
    ~TVReusedStream() { --depth(); }
    TVReusedStream(const TVReusedStream&) = delete;
    TVReusedStream& operator=(const TVReusedStream&) = delete;

    Stream& get() { return *pool()[m_depth]; }

private:
    static std::vector<std::unique_ptr<Stream>>& pool()
    {
        thread_local std::vector<std::unique_ptr<Stream>> streams;
        return streams;
    }
    static size_t& depth()
    {
        thread_local size_t level = 0;
        return level;
    }
    size_t m_depth;
};

#endif // TVREUSEDSTREAM_H
