#ifndef TVQUERYCONDNUM_H
#define TVQUERYCONDNUM_H

// A number read by atof against a minimum, a maximum or both; epsilon
// widens each bound (the parser gives 0).
//
// Serial form: its own keys, then TVQueryCond's under "TVQueryCond".

#include "LibDatabase/db/tvquerycond.h"

#include <string>

class TVQueryCondNum : public TVQueryCond
{
public:
    enum E_CondType { E_None = 0, E_Minimum = 1, E_Maximum = 2, E_Range = 3, E_Equal = 4,
                      E_NotEqual = 5 };

    TVQueryCondNum();
    TVQueryCondNum(const std::string& objects, const std::string& field,
                   const std::string& qualifiers);
    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    bool evaluate(const std::string& value, const TVDatabase& db) const override;

    void set_minimum(double minimum);
    void set_maximum(double maximum);
    void set_range(double minimum, double maximum);
    void set_equal(double value);
    void set_notequal(double value);
    void set_epsilon(double epsilon) { m_epsilon = epsilon; }
    int get_condition_type() const { return m_conditionType; }

private:
    int m_conditionType = E_None;
    double m_minimum = 0;
    double m_maximum = 0;
    double m_epsilon = 0;
};

#endif // TVQUERYCONDNUM_H
