#include "LibObject/object/tvobject.h"

#include "LibCore/textstr/tvtextstr.h"
#include "LibObject/object/tvconnection.h"
#include "LibObject/object/tvconnectiondata.h"
#include "LibObject/object/tvobjectindex.h"
#include "LibObject/object/tvreadfields.h"
#include "LibObject/object/tvreusedstream.h"
#include "LibObject/object/tvserialform.h"
#include "LibObject/object/tvsignalint.h"
#include "LibObject/object/tvsignalobject.h"
#include "LibObject/object/tvsignalvoid.h"
#include "LibObject/object/tvsrl.h"
#include "LibObject/object/tvsrlstringmaparray.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <istream>
#include <memory>
#include <ostream>
#include <sstream>
#include <vector>

using namespace TVSerialForm;

int TVObject::TVErrC_ObjectFuncNotRegistered =
    tv_builtin_code("TVObject::TVErrC_ObjectFuncNotRegistered");
int TVObject::TVErrC_ObjectUnknown = tv_builtin_code("TVObject::TVErrC_ObjectUnknown");
int TVObject::TVErrC_ObjectNotRegistered = tv_builtin_code("TVObject::TVErrC_ObjectNotRegistered");

const std::string TVObject::C_EmptyString;

bool G_PurgeUnhandled = false;

namespace {

using Entries = TVPtrArray<TVSerialisationEntry>;

// Whether the escape would change text: it holds NUL, LF, CR or backslash.
bool needs_escape(const std::string& text)
{
    for (const char c : text)
        if (c == '\0' || c == '\n' || c == '\r' || c == '\\')
            return true;
    return false;
}

bool is_field(const TVSerialisationEntry& entry)
{
    return entry.get_entrytype() == TVSerialisationEntry::E_TaggedField;
}

// Called for every line written: the location is only made on a failure.
int check_written(const std::ostream& out, const char* file, int line)
{
    if (out)
        return TVErrC_ok;
    return tvwarning(TVErrC_FileWrite, tvlocation(file, line), "Write operation failed.");
}

// The table a read goes through: read_class's, or, for a serialise()
// called on its own, one made of the read entries.
template <class Op>
int with_fields(TVObject& object, Op op)
{
    if (TVReadFields* fields = TVReadFields::current(object))
        return op(*fields);
    TVReadFields::Scope scope(object, true);
    return op(scope.fields());
}

template <class Add>
int take_all(TVObject& object, const TVReadFields::Tag& full, Add add)
{
    return with_fields(object, [&](TVReadFields& fields) {
        fields.take_all(full, add);
        return TVErrC_ok;
    });
}

} // namespace

// ---- Life ----------------------------------------------------------------------

TVObject::TVObject() : m_serEntries(true), m_classId(-1)
{
}

TVObject::TVObject(const TVObject& other)
    : m_serEntries(other.m_serEntries), m_classId(other.m_classId)
{
    if (other.m_connections != nullptr)
        m_connections = std::make_unique<TVConnectionData>(*other.m_connections, *this);
}

TVObject& TVObject::operator=(const TVObject& other)
{
    if (this == &other)
        return *this;
    m_classId = other.m_classId;
    m_serEntries = other.m_serEntries;
    m_connections.reset();
    if (other.m_connections != nullptr)
        m_connections = std::make_unique<TVConnectionData>(*other.m_connections, *this);
    return *this;
}

TVObject::~TVObject()
{
    // The table reaches into the objects this one is connected with; do it
    // while this object is still whole.
    m_connections.reset();
}

void TVObject::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    out << pad << "TVObject\n"
        << pad << "    m_classId = " << m_classId << " (" << get_class_name() << ")\n"
        << pad << "    Read Entries\n";
    for (const TVSerialisationEntry* entry : m_serEntries)
        entry->dump(out, indent + 2);
    if (m_connections != nullptr)
        m_connections->dump(out, indent + 1);
}

int TVObject::serialise(std::istream*, std::ostream*, const std::string&, int)
{
    return TVErrC_ok;
}

void TVObject::register_tvobject()
{
}

bool TVObject::operator==(const TVObject& other) const
{
    if (m_classId != other.m_classId || m_serEntries.size() != other.m_serEntries.size())
        return false;
    for (int i = 0; i < m_serEntries.size(); ++i)
        if (!(*m_serEntries[i] == *other.m_serEntries[i]))
            return false;
    return m_connections == other.m_connections;
}

void TVObject::set_defaults(bool)
{
    m_serEntries.clear();
}

// ---- The class index -----------------------------------------------------------

void TVObject::register_objectname(const std::string& name, TVObjectCreateFn createFn)
{
    int id = -1;
    tvclassindex()->append(name, createFn, id);
    m_classId = id;
}

int TVObject::get_id_from_name(const std::string& name)
{
    const TVObjectIndexEntry* entry = tvclassindex()->find_name(name);
    return entry == nullptr ? -1 : entry->get_id();
}

const std::string& TVObject::get_class_name() const
{
    const TVObjectIndexEntry* entry = tvclassindex()->find_id(m_classId);
    return entry == nullptr ? C_EmptyString : entry->get_name();
}

int TVObject::get_class_index_entry(const std::string& name, const TVObjectIndexEntry*& out) const
{
    out = nullptr;
    if (!name.empty()) {
        out = tvclassindex()->find_name(name);
        if (out == nullptr)
            return tverror(TVErrC_ObjectNotRegistered, TVLOCATION, "Object %s not in class index",
                           name.c_str());
        return TVErrC_ok;
    }
    if (m_classId < 0)
        return tverror(TVErrC_ObjectNotRegistered, TVLOCATION, "Object has invalid id %d", m_classId);
    out = tvclassindex()->find_id(m_classId);
    if (out == nullptr)
        return tverror(TVErrC_ObjectNotRegistered, TVLOCATION, "Object %d not in class index",
                       m_classId);
    return TVErrC_ok;
}

TVObject* TVObject::clone_class() const
{
    // Callers test for null, so the faults here are warnings.
    if (m_classId < 0) {
        tvwarning(TVErrC_ObjectNotRegistered, TVLOCATION, "Object has invalid id %d", m_classId);
        return nullptr;
    }
    const TVObjectIndexEntry* entry = tvclassindex()->find_id(m_classId);
    if (entry == nullptr) {
        tvwarning(TVErrC_ObjectNotRegistered, TVLOCATION, "Object %d not in class index", m_classId);
        return nullptr;
    }
    if (entry->get_create_fn() == nullptr) {
        tvwarning(TVErrC_ObjectFuncNotRegistered, TVLOCATION, "Object %d has no cloner.", m_classId);
        return nullptr;
    }
    try {
        TVObject* copy = nullptr;
        const int result = entry->get_create_fn()(copy, this);
        if (istvwarn(result)) {
            delete copy;
            tv_trail_return(result, TVLOCATION);
            return nullptr;
        }
        if (copy == nullptr)
            tvwarning(TVErrC_ObjectFuncNotRegistered, TVLOCATION, "Create function failed for %d",
                      m_classId);
        return copy;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::derived_assign(const TVObject& source, int version)
{
    try {
        std::stringstream text;
        int result = source.write_class(text, version);
        if (!istvwarn(result))
            result = read_class(text, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

bool TVObject::derived_compare(const TVObject& other, int version) const
{
    std::string mine;
    std::string theirs;
    try {
        if (istvwarn(object_to_string(mine, version)) || istvwarn(other.object_to_string(theirs, version))) {
            tvsysinfo_append(TVLOCATION, "");
            return false;
        }
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return mine == theirs;
}

int TVObject::object_to_string(std::string& out, int version) const
{
    try {
        std::ostringstream text;
        const int result = write_class(text, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        out = text.str();
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::object_from_string(const std::string& text, int version)
{
    try {
        std::string_view in(text);
        const int result = read_class(in, nullptr, this, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::object_from_string(const std::string& text, TVObject*& out, int version)
{
    try {
        std::string_view in(text);
        const int result = read_class(in, &out, nullptr, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Read entries --------------------------------------------------------------

const TVSerialisationEntry* TVObject::get_serentry(int index) const
{
    if (index < 0 || index >= m_serEntries.size())
        return nullptr;
    return m_serEntries[index];
}

int TVObject::remove_serentry(int index)
{
    return m_serEntries.erase(index);
}

void TVObject::set_purge_unhandled(bool purge)
{
    G_PurgeUnhandled = purge;
}

// ---- Streams -------------------------------------------------------------------

int TVObject::write_class(std::ostream& out, int version) const
{
    try {
        const TVObjectIndexEntry* entry = nullptr;
        int result = get_class_index_entry(C_EmptyString, entry);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        if (entry == nullptr)
            return TVErrC_ok;
        out << C_ClassStart << entry->get_name() << '\n';
        out.flush();
        result = check_written(out, __FILE__, __LINE__);
        if (istvwarn(result))
            return result;
        // serialise is one body for both directions; writing changes nothing.
        result = const_cast<TVObject*>(this)->serialise(nullptr, &out, C_EmptyString, version);
        if (!istvwarn(result) && !G_PurgeUnhandled)
            result = write_unhandled_data(version, out);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        out << C_ClassEnd << '\n';
        out.flush();
        return check_written(out, __FILE__, __LINE__);
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::read_class(std::istream& in, int version)
{
    try {
        const int result = read_class(in, nullptr, this, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::read_class(std::istream& in, TVObject*& out, int version)
{
    try {
        const int result = read_class(in, &out, nullptr, version);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

namespace {

// Lines of a stream, as getline gives them, cleaned; each is gone when
// the next is taken.
struct StreamLines {
    std::istream& m_in;
    std::string m_held;
    bool next(std::string_view& line)
    {
        if (!std::getline(m_in, m_held))
            return false;
        strip_line_ends(m_held);
        line = m_held;
        return true;
    }
    bool next(std::string_view& line, bool& stable)
    {
        stable = false;
        return next(line);
    }
    bool ended_by_lf(std::string_view) const { return false; }
    std::istream* direction() { return &m_in; }
};

// Lines of text in memory; the text is advanced as they are taken. A line
// is a view of the text unless it needed cleaning.
struct ViewLines {
    std::string_view& m_in;
    std::string m_scratch;
    bool next(std::string_view& line)
    {
        if (!next_line(m_in, line))
            return false;
        line = clean_line(line, m_scratch);
        return true;
    }
    bool next(std::string_view& line, bool& stable)
    {
        if (!next(line))
            return false;
        stable = line.data() != m_scratch.data();
        return true;
    }
    bool ended_by_lf(std::string_view line) const
    {
        return m_in.data() == line.data() + line.size() + 1;
    }
    // serialise bodies read from the gathered lines only; the stream tells
    // the direction.
    std::istream* direction()
    {
        thread_local std::istringstream none;
        return &none;
    }
};

template <class Lines>
int read_class_from(Lines& lines, TVObject** outClass, TVObject* inClass, int version)
{
    if (outClass != nullptr && inClass != nullptr)
        return tverror(TVErrC_NullPointer, TVLOCATION, "Both inClass and outClass were supplied.");
    if (outClass == nullptr && inClass == nullptr)
        return tverror(TVErrC_NullPointer, TVLOCATION, "Both inClass and outClass were nullptr.");
    if (outClass != nullptr)
        *outClass = nullptr;
    try {
        // Whatever stands before the class start is passed over.
        std::string_view line;
        for (;;) {
            if (!lines.next(line))
                return TVErrC_okEndOfFile;
            if (line.size() >= 2 && line[0] == C_ClassStart)
                break;
        }
        const std::string name(line.substr(1));
        const TVObjectIndexEntry* entry = tvclassindex()->find_name(name);
        if (entry == nullptr)
            return tvwarning(TVObject::TVErrC_ObjectUnknown, TVLOCATION,
                             "Could not identify object %s", name.c_str());
        if (entry->get_create_fn() == nullptr)
            return tvwarning(TVObject::TVErrC_ObjectFuncNotRegistered, TVLOCATION,
                             "No create function for %s", name.c_str());

        std::unique_ptr<TVObject> made;
        TVObject* target = inClass;
        if (outClass != nullptr) {
            TVObject* created = nullptr;
            const int result = entry->get_create_fn()(created, nullptr);
            made.reset(created);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            if (made == nullptr)
                return tvwarning(TVObject::TVErrC_ObjectFuncNotRegistered, TVLOCATION,
                                 "Create function failed for %s", name.c_str());
            target = made.get();
        }

        target->clear_unhandled_data();
        int result = TVErrC_ok;
        {
            TVReadFields::Scope fields(*target, false);
            result = fields.fields().gather(lines);
            if (!istvwarn(result))
                result = target->serialise(lines.direction(), nullptr, TVObject::C_EmptyString,
                                           version);
        }
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        if (outClass != nullptr)
            *outClass = made.release();
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

template <class In>
int read_entries_from(In& in, Entries& entries)
{
    entries.clear();
    try {
        for (;;) {
            auto entry = std::make_unique<TVSerialisationEntry>();
            const int result = entry->read_entry(in);
            if (result == TVErrC_okEndOfRecord)
                return TVErrC_ok;
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
            entries.add(entry.release());
        }
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

} // namespace

int TVObject::read_class(std::istream& in, TVObject** outClass, TVObject* inClass, int version)
{
    StreamLines lines{in, {}};
    return read_class_from(lines, outClass, inClass, version);
}

int TVObject::read_class(std::string_view& in, TVObject** outClass, TVObject* inClass,
                         int version)
{
    ViewLines lines{in, {}};
    return read_class_from(lines, outClass, inClass, version);
}

int TVObject::read_class_entries(std::istream& in)
{
    return read_entries_from(in, m_serEntries);
}

int TVObject::read_class_entries(std::string_view& in)
{
    return read_entries_from(in, m_serEntries);
}

int TVObject::write_unhandled_data(int, std::ostream& out) const
{
    try {
        for (const TVSerialisationEntry* entry : m_serEntries) {
            const int result = entry->write_entry(out);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
        }
        return TVErrC_ok;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Helpers for serialise bodies ----------------------------------------------

int TVObject::serialise_value(std::istream* in, std::ostream* out, const std::string& prefix,
                              std::string_view tag, TVSrl& srl, bool matchSuffix)
{
    try {
        if (out != nullptr) {
            const std::string ctag = make_ctag(prefix, tag);
            const int count = srl.get_nentries();
            // An unknown line with this tag's suffix (another program's
            // member) is written back after ours; were ours left out at its
            // default, the next read would take that line for it.
            const bool explicitDefault =
                matchSuffix && std::any_of(m_serEntries.begin(), m_serEntries.end(),
                                           [&tag](const TVSerialisationEntry* entry) {
                                               return is_field(*entry) &&
                                                      strip_prefix(entry->get_tag()) == tag;
                                           });
            for (int i = 0; i < count; ++i) {
                if (srl.is_default() && !explicitDefault)
                    continue;
                std::string value;
                int result = TVErrC_ok;
                if (!srl.write_text(value, i)) {
                    TVReusedStream<std::ostringstream> lease;
                    std::ostringstream& text = lease.get();
                    result = srl.write(text, i);
                    value = text.str();
                }
                // Escaped here and again as part of the line; only the line's
                // escape is undone before read() sees the text.
                if (!istvwarn(result)) {
                    if (needs_escape(value))
                        value = tv_stream_out(value);
                    result = TVSerialisationEntry::write_tagged_field(ctag, value, *out);
                }
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
            }
            return TVErrC_ok;
        }
        if (in == nullptr)
            return TVErrC_ok;

        int result = srl.start_read();
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        srl.set_default();
        const TVReadFields::Tag full(prefix, tag);
        result = with_fields(*this, [&](TVReadFields& fields) {
            return fields.read_value(srl, full, tag, matchSuffix);
        });
        return istvwarn(result) ? tv_trail_return(result, TVLOCATION) : result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::serialise_object(std::istream* in, std::ostream* out, const std::string& prefix,
                               std::string_view tag, TVSrl& srl)
{
    try {
        if (out != nullptr) {
            const std::string ctag = make_ctag(prefix, tag);
            if (srl.is_default())
                return TVErrC_ok;
            const int count = srl.get_nentries();
            for (int i = 0; i < count; ++i) {
                *out << C_ClassTag << tv_stream_out(ctag) << '\n';
                int result = check_written(*out, __FILE__, __LINE__);
                if (istvwarn(result))
                    return result;
                result = srl.write(*out, i);
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
            }
            return TVErrC_ok;
        }
        if (in == nullptr)
            return TVErrC_ok;

        int result = srl.start_read();
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        const TVReadFields::Tag full(prefix, tag);
        result = with_fields(
            *this, [&](TVReadFields& fields) { return fields.read_object(srl, full); });
        return istvwarn(result) ? tv_trail_return(result, TVLOCATION) : result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::serialise_string(std::istream* in, std::ostream* out, const std::string& prefix,
                               std::string_view tag, std::string& value, bool omitEmpty)
{
    try {
        if (out != nullptr) {
            const std::string ctag = make_ctag(prefix, tag);
            if (omitEmpty && value.empty())
                return TVErrC_ok;
            const int result = TVSerialisationEntry::write_tagged_field(ctag, value, *out);
            return istvwarn(result) ? tv_trail_return(result, TVLOCATION) : result;
        }
        if (in == nullptr)
            return TVErrC_ok;
        if (omitEmpty)
            value.clear();
        const TVReadFields::Tag full(prefix, tag);
        return with_fields(
            *this, [&](TVReadFields& fields) { return fields.read_string(full, value); });
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::serialise_string_array(std::istream* in, std::ostream* out,
                                     const std::string& prefix, std::string_view tag,
                                     TVPtrArray<std::string>& values)
{
    try {
        if (out != nullptr) {
            const std::string ctag = make_ctag(prefix, tag);
            for (const std::string* value : values) {
                if (value == nullptr)
                    continue;
                const int result = TVSerialisationEntry::write_tagged_field(ctag, *value, *out);
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
            }
            return TVErrC_ok;
        }
        if (in == nullptr)
            return TVErrC_ok;
        values.clear();
        return take_all(*this, TVReadFields::Tag(prefix, tag), [&values](std::string_view value) {
            values.add(new std::string(value));
        });
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::serialise_string_vector(std::istream* in, std::ostream* out,
                                      const std::string& prefix, std::string_view tag,
                                      std::vector<std::string>& values)
{
    try {
        if (out != nullptr) {
            const std::string ctag = make_ctag(prefix, tag);
            for (const std::string& value : values) {
                const int result = TVSerialisationEntry::write_tagged_field(ctag, value, *out);
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
            }
            return TVErrC_ok;
        }
        if (in == nullptr)
            return TVErrC_ok;
        values.clear();
        return take_all(*this, TVReadFields::Tag(prefix, tag),
                        [&values](std::string_view value) { values.emplace_back(value); });
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::serialise_string_maparray(std::istream* in, std::ostream* out,
                                        const std::string& prefix, std::string_view tag,
                                        TVPtrArrayIndex<std::string>& values, bool replace)
{
    try {
        if (out != nullptr) {
            const std::string ctag = make_ctag(prefix, tag);
            for (int i = 0; i < values.size(); ++i) {
                const int result = TVSerialisationEntry::write_tagged_field(
                    ctag, TVSrlStringMapArray::pair_text(values, i), *out);
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
            }
            return TVErrC_ok;
        }
        if (in == nullptr)
            return TVErrC_ok;
        values.clear();
        return take_all(*this, TVReadFields::Tag(prefix, tag),
                        [&values, replace](std::string_view line) {
                            TVSrlStringMapArray::insert_pair(values, std::string(line), replace);
                        });
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::serialise_data(std::istream* in, std::ostream* out, TVPtrArray<std::string>& lines)
{
    try {
        if (out != nullptr) {
            for (const std::string* line : lines) {
                if (line == nullptr)
                    continue;
                const int result = TVSerialisationEntry::write_raw_data(*line, *out);
                if (istvwarn(result))
                    return tv_trail_return(result, TVLOCATION);
            }
            return TVErrC_ok;
        }
        if (in == nullptr)
            return TVErrC_ok;
        lines.clear();
        return with_fields(*this, [&lines](TVReadFields& fields) {
            fields.take_raw([&lines](std::string_view line) { lines.add(new std::string(line)); });
            return TVErrC_ok;
        });
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

// ---- Signals -------------------------------------------------------------------

int TVObject::add_connection(TVObject* sender, TVConnection* connection)
{
    if (sender->m_connections == nullptr)
        sender->m_connections = std::make_unique<TVConnectionData>(*sender);
    sender->m_connections->add_connection(connection);
    if (m_connections == nullptr)
        m_connections = std::make_unique<TVConnectionData>(*this);
    m_connections->add_sender(sender);
    return TVErrC_ok;
}

int TVObject::wrong_slot_class() const
{
    return tverror(TVErrC_DynamicCast, TVLOCATION, "Slot of another class than %s.",
                   get_class_name().c_str());
}

int TVObject::connect_signal(TVObject* sender, const TVSignalVoid& signal, VoidSlot slot)
{
    if (sender == nullptr)
        return TVErrC_ok;
    return add_connection(sender, new TVConnection(this, signal, slot));
}

int TVObject::connect_signal(TVObject* sender, const TVSignalInt& signal, IntSlot slot)
{
    if (sender == nullptr)
        return TVErrC_ok;
    return add_connection(sender, new TVConnection(this, signal, slot));
}

int TVObject::connect_signal(TVObject* sender, const TVSignalObject& signal, ObjectSlot slot)
{
    if (sender == nullptr)
        return TVErrC_ok;
    return add_connection(sender, new TVConnection(this, signal, slot));
}

void TVObject::remove_connections(TVObject* other)
{
    if (m_connections != nullptr)
        m_connections->remove_connections(other);
    // The other side too, or it would keep a pointer to this object.
    if (other != nullptr && other != this && other->m_connections != nullptr)
        other->m_connections->remove_connections(this);
}

int TVObject::emit_signal(const TVSignalVoid& signal)
{
    if (m_connections == nullptr)
        return TVErrC_ok;
    try {
        const int result = m_connections->emit_signal(signal);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::emit_signal(const TVSignalInt& signal, int value)
{
    if (m_connections == nullptr)
        return TVErrC_ok;
    try {
        const int result = m_connections->emit_signal(signal, value);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

int TVObject::emit_signal(const TVSignalObject& signal, TVObject* value)
{
    if (m_connections == nullptr)
        return TVErrC_ok;
    try {
        const int result = m_connections->emit_signal(signal, value);
        if (istvwarn(result))
            return tv_trail_return(result, TVLOCATION);
        return result;
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
}

void TVObject::block_signals(bool block)
{
    // Unblocking an object without a table has nothing to do.
    if (m_connections == nullptr && !block)
        return;
    if (m_connections == nullptr)
        m_connections = std::make_unique<TVConnectionData>(*this);
    m_connections->block_signals(block);
}

bool TVObject::signals_blocked() const
{
    return m_connections != nullptr && m_connections->is_blocked();
}
