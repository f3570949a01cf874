#ifndef TVDBCHECKITEM_H
#define TVDBCHECKITEM_H

// TVDBCheckItem: one problem the checker found with one object: its id,
// the error code (TVDatabase::TVErrC_ExtraVariables, ...), a short
// message for a list and the full message that says what to do.

#include <iosfwd>
#include <string>

class TVDBCheckItem
{
public:
    TVDBCheckItem(int id, int code, const std::string& short_message, const std::string& message)
        : m_id(id), m_errorCode(code), m_shortMessage(short_message), m_message(message)
    {
    }
    virtual ~TVDBCheckItem() = default;

    int get_id() const { return m_id; }
    int get_error_code() const { return m_errorCode; }
    const std::string& get_short_message() const { return m_shortMessage; }
    const std::string& get_message() const { return m_message; }

    virtual void dump(std::ostream& out, int indent) const;

private:
    int m_id;
    int m_errorCode;
    std::string m_shortMessage;
    std::string m_message;
};

#endif // TVDBCHECKITEM_H
