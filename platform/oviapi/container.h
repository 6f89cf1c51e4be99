// A visual object that holds others.
#pragma once

#include <vector>

#include <oviapi/export.h>
#include <oviapi/visualobject.h>

namespace OviAPI {

// Points to its children and to the forms above it, and owns neither. When it is destroyed, or its
// native part is, the children lose their native parts with it and stay as objects without a
// parent.
class OVIAPI_API Container : public virtual VisualObject {
public:
    Container();
    ~Container() override;

    // The child in front of all others; null when there is none.
    VisualObject* firstChild() const { return m_children.empty() ? nullptr : m_children.front(); }
    int childCount() const { return static_cast<int>(m_children.size()); }

private:
    friend class VisualObject;
    friend class WVisualObject;

    // For the framework's own containers: a child has been moved, shown or hidden, or has come or
    // gone. May be called while a derived class is being destroyed.
    virtual void childrenChanged() {}

    std::vector<VisualObject*> m_children;
    std::vector<VisualObject*> m_forms;
};

} // namespace OviAPI
