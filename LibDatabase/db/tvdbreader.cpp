#include "LibDatabase/db/tvdbreader.h"

#include "LibDatabase/db/tvdatabase_p.h"
#include "LibDatabase/db/tvdbtransaction.h"
#include "LibDatabase/db/tvdbwritefile.h"
#include "LibObject/object/tvserialform.h"
#include "LibObject/object/tvserialisationentry.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <deque>
#include <memory>
#include <sstream>
#include <vector>

namespace {

bool starts_with(const std::string& text, const char* prefix)
{
    return text.compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}

std::string rtrim(std::string text)
{
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    return text;
}

// Byte ranges of a partial file's blocks: a block starts at a top-level
// "!Transaction!" line. Nested objects are skipped by the serial form's
// brace count, so a field of that name inside an object starts nothing.
struct Block {
    size_t begin;
    size_t end;
};

std::vector<Block> split_blocks(std::string_view text)
{
    const std::string mark = std::string("!") + TVDBFormat::C_Transaction + "!";
    std::vector<Block> blocks{{0, 0}};
    bool nested = false;
    bool opened = false;
    int depth = 0;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t eol = text.find('\n', pos);
        eol = eol == std::string::npos ? text.size() : eol + 1;
        const char first = text[pos];
        if (nested) {
            if (first == '{') {
                ++depth;
                opened = true;
            } else if (first == '}') {
                --depth;
            }
            if (opened && depth <= 0)
                nested = false;
        } else if (first == '@' && eol - pos > 2) {
            nested = true;
            opened = false;
            depth = 0;
        } else if (text.compare(pos, mark.size(), mark) == 0 && pos > blocks.back().begin) {
            blocks.back().end = pos;
            blocks.push_back({pos, pos});
        }
        pos = eol;
    }
    blocks.back().end = text.size();
    return blocks;
}
} // namespace

TVDBReader::TVDBReader(TVDatabase& db) : m_db(db), d(db.d.get())
{
}

int TVDBReader::read(std::string_view text, bool partial, bool skip_saved)
{
    std::string_view rest = text;
    std::string_view first;
    if (!TVSerialForm::next_line(rest, first))
        first = std::string_view();
    const size_t headerBytes = static_cast<size_t>(text.size() - rest.size());
    std::string line(first);
    TVSerialForm::strip_line_ends(line);
    if (rtrim(line) != TVDBFormat::C_Identifier) {
        if (partial)
            return TVErrC_okDelete;
        return tverror(TVDatabase::TVErrC_NotADatabase, TVLOCATION,
                       "The file you are opening is not a database file.");
    }
    std::vector<Block> blocks = partial ? split_blocks(rest) : std::vector<Block>{{0, rest.size()}};
    bool skip = partial && skip_saved && d->m_index.get_last_save() > 0;
    int maxId = d->m_uniqueId;
    std::string dbText;
    int failed = TVErrC_ok;
    bool thrown = false;
    d->m_partialGoodBytes = static_cast<long>(headerBytes);
    d->m_partialNextTag = 0;
    d->m_partialOps.clear();
    for (const Block& block : blocks) {
        try {
            failed = read_block(rest.substr(block.begin, block.end - block.begin), partial,
                                skip_saved, skip, maxId, dbText);
        } catch (const TVErrDetails&) {
            failed = tverrorvalue();
            thrown = true;
        }
        if (istvwarn(failed))
            break;
        d->m_partialGoodBytes = static_cast<long>(headerBytes + block.end);
    }
    // What was read whole stands, even when a later block failed.
    try {
        if (dbText.empty() && !partial && !istvwarn(failed))
            return tverror(TVDatabase::TVErrC_NotADatabase, TVLOCATION,
                           "Could not locate database information in DB file.");
        if (!dbText.empty()) {
            const int result = m_db.object_from_string(dbText, d->m_appFileVersion);
            if (istvwarn(result) && !istvwarn(failed))
                return tv_trail_return(result, TVLOCATION);
        }
        d->m_uniqueId = std::max(d->m_uniqueId, maxId);
        m_db.resolve_containers();
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    if (thrown)
        throw TVErrDetails(*get_tverror()->error_details());
    if (istvwarn(failed))
        return tv_trail_return(failed, TVLOCATION);
    return TVErrC_ok;
}

// One block, all or nothing: its objects are built first and go into the
// database only when every one of them has read.
int TVDBReader::read_block(std::string_view text, bool partial, bool skip_saved, bool& skip,
                           int& max_id, std::string& db_text)
{
    struct Staged {
        std::unique_ptr<TVDBObject> m_object;
        std::string_view m_text;
    };
    // An object's lines stay where they are in text unless they needed
    // cleaning; then they are the entry's value, kept here while the
    // objects are staged.
    std::deque<TVSerialisationEntry> cleaned;
    std::vector<Staged> staged;
    std::string blockDb;
    bool localSkip = skip;
    int localMax = max_id;
    int nextTag = d->m_partialNextTag;
    std::map<int, std::string> ops;
    const int lastSave = d->m_index.get_last_save();
    // The versions the block names take effect with its objects.
    int fileVersion = d->m_databaseFileVersion;
    int appVersion = d->m_appFileVersion;
    std::string_view in = text;
    for (;;) {
        TVSerialisationEntry entry;
        std::string_view block;
        const int read = entry.read_entry(in, block);
        if (read == TVErrC_okEndOfRecord)
            break;
        TV_PASS_ON(read);
        if (entry.get_entrytype() == TVSerialisationEntry::E_TaggedField) {
            if (entry.get_tag() == TVDBFormat::C_Version) {
                const int version = std::atoi(entry.get_value().c_str());
                if (version != TVDBFormat::C_LatestFileVersion)
                    return tverror(TVDatabase::TVErrC_InvalidDatabaseVersion, TVLOCATION,
                                   "Does not handle database version %d (max version handled "
                                   "is %d)",
                                   version, TVDBFormat::C_LatestFileVersion);
                fileVersion = version;
            } else if (entry.get_tag() == TVDBFormat::C_Transaction && partial) {
                const std::string& tag = entry.get_value();
                const int id = TVDBTransaction::read_transaction_tag(tag);
                nextTag = std::max(nextTag, id + 1);
                const size_t colon = tag.find(':');
                if (id >= 0 && colon != std::string::npos)
                    ops[id] = tag.substr(colon + 1);
                localSkip = d->m_index.get_status(id) != TVDBTransaction::E_Active ||
                            (skip_saved && id < lastSave);
            }
            continue;
        }
        if (entry.get_entrytype() != TVSerialisationEntry::E_TaggedClass ||
            !starts_with(entry.get_tag(), TVDBFormat::C_ObjectStart) || localSkip)
            continue;
        if (block.data() == nullptr) {
            cleaned.push_back(std::move(entry));
            block = cleaned.back().get_value();
        }
        const std::string_view objectText = block;
        TVObject* made = nullptr;
        std::string_view lines = objectText;
        TV_PASS_ON(TVObject::read_class(lines, &made, nullptr, appVersion));
        std::unique_ptr<TVObject> owned(made);
        auto* object = dynamic_cast<TVDBObject*>(made);
        if (object == nullptr)
            return tverror(TVErrC_DynamicCast, TVLOCATION, "Could not cast to a TVDBObject.");
        owned.release();
        const int id = object->get_id();
        if (id == m_db.get_id()) {
            // The database's own record; the objects after it read with its version.
            blockDb.assign(objectText.data(), objectText.size());
            if (const auto* db = dynamic_cast<const TVDatabase*>(object))
                appVersion = db->get_appfileversion();
            delete object;
        } else {
            staged.push_back({std::unique_ptr<TVDBObject>(object), objectText});
        }
        if (id >= localMax)
            localMax = id + 1;
    }
    for (Staged& s : staged) {
        if (TVDBObject* existing = m_db.find_object(s.m_object->get_id())) {
            // A later version replaces the earlier one in place.
            std::string_view lines = s.m_text;
            TV_PASS_ON(TVObject::read_class(lines, nullptr, existing, appVersion));
        } else {
            TVDBObject* object = s.m_object.release();
            d->m_objects.add(object);
            d->m_map[object->get_id()] = object;
        }
    }
    d->m_databaseFileVersion = fileVersion;
    d->m_appFileVersion = appVersion;
    skip = localSkip;
    max_id = localMax;
    d->m_partialNextTag = nextTag;
    d->m_partialOps.insert(ops.begin(), ops.end());
    if (!blockDb.empty())
        db_text = blockDb;
    return TVErrC_ok;
}

std::string TVDBReader::first_object(const std::string& file)
{
    std::string text;
    if (istvwarn(tv_db_read_file(file, text))) {
        get_tverror()->clear_last_error();
        return std::string();
    }
    std::istringstream in(text);
    std::string line;
    std::getline(in, line);
    TVSerialForm::strip_line_ends(line);
    if (rtrim(line) != TVDBFormat::C_Identifier)
        return std::string();
    const std::string mark = std::string("@") + TVDBFormat::C_ObjectStart;
    TVSerialisationEntry entry;
    while (entry.read_entry(in) == TVErrC_ok)
        if (entry.get_entrytype() == TVSerialisationEntry::E_TaggedClass &&
            entry.get_tag() == TVDBFormat::C_ObjectStart)
            return entry.get_value();
    get_tverror()->clear_all();
    return std::string();
}
