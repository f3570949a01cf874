// tvdb: the framework's command-line tool. "tvdb COMMAND [arguments]";
// "tvdb --help" lists the commands. The commands are TVDBTool's and those
// of the programs that register with TVDBToolRegistry in this executable.

#include "LibDatabase/tvdb/tvdbtool.h"

#include <QCoreApplication>

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    const std::vector<std::string> args(argv + 1, argv + argc);
    // Scripts and the expressions in variables run on the toolkit's engine,
    // which needs an application object. Given no program name, it leaves
    // the folders of the side files as the files' programs name them.
    static char noName[] = "";
    static char* qtArgv[] = {noName, nullptr};
    int qtArgc = 1;
    QCoreApplication application(qtArgc, qtArgv);
    return TVDBTool::run(args, std::cout, std::cerr);
}
