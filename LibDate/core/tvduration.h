#ifndef TVDURATION_H
#define TVDURATION_H

// TVDuration: a signed span of time in days, seconds and microseconds.
//
// Every constructor and operator goes through set_duration, after which
// |m_micro| < 1000000, |m_seconds| < 86400 and the three fields never differ
// in sign, so two spans compare field by field. A plain value: copy freely.
//
// Stream form (used by the serial form of objects):
//   duration := days8 seconds8 [micro6] "@"
// each a printf "%08ld" / "%06d" field; a negative value carries its sign
// inside the width (a micro of -999999 takes seven characters, which the
// reader accepts because the micro is the rest of the text).

#include <iosfwd>
#include <string>

class TVDuration
{
public:
    TVDuration();
    TVDuration(long days, long seconds, int micro);
    explicit TVDuration(long seconds);
    virtual ~TVDuration() = default;

    TVDuration(const TVDuration&) = default;
    TVDuration& operator=(const TVDuration&) = default;

    // Normalises: carries micro into seconds and seconds into days
    // (truncating), then aligns all three signs with the sign of the whole.
    void set_duration(long days, long seconds, int micro);

    long get_days() const { return m_days; }
    long get_seconds() const { return m_seconds; }
    int get_micro() const { return m_micro; }

    // Days with the seconds and micro as a fraction.
    double get_as_days() const;
    // Whole hours, rounded to the nearest hour; micro is ignored.
    long get_as_hours() const;
    // Whole seconds; micro is ignored.
    long get_as_seconds() const;
    double get_as_dseconds() const;
    // The part below a day as hours 0-23, minutes, seconds and micro, all
    // with the sign of the duration.
    void get_breakdown(long& days, int& hours, int& minutes, int& seconds, int& micro) const;

    bool operator==(const TVDuration& other) const;
    bool operator!=(const TVDuration& other) const { return !(*this == other); }
    bool operator<(const TVDuration& other) const;
    bool operator<=(const TVDuration& other) const { return !(other < *this); }
    bool operator>(const TVDuration& other) const { return other < *this; }
    bool operator>=(const TVDuration& other) const { return !(*this < other); }
    // Against a whole number of seconds.
    bool operator==(long seconds) const { return *this == TVDuration(seconds); }
    bool operator<(long seconds) const { return *this < TVDuration(seconds); }
    bool operator>(long seconds) const { return *this > TVDuration(seconds); }

    TVDuration operator-() const { return TVDuration(-m_days, -m_seconds, -m_micro); }
    TVDuration operator+(const TVDuration& other) const;
    TVDuration operator-(const TVDuration& other) const;
    TVDuration& operator+=(const TVDuration& other);
    TVDuration& operator-=(const TVDuration& other);
    // Each field scaled and rounded (+0.5, truncated); the fraction of the
    // scaled days moves into the seconds.
    TVDuration operator*(double factor) const;
    // The ratio of the two spans as days; 0.0 for a zero divisor.
    double operator/(const TVDuration& other) const;

    // Reads the entry form typed by a user: numbers with optional unit words
    // (D work days, H hours, M minutes, S seconds, U micro) in the tokens of
    // TVDateUtils::split_tokens. A unit must touch its number ("90M"); a
    // number without one fills the first unset of hours, minutes, seconds,
    // micro, work days, so "1:30" is an hour and a half. Because the
    // tokeniser makes "." a token of its own, "1.5" is read as the numbers
    // 1, 0 and 5. With no hours, minutes, seconds or work days in the text
    // the result is defaultSeconds. Always true.
    bool from_string(const std::string& text, long defaultSeconds);

    // Hours counted past 24 ("36:00"). withSeconds false drops a zero
    // second; a non-zero micro always shows. A negative span gets a leading
    // "-" before the text of its size.
    std::string to_string(bool withSeconds) const;
    // As to_string for the part below a day, with "1 day " or "N days " in
    // front when the days are positive.
    std::string to_string_day(bool withSeconds) const;

    virtual void dump(std::ostream& out, int indent) const;

private:
    // Text of seconds and micro below a day, or with the hours uncapped.
    static std::string clock_text(long hours, long minutes, long seconds, int micro,
                                  bool withSeconds);

    long m_days;
    long m_seconds;
    int m_micro;
};

std::ostream& operator<<(std::ostream& out, const TVDuration& value);
// Reads digits and "-"; consumes a closing "@" and leaves any other
// character in the stream. Sets failbit and a zero span if nothing is read.
std::istream& operator>>(std::istream& in, TVDuration& value);

#endif // TVDURATION_H
