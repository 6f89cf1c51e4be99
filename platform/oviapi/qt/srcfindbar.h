// The find bar at the bottom of a source editor.
#pragma once

#include <QWidget>

#include <oviapi/srcedit.h>

class QCheckBox;
class QLabel;
class QLineEdit;
class QToolButton;
class QPushButton;

namespace OviAPI {

// Keys that it does not use end here, so that they do not reach the text above it.
class SrcFindBar : public QWidget {
public:
    enum class Mode { Find, Replace, Line };

    SrcFindBar(QWidget* area, CSrcEdit& edit);

    // Shows the bar with the selected word in its field.
    void open(Mode mode);
    void close();
    // The next place of what was looked for last. False when there is nothing to look for.
    bool findOn(bool backward);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setTexts();
    int flags() const;
    void find(int flags);
    void tell(const QString& message, bool bad);
    void typed();
    void replaceOne();
    void replaceEverywhere();

    CSrcEdit& m_edit;
    Mode m_mode = Mode::Find;
    QLabel* m_label;
    QLineEdit* m_what;
    QCheckBox* m_case;
    QCheckBox* m_word;
    QToolButton* m_previous;
    QToolButton* m_next;
    QLabel* m_message;
    QToolButton* m_close;
    QWidget* m_replaceRow;
    QLabel* m_withLabel;
    QLineEdit* m_with;
    QPushButton* m_replace;
    QPushButton* m_replaceAll;
};

} // namespace OviAPI
