#ifndef TVSRLVALUEARRAY_H
#define TVSRLVALUEARRAY_H

// TVSrlValueArray<T>: binds a TVPtrArray<T> of values it owns, one tagged
// field per element. A read empties the array and appends a new T per
// entry. The array must own its elements, or a read leaks them.

#include "LibCore/error/tverror.h"
#include "LibCore/ptrarray/tvptrarray.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvduration.h"
#include "LibObject/core/tvid.h"
#include "LibObject/object/tvsrl.h"

#include <ostream>

template <class T>
class TVSrlValueArray : public TVSrl
{
public:
    explicit TVSrlValueArray(TVPtrArray<T>& values) : m_values(&values) {}

    bool handle_multiple() const override { return true; }
    int get_nentries() const override { return m_values->size(); }

    int start_read() override
    {
        m_values->clear();
        return TVErrC_ok;
    }

    int read(std::istream& in) override
    {
        T* value = new T;
        m_values->add(value);
        tv_srl_extract(in, *value);
        return TVErrC_ok;
    }

    int write(std::ostream& out, int index) const override
    {
        if (index < 0 || index >= get_nentries())
            return tverror(TVErrC_ArrayBounds, TVLOCATION, "Index %d out of range %d", index,
                           get_nentries());
        if (const T* value = (*m_values)[index])
            tv_srl_insert(out, *value);
        return TVErrC_ok;
    }

private:
    TVPtrArray<T>* m_values;
};

extern template class TVSrlValueArray<TVId>;
extern template class TVSrlValueArray<TVDate>;
extern template class TVSrlValueArray<TVDuration>;

#endif // TVSRLVALUEARRAY_H
