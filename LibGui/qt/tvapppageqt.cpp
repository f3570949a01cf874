#include "LibGui/qt/tvapppageqt.h"

#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "LibCore/application/tvapplication.h"
#include "LibGui/qt/tvhelpqt.h"

namespace {

QPushButton* page_button(QWidget* page, const char* name, const char* text, QStyle::StandardPixmap icon)
{
    QPushButton* button = new QPushButton(page->style()->standardIcon(icon), text, page);
    button->setObjectName(name);
    button->setMinimumHeight(40);
    return button;
}

} // namespace

TVAppPageQt::TVAppPageQt(QWidget* parent, const TVSlotQt& settings) : TVDialogQt(parent), m_settings(settings)
{
    setObjectName("TVAppPageQt");
    setWindowTitle(QString::fromStdString(tvapplication()->get_title()));
    QPushButton* settingsButton = page_button(this, "settingsButton", "Settings", QStyle::SP_FileDialogDetailedView);
    QPushButton* manualButton = page_button(this, "manualButton", "User Manual", QStyle::SP_DialogHelpButton);
    QPushButton* aboutButton = page_button(this, "aboutButton", "About", QStyle::SP_MessageBoxInformation);
    QPushButton* closeButton = new QPushButton("Close", this);
    closeButton->setObjectName("closeButton");
    m_about = new QLabel(this);
    m_about->setObjectName("aboutText");
    m_about->setTextFormat(Qt::RichText);
    m_about->setOpenExternalLinks(true);
    m_about->setWordWrap(true);
    m_about->hide();
    settingsButton->setEnabled(settings.is_valid());

    connect(settingsButton, &QPushButton::clicked, this, &TVAppPageQt::settings_pressed);
    connect(manualButton, &QPushButton::clicked, this, &TVAppPageQt::manual_pressed);
    connect(aboutButton, &QPushButton::clicked, this, &TVAppPageQt::about_pressed);
    connect(closeButton, &QPushButton::clicked, this, &TVAppPageQt::close_dialog);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(settingsButton);
    layout->addWidget(manualButton);
    layout->addWidget(aboutButton);
    layout->addWidget(m_about);
    layout->addStretch(1);
    layout->addWidget(closeButton, 0, Qt::AlignRight);
    set_delete_close(true);
}

TVAppPageQt::~TVAppPageQt() = default;

TVAppPageQt* TVAppPageQt::start(QWidget* parent, const TVSlotQt& settings)
{
    TVAppPageQt* page = new TVAppPageQt(parent, settings);
    page->show_dialog();
    return page;
}

std::string TVAppPageQt::about_text()
{
    const TVApplication* app = tvapplication();
    const auto escaped = [](const std::string& value) {
        return QString::fromStdString(value).toHtmlEscaped().toStdString();
    };
    std::string text =
        "<p><b>" + escaped(app->get_title().empty() ? app->get_application() : app->get_title()) + "</b></p>";
    const auto line = [&text, &escaped](const std::string& label, const std::string& value) {
        if (!value.empty())
            text += "<p>" + label + escaped(value) + "</p>";
    };
    line("Release ", app->get_release());
    line("", app->get_date());
    line("", app->get_description());
    line("", app->get_company());
    line("", app->get_copyright());
    line("", app->get_authors());
    if (!app->get_website().empty())
        text += "<p><a href=\"" + app->get_website() + "\">" + app->get_website() + "</a></p>";
    return text;
}

void TVAppPageQt::settings_pressed()
{
    // The settings take the page's place.
    const TVSlotQt settings = m_settings;
    close_dialog();
    settings.invoke(Qt::QueuedConnection);
}

void TVAppPageQt::manual_pressed()
{
    QWidget* opener = parentWidget();
    close_dialog();
    TVHelpQt::show_manual(opener);
}

void TVAppPageQt::about_pressed()
{
    m_about->setText(QString::fromStdString(about_text()));
    m_about->setVisible(!m_about->isVisible());
}
