#ifndef TVDBMODELENTRY_H
#define TVDBMODELENTRY_H

// TVDBModelEntry: one row of a TVDBModel: the object it shows, its sort
// keys, and the texts of the columns that were worked out in advance.
//
// An entry with no column text set is not cached: the model then asks its
// get_id_value for every cell of the row. Rows sort by the numeric key once
// one is set, else by the text key compared as bytes.

#include <iosfwd>
#include <map>
#include <string>

class TVDBModelEntry
{
public:
    explicit TVDBModelEntry(int id = -1);
    virtual ~TVDBModelEntry() = default;

    int get_id() const { return m_id; }
    // Whether any column text is held.
    bool cached() const { return !m_values.empty(); }
    // The held text of column; empty when there is none.
    std::string get_value(int column) const;
    void set_value(int column, const std::string& value);
    void set_text_sort(const std::string& key);
    // From here on the entry sorts by key.
    void set_numeric_sort(double key);

    // With this entry's numeric key in use, compares the numbers; otherwise
    // the text keys as unsigned bytes, a key ahead of its own extensions.
    bool operator>(const TVDBModelEntry& other) const;

    virtual void dump(std::ostream& out, int indent) const;

private:
    int m_id;
    std::string m_textSort;
    double m_numericSort = 0.0;
    bool m_useNumeric = false;
    std::map<int, std::string> m_values;
};

std::ostream& operator<<(std::ostream& out, const TVDBModelEntry& entry);

#endif // TVDBMODELENTRY_H
