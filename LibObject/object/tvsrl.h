#ifndef TVSRL_H
#define TVSRL_H

// TVSrl: a binder between one member and the serial form, built on the
// stack for the length of one serialise_* call. It points at the member
// and owns nothing; the member must outlive it.
//
// The TVObject helpers drive it: on writing, get_nentries() values, each
// skipped when is_default(); on reading, start_read(), set_default(), then
// read() once per matching entry (once only unless handle_multiple()).

#include <istream>
#include <ostream>
#include <string>
#include <string_view>

class TVSrl
{
public:
    TVSrl() = default;
    TVSrl(const TVSrl&) = delete;
    TVSrl& operator=(const TVSrl&) = delete;
    virtual ~TVSrl() = default;

    virtual void dump(std::ostream& out, int indent) const;
    // True when the member takes every entry of its tag.
    virtual bool handle_multiple() const { return false; }
    // How many values to write.
    virtual int get_nentries() const { return 1; }
    // True when the value equals the default and so isn't written.
    virtual bool is_default() const { return false; }
    // Puts the default into the member ahead of a read.
    virtual void set_default() {}
    [[nodiscard]] virtual int start_read();
    // Takes one value from a stream holding only that value's text.
    [[nodiscard]] virtual int read(std::istream& in);
    [[nodiscard]] virtual int write(std::ostream& out, int index) const;
    // Beside read and write, without a stream: the value from its whole
    // text, and the text of value index appended to out. false when the
    // binder has no such path or the text is not in its plain form; the
    // stream then does it.
    virtual bool read_text(std::string_view) { return false; }
    virtual bool write_text(std::string&, int) const { return false; }
};

// ---- The text of one value ---------------------------------------------------
//
// Values go through their stream operators. serialise_value escapes a
// value's text once more than the line escape, and only the line escape is
// undone when the line is read; the text forms below take the rest of the
// stream and undo the inner escape, so that text with a backslash or a line
// feed comes back as it went in. A char is the first byte of that text; a
// NUL can't be stored, so it reads as no value.

template <class T>
void tv_srl_extract(std::istream& in, T& value)
{
    in >> value;
}
void tv_srl_extract(std::istream& in, std::string& value);
void tv_srl_extract(std::istream& in, char& value);

template <class T>
void tv_srl_insert(std::ostream& out, const T& value)
{
    out << value;
}

// The same without a stream, for the types that have it: parse takes only
// the plain form (a number as the writer writes it) and answers false for
// anything else, which the stream reads as it always did; format gives the
// stream's text byte for byte (precision > 0: fixed with that many decimals).
template <class T>
bool tv_srl_parse(std::string_view, T&)
{
    return false;
}
bool tv_srl_parse(std::string_view text, int& value);
bool tv_srl_parse(std::string_view text, long& value);
bool tv_srl_parse(std::string_view text, bool& value);
bool tv_srl_parse(std::string_view text, double& value);
bool tv_srl_parse(std::string_view text, std::string& value);
bool tv_srl_parse(std::string_view text, char& value);

template <class T>
bool tv_srl_format(std::string&, const T&, int)
{
    return false;
}
bool tv_srl_format(std::string& out, int value, int precision);
bool tv_srl_format(std::string& out, long value, int precision);
bool tv_srl_format(std::string& out, bool value, int precision);
bool tv_srl_format(std::string& out, double value, int precision);
bool tv_srl_format(std::string& out, const std::string& value, int precision);
bool tv_srl_format(std::string& out, char value, int precision);

#endif // TVSRL_H
