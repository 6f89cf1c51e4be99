// Trees of lines that open and close.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <oviapi/export.h>
#include <oviapi/imagelist.h>
#include <oviapi/typicalcontrol.h>

namespace OviAPI {

class WTreeView;

// A line of a tree. Belongs to its tree, which makes, changes and removes it; what is read here is
// always up to date.
class OVIAPI_API aQTreeViewItem {
public:
    ~aQTreeViewItem();
    aQTreeViewItem(const aQTreeViewItem&) = delete;
    aQTreeViewItem& operator=(const aQTreeViewItem&) = delete;

    // Null for a line that has been removed and is still known to a handler that runs.
    WTreeView* tree() const { return m_tree; }
    const std::wstring& text() const { return m_text; }
    // Of the application, not owned.
    void* cargo() const { return m_cargo; }
    // Numbers in the image list; -1 for none. selectedImage and openImage are -1 where the ordinary
    // one serves.
    int image() const { return m_image; }
    int selectedImage() const { return m_selectedImage; }
    int openImage() const { return m_openImage; }
    bool isExpanded() const { return m_expanded; }
    // Has children or claims to have some.
    bool canExpand() const { return m_claimsChildren || !m_children.empty(); }

    // Null at the ends and at the top level.
    aQTreeViewItem* parent() const;
    aQTreeViewItem* firstChild() const { return child(0); }
    aQTreeViewItem* lastChild() const { return child(childCount() - 1); }
    aQTreeViewItem* nextSibling() const;
    aQTreeViewItem* previousSibling() const;
    int childCount() const { return static_cast<int>(m_children.size()); }
    // Numbers from 0; null out of range.
    aQTreeViewItem* child(int number) const;
    // The number among its siblings.
    int row() const;

private:
    friend class WTreeView;
    friend class TreeModel;
    aQTreeViewItem() = default;

    bool isBelow(const aQTreeViewItem& item) const;
    // The line that follows from top to bottom inside the line top; null at the end.
    const aQTreeViewItem* nextInside(const aQTreeViewItem& top) const;
    // The order holds every child once.
    void orderChildren(const std::vector<aQTreeViewItem*>& order);

    WTreeView* m_tree = nullptr;
    aQTreeViewItem* m_parent = nullptr; // null: the root, which is no line
    std::vector<std::unique_ptr<aQTreeViewItem>> m_children;
    mutable int m_row = 0;      // a guess
    mutable int m_numbered = 0; // so many children know their numbers for sure
    std::wstring m_text;
    void* m_cargo = nullptr;
    int m_image = -1;
    int m_selectedImage = -1;
    int m_openImage = -1;
    bool m_expanded = false;
    bool m_claimsChildren = false;
    bool m_opening = false; // onItemExpanding runs for it
};

// A tree with at most one selected line. Can be filled before it is created. Functions that take a
// line do nothing, and return null, for a null one or one of another tree.
//
// The keyboard: arrows, Home, End, Page Up and Page Down, plus and minus, asterisk (opens all below
// the line), the beginning of a text, F2 (edits the text, where that is switched on), the menu key.
class OVIAPI_API WTreeView : public virtual WTypicalControl {
public:
    // Style bits. The low six are the look; 23 shows everything.
    enum TreeStyle : long {
        Lines = 1,       // between a line and its parent
        ExpandBoxes = 2, // to open and close a line by the mouse
        RootLines = 4,   // both for the top level as well
        Pictures = 16,   // of the image list
        LookMask = 63,
        LabelEditing = 64, // F2 edits the text of a line
    };
    enum Part : int {
        NoPart = 0,      // beside all lines
        IndentPart = 1,  // left of the picture
        BoxPart = 2,     // the expand box
        PicturePart = 3, // of the image list
        TextPart = 4,
        RightPart = 5, // right of the text
    };
    using Less = std::function<bool(const aQTreeViewItem&, const aQTreeViewItem&)>;

    // Style 23.
    WTreeView();
    ~WTreeView() override;

    // The user has selected another line; null for none. select does not call it.
    virtual bool onSelChanged(aQTreeViewItem* item);
    // A line is about to be opened, by the user or by expand. The place to insert the children of a
    // line that claims them. True: it stays closed.
    virtual bool onItemExpanding(aQTreeViewItem* item);
    virtual bool onItemExpanded(aQTreeViewItem* item);
    virtual bool onItemCollapsed(aQTreeViewItem* item);
    // The left button has been pressed and released on one line. part: Part.
    virtual bool onItemClick(aQTreeViewItem* item, int part);
    // True: the line is neither opened nor closed.
    virtual bool onItemDblClk(aQTreeViewItem* item);
    // Asked for by the right button or the menu key. item: null beside all lines. x, y: pixels in
    // the client area.
    virtual bool onContextMenu(aQTreeViewItem* item, int x, int y);
    // True: the text is not to be edited.
    virtual bool onLabelEditing(aQTreeViewItem* item);
    // The user has typed another text. True: it is not taken.
    virtual bool onLabelEdited(aQTreeViewItem* item, const wchar_t* text);

    // Inserts a line at the end of the children of the parent, at the top level for null.
    aQTreeViewItem* insertItem(aQTreeViewItem* parent, const wchar_t* text, int image = -1,
                               void* cargo = nullptr);
    aQTreeViewItem* insertBefore(aQTreeViewItem* sibling, const wchar_t* text, int image = -1,
                                 void* cargo = nullptr);
    aQTreeViewItem* insertAfter(aQTreeViewItem* sibling, const wchar_t* text, int image = -1,
                                void* cargo = nullptr);
    // With everything below. When the selected line goes, the one behind it is selected, else the
    // one before it, else the parent. A handler may remove any line: pointers that it has been
    // given stay readable until it returns.
    void removeItem(aQTreeViewItem* item);
    void removeChildren(aQTreeViewItem* item);
    void clear();

    void setItemText(aQTreeViewItem* item, const wchar_t* text);
    void setItemCargo(aQTreeViewItem* item, void* cargo);
    void setItemImage(aQTreeViewItem* item, int image, int selectedImage = -1, int openImage = -1);
    // An expand box for a line that may get its children only when it is opened.
    void claimChildren(aQTreeViewItem* item, bool claims);

    // Null at the ends.
    aQTreeViewItem* firstItem() const { return m_root->firstChild(); }
    // In the order from top to bottom, opened or not.
    aQTreeViewItem* nextItem(const aQTreeViewItem* item) const;
    aQTreeViewItem* previousItem(const aQTreeViewItem* item) const;
    // The first one from top to bottom; null when there is none.
    aQTreeViewItem* findCargo(const void* cargo) const;
    int itemCount() const { return m_count; }

    void expand(aQTreeViewItem* item);
    void collapse(aQTreeViewItem* item);
    // The line and everything below it, the whole tree for null. Lines that only claim children
    // stay closed.
    void expandAll(aQTreeViewItem* item = nullptr);
    void collapseAll(aQTreeViewItem* item = nullptr);

    aQTreeViewItem* selected() const { return m_selected; }
    // Null for none. Opens the lines above it and scrolls it into view.
    void select(aQTreeViewItem* item);
    // Opens the lines above it and scrolls.
    void ensureVisible(aQTreeViewItem* item);

    // Sorts the children of a line, the top level for null; equal ones keep their order. Without a
    // comparison by text, in the order of the locale.
    void sortChildren(aQTreeViewItem* item, const Less& less = nullptr);

    // The tree keeps a copy; null takes the pictures away.
    void setImageList(const ImageList* images);
    const ImageList& imageList() const { return m_images; }

    // What is at a point of the client area; part may be null.
    aQTreeViewItem* itemAt(int x, int y, int* part = nullptr) const;
    // The text of a line, in the client area and beyond it. The picture ends 2 pixels before its
    // left edge. Empty while the line is inside a closed one or the tree is not created.
    Rect itemTextRect(const aQTreeViewItem* item) const;
    Rect itemPictureRect(const aQTreeViewItem* item) const;

    // Edits the text of a line in its place. False when that is not to be.
    bool editLabel(aQTreeViewItem* item);
    // Ends the editing; keep: takes the text.
    void endEditing(bool keep);
    bool isEditing() const;

    struct TreeNative; // for the framework's own code

protected:
    std::unique_ptr<Native> makeNative() override;

private:
    friend class TreeModel;
    friend class TreeWidget;
    class Handling;

    bool owns(const aQTreeViewItem* item) const { return item && item->m_tree == this; }
    aQTreeViewItem& rootOr(aQTreeViewItem* item) const { return item ? *item : *m_root; }
    TreeNative* treeNative() const;
    aQTreeViewItem* insertAt(aQTreeViewItem& parent, int row, const wchar_t* text, int image,
                             void* cargo);
    void removeRows(aQTreeViewItem& parent, int first, int last);
    void leaveTree(aQTreeViewItem& top);
    aQTreeViewItem* selectionWithout(const aQTreeViewItem& parent, int first, int last) const;
    bool openItem(aQTreeViewItem* item);
    void closeItem(aQTreeViewItem* item);
    bool openAbove(aQTreeViewItem* item);
    // Called by the native part.
    void userSelected(aQTreeViewItem* item);
    void userToggled(aQTreeViewItem* item, bool open);
    bool userDoubleClicked(aQTreeViewItem* item);
    void userClicked(aQTreeViewItem* item, int part);
    bool userWantsMenu(int x, int y, bool byKey);
    bool userTyped(aQTreeViewItem* item, const std::wstring& text);

    ImageList m_images;
    std::unique_ptr<aQTreeViewItem> m_root;
    std::vector<std::unique_ptr<aQTreeViewItem>> m_removed; // while a handler runs
    aQTreeViewItem* m_selected = nullptr;
    int m_count = 0;
    int m_handling = 0;
};

} // namespace OviAPI

OVIAPI_SIGNAL(OviAPI::WTreeView, onSelChanged);
OVIAPI_SIGNAL(OviAPI::WTreeView, onItemExpanding);
OVIAPI_SIGNAL(OviAPI::WTreeView, onItemExpanded);
OVIAPI_SIGNAL(OviAPI::WTreeView, onItemCollapsed);
OVIAPI_SIGNAL(OviAPI::WTreeView, onItemClick);
OVIAPI_SIGNAL(OviAPI::WTreeView, onItemDblClk);
OVIAPI_SIGNAL(OviAPI::WTreeView, onContextMenu);
OVIAPI_SIGNAL(OviAPI::WTreeView, onLabelEditing);
OVIAPI_SIGNAL(OviAPI::WTreeView, onLabelEdited);
