#ifndef TVSERIALISATIONENTRY_H
#define TVSERIALISATIONENTRY_H

// TVSerialisationEntry: one parsed line or block of the serial form, and
// the writers of the line kinds. The grammar is in doc/serial-form.md.
//
// An object's read entries are a list of these (TVObject). Its serialise()
// consumes the ones it knows; the rest are written back after its own
// lines, so entries from a newer program survive a pass through this one.

#include <iosfwd>
#include <string>
#include <string_view>

class TVObject;

class TVSerialisationEntry
{
public:
    enum E_ReadMode {
        E_TaggedField = 0, // "!tag!value"; m_value unescaped
        E_TaggedClass = 1, // "@tag" and the object after it; m_value the object's lines as read
        E_RawData = 2      // any other line; m_value unescaped, m_tag empty
    };

    TVSerialisationEntry();
    TVSerialisationEntry(E_ReadMode type, const std::string& tag, const std::string& value);
    TVSerialisationEntry(const TVSerialisationEntry&) = default;
    TVSerialisationEntry& operator=(const TVSerialisationEntry&) = default;
    virtual ~TVSerialisationEntry() = default;

    virtual void dump(std::ostream& out, int indent) const;

    bool operator==(const TVSerialisationEntry& other) const;
    bool operator!=(const TVSerialisationEntry& other) const { return !(*this == other); }

    // Reads the next entry. TVErrC_okEndOfRecord at a class end or at the
    // end of the stream (then this entry is not filled); a warning
    // TVErrC_FileTooShort when a tagged class's braces don't balance before
    // the stream ends.
    [[nodiscard]] int read_entry(std::istream& in);
    // The same from text in memory, which is advanced past the entry.
    [[nodiscard]] int read_entry(std::string_view& in);
    // The same, but a tagged class whose lines need no cleaning (no CR or
    // NUL, the last one ended by LF) is not copied: lines is a view of them
    // in in, and the value stays empty. Otherwise lines is empty.
    [[nodiscard]] int read_entry(std::string_view& in, std::string_view& lines);

    // A tagged field or raw line as such. A tagged class is written as its
    // stored lines only, without its "@" line: the parent's reader will take
    // the block for raw data and its "}" for the parent's end. Files exist
    // that went through this, so it stays.
    [[nodiscard]] int write_entry(std::ostream& out) const;

    // "!" tag "!" value, escaped as one string. Write failures are the
    // warning TVErrC_FileWrite.
    [[nodiscard]] static int write_tagged_field(const std::string& tag, const std::string& value,
                                                std::ostream& out);
    // The value printf-formatted into a 1,024-byte buffer (longer text is cut).
    [[nodiscard]] static int write_tagged_field(const std::string& tag, std::ostream& out,
                                                const char* format, ...)
        __attribute__((format(printf, 3, 4)));
    // The escaped line, behind a backslash when its first character is reserved.
    [[nodiscard]] static int write_raw_data(const std::string& value, std::ostream& out);
    // "@" and the escaped tag, then the object by write_class.
    [[nodiscard]] static int write_tagged_class(const std::string& tag, const TVObject& object,
                                                std::ostream& out, int version);

    E_ReadMode get_entrytype() const { return m_entryType; }
    void set_entrytype(E_ReadMode type) { m_entryType = type; }
    const std::string& get_tag() const { return m_tag; }
    void set_tag(const std::string& tag) { m_tag = tag; }
    const std::string& get_value() const { return m_value; }
    void set_value(const std::string& value) { m_value = value; }

private:
    // The reader over a source of lines: next(line) gives the next line
    // without its LF, CR and NUL, false at the end.
    template <class Next>
    int read_lines(Next next);

    E_ReadMode m_entryType;
    std::string m_tag;
    std::string m_value;
};

#endif // TVSERIALISATIONENTRY_H
