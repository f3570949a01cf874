#ifndef TVPARAMSET_H
#define TVPARAMSET_H

// TVParamSet: parameters indexed by name, in the order they were added.
//
// A set holds two kinds of entry: those it was lent (add), which belong to
// whoever declared them and must outlive the set, and those it was given
// (adopt), which it deletes with itself or on clear(). Names are unique and
// compared exactly. Not copyable: a set is an index, and a copy would
// point into the original's declarations.

#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

class TVParamBase;

class TVParamSet
{
public:
    TVParamSet();
    TVParamSet(const TVParamSet&) = delete;
    TVParamSet& operator=(const TVParamSet&) = delete;
    ~TVParamSet();

    void dump(std::ostream& out, int indent) const;

    // Indexes a parameter owned elsewhere. False, and nothing changed, if the
    // name is taken.
    bool add(TVParamBase* param);
    // Takes the parameter over. Null, and param deleted, if the name is taken.
    TVParamBase* adopt(std::unique_ptr<TVParamBase> param);
    // Forgets every entry, deleting those it owns.
    void clear();

    int size() const { return static_cast<int>(m_order.size()); }
    TVParamBase& at(int index) const { return *m_order.at(static_cast<size_t>(index)); }
    // The entry of that name, or null.
    TVParamBase* find(const std::string& name) const;

    // set_value on the entry of that name; false if there is none.
    bool set_value(const std::string& name, const std::string& value, const std::string& source);
    // The value at index of the entry of that name; "" if either is missing.
    std::string get_value(const std::string& name, int index = 0) const;

    void clear_values();
    void assign_values() const;
    bool modified_since(long count) const;

private:
    std::vector<TVParamBase*> m_order;
    std::map<std::string, TVParamBase*> m_byName;
    std::vector<std::unique_ptr<TVParamBase>> m_owned;
};

#endif // TVPARAMSET_H
