#include "LibGui/qt/tverrorqt.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "LibCore/error/tverror.h"
#include "LibGui/base/tvmessagebox.h"
#include "LibGui/qt/tvmessageboxqt.h"

const char* const TVErrorQt::C_Warning = "Warning";
const char* const TVErrorQt::C_Error = "Error";
const char* const TVErrorQt::C_FatalError = "Fatal Error";
const char* const TVErrorQt::C_Details = "Details: ";
const char* const TVErrorQt::C_Location = "Location: ";

namespace {

std::string message(const TVErrDetails& details)
{
    const std::string& user = details.get_details(TVAspectUser);
    if (!user.empty())
        return user;
    return get_tverror()->get_code(details.get_code()).get_description();
}

QLabel* add_label(QVBoxLayout* layout, QWidget* parent, const std::string& text, const char* name)
{
    auto* label = new QLabel(QString::fromStdString(text), parent);
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(label);
    return label;
}

void show_error(TVErrDetails* details, TVErrSeverity dialogSeverity)
{
    TVErrorQt::start(details, dialogSeverity, nullptr);
}

std::string active_window()
{
    QWidget* window = QApplication::activeWindow();
    return window == nullptr ? std::string() : window->objectName().toStdString();
}

} // namespace

TVErrorQt::TVErrorQt(const TVErrDetails& details, int dialogSeverity, QWidget* parent)
    : QDialog(parent), m_heading(heading(details.get_severity(), dialogSeverity))
{
    setObjectName("TVErrorQt");
    setWindowTitle(QString::fromStdString(m_heading));
    auto* layout = new QVBoxLayout(this);
    QLabel* title = add_label(layout, this, m_heading, "heading");
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    add_label(layout, this, message(details), "message");
    const std::string& system = details.get_details(TVAspectSystem);
    if (!system.empty())
        add_label(layout, this, C_Details + system, "details");
    if (!details.get_location().empty())
        add_label(layout, this, C_Location + details.get_location(), "location");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
}

TVErrorQt::~TVErrorQt() = default;

std::string TVErrorQt::heading(int severity, int dialogSeverity)
{
    if (severity >= TVSevFatal || dialogSeverity >= TVSevFatal)
        return C_FatalError;
    if (severity >= TVSevError)
        return C_Error;
    return C_Warning;
}

std::string TVErrorQt::text(const TVErrDetails& details)
{
    std::string text = message(details);
    if (!details.get_details(TVAspectSystem).empty())
        text += "\n" + std::string(C_Details) + details.get_details(TVAspectSystem);
    if (!details.get_location().empty())
        text += "\n" + std::string(C_Location) + details.get_location();
    return text;
}

void TVErrorQt::start(const TVErrDetails* details, int dialogSeverity, QWidget* parent)
{
    if (details == nullptr)
        return;
    // A copy: the stack may be cleared while the dialog waits.
    const TVErrDetails copy = *details;
    if (TVMessageBoxQt::has_answerer()) {
        const std::string key = TVMessageBox::parse_key(TVMessageBox::C_Ok).label;
        TVMessageBoxQt::get_answerer()(heading(copy.get_severity(), dialogSeverity), text(copy), {key});
        return;
    }
    if (TVMessageBoxQt::unattended()) {
        TVMessageBoxQt::report_unattended(heading(copy.get_severity(), dialogSeverity), text(copy), "Ok");
        return;
    }
    if (qApp == nullptr)
        return;
    if (parent == nullptr)
        parent = QApplication::activeWindow();
    TVErrorQt dialog(copy, dialogSeverity, parent);
    dialog.exec();
}

void TVErrorQt::install()
{
    TVError::set_dialog_fn(&show_error);
    TVError::set_active_window_fn(&active_window);
}

void TVErrorQt::uninstall()
{
    TVError::set_dialog_fn(nullptr);
    TVError::set_active_window_fn(nullptr);
}
