#ifndef TVDBMANAGER_H
#define TVDBMANAGER_H

// TVDBManager: the toolkit-free half of the window that owns a database
// (TVDBManagerQt): the autosave of the periodic update, the pause of that
// update, and where a database file lives by default.
//
// It refers to the database, which must outlive it, and owns nothing. Main
// thread only, like the database itself.

#include <iosfwd>
#include <string>

class TVDatabase;

class TVDBManager
{
public:
    // Names of the system values (user configuration) the manager reads.
    static constexpr const char* C_AutoSave = "AutoSave";
    static constexpr const char* C_Backups = "Backups";
    // Characters that end a word for completion.
    static constexpr const char* C_CompSeparator = ",.-;:/";

    explicit TVDBManager(TVDatabase& db);
    TVDBManager(const TVDBManager&) = delete;
    TVDBManager& operator=(const TVDBManager&) = delete;
    virtual ~TVDBManager();

    // Applies the user's "AutoSave" (0 or 1) and "Backups" (a count) to the
    // database; a value that isn't set leaves the database's own.
    void read_settings();

    // Writes the main file if the database is loaded, autosave is on and
    // it changed since its main file was last written whole, whoever wrote
    // it. While running the save is stamped and pushed; when closing it is
    // verified instead.
    [[nodiscard]] int do_autosave(bool closing);

    // Only stored: the periodic update reads it.
    void pause_periodic_update(bool pause) { m_paused = pause; }
    bool is_paused() const { return m_paused; }

    // The application's data folder (made if missing), "/", name (the
    // application's name when empty) and the data file extension.
    [[nodiscard]] static int get_default_filename(std::string& out, const std::string& name);
    // The file to open at start: with use_recent, the first recent file if
    // it still exists; else get_default_filename(name).
    [[nodiscard]] static int get_filename(std::string& out, const std::string& name,
                                          bool use_recent);

    // The database changed since it was last written whole to its links.
    bool needs_push() const;
    // The database has a link to a shared copy: the cloud controls show.
    bool has_cloud() const;
    // The base name of the database's file; empty for one in memory.
    std::string get_dbname() const;
    // The file a copy goes through on its way to another database.
    std::string default_paste_buffer() const;
    // The clipboard of databases belongs to the schema layer; nothing here.
    [[nodiscard]] virtual int export_paste_buffer(const std::string& file);
    [[nodiscard]] virtual int import_paste_buffer(const std::string& file);
    virtual bool paste_buffer_available() const;

    TVDatabase& get_database() const { return m_db; }

    virtual void dump(std::ostream& out, int indent) const;

private:
    TVDatabase& m_db;
    bool m_paused = false;
};

std::ostream& operator<<(std::ostream& out, const TVDBManager& manager);

#endif // TVDBMANAGER_H
