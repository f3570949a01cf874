#ifndef TVAPPLICATION_H
#define TVAPPLICATION_H

// The application object: the fixed identity of the program, its per-user
// paths, the recent files and the status stacks, and the order in which
// the program comes up (setup_error, setup_parameters, the locale, run).
// No toolkit in its logic beyond Qt Core; the event loop and the windows
// come with TVApplicationQt.
//
// Reached through tvapplication(). The running program's object installs
// itself as the singleton from its constructor (deletion not managed).

#include <iosfwd>
#include <string>
#include <vector>

#include "LibCore/application/tvappstatusentry.h"
#include "LibCore/application/tvsingleton.h"
#include "LibCore/ptrarray/tvptrarray.h"

class TVParam;
class TVParamCmdLine;
class TVParamFile;

// The program's identity, as its class hands it to the base constructor.
struct TVAppIdentity {
    std::string m_application; // short name without blanks: file names, toolkit name
    std::string m_title;       // name shown to the user
    std::string m_extension;   // data file extension, with its dot
    std::string m_release;     // dotted release number
    std::string m_tag;         // release tag of the build
    std::string m_date;        // release date, as text
    std::string m_description;
    std::string m_company;
    std::string m_domain;
    std::string m_copyright;
    std::string m_authors;
    std::string m_logo;
    std::string m_email;
    std::string m_web;
    std::string m_website;
};

class TVApplication : public TVSingleton<TVApplication>
{
public:
    static const char* const C_LastDBFile;     // "LastFile"
    static const char* const C_LastSession;    // "LastSession"
    static const char* const C_NumLastFiles;   // "NumLastFiles"
    static const char* const C_RecentBookmark; // "RecentBookmark"
    static const char C_RecentSep = ';';
    static const int C_NumberRecent = 10;

    TVApplication();
    TVApplication(int argc, char** argv, const TVAppIdentity& identity);
    TVApplication(const TVApplication&) = delete;
    TVApplication& operator=(const TVApplication&) = delete;
    virtual ~TVApplication();

    virtual void dump(std::ostream& out, int indent) const;
    virtual int setup_error();
    virtual int setup_parameters();
    // The program's configuration file alone, no command line: for a tool
    // that acts for the program on its files and settings.
    [[nodiscard]] int setup_config();
    virtual int parameters(TVParam& param, TVParamCmdLine& cmdline, TVParamFile& file);
    // Start without a toolkit: error set-up, parameters, locale, run.
    virtual int start();
    virtual int run();
    virtual void push_status(const std::string& text, double percentage, bool foreground, int delayMicroseconds);
    virtual void pop_status(const std::string& text, bool foreground);

    // Identity.
    const std::string& get_application() const { return m_application; }
    const std::string& get_title() const { return m_title; }
    const std::string& get_extension() const { return m_extension; }
    const std::string& get_release() const { return m_release; }
    const std::string& get_tag() const { return m_tag; }
    const std::string& get_date() const { return m_date; }
    const std::string& get_description() const { return m_description; }
    const std::string& get_company() const { return m_company; }
    const std::string& get_domain() const { return m_domain; }
    const std::string& get_copyright() const { return m_copyright; }
    const std::string& get_authors() const { return m_authors; }
    const std::string& get_attribution() const { return m_attribution; }
    void set_attribution(const std::string& text) { m_attribution = text; }
    const std::string& get_logo() const { return m_logo; }
    const std::string& get_email() const { return m_email; }
    const std::string& get_web() const { return m_web; }
    const std::string& get_website() const { return m_website; }
    void add_app_store(const std::string& apple, const std::string& microsoft, const std::string& google);
    // The store page of this platform; empty where there is none.
    std::string get_app_store() const;
    int get_argc() const { return m_argc; }
    char** get_argv() const { return m_argv; }

    // "TarvelloMaths-2.0.0" and "TarvelloMaths-2".
    std::string get_release_tag() const;
    std::string get_major_tag() const;
    // "2.0.0" gives 2000: 1000 times the first part plus the second.
    static int release_to_int(const std::string& release);
    // The machine's name, or the one set_hostname_override gave (a tool
    // acting for another device, a test playing several).
    static std::string get_hostname();
    // Empty gives the machine's name back.
    static void set_hostname_override(const std::string& host);

    // Paths (the first standard location of each kind).
    std::string get_executable() const;
    std::string get_executable_dir() const;
    std::string get_resources_dir() const;
    std::string get_doc_dir() const;
    std::string get_scratch_dir() const;
    std::string get_data_dir() const;
    std::string get_cache_dir() const;
    std::string get_config_dir() const;
    std::string get_documents_dir() const;
    std::string get_error_log() const;
    std::string get_performance_log() const;

    // Recent files and the files of the last session.
    // These keep their lists in the user's configuration file through the
    // parameters; without parameters they only change the lists in memory.
    [[nodiscard]] int add_recent(const std::string& file, int position);
    [[nodiscard]] int save_recent();
    void load_recent();
    [[nodiscard]] int record_open_windows(int count, bool keep);
    [[nodiscard]] int clear_session();
    std::string get_first_file() const;
    const std::vector<std::string>& get_recent() const { return m_recent; }
    const std::vector<std::string>& get_session() const { return m_session; }
    int get_recent_windows() const { return m_recentWindows; }
    // Name of the bookmark that keeps the right to open file again.
    static std::string recent_tag(const std::string& file);

    // Status stacks. The foreground text is empty until the earliest entry
    // may be shown.
    std::string foreground_status() const;
    double status_percentage(const std::string& text, bool foreground) const;
    size_t status_count(bool foreground) const;

protected:
    int m_argc;
    char** m_argv;
    std::string m_executable;
    std::string m_application;
    std::string m_title;
    std::string m_extension;
    std::string m_release;
    std::string m_tag;
    std::string m_date;
    std::string m_description;
    std::string m_company;
    std::string m_domain;
    std::string m_copyright;
    std::string m_authors;
    std::string m_attribution;
    std::string m_logo;
    std::string m_email;
    std::string m_web;
    std::string m_website;
    std::string m_appleStore;
    std::string m_msStore;
    std::string m_googleStore;
    std::vector<std::string> m_recent;
    std::vector<std::string> m_session;
    int m_recentWindows;
    TVPtrArray<TVAppStatusEntry> m_foreground;
    TVPtrArray<TVAppStatusEntry> m_background;

private:
    int set_value(const std::string& name, const std::string& value);
    TVPtrArray<TVAppStatusEntry>& stack(bool foreground) { return foreground ? m_foreground : m_background; }
    const TVPtrArray<TVAppStatusEntry>& stack(bool foreground) const
    {
        return foreground ? m_foreground : m_background;
    }
};

// The singleton; makes a plain TVApplication with empty texts if none exists.
TVApplication* tvapplication();

#endif
