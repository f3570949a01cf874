#ifndef TVSLOTQT_H
#define TVSLOTQT_H

// TVSlotQt: a receiver and one of its slots, as SLOT() writes it
// ("1name(args)"), to be handed around and called later. The receiver is
// watched: once it is destroyed the slot is empty and calls do nothing.

#include <QObject>
#include <QPointer>
#include <string>

class TVSlotQt
{
public:
    TVSlotQt() = default;
    // slot as made by SLOT(), e.g. "1load_complete(std::string)".
    TVSlotQt(QObject* object, const char* slot);
    TVSlotQt(QObject* object, const std::string& slot);

    bool is_valid() const { return !m_object.isNull() && !m_slot.empty(); }
    QObject* get_object() const { return m_object.data(); }
    const std::string& get_slot() const { return m_slot; }
    // The slot's name without the code and the arguments: "load_complete".
    std::string name() const;

    // Connects a signal (as made by SIGNAL()) to this slot.
    bool connect_from(QObject* sender, const char* signal, Qt::ConnectionType type = Qt::AutoConnection) const;

    // Calls the slot with no argument, one string, or a string and a
    // value of a registered type; the slot must take exactly those. False
    // if the receiver is gone or has no such slot.
    bool invoke(Qt::ConnectionType type = Qt::DirectConnection) const;
    bool invoke(const std::string& text, Qt::ConnectionType type = Qt::DirectConnection) const;
    template <class T>
    bool invoke(const std::string& text, const T& value, Qt::ConnectionType type = Qt::DirectConnection) const
    {
        return invoke_raw(type, &text, &value);
    }

private:
    bool invoke_raw(Qt::ConnectionType type, const void* first, const void* second) const;

    QPointer<QObject> m_object;
    std::string m_slot;
};

#endif
