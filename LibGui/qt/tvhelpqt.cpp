#include "LibGui/qt/tvhelpqt.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "LibCore/application/tvapplication.h"
#include "LibGui/qt/tvguideqt.h"

QPointer<TVHelpQt> TVHelpQt::s_current;

TVHelpQt::TVHelpQt(QWidget* parent) : TVDialogQt(parent)
{
    setObjectName("TVHelpQt");
    setWindowTitle("User Manual");
    m_summary = new QLabel(this);
    m_summary->setObjectName("summaryLabel");
    m_summary->setWordWrap(true);
    m_browser = new TVGuideQt(this);
    m_browser->setObjectName("helpBrowser");

    m_back = new QPushButton(style()->standardIcon(QStyle::SP_ArrowBack), "Back", this);
    m_back->setObjectName("backButton");
    m_back->setEnabled(false);
    QPushButton* close = new QPushButton("Close", this);
    close->setObjectName("closeButton");
    connect(m_back, &QPushButton::clicked, m_browser, &QTextBrowser::backward);
    connect(m_browser, &QTextBrowser::backwardAvailable, m_back, &QPushButton::setEnabled);
    connect(close, &QPushButton::clicked, this, &TVHelpQt::close_dialog);

    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->addWidget(m_back);
    buttons->addStretch(1);
    buttons->addWidget(close);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(m_browser, 1);
    layout->addLayout(buttons);
    resize(640, 720);
    set_delete_close(true);
}

TVHelpQt::~TVHelpQt() = default;

bool TVHelpQt::set_page(const std::string& page, const std::string& summary)
{
    m_summary->setText(QString::fromStdString(summary));
    m_summary->setVisible(!summary.empty());
    return m_browser->set_page(page);
}

TVHelpQt* TVHelpQt::current()
{
    return s_current.data();
}

TVHelpQt* TVHelpQt::show_help(const std::string& page, const std::string& summary, QWidget* parent)
{
    if (s_current == nullptr || s_current->is_closing()) {
        s_current = new TVHelpQt(parent);
        s_current->set_page(page, summary);
        s_current->show_dialog();
    } else {
        s_current->set_page(page, summary);
        s_current->raise_window(0);
    }
    return s_current.data();
}

TVHelpQt* TVHelpQt::show_manual(QWidget* widget)
{
    const TVWindowQt* window = widget != nullptr ? TVWindowQt::parent_window(widget) : nullptr;
    if (window != nullptr && !window->get_manual().empty())
        return show_help(window->get_manual(), window->get_summary(), widget);
    return show_help(tvapplication()->get_application() + ".html", std::string(), widget);
}
