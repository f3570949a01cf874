#include "LibDatabase/db/tvdbindex.h"

#include "LibDatabase/db/tvdbwritefile.h"
#include "LibCore/fileutils/tvfileutils.h"
#include "LibObject/object/tvobjectprereg.h"
#include "LibObject/object/tvserialisationentry.h"
#include "LibObject/object/tvsrlvalue.h"
#include "LibObject/object/tvtrail.h"
#include "LibCore/log/tvdump.h"

#include <ostream>
#include <sstream>

namespace {
constexpr const char* C_ClassName = "TVDBIndex";
const TVObjectPreReg s_preReg(C_ClassName, TVDBIndex::create_tvobject);

bool starts_with(const std::string& text, const char* prefix)
{
    return text.compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}
} // namespace

TVDBIndex::TVDBIndex()
{
    set_defaults(true);
    register_tvobject();
}

TVDBIndex::TVDBIndex(const TVDBIndex& other) : TVObject(other)
{
    set_defaults(true);
    *this = other;
    register_tvobject();
}

TVDBIndex& TVDBIndex::operator=(const TVDBIndex& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        m_fileName = other.m_fileName;
        m_transactions.clear();
        for (const auto& transaction : other.m_transactions)
            m_transactions.push_back(std::make_unique<TVDBTransaction>(*transaction));
        m_lastSave = other.m_lastSave;
        m_version = other.m_version;
    }
    return *this;
}

TVDBIndex::~TVDBIndex() = default;

void TVDBIndex::set_defaults(bool constructing)
{
    if (!constructing)
        TVObject::set_defaults(false);
    m_fileName.clear();
    m_transactions.clear();
    m_lastSave = -1;
    m_version = 0;
}

int TVDBIndex::create_tvobject(TVObject*& out, const TVObject* source)
{
    return tv_create_tvobject<TVDBIndex>(out, source, C_ClassName);
}

void TVDBIndex::register_tvobject()
{
    register_objectname(C_ClassName, create_tvobject);
}

int TVDBIndex::serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                         int version)
{
    try {
        TV_PASS_ON(serialise_value(in, out, prefix, "lastSave", TVSrlValue<int>(m_lastSave)));
        TV_PASS_ON(TVObject::serialise(in, out, "TVObject", version));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVDBIndex::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "TVDBIndex " << m_fileName << " lastSave " << m_lastSave << '\n';
    for (const auto& transaction : m_transactions)
        transaction->dump(out, indent + 1);
}

void TVDBIndex::initialise(const std::string& file)
{
    m_fileName = file;
    reset();
}

void TVDBIndex::reset()
{
    m_transactions.clear();
    m_lastSave = -1;
}

const TVDBTransaction* TVDBIndex::get_transaction(int id) const
{
    return id >= 0 && id < size() ? m_transactions[static_cast<size_t>(id)].get() : nullptr;
}

void TVDBIndex::recover(int next, const std::map<int, std::string>& ops, bool logged)
{
    while (size() < next) {
        const auto it = ops.find(size());
        const std::string operation = logged && it != ops.end() ? it->second : std::string();
        m_transactions.push_back(std::make_unique<TVDBTransaction>(size(), operation));
    }
}

void TVDBIndex::add_transaction(const std::string& operation, std::string& tag, int version)
{
    m_version = version;
    m_transactions.push_back(std::make_unique<TVDBTransaction>(size(), operation));
    tag = m_transactions.back()->write_tag();
}

int TVDBIndex::log_last()
{
    if (m_transactions.empty())
        return TVErrC_ok;
    return append_record(C_TransactionStart, *m_transactions.back(), false);
}

void TVDBIndex::drop_last()
{
    if (!m_transactions.empty())
        m_transactions.pop_back();
}

int TVDBIndex::write_transaction(const TVDBTransaction& transaction)
{
    return append_record(C_TransactionStart, transaction, true);
}

int TVDBIndex::mark_save()
{
    m_lastSave = size();
    return write_index(false);
}

int TVDBIndex::write_index(bool sync)
{
    return append_record(C_IndexStart, *this, sync);
}

int TVDBIndex::get_status(int id) const
{
    const TVDBTransaction* transaction = get_transaction(id);
    return transaction == nullptr ? TVDBTransaction::E_Active : transaction->get_status();
}

TVDBTransaction* TVDBIndex::find_status(int status, bool from_end) const
{
    for (int i = 0; i < size(); ++i) {
        const int at = from_end ? size() - 1 - i : i;
        TVDBTransaction* transaction = m_transactions[static_cast<size_t>(at)].get();
        if (transaction->get_status() == status && !transaction->get_operation().empty())
            return transaction;
    }
    return nullptr;
}

bool TVDBIndex::can_undo() const
{
    return find_status(TVDBTransaction::E_Active, true) != nullptr;
}

bool TVDBIndex::can_redo() const
{
    return find_status(TVDBTransaction::E_Undone, false) != nullptr;
}

std::string TVDBIndex::get_undo_operation() const
{
    const TVDBTransaction* transaction = find_status(TVDBTransaction::E_Active, true);
    return transaction == nullptr ? std::string() : transaction->get_operation();
}

std::string TVDBIndex::get_redo_operation() const
{
    const TVDBTransaction* transaction = find_status(TVDBTransaction::E_Undone, false);
    return transaction == nullptr ? std::string() : transaction->get_operation();
}

int TVDBIndex::flip(int from, int to, bool from_end)
{
    TVDBTransaction* transaction = find_status(from, from_end);
    if (transaction == nullptr)
        return TVErrC_ok;
    transaction->set_status(to);
    return write_transaction(*transaction);
}

int TVDBIndex::undo()
{
    return flip(TVDBTransaction::E_Active, TVDBTransaction::E_Undone, true);
}

int TVDBIndex::redo()
{
    return flip(TVDBTransaction::E_Undone, TVDBTransaction::E_Active, false);
}

int TVDBIndex::append_record(const char* tag, const TVObject& record, bool sync)
{
    if (m_fileName.empty())
        return TVErrC_ok;
    try {
        std::ostringstream text;
        TV_PASS_ON(TVSerialisationEntry::write_tagged_class(tag, record, text, m_version));
        TV_PASS_ON(tv_db_write_file(m_fileName, text.str(), true, sync));
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBIndex::load()
{
    if (m_fileName.empty() || !tv_file_exists(m_fileName))
        return TVErrC_ok;
    try {
        reset();
        std::string text;
        int result = tv_db_read_file(m_fileName, text);
        if (!istvwarn(result))
            result = read_records(text);
        if (istvwarn(result)) {
            reset();
            return tv_trail_return(result, TVLOCATION);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        reset();
        tv_trail_throw(TVLOCATION);
    }
}

int TVDBIndex::read_records(const std::string& text)
{
    TVObject entries;
    std::istringstream in(text);
    int result = entries.read_class_entries(in);
    if (istvwarn(result)) {
        get_tverror()->clear_last_error();
        return tverror(TVErrC_FileRead, TVLOCATION, "Could not read the file %s",
                       m_fileName.c_str());
    }
    int lastSave = -1;
    for (int i = 0; i < entries.get_nserentries(); ++i) {
        const TVSerialisationEntry& entry = *entries.get_serentry(i);
        if (entry.get_entrytype() != TVSerialisationEntry::E_TaggedClass)
            continue;
        TVObject* made = nullptr;
        result = TVObject::object_from_string(entry.get_value(), made, m_version);
        std::unique_ptr<TVObject> object(made);
        if (istvwarn(result) || object == nullptr) {
            if (istvwarn(result))
                get_tverror()->clear_last_error();
            return tverror(TVErrC_FileRead, TVLOCATION, "Could not read the file %s",
                           m_fileName.c_str());
        }
        if (starts_with(entry.get_tag(), C_TransactionStart)) {
            auto* transaction = dynamic_cast<TVDBTransaction*>(object.get());
            if (transaction == nullptr)
                return tverror(TVErrC_DynamicCast, TVLOCATION,
                               "Could not cast to a TVDBTransaction.");
            const int id = transaction->get_id();
            if (id < 0)
                return tverror(TVErrC_FileRead, TVLOCATION, "Could not read the file %s",
                               m_fileName.c_str());
            // A record may arrive before those of lower ids: they get
            // placeholders, which their own records replace.
            while (id > size())
                m_transactions.push_back(std::make_unique<TVDBTransaction>(size(), ""));
            object.release();
            if (id == size())
                m_transactions.emplace_back(transaction);
            else
                m_transactions[static_cast<size_t>(id)].reset(transaction);
        } else if (starts_with(entry.get_tag(), C_IndexStart)) {
            auto* index = dynamic_cast<TVDBIndex*>(object.get());
            if (index == nullptr)
                return tverror(TVErrC_DynamicCast, TVLOCATION, "Could not cast to a TVDBIndex.");
            lastSave = index->m_lastSave;
        }
    }
    // A save can only hold transactions that were logged before it.
    if (lastSave > size())
        return tverror(TVErrC_FileInvalid, TVLOCATION,
                       "The index %s names transactions that are not there.", m_fileName.c_str());
    m_lastSave = lastSave;
    return TVErrC_ok;
}

std::ostream& operator<<(std::ostream& out, const TVDBIndex& index)
{
    index.dump(out, 0);
    return out;
}
