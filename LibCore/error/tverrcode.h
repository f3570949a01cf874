#ifndef TVERRCODE_H
#define TVERRCODE_H

#include <cstdio>
#include <string>

// One registered error code: its number, the identifier it is known by in
// the code ("TVErrC_FileOpen") and the sentence that describes it. Numbers
// are handed out when the process starts and are never written to files.
class TVErrCode
{
public:
    TVErrCode();
    TVErrCode(int code, const std::string& name, const std::string& description);
    TVErrCode(const TVErrCode&) = default;
    TVErrCode& operator=(const TVErrCode&) = default;
    virtual ~TVErrCode();

    virtual void print(FILE* out, int indent) const;

    bool operator==(const TVErrCode& other) const;
    bool operator!=(const TVErrCode& other) const { return !(*this == other); }

    int get_code() const { return code; }
    const std::string& get_name() const { return name; }
    const std::string& get_description() const { return description; }

    int code;
    std::string name;
    std::string description;
};

#endif
