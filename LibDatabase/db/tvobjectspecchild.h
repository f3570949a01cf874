#ifndef TVOBJECTSPECCHILD_H
#define TVOBJECTSPECCHILD_H

// TVObjectSpecChild: one kind of child that objects of a spec may hold:
// the member tag it goes under in its parent, the spec it must be derived
// from, the spec that a new one takes (the same when none is named), and
// whether it is an array, mandatory (made with the parent) or made when
// the parent is created through add_create.
//
// The spec ids are resolved by name at each compile (-1 when the name is
// unknown), and the line number is that of its definition; neither is
// saved. Serial form: "N" spec name, "E" default spec name, "M" member
// tag, "D" mandatory, "A" array, "C" add-create, then TVObject's under
// "TVObject".

#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <string>

class TVObjectSpecChild : public TVObject
{
public:
    TVObjectSpecChild();
    TVObjectSpecChild(const std::string& spec_name, const std::string& default_spec_name,
                      const std::string& member_tag, bool mandatory, bool array,
                      bool add_create, int line_no);
    TVObjectSpecChild(const TVObjectSpecChild& other) = default;
    TVObjectSpecChild& operator=(const TVObjectSpecChild& other) = default;
    ~TVObjectSpecChild() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;

    int get_spec_id() const { return m_specId; }
    void set_spec_id(int id) { m_specId = id; }
    const std::string& get_spec_name() const { return m_specName; }
    void set_spec_name(const std::string& name) { m_specName = name; }
    int get_defaultspecid() const { return m_defaultSpecId; }
    void set_defaultspecid(int id) { m_defaultSpecId = id; }
    const std::string& get_defaultspec_name() const { return m_defaultSpecName; }
    void set_defaultspec_name(const std::string& name) { m_defaultSpecName = name; }
    const std::string& get_member_tag() const { return m_memberTag; }
    bool is_mandatory() const { return m_mandatory; }
    bool is_array() const { return m_array; }
    bool is_add_create() const { return m_addCreate; }
    int get_line_no() const { return m_lineNo; }

private:
    int m_specId = -1;
    std::string m_specName;
    int m_defaultSpecId = -1;
    std::string m_defaultSpecName;
    std::string m_memberTag;
    bool m_mandatory = false;
    bool m_array = false;
    bool m_addCreate = false;
    int m_lineNo = 0;
};

#endif // TVOBJECTSPECCHILD_H
