// All visual objects of the process, for notifications that go to every one of them.
#pragma once

#include <memory>
#include <vector>

namespace OviAPI {

class VisualObject;

struct LiveObject {
    VisualObject* object;
    std::weak_ptr<const void> life; // expired: do not touch the object
};

// In order of construction.
std::vector<LiveObject> liveObjects();

} // namespace OviAPI
