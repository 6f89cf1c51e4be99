#include <oviapi/visualobject.h>

#include <algorithm>
#include <list>

#include <oviapi/container.h>
#include <oviapi/liveobjects.h>
#include <oviapi/wvisualobject.h>

namespace OviAPI {

namespace {

// Never destroyed: objects with static storage may be destroyed after any other static.
std::list<VisualObject*>& registry()
{
    static auto* objects = new std::list<VisualObject*>;
    return *objects;
}

// What m_life points to: the place in the registry.
struct Place {
    explicit Place(VisualObject* object)
        : where(registry().insert(registry().end(), object))
    {
    }
    ~Place() { registry().erase(where); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    std::list<VisualObject*>::iterator where;
};

} // namespace

std::vector<LiveObject> liveObjects()
{
    std::vector<LiveObject> all;
    all.reserve(registry().size());
    for (VisualObject* object : registry())
        all.push_back({object, object->life()});
    return all;
}

VisualObject::VisualObject()
    : m_life(std::make_shared<Place>(this))
{
}

VisualObject::~VisualObject()
{
    m_life.reset();
    leaveParent();
}

bool VisualObject::onKeyDown(VirtualKey)
{
    return false;
}
bool VisualObject::onKeyUp(VirtualKey)
{
    return false;
}
bool VisualObject::onChar(wchar_t)
{
    return false;
}
bool VisualObject::onLButtonDown(int, int, long)
{
    return false;
}
bool VisualObject::onLButtonUp(int, int, long)
{
    return false;
}
bool VisualObject::onLButtonDblClk(int, int, long)
{
    return false;
}
bool VisualObject::onRButtonDown(int, int, long)
{
    return false;
}
bool VisualObject::onRButtonUp(int, int, long)
{
    return false;
}
bool VisualObject::onRButtonDblClk(int, int, long)
{
    return false;
}
bool VisualObject::onMouseMove(int, int, long)
{
    return false;
}
bool VisualObject::onMouseWheel(int, int, int, long)
{
    return false;
}
bool VisualObject::onMouseLeave()
{
    return false;
}
bool VisualObject::onGetFocus()
{
    return false;
}
bool VisualObject::onLostFocus()
{
    return false;
}
bool VisualObject::onMove()
{
    return false;
}
bool VisualObject::onSize()
{
    return false;
}
bool VisualObject::onEnable(bool)
{
    return false;
}
bool VisualObject::onShow(bool)
{
    return false;
}
bool VisualObject::onPost(void*)
{
    return false;
}
bool VisualObject::doPaint(PaintDevice*)
{
    return false;
}
SlotResult VisualObject::onCharsetChanged(Object*)
{
    return 0;
}

void VisualObject::leaveParent()
{
    Container* old = std::exchange(m_parent, nullptr);
    if (!old)
        return;
    std::erase(old->m_children, this);
    std::erase(old->m_forms, this);
    old->childrenChanged();
}

void VisualObject::setParent(Container* parent)
{
    if (parent == m_parent)
        return;
    leaveParent();
    m_parent = parent;
    if (!parent)
        return;
    auto& list = isChild() ? parent->m_children : parent->m_forms;
    list.insert(list.begin(), this);
    parent->childrenChanged();
}

VisualObject* VisualObject::nextSibling() const
{
    if (!m_parent)
        return nullptr;
    const auto& list = m_parent->m_children;
    const auto here = std::find(list.begin(), list.end(), this);
    return here == list.end() || here + 1 == list.end() ? nullptr : *(here + 1);
}

VisualObject* VisualObject::previousSibling() const
{
    if (!m_parent)
        return nullptr;
    const auto& list = m_parent->m_children;
    const auto here = std::find(list.begin(), list.end(), this);
    return here == list.end() || here == list.begin() ? nullptr : *(here - 1);
}

Container::Container() = default;

Container::~Container()
{
    for (VisualObject* child : std::exchange(m_children, {})) {
        child->m_parent = nullptr;
        if (auto* native = dynamic_cast<WVisualObject*>(child))
            native->destroyNatives();
    }
    for (VisualObject* form : std::exchange(m_forms, {}))
        form->m_parent = nullptr;
}

} // namespace OviAPI
