#ifndef TVDEBUG_H
#define TVDEBUG_H

// TVDebug: traces function calls with their durations and prints a profile.
//
// Functions are traced by a TVDebugScope at their head. Each thread has its
// own record: the singleton tvdebug() is the record of thread 0 (the main
// thread, and any thread that isn't a TVThread) and the head of a chain of
// records, one per thread seen so far. Which thread is calling is told by
// the function given to set_thread_fn (TVThread::thread_id, installed by
// TVThread::start_thread); without one, every call counts as thread 0.
//
// Threads: enter_function, leave_function, jprintf and display_profile may
// be called on tvdebug() from any thread, and work on the calling thread's
// record; a record is touched only by its own thread, so there is no lock.
// Two threads that the thread function can't tell apart (two foreign
// threads, both 0) must not trace at the same time. Reading another
// thread's record (get_finished, dump) is for after that thread has ended.
// Records live until the singleton is deleted, which must happen when no
// thread traces any more.
//
// Times come from TVDateUtils::unow(), so a test clock drives them too.

#include <atomic>
#include <iosfwd>
#include <string>
#include <vector>

#include "LibCore/application/tvsingleton.h"
#include "LibCore/log/tvstackframe.h"
#include "LibDate/core/tvdate.h"

class TVDebug : public TVSingleton<TVDebug>
{
public:
    // Gives the number of the calling thread.
    using ThreadFn = int (*)();

    // The record of thread 0, writing to standard error.
    TVDebug();
    TVDebug(const TVDebug&) = delete;
    TVDebug& operator=(const TVDebug&) = delete;
    // Deletes the records of the other threads with it.
    virtual ~TVDebug();

    // Forgets this record's stack, finished frames and start; keeps the
    // chain, the owner, the name, the stream and the thread function.
    void set_defaults(bool constructing);

    // Set on the head before any thread traces; records made later take the
    // head's stream.
    void set_thread_fn(ThreadFn fn);
    ThreadFn get_thread_fn() const;
    void set_name(const std::string& name);
    // Where trace lines and the profile go, for this record and every
    // record made later; null writes nothing. Not owned: the stream must
    // outlive the tracing.
    void set_log_stream(std::ostream* stream);

    // Pushes a frame for name on the calling thread's stack and, unless
    // quiet, writes the name. Does nothing for a null name, or with
    // skipIfIdle when nothing is being traced on this thread. Gives whether
    // a frame was pushed.
    bool enter_function(const char* name, bool quiet, bool skipIfIdle);
    // Stops and pops the calling thread's top frame, writes its times unless
    // it was quiet, and adds it to the profile. Nothing with an empty stack.
    void leave_function();
    // One line to the calling thread's stream, behind "| " for each frame on
    // its stack.
    void jprintf(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
    // The profile of the calling thread's finished frames, as a table.
    void display_profile();

    // The calling thread's record; made and linked in on first use.
    TVDebug* thread_record();
    // The record of that thread number, or null if it hasn't traced.
    const TVDebug* find_record(int owner) const;
    const TVDebug* get_next() const;

    int get_owner() const { return m_owner; }
    const std::string& get_name() const { return m_name; }
    const TVDate& get_start() const { return m_start; }
    int get_depth() const { return static_cast<int>(m_stack.size()); }
    // One merged frame per function name, in the order first finished.
    const std::vector<TVStackFrame>& get_finished() const { return m_finished; }

    virtual void dump(std::ostream& out, int indent) const;

private:
    // A record of another thread, linked behind head.
    TVDebug(TVDebug* head, int owner);

    TVDebug* head();
    void write_line(const std::string& text);
    void finish_frame(const TVStackFrame& frame);

    TVDebug* m_head;                  // null on the head itself
    int m_owner;                      // the thread number this record is for
    TVDate m_start;
    std::vector<TVStackFrame> m_stack; // innermost last
    std::vector<TVStackFrame> m_finished;
    std::atomic<ThreadFn> m_threadFn; // used on the head only
    std::string m_name;
    std::ostream* m_log;
    std::atomic<TVDebug*> m_next;     // owned
};

std::ostream& operator<<(std::ostream& out, const TVDebug& debug);

// The singleton; made on first use.
TVDebug* tvdebug();

#endif // TVDEBUG_H
