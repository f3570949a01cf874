#include "LibGui/qt/tvmessageboxqt.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <iostream>

#include "LibCore/error/tverror.h"
#include "LibGui/base/tvmessagebox.h"

namespace {

TVMessageBoxQt::Answerer& answerer()
{
    static TVMessageBoxQt::Answerer s_answerer;
    return s_answerer;
}

bool& show_unattended()
{
    static bool s_show = false;
    return s_show;
}

} // namespace

TVMessageBoxQt::TVMessageBoxQt(QWidget* parent, const std::string& title, const std::string& text,
                               const std::string& b1, const std::string& b2, const std::string& b3,
                               const std::string& b4, const std::string& details)
    : QDialog(parent), m_title(title), m_text(text)
{
    setObjectName("TVMessageBoxQt");
    setWindowTitle(QString::fromStdString(title));

    auto* layout = new QVBoxLayout(this);
    m_label = new QLabel(QString::fromStdString(text), this);
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_label);

    m_details = new QTextEdit(this);
    m_details->setObjectName("details");
    m_details->setReadOnly(true);
    m_details->setPlainText(QString::fromStdString(details));
    m_details->setMinimumHeight(C_DetailsMinHeight);
    m_details->setMaximumHeight(C_DetailsMaxHeight);
    m_details->hide();
    layout->addWidget(m_details);

    auto* row = new QHBoxLayout;
    row->addStretch(1);
    const std::string keys[C_Buttons] = {b1, b2, b3, b4};
    for (int i = 0; i < C_Buttons; ++i) {
        m_buttons[i] = new QPushButton(this);
        m_buttons[i]->setAutoDefault(false);
        setup_button(m_buttons[i], keys[i]);
        row->addWidget(m_buttons[i]);
    }
    if (!details.empty() && m_detailsButton == nullptr) {
        m_detailsButton = new QPushButton(this);
        m_detailsButton->setAutoDefault(false);
        setup_button(m_detailsButton, TVMessageBox::C_Details);
        row->insertWidget(0, m_detailsButton);
    }
    layout->addLayout(row);
}

TVMessageBoxQt::~TVMessageBoxQt() = default;

void TVMessageBoxQt::setup_button(QPushButton* button, const std::string& key)
{
    if (button == nullptr)
        return;
    const TVMessageBox::Button parsed = TVMessageBox::parse_key(key);
    if (parsed.label.empty()) {
        button->hide();
        return;
    }
    button->setText(QString::fromStdString(parsed.label));
    button->setObjectName(QString::fromStdString(parsed.label));
    button->setDefault(parsed.isDefault);
    if (!parsed.tooltip.empty())
        button->setToolTip(QString::fromStdString(parsed.tooltip));
    if (!parsed.shortcut.empty())
        button->setShortcut(QKeySequence(QString::fromStdString(parsed.shortcut)));
    disconnect(button, &QPushButton::clicked, this, nullptr);
    if (parsed.label == TVMessageBox::C_Details) {
        m_detailsButton = button;
        connect(button, &QPushButton::clicked, this, &TVMessageBoxQt::toggle_details);
        return;
    }
    if (parsed.isEscape)
        m_escape = parsed.label;
    m_buttonLabels.push_back(parsed.label);
    connect(button, &QPushButton::clicked, this, &TVMessageBoxQt::button_clicked);
}

std::vector<std::string> TVMessageBoxQt::labels() const { return m_buttonLabels; }

QPushButton* TVMessageBoxQt::button(const std::string& label) const
{
    for (QPushButton* b : m_buttons) {
        if (!b->isHidden() && b->text().toStdString() == label)
            return b;
    }
    if (m_detailsButton != nullptr && label == TVMessageBox::C_Details)
        return m_detailsButton;
    return nullptr;
}

bool TVMessageBoxQt::details_visible() const { return !m_details->isHidden(); }

void TVMessageBoxQt::toggle_details()
{
    m_details->setVisible(m_details->isHidden());
    adjustSize();
}

void TVMessageBoxQt::button_clicked()
{
    auto* pressed = qobject_cast<QPushButton*>(sender());
    if (pressed != nullptr)
        finish(pressed->text().toStdString());
}

void TVMessageBoxQt::reject() { finish(m_escape); }

void TVMessageBoxQt::finish(const std::string& key)
{
    m_key = key;
    if (isVisible())
        done(key.empty() ? QDialog::Rejected : QDialog::Accepted);
    emit sig_complete_key(m_key);
    emit sig_complete_id(m_key, m_id);
    emit sig_complete_idlist(m_key, m_ids);
}

std::string TVMessageBoxQt::answer_by_seam() const
{
    const std::string key = answerer()(m_title, m_text, m_buttonLabels);
    if (!key.empty() && std::find(m_buttonLabels.begin(), m_buttonLabels.end(), key) == m_buttonLabels.end())
        tverror(TVErrC_InvalidValue, TVLOCATION, "Answer \"%s\" is not a button of the box \"%s\"", key.c_str(),
                m_title.c_str());
    return key;
}

std::string TVMessageBoxQt::start(QWidget* parent, const std::string& title, const std::string& text,
                                  const std::string& b1, const std::string& b2, const std::string& b3,
                                  const std::string& b4, const std::string& details)
{
    TVMessageBoxQt box(parent, title, text, b1, b2, b3, b4, details);
    if (has_answerer())
        return box.answer_by_seam();
    if (unattended()) {
        report_unattended(title, text, box.m_escape);
        return box.m_escape;
    }
    box.exec();
    return box.get_key();
}

void TVMessageBoxQt::information(const std::string& title, const std::string& text, QWidget* parent)
{
    start(parent, title, text, TVMessageBox::C_Ok);
}

std::string TVMessageBoxQt::question(QWidget* parent, const std::string& title, const std::string& text,
                                     const std::string& b1, const std::string& b2, const std::string& b3,
                                     const std::string& b4)
{
    return start(parent, title, text, b1, b2, b3, b4);
}

TVMessageBoxQt* TVMessageBoxQt::open_async(TVMessageBoxQt* box, QObject* receiver, const char* signal,
                                           const char* slot)
{
    if (receiver == nullptr || !connect(box, signal, receiver, slot)) {
        delete box;
        return nullptr;
    }
    connect(box, &TVMessageBoxQt::sig_complete_key, box, &QObject::deleteLater);
    if (has_answerer()) {
        // Asked now, so a wrong answer raises in the caller; delivered from
        // the event loop, as a user's would be.
        const std::string key = box->answer_by_seam();
        QTimer::singleShot(0, box, [box, key] { box->finish(key); });
        return box;
    }
    if (unattended()) {
        report_unattended(box->m_title, box->m_text, box->m_escape);
        QTimer::singleShot(0, box, [box] { box->finish(box->m_escape); });
        return box;
    }
    box->setWindowModality(Qt::WindowModal);
    box->show();
    return box;
}

TVMessageBoxQt* TVMessageBoxQt::open_key(QWidget* parent, const std::string& title, const std::string& text,
                                         const std::string& b1, const std::string& b2, const std::string& b3,
                                         const std::string& b4, QObject* receiver, const char* slot)
{
    auto* box = new TVMessageBoxQt(parent, title, text, b1, b2, b3, b4);
    return open_async(box, receiver, SIGNAL(sig_complete_key(std::string)), slot);
}

TVMessageBoxQt* TVMessageBoxQt::open_id(QWidget* parent, const std::string& title, const std::string& text,
                                        const std::string& b1, const std::string& b2, const std::string& b3,
                                        const std::string& b4, const TVId& id, QObject* receiver,
                                        const char* slot)
{
    auto* box = new TVMessageBoxQt(parent, title, text, b1, b2, b3, b4);
    box->set_id(id);
    return open_async(box, receiver, SIGNAL(sig_complete_id(std::string, TVId)), slot);
}

TVMessageBoxQt* TVMessageBoxQt::open_idlist(QWidget* parent, const std::string& title, const std::string& text,
                                            const std::string& b1, const std::string& b2, const std::string& b3,
                                            const std::string& b4, const TVIdList& ids, QObject* receiver,
                                            const char* slot)
{
    auto* box = new TVMessageBoxQt(parent, title, text, b1, b2, b3, b4);
    box->set_idlist(ids);
    return open_async(box, receiver, SIGNAL(sig_complete_idlist(std::string, TVIdList)), slot);
}

bool TVMessageBoxQt::unattended()
{
    if (has_answerer() || show_unattended())
        return false;
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) == nullptr)
        return true;
    const QString platform = QGuiApplication::platformName();
    return platform == "offscreen" || platform == "minimal";
}

void TVMessageBoxQt::report_unattended(const std::string& title, const std::string& text,
                                       const std::string& answer)
{
    std::cerr << "Unattended \"" << title << "\" answered \"" << answer << "\": " << text << std::endl;
}

TVMessageBoxQt::ShowUnattended::ShowUnattended() : m_previous(show_unattended()) { show_unattended() = true; }

TVMessageBoxQt::ShowUnattended::~ShowUnattended() { show_unattended() = m_previous; }

void TVMessageBoxQt::set_answerer(Answerer answerer_) { answerer() = std::move(answerer_); }

bool TVMessageBoxQt::has_answerer() { return static_cast<bool>(answerer()); }

TVMessageBoxQt::Answerer TVMessageBoxQt::get_answerer() { return answerer(); }
