#ifndef TVTESTITEM_H
#define TVTESTITEM_H

// The test class with a member of every binder kind, derived from
// TVTestBase. Its lines, in the order in which they are written (values at
// their default are left out):
//
//   "b"   bool                       "sa"   text array (TVPtrArray)
//   "c"   char, default '-'          "ss"   text vector
//   "i"   int                        "m"    text map, later key replaces
//   "l"   long                       "mb"   text map binder, first key stays
//   "d"   double, 2 decimals         "kid"  nested TVTestBase or TVTestItem
//   "g"   double                     "note" nested TVTestNote
//   "id"  TVId                       raw lines
//   "dt"  TVDate, default blank      then TVTestBase's under "TVTestBase+"
//   "du"  TVDuration
//   "sv"  text through a value binder
//   "t"   text
//   "iv"  int vector
//   "idv" TVId vector
//   "dua" TVDuration array

#include "LibCore/ptrarray/tvptrarray.h"
#include "LibCore/ptrarray/tvptrarrayindex.h"
#include "LibDate/core/tvdate.h"
#include "LibDate/core/tvduration.h"
#include "LibObject/core/tvid.h"
#include "LibObject/object/tests/tvtestbase.h"
#include "LibObject/object/tests/tvtestnote.h"

#include <string>
#include <vector>

class TVTestItem : public TVTestBase
{
public:
    static constexpr char C_DefaultChar = '-';

    TVTestItem();
    // The nested objects are copied by their own class (clone_class).
    TVTestItem(const TVTestItem& other);
    TVTestItem& operator=(const TVTestItem& other);
    ~TVTestItem() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;

    bool m_flag = false;
    char m_letter = C_DefaultChar;
    int m_count = 0;
    long m_total = 0;
    double m_ratio = 0.0;
    double m_scale = 0.0;
    TVId m_ref;
    TVDate m_when;
    TVDuration m_span;
    std::string m_valueText;
    std::string m_text;
    std::vector<int> m_numbers;
    std::vector<TVId> m_refs;
    TVPtrArray<TVDuration> m_spans{true};
    TVPtrArray<std::string> m_words{true};
    std::vector<std::string> m_phrases;
    TVPtrArrayIndex<std::string> m_settings{true};
    TVPtrArrayIndex<std::string> m_labels{true};
    TVPtrArray<TVTestBase> m_kids{true};
    TVPtrArray<TVTestNote> m_notes{true};
    TVPtrArray<std::string> m_lines{true};

private:
    void copy_members(const TVTestItem& other);
};

#endif // TVTESTITEM_H
