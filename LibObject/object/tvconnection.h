#ifndef TVCONNECTION_H
#define TVCONNECTION_H

// TVConnection: one receiver, one signal, one slot. Of the three slot
// pointers only the one of the signal's shape is set. Points at the
// receiver and the signal without owning them; the tables of sender and
// receiver (TVConnectionData) see that neither outlives the other.

#include "LibObject/object/tvobject.h"

#include <iosfwd>

class TVSignal;

class TVConnection
{
public:
    TVConnection(TVObject* receiver, const TVSignalVoid& signal, TVObject::VoidSlot slot);
    TVConnection(TVObject* receiver, const TVSignalInt& signal, TVObject::IntSlot slot);
    TVConnection(TVObject* receiver, const TVSignalObject& signal, TVObject::ObjectSlot slot);
    TVConnection(const TVConnection&) = default;
    TVConnection& operator=(const TVConnection&) = default;
    virtual ~TVConnection() = default;

    virtual void dump(std::ostream& out, int indent) const;

    // Receiver, signal (by address) and all three slots.
    bool operator==(const TVConnection& other) const;
    bool operator!=(const TVConnection& other) const { return !(*this == other); }

    TVObject* get_receiver() const { return m_receiver; }
    const TVSignal* get_signal() const { return m_signal; }
    TVObject::VoidSlot get_void_slot() const { return m_voidSlot; }
    TVObject::IntSlot get_int_slot() const { return m_intSlot; }
    TVObject::ObjectSlot get_object_slot() const { return m_objectSlot; }

private:
    TVObject* m_receiver;
    const TVSignal* m_signal;
    TVObject::VoidSlot m_voidSlot = nullptr;
    TVObject::IntSlot m_intSlot = nullptr;
    TVObject::ObjectSlot m_objectSlot = nullptr;
};

#endif // TVCONNECTION_H
