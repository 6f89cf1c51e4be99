#include <oviapi/application.h>

#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>

#include <langinfo.h>
#include <pwd.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <QScreen>
#include <QThread>

#include <dorcpp/types.h>
#include <oviapi/dialog.h>
#include <oviapi/form.h>
#include <oviapi/liveobjects.h>
#include <oviapi/text.h>

#include "controlnames.h"
#include "native.h"
#include "outlinestyle.h"
#include "toolkit.h"

namespace OviAPI {

namespace {

namespace fs = std::filesystem;

Application* latest = nullptr;
std::weak_ptr<Toolkit> runningToolkit;
Toolkit* currentToolkit = nullptr;
std::wstring executableFolder; // set for tests

// Written by wakeUp, which signal handlers may call; made once and never closed.
std::atomic<int> wakeDescriptor{-1};

// A message of the post queue on its way.
class PostedMessage : public QEvent {
public:
    PostedMessage(VisualObject& to, void* what, void (*discardIt)(void*))
        : QEvent(User)
        , receiver(&to)
        , life(to.life())
        , message(what)
        , discard(discardIt)
    {
    }
    ~PostedMessage() override
    {
        if (discard)
            discard(message);
    }
    PostedMessage(const PostedMessage&) = delete;
    PostedMessage& operator=(const PostedMessage&) = delete;

    VisualObject* receiver;
    std::weak_ptr<const void> life;
    void* message;
    void (*discard)(void*);
};

struct PostOffice : QObject {
    bool event(QEvent* event) override
    {
        auto* posted = dynamic_cast<PostedMessage*>(event);
        if (!posted)
            return QObject::event(event);
        if (posted->life.expired())
            return true;
        posted->discard = nullptr; // the receiver owns it now
        barrier([&] { dispatch<&VisualObject::onPost>(*posted->receiver, posted->message); });
        return true;
    }
};

void selectLocale()
{
    if (!std::setlocale(LC_ALL, ""))
        std::setlocale(LC_ALL, "C.UTF-8");
    // The plain C locale knows no letters beyond ASCII.
    if (std::strcmp(nl_langinfo(CODESET), "ANSI_X3.4-1968") == 0)
        std::setlocale(LC_CTYPE, "C.UTF-8");
    std::setlocale(LC_NUMERIC, "C");
}

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string homeFolder()
{
    std::string home = environment("HOME");
    if (!home.empty())
        return home;
    const passwd* user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

std::string userConfigFolder()
{
    const std::string folder = environment("XDG_CONFIG_HOME");
    return folder.starts_with('/') ? folder : homeFolder() + "/.config";
}

// The name as one component of a path.
std::string folderName(const wchar_t* name)
{
    std::string folder = wideToLocale(name ? name : L"");
    for (char& c : folder) {
        if (c == '/')
            c = '_';
    }
    return folder.empty() || folder == "." || folder == ".." ? "oviapi" : folder;
}

// Makes the folder and those above it that are missing, for the user alone.
void makePrivateFolder(const std::string& path)
{
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        ::mkdir(path.substr(0, slash).c_str(), 0700);
    ::mkdir(path.c_str(), 0700);
}

bool exists(const std::string& path)
{
    return ::access(path.c_str(), F_OK) == 0;
}

} // namespace

Toolkit* Toolkit::current()
{
    return currentToolkit;
}

Toolkit::Toolkit(int count, char** values)
{
    for (int i = 0; i < count; ++i)
        arguments.emplace_back(values[i]);
    if (arguments.empty())
        arguments.emplace_back("application");
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    argc = static_cast<int>(arguments.size());

    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    application = std::make_unique<QApplication>(argc, argv.data());
    selectLocale();
    OutlineStyle::installIfNeeded();
    liftDisabledTexts();
    office = std::make_unique<PostOffice>();

    if (wakeDescriptor < 0)
        wakeDescriptor = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    wake = std::make_unique<QSocketNotifier>(wakeDescriptor, QSocketNotifier::Read);
    QObject::connect(wake.get(), &QSocketNotifier::activated, [this] {
        uint64_t wakeUps = 0;
        [[maybe_unused]] const auto got = ::read(wakeDescriptor, &wakeUps, sizeof wakeUps);
        updateNotifiers();
    });
    const auto watch = [](QScreen* screen) {
        const auto changed = [] {
            barrier([] {
                if (latest)
                    latest->onResolutionChanged();
            });
        };
        if (screen)
            QObject::connect(screen, &QScreen::availableGeometryChanged, screen, changed);
    };
    watch(QGuiApplication::primaryScreen());
    QObject::connect(application.get(), &QGuiApplication::primaryScreenChanged, office.get(),
                     [watch](QScreen* screen) {
                         watch(screen);
                         barrier([] {
                             if (latest)
                                 latest->onResolutionChanged();
                         });
                     });
    currentToolkit = this;
    updateNotifiers();
    DorCPP::setWakeUp(&Application::wakeUp);
}

Toolkit::~Toolkit()
{
    for (const LiveObject& live : liveObjects()) {
        if (live.life.expired())
            continue;
        if (auto* object = dynamic_cast<WVisualObject*>(live.object))
            object->destroyNatives();
    }
    for (const QPointer<QWidget>& widget : adopted)
        delete widget.data();
    currentToolkit = nullptr;
    wake.reset();
    office.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void Toolkit::formClosed(const WForm& closed)
{
    if (!mainLoop)
        return;
    const bool dialogsCount = dynamic_cast<const WDialog*>(&closed) != nullptr;
    for (const LiveObject& live : liveObjects()) {
        const auto* form = dynamic_cast<WForm*>(live.object);
        if (form && form->isVisible() && (dialogsCount || !dynamic_cast<const WDialog*>(form)))
            return;
    }
    mainLoop->quit();
}

Application::Application()
    : m_previous(std::exchange(latest, this))
{
}

Application::~Application()
{
    if (latest == this)
        latest = m_previous;
}

bool Application::initApplication(int, wchar_t**)
{
    return true;
}

void Application::messagePump()
{
    if (!m_toolkit)
        return;
    QEventLoop loop;
    LocalLoop local([&] { loop.quit(); });
    QEventLoop* outer = std::exchange(m_toolkit->mainLoop, &loop);
    m_toolkit->exitCode = 0;
    if (!local.failed())
        loop.exec();
    m_toolkit->mainLoop = outer;
    local.rethrow();
}

void Application::deInitApplication() {}

const wchar_t* Application::appName()
{
    if (m_appName.empty()) {
        std::error_code error;
        const fs::path path = fs::read_symlink("/proc/self/exe", error);
        m_appName = localeToWide(path.filename().string());
    }
    return m_appName.c_str();
}

void Application::onResolutionChanged() {}

void Application::roledFontsChanged()
{
    for (const LiveObject& live : liveObjects()) {
        if (live.life.expired())
            continue;
        auto* object = dynamic_cast<WVisualObject*>(live.object);
        if (!object || object->fontRole() == 0)
            continue;
        object->setFontRole(object->fontRole());
        if (!live.life.expired())
            object->repaint();
    }
}

Font* Application::fontForRole(int)
{
    return nullptr;
}

bool Application::loadRRSString(int, wchar_t*, int, int)
{
    return false;
}

bool Application::loadRRSPicture(int, Picture*, int)
{
    return false;
}

bool Application::loadRRSBitmap(int, Bitmap*, int)
{
    return false;
}

Application* Application::instance()
{
    return latest;
}

void Application::start(int argc, char** argv)
{
    if (m_toolkit)
        return;
    m_toolkit = runningToolkit.lock();
    if (m_toolkit)
        return;
    m_toolkit = std::make_shared<Toolkit>(argc, argv);
    runningToolkit = m_toolkit;
}

int Application::run(int argc, char** argv)
{
    start(argc, argv);
    const auto count = static_cast<size_t>(m_toolkit->argc);
    std::vector<std::wstring> texts;
    texts.reserve(count);
    for (size_t i = 0; i < count; ++i)
        texts.push_back(localeToWide(m_toolkit->argv[i]));
    std::vector<wchar_t*> wide;
    wide.reserve(count + 1);
    for (std::wstring& text : texts)
        wide.push_back(text.data());
    wide.push_back(nullptr);
    if (!initApplication(m_toolkit->argc, wide.data()))
        return 1;
    try {
        messagePump();
    } catch (...) {
        deInitApplication();
        throw;
    }
    const int exitCode = m_toolkit->exitCode;
    deInitApplication();
    return exitCode;
}

void Application::quit(int exitCode)
{
    Toolkit* toolkit = Toolkit::current();
    if (!toolkit || !toolkit->mainLoop)
        return;
    toolkit->exitCode = exitCode;
    toolkit->mainLoop->quit();
}

bool Application::isQuitting()
{
    const Toolkit* toolkit = Toolkit::current();
    return toolkit && toolkit->mainLoop && !toolkit->mainLoop->isRunning();
}

void Application::procTaskEvents()
{
    if (!Toolkit::current())
        return;
    LocalLoop local([] {}); // processEvents returns after every batch of events
    if (!local.failed())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    local.rethrow();
}

void Application::wakeUp() noexcept
{
    const int descriptor = wakeDescriptor;
    if (descriptor < 0)
        return;
    const int error = errno; // a signal handler must not change it
    const uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(descriptor, &one, sizeof one);
    errno = error;
}

bool Application::isUserInterfaceThread()
{
    const Toolkit* toolkit = Toolkit::current();
    return toolkit && QThread::currentThread() == toolkit->application->thread();
}

void Application::notifyCharsetChanged()
{
    for (const LiveObject& live : liveObjects()) {
        if (!live.life.expired())
            live.object->onCharsetChanged(this);
    }
    for (const LiveObject& live : liveObjects()) {
        const auto* form = dynamic_cast<WForm*>(live.object);
        if (form && form->native())
            nameControls(form->native()->surface);
    }
}

std::wstring Application::getConfigFilePath(const wchar_t* name, int forWriting)
{
    const std::string below = '/' + folderName(appName());
    const std::string file = '/' + wideToLocale(name ? name : L"");
    const std::string folder = userConfigFolder() + below;
    if (forWriting != 0) {
        makePrivateFolder(folder);
        return localeToWide(folder + file);
    }
    if (exists(folder + file))
        return localeToWide(folder + file);
    std::string systemFolders = environment("XDG_CONFIG_DIRS");
    if (systemFolders.empty())
        systemFolders = "/etc/xdg";
    for (size_t begin = 0; begin < systemFolders.size();) {
        const size_t end = std::min(systemFolders.find(':', begin), systemFolders.size());
        const std::string path = systemFolders.substr(begin, end - begin) + below + file;
        if (path.starts_with('/') && exists(path))
            return localeToWide(path);
        begin = end + 1;
    }
    return localeToWide(folder + file);
}

bool Application::getExecutablePath(wchar_t* buf, int size)
{
    if (!buf || size <= 0)
        return false;
    std::wstring folder = executableFolder;
    if (folder.empty()) {
        std::error_code error;
        folder = localeToWide(fs::read_symlink("/proc/self/exe", error).parent_path().string());
    }
    const bool fits = !folder.empty() && folder.size() < static_cast<size_t>(size);
    copyText(buf, static_cast<size_t>(size), fits ? folder : std::wstring());
    return fits;
}

void Application::setExecutablePath(const wchar_t* folder)
{
    executableFolder = folder ? folder : L"";
    while (executableFolder.size() > 1 && executableFolder.ends_with(L'/'))
        executableFolder.pop_back();
}

void VisualObject::post(void* message, void (*discard)(void*))
{
    auto posted = std::make_unique<PostedMessage>(*this, message, discard);
    if (Toolkit* toolkit = Toolkit::current())
        QCoreApplication::postEvent(toolkit->office.get(), posted.release());
}

} // namespace OviAPI
