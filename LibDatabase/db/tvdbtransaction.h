#ifndef TVDBTRANSACTION_H
#define TVDBTRANSACTION_H

// TVDBTransaction: one entry of a database's transaction log (TVDBIndex).
// An operation that changed objects gets one; its changed objects follow
// its tag in the partial file. Undo flips the status and the replay leaves
// the transaction's block out.
//
// Serial form: "id", "st", "op", then TVObject's under "TVObject". The tag
// that stands in the partial file is id ":" operation ("12:Add Exercise");
// only the leading digits are read back.

#include "LibObject/object/tvobject.h"

#include <iosfwd>
#include <string>

class TVDBTransaction : public TVObject
{
public:
    enum E_Status { E_Active = 0, E_Undone = 1 };

    TVDBTransaction();
    TVDBTransaction(int id, const std::string& operation);
    TVDBTransaction(const TVDBTransaction& other);
    TVDBTransaction& operator=(const TVDBTransaction& other);
    ~TVDBTransaction() override = default;

    static int create_tvobject(TVObject*& out, const TVObject* source);
    void register_tvobject() override;
    [[nodiscard]] int serialise(std::istream* in, std::ostream* out, const std::string& prefix,
                                int version) override;
    void dump(std::ostream& out, int indent) const override;
    bool operator==(const TVDBTransaction& other) const;

    void set_defaults(bool constructing);

    // "12:Add Exercise".
    std::string write_tag() const;
    // The leading decimal digits of a tag; -1 when it has none.
    static int read_transaction_tag(const std::string& tag);

    int get_id() const { return m_id; }
    int get_status() const { return m_status; }
    void set_status(int status) { m_status = status; }
    const std::string& get_operation() const { return m_operation; }

private:
    int m_id;
    int m_status;
    std::string m_operation;
};

std::ostream& operator<<(std::ostream& out, const TVDBTransaction& transaction);

#endif // TVDBTRANSACTION_H
