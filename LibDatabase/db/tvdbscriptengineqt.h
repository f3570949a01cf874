#ifndef TVDBSCRIPTENGINEQT_H
#define TVDBSCRIPTENGINEQT_H

// TVDBScriptEngineQt: the engine of one script run against one object,
// with the global functions ("TVGet", "TVSet", "TVCallSelf", ...) that
// reach that object, its neighbours, the user (through TVDBScriptHost)
// and the date engine. A function called from a plain engine does nothing
// and gives back its first argument.
//
// A run is bounded in time (time_limit_ms): a script that runs away is
// stopped where it stands, with a message naming the script and line; a
// script can't catch that. While a run is under way on the main thread,
// the user's input and other timers wait, so that no window or autosave
// acts on the database in the middle of a script; a prompt lifts that,
// and the time limit, while it waits for the user.
//
// The engine gives scripts nothing of the file system or the network: no
// extensions are imported and no objects of the program are exposed.
// Scripts run on the thread that owns the object's database; a
// QCoreApplication must exist.

#include <QScriptEngine>

#include <string>

class TVDBObject;

class TVDBScriptEngineQt : public QScriptEngine
{
public:
    // The limit of a run, from the configuration ("ScriptTimeLimitMs").
    static constexpr int C_DefaultTimeLimitMs = 5000;

    // object may be null: an engine for expressions.
    TVDBScriptEngineQt(TVDBObject* object, bool interactive);
    ~TVDBScriptEngineQt() override;
    TVDBScriptEngineQt(const TVDBScriptEngineQt&) = delete;
    TVDBScriptEngineQt& operator=(const TVDBScriptEngineQt&) = delete;

    TVDBObject* get_object() const { return m_object; }
    bool is_interactive() const { return m_interactive; }

    struct Outcome
    {
        std::string value;     // the result as text
        int errorLine = -1;    // -1 when nothing was raised
        std::string errorText; // the exception's text
        bool stopped = false;  // the time limit ended it
    };
    // Evaluates text under the time limit; name is the file name that
    // messages carry.
    Outcome run(const std::string& text, const std::string& name);

    // The same for any engine (the expressions' plain ones).
    static Outcome guarded_evaluate(QScriptEngine& engine, const std::string& text,
                                    const std::string& name);

    // The engine of the innermost run under way on this thread when it is
    // one of these; null otherwise.
    static TVDBScriptEngineQt* current();
    // Whether any run, of a script or an expression, is under way on this
    // thread.
    static bool running();
    // Whether the time limit has stopped the outermost run of this thread.
    static bool run_stopped();

    // The limit for every run in ms (0: none). Set from the configuration
    // by default; tests set their own.
    static int time_limit_ms();
    static void set_time_limit_ms(int ms);

    // While a prompt waits for the user: the limit stops counting and the
    // window takes input again.
    class PromptScope
    {
    public:
        PromptScope();
        ~PromptScope();
        PromptScope(const PromptScope&) = delete;
        PromptScope& operator=(const PromptScope&) = delete;
    };

private:
    void register_functions();

    TVDBObject* m_object;
    bool m_interactive;
};

#endif // TVDBSCRIPTENGINEQT_H
