#ifndef TVSRLVALUEVECTOR_H
#define TVSRLVALUEVECTOR_H

// TVSrlValueVector<T>: binds a std::vector<T>, one tagged field per
// element under the one tag. A read empties the vector and appends a value
// per entry, in the order of the lines.

#include "LibCore/error/tverror.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvduration.h"
#include "LibObject/core/tvid.h"
#include "LibObject/object/tvsrl.h"

#include <ostream>
#include <string>
#include <vector>

template <class T>
class TVSrlValueVector : public TVSrl
{
public:
    explicit TVSrlValueVector(std::vector<T>& values) : m_values(&values) {}

    bool handle_multiple() const override { return true; }
    int get_nentries() const override { return static_cast<int>(m_values->size()); }

    int start_read() override
    {
        m_values->clear();
        return TVErrC_ok;
    }

    int read(std::istream& in) override
    {
        T value{};
        tv_srl_extract(in, value);
        m_values->push_back(value);
        return TVErrC_ok;
    }

    int write(std::ostream& out, int index) const override
    {
        if (index < 0 || index >= get_nentries())
            return tverror(TVErrC_ArrayBounds, TVLOCATION, "Index %d out of range %d", index,
                           get_nentries());
        tv_srl_insert(out, (*m_values)[static_cast<size_t>(index)]);
        return TVErrC_ok;
    }

private:
    std::vector<T>* m_values;
};

extern template class TVSrlValueVector<int>;
extern template class TVSrlValueVector<long>;
extern template class TVSrlValueVector<double>;
extern template class TVSrlValueVector<std::string>;
extern template class TVSrlValueVector<TVId>;
extern template class TVSrlValueVector<TVDate>;
extern template class TVSrlValueVector<TVDuration>;

#endif // TVSRLVALUEVECTOR_H
