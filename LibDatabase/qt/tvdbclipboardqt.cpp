#include "LibDatabase/qt/tvdbclipboardqt.h"

#include "LibDatabase/db/tvdatabase.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>

const char* const TVDBClipboardQt::C_MimeType = "application/x-tarvello-ids";

void TVDBClipboardQt::cut(const TVIdList& ids)
{
    TVDBClipboard::cut(ids);
    publish(ids, false);
}

void TVDBClipboardQt::copy(const TVIdList& ids)
{
    TVDBClipboard::copy(ids);
    publish(ids, true);
}

bool TVDBClipboardQt::clipboard_has_object() const
{
    if (!TVDBClipboard::clipboard_has_object())
        return false;
    const QMimeData* data = QApplication::clipboard()->mimeData();
    return data != nullptr && data->hasFormat(C_MimeType) &&
           data->data(C_MimeType).toStdString().rfind(marker(), 0) == 0;
}

// "file\n" then "cut" or "copy" and the ids, one per line.
void TVDBClipboardQt::publish(const TVIdList& ids, bool copied)
{
    std::string text = marker() + (copied ? "copy\n" : "cut\n");
    for (const TVId& id : ids)
        text += std::to_string(id.get_id()) + "\n";
    auto* data = new QMimeData;
    data->setData(C_MimeType, QByteArray::fromStdString(text));
    QApplication::clipboard()->setMimeData(data);
}

std::string TVDBClipboardQt::marker() const
{
    return m_db.get_filename() + "\n";
}
