#include "LibGui/qt/tvslotqt.h"

#include <QMetaMethod>
#include <QMetaObject>

TVSlotQt::TVSlotQt(QObject* object, const char* slot) : m_object(object), m_slot(slot != nullptr ? slot : "") {}

TVSlotQt::TVSlotQt(QObject* object, const std::string& slot) : m_object(object), m_slot(slot) {}

std::string TVSlotQt::name() const
{
    // SLOT() puts a one-digit method code in front.
    const size_t start = !m_slot.empty() && m_slot[0] >= '0' && m_slot[0] <= '9' ? 1 : 0;
    const size_t end = m_slot.find('(');
    return m_slot.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

bool TVSlotQt::connect_from(QObject* sender, const char* signal, Qt::ConnectionType type) const
{
    if (!is_valid() || sender == nullptr)
        return false;
    return static_cast<bool>(QObject::connect(sender, signal, m_object.data(), m_slot.c_str(), type));
}

bool TVSlotQt::invoke(Qt::ConnectionType type) const { return invoke_raw(type, nullptr, nullptr); }

bool TVSlotQt::invoke(const std::string& text, Qt::ConnectionType type) const
{
    return invoke_raw(type, &text, nullptr);
}

bool TVSlotQt::invoke_raw(Qt::ConnectionType type, const void* first, const void* second) const
{
    if (!is_valid())
        return false;
    const size_t start = m_slot[0] >= '0' && m_slot[0] <= '9' ? 1 : 0;
    const QByteArray signature = QMetaObject::normalizedSignature(m_slot.c_str() + start);
    const QMetaObject* meta = m_object->metaObject();
    const int index = meta->indexOfMethod(signature.constData());
    if (index < 0)
        return false;
    const QMetaMethod method = meta->method(index);
    const int wanted = (first != nullptr ? 1 : 0) + (second != nullptr ? 1 : 0);
    if (method.parameterCount() != wanted)
        return false;
    // The arguments carry the slot's own type names, so a slot declared
    // with "string" and one with "std::string" are both reached.
    const QList<QByteArray> types = method.parameterTypes();
    QGenericArgument a0, a1;
    if (first != nullptr)
        a0 = QGenericArgument(types[0].constData(), first);
    if (second != nullptr)
        a1 = QGenericArgument(types[1].constData(), second);
    return method.invoke(m_object.data(), type, a0, a1);
}
