// What liboviext.so offers to applications.
#pragma once

#define OVIEXT_API __attribute__((visibility("default")))
