#ifndef TVLINEEDITQT_H
#define TVLINEEDITQT_H

// TVLineEditQt: a line edit that speaks std::string and can be changed
// without counting as input (the run window empties a wrong answer that
// way). Reports when it gains and loses the focus.

#include <QLineEdit>
#include <string>

class TVLineEditQt : public QLineEdit
{
    Q_OBJECT

public:
    explicit TVLineEditQt(QWidget* parent = nullptr);
    ~TVLineEditQt() override;

    std::string get_string() const { return text().toStdString(); }
    // quiet: no textChanged or textEdited, so no handler takes it as input.
    void set_string(const std::string& text, bool quiet);
    void clear_quietly() { set_string(std::string(), true); }
    // Whether the whole text is selected when the field gains the focus, so
    // typing replaces it.
    void set_select_on_focus(bool on) { m_selectOnFocus = on; }

signals:
    void sig_focus_in();
    void sig_focus_out();

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool m_selectOnFocus = false;
};

#endif
