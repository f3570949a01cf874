#include "LibDatabase/qt/tvdbscripthostqt.h"

#include <QAction>
#include <QDesktopServices>
#include <QInputDialog>
#include <QStringList>
#include <QUrl>
#include <QWidget>

TVDBScriptHostQt::TVDBScriptHostQt(QWidget& window) : m_window(window)
{
    set_instance(this);
}

TVDBScriptHostQt::~TVDBScriptHostQt()
{
    if (&instance() == this)
        set_instance(nullptr);
}

std::string TVDBScriptHostQt::prompt_text(const std::string& title, const std::string& initial)
{
    bool ok = false;
    const QString answer =
        QInputDialog::getText(&m_window, QString::fromStdString(title), QString(),
                              QLineEdit::Normal, QString::fromStdString(initial), &ok);
    return ok ? answer.toStdString() : std::string();
}

std::string TVDBScriptHostQt::prompt_choice(const std::string& title, const std::string& text,
                                            const std::vector<std::string>& choices, bool editable)
{
    QStringList items;
    for (const std::string& choice : choices)
        items << QString::fromStdString(choice);
    bool ok = false;
    const QString answer = QInputDialog::getItem(&m_window, QString::fromStdString(title),
                                                 QString::fromStdString(text), items, 0, editable,
                                                 &ok);
    return ok ? answer.toStdString() : std::string();
}

bool TVDBScriptHostQt::gui_call(const std::string& action, const std::vector<std::string>&,
                                std::string& message)
{
    const QString wanted = QString::fromStdString(action);
    for (QAction* candidate : m_window.findChildren<QAction*>()) {
        QString text = candidate->text();
        text.remove(QLatin1Char('&'));
        if ((candidate->objectName() == wanted || text == wanted) && candidate->isEnabled()) {
            candidate->trigger();
            return true;
        }
    }
    message = "The window has no action " + action + ".";
    return false;
}

bool TVDBScriptHostQt::open_url(const std::string& url)
{
    return QDesktopServices::openUrl(QUrl(QString::fromStdString(url)));
}
