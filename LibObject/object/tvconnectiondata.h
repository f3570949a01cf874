#ifndef TVCONNECTIONDATA_H
#define TVCONNECTIONDATA_H

// TVConnectionData: the connection table of one object (its owner), made
// at the first connection that involves the owner.
//
// It holds the owner's outgoing connections (the owner is the sender) and
// the senders that hold a connection to the owner. Both sides of every
// connection know of it: the receiver lists the sender, the sender holds
// the connection. So when either dies, remove_references() reaches the
// other and no pointer to a dead object is left.
//
// One thread only. A slot may add connections during an emit (the walk
// goes by index); other changes to the table during an emit are not
// promised to take effect in that emit.

#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <memory>
#include <vector>

class TVConnection;
class TVSignal;

class TVConnectionData
{
public:
    explicit TVConnectionData(TVObject& owner);
    // The table of owner, a copy of source's owner: the same outgoing
    // connections (each receiver learns of the new sender) and the same
    // block state. The senders are not copied: they hold connections to
    // source, not to owner.
    TVConnectionData(const TVConnectionData& source, TVObject& owner);
    TVConnectionData(const TVConnectionData&) = delete;
    TVConnectionData& operator=(const TVConnectionData&) = delete;
    // remove_references(), then the connections are deleted.
    virtual ~TVConnectionData();

    virtual void dump(std::ostream& out, int indent) const;

    // Takes connection; an equal one already there means that it is deleted
    // and false is returned.
    bool add_connection(TVConnection* connection);
    // Adds sender unless present.
    void add_sender(TVObject* sender);
    // Deletes the connections whose receiver is other and forgets other as
    // a sender. Touches this table only.
    void remove_connections(TVObject* other);

    [[nodiscard]] int emit_signal(const TVSignalVoid& signal);
    [[nodiscard]] int emit_signal(const TVSignalInt& signal, int value);
    [[nodiscard]] int emit_signal(const TVSignalObject& signal, TVObject* value);

    void block_signals(bool block) { m_blocked = block; }
    bool is_blocked() const { return m_blocked; }

    // Makes every receiver forget the owner as a sender and every sender
    // drop its connections to the owner, then empties this table.
    void remove_references();

    int connection_count() const { return static_cast<int>(m_connections.size()); }
    int sender_count() const { return static_cast<int>(m_senders.size()); }

private:
    // Calls call(connection) for each connection to signal that call accepts.
    template <class Call>
    int emit_any(const TVSignal* signal, Call call);

    TVObject& m_owner;
    std::vector<std::unique_ptr<TVConnection>> m_connections; // in order of connection
    std::vector<TVObject*> m_senders;                         // not owned
    bool m_blocked = false;
};

#endif // TVCONNECTIONDATA_H
