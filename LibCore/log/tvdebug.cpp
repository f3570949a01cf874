#include "LibCore/log/tvdebug.h"

#include <cstdarg>
#include <iostream>

#include "LibCore/log/tvdump.h"
#include "LibCore/textstr/tvtextstr.h"

namespace {
// The profile table is exactly this wide: "| " 49 " | " 3 " | " 7 " | " 7 " |".
const int C_ProfileWidth = 79;
const char* const C_LevelMark = "| ";
} // namespace

TVDebug::TVDebug()
    : m_head(nullptr), m_owner(0), m_threadFn(nullptr), m_name("thread 0"), m_log(&std::cerr),
      m_next(nullptr)
{
    set_defaults(true);
}

TVDebug::TVDebug(TVDebug* head, int owner)
    : m_head(head), m_owner(owner), m_threadFn(nullptr), m_name("thread " + std::to_string(owner)),
      m_log(head->m_log), m_next(nullptr)
{
    set_defaults(true);
    // One time line for the whole process.
    m_start = head->m_start;
}

TVDebug::~TVDebug()
{
    delete m_next.load();
}

void TVDebug::set_defaults(bool)
{
    m_start = TVDateUtils::unow();
    m_stack.clear();
    m_finished.clear();
}

void TVDebug::set_thread_fn(ThreadFn fn)
{
    head()->m_threadFn.store(fn);
}

TVDebug::ThreadFn TVDebug::get_thread_fn() const
{
    const TVDebug* first = m_head != nullptr ? m_head : this;
    return first->m_threadFn.load();
}

void TVDebug::set_name(const std::string& name)
{
    m_name = name;
}

void TVDebug::set_log_stream(std::ostream* stream)
{
    m_log = stream;
    for (TVDebug* record = m_next.load(); record != nullptr; record = record->m_next.load())
        record->m_log = stream;
}

TVDebug* TVDebug::head()
{
    return m_head != nullptr ? m_head : this;
}

TVDebug* TVDebug::thread_record()
{
    TVDebug* first = head();
    const ThreadFn fn = first->m_threadFn.load();
    const int owner = fn != nullptr ? fn() : 0;

    // Records are only ever appended, never removed, so a walk needs no lock:
    // a new one goes in at the tail by compare-and-swap, and a thread that
    // loses the race goes on walking through the winner's record.
    TVDebug* record = first;
    for (;;) {
        if (record->m_owner == owner)
            return record;
        TVDebug* next = record->m_next.load();
        if (next == nullptr) {
            TVDebug* fresh = new TVDebug(first, owner);
            if (record->m_next.compare_exchange_strong(next, fresh))
                return fresh;
            delete fresh;
        }
        record = next;
    }
}

const TVDebug* TVDebug::find_record(int owner) const
{
    for (const TVDebug* record = m_head != nullptr ? m_head : this; record != nullptr;
         record = record->m_next.load()) {
        if (record->m_owner == owner)
            return record;
    }
    return nullptr;
}

const TVDebug* TVDebug::get_next() const
{
    return m_next.load();
}

bool TVDebug::enter_function(const char* name, bool quiet, bool skipIfIdle)
{
    if (name == nullptr)
        return false;
    TVDebug* record = thread_record();
    if (skipIfIdle && record->m_stack.empty())
        return false;
    if (!quiet)
        record->write_line(name);
    record->m_stack.emplace_back(name, TVDateUtils::unow(), quiet);
    return true;
}

void TVDebug::leave_function()
{
    TVDebug* record = thread_record();
    if (record->m_stack.empty())
        return;
    TVStackFrame& frame = record->m_stack.back();
    const TVDate end = TVDateUtils::unow();
    frame.stop(end);
    if (!frame.is_quiet()) {
        record->write_line("");
        record->write_line(tv_sprintf("Duration: %.5f", frame.get_total()));
        record->write_line(tv_sprintf("Self:     %.5f", frame.get_self()));
        record->write_line(tv_sprintf("---- %s (%ld)", frame.get_name().c_str(),
                                      (end - record->m_start).get_as_seconds()));
    }
    TVStackFrame done = std::move(frame);
    record->m_stack.pop_back();
    if (!record->m_stack.empty()) {
        record->m_stack.back().add_call(done);
        done.add_caller(record->m_stack.back().get_name());
    }
    record->finish_frame(done);
}

void TVDebug::finish_frame(const TVStackFrame& frame)
{
    for (TVStackFrame& finished : m_finished) {
        if (finished.get_name() == frame.get_name()) {
            finished.merge(frame);
            return;
        }
    }
    m_finished.push_back(frame);
}

void TVDebug::jprintf(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    const std::string text = tv_vsprintf(fmt, args);
    va_end(args);
    thread_record()->write_line(text);
}

void TVDebug::write_line(const std::string& text)
{
    if (m_log == nullptr)
        return;
    std::string line;
    for (size_t level = 0; level < m_stack.size(); ++level)
        line += C_LevelMark;
    line += text;
    line += '\n';
    // One insertion per line, so that lines of threads sharing a stream
    // don't interleave within a line.
    *m_log << line << std::flush;
}

void TVDebug::display_profile()
{
    TVDebug* record = thread_record();
    if (record->m_log == nullptr)
        return;
    const std::string rule = std::string(C_ProfileWidth, '=') + "\n";
    std::string table = rule;
    for (const TVStackFrame& frame : record->m_finished) {
        table += tv_sprintf("| %-49s | %3s | %7s | %7s |\n", frame.get_name().c_str(),
                            tv_sprintf("%d", frame.get_count()).c_str(),
                            tv_sprintf("%.5f", frame.get_total()).c_str(),
                            tv_sprintf("%.5f", frame.get_self()).c_str());
        // Under each function the edges into it, then the edges out of it.
        for (const auto* edges : {&frame.get_callers(), &frame.get_calls()}) {
            for (const TVStackReference& edge : *edges) {
                table += tv_sprintf("| %49s | %3s | %7s | %7s |\n", edge.get_name().c_str(),
                                    tv_sprintf("%d", edge.get_calls()).c_str(),
                                    tv_sprintf("%.5f", edge.get_spent()).c_str(),
                                    tv_sprintf("%.5f", edge.get_average()).c_str());
            }
        }
    }
    table += rule;
    *record->m_log << table << std::flush;
}

void TVDebug::dump(std::ostream& out, int indent) const
{
    TVDump dump("TVDebug", out, indent);
    dump.add_entry("m_name", m_name);
    dump.add_entry("m_owner", m_owner);
    dump.add_entry("m_start", m_start.to_string("%D %T"));
    int index = 0;
    for (const TVStackFrame& frame : m_stack)
        dump.add_dump("m_stack", frame, index++);
    index = 0;
    for (const TVStackFrame& frame : m_finished)
        dump.add_dump("m_finished", frame, index++);
    dump.add_dump("m_next", m_next.load());
}

std::ostream& operator<<(std::ostream& out, const TVDebug& debug)
{
    debug.dump(out, 0);
    return out;
}

TVDebug* tvdebug()
{
    return TVDebug::instance();
}
