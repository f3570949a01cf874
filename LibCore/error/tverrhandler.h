#ifndef TVERRHANDLER_H
#define TVERRHANDLER_H

#include <iosfwd>

class TVErrDetails;

// Base of the handlers that TVError runs when an error is reported
// (immediate), carried up by a caller (intermediate) or settled at the top
// (delayed). A handler that returns TVErrC_okHandled consumes the error.
// The error framework deletes a handler whose manage-deletion flag is set
// when it is removed.
class TVErrHandler
{
public:
    TVErrHandler();
    TVErrHandler(bool immediate, bool intermediate, bool delayed, bool manageDeletion);
    TVErrHandler(const TVErrHandler&) = default;
    TVErrHandler& operator=(const TVErrHandler&) = default;
    virtual ~TVErrHandler();

    virtual void dump(std::ostream& out, int indent) const;
    // Returns the details' value, or TVErrC_okHandled to consume the error.
    virtual int handle(TVErrDetails& details);
    // Offered every "Log: " line; the base ignores it.
    virtual int log(TVErrDetails& details);

    void set_defaults(bool constructing);

    // Held and dumped; dispatch doesn't consult it.
    bool get_enable() const { return m_enable; }
    void set_enable(bool on) { m_enable = on; }
    bool get_trigger_immediate() const { return m_triggerImmediate; }
    bool get_trigger_intermediate() const { return m_triggerIntermediate; }
    bool get_trigger_delayed() const { return m_triggerDelayed; }
    bool get_manage_deletion() const { return m_manageDeletion; }
    void set_triggers(bool immediate, bool intermediate, bool delayed);
    void set_manage_deletion(bool on) { m_manageDeletion = on; }

protected:
    void dump_flags(std::ostream& out, int indent) const;

private:
    bool m_enable;
    bool m_triggerImmediate;
    bool m_triggerIntermediate;
    bool m_triggerDelayed;
    bool m_manageDeletion;
};

#endif
