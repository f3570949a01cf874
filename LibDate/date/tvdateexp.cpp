#include "LibDate/date/tvdateexp.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "LibCore/error/tverror.h"
#include "LibDate/core/tvdatedetails.h"
#include "LibDate/core/tvdateutils.h"

// What one evaluation shares down its nested choices.
struct TVDateExp::Run
{
    const TVRepeatConfig* m_config = nullptr;
    int m_restartsLeft = C_MaxRestarts;
    int m_depth = 0;
};

namespace {

// The date of the details. A year of 9999 or 9998 is how a T_Blank or
// T_Invalid travels in the details; it comes back as exactly that date.
TVDate to_date(const TVDateDetails& details)
{
    TVDateDetails copy(details);
    copy.recalculate();
    if (copy.m_year == TVDate::C_BlankDateYear)
        return TVDate(TVDate::E_DateBlank);
    if (copy.m_year == TVDate::C_InvalidDateYear)
        return TVDate(TVDate::E_DateInvalid);
    return copy.get_date(TVDate::C_OriginalTime);
}

} // namespace

TVDateExp::TVDateExp()
{
    set_defaults(true);
}

void TVDateExp::set_defaults(bool)
{
    m_terms.clear();
    m_relative.clear();
}

void TVDateExp::add_term(TVDateExpTerm::E_Type type, int value, const std::string& tag)
{
    add_term(TVDateExpTerm(type, value, tag));
}

void TVDateExp::add_term(const TVDateExpTerm& term)
{
    m_terms.push_back(term);
    if (term.get_type() == TVDateExpTerm::T_Relative)
        m_relative = term.get_tag();
}

void TVDateExp::add_exp(const TVDateExp& other)
{
    for (const TVDateExpTerm& term : other.m_terms)
        add_term(term);
}

bool TVDateExp::operator==(const TVDateExp& other) const
{
    return m_terms == other.m_terms && m_relative == other.m_relative;
}

TVDate TVDateExp::apply(const TVDate& base, const TVRepeatConfig* config) const
{
    TVDateDetails work;
    if (base.is_ok())
        work.set_date(base, TVDate::C_OriginalTime);
    else
        work.set_date(TVDateUtils::now(), TVDate::C_DefaultTime);
    Run run;
    run.m_config = config;
    return evaluate(work, 0, size(), run);
}

TVDate TVDateExp::evaluate(const TVDateDetails& details, const TVRepeatConfig* config, int first,
                           int last) const
{
    TVDateDetails work(details);
    Run run;
    run.m_config = config;
    return evaluate(work, std::max(first, 0), std::min(last, size()), run);
}

TVDate TVDateExp::evaluate(TVDateDetails& work, int first, int last, Run& run) const
{
    const TVDate start = to_date(work);
    if (first >= last)
        return start;
    int result = run_terms(work, first, last, run);
    // An unfinished run starts again from where it got to, but only while
    // that lies ahead of the start: a date that can't move would loop.
    while (result == TVErrC_okNotFinished) {
        TVDate reached = to_date(work);
        if (!(start < reached) || run.m_restartsLeft <= 0)
            return reached;
        --run.m_restartsLeft;
        result = run_terms(work, first, last, run);
    }
    if (istvwarn(result)) {
        work.set_date(TVDate(TVDate::E_DateBlank), TVDate::C_GMT);
        return TVDate(TVDate::E_DateBlank);
    }
    return to_date(work);
}

int TVDateExp::run_terms(TVDateDetails& work, int first, int last, Run& run) const
{
    int i = first;
    while (i < last) {
        const TVDateExpTerm& term = m_terms[static_cast<size_t>(i)];
        if (term.get_type() != TVDateExpTerm::T_Open) {
            int result = term.apply(work, run.m_config);
            if (istvwarn(result) || result == TVErrC_okNotFinished)
                return result;
            ++i;
            continue;
        }
        std::vector<std::pair<int, int>> alternatives;
        int close = collect_choice(i, last, alternatives);
        if (run.m_depth < C_MaxChoiceDepth) {
            ++run.m_depth;
            const TVDate current = to_date(work);
            for (const auto& alternative : alternatives) {
                TVDateDetails trial(work);
                if (evaluate(trial, alternative.first, alternative.second, run) > current) {
                    work = trial;
                    break;
                }
            }
            --run.m_depth;
        }
        i = close + 1;
    }
    return TVErrC_ok;
}

int TVDateExp::collect_choice(int open, int last,
                              std::vector<std::pair<int, int>>& alternatives) const
{
    int depth = 0;
    int from = open + 1;
    int at = open + 1;
    for (; at < last; ++at) {
        TVDateExpTerm::E_Type type = m_terms[static_cast<size_t>(at)].get_type();
        if (type == TVDateExpTerm::T_Open) {
            ++depth;
        } else if (type == TVDateExpTerm::T_Close) {
            if (depth == 0)
                break;
            --depth;
        } else if (type == TVDateExpTerm::T_Or && depth == 0) {
            if (at > from)
                alternatives.emplace_back(from, at);
            from = at + 1;
        }
    }
    if (at > from)
        alternatives.emplace_back(from, at);
    return at;
}

std::string TVDateExp::to_string() const
{
    std::string text;
    const int count = size();
    for (int i = 0; i < count; ++i) {
        int previous = i > 0 ? m_terms[static_cast<size_t>(i - 1)].get_type()
                             : TVDateExpTerm::C_NoNeighbour;
        int next = i + 1 < count ? m_terms[static_cast<size_t>(i + 1)].get_type()
                                 : TVDateExpTerm::C_NoNeighbour;
        text += m_terms[static_cast<size_t>(i)].to_string(previous, next);
    }
    size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? std::string() : text.substr(begin);
}

void TVDateExp::dump(std::ostream& out, int indent) const
{
    out << std::string(static_cast<size_t>(indent > 0 ? indent : 0) * 4, ' ') << "TVDateExp "
        << size() << " terms";
    if (!m_relative.empty())
        out << ", relative " << m_relative;
    out << "\n";
    for (const TVDateExpTerm& term : m_terms)
        term.dump(out, indent + 1);
}

std::ostream& operator<<(std::ostream& out, const TVDateExp& exp)
{
    return out << exp.to_string();
}
