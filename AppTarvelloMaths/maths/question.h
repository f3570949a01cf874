#ifndef QUESTION_H
#define QUESTION_H

// Question: one question of a run, its solution and what the child typed.
//
// Questions live in memory only: a Go owns those of its run, and they are
// never written to the file, so the class has no serial form and is not
// registered with the class index.
//
// m_complete and m_correct are always written together with one value, so a
// question is either complete and correct or neither.

#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <memory>
#include <string>

class Question : public TVObject
{
public:
    // Two numbers closer than this count as the same answer.
    static constexpr double C_Tolerance = 1e-7;

    Question();
    Question(const std::string& text, double solution);
    Question(const Question& other);
    Question& operator=(const Question& other);
    ~Question() override;

    void dump(std::ostream& out, int indent) const override;
    void set_defaults(bool constructing);
    bool operator==(const Question& other) const;
    bool operator!=(const Question& other) const { return !(*this == other); }

    const std::string& get_text() const;
    void set_text(const std::string& text);
    double get_solution() const;
    void set_solution(double solution);
    // The value of the last judged input.
    double get_answer() const;
    bool get_complete() const;
    bool get_correct() const;
    // Failed inputs so far.
    int get_wrongcount() const;

    // Stores the value and judges it; the wrong count stays as it is.
    void set_answer(double answer);
    // Judges typed text once it is as long as the solution's "%g" text (or
    // at once when final). TVErrC_okNotFinished: too short, nothing
    // changed. TVErrC_okFinished: the text is the solution text.
    // TVErrC_okFailed: anything else, counted as wrong, although the flags
    // follow the number ("07" for 7 completes the question and still fails).
    [[nodiscard]] int set_answer(const std::string& text, bool final);
    // The solution as the judge compares it: "%g", so 1234567 is "1.23457e+06".
    std::string solution_text() const;

    // "" before a failure; "N wrong" once right; "Not <answer>" while wrong.
    std::string wrong_text() const;

private:
    struct QuestionImpl;
    std::unique_ptr<QuestionImpl> d;
};

std::ostream& operator<<(std::ostream& out, const Question& question);

#endif // QUESTION_H
