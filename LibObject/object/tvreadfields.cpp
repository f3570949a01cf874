#include "LibObject/object/tvreadfields.h"

#include "LibCore/textstr/tvtextstr.h"
#include "LibObject/object/tvobject.h"
#include "LibObject/object/tvreusedstream.h"
#include "LibObject/object/tvserialform.h"
#include "LibObject/object/tvsrl.h"

#include <cstring>
#include <memory>
#include <sstream>

using namespace TVSerialForm;

namespace {

// FNV-1a: tags are short, and a member's is hashed in its two pieces.
constexpr uint32_t C_HashStart = 2166136261u;

uint32_t hash_step(uint32_t hash, char c)
{
    return (hash ^ static_cast<unsigned char>(c)) * 16777619u;
}

uint32_t hash_text(uint32_t hash, std::string_view text)
{
    for (const char c : text)
        hash = hash_step(hash, c);
    return hash;
}

struct Pool {
    std::vector<std::unique_ptr<TVReadFields>> m_tables;
    size_t m_depth = 0;
};

Pool& pool()
{
    thread_local Pool tables;
    return tables;
}

bool is_field(TVSerialisationEntry::E_ReadMode type)
{
    return type == TVSerialisationEntry::E_TaggedField;
}

// What follows the last "+" of a tag; the whole tag if it has none.
std::string_view suffix_of(std::string_view tag)
{
    const size_t pos = tag.rfind(C_PrefixSep);
    return pos == std::string_view::npos ? tag : tag.substr(pos + 1);
}

} // namespace

TVReadFields::Tag::Tag(const std::string& prefix, std::string_view tag)
    : m_prefix(prefix), m_tag(tag)
{
    uint32_t hash = C_HashStart;
    if (!m_prefix.empty())
        hash = hash_step(hash_text(hash, m_prefix), C_PrefixSep);
    m_hash = hash_text(hash, m_tag);
}

bool TVReadFields::Tag::matches(std::string_view text) const
{
    if (m_prefix.empty())
        return text == m_tag;
    return text.size() == m_prefix.size() + 1 + m_tag.size() &&
           std::memcmp(text.data(), m_prefix.data(), m_prefix.size()) == 0 &&
           text[m_prefix.size()] == C_PrefixSep &&
           std::memcmp(text.data() + m_prefix.size() + 1, m_tag.data(), m_tag.size()) == 0;
}

// ---- Scopes ---------------------------------------------------------------------

TVReadFields::Scope::Scope(TVObject& object, bool from_entries) : m_fromEntries(from_entries)
{
    Pool& tables = pool();
    if (tables.m_tables.size() <= tables.m_depth)
        tables.m_tables.push_back(std::make_unique<TVReadFields>());
    m_fields = tables.m_tables[tables.m_depth++].get();
    m_fields->reset(object);
    if (from_entries)
        m_fields->load_entries();
}

TVReadFields::Scope::~Scope()
{
    if (m_fromEntries)
        m_fields->write_back();
    else
        m_fields->keep_rest();
    m_fields->m_object = nullptr;
    --pool().m_depth;
}

TVReadFields* TVReadFields::current(const TVObject& object)
{
    const Pool& tables = pool();
    if (tables.m_depth == 0)
        return nullptr;
    TVReadFields* top = tables.m_tables[tables.m_depth - 1].get();
    return top->m_object == &object ? top : nullptr;
}

void TVReadFields::reset(TVObject& object)
{
    m_object = &object;
    m_items.clear();
    m_ownedUsed = 0;
}

// The object's read entries, as they stand: views of their own strings.
void TVReadFields::load_entries()
{
    for (const TVSerialisationEntry* entry : m_object->m_serEntries)
        add(entry->get_entrytype(), entry->get_tag(), entry->get_value());
    index();
}

// What no member took becomes the read entries.
void TVReadFields::keep_rest()
{
    for (const Item& item : m_items)
        if (!item.m_taken)
            m_object->m_serEntries.add(new TVSerialisationEntry(
                item.m_type, std::string(item.m_tag), std::string(item.m_value)));
}

// The entries the members took go; items and entries are one to one.
void TVReadFields::write_back()
{
    for (size_t i = m_items.size(); i-- > 0;)
        if (m_items[i].m_taken)
            (void)m_object->m_serEntries.erase(static_cast<int>(i));
}

int TVReadFields::unbalanced()
{
    return tvwarning(TVErrC_FileTooShort, TVLOCATION,
                     "Could not find the end of the class marker.");
}

// ---- Gathering ------------------------------------------------------------------

std::string& TVReadFields::own()
{
    if (m_ownedUsed == m_owned.size())
        m_owned.emplace_back();
    std::string& text = m_owned[m_ownedUsed++];
    text.clear();
    return text;
}

std::string_view TVReadFields::keep(std::string_view text, bool stable)
{
    if (stable)
        return text;
    std::string& copy = own();
    copy.assign(text.data(), text.size());
    return copy;
}

std::string_view TVReadFields::unescaped(std::string_view text, bool stable)
{
    if (std::memchr(text.data(), C_Escape, text.size()) == nullptr)
        return keep(text, stable);
    std::string& plain = own();
    tv_stream_in_append(text, plain);
    return plain;
}

void TVReadFields::add(TVSerialisationEntry::E_ReadMode type, std::string_view tag,
                       std::string_view value)
{
    m_items.push_back(Item{type, false, -1, -1, 0, tag, value});
}

void TVReadFields::add_field(std::string_view line, bool stable)
{
    // Escapes can't hide a "!", so the tag ends at the first one. One look
    // along the line finds it and any escape.
    size_t end = std::string_view::npos;
    size_t escape = std::string_view::npos;
    for (size_t i = 1; i < line.size(); ++i) {
        const char c = line[i];
        if (c == C_FieldMark && end == std::string_view::npos)
            end = i;
        else if (c == C_Escape && escape == std::string_view::npos)
            escape = i;
    }
    if (end == std::string_view::npos) {
        add(TVSerialisationEntry::E_TaggedField, unescaped(line.substr(1), stable),
            std::string_view());
        return;
    }
    if (escape == std::string_view::npos) {
        add(TVSerialisationEntry::E_TaggedField, keep(line.substr(1, end - 1), stable),
            keep(line.substr(end + 1), stable));
        return;
    }
    if (escape > end) {
        const std::string_view tag = keep(line.substr(1, end - 1), stable);
        add(TVSerialisationEntry::E_TaggedField, tag, unescaped(line.substr(end + 1), stable));
        return;
    }
    // An escape before the first "!" changes where it falls in the
    // unescaped text: the whole line is unescaped first.
    std::string& text = own();
    tv_stream_in_append(line, text);
    const std::string_view plain = text;
    const size_t mark = plain.find(C_FieldMark, 1);
    if (mark == std::string_view::npos)
        add(TVSerialisationEntry::E_TaggedField, plain.substr(1), std::string_view());
    else
        add(TVSerialisationEntry::E_TaggedField, plain.substr(1, mark - 1), plain.substr(mark + 1));
}

// Chains the lines of each tag and puts the first of each in the table.
void TVReadFields::index()
{
    size_t size = 16;
    while (size < m_items.size() * 2)
        size *= 2;
    m_slots.assign(size, 0);
    const size_t mask = size - 1;
    for (size_t i = 0; i < m_items.size(); ++i) {
        Item& item = m_items[i];
        if (item.m_type == TVSerialisationEntry::E_RawData)
            continue;
        item.m_hash = hash_text(C_HashStart, item.m_tag);
        for (size_t slot = item.m_hash & mask;; slot = (slot + 1) & mask) {
            const int at = m_slots[slot] - 1;
            if (at < 0) {
                m_slots[slot] = static_cast<int>(i) + 1;
                item.m_last = static_cast<int>(i);
                break;
            }
            Item& head = m_items[static_cast<size_t>(at)];
            if (head.m_hash == item.m_hash && head.m_tag == item.m_tag) {
                m_items[static_cast<size_t>(head.m_last)].m_next = static_cast<int>(i);
                head.m_last = static_cast<int>(i);
                break;
            }
        }
    }
}

// ---- Taking ---------------------------------------------------------------------

int TVReadFields::find(const Tag& full) const
{
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = full.m_hash & mask;; slot = (slot + 1) & mask) {
        const int at = m_slots[slot] - 1;
        if (at < 0)
            return -1;
        const Item& head = m_items[static_cast<size_t>(at)];
        if (head.m_hash == full.m_hash && full.matches(head.m_tag))
            return at;
    }
}

// Hands one line to srl; the binder's plain path first, else its stream.
int TVReadFields::take(int at, TVSrl& srl)
{
    Item& item = m_items[static_cast<size_t>(at)];
    item.m_taken = true;
    if (srl.read_text(item.m_value))
        return TVErrC_ok;
    TVReusedStream<std::istringstream> lease;
    std::istringstream& text = lease.get();
    text.str(std::string(item.m_value));
    return srl.read(text);
}

// A single-valued member took its line: later lines of its tag would
// otherwise be kept as unknown, written back, and, whenever the member sits
// at its default and so is not written, be read as its value next time.
void TVReadFields::drop_after(int at, TVSerialisationEntry::E_ReadMode type)
{
    for (int i = m_items[static_cast<size_t>(at)].m_next; i >= 0;
         i = m_items[static_cast<size_t>(i)].m_next)
        if (m_items[static_cast<size_t>(i)].m_type == type)
            m_items[static_cast<size_t>(i)].m_taken = true;
}

// Hands srl the lines of the tag that are of type, in file order: all of
// them, or the first and then drops the rest. found tells whether any was.
int TVReadFields::take_tagged(TVSrl& srl, const Tag& full, TVSerialisationEntry::E_ReadMode type,
                              bool& found)
{
    const bool many = srl.handle_multiple();
    found = false;
    for (int i = find(full); i >= 0; i = m_items[static_cast<size_t>(i)].m_next) {
        const Item& item = m_items[static_cast<size_t>(i)];
        if (item.m_taken || item.m_type != type)
            continue;
        found = true;
        const int result = take(i, srl);
        if (istvwarn(result))
            return result;
        if (!many) {
            drop_after(i, type);
            break;
        }
    }
    return TVErrC_ok;
}

int TVReadFields::read_value(TVSrl& srl, const Tag& full, std::string_view tag, bool by_suffix)
{
    bool found = false;
    const int result = take_tagged(srl, full, TVSerialisationEntry::E_TaggedField, found);
    if (istvwarn(result) || srl.handle_multiple() || found)
        return result;
    if (!by_suffix)
        return TVErrC_okEndOfFile;
    // The member under another prefix: its class was renamed or moved. Only
    // later lines of the very tag that was taken go: another prefix with
    // the same suffix is another program's member, kept as unknown.
    for (size_t i = 0; i < m_items.size(); ++i) {
        const Item& item = m_items[i];
        if (item.m_taken || !is_field(item.m_type) || suffix_of(item.m_tag) != tag)
            continue;
        const int taken = take(static_cast<int>(i), srl);
        if (istvwarn(taken))
            return taken;
        drop_after(static_cast<int>(i), item.m_type);
        return TVErrC_ok;
    }
    return TVErrC_okEndOfFile;
}

int TVReadFields::read_object(TVSrl& srl, const Tag& full)
{
    bool found = false;
    const int result = take_tagged(srl, full, TVSerialisationEntry::E_TaggedClass, found);
    if (istvwarn(result) || srl.handle_multiple() || found)
        return result;
    return TVErrC_okEndOfFile;
}

int TVReadFields::read_string(const Tag& full, std::string& value)
{
    for (int i = find(full); i >= 0; i = m_items[static_cast<size_t>(i)].m_next) {
        Item& item = m_items[static_cast<size_t>(i)];
        if (item.m_taken || !is_field(item.m_type))
            continue;
        item.m_taken = true;
        value.assign(item.m_value.data(), item.m_value.size());
        drop_after(i, item.m_type);
        return TVErrC_ok;
    }
    return TVErrC_okEndOfFile;
}
