#include "LibCore/error/tverror.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "LibCore/error/tverrhandler.h"
#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvscopeguard.h"
#include "LibCore/textstr/tvtextstr.h"

namespace {

struct BuiltinCode {
    const char* name;
    const char* description;
};

// The built-in codes in number order: the entry's index is its number.
// Codes of higher libraries are here too so that their numbers never depend
// on link or initialisation order; a new code goes at the end, and a number
// once given is never reused.
const BuiltinCode C_BuiltinCodes[] = {
    {"TVErrC_ok", "Success."},
    {"TVThread::TVErrC_ThreadStart", "Could not start a new thread."},
    {"TVErrC_okEndOfFile", "Reached the end of the file."},
    {"TVErrC_okEndOfRecord", "Reached the end of the current record."},
    {"TVErrC_okFileChanged", "The file was changed."},
    {"TVErrC_okFileNotChanged", "The file was not changed."},
    {"TVErrC_okOK", "The user pressed the OK button."},
    {"TVErrC_okCancel", "The used pressed the Cancel button."},
    {"TVErrC_okCreate", "The user chose to create a new file."},
    {"TVErrC_okEdit", "The used pressed the Edit button."},
    {"TVErrC_okShutdown", "The user pressed the Shutdown button."},
    {"TVErrC_okRestart", "The process needs to be restarted."},
    {"TVErrC_okNext", "The user pressed the Next button."},
    {"TVErrC_okPrevious", "The user pressed the Previous button."},
    {"TVErrC_okDelete", "The user pressed the Delete button."},
    {"TVErrC_okFinished", "The operation is complete."},
    {"TVErrC_okNotFinished", "The operation is not complete."},
    {"TVErrC_okSucceeded", "The operation succeeded."},
    {"TVErrC_okFailed", "The operation failed."},
    {"TVErrC_okHandled", "The error was handled by one of the error handlers."},
    {"TVErrC_Error", "Error."},
    {"TVErrC_Assert", "Assertion failure."},
    {"TVErrC_StringNull", "The supplied string pointer was null."},
    {"TVErrC_StringBounds", "The position is outside the length of the string."},
    {"TVErrC_StringFormat", "The string contains unknown characters."},
    {"TVErrC_ArrayBounds", "The supplied array index is out of bounds."},
    {"TVErrC_ArrayFull", "The array is already full."},
    {"TVErrC_ArrayEmpty", "The array contains no records."},
    {"TVErrC_ArrayWrongLength", "The array is the wrong length for the current operation."},
    {"TVErrC_MapCorrupt", "The map refers to a record that does not exist."},
    {"TVErrC_NullPointer", "Null pointer supplied."},
    {"TVErrC_NullSingleton", "The requested singleton has not been set up."},
    {"TVErrC_DynamicCast", "Dynamic cast failed."},
    {"TVErrC_CaseMissing", "One of the case options is not handled."},
    {"TVErrC_UnknownReturnCode", "Not a recognised return code from the function."},
    {"TVErrC_VirtualOverride", "This function should be overridden the derived class."},
    {"TVErrC_InvalidState", "This object is currently in an invalid state."},
    {"TVErrC_InvalidValue", "This object has an invalid value."},
    {"TVErrC_RecordEdited", "There is already a record being edited."},
    {"TVErrC_RecordNotEdited", "There are no records being edited."},
    {"TVErrC_FileName", "The supplied file name is invalid."},
    {"TVErrC_FileOpen", "Could not open the requested file."},
    {"TVErrC_FileCreate", "Could not create the requested file."},
    {"TVErrC_FileRename", "Could not rename the requested file."},
    {"TVErrC_FileDelete", "Could not delete the requested file."},
    {"TVErrC_FileExists", "The file to write already exists."},
    {"TVErrC_FileNotExist", "The requested files does not exist."},
    {"TVErrC_FileAlreadyOpen", "The file to read is already open."},
    {"TVErrC_FileNotOpen", "The requested file has not been opened yet."},
    {"TVErrC_FileRead", "Could not read from the file."},
    {"TVErrC_FileWrite", "Could not write to the file."},
    {"TVErrC_FileClose", "Could not close the file."},
    {"TVErrC_FileLineInvalid", "The current line from the file is invalid."},
    {"TVErrC_FileLineTooShort", "Expected more data on the supplied file line."},
    {"TVErrC_FileTooShort", "Expected more records in the file."},
    {"TVErrC_FileInvalid", "The file contained unrecognised information."},
    {"TVErrC_FileMissingRecord", "The requested record is missing from the file."},
    {"TVErrC_OutOfMemory", "The system has run out of memory."},
    {"TVErrC_ProcessStart", "Could not start a new thread or process."},
    {"TVErrC_EnvVar", "An environment variable has not been set."},
    {"TVParam::TVErrC_ParamAmbiguous", "Ambiguous parameter specification."},
    {"TVParam::TVErrC_ParamInvalid", "Invalid parameter specification."},
    {"TVParam::TVErrC_ParamMissing", "Missing parameter."},
    {"TVParam::TVErrC_okNotHandled", "The supplied parameter was not handled in this context."},
    {"TVDatabase::TVErrC_NotADatabase", "The specified file is not a TVDatabase file."},
    {"TVDatabase::TVErrC_InvalidDatabaseVersion", "The database file version is not recognised."},
    {"TVDatabase::TVErrC_NewerAppVersion", "The database file was written with a newer version of the app."},
    {"TVDatabase::TVErrC_ObjectIdNotFound", "Could not find the specified object ID in the database."},
    {"TVDatabase::TVErrC_CorruptDatabase", "Corrupt database file."},
    {"TVDatabase::TVErrC_CorruptPartial", "Corrupt database session file."},
    {"TVDatabase::TVErrC_Intermediate", "Some files still remain from last session."},
    {"TVDatabase::TVErrC_DatabaseNotLoaded", "No database file loaded."},
    {"TVDatabase::TVErrC_DatabaseReadOnly", "Database opened read-only."},
    {"TVDatabase::TVErrC_DatabaseAlreadyLoaded", "Database file already loaded."},
    {"TVDatabase::TVErrC_WrongAppType", "Database file for different application type."},
    {"TVDatabase::TVErrC_InvalidObjectSpec", "Cannot use that object spec with this type of object."},
    {"TVDatabase::TVErrC_UnfilledVariables", "Not all variables have been filled in."},
    {"TVDatabase::TVErrC_ExtraVariables", "This object has extra un-needed variables."},
    {"TVDatabase::TVErrC_InvalidChild", "This object type cannot have a child of that type."},
    {"TVLockable::TVErrC_ObjectNotLocked", "Attempting to edit a record that is not locked."},
    {"TVLockable::TVErrC_ObjectLocked", "The specified record is locked elsewhere."},
    {"TVQuery::TVErrC_MissingObjectType", "Object type missing from the query."},
    {"TVImageExif::TVErrC_NotJPEG", "This is not a JPEG image."},
    {"TVImageExif::TVErrC_InvalidEXIF", "The EXIF information in this image is missing or corrupt."},
    {"TVObject::TVErrC_ObjectFuncNotRegistered", "The object creator function has not been registered."},
    {"TVObject::TVErrC_ObjectUnknown", "Could not find a reference to the supplied object name."},
    {"TVObject::TVErrC_ObjectNotRegistered", "That object has not been registered in the object database."},
};

const int C_Severities = 5;

TVError::DialogFn s_dialogFn = nullptr;
TVError::ActiveWindowFn s_activeWindowFn = nullptr;

std::string format_args(const char* fmt, va_list args)
{
    return fmt == nullptr ? std::string() : tv_vsprintf(fmt, args);
}

bool severity_index(int severity, int& index)
{
    if (severity < 0 || severity >= C_Severities)
        return false;
    index = severity;
    return true;
}

} // namespace

struct TVError::TVErrImpl {
    std::deque<std::unique_ptr<TVErrDetails>> m_error; // front is newest
    std::string m_program;
    std::string m_release;
    std::string m_vendor;
    TVDate m_defTime;
    std::vector<std::string> m_defaultMessage;
    std::ostream* m_stream[C_Severities] = {};
    TVErrActions m_action[C_Severities] = {};
    std::vector<TVErrHandler*> m_handler;
    bool m_errorUi = true;
    std::vector<std::unique_ptr<TVErrCode>> m_codes;
    TVErrCode m_unknownCode{-1, "MissingCode", "Missing error code."};
};

int tv_builtin_code(const char* name)
{
    const int count = static_cast<int>(sizeof C_BuiltinCodes / sizeof C_BuiltinCodes[0]);
    for (int i = 0; i < count; ++i)
        if (std::strcmp(C_BuiltinCodes[i].name, name) == 0)
            return i;
    return -1;
}

TVError::TVError() : d(new TVErrImpl)
{
    set_defaults(true);
}

TVError::TVError(const std::string& program, const std::string& release, const std::string& vendor)
    : TVError()
{
    d->m_program = program;
    d->m_release = release;
    d->m_vendor = vendor;
}

TVError::~TVError()
{
    while (!d->m_handler.empty())
        remove_handler(d->m_handler.front());
    if (m_object == this) {
        m_object = nullptr;
        m_manageDeletion = false;
    }
}

void TVError::set_defaults(bool /*constructing*/)
{
    d->m_error.clear();
    d->m_defTime = TVDate();
    d->m_defTime.set_blank();
    d->m_defaultMessage = {"Error: No details supplied.", "Internal program error."};
    d->m_stream[TVSevLog] = nullptr;
    for (int s = TVSevUser; s <= TVSevFatal; ++s)
        d->m_stream[s] = &std::cerr;
    d->m_action[TVSevLog] = TVActContinue;
    d->m_action[TVSevUser] = TVActContinue;
    d->m_action[TVSevWarning] = TVActContinue;
    d->m_action[TVSevError] = TVActThrow;
    d->m_action[TVSevFatal] = TVActAbort;
    d->m_errorUi = true;
    d->m_codes.clear();
    for (const BuiltinCode& code : C_BuiltinCodes)
        allocate_code(code.name, code.description);
}

bool TVError::is_error() const
{
    return !d->m_error.empty();
}

int TVError::get_value() const
{
    return d->m_error.empty() ? 0 : d->m_error.front()->get_value();
}

int TVError::get_code() const
{
    return d->m_error.empty() ? TVErrC_ok : d->m_error.front()->get_code();
}

int TVError::get_severity() const
{
    return d->m_error.empty() ? 0 : d->m_error.front()->get_severity();
}

const std::string& TVError::get_location() const
{
    static const std::string empty;
    return d->m_error.empty() ? empty : d->m_error.front()->get_location();
}

const std::string& TVError::get_details(int aspect) const
{
    if (!d->m_error.empty())
        return d->m_error.front()->get_details(aspect);
    if (aspect == TVAspectUser)
        return d->m_defaultMessage[TVAspectUser];
    return d->m_defaultMessage[TVAspectSystem];
}

void TVError::set_code(int code)
{
    if (!d->m_error.empty())
        d->m_error.front()->set_code(code);
}

TVErrDetails* TVError::error_details() const
{
    return d->m_error.empty() ? nullptr : d->m_error.front().get();
}

size_t TVError::error_count() const
{
    return d->m_error.size();
}

const TVErrDetails* TVError::error_at(size_t index) const
{
    return index < d->m_error.size() ? d->m_error[index].get() : nullptr;
}

void TVError::clear_last_error()
{
    if (!d->m_error.empty())
        d->m_error.pop_front();
}

void TVError::clear_all()
{
    d->m_error.clear();
}

void TVError::set_details(const std::string& text, int aspect)
{
    if (d->m_error.empty()) {
        std::fprintf(stderr, "TVError::set_details: Assertion `!m_error.empty()' failed.\n");
        std::abort();
    }
    TVErrDetails& details = *d->m_error.front();
    details.set_details(text, aspect);
    int s;
    if (severity_index(details.get_severity(), s) && d->m_stream[s] != nullptr)
        *d->m_stream[s] << *this;
}

void TVError::append_details(const std::string& text, int aspect, const std::string& location)
{
    if (d->m_error.empty())
        return;
    TVErrDetails& details = *d->m_error.front();
    if (!text.empty())
        details.append_details(text, aspect);
    if (!location.empty())
        details.append_location(location);
    const int severity = details.get_severity();
    handle_error(false, false);
    int s;
    if (severity_index(severity, s) && d->m_stream[s] != nullptr)
        *d->m_stream[s] << *this;
}

int TVError::allocate_code(const std::string& name, const std::string& description)
{
    const int code = static_cast<int>(d->m_codes.size());
    d->m_codes.push_back(std::make_unique<TVErrCode>(code, name, description));
    return code;
}

const TVErrCode& TVError::get_code(int code) const
{
    if (code < 0 || static_cast<size_t>(code) >= d->m_codes.size())
        return d->m_unknownCode;
    return *d->m_codes[static_cast<size_t>(code)];
}

size_t TVError::code_count() const
{
    return d->m_codes.size();
}

void TVError::set_stream(std::ostream* stream, int severity)
{
    if (severity == TVSevAll) {
        for (auto& s : d->m_stream)
            s = stream;
        return;
    }
    int s;
    if (severity_index(severity, s))
        d->m_stream[s] = stream;
}

std::ostream* TVError::get_stream(int severity) const
{
    int s;
    return severity_index(severity, s) ? d->m_stream[s] : nullptr;
}

void TVError::set_action(TVErrActions action, int severity)
{
    if (severity == TVSevAll) {
        for (auto& a : d->m_action)
            a = action;
        return;
    }
    int s;
    if (severity_index(severity, s))
        d->m_action[s] = action;
}

TVErrActions TVError::get_action(int severity) const
{
    int s;
    return severity_index(severity, s) ? d->m_action[s] : TVActContinue;
}

void TVError::set_program(const std::string& program, const std::string& release)
{
    d->m_program = program;
    d->m_release = release;
}

void TVError::set_vendor(const std::string& vendor)
{
    d->m_vendor = vendor;
}

const std::string& TVError::get_program() const { return d->m_program; }
const std::string& TVError::get_release() const { return d->m_release; }
const std::string& TVError::get_vendor() const { return d->m_vendor; }

void TVError::set_deftime(const TVDate& time)
{
    d->m_defTime = time;
}

void TVError::set_default_message(const std::string& text, int aspect)
{
    if (aspect == TVAspectBoth) {
        d->m_defaultMessage[TVAspectSystem] = text;
        d->m_defaultMessage[TVAspectUser] = text;
    } else if (aspect == TVAspectSystem || aspect == TVAspectUser) {
        d->m_defaultMessage[static_cast<size_t>(aspect)] = text;
    }
}

bool TVError::get_errorui() const { return d->m_errorUi; }
void TVError::set_errorui(bool on) { d->m_errorUi = on; }
void TVError::set_dialog_fn(DialogFn fn) { s_dialogFn = fn; }
TVError::DialogFn TVError::get_dialog_fn() { return s_dialogFn; }
void TVError::set_active_window_fn(ActiveWindowFn fn) { s_activeWindowFn = fn; }

void TVError::add_handler(TVErrHandler* handler)
{
    if (handler != nullptr)
        d->m_handler.push_back(handler);
}

int TVError::remove_handler(TVErrHandler* handler)
{
    for (auto it = d->m_handler.begin(); it != d->m_handler.end(); ++it) {
        if (*it == handler) {
            d->m_handler.erase(it);
            if (handler->get_manage_deletion())
                delete handler;
            break;
        }
    }
    return TVErrC_ok;
}

size_t TVError::handler_count() const
{
    return d->m_handler.size();
}

void TVError::populate_error(TVErrDetails& details, int code, TVErrSeverity severity,
                             const std::string& text, int aspect, const TVDate& time,
                             const std::string& location) const
{
    details.set_code(code);
    details.set_severity(severity);
    details.set_details(d->m_defaultMessage[TVAspectSystem], TVAspectSystem);
    details.set_details(d->m_defaultMessage[TVAspectUser], TVAspectUser);
    details.set_details(text, aspect);
    if (time.is_ok())
        details.set_time(time);
    else if (d->m_defTime.is_ok())
        details.set_time(d->m_defTime);
    details.set_location(location);
    if (s_activeWindowFn != nullptr) {
        const std::string window = s_activeWindowFn();
        if (!window.empty())
            details.append_extra("Active Window", window);
    }
}

int TVError::report(const TVErrDetails& details)
{
    d->m_error.push_front(std::make_unique<TVErrDetails>(details));
    return activate();
}

int TVError::activate()
{
    if (d->m_error.empty())
        return 0;
    if (handle_error(true, false) != TVErrC_okHandled) {
        int s;
        if (severity_index(d->m_error.front()->get_severity(), s) && d->m_stream[s] != nullptr)
            *d->m_stream[s] << *this;
        perform_action();
    }
    return get_value();
}

int TVError::handle_error(bool immediate, bool delayed)
{
    if (d->m_error.empty())
        return TVErrC_ok;
    // Walk from the newest handler: the last one added has the first say.
    for (auto it = d->m_handler.rbegin(); it != d->m_handler.rend(); ++it) {
        TVErrHandler* handler = *it;
        const bool call = (handler->get_trigger_immediate() && immediate) ||
                          handler->get_trigger_intermediate() ||
                          (handler->get_trigger_delayed() && delayed);
        if (!call)
            continue;
        if (handler->handle(*d->m_error.front()) == TVErrC_okHandled) {
            d->m_error.pop_front();
            return TVErrC_okHandled;
        }
    }
    return d->m_error.front()->get_value();
}

int TVError::perform_action()
{
    if (d->m_error.empty())
        return 0;
    const TVErrDetails& newest = *d->m_error.front();
    int s = 0;
    severity_index(newest.get_severity(), s);
    switch (d->m_action[s]) {
    case TVActThrow:
        throw TVErrDetails(newest);
    case TVActAbort:
        std::fprintf(stderr, "TVError::perform_action: Assertion `0' failed.\n");
        std::abort();
    case TVActContinue:
        break;
    }
    return newest.get_value();
}

void TVError::write_log(const TVErrDetails& details)
{
    TVErrDetails copy(details);
    for (auto it = d->m_handler.rbegin(); it != d->m_handler.rend(); ++it)
        (*it)->log(copy);
}

int TVError::write_stream(const TVErrDetails& details)
{
    int s;
    if (severity_index(details.get_severity(), s) && d->m_stream[s] != nullptr)
        *d->m_stream[s] << *this;
    return TVErrC_ok;
}

// Kept for callers that settle a warning by hand. The stack test reads
// "not empty means false" on purpose: it only settles what appeared later.
bool TVError::handle_last_warning(int value)
{
    if (!istvwarn(value) || !d->m_error.empty())
        return false;
    handle_error(false, true);
    if (!d->m_error.empty())
        d->m_error.pop_front();
    return true;
}

bool TVError::handle_last_error(int value)
{
    if (!istverr(value) || !d->m_error.empty())
        return false;
    handle_error(false, true);
    if (!d->m_error.empty())
        d->m_error.pop_front();
    return true;
}

void TVError::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVError Object:\n";
    out << pad << " program = " << d->m_program << "\n";
    out << pad << " release = " << d->m_release << "\n";
    out << pad << " vendor = " << d->m_vendor << "\n";
    out << pad << " errorUi = " << d->m_errorUi << "\n";
    out << pad << " codes = " << d->m_codes.size() << "\n";
    out << pad << " handlers = " << d->m_handler.size() << "\n";
    for (const TVErrHandler* handler : d->m_handler)
        handler->dump(out, indent + 1);
    out << pad << " pending = " << d->m_error.size() << "\n";
    for (const auto& details : d->m_error)
        details->dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const TVError& error)
{
    if (!error.d->m_program.empty()) {
        out << error.d->m_program;
        if (!error.d->m_release.empty())
            out << " (" << error.d->m_release << ")";
        if (!error.d->m_vendor.empty())
            out << " - " << error.d->m_vendor;
        out << std::endl;
    }
    if (!error.d->m_error.empty())
        out << *error.d->m_error.front();
    return out;
}

// ---------------------------------------------------------------------------
// Free functions

TVError* get_tverror()
{
    if (TVError::m_object == nullptr) {
        TVError* created = new TVError;
        // Another thread may have installed one meanwhile; that one wins.
        if (TVError::m_object == nullptr) {
            TVError::m_object = created;
            TVError::m_manageDeletion = true;
        } else {
            delete created;
        }
    }
    return TVError::m_object;
}

int allocate_code(const std::string& name, const std::string& description)
{
    return get_tverror()->allocate_code(name, description);
}

std::string tvlocation(const char* file, int line)
{
    const char* name = file == nullptr ? "" : file;
    for (const char* p = name; *p != '\0'; ++p)
        if (*p == '/' || *p == '\\')
            name = p + 1;
    // Every mark_changed builds one of these: no printf on that road.
    std::string location(name);
    location += ':';
    location += std::to_string(line);
    return location;
}

bool istvwarn_value(int value)
{
    if (value < 0)
        return get_tverror()->get_severity() > 0;
    return TVErrDetails::compute_severity(value) > 0;
}

bool istverr_value(int value)
{
    if (value < 0)
        return get_tverror()->get_severity() >= TVSevError;
    return TVErrDetails::compute_severity(value) >= TVSevError;
}

int tvsysreport(int code, TVErrSeverity severity, const std::string& location, const std::string& text)
{
    TVError* error = get_tverror();
    TVErrDetails details;
    error->populate_error(details, code, severity, text, TVAspectSystem, TVDate(), location);
    return error->report(details);
}

#define TV_FORMAT_ARGS(fmt, text)           \
    std::string text;                       \
    {                                       \
        va_list args;                       \
        va_start(args, fmt);                \
        text = format_args(fmt, args);      \
        va_end(args);                       \
    }

int tvfatal(int code, const std::string& location, const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    return tvsysreport(code, TVSevFatal, location, text);
}

int tverror(int code, const std::string& location, const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    return tvsysreport(code, TVSevError, location, text);
}

int tverror_and_handle(int code, const std::string& location, const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    tvsysreport(code, TVSevError, location, text);
    return get_tverror()->handle_error(true, true);
}

int tvwarning(int code, const std::string& location, const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    return tvsysreport(code, TVSevWarning, location, text);
}

int tvwarnuser(int code, const std::string& location, const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    TVError* error = get_tverror();
    TVErrDetails details;
    error->populate_error(details, code, TVSevUser, text, TVAspectBoth, TVDate(), location);
    return error->report(details);
}

void tvlog(const std::string& location, const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    TVError* error = get_tverror();
    TVErrDetails details;
    error->populate_error(details, TVErrC_ok, TVSevLog, text, TVAspectSystem, TVDate(), location);
    error->write_log(details);
}

int tverrorvalue()
{
    return get_tverror()->get_value();
}

int tvsysinfo_append(const std::string& location, const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    if (!text.empty())
        text = "\n" + text;
    TVError* error = get_tverror();
    if (error->is_error())
        error->append_details(text, TVAspectSystem, location);
    return tverrorvalue();
}

int tv_trail_return(int result, const std::string& location)
{
    tvsysinfo_append(location, "");
    return get_tverror()->is_error() ? tverrorvalue() : result;
}

void tv_trail_throw(const std::string& location)
{
    tvsysinfo_append(location, "");
    const TVErrDetails* newest = get_tverror()->error_details();
    if (newest == nullptr)
        throw;
    throw TVErrDetails(*newest);
}

int tvuserinfo_set(const char* fmt, ...)
{
    TV_FORMAT_ARGS(fmt, text);
    get_tverror()->set_details(text, TVAspectUser);
    return tverrorvalue();
}

const std::string& tvuserinfo_get()
{
    return get_tverror()->get_details(TVAspectUser);
}

const std::string& tvsysinfo_get()
{
    return get_tverror()->get_details(TVAspectSystem);
}

const std::string& tverrorlocation_get()
{
    return get_tverror()->get_location();
}

int tvhandle_error(int value, TVErrSeverity dialogSeverity)
{
    const int severity = TVErrDetails::compute_severity(value);
    if (severity == 0)
        return 0;
    TVError* error = get_tverror();
    TVErrDetails* details = error->error_details();
    if (details == nullptr)
        return 0;
    error->handle_error(false, true);
    if (error->get_errorui() && TVError::get_dialog_fn() != nullptr && error->error_details() == details)
        TVError::get_dialog_fn()(details, dialogSeverity);
    error->clear_all();
    return severity;
}

int tvusererror_handle(bool delayed)
{
    static bool running = false;
    if (running)
        return TVErrC_okHandled;
    TVScopeGuard guard(running);
    TVError* error = get_tverror();
    if (!error->is_error())
        return TVErrC_ok;
    return delayed ? error->handle_error(false, true) : error->handle_error(true, false);
}

// ---------------------------------------------------------------------------
// The plain codes.

int TVErrC_ok = tv_builtin_code("TVErrC_ok");
int TVErrC_okEndOfFile = tv_builtin_code("TVErrC_okEndOfFile");
int TVErrC_okEndOfRecord = tv_builtin_code("TVErrC_okEndOfRecord");
int TVErrC_okFileChanged = tv_builtin_code("TVErrC_okFileChanged");
int TVErrC_okFileNotChanged = tv_builtin_code("TVErrC_okFileNotChanged");
int TVErrC_okOK = tv_builtin_code("TVErrC_okOK");
int TVErrC_okCancel = tv_builtin_code("TVErrC_okCancel");
int TVErrC_okCreate = tv_builtin_code("TVErrC_okCreate");
int TVErrC_okEdit = tv_builtin_code("TVErrC_okEdit");
int TVErrC_okShutdown = tv_builtin_code("TVErrC_okShutdown");
int TVErrC_okRestart = tv_builtin_code("TVErrC_okRestart");
int TVErrC_okNext = tv_builtin_code("TVErrC_okNext");
int TVErrC_okPrevious = tv_builtin_code("TVErrC_okPrevious");
int TVErrC_okDelete = tv_builtin_code("TVErrC_okDelete");
int TVErrC_okFinished = tv_builtin_code("TVErrC_okFinished");
int TVErrC_okNotFinished = tv_builtin_code("TVErrC_okNotFinished");
int TVErrC_okSucceeded = tv_builtin_code("TVErrC_okSucceeded");
int TVErrC_okFailed = tv_builtin_code("TVErrC_okFailed");
int TVErrC_okHandled = tv_builtin_code("TVErrC_okHandled");
int TVErrC_Error = tv_builtin_code("TVErrC_Error");
int TVErrC_Assert = tv_builtin_code("TVErrC_Assert");
int TVErrC_StringNull = tv_builtin_code("TVErrC_StringNull");
int TVErrC_StringBounds = tv_builtin_code("TVErrC_StringBounds");
int TVErrC_StringFormat = tv_builtin_code("TVErrC_StringFormat");
int TVErrC_ArrayBounds = tv_builtin_code("TVErrC_ArrayBounds");
int TVErrC_ArrayFull = tv_builtin_code("TVErrC_ArrayFull");
int TVErrC_ArrayEmpty = tv_builtin_code("TVErrC_ArrayEmpty");
int TVErrC_ArrayWrongLength = tv_builtin_code("TVErrC_ArrayWrongLength");
int TVErrC_MapCorrupt = tv_builtin_code("TVErrC_MapCorrupt");
int TVErrC_NullPointer = tv_builtin_code("TVErrC_NullPointer");
int TVErrC_NullSingleton = tv_builtin_code("TVErrC_NullSingleton");
int TVErrC_DynamicCast = tv_builtin_code("TVErrC_DynamicCast");
int TVErrC_CaseMissing = tv_builtin_code("TVErrC_CaseMissing");
int TVErrC_UnknownReturnCode = tv_builtin_code("TVErrC_UnknownReturnCode");
int TVErrC_VirtualOverride = tv_builtin_code("TVErrC_VirtualOverride");
int TVErrC_InvalidState = tv_builtin_code("TVErrC_InvalidState");
int TVErrC_InvalidValue = tv_builtin_code("TVErrC_InvalidValue");
int TVErrC_RecordEdited = tv_builtin_code("TVErrC_RecordEdited");
int TVErrC_RecordNotEdited = tv_builtin_code("TVErrC_RecordNotEdited");
int TVErrC_FileName = tv_builtin_code("TVErrC_FileName");
int TVErrC_FileOpen = tv_builtin_code("TVErrC_FileOpen");
int TVErrC_FileCreate = tv_builtin_code("TVErrC_FileCreate");
int TVErrC_FileRename = tv_builtin_code("TVErrC_FileRename");
int TVErrC_FileDelete = tv_builtin_code("TVErrC_FileDelete");
int TVErrC_FileExists = tv_builtin_code("TVErrC_FileExists");
int TVErrC_FileNotExist = tv_builtin_code("TVErrC_FileNotExist");
int TVErrC_FileAlreadyOpen = tv_builtin_code("TVErrC_FileAlreadyOpen");
int TVErrC_FileNotOpen = tv_builtin_code("TVErrC_FileNotOpen");
int TVErrC_FileRead = tv_builtin_code("TVErrC_FileRead");
int TVErrC_FileWrite = tv_builtin_code("TVErrC_FileWrite");
int TVErrC_FileClose = tv_builtin_code("TVErrC_FileClose");
int TVErrC_FileLineInvalid = tv_builtin_code("TVErrC_FileLineInvalid");
int TVErrC_FileLineTooShort = tv_builtin_code("TVErrC_FileLineTooShort");
int TVErrC_FileTooShort = tv_builtin_code("TVErrC_FileTooShort");
int TVErrC_FileInvalid = tv_builtin_code("TVErrC_FileInvalid");
int TVErrC_FileMissingRecord = tv_builtin_code("TVErrC_FileMissingRecord");
int TVErrC_OutOfMemory = tv_builtin_code("TVErrC_OutOfMemory");
int TVErrC_ProcessStart = tv_builtin_code("TVErrC_ProcessStart");
int TVErrC_EnvVar = tv_builtin_code("TVErrC_EnvVar");

// The singleton exists, with its table, before main() runs.
namespace {
const TVError* const s_errorAtStart = get_tverror();
}
