#include "explorer/arguments.h"

#include <string_view>

namespace {

// Takes the value of "--name=value"; false for another option.
bool valueOf(std::string_view argument, std::string_view name, std::string& value)
{
    if (argument.substr(0, name.size()) != name || argument.size() <= name.size() ||
        argument[name.size()] != '=')
        return false;
    value = argument.substr(name.size() + 1);
    return true;
}

} // namespace

Arguments Arguments::parse(int argc, const char* const* argv)
{
    Arguments all;
    bool options = true;
    bool named = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (options && argument == "--") {
            options = false;
        } else if (options && (argument == "--help" || argument == "-h")) {
            all.help = true;
        } else if (options && argument == "--version") {
            all.version = true;
        } else if (options && (valueOf(argument, "--tour", all.tour) ||
                               valueOf(argument, "--config-dir", all.configDir))) {
            if (argument.back() == '=')
                all.fault = "a folder is missing in: " + std::string(argument);
        } else if (options && argument.size() > 1 && argument.front() == '-') {
            all.fault = "unknown option: " + std::string(argument);
        } else if (named) {
            all.fault = "more than one database: " + std::string(argument);
        } else {
            named = true;
            all.database = argument;
        }
    }
    return all;
}

const char* Arguments::helpText()
{
    return "Usage: oviexplorer [--tour=DIR] [--config-dir=DIR] [DATABASE]\n"
           "Shows the tables and views of a database.\n"
           "\n"
           "  DATABASE           a file, sqlite:PATH, postgresql://USER@HOST/NAME or "
           "\"host=...\";\n"
           "                     without it the database that was open last, at first a\n"
           "                     sample made of the data of this machine\n"
           "  --tour=DIR         walks through the program and writes pictures of it to DIR\n"
           "  --config-dir=DIR   keeps the settings below DIR\n"
           "  --help, --version  say this, and the version\n";
}
