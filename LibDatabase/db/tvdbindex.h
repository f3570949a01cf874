#ifndef TVDBINDEX_H
#define TVDBINDEX_H

// TVDBIndex: a database's transaction log, kept in memory and appended to
// the index file as events happen. The file is never rewritten:
//
//   index-file := { "@T:" LF transaction-record | "@I:" LF index-record }
//
// A later record of a transaction id replaces an earlier one (undo and redo
// append the transaction again with its new status). An "@I:" record says
// how many transactions the last full save already holds ("lastSave").
//
// Transactions are owned and kept in id order; ids are array positions.
// Without a file name the index works in memory only.

#include "LibDatabase/db/tvdbtransaction.h"
#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

class TVDBIndex : public TVObject
{
public:
    static constexpr const char* C_TransactionStart = "T:";
    static constexpr const char* C_IndexStart = "I:";

    TVDBIndex();
    TVDBIndex(const TVDBIndex& other);
    TVDBIndex& operator=(const TVDBIndex& other);
    ~TVDBIndex() override;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;

    void set_defaults(bool constructing);

    // Names the file and empties the log (the file is not read).
    void initialise(const std::string& file);
    // Empties the log; the file name stays.
    void reset();
    const std::string& get_filename() const { return m_fileName; }
    int size() const { return static_cast<int>(m_transactions.size()); }
    // Null for an id out of range.
    const TVDBTransaction* get_transaction(int id) const;

    // Ids below next are taken: the partial file holds blocks under them.
    // A block is on the disk before its record is (the record isn't
    // flushed), so a crash can lose the last records: with logged set (the
    // log was read from its file), the ids missing at its end come back as
    // active transactions under the operations their blocks name (ops, by
    // id). Others stand as placeholders: with the whole log lost nobody
    // knows what was undone, so they are no undo targets. Either way a new
    // transaction never shares a block's tag.
    void recover(int next, const std::map<int, std::string>& ops, bool logged);
    // Appends a new active transaction in memory and gives its tag. Its
    // record goes to the file by log_last, once its block is on the disk;
    // drop_last takes it back when the block could not be written.
    void add_transaction(const std::string& operation, std::string& tag, int version);
    [[nodiscard]] int log_last();
    void drop_last();
    // Appends one "@T:" record, flushed; nothing without a file name.
    [[nodiscard]] int write_transaction(const TVDBTransaction& transaction);
    // The last full save holds every transaction so far. Its "@I:" record
    // isn't flushed: without it the saved blocks replay onto the main
    // file, which changes nothing.
    [[nodiscard]] int mark_save();
    // Appends one "@I:" record; nothing without a file name.
    [[nodiscard]] int write_index(bool sync);
    // -1 when no save is recorded.
    int get_last_save() const { return m_lastSave; }
    // 0 (active) for an id out of range: a block whose transaction never
    // reached the log still counts.
    int get_status(int id) const;
    // Reads the log back. No name or no file: TVErrC_ok, unchanged. A
    // record that won't read: TVErrC_FileRead "Could not read the file %s";
    // a save mark beyond the transactions logged: TVErrC_FileInvalid
    // "The index %s names transactions that are not there.". Either way
    // the log is left empty with no save recorded, so every block replays.
    [[nodiscard]] int load();

    // Undo takes the last active transaction, redo the first undone one:
    // a new operation after an undo leaves the undone ones in their old
    // places, so redo brings them back in log order. A placeholder (a
    // transaction whose record is lost, without an operation) is passed
    // over: nobody could say what undoing it would undo.
    bool can_undo() const;
    bool can_redo() const;
    // The operation that undo / redo would act on; empty when none.
    std::string get_undo_operation() const;
    std::string get_redo_operation() const;
    // Flip that transaction's status and log it again; TVErrC_ok and
    // nothing done when there is none.
    [[nodiscard]] int undo();
    [[nodiscard]] int redo();

private:
    [[nodiscard]] int append_record(const char* tag, const TVObject& record, bool sync);
    [[nodiscard]] int read_records(const std::string& text);
    // Last of that status searching from the end, else the first; null if none.
    TVDBTransaction* find_status(int status, bool from_end) const;
    [[nodiscard]] int flip(int from, int to, bool from_end);

    std::string m_fileName;
    std::vector<std::unique_ptr<TVDBTransaction>> m_transactions;
    int m_lastSave;
    int m_version;
};

std::ostream& operator<<(std::ostream& out, const TVDBIndex& index);

#endif // TVDBINDEX_H
