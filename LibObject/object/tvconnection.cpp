#include "LibObject/object/tvconnection.h"

#include "LibObject/object/tvsignalint.h"
#include "LibObject/object/tvsignalobject.h"
#include "LibObject/object/tvsignalvoid.h"

#include <algorithm>
#include <ostream>
#include <string>

TVConnection::TVConnection(TVObject* receiver, const TVSignalVoid& signal, TVObject::VoidSlot slot)
    : m_receiver(receiver), m_signal(&signal), m_voidSlot(slot)
{
}

TVConnection::TVConnection(TVObject* receiver, const TVSignalInt& signal, TVObject::IntSlot slot)
    : m_receiver(receiver), m_signal(&signal), m_intSlot(slot)
{
}

TVConnection::TVConnection(TVObject* receiver, const TVSignalObject& signal,
                           TVObject::ObjectSlot slot)
    : m_receiver(receiver), m_signal(&signal), m_objectSlot(slot)
{
}

void TVConnection::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    const char* shape = m_voidSlot != nullptr  ? "void"
                        : m_intSlot != nullptr ? "int"
                        : m_objectSlot != nullptr ? "object"
                                                  : "none";
    out << pad << "TVConnection\n"
        << pad << "    m_receiver = " << static_cast<const void*>(m_receiver) << '\n'
        << pad << "    m_signal = " << static_cast<const void*>(m_signal) << '\n'
        << pad << "    slot = " << shape << '\n';
}

bool TVConnection::operator==(const TVConnection& other) const
{
    return m_receiver == other.m_receiver && m_signal == other.m_signal &&
           m_voidSlot == other.m_voidSlot && m_intSlot == other.m_intSlot &&
           m_objectSlot == other.m_objectSlot;
}
