#ifndef TVSTACKFRAME_H
#define TVSTACKFRAME_H

// TVStackFrame: one traced function. On the call stack of a TVDebug record
// it is one live call: started, stopped when the function is left, with the
// calls it made meanwhile. In the list of finished frames it is the sum of
// all finished calls of one function name: how often it ran, the seconds in
// it and in itself, and along which edges it was called and called others.
// A plain value.

#include <iosfwd>
#include <string>
#include <vector>

#include "LibCore/log/tvstackreference.h"
#include "LibDate/core/tvdate.h"

class TVStackFrame
{
public:
    TVStackFrame();
    // A live call that began at start. A quiet one writes no trace lines.
    TVStackFrame(const std::string& name, const TVDate& start, bool quiet);
    virtual ~TVStackFrame() = default;

    TVStackFrame(const TVStackFrame&) = default;
    TVStackFrame& operator=(const TVStackFrame&) = default;

    void set_defaults(bool constructing);

    // Ends the live call at end: it becomes one call whose own time is what
    // the calls it made don't account for.
    void stop(const TVDate& end);
    // A call this frame made has finished.
    void add_call(const TVStackFrame& callee);
    // This call, stopped, came from caller (by name).
    void add_caller(const std::string& caller);
    // Adds the counts, times and edges of another frame of the same name.
    void merge(const TVStackFrame& other);

    const std::string& get_name() const { return m_name; }
    const TVDate& get_start() const { return m_start; }
    const TVDate& get_end() const { return m_end; }
    bool is_quiet() const { return m_quiet; }
    // Finished calls summed here; 0 while the frame is live.
    int get_count() const { return m_count; }
    // Seconds in the function, the calls it made included.
    double get_total() const { return m_total; }
    // Seconds in the function itself.
    double get_self() const { return m_self; }
    // The edges to the functions it called and to those it was called from,
    // in the order first seen.
    const std::vector<TVStackReference>& get_calls() const { return m_calls; }
    const std::vector<TVStackReference>& get_callers() const { return m_callers; }

    bool operator==(const TVStackFrame& other) const;
    bool operator!=(const TVStackFrame& other) const { return !(*this == other); }

    virtual void dump(std::ostream& out, int indent) const;

private:
    static void add_edge(std::vector<TVStackReference>& edges, const std::string& name, int calls,
                         double seconds);

    std::string m_name;
    TVDate m_start;
    TVDate m_end;
    bool m_quiet;
    int m_count;
    double m_total; // seconds
    double m_self;  // seconds
    std::vector<TVStackReference> m_calls;
    std::vector<TVStackReference> m_callers;
};

std::ostream& operator<<(std::ostream& out, const TVStackFrame& frame);

#endif // TVSTACKFRAME_H
