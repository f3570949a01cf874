#ifndef TVDBCHILD_H
#define TVDBCHILD_H

// TVDBChild: the frame of a child process that a test starts and kills:
// errors kept quiet and never stopping the run, the database loaded as
// the program loads it (application type "TestApp"), and any failure
// printed as "fail WHAT" with the messages, exit status 3.

#include <functional>
#include <string>

class TVDatabase;

class TVDBChild
{
public:
    // Prints "fail what" and every pending message; gives 3.
    static int fail(const char* what);
    // setup (may be empty) runs before the load; body's return is the
    // exit status. A thrown error is a failure.
    static int run(const std::string& file, const std::function<int()>& setup,
                   const std::function<int(TVDatabase&)>& body);
};

#endif // TVDBCHILD_H
