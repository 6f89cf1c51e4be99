// A walk through the program that leaves pictures.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <oviapi/timer.h>
#include <oviapi/virtualkey.h>

#include "explorer/mainform.h"

// Presses keys and mouse buttons as a user would, and writes a picture of the window behind every
// step: "01-name.png" and so on. Prints the names of the pictures. Ends the program, with 1 and a
// sentence on the standard error stream when something went wrong.
class Tour : public OviAPI::Object {
public:
    // database: what to show instead of the sample, in multibyte text; empty for the sample.
    Tour(MainForm& form, std::string folder, const std::string& database);
    ~Tour() override;

    void start();

    // Makes the folder. Gives a sentence when no pictures can be written to it.
    static std::string folderFault(const std::string& folder);

private:
    struct Step {
        std::string picture; // empty: no picture
        std::function<void()> act;
    };

    void plan(const std::string& database);
    void planDialogs(const std::string& suffix);
    void step(std::string picture, std::function<void()> act);
    void keys(std::string picture, std::vector<OviAPI::VirtualKey> keys);
    void chooseTable(const std::string& picture, const std::wstring& name);
    OviAPI::SlotResult tick(OviAPI::Object*);
    bool takePicture(const std::string& name);
    void finish(const std::string& fault);

    MainForm& m_form;
    std::string m_folder;
    std::string m_badFile;
    std::vector<Step> m_steps;
    size_t m_next = 0;
    int m_pictures = 0;
    int m_waited = 0; // ticks since the present step
    bool m_acted = false;
    OviAPI::WTimer m_timer;
};
