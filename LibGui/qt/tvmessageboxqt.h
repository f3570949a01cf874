#ifndef TVMESSAGEBOXQT_H
#define TVMESSAGEBOXQT_H

// TVMessageBoxQt: a question with up to four buttons, answered by the
// label of the button pressed. Button strings are those of TVMessageBox
// ("Yes#Default#Shortcut:y"); an empty one is no button. A button labelled
// "Details" doesn't answer: it shows or hides the details pane.
//
// start/question/information wait (QDialog::exec). The open_ forms return at
// once and deliver the answer to a receiver's slot later, from the event
// loop; the box deletes itself afterwards.
//
// Tests answer boxes without showing them through set_answerer, most easily
// by a TVMessageBoxScript (tvmessageboxscript.h). Where nobody could answer
// (unattended()) a box isn't shown either: it gives its Escape label at once
// and writes its title and text to standard error, so a question nobody
// expected fails a test instead of hanging it.

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "LibCore/ptrarray/tvidstring.h"
#include "LibObject/core/tvid.h"
#include "LibObject/core/tvidlist.h"

class QLabel;
class QPushButton;
class QTextEdit;

class TVMessageBoxQt : public QDialog
{
    Q_OBJECT

public:
    static constexpr int C_Buttons = 4;
    // The details pane's height range, in pixels.
    static constexpr int C_DetailsMinHeight = 200;
    static constexpr int C_DetailsMaxHeight = 300;

    // Answers a box instead of the user: gets the title, the text and the
    // labels offered (without "Details"), and gives one of those labels, or
    // "" for a box closed without a button. Any other label raises
    // TVErrC_InvalidValue.
    using Answerer = std::function<std::string(const std::string& title, const std::string& text,
                                               const std::vector<std::string>& labels)>;

    // details non-empty without a "Details" button adds one.
    TVMessageBoxQt(QWidget* parent, const std::string& title, const std::string& text, const std::string& b1,
                   const std::string& b2 = "", const std::string& b3 = "", const std::string& b4 = "",
                   const std::string& details = "");
    ~TVMessageBoxQt() override;

    // Shows the box and waits; gives the label pressed. Escape gives the
    // label of the "Escape" button, or "" if there is none.
    static std::string start(QWidget* parent, const std::string& title, const std::string& text,
                             const std::string& b1, const std::string& b2 = "", const std::string& b3 = "",
                             const std::string& b4 = "", const std::string& details = "");
    // One Ok button.
    static void information(const std::string& title, const std::string& text, QWidget* parent);
    static std::string question(QWidget* parent, const std::string& title, const std::string& text,
                                const std::string& b1, const std::string& b2, const std::string& b3 = "",
                                const std::string& b4 = "");

    // Without waiting: the answer goes to receiver's slot, as SLOT() writes
    // it, with the signature "(std::string)", "(std::string,TVId)" or
    // "(std::string,TVIdList)". Gives the box (it deletes itself once
    // answered), or null when the slot can't be connected.
    static TVMessageBoxQt* open_key(QWidget* parent, const std::string& title, const std::string& text,
                                    const std::string& b1, const std::string& b2, const std::string& b3,
                                    const std::string& b4, QObject* receiver, const char* slot);
    static TVMessageBoxQt* open_id(QWidget* parent, const std::string& title, const std::string& text,
                                   const std::string& b1, const std::string& b2, const std::string& b3,
                                   const std::string& b4, const TVId& id, QObject* receiver, const char* slot);
    static TVMessageBoxQt* open_idlist(QWidget* parent, const std::string& title, const std::string& text,
                                       const std::string& b1, const std::string& b2, const std::string& b3,
                                       const std::string& b4, const TVIdList& ids, QObject* receiver,
                                       const char* slot);

    // No answerer is set and the platform has no screen to answer on
    // ("offscreen", "minimal", or no GUI application at all), unless a
    // ShowUnattended lives. The file chooser and the error dialog ask too.
    static bool unattended();
    // What an unattended dialog was asked and what it gave, on standard error.
    static void report_unattended(const std::string& title, const std::string& text, const std::string& answer);

    // While it lives, boxes show even without a screen: for a test that
    // presses their buttons itself.
    class ShowUnattended
    {
    public:
        ShowUnattended();
        ~ShowUnattended();
        ShowUnattended(const ShowUnattended&) = delete;
        ShowUnattended& operator=(const ShowUnattended&) = delete;

    private:
        bool m_previous;
    };

    // Null puts the user back in charge.
    static void set_answerer(Answerer answerer);
    static bool has_answerer();
    static Answerer get_answerer();

    // Sets a button from its string: label, default, Escape, tool tip and
    // shortcut; an empty string hides it.
    void setup_button(QPushButton* button, const std::string& key);

    // The labels of the buttons that answer, in order.
    std::vector<std::string> labels() const;
    // The button with that label, or null.
    QPushButton* button(const std::string& label) const;
    // The label that answered; "" until then or if closed without one.
    const std::string& get_key() const { return m_key; }
    bool details_visible() const;
    QTextEdit* details_pane() const { return m_details; }

    void set_id(const TVId& id) { m_id = id; }
    void set_idlist(const TVIdList& ids) { m_ids = ids; }

public slots:
    void reject() override;

signals:
    void sig_complete_key(std::string key);
    void sig_complete_id(std::string key, TVId id);
    void sig_complete_idlist(std::string key, TVIdList ids);

private slots:
    void button_clicked();
    void toggle_details();

private:
    // Asks the answerer, checking that its answer was offered.
    std::string answer_by_seam() const;
    void finish(const std::string& key);
    static TVMessageBoxQt* open_async(TVMessageBoxQt* box, QObject* receiver, const char* signal, const char* slot);

    std::string m_title;
    std::string m_text;
    std::string m_key;
    std::string m_escape;
    QLabel* m_label = nullptr;
    QPushButton* m_buttons[C_Buttons] = {};
    std::vector<std::string> m_buttonLabels;
    QPushButton* m_detailsButton = nullptr;
    QTextEdit* m_details = nullptr;
    TVId m_id;
    TVIdList m_ids;
};

#endif
