#include "AppTarvelloMaths/maths/question.h"

#include "LibCore/textstr/tvtextstr.h"
#include "LibCore/log/tvdump.h"

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <ostream>

struct Question::QuestionImpl {
    std::string m_text;
    double m_solution = 0;
    double m_answer = 0;
    bool m_complete = false;
    bool m_correct = false;
    int m_wrongCount = 0;
};

Question::Question() : d(new QuestionImpl)
{
    set_defaults(true);
}

Question::Question(const std::string& text, double solution) : d(new QuestionImpl)
{
    set_defaults(true);
    d->m_text = text;
    d->m_solution = solution;
}

Question::Question(const Question& other) : TVObject(other), d(new QuestionImpl(*other.d))
{
}

Question& Question::operator=(const Question& other)
{
    if (this != &other) {
        TVObject::operator=(other);
        *d = *other.d;
    }
    return *this;
}

Question::~Question() = default;

void Question::set_defaults(bool constructing)
{
    TVObject::set_defaults(constructing);
    *d = QuestionImpl();
}

void Question::dump(std::ostream& out, int indent) const
{
    const std::string pad = TVDump::indent_string(indent);
    out << pad << "Question: \"" << d->m_text << "\" solution " << d->m_solution << ", answer "
        << d->m_answer << (d->m_complete ? ", complete" : "") << (d->m_correct ? ", correct" : "")
        << ", " << d->m_wrongCount << " wrong\n";
}

bool Question::operator==(const Question& other) const
{
    return d->m_text == other.d->m_text && d->m_solution == other.d->m_solution &&
           d->m_answer == other.d->m_answer && d->m_complete == other.d->m_complete &&
           d->m_correct == other.d->m_correct && d->m_wrongCount == other.d->m_wrongCount;
}

std::ostream& operator<<(std::ostream& out, const Question& question)
{
    question.dump(out, 0);
    return out;
}

const std::string& Question::get_text() const
{
    return d->m_text;
}

void Question::set_text(const std::string& text)
{
    d->m_text = text;
}

double Question::get_solution() const
{
    return d->m_solution;
}

void Question::set_solution(double solution)
{
    d->m_solution = solution;
}

double Question::get_answer() const
{
    return d->m_answer;
}

bool Question::get_complete() const
{
    return d->m_complete;
}

bool Question::get_correct() const
{
    return d->m_correct;
}

int Question::get_wrongcount() const
{
    return d->m_wrongCount;
}

void Question::set_answer(double answer)
{
    d->m_answer = answer;
    d->m_complete = d->m_correct = std::fabs(d->m_answer - d->m_solution) < C_Tolerance;
}

std::string Question::solution_text() const
{
    // DBL_MAX as the blank value: no real solution ever formats to "".
    return tv_double_to_string(d->m_solution, "%g", DBL_MAX);
}

int Question::set_answer(const std::string& text, bool final)
{
    const std::string solution = solution_text();
    // The run window judges as soon as enough has been typed, with no key
    // to end the input, so a shorter text is simply not yet an answer.
    if (text.size() < solution.size() && !final)
        return TVErrC_okNotFinished;
    set_answer(std::atof(text.c_str()));
    if (text == solution)
        return TVErrC_okFinished;
    ++d->m_wrongCount;
    return TVErrC_okFailed;
}

std::string Question::wrong_text() const
{
    if (d->m_wrongCount < 1)
        return std::string();
    if (d->m_correct)
        return tv_sprintf("%d wrong", d->m_wrongCount);
    return tv_sprintf("Not %g", d->m_answer);
}
