// The command line of the explorer.
#pragma once

#include <string>

struct Arguments {
    std::string tour;      // folder for the pictures of a tour; empty: no tour
    std::string configDir; // folder of the settings; empty: as the desktop says
    std::string database;  // empty: what was open last, or the sample
    bool help = false;
    bool version = false;
    std::string fault; // a sentence; empty when the command line is right

    // An argument "--" ends the options.
    static Arguments parse(int argc, const char* const* argv);
    static const char* helpText();
};
