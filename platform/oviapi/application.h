// The application object.
#pragma once

#include <memory>
#include <string>

#include <oviapi/export.h>
#include <oviapi/font.h>
#include <oviapi/object.h>
#include <oviapi/picture.h>

namespace OviAPI {

struct Toolkit;

// A program derives one class from it, makes one object of it and calls run(). Owns the toolkit
// from start() until its destructor; forms and controls that live longer lose their native parts
// then. User-interface thread only, except where a function says otherwise.
class OVIAPI_API Application : public virtual Object {
public:
    // Makes this object the one that instance() returns.
    Application();
    ~Application() override;

    // The program's own first step, after start(). False ends the program.
    virtual bool initApplication(int argc, wchar_t** argv);
    // Handles events until quit() is called or the user closes the last form. Throws what a
    // handler has thrown.
    virtual void messagePump();
    // The program's own last step; only after an initApplication that returned true.
    virtual void deInitApplication();
    // Names the folder of the user's settings. Default: the name of the executable.
    virtual const wchar_t* appName();
    // The size of the screen, or of its part that windows may use, has changed.
    virtual void onResolutionChanged();
    // The font of a role has changed: gives it again to everything that took its font by role.
    virtual void roledFontsChanged();
    // The font of a role (FontRole); null where the application has none. Not owned by the caller.
    virtual Font* fontForRole(int role);
    // Strings and pictures by number. lang: -1 for the current language. False when there is none;
    // the buffer or picture is then unchanged.
    virtual bool loadRRSString(int id, wchar_t* buf, int size, int lang);
    virtual bool loadRRSPicture(int id, Picture* pic, int lang);
    virtual bool loadRRSBitmap(int id, Bitmap* bmp, int lang);

    enum FontRole : int {
        ControlFont = 1,
        EditFont = 2,
        TreeFont = 3,
    };

    // The application object made last; null when there is none.
    static Application* instance();

    // Starts the toolkit: from now on forms, fonts and timers can be made. Takes the toolkit's own
    // options out of the arguments. Selects the user's locale (C.UTF-8 where that is not
    // installed) with the number format of the C locale. Done once; later calls do nothing.
    void start(int argc, char** argv);
    bool isStarted() const { return m_toolkit != nullptr; }

    // start, initApplication, messagePump, deInitApplication. Returns what main is to return: the
    // value given to quit(), 1 when initApplication returned false.
    int run(int argc, char** argv);
    // Ends messagePump when the modal loops inside it have ended.
    static void quit(int exitCode = 0);
    // Whether messagePump is to end and only waits for the loops inside it.
    static bool isQuitting();

    // Handles the events that are pending; when there is none, sleeps until an event or a wakeUp
    // has come. Throws what a handler has thrown. Returns at once when no application is started.
    static void procTaskEvents();
    // Ends the sleep of procTaskEvents, the next one when none sleeps now. Any thread, and signal
    // handlers.
    static void wakeUp() noexcept;
    // Whether the calling thread is the one that start() was called on.
    static bool isUserInterfaceThread();

    // Tells every living visual object that texts are to be loaded again.
    void notifyCharsetChanged();

    // The path of a settings file of this program, by the XDG base directories. For reading: the
    // user's file, else the first of the system-wide ones that exists, else the user's. For writing
    // (forWriting not 0): the user's, with its folder made, for the user alone (mode 0700).
    std::wstring getConfigFilePath(const wchar_t* name, int forWriting);

    // The folder of the executable without a slash at its end. Returns false, with an empty text,
    // when it does not fit.
    static bool getExecutablePath(wchar_t* buf, int size);
    // Replaces that folder, for tests; null for the true one.
    static void setExecutablePath(const wchar_t* folder);

private:
    friend struct Toolkit;

    std::shared_ptr<Toolkit> m_toolkit;
    std::wstring m_appName;
    Application* m_previous;
};

} // namespace OviAPI
