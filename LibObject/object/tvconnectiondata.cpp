#include "LibObject/object/tvconnectiondata.h"

#include "LibObject/object/tvconnection.h"
#include "LibObject/object/tvsignalint.h"
#include "LibObject/object/tvsignalobject.h"
#include "LibObject/object/tvsignalvoid.h"
#include "LibObject/object/tvtrail.h"

#include <algorithm>
#include <ostream>
#include <string>

TVConnectionData::TVConnectionData(TVObject& owner) : m_owner(owner)
{
}

TVConnectionData::TVConnectionData(const TVConnectionData& source, TVObject& owner)
    : m_owner(owner), m_blocked(source.m_blocked)
{
    for (const auto& connection : source.m_connections) {
        m_connections.push_back(std::make_unique<TVConnection>(*connection));
        TVObject* receiver = connection->get_receiver();
        if (receiver == nullptr)
            continue;
        // The receiver must hear of this table's death like of the source's.
        if (receiver == &owner) {
            add_sender(&owner);
            continue;
        }
        if (receiver->m_connections == nullptr)
            receiver->m_connections = std::make_unique<TVConnectionData>(*receiver);
        receiver->m_connections->add_sender(&owner);
    }
}

TVConnectionData::~TVConnectionData()
{
    remove_references();
}

void TVConnectionData::dump(std::ostream& out, int indent) const
{
    const std::string pad(static_cast<size_t>(std::clamp(indent, 0, 100)) * 4, ' ');
    out << pad << "TVConnectionData\n"
        << pad << "    m_blocked = " << m_blocked << '\n'
        << pad << "    senders = " << m_senders.size() << '\n';
    for (const auto& connection : m_connections)
        connection->dump(out, indent + 1);
}

bool TVConnectionData::add_connection(TVConnection* connection)
{
    std::unique_ptr<TVConnection> owned(connection);
    for (const auto& present : m_connections)
        if (*present == *owned)
            return false;
    m_connections.push_back(std::move(owned));
    return true;
}

void TVConnectionData::add_sender(TVObject* sender)
{
    if (std::find(m_senders.begin(), m_senders.end(), sender) == m_senders.end())
        m_senders.push_back(sender);
}

void TVConnectionData::remove_connections(TVObject* other)
{
    for (size_t i = m_connections.size(); i-- > 0;)
        if (m_connections[i]->get_receiver() == other)
            m_connections.erase(m_connections.begin() + static_cast<long>(i));
    for (size_t i = m_senders.size(); i-- > 0;)
        if (m_senders[i] == other)
            m_senders.erase(m_senders.begin() + static_cast<long>(i));
}

void TVConnectionData::remove_references()
{
    // Lists first: telling the others must not walk a list that changes.
    std::vector<TVObject*> receivers;
    for (const auto& connection : m_connections) {
        TVObject* receiver = connection->get_receiver();
        if (receiver != nullptr && receiver != &m_owner &&
            std::find(receivers.begin(), receivers.end(), receiver) == receivers.end())
            receivers.push_back(receiver);
    }
    std::vector<TVObject*> senders;
    for (TVObject* sender : m_senders)
        if (sender != nullptr && sender != &m_owner)
            senders.push_back(sender);
    m_connections.clear();
    m_senders.clear();

    for (TVObject* receiver : receivers)
        if (receiver->m_connections != nullptr)
            receiver->m_connections->remove_connections(&m_owner);
    for (TVObject* sender : senders)
        if (sender->m_connections != nullptr)
            sender->m_connections->remove_connections(&m_owner);
}

template <class Call>
int TVConnectionData::emit_any(const TVSignal* signal, Call call)
{
    if (m_blocked)
        return TVErrC_ok;
    try {
        // By index and re-measured: a slot may connect more.
        for (size_t i = 0; i < m_connections.size(); ++i) {
            const TVConnection& connection = *m_connections[i];
            if (connection.get_signal() != signal || connection.get_receiver() == nullptr)
                continue;
            const int result = call(connection);
            if (istvwarn(result))
                return tv_trail_return(result, TVLOCATION);
        }
    } catch (const TVErrDetails&) {
        tv_trail_throw(TVLOCATION);
    }
    return TVErrC_ok;
}

int TVConnectionData::emit_signal(const TVSignalVoid& signal)
{
    return emit_any(&signal, [](const TVConnection& connection) {
        const TVObject::VoidSlot slot = connection.get_void_slot();
        return slot == nullptr ? TVErrC_ok : (connection.get_receiver()->*slot)();
    });
}

int TVConnectionData::emit_signal(const TVSignalInt& signal, int value)
{
    return emit_any(&signal, [value](const TVConnection& connection) {
        const TVObject::IntSlot slot = connection.get_int_slot();
        return slot == nullptr ? TVErrC_ok : (connection.get_receiver()->*slot)(value);
    });
}

int TVConnectionData::emit_signal(const TVSignalObject& signal, TVObject* value)
{
    return emit_any(&signal, [value](const TVConnection& connection) {
        const TVObject::ObjectSlot slot = connection.get_object_slot();
        return slot == nullptr ? TVErrC_ok : (connection.get_receiver()->*slot)(value);
    });
}
