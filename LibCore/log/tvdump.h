#ifndef TVDUMP_H
#define TVDUMP_H

// TVDump: the common shape of every dump(ostream&, int indent). A class
// builds one on its stack, adds its fields and lets the destructor write
// them:
//
//   void TVThing::dump(std::ostream& out, int indent) const
//   {
//       TVDump dump("TVThing", out, indent);
//       TVDUMP_ENTRY(dump, d->m_count);     // written as "m_count"
//       dump.add_array("m_values", d->m_values);
//       dump.add_dump("m_start", d->m_start);
//   }
//
// What it writes, each line led by indent_string(indent):
//
//   TVThing Object:
//    m_count     = 3
//    m_values[0] = 7
//    m_start:
//       <the nested dump, at indent + 1>
//
// Names line up in one column; a value too long for m_lineWidth breaks at
// blanks and its continuation lines, like the lines of a value that holds
// line ends, start under the value. Nothing is written until write() or
// the destructor, so the stream must outlive the TVDump.
//
// The leader table is shared by all dumps and is meant to be filled at
// start-up, before any thread dumps.

#include <iosfwd>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

class TVDump
{
public:
    static const int m_spaces;    // blanks per indent level
    static const int m_lineWidth; // a value is wrapped to keep lines within this
    // Names of private records whose "name->" or "name." is cut from the
    // front of field names, so that TVDUMP_ENTRY(dump, impl->m_x) reads "m_x".
    static std::vector<std::string> m_leader;

    TVDump(const std::string& className, std::ostream& out, int indent);
    TVDump(const TVDump&) = delete;
    TVDump& operator=(const TVDump&) = delete;
    // Writes whatever is still pending.
    ~TVDump();

    // The blanks in front of a dump line at that level; none below 0. Every
    // dump in the program indents by this.
    static std::string indent_string(int indent);
    static void add_leader(const std::string& leader);
    // name without its leader, with "[index]" behind it unless index is -1.
    static std::string format_name(const std::string& name, int index);

    // A field written by operator<<. index is the place in an array, -1 for
    // a plain field.
    template <class T>
    void add_entry(const std::string& name, const T& value, int index = -1)
    {
        std::ostringstream text;
        text << value;
        add_text(name, text.str(), index);
    }

    // Every element of a container as an entry with its index.
    template <class C>
    void add_array(const std::string& name, const C& values)
    {
        int index = 0;
        for (const auto& value : values)
            add_entry(name, value, index++);
    }

    // A member that dumps itself: its own dump one level deeper, under the
    // name. A pointer to one works too; null is written as "null".
    template <class T>
    void add_dump(const std::string& name, const T& value, int index = -1)
    {
        if constexpr (std::is_pointer<T>::value) {
            if (value == nullptr)
                add_text(name, "null", index);
            else
                add_dump(name, *value, index);
        } else {
            std::ostringstream text;
            value.dump(text, m_indent + 1);
            add_block(name, text.str(), index);
        }
    }

    // The heading line, "<class> Object:"; write() calls it the first time.
    void write_heading();
    // Writes the heading (once) and the entries added since the last write.
    void write();

    std::ostream& get_stream() const { return m_out; }
    int get_indent() const { return m_indent; }

private:
    struct Entry {
        std::string m_name; // formatted
        std::string m_text;
        bool m_block;       // m_text is a nested dump, written as it stands
    };

    void add_text(const std::string& name, const std::string& text, int index);
    void add_block(const std::string& name, const std::string& text, int index);
    void write_entry(const Entry& entry, size_t nameWidth);

    std::string m_className;
    std::ostream& m_out;
    int m_indent;
    bool m_headingWritten;
    std::vector<Entry> m_entries;
};

// Adds a field under the text of the expression that reads it.
#define TVDUMP_ENTRY(dump, field) (dump).add_entry(#field, (field))

#endif // TVDUMP_H
