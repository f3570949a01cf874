// The database engine against SQLite, in one run.
//
// Both hold the same rows: drill results of twelve fields (four ints,
// three doubles, four strings, a date), 1,000, 20,000 and 100,000 of them,
// in a temporary folder. Ours: load, full save, a durable one-object
// complete_operation, and undo of the last operation. SQLite (WAL): a
// one-row commit with synchronous FULL and NORMAL, loading every row into
// C++ values, and a bulk insert in one transaction. And the floor of a full
// save: writing the bytes of our main file and fsyncing them. Sync through
// a shared folder: a pull that merges another device's copy of every row,
// a push of the whole database, and the export to a string that a push
// sends, against the plain write of the same bytes. Last, the peak memory
// of a process holding 100,000 rows, ours against SQLite's, each in a
// process of its own.
//
// After Google Benchmark's table comes a summary of the ratios behind our
// targets. Every figure is wall-clock time per operation: most of these
// costs are waits on the disk, which CPU time does not see.

#include "LibCore/error/tverrdetails.h"
#include "LibCore/error/tverror.h"
#include "LibComms/cloud/tvcloudinstance.h"
#include "LibComms/cloud/tvcloudservice.h"
#include "LibComms/cloud/tvlocalservice.h"
#include "LibDatabase/db/tvdatabase.h"
#include "LibDatabase/db/tvexternaldb.h"
#include "LibDatabase/db/tvdbobject.h"
#include "LibDate/core/tvdate.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

// ---- The rows ----------------------------------------------------------------------------

constexpr const char* C_AppType = "BenchApp";
constexpr const char* C_ClassName = "TVBenchDrill";
const std::vector<int> C_Sizes = {1000, 20000, 100000};
constexpr int C_Large = 100000;
constexpr int C_Small = 1000;

// One drill result, as plain values: what a row turns into.
struct DrillRow {
    int first = 0;
    int second = 0;
    int given = 0;
    int attempts = 0;
    double score = 0.0;
    double seconds = 0.0;
    double difficulty = 0.0;
    std::string pupil;
    std::string topic;
    std::string question;
    std::string note;
    long taken = 0; // seconds since 1970, GMT
};

// The same rows every run: a fixed seed, names and texts of everyday lengths.
std::vector<DrillRow> make_rows(int count)
{
    static const char* const pupils[] = {"Amelia Hart", "Tomasz Nowak", "Yusuf Demir",
                                         "Grace O'Neill", "Lina Berg", "Mateo Rossi",
                                         "Priya Nair", "Oskar Lind"};
    static const char* const topics[] = {"Addition", "Subtraction", "Multiplication",
                                         "Division", "Fractions", "Times tables"};
    static const char* const ops[] = {" + ", " - ", " x ", " / "};
    std::mt19937 rng(20240602);
    std::vector<DrillRow> rows(static_cast<size_t>(count));
    for (DrillRow& r : rows) {
        r.first = static_cast<int>(rng() % 100);
        r.second = static_cast<int>(rng() % 12) + 1;
        r.given = static_cast<int>(rng() % 1200);
        r.attempts = static_cast<int>(rng() % 3) + 1;
        r.score = static_cast<double>(rng() % 1001) / 10.0;
        r.seconds = 0.5 + static_cast<double>(rng() % 29500) / 1000.0;
        r.difficulty = static_cast<double>(rng() % 500) / 100.0;
        r.pupil = pupils[rng() % 8];
        r.topic = topics[rng() % 6];
        r.question = std::to_string(r.first) + ops[rng() % 4] + std::to_string(r.second);
        r.note = rng() % 4 == 0 ? "Needed a hint; try again next week" : "";
        r.taken = 1704067200L + static_cast<long>(rng() % (180L * 86400L));
    }
    return rows;
}

// The row as a stored object of ours.
class TVBenchDrill : public TVDBObject
{
public:
    TVBenchDrill() { register_tvobject(); }
    explicit TVBenchDrill(const DrillRow& row)
        : m_first(row.first), m_second(row.second), m_given(row.given),
          m_attempts(row.attempts), m_score(row.score), m_seconds(row.seconds),
          m_difficulty(row.difficulty), m_pupil(row.pupil), m_topic(row.topic),
          m_question(row.question), m_note(row.note)
    {
        m_taken.set_time_t(row.taken, TVDate::C_GMT);
        register_tvobject();
    }
    TVBenchDrill(const TVBenchDrill& other) = default;
    TVBenchDrill& operator=(const TVBenchDrill& other) = default;
    ~TVBenchDrill() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source)
    {
        return tv_create_tvobject<TVBenchDrill>(out, source, C_ClassName);
    }
    void register_tvobject() override { register_objectname(C_ClassName, create_tvobject); }

    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override
    {
        try {
            int result = serialise_value(in, out, prefix, "A", TVSrlValue<int>(m_first, 0));
            if (!istvwarn(result))
                result = serialise_value(in, out, prefix, "B", TVSrlValue<int>(m_second, 0));
            if (!istvwarn(result))
                result = serialise_value(in, out, prefix, "G", TVSrlValue<int>(m_given, 0));
            if (!istvwarn(result))
                result = serialise_value(in, out, prefix, "N", TVSrlValue<int>(m_attempts, 0));
            // Three decimals hold every value these rows take.
            if (!istvwarn(result))
                result = serialise_value(in, out, prefix, "SC",
                                         TVSrlValue<double>(m_score, 0.0, 3));
            if (!istvwarn(result))
                result = serialise_value(in, out, prefix, "SE",
                                         TVSrlValue<double>(m_seconds, 0.0, 3));
            if (!istvwarn(result))
                result = serialise_value(in, out, prefix, "DF",
                                         TVSrlValue<double>(m_difficulty, 0.0, 3));
            if (!istvwarn(result))
                result = serialise_string(in, out, prefix, "PU", m_pupil, true);
            if (!istvwarn(result))
                result = serialise_string(in, out, prefix, "TO", m_topic, true);
            if (!istvwarn(result))
                result = serialise_string(in, out, prefix, "Q", m_question, true);
            if (!istvwarn(result))
                result = serialise_string(in, out, prefix, "NT", m_note, true);
            if (!istvwarn(result))
                result = serialise_value(in, out, prefix, "TK",
                                         TVSrlValue<TVDate>(m_taken, TVDate::C_Blank));
            if (!istvwarn(result))
                result = TVDBObject::serialise(in, out, "TVDBObject", version);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            return TVErrC_ok;
        } catch (const TVErrDetails&) {
            tv_trail_throw(TVLOCATION);
        }
    }

    int m_first = 0;
    int m_second = 0;
    int m_given = 0;
    int m_attempts = 0;
    double m_score = 0.0;
    double m_seconds = 0.0;
    double m_difficulty = 0.0;
    std::string m_pupil;
    std::string m_topic;
    std::string m_question;
    std::string m_note;
    TVDate m_taken{TVDate::E_DateBlank};
};

const TVObjectPreReg s_preReg(C_ClassName, TVBenchDrill::create_tvobject);

// ---- Files -------------------------------------------------------------------------------

fs::path g_root; // the run's temporary folder

// A name no other database of the run uses: the partial, index and base
// files of every database live in the shared scratch and cache folders,
// named after the main file's base name.
std::string fresh_name(const std::string& what, int count, const char* ext)
{
    static int serial = 0;
    return (g_root / "files" / (what + "-" + std::to_string(count) + "-" +
                                std::to_string(++serial) + ext))
        .string();
}

std::string slurp(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream all;
    all << in.rdbuf();
    return all.str();
}

std::string messages()
{
    std::string text;
    TVError* error = get_tverror();
    for (size_t i = 0; i < error->error_count(); ++i)
        text += error->error_at(i)->get_details(TVAspectSystem) + "; ";
    error->clear_all();
    return text;
}

// Stops the benchmark on a failed call, with the error texts.
bool failed(benchmark::State& state, int result, const char* what)
{
    if (result == TVErrC_ok)
        return false;
    state.SkipWithError((std::string(what) + ": " + messages()).c_str());
    return true;
}

bool sqlite_failed(benchmark::State& state, sqlite3* db, int rc, const char* what)
{
    if (rc == SQLITE_OK || rc == SQLITE_DONE || rc == SQLITE_ROW)
        return false;
    state.SkipWithError((std::string(what) + ": " + sqlite3_errmsg(db)).c_str());
    return true;
}

// ---- Our database ------------------------------------------------------------------------

std::unique_ptr<TVDatabase> open_ours(const std::string& file, int& result)
{
    auto db = std::make_unique<TVDatabase>();
    db->set_app_type(C_AppType);
    // As the program opens a file after a restart.
    result = db->load(file, true, std::string(), true, true, true);
    return db;
}

// The main file of count rows, made once per size and copied for each
// benchmark; empty if it could not be made.
const std::string& our_template(int count)
{
    static std::map<int, std::string> made;
    auto found = made.find(count);
    if (found != made.end())
        return found->second;
    std::string file = fresh_name("template", count, ".tvmaths");
    int result = TVErrC_ok;
    std::unique_ptr<TVDatabase> db = open_ours(file, result);
    // One open operation for all the rows, then one full save: the set-up
    // is not what is measured.
    for (const DrillRow& row : make_rows(count)) {
        if (result != TVErrC_ok)
            break;
        result = db->add_object(new TVBenchDrill(row), nullptr, "", "", -1, "");
    }
    if (result == TVErrC_ok)
        result = db->save(true, true, false);
    if (result == TVErrC_ok)
        result = db->unload();
    if (result != TVErrC_ok) {
        std::fprintf(stderr, "bench_db: could not make %s: %s\n", file.c_str(),
                     messages().c_str());
        file.clear();
    }
    return made[count] = file;
}

// A fresh copy of the main file of count rows, loaded.
std::unique_ptr<TVDatabase> loaded_copy(benchmark::State& state, int count)
{
    const std::string& source = our_template(count);
    if (source.empty()) {
        state.SkipWithError("no database file");
        return nullptr;
    }
    const std::string file = fresh_name("ours", count, ".tvmaths");
    fs::copy_file(source, file);
    int result = TVErrC_ok;
    std::unique_ptr<TVDatabase> db = open_ours(file, result);
    if (failed(state, result, "load"))
        return nullptr;
    return db;
}

// The rows took ids 1 to count (the database itself is 0); step by step
// the changes go round them all.
int row_id(int count, int64_t step)
{
    return 1 + static_cast<int>(step % count);
}

// What the user does between two operations: one answer corrected.
TVBenchDrill* change_one(TVDatabase& db, int count, int64_t step)
{
    auto* drill = dynamic_cast<TVBenchDrill*>(db.get_object_by_id(row_id(count, step)));
    if (drill == nullptr)
        return nullptr;
    drill->m_given += 1;
    drill->m_note = "Corrected " + std::to_string(step);
    drill->mark_changed(TVLOCATION, true);
    return drill;
}

void BM_OurLoad(benchmark::State& state, int count)
{
    const std::string& source = our_template(count);
    if (source.empty()) {
        state.SkipWithError("no database file");
        return;
    }
    const std::string file = fresh_name("load", count, ".tvmaths");
    fs::copy_file(source, file);
    for (auto _ : state) {
        int result = TVErrC_ok;
        std::unique_ptr<TVDatabase> db = open_ours(file, result);
        if (failed(state, result, "load"))
            break;
        if (db->get_nobjects() < count) {
            state.SkipWithError("rows missing after load");
            break;
        }
        state.PauseTiming();
        db.reset();
        state.ResumeTiming();
    }
    state.counters["bytes"] = static_cast<double>(fs::file_size(file));
}

void BM_OurSave(benchmark::State& state, int count)
{
    std::unique_ptr<TVDatabase> db = loaded_copy(state, count);
    // The session's first save also writes the base file and rotates a
    // backup; the saves measured are the ones after it.
    if (!db || failed(state, db->save(true, true, false), "first save"))
        return;
    for (auto _ : state)
        if (failed(state, db->save(true, true, false), "save"))
            break;
    state.counters["bytes"] = static_cast<double>(fs::file_size(db->get_filename()));
}

void BM_OurCompleteOperation(benchmark::State& state, int count)
{
    std::unique_ptr<TVDatabase> db = loaded_copy(state, count);
    if (!db)
        return;
    int64_t step = 0;
    for (auto _ : state) {
        if (change_one(*db, count, step++) == nullptr) {
            state.SkipWithError("no object");
            break;
        }
        if (failed(state, db->complete_operation("Correct answer"), "complete_operation"))
            break;
    }
}

void BM_OurUndo(benchmark::State& state, int count)
{
    std::unique_ptr<TVDatabase> db = loaded_copy(state, count);
    if (!db)
        return;
    int64_t step = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const int id = row_id(count, step);
        auto* before = dynamic_cast<TVBenchDrill*>(db->get_object_by_id(id));
        const int given = before ? before->m_given : 0;
        const bool changed = change_one(*db, count, step++) != nullptr;
        const int result = db->complete_operation("Correct answer");
        state.ResumeTiming();
        if (!changed) {
            state.SkipWithError("no object");
            break;
        }
        if (failed(state, result, "complete_operation") || failed(state, db->undo(), "undo"))
            break;
        // The rebuild made new objects: look the row up again.
        auto* after = dynamic_cast<TVBenchDrill*>(db->get_object_by_id(id));
        if (after == nullptr || after->m_given != given) {
            state.SkipWithError("undo left the change in place");
            break;
        }
    }
}

// ---- Sync through a shared folder -------------------------------------------------------

constexpr const char* C_LinkName = "bench";

fs::path share_folder()
{
    const fs::path share = g_root / "share";
    fs::create_directories(share);
    if (TVLocalService::get_syncdir() != share.string() &&
        istvwarn(TVLocalService::set_syncdir(share.string())))
        get_tverror()->clear_all();
    return share;
}

// Another device's copy in the shared folder: the same rows, every one
// changed there since, so that a merge takes each of them in.
bool write_peer_copy(int count)
{
    static std::map<int, bool> written;
    if (written[count])
        return true;
    share_folder();
    const std::string& source = our_template(count);
    const std::string file = fresh_name("peer", count, ".tvmaths");
    fs::copy_file(source, file);
    int result = TVErrC_ok;
    std::unique_ptr<TVDatabase> db = open_ours(file, result);
    std::string text;
    if (result == TVErrC_ok) {
        for (int i = 0; i < db->get_nobjects(); ++i)
            db->get_object_by_index(i)->mark_changed(TVLOCATION, true);
        result = db->export_db(std::string(), &text, false, std::string());
    }
    TVLocalService peer;
    TVLocalService* before = TVLocalService::swap_instance(&peer);
    TVCloudService::override_host("peer");
    if (result == TVErrC_ok)
        result = peer.send(C_LinkName, text);
    TVLocalService::swap_instance(before);
    TVCloudService::override_host("local");
    if (result != TVErrC_ok) {
        std::fprintf(stderr, "bench_db: no peer copy: %s\n", messages().c_str());
        return false;
    }
    return written[count] = true;
}

// A loaded copy linked to the shared folder under the peer's name; its own
// copy is written there too.
std::unique_ptr<TVDatabase> linked_copy(benchmark::State& state, int count, TVLocalService& service,
                                        TVExternalDB*& link)
{
    std::unique_ptr<TVDatabase> db = loaded_copy(state, count);
    TVLocalService::swap_instance(&service);
    TVCloudService::override_host("local");
    if (db && failed(state, db->add_external(TVCloudInstance::E_LocalShare, C_LinkName, 0, link),
                     "link"))
        return nullptr;
    return db;
}

// A pull that merges another device's copy of every row, each changed
// there: the peer's file read and parsed, each row taken in, the result
// saved whole.
void BM_OurPullMerge(benchmark::State& state, int count)
{
    if (!write_peer_copy(count)) {
        state.SkipWithError("no peer copy");
        return;
    }
    for (auto _ : state) {
        state.PauseTiming();
        TVLocalService service;
        TVExternalDB* link = nullptr;
        std::unique_ptr<TVDatabase> db = linked_copy(state, count, service, link);
        if (!db)
            break;
        (void)link->has_data(); // the first ask marks the peer's file wanted
        std::string details;
        state.ResumeTiming();
        const int result = db->pull(*link, false, details);
        state.PauseTiming();
        const bool merged = db->sync_state() == 3;
        db.reset();
        TVLocalService::swap_instance(nullptr);
        state.ResumeTiming();
        if (failed(state, result, "pull"))
            break;
        if (!merged) {
            state.SkipWithError("the pull did not merge");
            break;
        }
    }
}

// A push: the whole database rendered and written to the shared folder,
// with the index.
void BM_OurPush(benchmark::State& state, int count)
{
    TVLocalService service;
    TVExternalDB* link = nullptr;
    std::unique_ptr<TVDatabase> db = linked_copy(state, count, service, link);
    if (!db)
        return;
    for (auto _ : state)
        if (failed(state, db->push(*link, true), "push"))
            break;
    db.reset();
    TVLocalService::swap_instance(nullptr);
}

// What a push sends: the whole database rendered to a string.
void BM_OurExport(benchmark::State& state, int count)
{
    std::unique_ptr<TVDatabase> db = loaded_copy(state, count);
    if (!db)
        return;
    std::string text;
    for (auto _ : state)
        if (failed(state, db->export_db(std::string(), &text, false, std::string()), "export"))
            break;
    state.counters["bytes"] = static_cast<double>(text.size());
}

// The floor of a full save: the main file's bytes, written and, with sync,
// fsynced.
void plain_write(benchmark::State& state, int count, bool sync)
{
    const std::string& source = our_template(count);
    if (source.empty()) {
        state.SkipWithError("no database file");
        return;
    }
    const std::string bytes = slurp(source);
    const std::string file = fresh_name("plain", count, ".bin");
    for (auto _ : state) {
        const int fd = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (fd < 0) {
            state.SkipWithError("open");
            break;
        }
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        const int synced = sync ? ::fsync(fd) : 0;
        ::close(fd);
        if (written != static_cast<ssize_t>(bytes.size()) || synced != 0) {
            state.SkipWithError("write or fsync");
            break;
        }
    }
    state.counters["bytes"] = static_cast<double>(bytes.size());
}

void BM_PlainWriteFsync(benchmark::State& state, int count)
{
    plain_write(state, count, true);
}

void BM_PlainWrite(benchmark::State& state, int count)
{
    plain_write(state, count, false);
}

// ---- SQLite ------------------------------------------------------------------------------

constexpr const char* C_CreateTable =
    "CREATE TABLE drill (id INTEGER PRIMARY KEY, first INTEGER, second INTEGER, "
    "given INTEGER, attempts INTEGER, score REAL, seconds REAL, difficulty REAL, "
    "pupil TEXT, topic TEXT, question TEXT, note TEXT, taken INTEGER)";
constexpr const char* C_Insert =
    "INSERT INTO drill (id, first, second, given, attempts, score, seconds, difficulty, "
    "pupil, topic, question, note, taken) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr const char* C_Update =
    "UPDATE drill SET first=?2, second=?3, given=?4, attempts=?5, score=?6, seconds=?7, "
    "difficulty=?8, pupil=?9, topic=?10, question=?11, note=?12, taken=?13 WHERE id=?1";
constexpr const char* C_SelectAll =
    "SELECT first, second, given, attempts, score, seconds, difficulty, pupil, topic, "
    "question, note, taken FROM drill";

struct SqliteCloser {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct StmtFinaliser {
    void operator()(sqlite3_stmt* stmt) const { sqlite3_finalize(stmt); }
};
using SqliteDb = std::unique_ptr<sqlite3, SqliteCloser>;
using SqliteStmt = std::unique_ptr<sqlite3_stmt, StmtFinaliser>;

int sqlite_open(const std::string& file, const char* synchronous, SqliteDb& out)
{
    sqlite3* raw = nullptr;
    int rc = sqlite3_open_v2(file.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                             nullptr);
    out.reset(raw);
    if (rc != SQLITE_OK)
        return rc;
    rc = sqlite3_exec(raw, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(raw, (std::string("PRAGMA synchronous=") + synchronous).c_str(),
                          nullptr, nullptr, nullptr);
    return rc;
}

int sqlite_prepare(sqlite3* db, const char* sql, SqliteStmt& out)
{
    sqlite3_stmt* raw = nullptr;
    const int rc = sqlite3_prepare_v2(db, sql, -1, &raw, nullptr);
    out.reset(raw);
    return rc;
}

void bind_row(sqlite3_stmt* stmt, int64_t id, const DrillRow& r)
{
    sqlite3_bind_int64(stmt, 1, id);
    sqlite3_bind_int(stmt, 2, r.first);
    sqlite3_bind_int(stmt, 3, r.second);
    sqlite3_bind_int(stmt, 4, r.given);
    sqlite3_bind_int(stmt, 5, r.attempts);
    sqlite3_bind_double(stmt, 6, r.score);
    sqlite3_bind_double(stmt, 7, r.seconds);
    sqlite3_bind_double(stmt, 8, r.difficulty);
    sqlite3_bind_text(stmt, 9, r.pupil.c_str(), static_cast<int>(r.pupil.size()), SQLITE_STATIC);
    sqlite3_bind_text(stmt, 10, r.topic.c_str(), static_cast<int>(r.topic.size()), SQLITE_STATIC);
    sqlite3_bind_text(stmt, 11, r.question.c_str(), static_cast<int>(r.question.size()),
                      SQLITE_STATIC);
    sqlite3_bind_text(stmt, 12, r.note.c_str(), static_cast<int>(r.note.size()), SQLITE_STATIC);
    sqlite3_bind_int64(stmt, 13, r.taken);
}

// Creates the table and inserts the rows in one transaction (durable at COMMIT).
int sqlite_fill(sqlite3* db, const std::vector<DrillRow>& rows)
{
    int rc = sqlite3_exec(db, C_CreateTable, nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    SqliteStmt insert;
    if (rc == SQLITE_OK)
        rc = sqlite_prepare(db, C_Insert, insert);
    for (size_t i = 0; rc == SQLITE_OK && i < rows.size(); ++i) {
        bind_row(insert.get(), static_cast<int64_t>(i) + 1, rows[i]);
        rc = sqlite3_step(insert.get());
        if (rc == SQLITE_DONE)
            rc = sqlite3_reset(insert.get());
    }
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    return rc;
}

// The SQLite file of count rows, made once per size (closed, so the WAL is
// folded into it); empty if it could not be made.
const std::string& sqlite_template(int count)
{
    static std::map<int, std::string> made;
    auto found = made.find(count);
    if (found != made.end())
        return found->second;
    std::string file = fresh_name("template", count, ".sqlite");
    SqliteDb db;
    int rc = sqlite_open(file, "FULL", db);
    if (rc == SQLITE_OK)
        rc = sqlite_fill(db.get(), make_rows(count));
    if (rc != SQLITE_OK) {
        std::fprintf(stderr, "bench_db: could not make %s: %s\n", file.c_str(),
                     sqlite3_errmsg(db.get()));
        file.clear();
    }
    return made[count] = file;
}

std::string sqlite_copy(benchmark::State& state, int count)
{
    const std::string& source = sqlite_template(count);
    if (source.empty()) {
        state.SkipWithError("no SQLite file");
        return std::string();
    }
    const std::string file = fresh_name("sqlite", count, ".sqlite");
    fs::copy_file(source, file);
    return file;
}

void BM_SqliteCommit(benchmark::State& state, int count, const char* synchronous)
{
    const std::string file = sqlite_copy(state, count);
    if (file.empty())
        return;
    SqliteDb db;
    SqliteStmt update;
    if (sqlite_failed(state, db.get(), sqlite_open(file, synchronous, db), "open") ||
        sqlite_failed(state, db.get(), sqlite_prepare(db.get(), C_Update, update), "prepare"))
        return;
    std::vector<DrillRow> rows = make_rows(count);
    int64_t step = 0;
    for (auto _ : state) {
        // The same change as ours: one answer corrected, the whole row
        // written, committed on its own.
        const int64_t index = step % count;
        DrillRow& row = rows[static_cast<size_t>(index)];
        row.given += 1;
        row.note = "Corrected " + std::to_string(step++);
        bind_row(update.get(), index + 1, row);
        const int rc = sqlite3_step(update.get());
        sqlite3_reset(update.get());
        if (sqlite_failed(state, db.get(), rc, "update"))
            break;
    }
}


// One row of the select, as the program would hold it.
DrillRow read_row(sqlite3_stmt* s)
{
    const auto text = [s](int column) {
        return std::string(reinterpret_cast<const char*>(sqlite3_column_text(s, column)),
                           static_cast<size_t>(sqlite3_column_bytes(s, column)));
    };
    DrillRow r;
    r.first = sqlite3_column_int(s, 0);
    r.second = sqlite3_column_int(s, 1);
    r.given = sqlite3_column_int(s, 2);
    r.attempts = sqlite3_column_int(s, 3);
    r.score = sqlite3_column_double(s, 4);
    r.seconds = sqlite3_column_double(s, 5);
    r.difficulty = sqlite3_column_double(s, 6);
    r.pupil = text(7);
    r.topic = text(8);
    r.question = text(9);
    r.note = text(10);
    r.taken = static_cast<long>(sqlite3_column_int64(s, 11));
    return r;
}

void BM_SqliteLoadAll(benchmark::State& state, int count)
{
    const std::string file = sqlite_copy(state, count);
    if (file.empty())
        return;
    for (auto _ : state) {
        // Open to close, as our load opens and reads its file.
        SqliteDb db;
        SqliteStmt select;
        if (sqlite_failed(state, db.get(), sqlite_open(file, "FULL", db), "open") ||
            sqlite_failed(state, db.get(), sqlite_prepare(db.get(), C_SelectAll, select),
                          "prepare"))
            break;
        std::vector<DrillRow> rows;
        int rc;
        while ((rc = sqlite3_step(select.get())) == SQLITE_ROW) {
            rows.push_back(read_row(select.get()));
        }
        if (sqlite_failed(state, db.get(), rc, "select"))
            break;
        if (rows.size() != static_cast<size_t>(count)) {
            state.SkipWithError("wrong row count");
            break;
        }
        benchmark::DoNotOptimize(rows.data());
        state.PauseTiming();
        rows.clear();
        select.reset();
        db.reset();
        state.ResumeTiming();
    }
}

void BM_SqliteBulkInsert(benchmark::State& state, int count)
{
    const std::vector<DrillRow> rows = make_rows(count);
    for (auto _ : state) {
        state.PauseTiming();
        const std::string file = fresh_name("bulk", count, ".sqlite");
        state.ResumeTiming();
        SqliteDb db;
        int rc = sqlite_open(file, "FULL", db);
        if (rc == SQLITE_OK)
            rc = sqlite_fill(db.get(), rows);
        if (sqlite_failed(state, db.get(), rc, "bulk insert"))
            break;
        state.PauseTiming();
        db.reset();
        fs::remove(file);
        state.ResumeTiming();
    }
}

// ---- Peak memory ------------------------------------------------------------------------
//
// Each holder runs in a process of its own (this program again, told what
// to hold), so that neither sees the other's pages: the peak resident size
// of a process that loaded every row and still holds them.

constexpr const char* C_HoldFlag = "--hold";

// The child's side: loads file as told and exits; 0 when all rows are there.
int hold_rows(const std::string& what, const std::string& file, int count)
{
    if (what == "ours") {
        int result = TVErrC_ok;
        std::unique_ptr<TVDatabase> db = open_ours(file, result);
        return result == TVErrC_ok && db->get_nobjects() >= count ? 0 : 1;
    }
    SqliteDb db;
    SqliteStmt select;
    if (sqlite_open(file, "FULL", db) != SQLITE_OK ||
        sqlite_prepare(db.get(), C_SelectAll, select) != SQLITE_OK)
        return 1;
    std::vector<DrillRow> rows;
    while (sqlite3_step(select.get()) == SQLITE_ROW) {
        rows.push_back(read_row(select.get()));
    }
    return rows.size() == static_cast<size_t>(count) ? 0 : 1;
}

// The peak resident size in KiB of this process (VmHWM: of this program
// since its exec, unlike getrusage's, which keeps the forking parent's).
long own_peak_kib()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0)
            return std::atol(line.c_str() + 6);
    return -1;
}

// The peak resident size in KiB of a child holding the rows; -1 on failure.
long peak_kib(const char* what, const std::string& file, int count)
{
    char self[4096];
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return -1;
    self[length] = '\0';
    const std::string command = std::string("'") + self + "' " + C_HoldFlag + " " + what + " '" +
                                file + "' " + std::to_string(count);
    FILE* child = ::popen(command.c_str(), "r");
    if (child == nullptr)
        return -1;
    long kib = -1;
    if (std::fscanf(child, "%ld", &kib) != 1)
        kib = -1;
    return ::pclose(child) == 0 ? kib : -1;
}

// ---- Running and the summary -------------------------------------------------------------

// Google Benchmark's table, and each run's seconds per iteration by name.
class CollectingReporter : public benchmark::ConsoleReporter
{
public:
    explicit CollectingReporter(OutputOptions options) : ConsoleReporter(options) {}

    // With --benchmark_repetitions the median stands for the benchmark;
    // the other aggregates are left out.
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred || run.iterations <= 0)
                continue;
            const std::string& key = run.run_name.function_name;
            const bool median = run.run_type == Run::RT_Aggregate;
            if (median && run.aggregate_name != "median")
                continue;
            if (!median && m_median.count(key) != 0)
                continue;
            if (median)
                m_median.insert(key);
            const double n = static_cast<double>(run.iterations);
            m_seconds[key] = run.real_accumulated_time / n;
            m_cpu[key] = run.cpu_accumulated_time / n;
        }
    }
    // Seconds per iteration of the benchmark registered under name;
    // negative when it did not run or failed.
    double seconds(const std::string& name) const
    {
        const auto it = m_seconds.find(name);
        return it == m_seconds.end() ? -1.0 : it->second;
    }
    // The same in processor time of this thread.
    double cpu(const std::string& name) const
    {
        const auto it = m_cpu.find(name);
        return it == m_cpu.end() ? -1.0 : it->second;
    }

private:
    std::map<std::string, double> m_seconds;
    std::map<std::string, double> m_cpu;
    std::set<std::string> m_median;
};

std::string name(const char* what, int count)
{
    return std::string(what) + "/" + std::to_string(count);
}

// How long a benchmark runs. The quick ones (a commit, a small write) run
// for a second at every size: their waits on the disk vary, so they need
// many iterations. The slow ones (a whole file loaded, saved or replayed)
// take up to two seconds an iteration at 100,000 rows, so they get a fixed
// count from 20,000 rows up.
enum class Pace { Quick, Slow };
constexpr double C_QuickSeconds = 1.0;
constexpr double C_SlowSmallSeconds = 0.5;
constexpr int C_SlowIterations = 5;

template <class F>
void register_sizes(const char* what, F run, Pace pace)
{
    for (int count : C_Sizes) {
        benchmark::internal::Benchmark* b = benchmark::RegisterBenchmark(
            name(what, count).c_str(), [run, count](benchmark::State& s) { run(s, count); });
        b->UseRealTime()->Unit(benchmark::kMillisecond);
        if (pace == Pace::Quick)
            b->MinTime(C_QuickSeconds);
        else if (count == C_Small)
            b->MinTime(C_SlowSmallSeconds);
        else
            b->Iterations(C_SlowIterations);
    }
}

// The verdict goes by wall-clock time, as the targets are set; the ratio
// of processor times beside it shows how much of a miss the shared
// machine's waits make.
void print_row(const CollectingReporter& r, const std::string& target, const std::string& ours,
               const std::string& theirs, double limit)
{
    const double wall = r.seconds(ours);
    const double reference = r.seconds(theirs);
    if (wall < 0 || reference < 0) {
        std::printf("%-52s %10s %10s %7s %7s  %s\n", target.c_str(), "-", "-", "-", "-",
                    "not measured");
        return;
    }
    const double ratio = wall / reference;
    const double cpuRatio = r.cpu(theirs) > 0 ? r.cpu(ours) / r.cpu(theirs) : -1.0;
    std::printf("%-52s %10.3f %10.3f %7.2f %7.2f  %s\n", target.c_str(), wall * 1e3,
                reference * 1e3, ratio, cpuRatio, ratio <= limit ? "reached" : "not reached");
}

// Peak memory is in KiB, not ms; the columns are the same.
void print_memory()
{
    // Copies, since a load leaves its side files and SQLite its WAL.
    const auto copy_of = [](const std::string& source, const char* ext) {
        if (source.empty())
            return std::string();
        const std::string file = fresh_name("hold", C_Large, ext);
        fs::copy_file(source, file);
        return file;
    };
    const std::string ours = copy_of(our_template(C_Large), ".tvmaths");
    const std::string theirs = copy_of(sqlite_template(C_Large), ".sqlite");
    const long ourKib = ours.empty() ? -1 : peak_kib("ours", ours, C_Large);
    const long theirKib = theirs.empty() ? -1 : peak_kib("sqlite", theirs, C_Large);
    const char* target = "peak memory (MiB) <= 2 x SQLite's, 100000 rows";
    if (ourKib < 0 || theirKib < 0) {
        std::printf("%-52s %10s %10s %7s %7s  %s\n", target, "-", "-", "-", "-", "not measured");
        return;
    }
    const double ratio = static_cast<double>(ourKib) / static_cast<double>(theirKib);
    std::printf("%-52s %10.1f %10.1f %7.2f %7s  %s\n", target, ourKib / 1024.0,
                theirKib / 1024.0, ratio, "", ratio <= 2.0 ? "reached" : "not reached");
}

void print_summary(const CollectingReporter& r)
{
    std::printf("\nSummary (wall-clock ms per operation; ratio = ours / reference, and the "
                "same in processor time)\n");
    std::printf("%-52s %10s %10s %7s %7s  %s\n", "target", "ours", "reference", "ratio",
                "cpu", "verdict");
    for (int count : {C_Small, C_Large})
        print_row(r,
                  "complete_operation <= SQLite FULL commit, " + std::to_string(count) + " rows",
                  name("ours/complete_operation", count), name("sqlite/commit_full", count), 1.0);
    print_row(r, "complete_operation flat, 100000 vs 1000 rows",
              name("ours/complete_operation", C_Large), name("ours/complete_operation", C_Small),
              1.2);
    print_row(r, "load <= 2 x SQLite load-all, 100000 rows", name("ours/load", C_Large),
              name("sqlite/load_all", C_Large), 2.0);
    for (int count : C_Sizes)
        print_row(r, "save <= 3 x plain write+fsync, " + std::to_string(count) + " rows",
                  name("ours/save", count), name("plain/write_fsync", count), 3.0);
    print_row(r, "export to a string <= 2 x plain write, 100000 rows", name("ours/export", C_Large),
              name("plain/write", C_Large), 2.0);
    print_row(r, "pull merging a peer's copy <= 2 x load, 20000 rows",
              name("ours/pull_merge", 20000), name("ours/load", 20000), 2.0);
    print_row(r, "push <= 1.5 x full save, 20000 rows", name("ours/push", 20000),
              name("ours/save", 20000), 1.5);
    print_memory();
    std::printf("\nFor reference, not targets:\n");
    for (int count : C_Sizes) {
        const std::string label = "complete_operation vs SQLite NORMAL commit, " +
                                  std::to_string(count) + " rows";
        const double ours = r.seconds(name("ours/complete_operation", count));
        const double theirs = r.seconds(name("sqlite/commit_normal", count));
        if (ours >= 0 && theirs >= 0)
            std::printf("%-52s %10.3f %10.3f %7.2f\n", label.c_str(), ours * 1e3, theirs * 1e3,
                        ours / theirs);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 5 && std::string(argv[1]) == C_HoldFlag) {
        get_tverror()->set_stream(nullptr, TVSevAll);
        get_tverror()->set_action(TVActContinue, TVSevError);
        const int held = hold_rows(argv[2], argv[3], std::atoi(argv[4]));
        std::printf("%ld\n", own_peak_kib());
        return held;
    }
    // Every file of the run, the scratch and cache folders included, goes
    // into one temporary folder, removed at the end.
    char pattern[] = "/tmp/tvbench-db-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    if (made == nullptr) {
        std::perror("bench_db: mkdtemp");
        return 1;
    }
    g_root = made;
    fs::create_directories(g_root / "files");
    ::setenv("XDG_DATA_HOME", (g_root / "data").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (g_root / "cache").c_str(), 1);
    // Failures come back as values and are reported by the benchmark.
    get_tverror()->set_stream(nullptr, TVSevAll);
    get_tverror()->set_action(TVActContinue, TVSevError);

    register_sizes("ours/load", BM_OurLoad, Pace::Slow);
    register_sizes("ours/save", BM_OurSave, Pace::Slow);
    register_sizes("plain/write_fsync", BM_PlainWriteFsync, Pace::Quick);
    register_sizes("ours/export", BM_OurExport, Pace::Slow);
    register_sizes("plain/write", BM_PlainWrite, Pace::Quick);
    register_sizes("ours/complete_operation", BM_OurCompleteOperation, Pace::Quick);
    register_sizes("ours/undo", BM_OurUndo, Pace::Slow);
    register_sizes("ours/pull_merge", BM_OurPullMerge, Pace::Slow);
    register_sizes("ours/push", BM_OurPush, Pace::Slow);
    register_sizes(
        "sqlite/commit_full", [](benchmark::State& s, int n) { BM_SqliteCommit(s, n, "FULL"); },
        Pace::Quick);
    register_sizes(
        "sqlite/commit_normal",
        [](benchmark::State& s, int n) { BM_SqliteCommit(s, n, "NORMAL"); }, Pace::Quick);
    register_sizes("sqlite/load_all", BM_SqliteLoadAll, Pace::Slow);
    register_sizes("sqlite/bulk_insert", BM_SqliteBulkInsert, Pace::Slow);

    benchmark::Initialize(&argc, argv);
    // Colour only on a terminal, as the library's own reporter does.
    CollectingReporter reporter(::isatty(STDOUT_FILENO) != 0
                                    ? benchmark::ConsoleReporter::OO_Defaults
                                    : benchmark::ConsoleReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    print_summary(reporter);
    benchmark::Shutdown();

    std::error_code ec;
    fs::remove_all(g_root, ec);
    return 0;
}
