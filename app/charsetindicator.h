// The resources of a form.
#pragma once

#include <oviapi/object.h>
#include <oviapi/resourcemanager.h>

#include "app/export.h"

// Holds the resource manager from which a form takes its strings and pictures, and lets the form
// reload them when the language changes. The manager is not owned unless a derived class marks it.
class OVIEXT_API qdCharsetIndicator : virtual public OviAPI::Object {
public:
    qdCharsetIndicator() = default;
    explicit qdCharsetIndicator(OviAPI::ResourceManager* rm)
        : resource(rm)
    {
    }

    // Takes another manager, or none, without owning it. deleteOld: delete the present one first,
    // if it is owned.
    void setResource(OviAPI::ResourceManager* rm, bool deleteOld);
    OviAPI::ResourceManager* getResource() const { return resource; }

    virtual OviAPI::SlotResult onCharsetChanged(OviAPI::Object* sender,
                                                OviAPI::ResourceManager* rm);

protected:
    bool ownsResource = false;
    OviAPI::ResourceManager* resource = nullptr;
};
