#ifndef TVERROR_H
#define TVERROR_H

// The process-wide error framework. Every fallible operation returns an int
// error value (severity * 100000 + code). Reporting a fault records a
// TVErrDetails on the stack of the singleton TVError (index 0 newest) and
// runs its handlers; then, per severity, a warning returns its value, an
// error throws a copy of TVErrDetails, and a fatal error stops the process.
//
// Not thread-safe: the stack, the handler list and the code table have no
// lock. The built-in code table is complete before main() runs.

#include <deque>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "LibCore/application/tvsingleton.h"
#include "LibCore/error/tverrcode.h"
#include "LibCore/error/tverrdetails.h"

class TVErrHandler;

class TVError : public TVSingleton<TVError>
{
public:
    // Shown by tvhandle_error when the error UI is on. The widget layer
    // installs it; without one nothing is shown.
    using DialogFn = void (*)(TVErrDetails* details, TVErrSeverity dialogSeverity);
    // Object name of the application's active window, or empty if none.
    using ActiveWindowFn = std::string (*)();

    TVError();
    TVError(const std::string& program, const std::string& release, const std::string& vendor);
    TVError(const TVError&) = delete;
    TVError& operator=(const TVError&) = delete;
    virtual ~TVError();

    virtual void dump(std::ostream& out, int indent) const;

    void set_defaults(bool constructing);

    // Pending errors.
    bool is_error() const;
    int get_value() const;
    int get_code() const;
    int get_severity() const;
    const std::string& get_location() const;
    const std::string& get_details(int aspect) const;
    void set_code(int code);
    TVErrDetails* error_details() const; // newest, or null
    size_t error_count() const;
    const TVErrDetails* error_at(size_t index) const; // 0 is the newest
    void clear_last_error();
    void clear_all();

    // The newest error's text; stops the process if nothing is pending.
    void set_details(const std::string& text, int aspect);
    // Appends a breadcrumb to the newest error and runs the intermediate
    // handlers; does nothing if nothing is pending.
    void append_details(const std::string& text, int aspect, const std::string& location);

    // Codes.
    int allocate_code(const std::string& name, const std::string& description);
    // The registered code of that number; "MissingCode" for an unknown one.
    const TVErrCode& get_code(int code) const;
    size_t code_count() const;

    // Configuration. A severity of 5 (TVSevAll) means all five; any other
    // number outside 0..4 is ignored.
    void set_stream(std::ostream* stream, int severity);
    std::ostream* get_stream(int severity) const;
    void set_action(TVErrActions action, int severity);
    TVErrActions get_action(int severity) const;
    void set_program(const std::string& program, const std::string& release);
    void set_vendor(const std::string& vendor);
    const std::string& get_program() const;
    const std::string& get_release() const;
    const std::string& get_vendor() const;
    void set_deftime(const TVDate& time);
    void set_default_message(const std::string& text, int aspect);
    bool get_errorui() const;
    void set_errorui(bool on);
    static void set_dialog_fn(DialogFn fn);
    static DialogFn get_dialog_fn();
    static void set_active_window_fn(ActiveWindowFn fn);

    // Handlers; the error framework owns those whose m_manageDeletion is set.
    void add_handler(TVErrHandler* handler);
    int remove_handler(TVErrHandler* handler);
    size_t handler_count() const;

    // The road of an error.
    void populate_error(TVErrDetails& details, int code, TVErrSeverity severity,
                        const std::string& text, int aspect, const TVDate& time,
                        const std::string& location) const;
    int report(const TVErrDetails& details);
    int activate();
    int handle_error(bool immediate, bool delayed);
    int perform_action();
    void write_log(const TVErrDetails& details);
    int write_stream(const TVErrDetails& details);
    bool handle_last_warning(int value);
    bool handle_last_error(int value);

    friend std::ostream& operator<<(std::ostream& out, const TVError& error);

private:
    struct TVErrImpl;
    std::unique_ptr<TVErrImpl> d;
};

// The singleton; created at first use.
TVError* get_tverror();

// Number of a built-in code by its name, e.g. "TVErrC_FileOpen" or
// "TVParam::TVErrC_ParamMissing"; -1 if the name is unknown. The built-in
// table is fixed, so the numbers don't depend on the order in which the
// libraries are linked or initialised.
int tv_builtin_code(const char* name);
int allocate_code(const std::string& name, const std::string& description);

// "file:line" of the last path component of file.
std::string tvlocation(const char* file, int line);
#define TVLOCATION tvlocation(__FILE__, __LINE__)

// Severity above 0 / 3 or above. A negative argument asks about the stack.
// Inline for the value nearly every call sees, a plain code of severity 0:
// every member of every object read or written asks.
bool istvwarn_value(int value);
bool istverr_value(int value);
inline bool istvwarn(int value)
{
    return (value < 0 || value >= TVErrDetails::C_SeverityFactor) && istvwarn_value(value);
}
inline bool istverr(int value)
{
    return (value < 0 || value >= TVErrDetails::C_SeverityFactor) && istverr_value(value);
}

int tvsysreport(int code, TVErrSeverity severity, const std::string& location, const std::string& text);
int tvfatal(int code, const std::string& location, const char* fmt, ...) __attribute__((format(printf, 3, 4)));
int tverror(int code, const std::string& location, const char* fmt, ...) __attribute__((format(printf, 3, 4)));
int tverror_and_handle(int code, const std::string& location, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));
int tvwarning(int code, const std::string& location, const char* fmt, ...) __attribute__((format(printf, 3, 4)));
int tvwarnuser(int code, const std::string& location, const char* fmt, ...) __attribute__((format(printf, 3, 4)));
// A "Log: " line for the log files; never touches the stack.
void tvlog(const std::string& location, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

int tverrorvalue();

// The two halves of the inner form of the convention, for code that calls
// fallible functions:
//
//     try {
//         int result = step();
//         if (istvwarn(result))
//             return tv_trail_return(result, TVLOCATION);
//     } catch (const TVErrDetails&) {
//         tv_trail_throw(TVLOCATION);
//     }
//
// Each level adds its own position to the newest error's location.
// tv_trail_return gives the pending error's value to return; a failure
// returned without a report has no trail to extend, and its value is passed
// on rather than lost.
int tv_trail_return(int result, const std::string& location);
// Only inside a catch block: adds location, then throws a fresh copy of the
// newest error (or rethrows the caught exception if nothing is pending).
[[noreturn]] void tv_trail_throw(const std::string& location);
// Returns from the calling function with the trail extended if expr gives a
// warning or worse.
#define TV_PASS_ON(expr)                                          \
    do {                                                          \
        const int tvPassOn_ = (expr);                             \
        if (istvwarn(tvPassOn_))                                  \
            return tv_trail_return(tvPassOn_, TVLOCATION);        \
    } while (0)

// The breadcrumb a caller leaves on the way up; returns tverrorvalue().
int tvsysinfo_append(const std::string& location, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
int tvuserinfo_set(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
const std::string& tvuserinfo_get();
const std::string& tvsysinfo_get();
const std::string& tverrorlocation_get();

// The end of an error's road: delayed handlers, the dialog, then the stack
// is cleared. Returns the severity of value; above 1 means the user chose
// to stop. A value of severity 0 leaves the stack as it is.
int tvhandle_error(int value, TVErrSeverity dialogSeverity);
int tvusererror_handle(bool delayed);

// The plain codes. Numbers are assigned when the process starts; compare
// only through these names, never with literals.
extern int TVErrC_ok;
extern int TVErrC_okEndOfFile;
extern int TVErrC_okEndOfRecord;
extern int TVErrC_okFileChanged;
extern int TVErrC_okFileNotChanged;
extern int TVErrC_okOK;
extern int TVErrC_okCancel;
extern int TVErrC_okCreate;
extern int TVErrC_okEdit;
extern int TVErrC_okShutdown;
extern int TVErrC_okRestart;
extern int TVErrC_okNext;
extern int TVErrC_okPrevious;
extern int TVErrC_okDelete;
extern int TVErrC_okFinished;
extern int TVErrC_okNotFinished;
extern int TVErrC_okSucceeded;
extern int TVErrC_okFailed;
extern int TVErrC_okHandled;
extern int TVErrC_Error;
extern int TVErrC_Assert;
extern int TVErrC_StringNull;
extern int TVErrC_StringBounds;
extern int TVErrC_StringFormat;
extern int TVErrC_ArrayBounds;
extern int TVErrC_ArrayFull;
extern int TVErrC_ArrayEmpty;
extern int TVErrC_ArrayWrongLength;
extern int TVErrC_MapCorrupt;
extern int TVErrC_NullPointer;
extern int TVErrC_NullSingleton;
extern int TVErrC_DynamicCast;
extern int TVErrC_CaseMissing;
extern int TVErrC_UnknownReturnCode;
extern int TVErrC_VirtualOverride;
extern int TVErrC_InvalidState;
extern int TVErrC_InvalidValue;
extern int TVErrC_RecordEdited;
extern int TVErrC_RecordNotEdited;
extern int TVErrC_FileName;
extern int TVErrC_FileOpen;
extern int TVErrC_FileCreate;
extern int TVErrC_FileRename;
extern int TVErrC_FileDelete;
extern int TVErrC_FileExists;
extern int TVErrC_FileNotExist;
extern int TVErrC_FileAlreadyOpen;
extern int TVErrC_FileNotOpen;
extern int TVErrC_FileRead;
extern int TVErrC_FileWrite;
extern int TVErrC_FileClose;
extern int TVErrC_FileLineInvalid;
extern int TVErrC_FileLineTooShort;
extern int TVErrC_FileTooShort;
extern int TVErrC_FileInvalid;
extern int TVErrC_FileMissingRecord;
extern int TVErrC_OutOfMemory;
extern int TVErrC_ProcessStart;
extern int TVErrC_EnvVar;

#endif
