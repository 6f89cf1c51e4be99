// The line of texts at the bottom of a window.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <oviapi/export.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

// Panes from left to right, numbered from 0. A text that does not fit is cut and shown whole in the
// tool tip. As a child of a form it lies at the bottom of the window, over the whole width, and the
// form's client area ends above it. As a child of anything else it is placed by move.
class OVIAPI_API WStatusLine : public virtual WTypicalControl {
public:
    enum class Align { Left, Center, Right };

    WStatusLine();
    ~WStatusLine() override;

    // Appends a pane and returns its number. width: pixels, 0 for a share of what is left.
    int addPane(int width, Align align = Align::Left);
    // A pane with a progress bar, which is shown while there is progress to show.
    int addProgressPane(int width);
    // Takes all panes away.
    void clear();
    int paneCount() const { return static_cast<int>(m_panes.size()); }

    // Numbers out of range do nothing and give an empty text. Plain text.
    void setPaneText(int pane, const wchar_t* text);
    std::wstring paneText(int pane) const;
    void setPaneWidth(int pane, int width);
    // Read out before the text by assistive technology.
    void setPaneName(int pane, const wchar_t* name);

    // per cent 0 to 100; -1 takes the bar away; Busy when nobody knows how far it is.
    static constexpr int NoProgress = -1;
    static constexpr int Busy = -2;
    void setProgress(int pane, int percent);
    int progress(int pane) const;

    // Shows a text over the text panes for so many milliseconds, 0 until clearMessage.
    void showMessage(const wchar_t* text, int milliseconds);
    void clearMessage();
    // Empty when none is shown.
    const std::wstring& message() const { return m_message; }

    // The height that shows everything; 0 before it is created.
    int preferredHeight() const;
    // Where a pane is; empty before it is created and while it is hidden.
    Rect paneRect(int pane) const;

    bool create() override;
    bool doMove(int x, int y, int width, int height) override;
    void setParent(Container* parent) override;

    struct StatusNative; // for the framework's own code

protected:
    std::unique_ptr<Native> makeNative() override;
    void nativeGoes() override;

private:
    struct Pane {
        int width = 0;
        Align align = Align::Left;
        bool isProgress = false;
        int percent = NoProgress;
        std::wstring text;
        std::wstring name;
    };

    bool inRange(int pane) const { return pane >= 0 && pane < paneCount(); }
    StatusNative* statusNative() const;
    int append(Pane pane);
    template<class F>
    void change(int pane, F&& apply);

    std::vector<Pane> m_panes;
    std::wstring m_message;
    int m_messageTime = 0; // ms, 0 without an end
};

} // namespace OviAPI
