#include "LibGui/qt/tvfileselectqt.h"

#include <QFileDialog>
#include <QPointer>
#include <QTimer>

#include "LibGui/qt/tvmessageboxqt.h"
#include "LibGui/qt/tvslotqt.h"

namespace {

TVFileSelectQt::Chooser& chooser()
{
    static TVFileSelectQt::Chooser s_chooser;
    return s_chooser;
}

} // namespace

std::string TVFileSelectQt::choose(QWidget* parent, Kind kind, const std::string& caption, const std::string& dir,
                                   const std::string& filter)
{
    if (chooser())
        return chooser()(kind, caption, dir, filter);
    if (TVMessageBoxQt::unattended()) {
        TVMessageBoxQt::report_unattended(caption, dir + " " + filter, "");
        return std::string();
    }
    const QString c = QString::fromStdString(caption);
    const QString d = QString::fromStdString(dir);
    const QString f = QString::fromStdString(filter);
    switch (kind) {
    case E_Open:
        return QFileDialog::getOpenFileName(parent, c, d, f).toStdString();
    case E_Save:
        return QFileDialog::getSaveFileName(parent, c, d, f).toStdString();
    case E_Directory:
        return QFileDialog::getExistingDirectory(parent, c, d).toStdString();
    }
    return std::string();
}

std::string TVFileSelectQt::get_open_file(QWidget* parent, const std::string& caption, const std::string& dir,
                                          const std::string& filter)
{
    return choose(parent, E_Open, caption, dir, filter);
}

std::string TVFileSelectQt::get_save_file(QWidget* parent, const std::string& caption, const std::string& dir,
                                          const std::string& filter)
{
    return choose(parent, E_Save, caption, dir, filter);
}

std::string TVFileSelectQt::get_directory(QWidget* parent, const std::string& caption, const std::string& dir)
{
    return choose(parent, E_Directory, caption, dir, std::string());
}

bool TVFileSelectQt::open_file(QWidget* parent, const std::string& caption, const std::string& dir,
                               const std::string& filter, QObject* receiver, const char* slot)
{
    const TVSlotQt target(receiver, slot);
    if (!target.is_valid())
        return false;
    // The chooser runs from the event loop so the caller's slot ends first,
    // as it would with a window-modal sheet.
    QPointer<QWidget> owner(parent);
    const bool hadParent = parent != nullptr;
    QTimer::singleShot(0, receiver, [=] {
        if (hadParent && owner.isNull())
            return;
        target.invoke(get_open_file(owner.data(), caption, dir, filter));
    });
    return true;
}

void TVFileSelectQt::set_chooser(Chooser chooser_) { chooser() = std::move(chooser_); }

bool TVFileSelectQt::has_chooser() { return static_cast<bool>(chooser()); }

TVFileSelectQt::Scoped::Scoped(Chooser chooser_) : m_previous(chooser())
{
    set_chooser(std::move(chooser_));
}

TVFileSelectQt::Scoped::~Scoped() { set_chooser(m_previous); }
