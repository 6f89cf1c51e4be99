// The toolkit of the running application.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QSocketNotifier>
#include <QWidget>

namespace OviAPI {

class WForm;

// Made by the first Application that starts and shared by any that start later; destroyed with the
// last of them, after the native parts of everything that lives longer.
struct Toolkit {
    Toolkit(int argc, char** argv);
    ~Toolkit();
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;

    // Null when no application is started.
    static Toolkit* current();

    // A form has been closed by its user: ends messagePump when it was the last one. Beside forms
    // dialogs do not count.
    void formClosed(const WForm& closed);
    // Destroys the widget together with the toolkit, unless it is destroyed before.
    void adopt(QWidget* widget) { adopted.emplace_back(widget); }
    // Begins, changes or ends watching, as the notifiers ask for.
    void updateNotifiers();

    int argc = 0;
    std::vector<std::string> arguments;
    std::vector<char*> argv; // into arguments; Qt keeps both
    std::unique_ptr<QApplication> application;
    // Receives the messages of the post queue; parent of timers and notifiers, which must not
    // outlive the application.
    std::unique_ptr<QObject> office;
    std::vector<QPointer<QWidget>> adopted;
    std::unique_ptr<QSocketNotifier> wake;
    QEventLoop* mainLoop = nullptr;
    int exitCode = 0;
};

} // namespace OviAPI
