#ifndef TVSRLSTRINGMAPARRAY_H
#define TVSRLSTRINGMAPARRAY_H

// TVSrlStringMapArray: binds a TVPtrArrayIndex<std::string> (key to owned
// value), one tagged field "key=value" per pair in insertion order. A line
// splits at its first "="; text without one is a value with an empty key.
// With replace, a key met again replaces the earlier pair (which moves to
// the end); without it the first pair of a key stays. The map must own its
// values, or a read leaks them.

#include "LibCore/ptrarray/tvptrarrayindex.h"
#include "LibObject/object/tvsrl.h"

#include <string>

class TVSrlStringMapArray : public TVSrl
{
public:
    TVSrlStringMapArray(TVPtrArrayIndex<std::string>& values, bool replace);

    void dump(std::ostream& out, int indent) const override;
    bool handle_multiple() const override { return true; }
    int get_nentries() const override { return m_values->size(); }
    [[nodiscard]] int start_read() override;
    [[nodiscard]] int read(std::istream& in) override;
    [[nodiscard]] int write(std::ostream& out, int index) const override;

    // The pair of a line, added to values as told above.
    static void insert_pair(TVPtrArrayIndex<std::string>& values, const std::string& line,
                            bool replace);
    // "key=value" of the pair at index, which must be in range.
    static std::string pair_text(const TVPtrArrayIndex<std::string>& values, int index);

private:
    TVPtrArrayIndex<std::string>* m_values;
    bool m_replace;
};

#endif // TVSRLSTRINGMAPARRAY_H
