#ifndef TVOBJECT_H
#define TVOBJECT_H

// TVObject: the root of every persistent or signalling class.
//
// It carries a run-time class id (the class's position in the class index,
// -1 until the constructor of a registrable class has run to its end), the
// entries that the last read left unconsumed, and, once a connection is
// made, a table of signal connections.
//
// A registrable class has a static create_tvobject (see tv_create_tvobject
// below), overrides register_tvobject() to call register_objectname() with
// its name, calls register_tvobject() last in every constructor, and has a
// file-scope TVObjectPreReg (tvobjectprereg.h). Its serialise() names each
// member once through the serialise_* helpers, base classes under the
// prefix of their class name; the same body reads and writes.
//
// Polymorphic copy and compare go through the serial form
// (derived_assign, derived_compare, clone_class).
//
// Copying copies the class id, the read entries and the outgoing
// connections (see TVConnectionData). Destroying an object disconnects it
// from every object it is connected with, in both directions.
//
// Not thread-safe; an object is read, written and connected on one thread
// at a time.

#include "LibCore/error/tverror.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibCore/ptrarray/tvptrarrayindex.h"
#include "LibObject/object/tvobjectindexentry.h"
#include "LibObject/object/tvserialisationentry.h"

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

class TVConnection;
class TVConnectionData;
class TVSignalInt;
class TVSignalObject;
class TVSignalVoid;
class TVReadFields;
class TVSrl;

// When set, write_class leaves out the read entries (they stay in memory).
// Process-wide; set once at start-up or after a file format upgrade.
extern bool G_PurgeUnhandled;

class TVObject
{
public:
    using VoidSlot = int (TVObject::*)();
    using IntSlot = int (TVObject::*)(int);
    using ObjectSlot = int (TVObject::*)(TVObject*);

    static int TVErrC_ObjectFuncNotRegistered;
    static int TVErrC_ObjectUnknown;
    static int TVErrC_ObjectNotRegistered;

    static const std::string C_EmptyString;

    TVObject();
    TVObject(const TVObject& other);
    TVObject& operator=(const TVObject& other);
    virtual ~TVObject();

    virtual void dump(std::ostream& out, int indent) const;
    // Exactly one of in and out is given (or neither: nothing happens). On
    // a read the data comes from the read entries; in only gives the
    // direction. version is the file's version, handed down unchanged. A
    // warning from a member ends the body and is returned. The base has no
    // members.
    [[nodiscard]] virtual int serialise(std::istream* in, std::ostream* out,
                                        const std::string& prefix, int version);
    // Overridden by each registrable class to register its name.
    virtual void register_tvobject();

    // Class id, read entries pairwise, then the connection tables by identity.
    bool operator==(const TVObject& other) const;
    bool operator!=(const TVObject& other) const { return !(*this == other); }

    // Empties the read entries; class id and connections stay.
    void set_defaults(bool constructing);

    // ---- The class index ----------------------------------------------------

    // Registers name (the first registration of a name wins) and takes its id.
    void register_objectname(const std::string& name, TVObjectCreateFn createFn);
    // -1 when the name is not registered.
    static int get_id_from_name(const std::string& name);
    int get_class_id() const { return m_classId; }
    // C_EmptyString when this object's class doesn't resolve; never reports.
    const std::string& get_class_name() const;
    // With an empty name, this object's own entry; else the entry of name.
    // TVErrC_ObjectNotRegistered (an error) when it can't be found.
    [[nodiscard]] int get_class_index_entry(const std::string& name,
                                            const TVObjectIndexEntry*& out) const;
    // A copy made by the class's own factory; the caller owns it. Null
    // after a warning when the class or its factory is missing.
    [[nodiscard]] TVObject* clone_class() const;
    // Makes this object equal to source by writing source and reading the
    // text onto this object. Members without a default that source doesn't
    // write keep their values.
    [[nodiscard]] int derived_assign(const TVObject& source, int version);
    // Whether both objects write the same bytes (read entries included).
    bool derived_compare(const TVObject& other, int version) const;
    [[nodiscard]] int object_to_string(std::string& out, int version) const;
    [[nodiscard]] int object_from_string(const std::string& text, int version);
    // A new object of the class that text names; the caller owns it.
    [[nodiscard]] static int object_from_string(const std::string& text, TVObject*& out,
                                                int version);

    // ---- Read entries -------------------------------------------------------

    int get_nserentries() const { return m_serEntries.size(); }
    // Null for a bad index.
    const TVSerialisationEntry* get_serentry(int index) const;
    [[nodiscard]] int remove_serentry(int index);
    void clear_unhandled_data() { m_serEntries.clear(); }
    static void set_purge_unhandled(bool purge);

    // ---- Streams ------------------------------------------------------------

    // "{" name, the members, the read entries (unless purged), "}".
    [[nodiscard]] int write_class(std::ostream& out, int version) const;
    // Reads the next object of the stream onto this object, whatever class
    // the stream names (it must be registered).
    [[nodiscard]] int read_class(std::istream& in, int version);
    // Reads the next object into a new one; out is null unless the result
    // is TVErrC_ok, and the caller owns it.
    [[nodiscard]] static int read_class(std::istream& in, TVObject*& out, int version);
    // The common form; exactly one of outClass and inClass. Lines before a
    // class start are skipped; a stream without one gives
    // TVErrC_okEndOfFile. An unknown class name, or one without a factory,
    // is a warning.
    [[nodiscard]] static int read_class(std::istream& in, TVObject** outClass,
                                        TVObject* inClass, int version);
    // The same from text in memory, advanced past the object.
    [[nodiscard]] static int read_class(std::string_view& in, TVObject** outClass,
                                        TVObject* inClass, int version);
    // Replaces the read entries by the entries up to the class end (or the
    // end of the stream, which is not an error here).
    [[nodiscard]] int read_class_entries(std::istream& in);
    [[nodiscard]] int read_class_entries(std::string_view& in);
    [[nodiscard]] int write_unhandled_data(int version, std::ostream& out) const;

    // ---- Signals (receiver side) ---------------------------------------------

    // Connects a slot of this object to a signal of sender. A null sender
    // does nothing; connecting the same pair twice calls once.
    [[nodiscard]] int connect_signal(TVObject* sender, const TVSignalVoid& signal, VoidSlot slot);
    [[nodiscard]] int connect_signal(TVObject* sender, const TVSignalInt& signal, IntSlot slot);
    [[nodiscard]] int connect_signal(TVObject* sender, const TVSignalObject& signal,
                                     ObjectSlot slot);
    // The same for a slot of a derived class, which this object must be.
    template <class R>
    [[nodiscard]] int connect_signal(TVObject* sender, const TVSignalVoid& signal, int (R::*slot)());
    template <class R>
    [[nodiscard]] int connect_signal(TVObject* sender, const TVSignalInt& signal,
                                     int (R::*slot)(int));
    template <class R>
    [[nodiscard]] int connect_signal(TVObject* sender, const TVSignalObject& signal,
                                     int (R::*slot)(TVObject*));
    // Drops every connection between this object and other, both ways.
    void remove_connections(TVObject* other);

    // ---- Signals (sender side) -----------------------------------------------

    // Calls every slot connected to signal, in order of connection, on this
    // thread. A slot's warning stops the walk and is returned.
    [[nodiscard]] int emit_signal(const TVSignalVoid& signal);
    [[nodiscard]] int emit_signal(const TVSignalInt& signal, int value);
    [[nodiscard]] int emit_signal(const TVSignalObject& signal, TVObject* value);
    // A blocked object emits nothing; its connections stay.
    void block_signals(bool block);
    bool signals_blocked() const;

protected:
    // ---- Helpers for serialise bodies: one call per member ------------------
    //
    // Each takes the member's tag and the body's prefix; the full tag is
    // prefix "+" tag. All return TVErrC_ok, or TVErrC_okEndOfFile on a read
    // that found nothing (the member then holds its default); a warning
    // ends the body. A member of one value takes the first line of its tag
    // and drops any later ones, which could otherwise stand in for it after
    // the next save.

    // A tagged field per value of the binder; a value at its default is not
    // written. With matchSuffix, a read that finds no full tag takes an
    // entry whose tag ends in "+" tag, or is tag alone: a base class may be
    // renamed without losing its members.
    [[nodiscard]] int serialise_value(std::istream* in, std::ostream* out,
                                      const std::string& prefix, std::string_view tag,
                                      TVSrl& srl, bool matchSuffix = false);
    [[nodiscard]] int serialise_value(std::istream* in, std::ostream* out,
                                      const std::string& prefix, std::string_view tag,
                                      TVSrl&& srl, bool matchSuffix = false)
    {
        return serialise_value(in, out, prefix, tag, static_cast<TVSrl&>(srl), matchSuffix);
    }
    // A tagged class ("@" tag, then the object) per object of the binder.
    [[nodiscard]] int serialise_object(std::istream* in, std::ostream* out,
                                       const std::string& prefix, std::string_view tag,
                                       TVSrl& srl);
    [[nodiscard]] int serialise_object(std::istream* in, std::ostream* out,
                                       const std::string& prefix, std::string_view tag,
                                       TVSrl&& srl)
    {
        return serialise_object(in, out, prefix, tag, static_cast<TVSrl&>(srl));
    }
    // One tagged field; with omitEmpty an empty value is not written and a
    // read that finds nothing leaves it empty.
    [[nodiscard]] int serialise_string(std::istream* in, std::ostream* out,
                                       const std::string& prefix, std::string_view tag,
                                       std::string& value, bool omitEmpty);
    // One tagged field per element. The array must own its elements.
    [[nodiscard]] int serialise_string_array(std::istream* in, std::ostream* out,
                                             const std::string& prefix, std::string_view tag,
                                             TVPtrArray<std::string>& values);
    [[nodiscard]] int serialise_string_vector(std::istream* in, std::ostream* out,
                                              const std::string& prefix, std::string_view tag,
                                              std::vector<std::string>& values);
    // One tagged field "key=value" per pair, in insertion order. With
    // replace a later line of a key replaces the earlier one; without it
    // the first one stays. The map must own its values.
    [[nodiscard]] int serialise_string_maparray(std::istream* in, std::ostream* out,
                                                const std::string& prefix, std::string_view tag,
                                                TVPtrArrayIndex<std::string>& values, bool replace);
    // The class's raw lines. The array must own its elements.
    [[nodiscard]] int serialise_data(std::istream* in, std::ostream* out,
                                     TVPtrArray<std::string>& lines);

private:
    friend class TVConnectionData;
    friend class TVReadFields; // the entries of an object being read

    // Takes connection; makes both tables as needed.
    int add_connection(TVObject* sender, TVConnection* connection);
    int wrong_slot_class() const;

    TVPtrArray<TVSerialisationEntry> m_serEntries; // owning
    std::unique_ptr<TVConnectionData> m_connections; // null until the first connection
    int32_t m_classId;
};

// The body of every class's create_tvobject:
//
//     int TVDBNote::create_tvobject(TVObject*& out, const TVObject* source)
//     {
//         return tv_create_tvobject<TVDBNote>(out, source, "TVDBNote");
//     }
template <class T>
int tv_create_tvobject(TVObject*& out, const TVObject* source, const char* className)
{
    out = nullptr;
    if (source == nullptr) {
        out = new T;
        return TVErrC_ok;
    }
    const T* typed = dynamic_cast<const T*>(source);
    if (typed == nullptr)
        return tverror(TVErrC_DynamicCast, TVLOCATION, "Dynamic cast to %s failed.", className);
    out = new T(*typed);
    return TVErrC_ok;
}

template <class R>
int TVObject::connect_signal(TVObject* sender, const TVSignalVoid& signal, int (R::*slot)())
{
    static_assert(std::is_base_of<TVObject, R>::value, "a slot must be a member of a TVObject");
    if (dynamic_cast<R*>(this) == nullptr)
        return wrong_slot_class();
    return connect_signal(sender, signal, static_cast<VoidSlot>(slot));
}

template <class R>
int TVObject::connect_signal(TVObject* sender, const TVSignalInt& signal, int (R::*slot)(int))
{
    static_assert(std::is_base_of<TVObject, R>::value, "a slot must be a member of a TVObject");
    if (dynamic_cast<R*>(this) == nullptr)
        return wrong_slot_class();
    return connect_signal(sender, signal, static_cast<IntSlot>(slot));
}

template <class R>
int TVObject::connect_signal(TVObject* sender, const TVSignalObject& signal,
                             int (R::*slot)(TVObject*))
{
    static_assert(std::is_base_of<TVObject, R>::value, "a slot must be a member of a TVObject");
    if (dynamic_cast<R*>(this) == nullptr)
        return wrong_slot_class();
    return connect_signal(sender, signal, static_cast<ObjectSlot>(slot));
}

#endif // TVOBJECT_H
