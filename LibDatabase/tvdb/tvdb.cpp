// tvdb: the framework's command-line tool. "tvdb COMMAND [arguments]";
// "tvdb --help" lists the commands. The commands are TVDBTool's and those
// of the programs that register with TVDBToolRegistry in this executable.

#include "LibDatabase/tvdb/tvdbtool.h"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    return TVDBTool::run(args, std::cout, std::cerr);
}
