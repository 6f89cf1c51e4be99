#include <cstdio>

#include <oviapi/version.h>

#include "explorer/explorerapp.h"
#include "explorer/tour.h"

int main(int argc, char** argv)
{
    const Arguments arguments = Arguments::parse(argc, argv);
    if (!arguments.fault.empty()) {
        std::fprintf(stderr, "oviexplorer: %s\n%s", arguments.fault.c_str(), Arguments::helpText());
        return 2;
    }
    if (arguments.help || arguments.version) {
        if (arguments.help)
            std::fputs(Arguments::helpText(), stdout);
        else
            std::printf("oviexplorer %s\n", OviAPI::version());
        return 0;
    }
    if (!arguments.tour.empty()) {
        const std::string fault = Tour::folderFault(arguments.tour);
        if (!fault.empty()) {
            std::fprintf(stderr, "oviexplorer: %s\n", fault.c_str());
            return 1;
        }
    }
    ExplorerApp application(arguments);
    return application.run(argc, argv);
}
