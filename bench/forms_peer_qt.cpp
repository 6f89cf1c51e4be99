#include "forms_peer.h"

#include <cstdio>
#include <memory>
#include <vector>

#include <unistd.h>

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace Forms {

namespace {

QFont fontOfSize(int points)
{
    return QFont(QString::fromWCharArray(font), points);
}

void fillPanel(QWidget* panel)
{
    for (int i = 0; i < controlsInPanel; ++i) {
        QWidget* control = nullptr;
        if (i % 3 == 0)
            control = new QLabel("Label", panel);
        else if (i % 3 == 1)
            control = new QLineEdit("Field", panel);
        else
            control = new QPushButton("Button", panel);
        control->setGeometry(0, i * controlStep, controlWidth, controlHeight);
    }
}

} // namespace

double peerFontChange(int steps)
{
    QWidget window;
    window.resize(width, height);
    window.setFont(fontOfSize(fontSize));
    for (int chain = 0; chain < chains; ++chain) {
        QWidget* above = &window;
        for (int deep = 0; deep < panelsDeep; ++deep) {
            auto* panel = new QWidget(above);
            panel->setGeometry(deep == 0 ? chain * chainStep : 2, 2, chainStep, height);
            fillPanel(panel);
            above = panel;
        }
    }
    window.show();
    QApplication::processEvents();
    int size = fontSize;
    return medianCpuMs(steps, [&] {
        size = 2 * fontSize + 1 - size;
        window.setFont(fontOfSize(size));
        QApplication::processEvents();
    });
}

DialogTimes peerDialogs()
{
    return measureDialogs([] {
        QDialog dialog;
        dialog.setFont(fontOfSize(fontSize));
        dialog.setWindowTitle("Question");
        dialog.setFixedSize(dialogWidth, dialogHeight);
        QWidget panel(&dialog);
        panel.setGeometry(0, 0, dialogWidth, dialogHeight);
        QLabel label("Question?", &panel);
        label.setGeometry(10, 10, 380, 22);
        QLineEdit edit("Answer", &panel);
        edit.setGeometry(10, 40, 380, 24);
        QCheckBox box("&Remember", &panel);
        box.setGeometry(10, 70, 380, 22);
        QPushButton yes("&Yes", &panel);
        yes.setGeometry(100, 110, 90, 26);
        QPushButton no("&No", &panel);
        no.setGeometry(200, 110, 90, 26);
        yes.setDefault(true);
        yes.setFocus();
        QTimer::singleShot(0, &dialog, [&] { dialog.close(); });
        dialog.exec();
    });
}

long residentKiB()
{
    long pages = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%*s %ld", &pages) != 1)
            pages = 0;
        std::fclose(file);
    }
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace Forms
