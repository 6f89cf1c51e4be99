#include "app/charsetindicator.h"

void qdCharsetIndicator::setResource(OviAPI::ResourceManager* rm, bool deleteOld)
{
    if (resource && deleteOld && ownsResource)
        delete resource;
    resource = rm;
    ownsResource = false;
}

OviAPI::SlotResult qdCharsetIndicator::onCharsetChanged(OviAPI::Object*, OviAPI::ResourceManager*)
{
    return 0;
}
