#ifndef TVERRDETAILS_H
#define TVERRDETAILS_H

#include <iosfwd>
#include <string>
#include <vector>

#include "LibDate/core/tvdate.h"

// Severity of an error; the number is part of the error value
// (value = severity * 100000 + code).
enum TVErrSeverity {
    TVSevLog = 0,
    TVSevUser = 1,
    TVSevWarning = 2,
    TVSevError = 3,
    TVSevFatal = 4,
    TVSevAll = 5 // only as an argument of set_stream and set_action
};

enum TVErrActions { TVActAbort = 0, TVActThrow = 1, TVActContinue = 2 };

// Which of an error's two texts is meant: the technical one for the log,
// the sentence for the user, or both where that is allowed.
enum TVErrAspect { TVAspectSystem = 0, TVAspectUser = 1, TVAspectBoth = 2 };

// One error as a value, and the type that is thrown when an error's
// severity is set up to throw.
class TVErrDetails
{
public:
    TVErrDetails();
    TVErrDetails(const TVErrDetails&) = default;
    TVErrDetails& operator=(const TVErrDetails&) = default;
    virtual ~TVErrDetails();

    virtual void dump(std::ostream& out, int indent) const;

    // value = severity * 100000 + code. Severity and code are defined for
    // values 0..499999 only; outside that the severity is 0 and the code -1.
    static constexpr int C_SeverityFactor = 100000;
    static int compute_combination(int code, int severity);
    static int compute_severity(int value);
    static int compute_code(int value);

    int get_value() const { return compute_combination(m_code, m_severity); }
    int get_code() const { return m_code; }
    void set_code(int code) { m_code = code; }
    TVErrSeverity get_severity() const { return m_severity; }
    void set_severity(TVErrSeverity severity) { m_severity = severity; }
    const TVDate& get_time() const { return m_time; }
    void set_time(const TVDate& time) { m_time = time; }
    const std::string& get_location() const { return m_location; }
    void set_location(const std::string& location) { m_location = location; }
    const std::string& get_extra() const { return m_extra; }
    void set_extra(const std::string& extra) { m_extra = extra; }

    // TVAspectBoth sets both texts; any other number above 1 does nothing.
    void set_details(const std::string& text, int aspect);
    void append_details(const std::string& text, int aspect);
    // The empty string for TVAspectBoth or an unknown aspect.
    const std::string& get_details(int aspect) const;

    void append_location(const std::string& text);
    void append_extra(const std::string& name, const std::string& value);

    // Appends the other's two texts to this one's; nothing else.
    TVErrDetails& operator+=(const TVErrDetails& other);

private:
    std::vector<std::string> m_details; // always two, indexed by TVErrAspect
    int m_code;
    TVErrSeverity m_severity;
    TVDate m_time;
    std::string m_location;
    std::string m_extra;
};

// The text block of one error as the log and the echo streams show it.
std::ostream& operator<<(std::ostream& out, const TVErrDetails& details);

#endif
