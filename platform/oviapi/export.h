// The export macro of liboviapi.so: everything else stays hidden.
#pragma once

#define OVIAPI_API __attribute__((visibility("default")))
