#include "LibGui/qt/tvmessageboxscript.h"

TVMessageBoxScript::TVMessageBoxScript(const std::vector<std::string>& answers)
    : m_answers(answers.begin(), answers.end())
{
    m_previous = TVMessageBoxQt::get_answerer();
    TVMessageBoxQt::set_answerer([this](const std::string& title, const std::string& text,
                                        const std::vector<std::string>& labels) {
        return answer(title, text, labels);
    });
}

TVMessageBoxScript::~TVMessageBoxScript() { TVMessageBoxQt::set_answerer(m_previous); }

std::string TVMessageBoxScript::answer(const std::string& title, const std::string& text,
                                       const std::vector<std::string>& labels)
{
    Box box{title, text, labels, std::string()};
    if (m_answers.empty()) {
        ++m_unexpected;
    } else {
        box.answer = m_answers.front();
        m_answers.pop_front();
    }
    m_boxes.push_back(box);
    return box.answer;
}

std::vector<std::string> TVMessageBoxScript::titles() const
{
    std::vector<std::string> list;
    for (const Box& box : m_boxes)
        list.push_back(box.title);
    return list;
}

std::vector<std::string> TVMessageBoxScript::texts() const
{
    std::vector<std::string> list;
    for (const Box& box : m_boxes)
        list.push_back(box.text);
    return list;
}
