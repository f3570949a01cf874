#ifndef TVREADFIELDS_H
#define TVREADFIELDS_H

// TVReadFields: the entries of one object while its serialise() reads them.
//
// read_class gathers the object's lines into a flat table of views of the
// text, a line copied only when it needs unescaping or cleaning, and the
// serialise_* helpers take their members from it: each tag is found
// through a small hash table, and lines of one tag are chained in file
// order. What no member takes becomes the object's read entries at the
// end, as TVSerialisationEntry values.
//
// One table per depth of nesting and thread, reused from object to object,
// so that a load makes no allocation per line. Internal to TVObject.

#include "LibCore/error/tverror.h"
#include "LibObject/object/tvserialisationentry.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

class TVObject;
class TVSrl;

class TVReadFields
{
public:
    // A member's full tag, prefix "+" tag, without building it.
    struct Tag {
        Tag(const std::string& prefix, std::string_view tag);
        bool matches(std::string_view text) const;
        std::string_view m_prefix;
        std::string_view m_tag;
        uint32_t m_hash;
    };

    // The table of object for the length of a scope: the one read_class
    // gathered, or, for a serialise() called outside read_class, one made
    // of the object's read entries and written back to them at the end.
    class Scope
    {
    public:
        explicit Scope(TVObject& object, bool from_entries);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        TVReadFields& fields() { return *m_fields; }

    private:
        TVReadFields* m_fields;
        bool m_fromEntries;
    };

    // The table of object: the innermost one when it is object's, else
    // nullptr.
    static TVReadFields* current(const TVObject& object);

    // Gathers the lines up to the object's end ("}" or the end of the
    // text). next(line, stable) gives the next line, cleaned, and whether
    // the view stays valid while the object is read; ended_by_lf(line)
    // whether the line just given had its LF in the text.
    template <class Lines>
    [[nodiscard]] int gather(Lines& lines);

    // The helpers' reads; each answers as the helper of the same name.
    [[nodiscard]] int read_value(TVSrl& srl, const Tag& full, std::string_view tag,
                                 bool by_suffix);
    [[nodiscard]] int read_object(TVSrl& srl, const Tag& full);
    [[nodiscard]] int read_string(const Tag& full, std::string& value);
    // Every line of the tag, of any kind, in file order.
    template <class Add>
    void take_all(const Tag& full, Add add);
    // Every raw line, in file order.
    template <class Add>
    void take_raw(Add add);

private:
    struct Item {
        TVSerialisationEntry::E_ReadMode m_type;
        bool m_taken;
        int m_next; // the next line of the same tag, -1 at the last
        int m_last; // on the first line of a tag: the last one
        uint32_t m_hash;
        std::string_view m_tag;
        std::string_view m_value;
    };

    // The warning for an object member whose braces don't balance.
    static int unbalanced();
    void reset(TVObject& object);
    void load_entries();
    void keep_rest();
    void write_back();

    std::string& own();
    std::string_view keep(std::string_view text, bool stable);
    std::string_view unescaped(std::string_view text, bool stable);
    void add(TVSerialisationEntry::E_ReadMode type, std::string_view tag, std::string_view value);
    void add_field(std::string_view line, bool stable);
    void index();
    int find(const Tag& full) const;
    int take(int at, TVSrl& srl);
    int take_tagged(TVSrl& srl, const Tag& full, TVSerialisationEntry::E_ReadMode type,
                    bool& found);
    void drop_after(int at, TVSerialisationEntry::E_ReadMode type);

    TVObject* m_object = nullptr;
    std::vector<Item> m_items;
    std::vector<int> m_slots; // item + 1 of each tag's first line; 0 free
    std::deque<std::string> m_owned;
    size_t m_ownedUsed = 0;
};

// ---- Templates ----------------------------------------------------------------

template <class Lines>
int TVReadFields::gather(Lines& lines)
{
    std::string_view line;
    bool stable = false;
    while (lines.next(line, stable)) {
        const char first = line.empty() ? '\0' : line[0];
        if (line.size() >= 2 && first == '!') {
            add_field(line, stable);
        } else if (line.size() >= 2 && first == '@') {
            // The member's object runs until its braces balance; nested
            // objects and their own tagged classes are kept as they stand.
            const std::string_view tag = keep(line.substr(1), stable);
            const char* start = nullptr;
            const char* end = nullptr;
            std::string* copy = nullptr;
            int depth = 0;
            bool opened = false;
            bool closed = false;
            while (!closed && lines.next(line, stable)) {
                if (copy == nullptr && stable && (start == nullptr || line.data() == end + 1)) {
                    if (start == nullptr)
                        start = line.data();
                    end = line.data() + line.size();
                } else {
                    if (copy == nullptr) {
                        copy = &own();
                        if (start != nullptr)
                            copy->assign(start, static_cast<size_t>(end - start) + 1);
                    }
                    copy->append(line.data(), line.size());
                    *copy += '\n';
                }
                if (!line.empty() && line[0] == '{') {
                    ++depth;
                    opened = true;
                } else if (!line.empty() && line[0] == '}') {
                    --depth;
                }
                closed = opened && depth == 0;
            }
            if (!closed)
                return unbalanced();
            if (copy == nullptr && !lines.ended_by_lf(line)) {
                copy = &own();
                copy->assign(start, static_cast<size_t>(end - start));
                *copy += '\n';
            }
            add(TVSerialisationEntry::E_TaggedClass, tag,
                copy != nullptr ? std::string_view(*copy)
                                : std::string_view(start, static_cast<size_t>(end - start) + 1));
        } else if (first == '}') {
            break;
        } else {
            add(TVSerialisationEntry::E_RawData, std::string_view(),
                unescaped(first == '\\' ? line.substr(1) : line, stable));
        }
    }
    index();
    return TVErrC_ok;
}

template <class Add>
void TVReadFields::take_all(const Tag& full, Add add)
{
    for (int i = find(full); i >= 0; i = m_items[static_cast<size_t>(i)].m_next) {
        Item& item = m_items[static_cast<size_t>(i)];
        if (item.m_taken)
            continue;
        item.m_taken = true;
        add(item.m_value);
    }
}

template <class Add>
void TVReadFields::take_raw(Add add)
{
    for (Item& item : m_items) {
        if (item.m_taken || item.m_type != TVSerialisationEntry::E_RawData)
            continue;
        item.m_taken = true;
        add(item.m_value);
    }
}

#endif // TVREADFIELDS_H
