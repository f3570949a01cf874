#ifndef TVMESSAGEBOXSCRIPT_H
#define TVMESSAGEBOXSCRIPT_H

// TVMessageBoxScript: for tests. While it lives, message boxes are not
// shown but answered from a queue, in order, and every box asked is kept.
//
//     TVMessageBoxScript script({"Find It", "Ok"});
//     ... code that asks two questions ...
//     EXPECT_EQ(script.titles(), (std::vector<std::string>{"Missing File", "Found"}));
//     EXPECT_TRUE(script.done());
//
// A box asked with the queue empty is closed without a button ("") and
// counted in unexpected(). Scripts don't nest: the newest one answers, and
// its end puts back whatever answered before.

#include <deque>
#include <string>
#include <vector>

#include "LibGui/qt/tvmessageboxqt.h"

class TVMessageBoxScript
{
public:
    struct Box {
        std::string title;
        std::string text;
        std::vector<std::string> labels;
        std::string answer;
    };

    explicit TVMessageBoxScript(const std::vector<std::string>& answers = {});
    ~TVMessageBoxScript();
    TVMessageBoxScript(const TVMessageBoxScript&) = delete;
    TVMessageBoxScript& operator=(const TVMessageBoxScript&) = delete;

    void add_answer(const std::string& answer) { m_answers.push_back(answer); }

    const std::vector<Box>& boxes() const { return m_boxes; }
    std::vector<std::string> titles() const;
    std::vector<std::string> texts() const;
    // Boxes asked after the queue ran out.
    int unexpected() const { return m_unexpected; }
    // Every answer used and nothing unexpected.
    bool done() const { return m_answers.empty() && m_unexpected == 0; }

private:
    std::string answer(const std::string& title, const std::string& text, const std::vector<std::string>& labels);

    std::deque<std::string> m_answers;
    std::vector<Box> m_boxes;
    int m_unexpected = 0;
    TVMessageBoxQt::Answerer m_previous;
};

#endif
